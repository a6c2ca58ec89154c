#include "session/ItemExchange.h"

#include "exchange/BranchExport.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SafeNames.h"
#include "session/FileDialogs.h"
#include "session/ItemTree.h"

#include <QElapsedTimer>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ExportFilter = u"KT Quillbase Export|*.qbx"_s;
const QString ExportFailed = u"Item export was not successful. File was not created."_s;
const QString ImportFailed = u"Import of new items from the selected file failed."_s;
const QString ExportTitle = u"Export Error"_s;
const QString ImportTitle = u"Import Error"_s;

void Tell(const QString& text, const QString& caption, MsgBoxIcon icon)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = icon});
}

/// A name with an extension, unless it has it.
QString WithExtension(const QString& path, const QString& extension)
{
    return path.endsWith(extension, Qt::CaseInsensitive) ? path : path + extension;
}

/// Shows a work in the status bar, too, some twenty times a second.
class StatusWork : public Work {
public:
    StatusWork(ShellView& shell, Work& watcher) : m_shell(shell), m_watcher(watcher) {}
    ~StatusWork() override
    {
        m_shell.SetStatusText({});
        m_shell.ShowProgressStatusBar(0, 0);
    }

    void Say(const QString& text, int percent) override
    {
        if (!text.isEmpty())
            m_shell.SetStatusText(text);
        m_watcher.Say(text, percent);
    }
    void Advance(qint64 done, qint64 total) override
    {
        constexpr int Interval = 50; // milliseconds
        constexpr int Parts = 1000;
        m_watcher.Advance(done, total);
        if (m_told.isValid() && m_told.elapsed() < Interval)
            return;
        m_told.start();
        m_shell.ShowProgressStatusBar(total > 0 ? int(std::max<qint64>(1, done * Parts / total)) : 1, Parts);
    }
    void Pulse() override { m_watcher.Pulse(); }
    bool IsCancelled() override { return m_watcher.IsCancelled(); }

private:
    ShellView& m_shell;
    Work& m_watcher;
    QElapsedTimer m_told;
};

struct ReaderRow {
    ReaderForm Form;
    const char* Command;
    const char* Title;
    const char* Filter;
    const char* Extension;
};

constexpr ReaderRow ReaderRows[] = {
    {ReaderForm::Html, "mnuExportHtml", "Export As Web Page :", "Web Page|*.html", ".html"},
    {ReaderForm::Markdown, "mnuExportMarkdown", "Export As Markdown To New Folder :", "Folder|*", ""},
    {ReaderForm::Files, "mnuExportFiles", "Export As Files To New Folder :", "Folder|*", ""},
};

QString MissingText(const QStringList& missing)
{
    constexpr qsizetype Shown = 10;
    return u"These stored files are missing in the library, and so in the export:\r\n\r\n"_s
           + missing.mid(0, Shown).join(u"\r\n"_s) + (missing.size() > Shown ? u"\r\n..."_s : u""_s);
}

} // namespace

ItemExchange::ItemExchange(SessionState& session, Commands& commands, ItemTree& tree, ItemTreeView& view,
                           ShellView& shell)
    : m_session(session), m_tree(tree), m_view(view), m_shell(shell)
{
    commands.Register(u"mnuExport"_s, this, &ItemExchange::mnuExport_Click);
    commands.Register(u"mnuImport"_s, this, &ItemExchange::mnuImport_Click);
    commands.Register(u"mnuExportForReaders"_s, [] {}); // opens its menu
    for (const ReaderRow& row : ReaderRows)
        commands.Register(QString::fromLatin1(row.Command), this, &ItemExchange::ExportForReaders, row.Form);
}

std::optional<qint64> ItemExchange::SelectedItem() const
{
    const TreeNode* node = m_session.CurrentDatabase ? m_view.SelectedItem() : nullptr;
    return node ? std::optional(node->Id) : std::nullopt;
}

QString ItemExchange::ProposedName() const
{
    return FileNameOf(m_view.SelectedItem()->Text());
}

