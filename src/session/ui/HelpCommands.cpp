#include "session/ui/HelpCommands.h"

#include "help/Handbook.h"
#include "help/HelpTopics.h"
#include "help/ItemMail.h"
#include "help/Links.h"
#include "help/ShowHelp.h"
#include "help/ui/HelpKey.h"
#include "help/ui/frmHelp.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"
#include "platform/system/Shell.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ui/CWaitCursor.h"
#include "support/Addresses.h"
#include "support/ErrorRoutine.h"
#include "support/Version.h"
#include "support/ui/WorkProgress.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The commands that lead to the web, each by a name in the file of links.
constexpr std::pair<const char*, const char*> OnlineCommands[] = {
    {"mnuHelpOnlineItem", "Quillbase Help"},   {"mnuOnlineItem", "Quillbase Online"},
    {"mnuHomePageItem", "Quillbase Home"},     {"mnuFeedbackFormItem", "Quillbase Feedback"},
    {"mnuBugFormItem", "Quillbase BugReport"}, {"mnuWishFormItem", "Quillbase WishSubmit"},
};

/// Beside the dialog that is open, if there is one: it keeps the user from all other windows.
void ShowTopic(QWidget& window, const QString& topic)
{
    Guarded(u"MainForm"_s, u"ShowHelp"_s, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        ShowHelp(topic, [&](const QString& shown) { frmHelp::ShowTopicBeside(dialog ? *dialog : window, shown); });
    });
}

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
    commands.Register(u"mnuHelpItem"_s, [&window] { ShowTopic(window, Handbook::HomeTopic()); });
    commands.Register(u"mnuHelpOnThisItem"_s,
                      [&window] { ShowTopic(window, TopicOf(HelpKey::NamesOf(QApplication::focusWidget()))); });
    new HelpKey(&window, [&window](const QStringList& names) { ShowTopic(window, TopicOf(names)); });
    for (const auto& [command, link] : OnlineCommands) {
        if (!GetLink(QLatin1StringView(link)).isEmpty())
            commands.Register(QLatin1StringView(command), [link] { OpenNamedLink(QLatin1StringView(link)); });
    }
    commands.Register(u"mnuMailWishItem"_s, [] { SendToMakers(WishAddress(), u"KT Quillbase: a wish"_s); });
    commands.Register(u"mnuMailFeedbackItem"_s, [] { SendToMakers(FeedbackAddress(), u"KT Quillbase: feedback"_s); });
    commands.Register(u"mnuViewErrorLog"_s, mnuViewErrorLog_Click);
    commands.Register(u"mnuBugReportItem"_s, mnuBugReportItem_Click);
    commands.Register(u"mnuAboutItem"_s, [&window] { mnuAboutItem_Click(window); });
}

void RegisterItemMail(Commands& commands, QWidget& window, SessionState& session, std::function<bool()> saveItem)
{
    commands.Register(u"mnuMailItem"_s, [&window, &session, saveItem = std::move(saveItem)] {
        if (!session.CurrentDatabase || !saveItem())
            return;
        CWaitCursor wait;
        wait.SetCursor(CWaitCursor::Hourglass);
        WorkProgress progress(&window, u"Mail Item"_s);
        try {
            MailItem(*session.CurrentDatabase, session.oCodeItem->Key().toLongLong(), progress);
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::Cancelled)
                throw;
        }
    });
}

} // namespace qb
