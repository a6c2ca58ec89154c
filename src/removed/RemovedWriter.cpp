#include "removed/RemovedWriter.h"

#include "exchange/PageNames.h"
#include "maintenance/Containers.h"
#include "platform/dao/Blob.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "store/PendingRemoved.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <limits>
#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString LongNameColumn = u"LongName"_s; // of pages in columns whose names are too long for the others
constexpr qint64 Piece = 1 << 18;             // bytes of contents that move at a time

/// A table as statements and definitions name it.
QString TableOf(const QString& schema, const QString& table)
{
    return schema == MainSchema ? table : schema + u'.' + table;
}

} // namespace

void FlushNames(const QString& folder)
{
    if (!SyncFolder(folder))
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be written to the disk. Nothing was changed."_s.arg(QDir::toNativeSeparators(folder)),
            u"RemovedEvent"_s);
}

/// Parents before their children, otherwise as they came. A cycle in damaged rows is walked once.
std::vector<RemovedWriter::ChosenRow> RemovedWriter::ParentsFirst(const std::vector<ChosenRow>& rows)
{
    std::unordered_map<qint64, size_t> places;
    for (size_t i = 0; i < rows.size(); ++i)
        places.emplace(rows[i].Id, i);
    std::vector<ChosenRow> ordered;
    std::vector<bool> done(rows.size());
    std::vector<size_t> way;
    for (size_t i = 0; i < rows.size(); ++i) {
        for (size_t at = i; !done[at];) {
            done[at] = true;
            way.push_back(at);
            const auto parent = places.find(rows[at].Parent);
            if (parent == places.end())
                break;
            at = parent->second;
        }
        for (; !way.empty(); way.pop_back())
            ordered.push_back(rows[way.back()]);
    }
    return ordered;
}

RemovedWriter::RemovedWriter(Library& library, const QString& folder, const RemovedHeader& header)
    : m_library(library), m_path(folder + PendingRemovedName), m_stream(m_path + RemovedItemsExtension, 0),
      m_index(m_path + RemovedIndexExtension, header)
{
    KeepNoMoreRightsThan(library.Name(), m_path + RemovedItemsExtension);
    KeepNoMoreRightsThan(library.Name(), m_path + RemovedIndexExtension);
}

int RemovedWriter::AddItems(const RemovedRows& rows, const QString& reason, RemovedPart part)
{
    int added = 0;
    for (const ChosenRow& row : Choose(rows, u"SELECT r.rowid, r.ID, r.ParentID FROM %1 AS r WHERE %2"_s.arg(
                                                 TableOf(rows.Schema, rows.Items), rows.Where)))
        added += AddItem(rows, row, reason, part) ? 1 : 0;
    return added;
}

int RemovedWriter::AddFiles(const RemovedRows& rows, const QString& reason, RemovedPart part)
{
    const std::vector<ChosenRow> files = Choose(
        rows, u"SELECT f.rowid, f.rowid, 0 FROM %1 AS f LEFT JOIN %2 AS r ON r.ID = f.CodeID WHERE %3"_s.arg(
                  TableOf(rows.Schema, rows.Files), TableOf(rows.Schema, rows.Items), rows.Where));
    for (const ChosenRow& file : files)
        AddFile(rows, file.Row, reason, part);
    return int(files.size());
}

void RemovedWriter::Close()
{
    AddTrailer();
    m_stream.SetCount(qint32(m_entries));
    m_stream.Close();
    m_index.Close();
    // Packed where it lies: the container bears the name of the stream.
    if (PackExport(m_path + RemovedItemsExtension, NoWork(), Compression::Fast).isEmpty())
        throw RuntimeError(ErrorNumber::Cancelled, u"What is removed was not kept; nothing was changed."_s,
                           u"RemovedEvent"_s);
    for (const QString& extension : {RemovedItemsExtension, RemovedIndexExtension}) {
        KeepNoMoreRightsThan(m_library.Name(), m_path + extension);
        SyncFile(m_path + extension);
    }
    FlushNames(QFileInfo(m_path).absolutePath());
}

std::vector<RemovedWriter::ChosenRow> RemovedWriter::Choose(const RemovedRows& rows, const QString& statement)
{
    std::vector<ChosenRow> chosen;
    Statement found = m_library.Query(statement, rows.Parameters);
    while (found.Step())
        chosen.push_back({found.Long(0), found.Long(1), found.Long(2)});
    return ParentsFirst(chosen);
}

