#include "removed/RemovedList.h"

#include "exchange/BranchImport.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/RuntimeError.h"
#include "store/PendingRemoved.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Whether a kind removes branches as wholes, of which a list shows the top alone.
bool RemovesBranches(RemovalKind kind)
{
    return kind == RemovalKind::DeletedByUser || kind == RemovalKind::RemoveAllDeleted;
}

/// For each entry the place of the one that it stood below, which comes before it; -1: none.
std::vector<int> PlacesAbove(const RemovedIndex& index)
{
    std::vector<int> above;
    QHash<qint64, int> places;
    for (const RemovedEntry& entry : index.Entries) {
        above.push_back(entry.Parent == 0 ? -1 : places.value(entry.Parent, -1));
        if (entry.Item != 0 && entry.Part == RemovedPart::Item)
            places.insert(entry.Item, int(above.size()) - 1);
    }
    return above;
}

bool HasAll(const RemovedEntry& entry, const QStringList& words)
{
    return std::all_of(words.begin(), words.end(), [&entry](const QString& word) {
        return entry.Title.contains(word, Qt::CaseInsensitive) || entry.Path.contains(word, Qt::CaseInsensitive)
               || std::any_of(entry.Files.begin(), entry.Files.end(), [&word](const RemovedFile& file) {
                      return file.Title.contains(word, Qt::CaseInsensitive);
                  });
    });
}

[[noreturn]] void RefuseEntry(const QString& id)
{
    throw RuntimeError(ErrorNumber::ItemNotFound,
                       u"Nothing that was removed is known as '%1'; nothing was changed."_s.arg(id), u"RemovedList"_s);
}

} // namespace

RemovedList::RemovedList(const QString& libraryPath) : m_folder(RemovedFolderOf(libraryPath))
{
    QStringList names;
    for (const QString& file : QDir(m_folder).entryList({u'*' + RemovedIndexExtension}, QDir::Files, QDir::Name)) {
        const QString name = file.chopped(RemovedIndexExtension.size());
        if (IsRemovedName(name))
            names.prepend(name);
    }
    m_events.reserve(size_t(names.size()));
    for (const QString& name : std::as_const(names))
        Read(name);
}

void RemovedList::Read(const QString& name)
{
    try {
        const QString index = m_folder + name + RemovedIndexExtension;
        ListedEvent event{.Name = name, .Stamp = name, .Index = ReadRemovedIndex(index)};
        event.Stamp.truncate(name.indexOf(u' ', name.indexOf(u' ') + 1));
        event.Stamp.remove(u'-').remove(u' ');
        const QString items = m_folder + name + RemovedItemsExtension;
        if (!IsPlainFile(items))
            throw RuntimeError(
                ErrorNumber::FileNotFound,
                u"'%1' is missing, so nothing of it can be brought back."_s.arg(QDir::toNativeSeparators(items)),
                u"RemovedList"_s);
        event.Bytes = QFileInfo(index).size() + QFileInfo(items).size();
        m_events.push_back(std::move(event));
    } catch (const RuntimeError& error) {
        m_problems << error.Description();
    }
}

qint64 RemovedList::Bytes() const
{
    qint64 bytes = 0;
    for (const ListedEvent& event : m_events)
        bytes += event.Bytes;
    return bytes;
}

std::vector<ListedEntry> RemovedList::Find(const QString& words) const
{
    const QStringList wanted = words.split(u' ', Qt::SkipEmptyParts);
    std::vector<ListedEntry> found;
    for (const ListedEvent& event : m_events) {
        const std::vector<int> above = PlacesAbove(event.Index);
        std::vector<int> below(above.size());
        for (size_t i = above.size(); i-- > 0;) {
            if (above[i] >= 0)
                below[size_t(above[i])] += below[i] + 1;
        }
        for (size_t i = 0; i < above.size(); ++i) {
            const bool isInBranch = above[i] >= 0 && RemovesBranches(event.Index.Header.Kind);
            if (wanted.isEmpty() ? !isInBranch : HasAll(event.Index.Entries[i], wanted))
                found.push_back({&event, &event.Index.Entries[i], below[i]});
        }
    }
    return found;
}

