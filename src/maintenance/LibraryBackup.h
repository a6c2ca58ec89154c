#pragma once

#include "maintenance/BackupFile.h"
#include "maintenance/LibraryCheck.h"

namespace qb {

struct BackUpOptions {
    qint64 VolumeSize = 0; ///< in bytes; 0: one file
};

struct BackUpResult {
    QStringList Files; ///< the backup, or its volumes in order
    BackupSummary Summary;
    qint64 Size = 0;                  ///< of all of them, in bytes
    std::vector<LibraryFault> Damage; ///< of the library: it is in the backup as it is, and makes that no good one
    qint64 MissingFiles = 0;          ///< rows of `Files` whose file is not on the disk, neither in the library
};

/// A file that is whole and about to get its name.
struct PlacedFile {
    QString Path;     ///< that it is to have
    QString Complete; ///< where it lies
    QString Locked;   ///< the folder that is locked until it has its name
    QString Identity; ///< of the library in it
    bool IsDamaged;   ///< the library is
};

/// What is made of the copy of a library on its way into its file: a backup, where nothing else is said. Whatever is
/// raised here ends the work.
class PackedCopy {
public:
    PackedCopy() = default;
    virtual ~PackedCopy() = default;
    PackedCopy(const PackedCopy&) = delete;
    PackedCopy& operator=(const PackedCopy&) = delete;

    virtual QString Noun() const { return QStringLiteral("backup"); }
    /// Whether whoever asks for it keeps all others from the library, and has brought its folders in order.
    virtual bool IsAlone() const { return false; }
    /// Makes room for contents in the copy, which is its own file.
    virtual void Prepare(Database& copy);
    /// The contents are in.
    virtual void Complete(Database&) {}
    /// The file has been compared. A backup does not take the place of another library's, nor one of damage that of
    /// one without.
    virtual void Decide(const PlacedFile& made);
    /// It did not get its name after all.
    virtual void TakeBack() {}
    virtual void Placed() {}
};

/// Packs a library with its files and pages into one file as @p copy says; as BackUpLibrary else, with its errors.
BackUpResult PackLibraryCopy(const QString& library, const QString& file, const BackUpOptions& options,
                             PackedCopy& copy, Work& work = NoWork());

/// Why what can be read of a container is not the database that was packed in it, byte by byte; empty when it is.
/// Raises RuntimeError 18 when it was cancelled.
QString WhyNotAsPacked(const QString& database, const QString& container, Work& work);

/// Looks for damage in a library, packs it with its files and pages into a backup and compares that with what went in,
/// before it takes its name. The library may be open elsewhere, if nobody is writing. Raises an error, with what was
/// there as it was: 3045 when somebody is writing, 3204 when a database, volumes or a backup that is not to go stand
/// under the name, 75 for what can't be read or written, 18 when it was cancelled.
BackUpResult BackUpLibrary(const QString& library, const QString& backupFile, const BackUpOptions& options,
                           Work& work = NoWork());

} // namespace qb