/// An error is told as @p failure with its reason; to be cancelled is none.
void ItemExchange::Run(const QString& title, const QString& failure, const std::function<void(Work&)>& body)
{
    QString why;
    Watched(title.section(u' ', 0, 0), [&](Work& watcher) {
        StatusWork work(m_shell, watcher);
        try {
            body(work);
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::Cancelled && error.Number() != ErrorNumber::UserInterrupt)
                why = error.Description();
        }
    });
    if (!why.isEmpty())
        Tell(failure + u"\r\n\r\n"_s + why, title, MsgBoxIcon::Critical);
}

void ItemExchange::mnuExport_Click()
{
    const std::optional<qint64> item = SelectedItem();
    if (!item || !m_tree.SaveItem())
        return;
    const QString chosen = GetFileName(true, u"Export Data To File :"_s, ExportFilter, ProposedName() + u".qbx"_s);
    if (chosen.isEmpty())
        return;
    QStringList missing;
    Run(ExportTitle, ExportFailed, [&](Work& work) {
        missing = ExportItems(*m_session.CurrentDatabase, *item, WithExtension(chosen, u".qbx"_s), work).Missing;
    });
    if (!missing.isEmpty())
        Tell(MissingText(missing), ExportTitle, MsgBoxIcon::Exclamation);
}

void ItemExchange::ExportForReaders(ReaderForm form)
{
    const std::optional<qint64> item = SelectedItem();
    if (!item || !m_tree.SaveItem())
        return;
    const ReaderRow& row = *std::find_if(std::begin(ReaderRows), std::end(ReaderRows),
                                         [form](const ReaderRow& one) { return one.Form == form; });
    const QString extension = QString::fromLatin1(row.Extension);
    const QString chosen = GetFileName(true, QString::fromLatin1(row.Title), QString::fromLatin1(row.Filter),
                                       ProposedName() + extension);
    if (chosen.isEmpty())
        return;
    std::optional<PublishResult> result;
    Run(ExportTitle, ExportFailed, [&](Work& work) {
        result = PublishBranch(
            *m_session.CurrentDatabase, *item, form, WithExtension(chosen, extension), work,
            TokenPalette::FromTexts(m_session.moSettings->RuleColoursLight(), m_session.moSettings->RuleColoursDark()));
    });
    if (!result)
        return;
    if (!result->Missing.isEmpty())
        Tell(MissingText(result->Missing), ExportTitle, MsgBoxIcon::Exclamation);
    Prompts::Current().OperationSuccessful(u"%1 items were exported."_s.arg(result->Items), result->Target);
}

void ItemExchange::mnuImport_Click()
{
    const std::optional<qint64> parent = SelectedItem();
    if (!parent || !m_tree.SaveItem())
        return;
    const QString file = GetFileName(false, u"Import Data From File :"_s, ExportFilter);
    if (!file.isEmpty())
        ImportFrom(file, *parent);
}

void ItemExchange::ImportFrom(const QString& file, qint64 parent)
{
    std::unique_ptr<UnpackedBranch> branch;
    std::vector<PreviewedItem> items;
    Run(ImportTitle, ImportFailed, [&](Work& work) {
        branch = std::make_unique<UnpackedBranch>(file, work);
        items = PreviewImport(*m_session.CurrentDatabase, *branch, parent);
    });
    if (!branch)
        return;
    const std::optional<QStringList> keys = ChooseBranches(items);
    if (!keys)
        return;
    BranchImportResult result;
    Run(ImportTitle, ImportFailed, [&](Work& work) {
        BranchImportOptions options;
        options.Parent = parent;
        options.Only = *keys;
        result = ImportItems(*m_session.CurrentDatabase, *branch, options, work);
    });
    if (result.Items == 0)
        return;
    m_tree.Reload();
    m_tree.GoToNode(NodeKey(result.Top));
    Tell(u"Successfully imported %1 Code snippets."_s.arg(result.Items), ApplicationTitle, MsgBoxIcon::Information);
}

} // namespace qb
