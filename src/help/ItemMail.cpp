#include "help/ItemMail.h"

#include "exchange/BranchExport.h"
#include "help/Links.h"
#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString Mailbox(const QString& setting)
{
    return GetSetting(SettingsApplication, u"Settings"_s, setting);
}

/// Only its owner may look into it: what is mailed to one is not for all of the machine.
QString MailFolder()
{
    const QString folder = CacheFolder() + u"mail"_s;
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return folder;
}

/// A title as the name of a file. Mail programs take what is attached from a list or a link, in which some characters
/// have a meaning.
QString FileNameOf(const QString& title)
{
    constexpr qsizetype Longest = 80;
    const QString special = u"/\\:*?\"'<>|,;%&#$`"_s;
    QString name;
    for (const QChar character : title.left(Longest)) {
        const bool isPlain = character.isPrint() && !special.contains(character);
        name += character.isSurrogate() || isPlain ? character : u'_';
    }
    if (!name.isEmpty() && name.back().isHighSurrogate())
        name.chop(1);
    name = name.trimmed();
    while (name.startsWith(u'.') || name.startsWith(u'-'))
        name.remove(0, 1);
    name = name.trimmed();
    return (name.isEmpty() ? u"Item"_s : name) + u".qbx"_s;
}

bool SayNoMailProgram()
{
    Prompts::Current().MsgBox(
        {.Text = u"No mail program could be started."_s, .Caption = ApplicationTitle, .Icon = MsgBoxIcon::Information});
    return false;
}

QString BodyOfItemMail()
{
    const QString site = GetLink(u"Quillbase Home"_s);
    return u"This email contains exported item in KTQuillbase proprietary format.\r\nThe item can be imported to and "
           "viewed in KTQuillbase universal code library. You can get the latest version of the software on "_s
           + (site.isEmpty() ? u"its home page"_s : site) + u" or on other colaborating sites."_s;
}

} // namespace

QString WishAddress()
{
    return Mailbox(u"WishAddress"_s);
}

QString FeedbackAddress()
{
    return Mailbox(u"FeedbackAddress"_s);
}

bool SendToMakers(const QString& address, const QString& subject)
{
    Mail mail;
    mail.To = address;
    mail.Subject = subject;
    return OpenMail(mail) || SayNoMailProgram();
}

Mail MailOfItem(Library& library, qint64 item, Work& work)
{
    const Value title = library.QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {item});
    if (title.IsNull())
        throw RuntimeError(ErrorNumber::NoCurrentRecord,
                           u"There is no item %1 in the library; nothing was mailed."_s.arg(item), u"MailOfItem"_s);
    RemoveOldMails();
    QTemporaryDir folder(MailFolder() + u"/XXXXXX"_s);
    if (!folder.isValid())
        throw RuntimeError(ErrorNumber::PathAccess, u"There is no place for the export: %1"_s.arg(folder.errorString()),
                           u"MailOfItem"_s);
    const QString file = folder.filePath(FileNameOf(title.ToText()));
    const BranchExportResult result = ExportItems(library, item, file, work);
    folder.setAutoRemove(false);
    if (!result.Missing.isEmpty())
        Prompts::Current().MsgBox(
            {.Text = u"These stored files are missing in the library; they are empty in the mail:\n\n%1"_s.arg(
                 result.Missing.join(u'\n')),
             .Caption = ApplicationTitle,
             .Icon = MsgBoxIcon::Exclamation});
    Mail mail;
    mail.Subject = title.ToText().simplified() + u" (KTQuillbase exported item)"_s;
    mail.Body = BodyOfItemMail();
    mail.Attachment = file;
    return mail;
}

bool MailItem(Library& library, qint64 item, Work& work)
{
    const Mail mail = MailOfItem(library, item, work);
    if (OpenMail(mail))
        return true;
    DeleteFolder(QFileInfo(mail.Attachment).absolutePath());
    return SayNoMailProgram();
}

void RemoveOldMails()
{
    constexpr int DaysKept = 7;
    const QString folder = CacheFolder() + u"mail"_s;
    const Date oldest = Clock::Now().AddDays(-DaysKept);
    const QFileInfoList mails = QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QFileInfo& mail : mails) {
        if (Date::FromDateTime(mail.lastModified()) < oldest)
            DeleteFolder(mail.filePath());
    }
}

} // namespace qb
