// The commands on whole libraries.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "cli/ProgressLine.h"
#include "maintenance/ContentCheck.h"
#include "maintenance/FolderImport.h"
#include "maintenance/LibraryCheck.h"
#include "maintenance/PhasedWork.h"
#include "store/CDBCreate.h"
#include "store/ShippedLanguages.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

struct ChosenLanguage {
    LanguageType Type;
    QString File; ///< for LanguageType::File
};

/// By name: a built-in language, none, or one that comes with the program, by the name of its file or
/// its own.
ChosenLanguage LanguageOf(const Arguments& arguments)
{
    if (arguments.Has(u"language-file"_s)) {
        if (arguments.Has(u"language"_s))
            throw UsageError{u"Give either --language or --language-file."_s};
        return {LanguageType::File, arguments.Value(u"language-file"_s)};
    }
    const QString name = arguments.Has(u"language"_s) ? arguments.Value(u"language"_s).toLower() : u"vb"_s;
    static const QHash<QString, LanguageType> builtIn{
        {u"vb"_s, LanguageType::VB}, {u"cpp"_s, LanguageType::Cpp}, {u"none"_s, LanguageType::None}};
    if (builtIn.contains(name))
        return {builtIn[name], {}};
    if (const ShippedLanguage* language = ShippedLanguageNamed(name))
        return {LanguageType::File, language->Path};
    throw UsageError{u"Unknown language '%1'; `quillbase-cli languages` lists them."_s.arg(name)};
}

FallbackEncoding FallbackOf(const Arguments& arguments)
{
    const QString name = arguments.Value(u"encoding"_s).toLower();
    if (name.isEmpty() || name == u"utf-8"_s)
        return FallbackEncoding::None;
    if (name == u"latin1"_s)
        return FallbackEncoding::Latin1;
    if (name == u"windows-1252"_s)
        return FallbackEncoding::Windows1252;
    throw UsageError{u"Unknown encoding '%1': utf-8, latin1 or windows-1252."_s.arg(name)};
}

void PrintImport(const FolderImportResult& result, bool json)
{
    QJsonArray skipped;
    for (const SkippedFile& file : result.Skipped) {
        skipped.append(QJsonObject{{u"path"_s, file.Path}, {u"reason"_s, file.Reason}});
        if (!json)
            Complain(u"skipped: %1: %2"_s.arg(QDir::toNativeSeparators(file.Path), file.Reason));
    }
    if (json)
        Print(QJsonObject{{u"id"_s, result.RootItem},
                          {u"folders"_s, result.Folders},
                          {u"files"_s, result.Files},
                          {u"skipped"_s, skipped}});
    else
        Print(u"%1 files in %2 folders imported below item %3, %4 skipped\n"_s.arg(result.Files)
                  .arg(result.Folders)
                  .arg(result.RootItem)
                  .arg(result.Skipped.size()));
}

} // namespace

int New(const QStringList& words)
{
    const Arguments arguments(words, {{"language", "name"}, {"language-file", "file"}}, 1);
    const ChosenLanguage language = LanguageOf(arguments);
    const QString path = arguments.Positional(0);
    if (QFileInfo::exists(path))
        throw RuntimeError(ErrorNumber::DatabaseExists,
                           u"'%1' exists already; nothing was changed."_s.arg(QDir::toNativeSeparators(path)),
                           u"new"_s);
    // The reason of a failure has been printed when it was reported.
    return CDBCreate().CreateNewDB(path, language.Type, language.File) ? 0 : 1;
}

int ImportFolderCommand(const QStringList& words)
{
    const Arguments arguments(
        words, {{"parent", "id"}, {"glob", "pattern"}, {"encoding", "name"}, {"library-language", ""}}, 2);
    FolderImportOptions options;
    options.Parent = arguments.IdOption(u"parent"_s);
    options.Globs = arguments.Values(u"glob"_s);
    options.Fallback = FallbackOf(arguments);
    options.NamesLanguages = !arguments.Has(u"library-language"_s);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    options.BeforeCommit = [&arguments](const FolderImportResult& result) { PrintImport(result, arguments.Json()); };
    ProgressLine line(u"files"_s);
    ImportFolder(*database, arguments.Positional(1), options, line);
    return 0;
}

int Check(const QStringList& words)
{
    const Arguments arguments(words, {{"deep", ""}}, 1);
    const auto database = DBEngine::OpenDatabase(arguments.Positional(0), DBEngine::Access::ReadOnly);
    ProgressLine line(Parts);
    PhasedWork phases(line);
    const bool isDeep = arguments.Has(u"deep"_s) && IsLibrary(*database);
    phases.Begin(isDeep ? PhasedWork::Whole / 2 : PhasedWork::Whole);
    std::vector<LibraryFault> faults = CheckLibrary(*database, phases);
    ContentCheck contents;
    if (isDeep) {
        phases.Begin(PhasedWork::Whole);
        contents = CheckContents(*database, phases);
        faults.insert(faults.end(), contents.Faults.begin(), contents.Faults.end());
    }
    QJsonArray list;
    for (const LibraryFault& fault : faults) {
        list.append(QJsonObject{{u"kind"_s, FaultName(fault.What)},
                                {u"table"_s, fault.Table},
                                {u"id"_s, fault.Id},
                                {u"text"_s, fault.Text}});
        if (!arguments.Json())
            Print(fault.Text + u'\n');
    }
    if (arguments.Json())
        Print(list);
    else if (faults.empty())
        Print(u"Nothing is wrong with the library.\n"_s);
    else if (!contents.Faults.empty())
        Print(HowToBringBack + u'\n');
    if (!arguments.Json() && contents.UnknownRows > 0)
        Print(u"Of %1 items and stored files out of %2 no checksum is known; they get one when they are saved.\n"_s
                  .arg(contents.UnknownRows)
                  .arg(contents.UnknownRows + contents.KnownRows));
    return faults.empty() ? 0 : 1;
}

} // namespace qb::cli