ListedEntry RemovedList::At(const QString& id) const
{
    const qsizetype dot = id.indexOf(u'.');
    const qint64 number = id.mid(dot + 1).toLongLong();
    const auto event = std::find_if(m_events.begin(), m_events.end(),
                                    [&](const ListedEvent& listed) { return dot > 0 && listed.Stamp == id.left(dot); });
    if (event == m_events.end() || number < 1 || number > qint64(event->Index.Entries.size()))
        RefuseEntry(id);
    return {&*event, &event->Index.Entries[size_t(number) - 1], 0};
}

QString RemovedList::ItemsFile(const ListedEvent& event) const
{
    return m_folder + event.Name + RemovedItemsExtension;
}

RemovedContents ReadRemoved(const RemovedList& list, const ListedEntry& entry, Work& work)
{
    const UnpackedBranch branch(list.ItemsFile(*entry.Event), work);
    if (branch.Items().size() != entry.Event->Index.Entries.size())
        throw RuntimeError(ErrorNumber::Corrupt,
                           u"'%1' does not hold what its list says; nothing was changed."_s.arg(
                               QDir::toNativeSeparators(list.ItemsFile(*entry.Event))),
                           u"ReadRemoved"_s);
    BranchReader reader(branch.Stream());
    RemovedContents contents;
    for (qint64 number = 1; number <= entry.Entry->Number; ++number) {
        contents = {};
        reader.Read(contents.Item);
        for (qint32 left = reader.ReadCount(); left > 0; --left) {
            reader.Read(contents.Files.emplace_back());
            reader.ReadContents(nullptr, contents.Files.back().Size, work);
        }
        for (qint32 left = contents.Item.HTMLPage ? reader.ReadCount() : 0; left > 0; --left) {
            BranchPage page;
            reader.Read(page);
            reader.ReadContents(nullptr, page.Size, work);
            contents.Pages << page.Name;
        }
    }
    return contents;
}

QString PreviewOf(const ListedEntry& entry, const RemovedContents& contents)
{
    QString text = entry.Entry->Title + u'\n';
    const auto add = [&text](const QString& caption, const QString& content) {
        if (!content.trimmed().isEmpty())
            text += u'\n' + caption + u'\n' + content.trimmed() + u'\n';
    };
    add(u"Stood in:"_s, entry.Entry->Path);
    add(u"Why it went:"_s, entry.Entry->Reason);
    if (!entry.Entry->Changed.IsNone())
        add(u"Last changed:"_s, QLocale().toString(QDateTime(entry.Entry->Changed.Day(), entry.Entry->Changed.Time()),
                                                   QLocale::ShortFormat));
    add(u"Description:"_s, contents.Item.Description);
    add(u"Info:"_s, contents.Item.Info);
    add(u"Code:"_s, PlainTextFromRtf(contents.Item.Code));
    add(u"Usage:"_s, PlainTextFromRtf(contents.Item.Example));
    add(u"Notes:"_s, PlainTextFromRtf(contents.Item.Notes));
    QStringList files;
    for (size_t i = 0; i < contents.Files.size(); ++i) {
        const BranchFile& file = contents.Files[i];
        const bool isMissing = i < entry.Entry->Files.size() && entry.Entry->Files[i].IsMissing;
        const QString size = entry.Entry->Part == RemovedPart::Description ? QString()
                             : isMissing                                   ? u" (its contents are missing)"_s
                                         : u" (%1)"_s.arg(QLocale().formattedDataSize(file.Size));
        files << file.Title + size + (file.Description.isEmpty() ? QString() : u": "_s + file.Description);
    }
    add(entry.Entry->Part == RemovedPart::Description ? u"Description of the stored file:"_s : u"Stored files:"_s,
        files.join(u'\n'));
    if (!contents.Pages.isEmpty())
        text += u"\nIt has a web page.\n"_s;
    return text;
}

} // namespace qb
