#pragma once

#include "session/DatabaseTools.h"
#include "session/ItemCommands.h"
#include "session/ItemExchange.h"
#include "session/ItemPrinting.h"
#include "session/ItemTree.h"
#include "session/LibraryList.h"
#include "session/PendingConflicts.h"
#include "session/RemovedTools.h"
#include "session/Replicas.h"
#include "session/Synchronizing.h"

class QMainWindow;

namespace qb {

/// The dialogs of the main window that collaborators of the session ask for, or that a command opens.
class SessionDialogs {
public:
    /// Who asks, and what the dialogs need. All must outlive this.
    struct Parts {
        QMainWindow& Window;
        SessionState& Session;
        Commands& Registry;
        ItemTreeView& View;
        ItemTree& Tree;
        ItemCommands& Items;
        LibraryList& Libraries;
        DatabaseTools& Tools;
        qb::Replicas& Replicas;
        qb::Synchronizing& Synchronizing;
        PendingConflicts& Conflicts;
        RemovedTools& Removed;
        ItemExchange& Exchange;
        ItemPrinting& Printing;
    };
    /// Takes the calls of all of them.
    explicit SessionDialogs(const Parts& parts);

private:
    void ShowDatabaseList();
    void ShowBackups();
    void ShowReplicaList(Library& library);
    bool ShowPreview(const MergeReport& report, bool& showAgain);
    void ShowReports(const std::vector<MergeReport>& reports);
    std::optional<size_t> ChooseChild(const QStringList& children);
    QList<qint64> ShowSolver(Library& library, std::optional<qint64> item);
    std::optional<QStringList> ChooseBranches(const std::vector<PreviewedItem>& items);
    void ShowRemoved(Library& library);

    Parts m_parts;
};

} // namespace qb
