#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>
#include <limits>
#include <optional>

class QFile;

namespace qb {

/// What stands at @p path where that is neither an ordinary file nor a link to one, nor nothing: "a folder", "a
/// device, a pipe or a socket". Empty otherwise. A file never takes the place of these.
QString WhyNoPlainFile(const QString& path);

/// Flushes a file's contents to the disk. Raises RuntimeError 75 on failure.
void SyncFile(const QString& path);

/// Flushes the names in a folder, where the file system can do that. False with errno when it failed.
bool SyncFolder(const QString& path);

/// Flushes everything that was written to the file system that @p path lies on.
void SyncFileSystem(const QString& path);

/// Renames @p from to @p to in one step, after flushing it; a file of that name is replaced
/// when @p replace, refused with RuntimeError 75 otherwise; what is no file is never replaced. On failure both stay as
/// they were.
void MoveIntoPlace(const QString& from, const QString& to, bool replace);

/// Renames a file inside of its file system, over one that is there; false when that can't be. Nothing is
/// ever copied in its place, of which a full disk would leave half.
bool RenameFile(const QString& from, const QString& to);

/// Takes from a file's rights for others what @p model does not give them: what is made of a private file is
/// private.
void KeepNoMoreRightsThan(const QString& model, const QString& file);

/// Makes @p bytes the contents of the file @p path, in one step. Returns why that could not be done,
/// in the system's words; the file is as it was then. Empty on success.
/// A new file gets @p rights, if given.
QString ReplaceContents(const QString& path, const QByteArray& bytes,
                        std::optional<QFileDevice::Permissions> rights = {});

/// Writes all of @p length bytes to a file without a buffer. Returns why that could not be done, in the
/// system's words; empty on success.
QString WriteAll(QFile& file, const char* bytes, qint64 length);

/// Reads a file that is open to its end into @p bytes, or @p most of it. Returns why that could not be
/// done, in the system's words; empty on success. A read that fails must not pass for an empty file.
QString ReadAll(QFile& file, QByteArray& bytes, qint64 most = std::numeric_limits<qint64>::max());

} // namespace qb
