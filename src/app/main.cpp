#include "session/ui/Main.h"
#include "platform/system/Trace.h"
#include "support/ui/Icons.h"

#include <QApplication>

#include <csignal>

int main(int argc, char** argv)
{
    qb::Trace("process");
    std::signal(SIGXFSZ, SIG_IGN); // a limit on file sizes is an error of the write, not the end
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quillbase"));
    QApplication::setDesktopFileName(QStringLiteral("quillbase"));
    qb::InitialiseIcons();
    return qb::Main();
}
