#pragma once

#include "maintenance/BackupFile.h"
#include "platform/system/StagedFiles.h"
#include "store/Library.h"

#include <memory>
#include <vector>

namespace qb {

/// An item of a backup, with what is below it known by their parents.
struct BackupItemRow {
    qint64 Id = 0;
    qint64 Parent = 0;
    QString Title;
    Date LastChanged = {};
};

/// An item of a backup to be looked at. Texts are RTF.
struct BackupItem {
    qint64 Id = 0;
    qint64 Parent = 0;
    QString Title;
    QString Description;
    QString Info;
    QString Code;
    QString Notes;
    QString Usage;
    Date LastChanged;
    QStringList Files; ///< titles of stored files
    bool HasPage = false;
};

/// A backup, unpacked for as long as the object lives, of which single items are taken.
class BackupItems {
public:
    /// Unpacks the backup in a folder of its own below @p scratch. Raises what RestoreLibrary raises for what is no
    /// backup.
    BackupItems(const QString& backupFile, const QString& scratch, Work& work = NoWork());

    /// The identity of the library that was backed up.
    QString Identity() const;
    /// All items, in the order of their titles.
    std::vector<BackupItemRow> All();
    /// Raises RuntimeError 3265 when there is none of that number.
    BackupItem Item(qint64 id);

    /// Adds the item to a library as a new one, with its stored files and its page, below its former parent if
    /// @p parent is -1 and that is still there, else below @p parent. Its links come along where the other item is
    /// still there and its former self is not. Returns its number. Raises an error, with the library as it was.
    qint64 BringBack(qint64 id, Library& library, qint64 parent = -1, Work& work = NoWork());

private:
    class Return;

    QString m_backup;
    StagedFiles m_stage;
    QString m_path;
    std::unique_ptr<Database> m_database;
};

} // namespace qb