bool RemovedWriter::AddItem(const RemovedRows& rows, const ChosenRow& chosen, const QString& reason, RemovedPart part)
{
    Statement row = m_library.Query(
        u"SELECT %1, %2, r.Title, r.Description, r.Info, r.Created, r.LastChanged, r.User, r.ItemStatus, "
        "r.ItemRating, r.Code, r.CodeHeaders, r.Notes, r.Example, r.UsageHeaders, r.HTMLPage, r.HTMLLastUpdated "
        "FROM %3 AS r WHERE r.rowid = ?"_s.arg(rows.ItemId, rows.ParentId, TableOf(rows.Schema, rows.Items)),
        {chosen.Row});
    if (!row.Step())
        return false;
    m_rows = &rows;
    m_entry = {.Number = m_entries + 1,
               .Part = part,
               .Item = std::max<qint64>(0, row.Long(0)),
               .Title = row.Text(2),
               .Parent = std::max<qint64>(0, row.Long(1)),
               .Reason = reason,
               .Created = row.Column(5).ToDate(),
               .Changed = row.Column(6).ToDate()};
    const bool isWhole = part == RemovedPart::Item;
    const std::vector<Page> pages = row.Long(15) != 0 ? PagesOf(chosen.Id) : std::vector<Page>();
    if (!isWhole && pages.empty())
        return false;
    m_entry.HasPage = !pages.empty();
    BranchItem item = RecordOf(chosen, m_entry.Item);
    item.HTMLPage = m_entry.HasPage;
    item.HTMLLastUpdated = row.Column(16).ToDate();
    if (isWhole)
        TakeTexts(item, row);
    m_stream.Write(item);
    WriteFiles(isWhole ? FilesOf(chosen.Id) : std::vector<qint64>(), false);
    WritePages(pages, item.Key, chosen.Id);
    if (isWhole)
        TakeRelations(chosen.Id);
    Finish();
    return true;
}

void RemovedWriter::AddFile(const RemovedRows& rows, qint64 file, const QString& reason, RemovedPart part)
{
    m_rows = &rows;
    Statement owner = m_library.Query(
        u"SELECT r.ID, %1, %2, r.Title FROM %3 AS f LEFT JOIN %4 AS r ON r.ID = f.CodeID WHERE f.rowid = ?"_s.arg(
            rows.ItemId, rows.ParentId, TableOf(rows.Schema, rows.Files), TableOf(rows.Schema, rows.Items)),
        {file});
    owner.Step();
    m_entry = {.Number = m_entries + 1,
               .Part = part,
               .Item = std::max<qint64>(0, owner.Long(1)),
               .Title = owner.Text(3),
               .Parent = std::max<qint64>(0, owner.Long(2)),
               .Reason = reason};
    m_stream.Write(RecordOf({}, m_entry.Item));
    WriteFiles({file}, part == RemovedPart::Description);
    Finish();
}

BranchItem RemovedWriter::RecordOf(const ChosenRow& row, qint64 id)
{
    QString key = id > 0 ? QString::number(id) : u"new"_s;
    while (m_keys.contains(key)) // another version of it
        key = QString::number(std::max<qint64>(0, id)) + u'.' + QString::number(m_entries + 1);
    m_keys.insert(key);
    m_lastKey = key;
    const QString table = TableOf(m_rows->Schema, m_rows->Items);
    const QString above = m_keyOfRow.value({table, row.Parent});
    if (row.Id != 0)
        m_keyOfRow.insert({table, row.Id}, key);
    BranchItem item;
    item.Title = m_entry.Title.isEmpty() ? u" "_s : m_entry.Title; // an empty one ends the reading
    item.Key = key;
    item.ParentKey = above.isEmpty() ? u"0"_s : above;
    item.ParentNodeKey = above.isEmpty() ? u"ROOT"_s : above + u'C';
    return item;
}

void RemovedWriter::TakeTexts(BranchItem& item, const Statement& row)
{
    item.Description = row.Text(3);
    item.Info = row.Text(4);
    item.User = row.Text(7);
    item.ItemStatus = qint32(row.Long(8));
    item.ItemRating = qint32(row.Long(9));
    item.Code = row.Text(10);
    item.CodeHeaders = quint8(row.Long(11));
    item.Notes = row.Text(12);
    item.Example = row.Text(13);
    item.UsageHeaders = quint8(row.Long(14));
    m_entry.Bytes += item.Info.size() + item.Code.size() + item.Notes.size() + item.Example.size();
}

