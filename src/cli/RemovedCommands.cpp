// What was removed and can be brought back.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "cli/ProgressLine.h"
#include "removed/RemovedReturn.h"

#include <QDir>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

QJsonObject ToJson(const ListedEntry& entry)
{
    const RemovedEntry& removed = *entry.Entry;
    QJsonArray files;
    for (const RemovedFile& file : removed.Files)
        files.append(file.Title);
    return {{u"entry"_s, entry.Id()},
            {u"removed"_s, MomentText(entry.Event->Index.Header.Moment, Reader::Program)},
            {u"kind"_s, NameOf(entry.Event->Index.Header.Kind)},
            {u"what"_s, entry.Event->Index.Header.What},
            {u"part"_s, NameOf(removed.Part)},
            {u"id"_s, removed.Item},
            {u"title"_s, removed.Title},
            {u"path"_s, removed.Path},
            {u"parent"_s, removed.Parent},
            {u"reason"_s, removed.Reason},
            {u"bytes"_s, removed.Bytes},
            {u"below"_s, entry.Below},
            {u"files"_s, files},
            {u"page"_s, removed.HasPage}};
}

QString LineFor(const ListedEntry& entry)
{
    const RemovedEntry& removed = *entry.Entry;
    const QString part = removed.Part == RemovedPart::Item ? QString() : u" (%1)"_s.arg(NameOf(removed.Part));
    const QString below = entry.Below == 0 ? QString() : u" and %1 below it"_s.arg(entry.Below);
    const QString path = removed.Path.isEmpty() ? QString() : removed.Path + u" / "_s;
    return u"%1  %2  %3  %4\n"_s.arg(entry.Id(), -19)
        .arg(MomentText(entry.Event->Index.Header.Moment, Reader::Person))
        .arg(CaptionOf(entry.Event->Index.Header.Kind), -21)
        .arg(path + removed.Title + part + below);
}

int ListRemoved(const QStringList& words)
{
    const Arguments arguments(words, {{"search", "words"}}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const RemovedList list(library->Name());
    for (const QString& problem : list.Problems())
        Complain(problem);
    QJsonArray entries;
    for (const ListedEntry& entry : list.Find(arguments.Value(u"search"_s))) {
        if (arguments.Json())
            entries.append(ToJson(entry));
        else
            Print(LineFor(entry));
    }
    if (arguments.Json())
        Print(entries);
    return 0;
}

int ShowRemoved(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const RemovedList list(library->Name());
    const ListedEntry entry = list.At(arguments.Positional(1));
    const QString preview = PreviewOf(entry, ReadRemoved(list, entry));
    if (!arguments.Json()) {
        Print(preview);
        return 0;
    }
    QJsonObject object = ToJson(entry);
    object.insert(u"preview"_s, preview);
    Print(object);
    return 0;
}

int RestoreRemoved(const QStringList& words)
{
    const Arguments arguments(words, {{"parent", "ID"}, {"alone", ""}}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const RemovedList list(library->Name());
    const ReturnOptions options{
        .Parent = arguments.Has(u"parent"_s) ? arguments.IdOption(u"parent"_s) : -1,
        .WithBranch = !arguments.Has(u"alone"_s),
        .BeforeCommit =
            [&arguments](const ReturnResult& result) {
                for (const QString& file : result.Missing)
                    Complain(u"The contents of the stored file '%1' were missing."_s.arg(file));
                if (arguments.Json())
                    Print(QJsonObject{{u"id"_s, result.Item},
                                      {u"items"_s, result.Items},
                                      {u"files"_s, result.Files},
                                      {u"pages"_s, result.Pages},
                                      {u"links"_s, result.Links},
                                      {u"bookmarks"_s, result.Bookmarks},
                                      {u"missing"_s, qint64(result.Missing.size())},
                                      {u"beside"_s, result.IsBeside}});
                else
                    Print(QString::number(result.Item) + u'\n');
            },
    };
    ReturnRemoved(*library, list, list.At(arguments.Positional(1)), options);
    return 0;
}

} // namespace

int Removed(const QStringList& words)
{
    if (words.value(0) == u"show"_s)
        return ShowRemoved(words.mid(1));
    if (words.value(0) == u"restore"_s)
        return RestoreRemoved(words.mid(1));
    return ListRemoved(words);
}

} // namespace qb::cli
