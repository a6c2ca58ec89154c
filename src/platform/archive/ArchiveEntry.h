#pragma once

#include <QDateTime>
#include <QString>
#include <vector>

struct zip;

namespace qb {

/// One file or folder of an archive, as the archive declares it.
struct ArchiveEntry {
    quint64 Index = 0;
    QString Name; ///< relative, with "/" between its parts
    bool IsFolder = false;
    qint64 Size = 0;           ///< in bytes
    qint64 CompressedSize = 0; ///< in bytes
    bool IsStored = false;     ///< not compressed
    QDateTime Modified;
    bool IsExecutable = false;
    QString Problem; ///< why it can't be extracted; empty when it can
};

/// The entries of an open archive in their order. Each has its name checked: one that would lead out of
/// the folder extracted to, is too long or has control characters (which its Name shows as U+FFFD), stands
/// there twice, is no plain file, is encrypted or packed by an unknown method has a problem.
std::vector<ArchiveEntry> EntriesOf(zip* archive);

/// The name under which a file goes into an archive, from which EntriesOf takes it back: "_" in the place
/// of control characters, of "\\", and of the ":" of what looks like a drive.
QString ArchiveName(const QString& name);

/// Why an archive as a whole is not extracted: its entries overlap, or unpack to more than @p mostBytes.
/// Empty when it can be. @p archiveSize is the length of the archive's own file.
QString WhyNotExtracted(const std::vector<ArchiveEntry>& entries, qint64 archiveSize, qint64 mostBytes);

} // namespace qb
