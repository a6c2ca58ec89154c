#include "platform/system/Shell.h"

#include <QProcess>
#include <QStandardPaths>

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
    return Start(QStringLiteral("xdg-open"), {target});
}

bool OpenMail(const Mail& mail)
{
    QStringList arguments{QStringLiteral("--utf8"), QStringLiteral("--subject"), mail.Subject,
                          QStringLiteral("--body"), mail.Body};
    if (!mail.Attachment.isEmpty())
        arguments << QStringLiteral("--attach") << mail.Attachment;
    if (!mail.To.isEmpty())
        arguments << mail.To;
    return Start(QStringLiteral("xdg-email"), arguments);
}

} // namespace qb
