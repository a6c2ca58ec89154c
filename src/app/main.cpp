#include "session/ui/Main.h"
#include "platform/system/Trace.h"
#include "printing/PrintHelperJob.h"
#include "printing/ui/PrintHelper.h"
#include "support/ui/Icons.h"

#include <QApplication>

#include <csignal>
#include <cstring>

int main(int argc, char** argv)
{
    qb::Trace("process");
    std::signal(SIGXFSZ, SIG_IGN); // a limit on file sizes is an error of the write, not the end
    if (argc == 2 && std::strcmp(argv[1], qb::PrintHelperOption) == 0)
        return qb::RunPrintHelper(argc, argv);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quillbase"));
    QApplication::setDesktopFileName(QStringLiteral("quillbase"));
    qb::InitialiseIcons();
    return qb::Main();
}
