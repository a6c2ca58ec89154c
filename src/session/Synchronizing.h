#pragma once

#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "replication/Synchronization.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ShellView.h"

#include <QString>

namespace qb {

class ItemTree;
class LibraryList;
class Replicas;

/// The second and third step of replication as the window's commands do them: files are taken in, after a look at what
/// they would do, and what they did is told.
class Synchronizing {
public:
    /// Registers the commands. Everything must outlive this.
    Synchronizing(SessionState& session, ShellView& shell, Commands& commands, LibraryList& libraries, ItemTree& tree,
                  Replicas& replicas);

    // Commands
    void mnuDBToolsSynchronizeItem_Click();
    /// What the last synchronizations did.
    void mnuSynchronizationReportsItem_Click();
    /// The last answer to a child was lost: it is written once more.
    void mnuHandOutAgainItem_Click();

    /// Runs a work that takes its time, with something to watch it by.
    WatchedRun Watched = RunUnwatched;
    /// The way is clear of conflicts of an earlier synchronization, which the user may be asked about.
    Hook<bool()> ResolvePendingConflicts{true};
    /// Shows what a file would do; false when the user does not want it. @p showAgain: also next time.
    Hook<bool(const MergeReport& report, bool& showAgain)> ShowPreview{true};
    /// Shows what synchronizations did, the latest first.
    Hook<void(const std::vector<MergeReport>& reports)> ShowReports;
    /// Lets the user choose one of the children, by what they are called; nothing when the user cancelled.
    Hook<std::optional<size_t>(const QStringList& children)> ChooseChild;

private:
    bool IsWanted(const QString& file);
    SyncResult TakeIn(const QString& file, bool isPreview);
    bool ShowMerged(); ///< whether something waits for a decision
    void TellStep(const SyncResult& result, const QString& file, bool hasConflicts);

    SessionState& m_session;
    ShellView& m_shell;
    Commands& m_commands;
    LibraryList& m_libraries;
    ItemTree& m_tree;
    Replicas& m_replicas;
};

} // namespace qb
