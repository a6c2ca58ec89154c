#include "platform/archive/ArchiveEntry.h"

#include <QFile>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <limits.h>
#include <sys/stat.h>
#include <zip.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestPart = 255; // bytes, of the usual file systems

/// What a name leads to; why it is refused, if it is.
struct CheckedName {
    QString Name;
    QString Problem;
};

/// Also what turns the direction of writing, by which "exe.txt" is made of "txt.exe".
bool IsControl(QChar character)
{
    const auto within = [character](char16_t first, char16_t last) { return character >= first && character <= last; };
    return character.category() == QChar::Other_Control || within(u'\u202a', u'\u202e') || within(u'\u2066', u'\u2069');
}

/// Old programs separate by "\", and some begin with "./".
CheckedName Checked(const QString& stored)
{
    QString name = QString(stored).replace(u'\\', u'/');
    if (std::any_of(name.cbegin(), name.cend(), IsControl)) {
        std::replace_if(name.begin(), name.end(), IsControl, QChar::ReplacementCharacter); // a terminal may show it
        return {name.left(LongestPart), u"its name has control characters"_s};
    }
    const bool hasDrive = name.size() > 1 && name[1] == u':' && name[0].isLetter();
    if (name.startsWith(u'/') || hasDrive)
        return {name, u"its name leads to a place of its own, outside the folder"_s};
    if (QFile::encodeName(name).size() >= PATH_MAX) // no path is longer, and work on its parts would take without end
        return {name.left(LongestPart) + u"..."_s, u"its name is too long"_s};
    QStringList parts;
    for (const QString& part : name.split(u'/', Qt::SkipEmptyParts)) {
        if (part == u".."_s)
            return {name, u"its name leads out of the folder"_s};
        if (QFile::encodeName(part).size() > LongestPart)
            return {name, u"its name is too long"_s};
        if (part != u"."_s)
            parts << part;
    }
    if (parts.isEmpty())
        return {name, u"it has no name"_s};
    return {parts.join(u'/'), {}};
}

/// Says what is not a plain file or folder, of those made on a system that tells it.
QString KindProblem(zip* archive, ArchiveEntry& entry)
{
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, entry.Index, 0, &system, &attributes) != 0
        || system != ZIP_OPSYS_UNIX)
        return {};
    const mode_t mode = attributes >> 16;
    entry.IsExecutable = mode & S_IXUSR;
    const mode_t kind = mode & S_IFMT;
    if (kind == 0 || kind == S_IFREG || kind == S_IFDIR)
        return {};
    return kind == S_IFLNK ? u"it is a link"_s : u"it is neither a file nor a folder"_s;
}

QString PackingProblem(const zip_stat_t& state)
{
    if ((state.valid & ZIP_STAT_ENCRYPTION_METHOD) && state.encryption_method != ZIP_EM_NONE)
        return u"it is encrypted"_s;
    if ((state.valid & ZIP_STAT_COMP_METHOD) && !zip_compression_method_supported(state.comp_method, 0))
        return u"it is packed by a method that is not known here (%1)"_s.arg(state.comp_method);
    return {};
}

ArchiveEntry EntryAt(zip* archive, quint64 index)
{
    ArchiveEntry entry;
    entry.Index = index;
    zip_stat_t state;
    if (zip_stat_index(archive, index, 0, &state) != 0 || !(state.valid & ZIP_STAT_NAME)) {
        entry.Problem = u"it can't be read"_s;
        return entry;
    }
    const QString stored = QString::fromUtf8(state.name);
    entry.IsFolder = stored.endsWith(u'/') || stored.endsWith(u'\\');
    const CheckedName checked = Checked(stored);
    entry.Name = checked.Name;
    entry.Size = state.valid & ZIP_STAT_SIZE ? qint64(state.size) : 0;
    entry.CompressedSize = state.valid & ZIP_STAT_COMP_SIZE ? qint64(state.comp_size) : 0;
    entry.IsStored = state.comp_method == ZIP_CM_STORE;
    if (state.valid & ZIP_STAT_MTIME)
        entry.Modified = QDateTime::fromSecsSinceEpoch(state.mtime);
    const QString kind = KindProblem(archive, entry);
    const QString packing = PackingProblem(state);
    entry.Problem = !checked.Problem.isEmpty() ? checked.Problem : !kind.isEmpty() ? kind : packing;
    if (entry.Size < 0 || entry.CompressedSize < 0)
        entry.Problem = u"it declares no size that is possible"_s;
    return entry;
}

/// Sorts what is below a name right behind it, and a file before a folder of its name.
bool ComesBefore(const ArchiveEntry* one, const ArchiveEntry* other)
{
    const auto separatorFirst = [](QChar a, QChar b) { return b != u'/' && (a == u'/' || a < b); };
    if (one->Name != other->Name)
        return std::lexicographical_compare(one->Name.begin(), one->Name.end(), other->Name.begin(), other->Name.end(),
                                            separatorFirst);
    return one->IsFolder != other->IsFolder ? other->IsFolder : one->Index < other->Index;
}

/// Marks names that stand there twice, and what has a file for a folder.
void MarkClashes(std::vector<ArchiveEntry>& entries)
{
    std::vector<ArchiveEntry*> sorted;
    sorted.reserve(entries.size());
    for (ArchiveEntry& entry : entries)
        sorted.push_back(&entry);
    std::sort(sorted.begin(), sorted.end(), ComesBefore);
    const ArchiveEntry* file = nullptr; // the last one that is not below another
    for (ArchiveEntry* entry : sorted) {
        const bool isTwice = file && entry->Name == file->Name;
        const bool isBelow = file && entry->Name.startsWith(file->Name + u'/');
        if (entry->Problem.isEmpty() && isTwice)
            entry->Problem = u"its name stands there twice"_s;
        if (entry->Problem.isEmpty() && isBelow)
            entry->Problem = u"a file stands there where it needs a folder"_s;
        if (!entry->IsFolder && !isTwice && !isBelow)
            file = entry;
    }
}

} // namespace

QString ArchiveName(const QString& name)
{
    QString safe = name;
    std::replace_if(
        safe.begin(), safe.end(), [](QChar c) { return c == u'\\' || IsControl(c); }, u'_');
    if (safe.size() > 1 && safe[1] == u':' && safe[0].isLetter())
        safe[1] = u'_';
    return safe;
}

std::vector<ArchiveEntry> EntriesOf(zip* archive)
{
    std::vector<ArchiveEntry> entries;
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    entries.reserve(size_t(count));
    for (zip_int64_t i = 0; i < count; ++i)
        entries.push_back(EntryAt(archive, quint64(i)));
    MarkClashes(entries);
    return entries;
}

QString WhyNotExtracted(const std::vector<ArchiveEntry>& entries, qint64 archiveSize, qint64 mostBytes)
{
    qint64 packed = 0;
    qint64 unpacked = 0;
    for (const ArchiveEntry& entry : entries) {
        if (entry.CompressedSize < 0 || entry.Size < 0)
            return u"it declares sizes that are not possible"_s;
        // Neither sum can overflow: each stops at its limit.
        packed += qMin(entry.CompressedSize, archiveSize + 1);
        unpacked += qMin(entry.Size, mostBytes + 1);
        if (packed > archiveSize)
            return u"its entries overlap, as those of an archive that is made to do harm"_s;
        if (unpacked > mostBytes)
            return u"it would unpack to more than %1, which is the limit for an archive of its size (%2)"_s.arg(
                QLocale(QLocale::English).formattedDataSize(mostBytes),
                QLocale(QLocale::English).formattedDataSize(archiveSize));
    }
    return {};
}

} // namespace qb
