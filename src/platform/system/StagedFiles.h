#pragma once

#include "platform/system/FileLock.h"
#include "platform/system/Work.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

/// Files that are made aside and then put below a folder together, all of them or none: what a failure,
/// or the end of this object before PutInPlace(), leaves is the folder as it was. They are made in a
/// hidden folder inside; one that a dead process left is removed by the next to work there.
class StagedFiles {
public:
    /// Makes @p folder where it is missing. Raises RuntimeError 75 when nothing can be written there.
    explicit StagedFiles(const QString& folder);
    ~StagedFiles();
    StagedFiles(const StagedFiles&) = delete;
    StagedFiles& operator=(const StagedFiles&) = delete;

    /// Where to write the file that is to have the relative @p name, with "/" between its parts.
    QString PathFor(const QString& name);
    /// A folder for what is needed on the way, which is put nowhere; it ends in a separator.
    QString Scratch();
    /// The folder that holds all of it and is locked for as long as the object lives.
    QString LockedFolder() const { return m_stage; }
    /// Flushes the file system of the folder, with what was made and what was put in place. @p work is told that it
    /// goes on.
    void Flush(Work& work = NoWork()) const;
    /// A folder to be there, with or without files.
    void AddFolder(const QString& name) { m_folders << name; }
    /// Puts all of them in place, over files that are there, or leaving these with @p keepExisting.
    /// Returns how many were left. Raises RuntimeError 75 when one can't be, or when its way leads through
    /// a link. @p work is told that it goes on.
    int PutInPlace(bool keepExisting, Work& work = NoWork());
    /// Puts a folder that holds all of them in place in one step. Raises RuntimeError 75 when something of that name is
    /// there, but for an empty folder. @p work is told that it goes on.
    void PutInPlaceAsFolder(const QString& name, Work& work = NoWork());

private:
    struct Moved {
        QString Target;
        QString Saved; ///< where the file that was there is; empty when there was none
    };
    void MakeStage();
    void RemoveDeadStages() const;
    void MakeFolders(const QString& name);
    bool Move(const QString& name, bool keepExisting);
    bool TakeBack();
    void RemoveMade();

    QString m_folder; ///< ends in a separator
    QString m_stage;  ///< the same
    FileLock m_lock;  ///< on the stage
    QStringList m_files;
    QStringList m_folders;
    std::vector<Moved> m_moved;
    QStringList m_made; ///< folders that were not there
    bool m_complete = false;
};

} // namespace qb
