#include "platform/system/Shell.h"

#include <QMimeDatabase>
#include <QProcess>
#include <QStandardPaths>
#include <algorithm>

namespace qb {

namespace {

bool Start(const QString& program, const QStringList& arguments)
{
    const QString path = QStandardPaths::findExecutable(program);
    return !path.isEmpty() && QProcess::startDetached(path, arguments);
}

} // namespace

bool OpenTarget(const QString& target)
{
    return !target.startsWith(u'-') && Start(QStringLiteral("xdg-open"), {target});
}

QString FindAssociatedProgram(const QString& fileName)
{
    constexpr int Patience = 5000; // milliseconds
    const QString path = QStandardPaths::findExecutable(QStringLiteral("xdg-mime"));
    if (path.isEmpty())
        return {};
    const QString type = QMimeDatabase().mimeTypeForFile(fileName, QMimeDatabase::MatchExtension).name();
    QProcess query;
    query.start(path, {QStringLiteral("query"), QStringLiteral("default"), type});
    if (!query.waitForFinished(Patience))
        return {};
    return QString::fromLocal8Bit(query.readAllStandardOutput()).section(u'\n', 0, 0).trimmed();
}

bool IsProgram(const QString& name)
{
    // What stands behind the extension is dropped by some, and hides it from others.
    QString fileName = name;
    while (!fileName.isEmpty() && (fileName.back().isSpace() || fileName.back() == u'.'))
        fileName.chop(1);
    static const QStringList extensions{
        QStringLiteral("EXE"),         QStringLiteral("COM"),     QStringLiteral("BAT"),  QStringLiteral("CMD"),
        QStringLiteral("MSI"),         QStringLiteral("SCR"),     QStringLiteral("PS1"),  QStringLiteral("VBS"),
        QStringLiteral("APPIMAGE"),    QStringLiteral("RUN"),     QStringLiteral("JNLP"), QStringLiteral("FLATPAKREF"),
        QStringLiteral("FLATPAKREPO"), QStringLiteral("SNAP"),    QStringLiteral("URL"),  QStringLiteral("LNK"),
        QStringLiteral("HTA"),         QStringLiteral("DESKTOP"), QStringLiteral("DOCM"), QStringLiteral("DOTM"),
        QStringLiteral("XLSM"),        QStringLiteral("XLTM"),    QStringLiteral("XLAM"), QStringLiteral("PPTM"),
        QStringLiteral("PPSM")};
    static const QStringList scripts{QStringLiteral("application/x-shellscript"),
                                     QStringLiteral("application/x-desktop")};
    static const QStringList types{QStringLiteral("application/x-executable"),
                                   QStringLiteral("application/x-sharedlib"),
                                   QStringLiteral("application/x-java-archive"),
                                   QStringLiteral("application/x-ms-dos-executable"),
                                   QStringLiteral("application/vnd.debian.binary-package"),
                                   QStringLiteral("application/x-rpm")};
    if (extensions.contains(fileName.section(u'.', -1).toUpper()) && fileName.contains(u'.'))
        return true;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(fileName, QMimeDatabase::MatchExtension);
    const auto isOneOf = [&type](const QStringList& programs) {
        return std::any_of(programs.begin(), programs.end(),
                           [&type](const QString& program) { return type.inherits(program); });
    };
    // Source texts of many languages count as executable, but a desktop shows them.
    return isOneOf(scripts) || (isOneOf(types) && !type.inherits(QStringLiteral("text/plain")));
}

bool OpenMail(const Mail& mail)
{
    QStringList arguments{QStringLiteral("--utf8"), QStringLiteral("--subject"), mail.Subject, QStringLiteral("--body"),
                          mail.Body};
    if (!mail.Attachment.isEmpty())
        arguments << QStringLiteral("--attach") << mail.Attachment;
    if (!mail.To.isEmpty())
        arguments << mail.To;
    return Start(QStringLiteral("xdg-email"), arguments);
}

} // namespace qb
