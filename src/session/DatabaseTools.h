#pragma once

#include "maintenance/LibraryCheck.h"
#include "platform/system/Work.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ShellView.h"

#include <QString>

namespace qb {

class ItemTree;
class LibraryList;

/// Backup, restore and the undo of a session as the window's commands do them: what is asked, which library is closed
/// meanwhile, what is open afterwards.
class DatabaseTools {
public:
    /// Registers the commands. Everything must outlive this.
    DatabaseTools(SessionState& session, Commands& commands, LibraryList& libraries, ItemTree& tree);

    /// Backs a library up that is closed, and remembers whether that is a good backup. False when it failed, which has
    /// been reported. Afterwards Damage() is what the library has of it.
    bool BackUp(const QString& library, const QString& backupFile);
    /// The same with the open library, which is closed meanwhile and opened again. Says whether that was done; a
    /// failure has been reported.
    bool BackUpDatabase(const QString& backupFile);
    const std::vector<LibraryFault>& Damage() const { return m_damage; }
    /// Says what a backup has found damaged in the library; @p end: what it means, or is to be done.
    static QString DamageText(const std::vector<LibraryFault>& damage, const QString& end);
    /// Makes the copy for the undo of the session, if the settings want it, and says so in the menu. Before the library
    /// is opened. That of an earlier session goes in any case: undone with it, this session's changes would go, and
    /// those of all between them.
    void MakeStartOfSessionCopy();
    /// The name that is proposed for a backup of today.
    QString ProposedBackup() const;
    /// Restores a backup after asking where to, and opens what came of it.
    void RestoreBackup(const QString& backupFile);

    // Commands
    void mnuDBToolsBackupItem_Click();
    void mnuDBToolsRestoreItem_Click();
    void mnuUndoThisSessionChanges_Click();

    /// Runs a work that takes its time, with something to watch it by.
    WatchedRun Watched = RunUnwatched;

private:
    bool OpenAgain();
    void OfferToBringBack();

    SessionState& m_session;
    Commands& m_commands;
    LibraryList& m_libraries;
    ItemTree& m_tree;
    std::vector<LibraryFault> m_damage;
};

} // namespace qb
