// The commands of the main window itself, and its menus.

#include "conflicts/ui/frmConflicts.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "platform/system/Paths.h"
#include "printing/ui/frmPrint.h"
#include "replication/ui/frmMergeReport.h"
#include "replication/ui/frmReplicaList.h"
#include "session/ui/CodeToolbar.h"
#include "session/ui/frmBackups.h"
#include "session/ui/frmCodeLib.h"
#include "session/ui/frmDatabaseList.h"
#include "session/ui/frmImport.h"
#include "session/ui/frmRemovedItems.h"
#include "support/ui/WorkProgress.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QComboBox>
#include <QInputDialog>
#include <QMenu>
#include <QStatusBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

void frmCodeLib::EnableEditing(bool enabled)
{
    m_editingEnabled = enabled;
    ShowTextToolbar();
}

void frmCodeLib::mnuEdit_Click()
{
    const std::optional<DetailsTab> tab = ctlCodeItemDetails->CurrentView();
    const auto show = [](QMenu* menu, bool shown) { menu->menuAction()->setVisible(shown); };
    show(m_faces->MenuOf(CommandRow::Place::EditCode), tab == DetailsTab::Code || tab == DetailsTab::Usage);
    show(m_faces->MenuOf(CommandRow::Place::EditFormat), tab == DetailsTab::Notes || tab == DetailsTab::Files);
    show(mnuFiles, tab == DetailsTab::Files);
    show(m_faces->MenuOf(CommandRow::Place::WebLinks), tab == DetailsTab::Links);
    tbrCode->UpdateMenu();
    m_edit->ShowState();
}

/// What concerns the window alone; the collaborators of the session have registered theirs.
void frmCodeLib::RegisterCommands()
{
    m_commands.Register(u"mnuFileDatabaseSelect"_s, [] {}); // opens its menu
    m_commands.Register(u"mnuDatabaseListItem"_s, [this] {
        frmDatabaseList dialog(this);
        dialog.Initialize(m_session.DatabaseList, m_libraries->FindCurrentDBArrayIndex());
        dialog.exec();
    });
    m_commands.Register(u"mnuExit"_s, this, &frmCodeLib::close);
    m_commands.Register(u"mnuOptionsItem"_s, [this] { ShowOptions(frmSettings::GeneralPage); });
    m_commands.Register(u"mnuViewStatusBar"_s, [this] {
        Settings().SetShowStatusBar(!Settings().ShowStatusBar());
        Settings().ApplyOrTakeBack();
    });
    m_commands.Register(u"mnuBackupsItem"_s, this, &frmCodeLib::ShowBackups);
    m_tools->Watched = WatchedIn(*this);
    m_replicas->Watched = m_tools->Watched;
    m_replicas->ShowReplicaList = [this](Library& library) {
        frmReplicaList dialog(this);
        dialog.SetDatabase(library);
        dialog.exec();
    };
    ConnectSynchronizing();
    ConnectConflicts();
    m_printing->MakeComponent = [this] { return std::make_unique<frmPrint>(this); };
    m_printing->TypedTexts = std::bind_front(&ctlCodeDetails::Unsaved, ctlCodeItemDetails);
    ConnectExchange();
    ConnectRemoved();
    m_commands.Register(u"mnuFilterTree"_s, tvCodeItems, &ctlSmartTreeView::StartFilter);
    m_commands.Register(u"mnuViewTreeItem"_s, [this] { tvCodeItems->SetTreeHidden(!tvCodeItems->IsShrunk()); });
    m_commands.Register(u"SAVE"_s, this, &frmCodeLib::SaveButtonClicked);
}

void frmCodeLib::ConnectSynchronizing()
{
    m_synchronizing->Watched = m_tools->Watched;
    m_synchronizing->ShowPreview = [this](const MergeReport& report, bool& showAgain) {
        frmMergeReport dialog(frmMergeReport::Purpose::Preview, this);
        dialog.SetReports({report});
        const bool isWanted = dialog.exec() == QDialog::Accepted;
        showAgain = dialog.ShowsAgain();
        return isWanted;
    };
    m_synchronizing->ShowReports = [this](const std::vector<MergeReport>& reports) {
        frmMergeReport dialog(frmMergeReport::Purpose::Report, this);
        dialog.SetReports(reports);
        dialog.exec();
        if (dialog.ChosenItem() != 0)
            m_tree->ShowItem(dialog.ChosenItem());
    };
    m_synchronizing->ChooseChild = [this](const QStringList& children) -> std::optional<size_t> {
        bool isChosen = false;
        const QString name = QInputDialog::getItem(this, u"Hand Out Again"_s, u"The answer to this replica:"_s,
                                                   children, 0, false, &isChosen);
        return isChosen ? std::optional(size_t(children.indexOf(name))) : std::nullopt;
    };
}

