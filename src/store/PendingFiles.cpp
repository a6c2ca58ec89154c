#include "store/PendingFiles.h"

#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "store/SessionValues.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QUuid>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString LockName(const QString& mark)
{
    return u".working-"_s + mark;
}

/// Whether the work of that mark is still under way: somebody holds its lock, or nobody can tell where
/// files can't be locked. Without a lock file it is over. A lock that nobody holds is removed.
bool IsUnderWay(const QDir& folder, const QString& mark)
{
    const QByteArray path = QFile::encodeName(folder.filePath(LockName(mark)));
    const int file = ::open(path.constData(), O_RDWR | O_CLOEXEC);
    if (file < 0)
        return false;
    const bool held = ::flock(file, LOCK_EX | LOCK_NB) != 0;
    if (!held)
        ::unlink(path.constData());
    ::close(file);
    return held;
}

} // namespace

PendingWork::PendingWork()
    : m_folder(Session().CurrentFilesFolder), m_mark(QUuid::createUuid().toString(QUuid::Id128))
{
    QDir().mkpath(m_folder);
    const QByteArray path = QFile::encodeName(m_folder + LockName(m_mark));
    struct stat state {};
    do {
        if (m_lock >= 0)
            ::close(m_lock); // taken for a dead one and removed before it was locked
        m_lock = ::open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_lock < 0)
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"The folder of stored files '%1' can't be written; nothing was changed."_s.arg(QDir::toNativeSeparators(m_folder)),
                               u"PendingWork"_s);
    } while (::flock(m_lock, LOCK_EX) == 0 && ::fstat(m_lock, &state) == 0 && state.st_nlink == 0);
}

PendingWork::~PendingWork()
{
    QFile::remove(m_folder + LockName(m_mark));
    ::close(m_lock);
}

QString PendingWork::NameOf(const QString& kind, qint64 id) const
{
    return u"%1.%2-%3-%4"_s.arg(m_folder, kind, m_mark).arg(id);
}

void FinishPendingFiles(Database& database)
{
    static const QRegularExpression pending(u"^\\.(?:(adding|arriving|leaving)-([0-9a-f]{32})-(\\d+)|working-([0-9a-f]{32}))$"_s);
    const QDir folder(Session().CurrentFilesFolder);
    QHash<QString, bool> underWay; // by mark
    for (const QString& name : folder.entryList({u".*"_s}, QDir::Files | QDir::Hidden)) {
        const QRegularExpressionMatch match = pending.match(name);
        if (!match.hasMatch())
            continue;
        const QString mark = match.captured(2) + match.captured(4);
        if (!underWay.contains(mark))
            underWay.insert(mark, IsUnderWay(folder, mark));
        const bool isHere = QFile::exists(folder.filePath(name)); // it may have got to its place since
        if (underWay[mark] || match.captured(1).isEmpty() || !isHere)
            continue;
        const qint64 id = match.captured(3).toLongLong();
        const Value title = match.captured(1) == u"adding"_s ? Value() : database.QueryValue(u"SELECT Title FROM Files WHERE ID = ?"_s, {id});
        const QString place = title.IsNull() ? QString() : StoredFilePath(id, title.ToText());
        if (place.isEmpty())
            QFile::remove(folder.filePath(name));
        else
            MoveIntoPlace(folder.filePath(name), place, true);
    }
}

} // namespace qb
