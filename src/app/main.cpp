#include "platform/system/Trace.h"
#include "session/ui/Main.h"
#include "support/ui/Icons.h"

#include <QApplication>

int main(int argc, char** argv)
{
    qb::Trace("process");
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quillbase"));
    QApplication::setDesktopFileName(QStringLiteral("quillbase"));
    qb::InitialiseIcons();
    return qb::Main();
}
