#include "store/Bookmarks.h"

#include "platform/dao/Database.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Source = u"Bookmarks"_s;

/// The name as it is kept. Raises an error when it can't be, or is that of another group than @p own.
QString StorableName(Library& library, const QString& name, qint64 own)
{
    const QString trimmed = name.simplified();
    if (trimmed.isEmpty())
        throw RuntimeError(ErrorNumber::ValueNotAllowed, u"A bookmark group needs a name; nothing was changed."_s,
                           Source);
    if (trimmed.size() > LongestGroupName)
        throw RuntimeError(
            ErrorNumber::ValueNotAllowed,
            u"The name '%1...' has %2 characters; a bookmark group has %3 at most. Nothing was changed."_s
                .arg(trimmed.left(LongestGroupName))
                .arg(trimmed.size())
                .arg(LongestGroupName),
            Source);
    const qint64 known = FindBookmarkGroup(library, trimmed);
    if (known != 0 && known != own)
        throw RuntimeError(ErrorNumber::KeyExists,
                           u"There is a bookmark group '%1' already; nothing was changed."_s.arg(trimmed), Source);
    return trimmed;
}

} // namespace

std::vector<BookmarkRow> ReadBookmarks(Library& library)
{
    std::vector<BookmarkRow> bookmarks;
    Statement rows = library.Query(
        u"SELECT Bookmarks.ID, Items.ID, Items.Title, Bookmarks.BookmarkGroup, Bookmarks.Description "
        "FROM Bookmarks INNER JOIN Items ON Bookmarks.codeID = Items.ID"_s);
    while (rows.Step())
        bookmarks.push_back({rows.Long(0), rows.Long(1), rows.Text(2), rows.Long(3), rows.Text(4)});
    // Whichever of the tables the engine has begun with
    std::sort(bookmarks.begin(), bookmarks.end(),
              [](const BookmarkRow& left, const BookmarkRow& right) { return left.Id < right.Id; });
    return bookmarks;
}

std::vector<BookmarkGroup> ReadBookmarkGroups(Library& library)
{
    std::vector<BookmarkGroup> groups;
    Statement rows = library.Query(u"SELECT ID, \"Group\" FROM BookmarkGroups ORDER BY ID"_s);
    while (rows.Step())
        groups.push_back({rows.Long(0), rows.Text(1)});
    return groups;
}

/// The engine folds the case of ASCII letters only.
qint64 FindBookmarkGroup(Library& library, const QString& name)
{
    const QString wanted = name.simplified();
    const std::vector<BookmarkGroup> groups = ReadBookmarkGroups(library);
    const auto found = std::find_if(groups.begin(), groups.end(), [&wanted](const BookmarkGroup& group) {
        return group.Name.compare(wanted, Qt::CaseInsensitive) == 0;
    });
    return found == groups.end() ? 0 : found->Id;
}

qint64 AddBookmarkGroup(Library& library, const QString& name)
{
    Transaction transaction(library);
    Recordset row = library.OpenRecordset(u"BookmarkGroups"_s, u"ID = 0"_s);
    row.AddNew();
    row.Set(u"Group"_s, StorableName(library, name, 0));
    row.Update();
    transaction.Commit();
    return row.LastModified();
}

void RenameBookmarkGroup(Library& library, qint64 group, const QString& name)
{
    Transaction transaction(library);
    const QString stored = StorableName(library, name, group);
    if (library.Execute(u"UPDATE BookmarkGroups SET \"Group\" = ? WHERE ID = ?"_s, {stored, group}) == 0)
        throw RuntimeError(ErrorNumber::RecordDeleted,
                           u"The bookmark group has been deleted, perhaps by another program."_s, Source);
    transaction.Commit();
}

void RemoveBookmarkGroup(Library& library, qint64 group)
{
    library.Execute(u"DELETE FROM BookmarkGroups WHERE ID = ?"_s, {group}); // its bookmarks go by the relation
}

QString BookmarkInOneLine(QString description)
{
    return description.replace(u"\r\n"_s, u" "_s).replace(u'\n', u' ').replace(u'\r', u' ');
}

} // namespace qb
