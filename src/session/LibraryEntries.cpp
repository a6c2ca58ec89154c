#include "session/LibraryEntries.h"

#include <map>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar PathEnd = u'|';
constexpr QChar EntryEnd = u';';

/// A list may name a path more than once; then it is the first, the second ... of them.
using Entries = std::map<std::pair<QString, int>, LibraryEntry>;

std::vector<std::pair<QString, int>> KeysOf(const std::vector<LibraryEntry>& entries)
{
    std::map<QString, int> counts;
    std::vector<std::pair<QString, int>> keys;
    for (const LibraryEntry& entry : entries)
        keys.emplace_back(entry.Path, counts[entry.Path]++);
    return keys;
}

Entries ByKey(const std::vector<LibraryEntry>& entries)
{
    const auto keys = KeysOf(entries);
    Entries all;
    for (size_t i = 0; i < entries.size(); ++i)
        all.emplace(keys[i], entries[i]);
    return all;
}

} // namespace

std::vector<LibraryEntry> LibraryEntriesOf(const QString& text)
{
    std::vector<LibraryEntry> entries;
    for (QString rest = text; !rest.isEmpty();) {
        const QString path = rest.section(PathEnd, 0, 0);
        rest = rest.mid(path.size() + 1);
        const QString alias = rest.section(EntryEnd, 0, 0);
        rest = rest.mid(alias.size() + 1);
        entries.push_back({path, alias});
    }
    return entries;
}

QString TextOfLibraryEntries(const std::vector<LibraryEntry>& entries)
{
    QString text;
    for (const LibraryEntry& entry : entries)
        text += entry.Path + PathEnd + entry.Alias + EntryEnd;
    return text;
}

bool BreaksLibraryEntries(const QString& text)
{
    return text.contains(PathEnd) || text.contains(EntryEnd);
}

std::vector<LibraryEntry> MergedLibraryEntries(const std::vector<LibraryEntry>& before,
                                               const std::vector<LibraryEntry>& own,
                                               const std::vector<LibraryEntry>& stored)
{
    const Entries known = ByKey(before);
    const Entries ours = ByKey(own);
    const Entries theirs = ByKey(stored);
    const auto isChanged = [&](const auto& key) {
        return !known.contains(key) || known.at(key).Alias != ours.at(key).Alias;
    };
    std::vector<LibraryEntry> merged;
    for (const auto& key : KeysOf(stored)) {
        if (ours.contains(key))
            merged.push_back(isChanged(key) ? ours.at(key) : theirs.at(key));
        else if (!known.contains(key)) // else it was removed here
            merged.push_back(theirs.at(key));
    }
    for (const auto& key : KeysOf(own)) {
        if (!theirs.contains(key) && isChanged(key)) // what another removed meanwhile stays removed
            merged.push_back(ours.at(key));
    }
    return merged;
}

} // namespace qb
