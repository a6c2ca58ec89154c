#include "platform/system/Interims.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUuid>
#include <cerrno>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 ForeignDays = 7;

QByteArray Contents(const char* path)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Tells machines apart, each start of one, and rooms in it that number their processes each by themselves.
const QString& HostMark()
{
    static const QString mark = [] {
        constexpr qsizetype Length = 8;
        const QByteArray seen = Contents("/proc/sys/kernel/random/boot_id")
                                + QFile::symLinkTarget(u"/proc/self/ns/pid"_s).toUtf8();
        return QString::fromLatin1(QCryptographicHash::hash(seen, QCryptographicHash::Sha1).toHex().left(Length));
    }();
    return mark;
}

bool IsAlive(qint64 process)
{
    return ::kill(pid_t(process), 0) == 0 || errno != ESRCH;
}

bool IsPlain(const QString& path)
{
    struct stat state {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0 && S_ISREG(state.st_mode);
}

} // namespace

QString InterimName(const QString& target)
{
    constexpr qsizetype LongestName = 40; // characters of the target's, of up to four bytes each
    const QFileInfo info(target);
    return info.absolutePath() + u"/."_s + info.fileName().left(LongestName) + u'.' + HostMark() + u'-'
           + QString::number(::getpid()) + u'-' + QUuid::createUuid().toString(QUuid::Id128) + u".interim"_s;
}

void RemoveStaleInterims(const QString& folder)
{
    // With what the data engine and the zip library put beside a file that they write.
    static const QRegularExpression pattern(
        u"\\A\\..*\\.([0-9a-f]{8})-([1-9][0-9]{0,8})-[0-9a-f]{32}\\.interim(?:-journal|\\.[A-Za-z0-9]{6})?\\z"_s,
        QRegularExpression::DotMatchesEverythingOption);
    const QDir dir(folder);
    for (const QString& name : dir.entryList({u".*.interim*"_s}, QDir::Files | QDir::Hidden)) {
        const QRegularExpressionMatch match = pattern.match(name);
        const QString path = dir.filePath(name);
        if (!match.hasMatch() || !IsPlain(path))
            continue;
        const bool isOwn = match.captured(1) == HostMark();
        const bool isOld = QFileInfo(path).lastModified().daysTo(QDateTime::currentDateTime()) > ForeignDays;
        if (isOwn ? !IsAlive(match.captured(2).toLongLong()) : isOld)
            QFile::remove(path);
    }
}

} // namespace qb
