// Branches that go out of a library and into another.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "cli/PrintCommands.h"
#include "cli/ProgressLine.h"
#include "exchange/BranchExport.h"
#include "exchange/BranchImport.h"
#include "help/ItemMail.h"
#include "publishing/BranchPublisher.h"

#include <QFileInfo>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

const QString Items = u"items"_s;

void PrintOutline(const UnpackedBranch& branch, bool json)
{
    QJsonArray list;
    QString out;
    std::vector<int> depths;
    for (const OutlinedItem& item : branch.Items()) {
        const int depth = item.Parent < 0 ? 0 : depths[size_t(item.Parent)] + 1;
        depths.push_back(depth);
        out += QString(2 * depth, u' ') + u"%1 [%2]\n"_s.arg(item.Title, item.Key);
        list.append(QJsonObject{{u"key"_s, item.Key},
                                {u"parent"_s, item.Parent < 0 ? QString() : branch.Items()[size_t(item.Parent)].Key},
                                {u"title"_s, item.Title},
                                {u"text_bytes"_s, item.TextBytes},
                                {u"files"_s, item.Files},
                                {u"file_bytes"_s, item.FileBytes},
                                {u"page_files"_s, item.Pages},
                                {u"page_bytes"_s, item.PageBytes}});
    }
    if (json)
        Print(list);
    else
        Print(out);
}

const QString OwnForm = u"qbx"_s;
const QString PdfForm = u"pdf"_s;

/// The form that is asked for, or that the name of the file says.
QString FormOf(const Arguments& arguments)
{
    if (arguments.Has(u"as"_s))
        return arguments.Value(u"as"_s);
    const QString ending = QFileInfo(arguments.Positional(2)).suffix().toLower();
    return ending == u"html" || ending == u"htm" ? u"html"_s : ending == PdfForm ? PdfForm : OwnForm;
}

int ExportForReaders(const Arguments& arguments, ReaderForm form)
{
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    ProgressLine line(Items);
    const PublishResult result = PublishBranch(*library, arguments.Id(1), form, arguments.Positional(2), line);
    for (const QString& title : result.Missing)
        Complain(u"The stored file '%1' is missing in the library; it is named, but not there."_s.arg(title));
    if (arguments.Json())
        Print(QJsonObject{{u"export"_s, result.Target},
                          {u"items"_s, result.Items},
                          {u"files"_s, result.Files},
                          {u"missing"_s, QJsonArray::fromStringList(result.Missing)}});
    return result.Missing.isEmpty() ? 0 : 1;
}

} // namespace

int Export(const QStringList& words)
{
    const Arguments arguments(words, {{"as", "form"}}, 3);
    const QString form = FormOf(arguments);
    if (form == PdfForm)
        return ExportPdf(arguments);
    if (const auto readers = ReaderFormNamed(form))
        return ExportForReaders(arguments, *readers);
    if (form != OwnForm)
        throw UsageError{u"There is no form '%1'; there are qbx, html, pdf, markdown and files."_s.arg(form)};
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    ProgressLine line(Parts);
    const BranchExportResult result = ExportItems(*library, arguments.Id(1), arguments.Positional(2), line);
    for (const QString& title : result.Missing)
        Complain(u"The stored file '%1' is missing in the library; it is empty in the export."_s.arg(title));
    if (arguments.Json())
        Print(QJsonObject{{u"export"_s, result.File},
                          {u"items"_s, result.Items},
                          {u"files"_s, result.Files},
                          {u"page_files"_s, result.Pages},
                          {u"missing"_s, QJsonArray::fromStringList(result.Missing)}});
    return result.Missing.isEmpty() ? 0 : 1;
}

int Import(const QStringList& words)
{
    const Arguments arguments(words, {{"parent", "id"}, {"only", "key"}, {"list", ""}}, 2);
    const UnpackedBranch branch(arguments.Positional(1));
    if (arguments.Has(u"list"_s)) {
        PrintOutline(branch, arguments.Json());
        return 0;
    }
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const BranchImportOptions options{.Parent = arguments.IdOption(u"parent"_s),
                                      .Only = arguments.Values(u"only"_s),
                                      .BeforeCommit = [](const BranchImportResult&) {}};
    ProgressLine line(Items);
    const BranchImportResult result = ImportItems(*library, branch, options, line);
    if (arguments.Json())
        Print(QJsonObject{{u"id"_s, result.Top},
                          {u"items"_s, result.Items},
                          {u"files"_s, result.Files},
                          {u"page_files"_s, result.Pages},
                          {u"links"_s, result.Links}});
    else
        Print(QString::number(result.Top) + u'\n');
    return 0;
}

int MailItemCommand(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const qint64 item = arguments.Id(1);
    ProgressLine line(Items);
    if (!MailItem(*library, item, line))
        return 1;
    if (arguments.Json())
        Print(QJsonObject{{u"item"_s, item}});
    return 0;
}

} // namespace qb::cli
