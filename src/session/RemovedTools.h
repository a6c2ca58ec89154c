#pragma once

#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "removed/RemovedReturn.h"
#include "session/Commands.h"
#include "session/SessionState.h"

#include <QString>
#include <vector>

namespace qb {

class ItemTree;
class LibraryList;

/// A line of the list of removed items, as it is shown.
struct RemovedLine {
    QString Id; ///< of the entry
    QString When;
    QString Kind;
    QString Title; ///< with what it is a part of, and how much stood below it
    QString Path;
    QString Size;
};

/// What the window's list of removed items shows, and what its buttons do.
class RemovedBrowser {
public:
    /// Reads what is kept of the open library.
    explicit RemovedBrowser(Library& library);

    std::vector<RemovedLine> Lines(const QString& words) const;
    /// What to tell where there are no lines, as a sentence.
    QString Notice(const QString& words) const;
    /// How much is kept, and what of it can't be read.
    QString Summary() const;
    /// An entry as plain text; where it can't be read, why.
    QString Preview(const QString& id) const;
    /// Its place is gone, so that the user is asked for another.
    bool NeedsPlace(const QString& id) const;
    /// Raises an error, with the library as it was.
    ReturnResult BringBack(const QString& id, qint64 parent = -1, Work& work = NoWork());
    /// What was done, as a sentence.
    static QString DoneText(const QString& title, const ReturnResult& result);

private:
    Library& m_library;
    std::unique_ptr<RemovedList> m_list;
};

/// The window's commands on what was removed, and on the undo of a synchronization.
class RemovedTools {
public:
    /// Registers the commands. Everything must outlive this.
    RemovedTools(SessionState& session, Commands& commands, LibraryList& libraries, ItemTree& tree);

    // Commands
    void mnuRemovedItems_Click();
    void mnuUndoSynchronization_Click();

    /// Where something is to come whose place is gone, as the user says: below the item that is shown, 0 for the top of
    /// the tree, -1 for nowhere.
    qint64 AskPlace();

    /// Shows the list.
    Hook<void(Library& library)> ShowList;
    /// Runs a work that takes its time, with something to watch it by.
    WatchedRun Watched = RunUnwatched;

private:
    SessionState& m_session;
    LibraryList& m_libraries;
    ItemTree& m_tree;
};

} // namespace qb
