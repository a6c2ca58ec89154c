#pragma once

#include "platform/system/Hook.h"
#include "session/Commands.h"
#include "session/SessionState.h"

#include <QList>
#include <optional>

namespace qb {

class ItemTree;

/// Conflicts that a synchronization has left, as the window's commands deal with them: the solver, and what has to be
/// settled before the next synchronization.
class PendingConflicts {
public:
    /// Registers the commands. Everything must outlive this.
    PendingConflicts(SessionState& session, Commands& commands, ItemTree& tree);

    /// Shows the solver, for one item or for all; returns the items that were decided.
    Hook<QList<qint64>(Library& library, std::optional<qint64> item)> ShowSolver;

    // Commands
    void mnuConflictSolver_Click();
    void mnuResolveItem_Click();

    /// Asks what becomes of conflicts that are still there before a synchronization. True: the way is clear.
    bool ResolvePendingConflicts();
    /// All conflicts are given up: the other versions are kept beside the library. False when that could not be done,
    /// which has been reported.
    bool DiscardAll();

private:
    bool HasConflicts() const;
    void Solve(std::optional<qint64> item);
    bool SolveAll();

    SessionState& m_session;
    ItemTree& m_tree;
};

} // namespace qb
