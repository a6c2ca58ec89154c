#include "session/ui/Main.h"

#include "help/ItemMail.h"
#include "platform/system/SingleInstance.h"
#include "platform/system/Trace.h"
#include "session/ui/Termination.h"
#include "session/ui/frmCodeLib.h"
#include "session/ui/frmSplash.h"
#include "support/ui/DialogPrompts.h"
#include "support/ui/Icons.h"

#include <QApplication>
#include <QTimer>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// For scripts: the environment variable QUILLBASE_SHOW names the ID of an item to open;
/// QUILLBASE_PICTURE a file to which a picture of the window is written once it is drawn, after
/// which the window closes.
void FollowEnvironment(frmCodeLib& window)
{
    const QString item = qEnvironmentVariable("QUILLBASE_SHOW");
    if (!item.isEmpty())
        window.GoToNode(u'C' + item);
    const QString file = qEnvironmentVariable("QUILLBASE_PICTURE");
    if (file.isEmpty())
        return;
    constexpr int UntilSettled = 500; // milliseconds
    QTimer::singleShot(UntilSettled, &window, [&window, file] {
        window.grab().save(file, "PNG");
        window.close();
    });
}

} // namespace

int Main()
{
    QApplication::setWindowIcon(IconNamed(u"quillbase"_s));
    DialogPrompts prompts;
    Prompts::SetCurrent(&prompts);
    const SingleInstance instance;
    if (!instance.IsFirst()) {
        Trace("refused");
        prompts.MsgBox({.Text = u"An Instance of the KT Quillbase is already Running"_s, .Caption = ApplicationTitle});
        return 0;
    }
    auto splash = std::make_unique<frmSplash>();
    splash->show();
    QApplication::processEvents();
    frmCodeLib window;
    Trace("window");
    window.Form_Load();
    window.show();
    splash->finish(&window);
    splash.reset();
    window.SetTipsFocus();
    KeepTextsAtTermination(window);
    FollowEnvironment(window);
    const int status = QApplication::exec();
    RemoveOldMails();
    Prompts::SetCurrent(nullptr);
    return status;
}

} // namespace qb
