#include "store/PendingPages.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "store/PageChanges.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QUuid>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString PageSuffix = u".htm"_s;

QString LockName(const QString& mark)
{
    return u".working-"_s + mark;
}

bool IsThere(const QString& path)
{
    return QFileInfo::exists(path) || QFileInfo(path).isSymLink();
}

void Remove(const QString& path)
{
    const QFileInfo file(path);
    if (file.isDir() && !file.isSymLink())
        DeleteFolder(path);
    else
        QFile::remove(path);
}

/// As of stored files: a lock that nobody holds is of a work that is over.
bool IsUnderWay(const QDir& folder, const QString& mark)
{
    FileLock lock(folder.filePath(LockName(mark)), FileLock::Target::Existing);
    const bool isOver = lock.IsHeld() || lock.Result() == FileLock::State::Missing;
    lock.RemoveFile();
    return !isOver;
}

} // namespace

PageDeletion::~PageDeletion()
{
    for (const Moved& moved : m_moved) {
        if (!IsThere(moved.Place))
            RenameFile(moved.Leaving, moved.Place);
    }
    if (!m_mark.isEmpty()) {
        m_lock.Release();
        QFile::remove(m_folder + LockName(m_mark)); // where files can't be locked
    }
}

void PageDeletion::Delete(const Library& library, qint64 item)
{
    if (OwnerOf(library.HTMLFolder(), library.Identity()) == FolderOwner::Another)
        return;
    const QString place = library.HTMLFolder() + QString::number(item);
    if (!IsThere(place + PageSuffix))
        return; // a folder without a page is nobody's
    if (m_mark.isEmpty()) {
        m_folder = library.HTMLFolder();
        m_mark = QUuid::createUuid().toString(QUuid::Id128);
        m_lock = FileLock(m_folder + LockName(m_mark), FileLock::Target::Own, FileLock::Forever);
    }
    const QString leaving = m_folder + u".leaving-%1-%2"_s.arg(m_mark).arg(item);
    Move(place + PageSuffix, leaving + PageSuffix);
    if (IsThere(place))
        Move(place, leaving);
}

void PageDeletion::Move(const QString& place, const QString& leaving)
{
    if (!RenameFile(place, leaving))
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The web page '%1' can't be deleted; nothing was changed."_s.arg(QDir::toNativeSeparators(place)),
            u"PageDeletion"_s);
    m_moved.push_back({place, leaving});
}

void PageDeletion::Complete()
{
    for (const Moved& moved : m_moved)
        Remove(moved.Leaving);
    m_moved.clear();
}

void FinishPendingPages(Library& library)
{
    if (library.IsReadOnly() || OwnerOf(library.HTMLFolder(), library.Identity()) == FolderOwner::Another)
        return;
    RemoveStaleInterims(library.HTMLFolder());
    FinishPageChanges(library);
    static const QRegularExpression pending(
        u"\\A\\.(?:leaving-([0-9a-f]{32})-(\\d+)(\\.htm)?|working-([0-9a-f]{32}))\\z"_s);
    const QDir folder(library.HTMLFolder());
    QHash<QString, bool> underWay; // by mark
    for (const QString& name : folder.entryList({u".*"_s}, QDir::Files | QDir::Dirs | QDir::Hidden | QDir::System)) {
        const QRegularExpressionMatch match = pending.match(name);
        if (!match.hasMatch())
            continue;
        const QString mark = match.captured(1) + match.captured(4);
        if (!underWay.contains(mark))
            underWay.insert(mark, IsUnderWay(folder, mark));
        if (underWay[mark] || match.captured(1).isEmpty())
            continue;
        const qint64 item = match.captured(2).toLongLong();
        const QString place = folder.filePath(QString::number(item) + match.captured(3));
        const bool isKept = !library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {item}).IsNull();
        if (!isKept)
            Remove(folder.filePath(name));
        else if (!IsThere(place))
            RenameFile(folder.filePath(name), place);
    }
}

} // namespace qb
