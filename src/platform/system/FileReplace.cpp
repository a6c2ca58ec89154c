#include "platform/system/FileReplace.h"

#include "platform/system/Interims.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qb {

namespace {

[[noreturn]] void Fail(const QString& what, const QString& path, int error)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       QStringLiteral("'%1' could not be %2: %3.")
                           .arg(QDir::toNativeSeparators(path), what, QString::fromLocal8Bit(std::strerror(error))),
                       QStringLiteral("MoveIntoPlace"));
}

int Sync(const QString& path, int flags)
{
    const int file = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    if (file < 0)
        return errno;
    const int error = ::fsync(file) == 0 ? 0 : errno;
    ::close(file);
    return error;
}

/// Clears away what a dead process left in a folder, at the first look at it.
void ClearOnce(const QString& folder)
{
    thread_local QSet<QString> cleared;
    if (cleared.contains(folder))
        return;
    cleared.insert(folder);
    RemoveStaleInterims(folder);
}

} // namespace

QString WhyNoPlainFile(const QString& path)
{
    struct stat state {};
    if (::stat(QFile::encodeName(path).constData(), &state) != 0 || S_ISREG(state.st_mode))
        return {};
    return S_ISDIR(state.st_mode) ? QStringLiteral("a folder") : QStringLiteral("a device, a pipe or a socket");
}

void SyncFile(const QString& path)
{
    if (const int error = Sync(path, O_RDONLY))
        Fail(QStringLiteral("written"), path, error);
}

bool SyncFolder(const QString& path)
{
    errno = Sync(path, O_RDONLY | O_DIRECTORY);
    return errno == 0 || errno == EINVAL || errno == ENOTSUP;
}

void SyncFileSystem(const QString& path)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const int error = file < 0 || ::syncfs(file) != 0 ? errno : 0;
    if (file >= 0)
        ::close(file);
    if (error != 0)
        Fail(QStringLiteral("written"), path, error);
}

void MoveIntoPlace(const QString& from, const QString& to, bool replace)
{
    if (!WhyNoPlainFile(to).isEmpty())
        Fail(QStringLiteral("written"), to, EEXIST);
    SyncFile(from);
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    // A hard link refuses an existing name in one step; where links are unknown, look first.
    if (!replace) {
        if (::link(source.constData(), target.constData()) == 0) {
            ::unlink(source.constData());
        } else if (errno == EEXIST || QFileInfo::exists(to)) {
            Fail(QStringLiteral("made"), to, EEXIST);
        } else {
            replace = true;
        }
    }
    if (replace && std::rename(source.constData(), target.constData()) != 0)
        Fail(QStringLiteral("written"), to, errno);
    Sync(QFileInfo(to).absolutePath(), O_RDONLY | O_DIRECTORY); // a file system may not offer it
}

bool RenameFile(const QString& from, const QString& to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

void KeepNoMoreRightsThan(const QString& model, const QString& file)
{
    struct stat wanted {};
    struct stat state {};
    const QByteArray path = QFile::encodeName(file);
    if (::stat(QFile::encodeName(model).constData(), &wanted) == 0 && ::lstat(path.constData(), &state) == 0
        && S_ISREG(state.st_mode))
        ::chmod(path.constData(), (state.st_mode & wanted.st_mode & 0777) | S_IRUSR | S_IWUSR);
}

QString ReplaceContents(const QString& path, const QByteArray& bytes, std::optional<QFileDevice::Permissions> rights)
{
    const QFileInfo given(path);
    const QString target = !given.isSymLink() ? path
                           : given.exists()   ? given.canonicalFilePath()
                                              : given.symLinkTarget();
    const QFileInfo existing(target);
    ClearOnce(existing.absolutePath());
    if (existing.isDir() || (existing.exists() && !existing.isWritable()))
        return QString::fromLocal8Bit(std::strerror(existing.isDir() ? EISDIR : EACCES));
    const QString interim = InterimName(target);
    QFile file(interim);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return file.errorString();
    QString reason;
    if (existing.exists() && !rights)
        rights = existing.permissions();
    if (rights && !file.setPermissions(*rights))
        reason = file.errorString();
    if (reason.isEmpty())
        reason = WriteAll(file, bytes.constData(), bytes.size());
    if (reason.isEmpty() && (::fsync(file.handle()) != 0 || !RenameFile(interim, target)))
        reason = QString::fromLocal8Bit(std::strerror(errno));
    file.close();
    if (!reason.isEmpty())
        QFile::remove(interim);
    else
        Sync(existing.absolutePath(), O_RDONLY | O_DIRECTORY); // a file system may not offer it
    return reason;
}

QString WriteAll(QFile& file, const char* bytes, qint64 length)
{
    while (length > 0) { // of what a full disk takes but a part of, only the next try tells the reason
        const qint64 written = file.write(bytes, length);
        if (written <= 0)
            return file.errorString();
        bytes += written;
        length -= written;
    }
    return {};
}

QString ReadAll(QFile& file, QByteArray& bytes, qint64 most)
{
    constexpr qint64 Piece = 1 << 20;
    bytes.clear();
    while (bytes.size() < most) { // what a size promises is not always there, and the other way round
        const qsizetype before = bytes.size();
        bytes.resize(before + qsizetype(qMin(Piece, most - before)));
        const qint64 count = file.read(bytes.data() + before, bytes.size() - before);
        bytes.resize(before + qsizetype(qMax(count, qint64(0))));
        if (count < 0 || file.error() != QFileDevice::NoError)
            return file.errorString();
        if (count == 0)
            break;
    }
    return {};
}

} // namespace qb
