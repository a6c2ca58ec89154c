#include "store/PendingFiles.h"

#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/Library.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QUuid>
#include <algorithm>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString LockName(const QString& mark)
{
    return u".working-"_s + mark;
}

/// Whether the work of that mark is still under way: somebody holds its lock, or nobody can tell, where
/// files can't be locked or this one not be opened. Without a lock file it is over. A lock that nobody
/// holds is removed.
bool IsUnderWay(const QDir& folder, const QString& mark)
{
    FileLock lock(folder.filePath(LockName(mark)), FileLock::Target::Existing);
    const bool isOver = lock.IsHeld() || lock.Result() == FileLock::State::Missing;
    lock.RemoveFile();
    return !isOver;
}

/// Tells titles apart in the name of an arriving file.
QString TitleMark(const QString& title)
{
    constexpr int Length = 8;
    return QString::fromLatin1(QCryptographicHash::hash(title.toUtf8(), QCryptographicHash::Sha1).toHex().left(Length));
}

/// What lies in the place of a stored file may be somebody's: it gets a name of its own.
void SetAside(const QString& place)
{
    const QFileInfo file(place);
    if ((!file.exists() && !file.isSymLink()) || (file.isDir() && !file.isSymLink()))
        return;
    const QString aside = NumberedPath(file.absolutePath() + u"/found "_s + file.fileName());
    if (!RenameFile(place, aside))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' is in the way of a stored file."_s.arg(QDir::toNativeSeparators(place)),
                           u"PendingFiles"_s);
}

bool IsSameFile(const QString& one, const QString& other)
{
    struct stat left {};
    struct stat right {};
    return ::lstat(QFile::encodeName(one).constData(), &left) == 0
           && ::lstat(QFile::encodeName(other).constData(), &right) == 0 && left.st_dev == right.st_dev
           && left.st_ino == right.st_ino;
}

/// Puts a file of the folder in a place that is its own from now on.
void MoveToPlace(const QString& path, const QString& place)
{
    if (IsSameFile(path, place)) { // it has got there, and only its other name is left
        QFile::remove(path);
        return;
    }
    SetAside(place);
    MoveIntoPlace(path, place, false);
}

/// Finishes or takes back what a work that is over left under the name @p path.
void FinishPendingFile(Library& library, const QString& path, const QString& kind, qint64 id, const QString& titleMark)
{
    if (!QFile::exists(path) && !QFileInfo(path).isSymLink())
        return; // it has got to its place since
    if (const QFileInfo file(path); kind == u"packing"_s && file.isDir() && !file.isSymLink()) {
        DeleteFolder(path);
        return;
    }
    if (!IsPlainFile(path)) { // a link or a pipe is nobody's stored file
        QFile::remove(path);
        return;
    }
    const Value title = kind == u"adding"_s ? Value()
                                            : library.QueryValue(u"SELECT Title FROM Files WHERE ID = ?"_s, {id});
    // A row that still has another title was not committed.
    const bool isOther = !titleMark.isEmpty() && titleMark != TitleMark(title.ToText());
    const QString place = title.IsNull() || isOther ? QString() : StoredFilePath(library, id, title.ToText());
    if (place.isEmpty()) {
        QFile::remove(path);
    } else {
        MoveToPlace(path, place);
    }
}

} // namespace

PendingWork::PendingWork(const Library& library)
    : m_folder(library.FilesFolder()), m_libraryPath(library.Name()), m_mark(QUuid::createUuid().toString(QUuid::Id128))
{
    ClaimFolder(m_folder, library.Identity());
    m_lock = FileLock(m_folder + LockName(m_mark), FileLock::Target::Own, FileLock::Forever);
    if (!QFileInfo::exists(m_folder + LockName(m_mark)))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The folder of stored files '%1' can't be written; nothing was changed."_s.arg(
                               QDir::toNativeSeparators(m_folder)),
                           u"PendingWork"_s);
}

PendingWork::~PendingWork()
{
    DeleteFolder(NameOf(u"packing"_s, 0));
    m_lock.Release();
    QFile::remove(m_folder + LockName(m_mark)); // where files can't be locked
}

QString PendingWork::ArrivingName(qint64 id, const QString& title) const
{
    return NameOf(u"arriving"_s, id) + u'-' + TitleMark(title);
}

QString PendingWork::PackingFolder()
{
    const QString folder = NameOf(u"packing"_s, 0);
    if (!QDir().mkpath(folder))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The folder of stored files '%1' can't be written; nothing was changed."_s.arg(
                               QDir::toNativeSeparators(m_folder)),
                           u"PendingWork"_s);
    return folder + u'/';
}

QString PendingWork::NameOf(const QString& kind, qint64 id) const
{
    return u"%1.%2-%3-%4"_s.arg(m_folder, kind, m_mark).arg(id);
}

