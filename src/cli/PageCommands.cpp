// The web pages of items.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "platform/system/TextEncoding.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "web/DefaultPages.h"
#include "web/ItemPages.h"
#include "web/WebPages.h"

#include <QFileInfo>
#include <QTemporaryDir>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

/// What a machine is told of an item's page after a change, before it counts.
BeforeCommit Tells(const Arguments& arguments, Library& database, QJsonObject object)
{
    if (!arguments.Json())
        return {};
    return [&arguments, &database, object]() mutable {
        const qint64 id = arguments.Id(1);
        CCodeItem item;
        item.Initialise(database, QString::number(id));
        object.insert(u"id"_s, id);
        object.insert(u"page"_s, item.HTMLPage());
        object.insert(u"updated"_s, MomentText(item.HTMLLastUpdated(), Reader::Program));
        Print(object);
    };
}

int ShowPage(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const qint64 id = arguments.Id(1);
    RequireItem(*database, id);
    const QByteArray page = ReadPage(*database, id);
    if (!arguments.Json()) {
        Print(page); // as it is, in its own encoding
        return 0;
    }
    CCodeItem item;
    item.Initialise(*database, QString::number(id));
    const Date updated = item.HTMLLastUpdated();
    if (item.ReadFailed())
        return 1; // which has been reported
    Print(QJsonObject{{u"id"_s, id},
                      {u"page"_s, item.HTMLPage()},
                      {u"updated"_s, MomentText(updated, Reader::Program)},
                      {u"size"_s, page.size()},
                      {u"files"_s, QJsonArray::fromStringList(FilesOfPage(*database, id))},
                      {u"html"_s, DecodeText(page, FallbackEncoding::Windows1252).value_or(QString::fromUtf8(page))}});
    return 0;
}

int SetPageCommand(const QStringList& words)
{
    const Arguments arguments(words, {{"with", "folder"}}, 3);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    if (arguments.Has(u"with"_s) && !QFileInfo(arguments.Value(u"with"_s)).isDir())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"There is no folder '%1'; nothing was changed."_s.arg(arguments.Value(u"with"_s)),
                           u"page"_s);
    SetPage(*database, arguments.Id(1), arguments.Positional(2), arguments.Value(u"with"_s),
            Tells(arguments, *database, {}));
    return 0;
}

int DeletePageCommand(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    DeletePage(*database, arguments.Id(1), Tells(arguments, *database, {}));
    return 0;
}

int PictureCommand(const QStringList& words)
{
    const Arguments arguments(words, {{"width", "w"}, {"height", "h"}}, 3);
    const QSize size(arguments.NumberOption(u"width"_s, 0), arguments.NumberOption(u"height"_s, 0));
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    AddPicture(*database, arguments.Id(1), arguments.Positional(2), size, [&](const PagePicture& picture) {
        if (!arguments.Json())
            return Print(picture.Source + u'\n');
        Tells(arguments, *database,
              {{u"picture"_s, picture.Source}, {u"width"_s, picture.Width}, {u"height"_s, picture.Height}})();
    });
    return 0;
}

int LinkCommand(const QStringList& words)
{
    const Arguments arguments(words, {{"text", "text"}, {"before", "text"}, {"behind", "text"}}, 3);
    const PageLink link{.Address = arguments.Positional(2),
                        .Text = arguments.Value(u"text"_s),
                        .Before = arguments.Value(u"before"_s),
                        .Behind = arguments.Value(u"behind"_s)};
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    InsertLink(*database, arguments.Id(1), link, Tells(arguments, *database, {}));
    return 0;
}

int ExportPageCommand(const QStringList& words)
{
    const Arguments arguments(words, {}, 3);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const qint64 id = arguments.Id(1);
    RequireItem(*database, id);
    const int files = ExportPage(*database, id, arguments.Positional(2));
    if (arguments.Json())
        Print(QJsonObject{{u"id"_s, id}, {u"files"_s, files}});
    return 0;
}

/// The default pages of a library, or, where none is named, those that new libraries get now.
int DefaultsCommand(const QStringList& words)
{
    const Arguments arguments(words, {}, 1, Arguments::OrMore);
    if (arguments.Count() > 2)
        throw UsageError{u"There are too many arguments."_s};
    const QString target = arguments.Positional(arguments.Count() - 1);
    if (arguments.Count() == 2) {
        const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
        WriteDefaultPages(database->HTMLFolder(), target);
    } else {
        const QTemporaryDir pages;
        CreateDefaultHTMLItems(pages.path() + u'/');
        WriteDefaultPages(pages.path() + u'/', target);
    }
    if (arguments.Json())
        Print(QJsonObject{{u"file"_s, QFileInfo(target).absoluteFilePath()}});
    return 0;
}

struct Verb {
    const char* Name;
    int (*Run)(const QStringList& words);
};
constexpr Verb Verbs[] = {{"show", ShowPage},           {"set", SetPageCommand}, {"delete", DeletePageCommand},
                          {"picture", PictureCommand},  {"link", LinkCommand},   {"export", ExportPageCommand},
                          {"defaults", DefaultsCommand}};

} // namespace

int Page(const QStringList& words)
{
    for (const Verb& verb : Verbs) {
        if (words.value(0) == QLatin1StringView(verb.Name))
            return verb.Run(words.mid(1));
    }
    throw UsageError{u"'page' wants show, set, delete, picture, link, export or defaults."_s};
}

} // namespace qb::cli
