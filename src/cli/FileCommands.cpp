// Stored files.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "maintenance/FileImport.h"
#include "platform/richtext/RtfPlainText.h"
#include "removed/Keeping.h"
#include "store/CFileObject.h"
#include "store/ItemRules.h"
#include "store/StoredFiles.h"

#include <QFileInfo>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

/// The row of a stored file; raises an error when there is none.
std::unique_ptr<CFileObject> OpenFile(Library& database, qint64 id)
{
    if (database.QueryValue(u"SELECT 1 FROM Files WHERE ID = ?"_s, {id}).IsNull())
        throw RuntimeError(ErrorNumber::ItemNotFound, u"There is no stored file %1; nothing was changed."_s.arg(id),
                           u"files"_s);
    auto file = std::make_unique<CFileObject>();
    file->Initialise(database, QString::number(id));
    return file;
}

/// Takes "--zip each" or "--zip all NAME" out of the words of a command.
void TakeZipOption(QStringList& words, FileImportOptions& options)
{
    const qsizetype at = words.indexOf(u"--zip"_s);
    if (at < 0)
        return;
    const QString way = words.value(at + 1);
    if (way != u"each"_s && way != u"all"_s)
        throw UsageError{u"'--zip' wants 'each' or 'all NAME'."_s};
    options.Option = way == u"each"_s ? ImportOption::ZipEach : ImportOption::ZipAll;
    if (options.Option == ImportOption::ZipAll) {
        options.ZipName = words.value(at + 2);
        if (options.ZipName.isEmpty())
            throw UsageError{u"'--zip all' wants the name of the archive."_s};
        words.removeAt(at + 2);
    }
    words.remove(at, 2);
}

} // namespace

int Attach(const QStringList& words)
{
    QStringList rest = words;
    FileImportOptions options;
    TakeZipOption(rest, options);
    const Arguments arguments(rest, {{"description", "text"}}, 3, Arguments::OrMore);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const qint64 item = arguments.Id(1);
    RequireChange(*database, item, {ItemChange::EditUnasked});
    options.Description = RtfFromPlainText(arguments.Value(u"description"_s), CodeFont);
    QStringList files;
    for (int i = 2; i < arguments.Count(); ++i)
        files << arguments.Positional(i);
    const FileImportPlan plan = options.Option == ImportOption::AsTheyAre ? FileImportPlan{files, {}}
                                                                          : PlanFileImport(files);
    options.Whole = true;
    options.BeforeCommit = [&](const QStringList& keys) {
        RequireChange(*database, item, {ItemChange::EditUnasked}); // copying takes its time
        Print(keys.join(u'\n') + u'\n');
    };
    return ImportStoredFiles(*database, QString::number(item), plan, options).Complete
               ? 0
               : 1; // what was wrong has been reported
}

int Files(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    QJsonArray all;
    for (const qint64 id : StoredFilesOf(*database, arguments.Id(1))) {
        const std::unique_ptr<CFileObject> opened = OpenFile(*database, id);
        CFileObject& file = *opened;
        file.Title();
        if (file.ReadFailed())
            return 1; // which has been reported
        if (arguments.Json())
            all.append(QJsonObject{{u"id"_s, id},
                                   {u"title"_s, file.Title()},
                                   {u"size"_s, file.Size()},
                                   {u"date"_s, MomentText(file.OrigDateTime(), Reader::Program)},
                                   {u"added"_s, MomentText(file.DateAdded(), Reader::Program)},
                                   {u"description"_s, PlainTextFromRtf(file.Description())}});
        else
            Print(u"%1\t%2\t%3\t%4\n"_s.arg(QString::number(id), QString::number(file.Size()),
                                            MomentText(file.OrigDateTime(), Reader::Person), file.Title()));
    }
    if (arguments.Json())
        Print(all);
    return 0;
}

int Extract(const QStringList& words)
{
    const Arguments arguments(words, {}, 3);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const std::unique_ptr<CFileObject> opened = OpenFile(*database, arguments.Id(1));
    CFileObject& file = *opened;
    const QString title = file.Title();
    if (file.ReadFailed())
        return 1; // which has been reported
    const QFileInfo target(arguments.Positional(2));
    const QString path = target.isDir() ? target.absoluteFilePath() + u'/' + title : target.absoluteFilePath();
    return file.SaveToFile2(path).isEmpty() ? 1 : 0;
}

int Detach(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const std::unique_ptr<CFileObject> file = OpenFile(*database, arguments.Id(1));
    const qint64 item = file->CodeID().toLongLong();
    if (!database->QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {item}).IsNull()) // else nobody's file
        RequireChange(*database, item, {ItemChange::EditUnasked});
    DeleteStoredFiles(*database, {arguments.Id(1)});
    return 0;
}

int File(const QStringList& words)
{
    if (words.value(0) != u"describe"_s)
        throw UsageError{u"'file' wants 'describe LIB FILEID --description TEXT'."_s};
    const Arguments arguments(words.mid(1), {{"description", "text"}}, 2);
    if (!arguments.Has(u"description"_s))
        throw UsageError{u"'file describe' wants '--description TEXT'."_s};
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const QString text = arguments.Value(u"description"_s);
    Transaction transaction(*database);
    const std::unique_ptr<CFileObject> file = OpenFile(*database, arguments.Id(1));
    RequireChange(*database, file->CodeID().toLongLong(), {ItemChange::EditUnasked});
    file->SetDescription(text.isEmpty() ? QString() : RtfFromPlainText(text, CodeFont));
    file->SetDescriptionChanged(true);
    if (!file->Commit())
        return 1; // which has been reported
    transaction.Commit();
    return 0;
}

} // namespace qb::cli