std::vector<qint64> RemovedWriter::FilesOf(qint64 id)
{
    std::vector<qint64> files;
    if (m_rows->Files.isEmpty())
        return files;
    Statement rows = m_library.Query(u"SELECT f.rowid FROM %1 AS f WHERE f.CodeID = ? ORDER BY f.rowid"_s.arg(
                                         TableOf(m_rows->Schema, m_rows->Files)),
                                     {id});
    while (rows.Step())
        files.push_back(rows.Long(0));
    return files;
}

void RemovedWriter::WriteFiles(const std::vector<qint64>& files, bool descriptionsOnly)
{
    m_stream.WriteCount(qint32(files.size()));
    const bool inColumns = m_rows->Lie == RemovedRows::Contents::InColumns;
    const QString table = TableOf(m_rows->Schema, m_rows->Files);
    for (const qint64 file : files) {
        Statement row = m_library.Query(
            u"SELECT f.ID, f.Title, f.OrigDateTime, f.DateAdded, f.Description, %1 FROM %2 AS f WHERE f.rowid = ?"_s
                .arg(inColumns ? u"f.File IS NULL"_s : u"0"_s, table),
            {file});
        if (!row.Step())
            throw RuntimeError(ErrorNumber::RecordDeleted, u"A stored file is gone; nothing was changed."_s,
                               u"RemovedEvent"_s);
        BranchFile record{.Title = row.Text(1),
                          .OrigDateTime = row.Column(2).ToDate(),
                          .DateAdded = row.Column(3).ToDate(),
                          .Description = row.Text(4)};
        RemovedFile entry{.Id = row.Long(0), .Title = record.Title};
        const auto writeRecord = [&](qint64 size) {
            record.Size = size;
            m_stream.Write(record);
        };
        if (descriptionsOnly)
            writeRecord(0);
        else if (inColumns)
            entry.IsMissing = row.Long(5) != 0 || !WriteColumn(table, file, writeRecord);
        else
            entry.IsMissing = !WriteFileOf(ReadableStoredFile(m_library, entry.Id, record.Title), writeRecord);
        if (entry.IsMissing)
            writeRecord(0);
        entry.Bytes = record.Size;
        m_entry.Bytes += record.Size;
        m_entry.Files.push_back(entry);
    }
}

bool RemovedWriter::WriteFileOf(const QString& path, const std::function<void(qint64)>& writeRecord)
{
    if (path.isEmpty())
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be read: %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(path), file.errorString()),
            u"RemovedEvent"_s);
    const qint64 size = file.size();
    writeRecord(size);
    m_stream.WriteContents(file, size, NoWork());
    return true;
}

bool RemovedWriter::WriteColumn(const QString& table, qint64 row, const std::function<void(qint64)>& writeRecord)
{
    const Blob contents(m_library, m_library.GetTableDef(table), u"File"_s, row);
    const qint64 size = contents.Size();
    writeRecord(size);
    for (qint64 at = 0; at < size; at += Piece)
        m_stream.WriteContents(contents.Read(at, Piece));
    return true;
}

std::vector<RemovedWriter::Page> RemovedWriter::PagesOf(qint64 id)
{
    std::vector<Page> pages;
    const QString own = QString::number(id) + u".htm"_s;
    if (m_rows->Lie == RemovedRows::Contents::InFolders) {
        for (const QString& path : PageFilesOf(m_library, id))
            pages.push_back({.Path = path, .Name = PageNameOf(path, id), .IsPage = path == own});
        return pages;
    }
    const QString table = TableOf(m_rows->Schema, m_rows->Pages);
    if (m_rows->Pages.isEmpty() || !m_library.TableExists(table))
        return pages;
    const bool hasLong = m_library.GetTableDef(table).FindField(LongNameColumn) != nullptr;
    Statement rows = m_library.Query(
        u"SELECT p.rowid, coalesce(%1, coalesce(p.Folder, '') || p.Name) FROM %2 AS p WHERE p.ItemIDRef = ? AND "
        "p.File IS NOT NULL ORDER BY p.rowid"_s.arg(hasLong ? u"p."_s + LongNameColumn : u"NULL"_s, table),
        {id});
    while (rows.Step())
        pages.push_back({.Path = {}, .Row = rows.Long(0), .Name = rows.Text(1), .IsPage = rows.Text(1) == own});
    // The page itself comes first.
    std::stable_sort(pages.begin(), pages.end(),
                     [](const Page& left, const Page& right) { return left.IsPage && !right.IsPage; });
    return pages;
}

