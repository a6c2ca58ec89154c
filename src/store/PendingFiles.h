#pragma once

#include "platform/system/FileLock.h"
#include "platform/system/Work.h"
#include "store/Library.h"

#include <QString>
#include <memory>
#include <optional>
#include <vector>

namespace qb {

/// A change of the stored files that is under way. It gives names in their folder for what has no
/// place yet, which no title can make: they begin with a dot and hold the work's own mark. A file of
/// that mark is locked for as long as the work goes on, and by no means longer than its process lives;
/// so what a dead process left is told from what a living one does.
class PendingWork {
public:
    /// Raises RuntimeError 75 when nothing can be written in the folder.
    explicit PendingWork(const Library& library);
    ~PendingWork();
    PendingWork(const PendingWork&) = delete;
    PendingWork& operator=(const PendingWork&) = delete;

    /// Of the library's file, whose rights a stored file must not exceed.
    const QString& LibraryPath() const { return m_libraryPath; }
    /// For a file that has no row yet; @p number tells those of one work apart.
    QString AddingName(qint64 number = 0) const { return NameOf(QStringLiteral("adding"), number); }
    /// For the file of a row that is being committed with this title.
    QString ArrivingName(qint64 id, const QString& title) const;
    /// For the file of a row that is being deleted.
    QString LeavingName(qint64 id) const { return NameOf(QStringLiteral("leaving"), id); }
    /// A folder for files that are made to be taken in; it goes with the work. Ends in a separator.
    QString PackingFolder();

private:
    QString NameOf(const QString& kind, qint64 id) const;

    QString m_folder;
    QString m_libraryPath;
    QString m_mark;
    FileLock m_lock;
};

/// A file on its way into the folder of stored files: copied at first, bound to its row within the row's
/// transaction, and put in its place once that is committed. One that does not get there is removed.
class ArrivingFile {
public:
    /// @p copying counts bytes. With @p moves the file is moved where that is possible. Files that arrive
    /// together have one work and a @p number each.
    ArrivingFile(std::shared_ptr<PendingWork> work, qint64 number, const QString& source, bool moves, Work& copying);
    ~ArrivingFile();
    ArrivingFile(const ArrivingFile&) = delete;
    ArrivingFile& operator=(const ArrivingFile&) = delete;

    /// In bytes; 0 once PutInPlace was called.
    qint64 Size() const;
    /// Of what was copied, read back.
    quint32 Checksum() const { return m_checksum; }
    /// Renames the file so that FinishPendingFiles knows its row. Should the program end before PutInPlace, that gives
    /// the file to the row if this title was committed, and removes it if not. Raises an error, and the file keeps
    /// its name, when it can't be renamed.
    void Bind(qint64 id, const QString& title);
    /// What is in the way there gets another name, unless the file @p replaces it.
    void PutInPlace(const QString& place, bool replaces);

private:
    std::shared_ptr<PendingWork> m_work;
    QString m_path;
    quint32 m_checksum = 0;
};

/// Stored files that are deleted together, in one transaction of the caller's: the files leave their
/// places, and are gone once the deletion is committed. Otherwise they come back.
class StoredFileDeletion {
public:
    StoredFileDeletion() = default;
    ~StoredFileDeletion();
    StoredFileDeletion(const StoredFileDeletion&) = delete;
    StoredFileDeletion& operator=(const StoredFileDeletion&) = delete;

    /// Deletes a row and takes its file from its place, if there is one. Raises RuntimeError 75 when it
    /// can't be moved.
    void Delete(Library& library, qint64 id);
    /// Takes the file of a row that the caller deletes from its @p place, if there is one. Raises the same error.
    void Take(const Library& library, qint64 id, const QString& place);
    /// The transaction is committed: the files are gone. Tells the user when the mother of this library
    /// can't be told of one.
    void Complete();

private:
    struct Moved {
        QString Place;
        QString Leaving;
    };
    std::optional<PendingWork> m_work; ///< once there is a file
    std::vector<Moved> m_moved;
    bool m_lacksMotherRecord = false;
};

/// Whether a stored file that is missing in its place is on its way there, or back: FinishPendingFiles brings it.
bool IsFilePending(const QString& filesFolder, qint64 id, const QString& title);

/// After a process ended in the middle of its work: gives each row that was committed its file, and
/// removes the files of rows that were not, or were deleted; the same for pages that arrive. What is under way is left
/// alone, and all of
/// a library that is open for reading only.
void FinishPendingFiles(Library& library);

} // namespace qb
