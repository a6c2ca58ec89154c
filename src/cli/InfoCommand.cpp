// What a library holds, and what is known of an item beside its texts.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "store/Bookmarks.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/ItemStatus.h"

#include <QFileInfo>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

QString KindOf(const ReplicaState& state)
{
    if (state.IsChild && state.IsMother)
        return u"child and mother"_s;
    if (state.IsChild)
        return u"child"_s;
    return state.IsMother ? u"mother"_s : u"plain"_s;
}

/// As an object, or a line a fact in the order of @p names.
void PrintFacts(const QJsonObject& facts, const QStringList& names, bool json)
{
    if (json)
        return Print(facts);
    qsizetype width = 0;
    for (const QString& name : names)
        width = qMax(width, name.size());
    for (const QString& name : names)
        Print(u"%1 %2\n"_s.arg(name + u':', -int(width) - 1).arg(facts.value(name).toVariant().toString()));
}

void PrintLibrary(Library& library, bool json)
{
    const Recordset properties = library.OpenRecordset(u"Properties"_s);
    const auto count = [&](const QString& table) {
        return library.QueryValue(u"SELECT count(*) FROM "_s + table).ToLong();
    };
    const auto property = [&](const QString& name) {
        return properties.IsEmpty() ? QString() : properties[name].ToText();
    };
    PrintFacts({{u"path"_s, library.Name()},
                {u"size"_s, QFileInfo(library.Name()).size()},
                {u"identity"_s, property(u"DBID"_s)},
                {u"kind"_s, KindOf(ReadReplicaState(library))},
                {u"language"_s, property(u"LanguageUsed"_s)},
                {u"version"_s, property(u"Version"_s)},
                {u"items"_s, count(u"Items"_s)},
                {u"files"_s, count(u"Files"_s)},
                {u"bookmarks"_s, count(u"Bookmarks"_s)},
                {u"links"_s, count(u"ItemLinks"_s)},
                {u"keywords"_s, count(u"Keywords"_s)}},
               {u"path"_s, u"size"_s, u"identity"_s, u"kind"_s, u"language"_s, u"version"_s, u"items"_s, u"files"_s,
                u"bookmarks"_s, u"links"_s, u"keywords"_s},
               json);
}

QJsonArray BookmarksOf(Library& library, qint64 item)
{
    QJsonArray bookmarks;
    for (const BookmarkRow& bookmark : ReadBookmarks(library)) {
        if (bookmark.Item == item)
            bookmarks.append(bookmark.Id);
    }
    return bookmarks;
}

int PrintItem(Library& library, qint64 id, bool json)
{
    RequireItem(library, id);
    CCodeItem item;
    item.Initialise(library, QString::number(id));
    item.Title();
    if (item.ReadFailed())
        return 1; // which has been reported
    const Reader reader = json ? Reader::Program : Reader::Person;
    const QString status = NameOfStatus(item.ItemStatus());
    const qint32 rating = item.ItemRating();
    const qint64 files = library.QueryValue(u"SELECT count(*) FROM Files WHERE CodeID = ?"_s, {id}).ToLong();
    const QJsonArray bookmarks = BookmarksOf(library, id);
    QJsonObject facts{{u"id"_s, id},
                      {u"parent"_s, item.ParentKey().toLongLong()},
                      {u"title"_s, item.Title()},
                      {u"status"_s, status.isEmpty() ? u"none"_s : status},
                      {u"rating"_s, rating >= 1 && rating <= BestRating ? rating : 0},
                      {u"created"_s, MomentText(item.Created(), reader)},
                      {u"changed"_s, MomentText(item.LastChanged(), reader)},
                      {u"user"_s, item.User()},
                      {u"files"_s, files},
                      {u"links"_s, item.Links().Count()},
                      {u"page"_s, item.HTMLPage()},
                      {u"bookmarks"_s, json ? QJsonValue(bookmarks) : QJsonValue(bookmarks.size())}};
    if (json)
        facts.insert(u"info"_s, item.Info());
    PrintFacts(facts,
               {u"id"_s, u"parent"_s, u"title"_s, u"status"_s, u"rating"_s, u"created"_s, u"changed"_s, u"user"_s,
                u"files"_s, u"links"_s, u"page"_s, u"bookmarks"_s},
               json);
    if (const QString info = item.Info().replace(u"\r\n"_s, u"\n"_s); !json && !info.isEmpty())
        Print(u"\n%1%2"_s.arg(info, info.endsWith(u'\n') ? QString() : u"\n"_s));
    return 0;
}

} // namespace

int Info(const QStringList& words)
{
    const Arguments arguments(words, {}, 1, Arguments::OrMore);
    if (arguments.Count() > 2)
        throw UsageError{u"Unexpected argument '%1'."_s.arg(arguments.Positional(2))};
    const qint64 item = arguments.Count() > 1 ? arguments.Id(1) : 0; // before the library is opened
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    if (arguments.Count() > 1)
        return PrintItem(*library, item, arguments.Json());
    PrintLibrary(*library, arguments.Json());
    return 0;
}

} // namespace qb::cli
