#include "help/Links.h"

#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/Shell.h"
#include "support/Addresses.h"

#include <QDir>
#include <QFile>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString FileName = u"KTQBLinks.txt"_s;

bool SayWhyNot(const QString& target, const QString& reason)
{
    Prompts::Current().MsgBox({.Text = u"Error Opening Link to "_s + ShownAddress(target) + u"\r\n\r\n"_s + reason,
                               .Caption = ApplicationTitle,
                               .Icon = MsgBoxIcon::Information});
    return false;
}

} // namespace

QString LinksFile()
{
    const QString own = ApplicationFolder() + FileName;
    return QFile::exists(own) ? own : SharedPath(FileName);
}

QString GetLink(const QString& name)
{
    constexpr qint64 Longest = 1024 * 1024;
    QFile file(LinksFile());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QStringList lines = QString::fromUtf8(file.read(Longest)).split(u'\n'); // without a byte-order mark
    for (const QString& line : lines) {
        const qsizetype mark = line.indexOf(u'=');
        if (mark > 0 && line.left(mark).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return line.mid(mark + 1).trimmed();
    }
    return {};
}

bool OpenLink(const QString& target)
{
    if (AnswerAddress(target) == AddressAnswer::Refuse)
        return SayWhyNot(target, u"It would start a program, or is no address."_s);
    return OpenTarget(target) || SayWhyNot(target, u"No application could be started for it."_s);
}

bool OpenNamedLink(const QString& name)
{
    const QString target = GetLink(name);
    if (!target.isEmpty())
        return OpenLink(target);
    return SayWhyNot(name, u"The file '%1' has no address for it."_s.arg(QDir::toNativeSeparators(LinksFile())));
}

} // namespace qb