void RemovedWriter::WritePages(const std::vector<Page>& pages, const QString& key, qint64 id)
{
    if (pages.empty())
        return; // nothing is read of an item without a page
    m_stream.WriteCount(qint32(pages.size()));
    bool isFirst = true;
    for (const Page& page : pages) {
        BranchPage record;
        record.Name = page.IsPage && isFirst ? key + u".htm"_s : page.Name;
        if (!PlaceOfPage(record.Name, key, isFirst)) // it is no name, and nobody could read it back
            record.Name = u"page file %1"_s.arg(page.Row);
        record.Number = page.IsPage ? qint32(std::min<qint64>(id, std::numeric_limits<qint32>::max())) : 0;
        isFirst = false;
        const auto writeRecord = [&](qint64 size) {
            record.Size = size;
            m_entry.Bytes += size;
            m_stream.Write(record);
        };
        if (page.Path.isEmpty()) {
            WriteColumn(TableOf(m_rows->Schema, m_rows->Pages), page.Row, writeRecord);
            continue;
        }
        const QString path = m_library.HTMLFolder() + page.Path;
        record.Modified = Date::FromDateTime(QFileInfo(path).lastModified());
        if (!WriteFileOf(path, writeRecord))
            writeRecord(0);
    }
}

void RemovedWriter::TakeRelations(qint64 id)
{
    if (!m_rows->Links.isEmpty())
        TakeLinks(id);
    if (m_rows->Schema != MainSchema || m_rows->Items != u"Items")
        return;
    m_idKeys.emplace(id, m_lastKey);
    Statement bookmarks = m_library.Query(
        u"SELECT g.\"Group\", b.Description FROM Bookmarks AS b LEFT JOIN BookmarkGroups AS g ON g.ID = "
        "b.BookmarkGroup WHERE b.CodeID = ? ORDER BY b.ID"_s,
        {id});
    while (bookmarks.Step())
        m_entry.Bookmarks.push_back({bookmarks.Text(0), bookmarks.Text(1)});
}

void RemovedWriter::TakeLinks(qint64 id)
{
    // Two statements: each has an index of its own.
    const QString statement = u"SELECT ItemID, LinkItemID, Note, DateAdded FROM %1 WHERE %2 = ? ORDER BY ID"_s;
    for (const QString& end : {u"ItemID"_s, u"LinkItemID"_s}) {
        Statement links = m_library.Query(statement.arg(TableOf(m_rows->Schema, m_rows->Links), end), {id});
        while (links.Step()) {
            const RemovedLink link{links.Long(0), links.Long(1), links.Text(2), links.Column(3).ToDate()};
            if (end == u"LinkItemID" && link.From == link.To)
                continue;
            m_entry.Links.push_back(link);
            if (end == u"ItemID")
                m_links.push_back(link);
        }
    }
}

QString RemovedWriter::PathTo(qint64 parent)
{
    if (parent <= 0)
        return {};
    if (const auto known = m_paths.constFind(parent); known != m_paths.constEnd())
        return *known;
    QStringList titles;
    std::unordered_set<qint64> seen;
    for (qint64 at = parent; at > 0 && seen.insert(at).second;) {
        Statement row = m_library.Query(u"SELECT ParentID, Title FROM Items WHERE ID = ?"_s, {at});
        if (!row.Step())
            break;
        titles.prepend(row.Text(1));
        at = row.Long(0);
    }
    return *m_paths.insert(parent, titles.join(u" / "_s));
}

void RemovedWriter::Finish()
{
    m_entry.Path = PathTo(m_entry.Parent);
    m_index.Write(m_entry);
    ++m_entries;
}

void RemovedWriter::AddTrailer()
{
    BranchTrailer trailer;
    for (const RemovedLink& link : m_links) {
        const auto from = m_idKeys.find(link.From);
        const auto to = m_idKeys.find(link.To);
        if (from != m_idKeys.end() && to != m_idKeys.end())
            trailer.Links.push_back({from->second, to->second, link.Note});
    }
    m_stream.Write(trailer);
}

} // namespace qb
