#pragma once

#include "maintenance/PackedContents.h"
#include "store/LibrarySchema.h"
#include "platform/system/Date.h"
#include "platform/system/Work.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>

namespace qb {

/// What a backup says of itself, beside the library that is packed in it: to be had without unpacking it.
struct BackupSummary {
    QString Library; ///< the library's identity
    QString Name;    ///< of its file, without extension
    Date Made;
    QString Version;            ///< of the program
    QMap<QString, qint64> Rows; ///< how many a table has, by its name
    qint64 Changed = 0;         ///< the latest LastChanged of an item, in seconds
    ContentSums Files;          ///< contents of stored files
    ContentSums Pages;          ///< those of the files of web pages
    qint64 Damaged = 0;         ///< texts and stored files of the library that were damaged already

    QByteArray ToComment() const;
    /// Nothing when the bytes are none of this program's.
    static std::optional<BackupSummary> FromComment(const QByteArray& comment);
};

/// All files of a backup: itself, or its volumes in order. Raises RuntimeError 75 when a volume is missing.
QStringList FilesOfBackup(const QString& file);

/// What a backup says of itself; nothing when it says nothing, or is none.
std::optional<BackupSummary> ReadBackupSummary(const QString& file);

/// The database of a backup, as it is: how many rows its tables have, and the sums of its contents.
BackupSummary SummaryOf(Database& database, Work& work);

/// Raises RuntimeError 3343 for a database that is no backup of a library, or has more in it than tables and indexes.
void RefuseWhatIsNoBackup(Database& database);

/// Why tables of a file that a stranger may have made are not what they should be: "the table Items is missing". Empty
/// when they have all columns of the definitions, and those that were @p added to them.
QString WhyColumnsDiffer(Database& database, const std::vector<TableDef>& tables,
                         const std::vector<LibrarySchema::AddedField>& added);

/// The same for one that is no child in a transfer file: a stranger may have made it, so that its tables are held to
/// all columns that a child's have.
void RefuseWhatIsNoReplica(Database& database);

/// Unpacks a backup into an empty folder and returns the path of its database. Raises RuntimeError 75 for what is no
/// container, or incomplete, 18 when it was cancelled.
QString UnpackBackup(const QString& file, const QString& folder, Work& work);

/// What came of checking a backup.
struct BackupCheck {
    std::optional<BackupSummary> Summary; ///< what it says of itself
    QStringList Faults;                   ///< a sentence each; empty: it is good
};
/// Unpacks a backup beside itself, or in the folder @p scratch, and compares what is in it with what it says of itself.
/// Raises RuntimeError 18 when it was cancelled, 75 when nothing can be written there; whatever else keeps a backup
/// from being unpacked is a fault of it.
BackupCheck CheckBackup(const QString& file, const QString& scratch, Work& work);

} // namespace qb
