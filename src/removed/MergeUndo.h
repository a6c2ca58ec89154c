#pragma once

#include "platform/system/FileLock.h"
#include "platform/system/Work.h"
#include "store/Library.h"

#include <QSet>
#include <QString>
#include <memory>
#include <optional>

namespace qb {

class CopyAside;

/// What is put aside of a library so that a synchronization can be undone, in the folder "_Undo" beside it: the
/// database as it was, the former synchronization file, and those stored files and pages that the synchronization takes
/// away. Until Complete() it counts for nothing, and what was put aside before still does.
class MergeUndo {
public:
    explicit MergeUndo(Library& library);
    /// Removes what was not completed.
    ~MergeUndo();
    MergeUndo(const MergeUndo&) = delete;
    MergeUndo& operator=(const MergeUndo&) = delete;

    /// Whether the user's settings want it.
    static bool IsWanted();

    /// Copies the database and @p file, which may be missing or empty. To be called as the first thing inside the
    /// transaction of the merge, so that nobody changes the library in between, before anything is written in it.
    /// The copy may still be under way then. Raises RuntimeError 75 when it can't be done; nothing is left then.
    void PutAside(const QString& file);
    /// Before the transaction writes more than a few rows of the library, and how many bytes at most: little is held in
    /// memory while the database is still being copied, much waits for the copy.
    void HoldWrites(qint64 bytes);
    /// Before the commit. Raises RuntimeError 75 when the copy could not be made.
    void WaitForCopy();
    /// A stored file that is about to be deleted or overwritten, by its path. Nothing when nothing was put aside.
    void KeepFile(const QString& path);
    /// The page of an item that is about to be deleted, overwritten or made; also where there is none yet.
    void KeepPage(qint64 item);
    /// Once all of the merge is done: committed, files and pages in their places, the synchronization file too. Raises
    /// nothing; what can't be completed can't be undone.
    void Complete();

private:
    void SetSpillSize(int pages);
    void LetWritesGo();

    Library& m_library;
    QString m_folder; ///< ends in a separator; empty before PutAside
    FileLock m_lock;  ///< on it
    QString m_file;   ///< full path of the synchronization file
    QSet<qint64> m_pages;
    bool m_isHolding = false;          ///< writes in memory
    std::unique_ptr<CopyAside> m_copy; ///< that is being made
};

/// The synchronization that could be undone.
struct UndoableMerge {
    Date Moment;  ///< of its end
    QString File; ///< the synchronization file that comes back; empty: none
};
/// What was put aside of a library; nothing where there is nothing. A quick look: see WhyMergeNotUndone.
std::optional<UndoableMerge> LastMergeOf(const QString& library);

/// Why the last synchronization can't be undone, as a sentence: nothing was put aside, or something was changed since.
/// Empty when it can be. Reads the library, which may be open.
QString WhyMergeNotUndone(const QString& library);

/// Brings a library that nobody has open back to what it was before the last synchronization: database, stored files,
/// pages, and the synchronization file. All or nothing, whatever ends the process. Raises RuntimeError 3024 when it
/// can't be undone, 3045 when the library is in use, 75 when something can't be written.
void UndoMerge(const QString& library, Work& work = NoWork());

} // namespace qb
