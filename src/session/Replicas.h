#pragma once

#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "replication/ChangeFile.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ShellView.h"

#include <QString>

namespace qb {

class ItemTree;
class LibraryList;

/// Replication as the window's commands do it: children are given out and opened, a child's changes are exported, and
/// children are struck off.
class Replicas {
public:
    /// Registers the commands, and how the list of libraries opens a transfer file. Everything must outlive this.
    Replicas(SessionState& session, ShellView& shell, Commands& commands, LibraryList& libraries, ItemTree& tree);

    // Commands
    void mnuDBToolsCreateReplicaItem_Click();
    void mnuDBToolsExportChangesItem_Click() { ExportChanges(ExportAgain::No); }
    /// The file of the last export was lost: the changes are written once more, with what came since.
    void mnuExportAgainItem_Click() { ExportChanges(ExportAgain::Yes); }
    void DisplayReplicaList();

    /// Unpacks a transfer file after asking where to; the library that came of it, empty where there is none.
    QString OpenTransferFile(const QString& file);
    /// Which commands are allowed follows the part that the library has in replication.
    void UpdateMenuReplicationState();

    /// Runs a work that takes its time, with something to watch it by.
    WatchedRun Watched = RunUnwatched;
    /// Shows the list of children, where one can be struck off.
    Hook<void(Library& library)> ShowReplicaList;

private:
    void ExportChanges(ExportAgain again);
    std::optional<ExportedChanges> Export(const QString& file, ExportAgain again);
    QString Unpack(const QString& file, const QString& target);
    QString BaseName() const;

    SessionState& m_session;
    ShellView& m_shell;
    Commands& m_commands;
    LibraryList& m_libraries;
    ItemTree& m_tree;
};

} // namespace qb
