// The commands on bookmarks.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "store/Bookmarks.h"
#include "store/CBookmark.h"
#include "store/ItemRules.h"

#include <QHash>

namespace qb::cli {

using namespace Qt::StringLiterals;

int Bookmarks(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    QHash<qint64, QString> groups;
    for (const BookmarkGroup& group : ReadBookmarkGroups(*library))
        groups.insert(group.Id, group.Name);
    QJsonArray all;
    for (const BookmarkRow& bookmark : ReadBookmarks(*library)) {
        const QString group = groups.value(bookmark.Group);
        if (arguments.Json())
            all.append(QJsonObject{{u"id"_s, bookmark.Id},
                                   {u"item"_s, bookmark.Item},
                                   {u"title"_s, bookmark.Title},
                                   {u"group"_s, group},
                                   {u"text"_s, bookmark.Description}});
        else
            Print(u"%1\t%2\t%3\t%4\t%5\n"_s.arg(QString::number(bookmark.Id), QString::number(bookmark.Item), group,
                                                bookmark.Title, BookmarkInOneLine(bookmark.Description)));
    }
    if (arguments.Json())
        Print(all);
    return 0;
}

int Bookmark(const QStringList& words)
{
    const Arguments arguments(words, {{"group", "name"}, {"text", "text"}}, 2);
    const QString name = arguments.Value(u"group"_s);
    if (name.simplified().isEmpty())
        throw UsageError{u"--group is missing."_s};
    const qint64 item = arguments.Id(1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    Transaction transaction(*library);
    RequireChange(*library, item, {ItemChange::Bookmark});
    const qint64 known = FindBookmarkGroup(*library, name);
    CBookmark bookmark;
    bookmark.Initialise(*library, {});
    bookmark.SetCodeItemKey(QString::number(item));
    bookmark.SetDescription(arguments.Value(u"text"_s));
    bookmark.SetGroupNo(known != 0 ? known : AddBookmarkGroup(*library, name));
    if (!bookmark.Commit())
        return 1;
    // Before the commit: whoever is not told of the bookmark must not get one.
    if (arguments.Json())
        Print(QJsonObject{{u"id"_s, bookmark.Key().toLongLong()}});
    else
        Print(bookmark.Key() + u'\n');
    transaction.Commit();
    return 0;
}

int BookmarkRemove(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const qint64 id = arguments.Id(1);
    Transaction transaction(*library);
    if (library->QueryValue(u"SELECT 1 FROM Bookmarks WHERE ID = ?"_s, {id}).IsNull())
        throw RuntimeError(ErrorNumber::ItemNotFound, u"There is no bookmark %1; nothing was changed."_s.arg(id),
                           u"bookmark-remove"_s);
    CBookmark bookmark;
    bookmark.Initialise(*library, arguments.Positional(1));
    bookmark.Delete();
    if (!bookmark.Commit())
        return 1;
    transaction.Commit();
    return 0;
}

} // namespace qb::cli