ArrivingFile::ArrivingFile(std::shared_ptr<PendingWork> work, qint64 number, const QString& source, bool moves,
                           Work& copying)
    : m_work(std::move(work))
{
    const QString name = m_work->AddingName(number);
    if (!moves || !RenameFile(source, name))
        CopyFileContents(source, name, copying);
    m_path = name;
    KeepNoMoreRightsThan(m_work->LibraryPath(), name);
    m_checksum = ChecksumOfFile(name);
}

ArrivingFile::~ArrivingFile()
{
    if (!m_path.isEmpty())
        QFile::remove(m_path);
}

qint64 ArrivingFile::Size() const
{
    return QFileInfo(m_path).size();
}

void ArrivingFile::Bind(qint64 id, const QString& title)
{
    const QString arriving = m_work->ArrivingName(id, title);
    MoveIntoPlace(m_path, arriving, true);
    m_path = arriving;
}

void ArrivingFile::PutInPlace(const QString& place, bool replaces)
{
    // The row counts now: where this fails the file stays for the next opening of the library.
    const QString arrived = std::exchange(m_path, {});
    if (replaces)
        MoveIntoPlace(arrived, place, true);
    else
        MoveToPlace(arrived, place);
}

StoredFileDeletion::~StoredFileDeletion()
{
    for (const Moved& file : m_moved)
        RenameFile(file.Leaving, file.Place);
}

void StoredFileDeletion::Delete(Library& library, qint64 id)
{
    const DeletedFileRow row = DeleteStoredFileRow(library, id);
    m_lacksMotherRecord = m_lacksMotherRecord || row.LacksMotherRecord;
    Take(library, id, row.Place);
}

void StoredFileDeletion::Take(const Library& library, qint64 id, const QString& place)
{
    const bool isForeign = OwnerOf(library.FilesFolder(), library.Identity()) == FolderOwner::Another;
    if (isForeign || place.isEmpty() || !QFile::exists(place))
        return;
    if (!m_work)
        m_work.emplace(library);
    const QString leaving = m_work->LeavingName(id);
    if (!RenameFile(place, leaving))
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The stored file '%1' can't be deleted; nothing was changed."_s.arg(QDir::toNativeSeparators(place)),
            u"StoredFileDeletion"_s);
    m_moved.push_back({place, leaving});
}

void StoredFileDeletion::Complete()
{
    for (const Moved& file : m_moved)
        QFile::remove(file.Leaving);
    m_moved.clear();
    if (std::exchange(m_lacksMotherRecord, false)) // now that nobody waits for the library
        Prompts::Current().MsgBox({.Text = u"Missing valid MotherRecordID in Files table in replica database. "
                                           "(CFileObject; DeleteObject subroutine)"_s,
                                   .Caption = u"Error"_s,
                                   .Icon = MsgBoxIcon::Critical});
}

bool IsFilePending(const QString& filesFolder, qint64 id, const QString& title)
{
    const QDir folder(filesFolder);
    const QStringList names = folder.entryList(
        {u".arriving-*-%1-%2"_s.arg(id).arg(TitleMark(title)), u".leaving-*-%1"_s.arg(id)}, QDir::Files | QDir::Hidden);
    return std::any_of(names.begin(), names.end(),
                       [&folder](const QString& name) { return IsPlainFile(folder.filePath(name)); });
}

void FinishPendingFiles(Library& library)
{
    if (library.IsReadOnly() || OwnerOf(library.FilesFolder(), library.Identity()) == FolderOwner::Another)
        return;
    RemoveStaleInterims(library.FilesFolder());
    static const QRegularExpression pending(u"^\\.(?:(adding|arriving|leaving|packing)-([0-9a-f]{32})-(\\d+)"
                                            "(?:-([0-9a-f]{8}))?|working-([0-9a-f]{32}))$"_s);
    const QDir folder(library.FilesFolder());
    QHash<QString, bool> underWay; // by mark
    for (const QString& name : folder.entryList({u".*"_s}, QDir::Files | QDir::Dirs | QDir::Hidden | QDir::System)) {
        const QRegularExpressionMatch match = pending.match(name);
        if (!match.hasMatch())
            continue;
        const QString mark = match.captured(2) + match.captured(5);
        if (!underWay.contains(mark))
            underWay.insert(mark, IsUnderWay(folder, mark));
        if (underWay[mark] || match.captured(1).isEmpty())
            continue;
        try {
            FinishPendingFile(library, folder.filePath(name), match.captured(1), match.captured(3).toLongLong(),
                              match.captured(4));
        } catch (const RuntimeError& error) { // it waits for another time, and keeps nobody from the others
            HandleError(error.Number(), error.Description(), u"PendingFiles"_s, u"FinishPendingFiles"_s, error.Source(),
                        false);
        }
    }
}

} // namespace qb