void frmCodeLib::ConnectConflicts()
{
    m_conflicts->ShowSolver = [this](Library& library, std::optional<qint64> item) {
        QList<qint64> decided;
        frmConflicts dialog(this);
        dialog.InitializeDatabase(library);
        if (item)
            dialog.Solver().SetOnly(*item);
        dialog.Solver().Decided = [&decided](qint64 one) { decided << one; };
        dialog.exec();
        statusBar()->showMessage(SummaryOf(dialog.Solver().Settled()));
        return decided;
    };
    m_synchronizing->ResolvePendingConflicts = std::bind_front(&PendingConflicts::ResolvePendingConflicts,
                                                               m_conflicts.get());
}

void frmCodeLib::ConnectExchange()
{
    m_exchange->Watched = m_tools->Watched;
    m_exchange->ChooseBranches = [this](const std::vector<PreviewedItem>& items) -> std::optional<QStringList> {
        const TreeNode* target = tvCodeItems->SelectedItem();
        frmImport dialog(this, items, target ? target->Text() : QString());
        return dialog.exec() == QDialog::Accepted ? std::optional(dialog.Keys()) : std::nullopt;
    };
    m_edit->LibraryLanguage = [this] {
        return CurrentDatabase() ? CurrentDatabase()->QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText()
                                 : QString();
    };
}

void frmCodeLib::ConnectRemoved()
{
    m_removed->Watched = m_tools->Watched;
    m_removed->ShowList = [this](Library& library) {
        frmRemovedItems dialog(this, library, m_session.MayWrite());
        dialog.BroughtBack = [this](qint64) { m_tree->Refill(); };
        dialog.Show = [this](qint64 id) { m_tree->GoToNode(NodeKey(id)); };
        dialog.AskPlace = std::bind_front(&RemovedTools::AskPlace, m_removed.get());
        dialog.exec();
    };
}

void frmCodeLib::ShowBackups()
{
    frmBackups dialog(this);
    dialog.Restore = std::bind_front(&DatabaseTools::RestoreBackup, m_tools.get());
    dialog.ItemBroughtBack = [this](qint64 id) {
        m_tree->Refill();
        m_tree->GoToNode(NodeKey(id));
    };
    if (!m_items->SaveItem())
        return;
    dialog.Initialize(m_session, FolderOfList(CurrentDatabase() ? Settings().DBBackupDir() : QString()));
    dialog.exec();
}

void frmCodeLib::ConnectMenus()
{
    const auto opens = [this](CommandRow::Place place, const auto& run) {
        connect(m_faces->MenuOf(place), &QMenu::aboutToShow, this, run);
    };
    opens(CommandRow::Place::File, &frmCodeLib::mnuFile_Click);
    opens(CommandRow::Place::Edit, &frmCodeLib::mnuEdit_Click);
    opens(CommandRow::Place::Item, std::bind_front(&ItemCommands::ItemMenuEdit, m_items.get()));
    // The boxes have these keys themselves; here they are only shown.
    static constexpr std::pair<const char*, QKeySequence::StandardKey> keys[] = {
        {"mnuUndo", QKeySequence::Undo}, {"mnuRedo", QKeySequence::Redo},   {"mnuCut", QKeySequence::Cut},
        {"mnuCopy", QKeySequence::Copy}, {"mnuPaste", QKeySequence::Paste}, {"mnuClear", QKeySequence::Delete}};
    for (const auto& [name, key] : keys) {
        QAction* action = m_faces->Action(QLatin1StringView(name));
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
    }
}

/// The entries of the menu Edit that work on a text wait for one; the filter needs none.
void frmCodeLib::EnableMenus(bool enabled)
{
    for (const CommandRow::Place place : {CommandRow::Place::Item, CommandRow::Place::View})
        m_faces->MenuOf(place)->setEnabled(enabled);
    for (const QString& entry : {u"mnuNewAliasItem"_s, u"mnuRemoveDBItem"_s, u"mnuDBToolsBackupItem"_s})
        m_commands.SetEnabled(entry, enabled);
    ShowLibraryState();
}

void frmCodeLib::mnuFile_Click()
{
    QMenu* mnuFileDatabaseSelect = m_faces->Action(u"mnuFileDatabaseSelect"_s)->menu();
    mnuFileDatabaseSelect->clear();
    const QComboBox* cboDatabase = m_shell->Libraries();
    for (int i = 0; i < cboDatabase->count(); ++i) {
        QString caption = cboDatabase->itemText(i);
        QAction* entry = mnuFileDatabaseSelect->addAction(caption.replace(u'&', u"&&"_s));
        entry->setObjectName(u"mnuDatabaseName%1"_s.arg(i));
        entry->setCheckable(true);
        entry->setChecked(i == cboDatabase->currentIndex());
        connect(entry, &QAction::triggered, this, std::bind_front(&WindowShell::SetComboIndex, m_shell, i));
    }
    m_commands.SetEnabled(u"mnuFileDatabaseSelect"_s, cboDatabase->count() > 0);
}

} // namespace qb
