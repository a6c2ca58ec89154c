#include "session/ui/SessionDialogs.h"

#include "conflicts/ui/frmConflicts.h"
#include "platform/system/Paths.h"
#include "printing/ui/frmPrint.h"
#include "replication/ui/frmMergeReport.h"
#include "replication/ui/frmReplicaList.h"
#include "session/ui/frmBackups.h"
#include "session/ui/frmDatabaseList.h"
#include "session/ui/frmImport.h"
#include "session/ui/frmRemovedItems.h"
#include "support/ui/WorkProgress.h"

#include <QInputDialog>
#include <QMainWindow>
#include <QStatusBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

SessionDialogs::SessionDialogs(const Parts& parts) : m_parts(parts)
{
    const WatchedRun watched = WatchedIn(m_parts.Window);
    m_parts.Tools.Watched = watched;
    m_parts.Replicas.Watched = watched;
    m_parts.Synchronizing.Watched = watched;
    m_parts.Exchange.Watched = watched;
    m_parts.Removed.Watched = watched;
    m_parts.Replicas.ShowReplicaList = std::bind_front(&SessionDialogs::ShowReplicaList, this);
    m_parts.Synchronizing.ShowPreview = std::bind_front(&SessionDialogs::ShowPreview, this);
    m_parts.Synchronizing.ShowReports = std::bind_front(&SessionDialogs::ShowReports, this);
    m_parts.Synchronizing.ChooseChild = std::bind_front(&SessionDialogs::ChooseChild, this);
    m_parts.Synchronizing.ResolvePendingConflicts = std::bind_front(&PendingConflicts::ResolvePendingConflicts,
                                                                    &m_parts.Conflicts);
    m_parts.Conflicts.ShowSolver = std::bind_front(&SessionDialogs::ShowSolver, this);
    m_parts.Exchange.ChooseBranches = std::bind_front(&SessionDialogs::ChooseBranches, this);
    m_parts.Removed.ShowList = std::bind_front(&SessionDialogs::ShowRemoved, this);
    m_parts.Printing.MakeComponent = [this] { return std::make_unique<frmPrint>(&m_parts.Window); };
    m_parts.Registry.Register(u"mnuDatabaseListItem"_s, this, &SessionDialogs::ShowDatabaseList);
    m_parts.Registry.Register(u"mnuBackupsItem"_s, this, &SessionDialogs::ShowBackups);
}

void SessionDialogs::ShowDatabaseList()
{
    frmDatabaseList dialog(&m_parts.Window);
    dialog.Initialize(m_parts.Session.DatabaseList, m_parts.Libraries.FindCurrentDBArrayIndex());
    dialog.exec();
}

void SessionDialogs::ShowBackups()
{
    frmBackups dialog(&m_parts.Window);
    dialog.Restore = std::bind_front(&DatabaseTools::RestoreBackup, &m_parts.Tools);
    dialog.ItemBroughtBack = [this](qint64 id) {
        m_parts.Tree.Refill();
        m_parts.Tree.GoToNode(NodeKey(id));
    };
    if (!m_parts.Items.SaveItem())
        return;
    CSettings& settings = *m_parts.Session.moSettings;
    dialog.Initialize(m_parts.Session,
                      FolderOfList(m_parts.Session.CurrentDatabase ? settings.DBBackupDir() : QString()));
    dialog.exec();
}

void SessionDialogs::ShowReplicaList(Library& library)
{
    frmReplicaList dialog(&m_parts.Window);
    dialog.SetDatabase(library);
    dialog.exec();
}

bool SessionDialogs::ShowPreview(const MergeReport& report, bool& showAgain)
{
    frmMergeReport dialog(frmMergeReport::Purpose::Preview, &m_parts.Window);
    dialog.SetReports({report});
    const bool isWanted = dialog.exec() == QDialog::Accepted;
    showAgain = dialog.ShowsAgain();
    return isWanted;
}

void SessionDialogs::ShowReports(const std::vector<MergeReport>& reports)
{
    frmMergeReport dialog(frmMergeReport::Purpose::Report, &m_parts.Window);
    dialog.SetReports(reports);
    dialog.exec();
    if (dialog.ChosenItem() != 0)
        m_parts.Tree.ShowItem(dialog.ChosenItem());
}

std::optional<size_t> SessionDialogs::ChooseChild(const QStringList& children)
{
    bool isChosen = false;
    const QString name = QInputDialog::getItem(&m_parts.Window, u"Hand Out Again"_s, u"The answer to this replica:"_s,
                                               children, 0, false, &isChosen);
    return isChosen ? std::optional(size_t(children.indexOf(name))) : std::nullopt;
}

QList<qint64> SessionDialogs::ShowSolver(Library& library, std::optional<qint64> item)
{
    QList<qint64> decided;
    frmConflicts dialog(&m_parts.Window);
    dialog.InitializeDatabase(library);
    if (item)
        dialog.Solver().SetOnly(*item);
    dialog.Solver().Decided = [&decided](qint64 one) { decided << one; };
    dialog.exec();
    m_parts.Window.statusBar()->showMessage(SummaryOf(dialog.Solver().Settled()));
    return decided;
}

std::optional<QStringList> SessionDialogs::ChooseBranches(const std::vector<PreviewedItem>& items)
{
    const TreeNode* target = m_parts.View.SelectedItem();
    frmImport dialog(&m_parts.Window, items, target ? target->Text() : QString());
    return dialog.exec() == QDialog::Accepted ? std::optional(dialog.Keys()) : std::nullopt;
}

void SessionDialogs::ShowRemoved(Library& library)
{
    frmRemovedItems dialog(&m_parts.Window, library, m_parts.Session.MayWrite());
    dialog.BroughtBack = [this](qint64) { m_parts.Tree.Refill(); };
    dialog.Show = [this](qint64 id) { m_parts.Tree.GoToNode(NodeKey(id)); };
    dialog.AskPlace = std::bind_front(&RemovedTools::AskPlace, &m_parts.Removed);
    dialog.exec();
}

} // namespace qb
