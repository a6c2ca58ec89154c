#include "store/PendingFiles.h"

#include "platform/system/FileReplace.h"
#include "store/SessionValues.h"
#include "store/StoredFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <csignal>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString NameOf(const QString& kind, qint64 number)
{
    return u"%1.%2-%3-%4"_s.arg(Session().CurrentFilesFolder, kind).arg(QCoreApplication::applicationPid()).arg(number);
}

bool IsRunning(qint64 process)
{
    return process == QCoreApplication::applicationPid() || ::kill(pid_t(process), 0) == 0 || errno == EPERM;
}

} // namespace

QString AddingName()
{
    static qint64 counter = 0;
    return NameOf(u"adding"_s, ++counter);
}

QString ArrivingName(qint64 id)
{
    return NameOf(u"arriving"_s, id);
}

QString LeavingName(qint64 id)
{
    return NameOf(u"leaving"_s, id);
}

void FinishPendingFiles(Database& database)
{
    static const QRegularExpression pending(u"^\\.(adding|arriving|leaving)-(\\d+)-(\\d+)$"_s);
    const QDir folder(Session().CurrentFilesFolder);
    for (const QString& name : folder.entryList({u".*"_s}, QDir::Files | QDir::Hidden)) {
        const QRegularExpressionMatch match = pending.match(name);
        if (!match.hasMatch() || IsRunning(match.captured(2).toLongLong()))
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
