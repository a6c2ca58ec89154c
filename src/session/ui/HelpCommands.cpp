#include "session/ui/HelpCommands.h"

#include "platform/system/Prompts.h"
#include "platform/system/SettingsStore.h"
#include "platform/system/Shell.h"
#include "session/Commands.h"
#include "support/Addresses.h"
#include "support/ErrorRoutine.h"
#include "support/Version.h"

#include <QFileInfo>
#include <QMessageBox>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

void mnuViewErrorLog_Click()
{
    if (QFileInfo::exists(ErrorLogFile()) && !OpenTarget(ErrorLogFile()))
        Prompts::Current().MsgBox({.Text = u"No application could be started for '%1'."_s.arg(ErrorLogFile()),
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Information});
}

void mnuBugReportItem_Click()
{
    const QString log = ErrorLogFile();
    Mail mail;
    mail.To = BugReportAddress();
    mail.Attachment = QFileInfo::exists(log) ? log : QString();
    if (!OpenMail(mail))
        Prompts::Current().MsgBox({.Text = u"No mail program could be started."_s,
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Information});
}

void mnuAboutItem_Click(QWidget& window)
{
    QMessageBox box(
        QMessageBox::NoIcon, u"About KT Quillbase"_s,
        u"KT Quillbase %1\nA library for source code.\n\nCopyright © 2026 Brindleton Software, MIT licence"_s.arg(
            ProgramVersion()),
        QMessageBox::Ok, &window);
    constexpr int IconSize = 96;
    box.setObjectName(u"frmAbout"_s);
    box.setIconPixmap(window.windowIcon().pixmap(IconSize));
    box.exec();
}

} // namespace

void RegisterHelpCommands(Commands& commands, QWidget& window)
{
    commands.Register(u"mnuViewErrorLog"_s, mnuViewErrorLog_Click);
    commands.Register(u"mnuBugReportItem"_s, mnuBugReportItem_Click);
    commands.Register(u"mnuAboutItem"_s, [&window] { mnuAboutItem_Click(window); });
}

} // namespace qb
