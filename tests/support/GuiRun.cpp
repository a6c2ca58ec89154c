#include "support/GuiRun.h"

#include <QDir>

namespace qb::test {

void TakePicture(QWidget& widget, const QString& name)
{
    const QString folder = qEnvironmentVariable("QUILLBASE_PICTURES");
    QCoreApplication::processEvents(); // layouts that wait
    if (!folder.isEmpty() && QDir().mkpath(folder))
        widget.grab().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
}

QPalette DarkPalette()
{
    QPalette palette(QColor(0x31, 0x36, 0x3b), QColor(0x2a, 0x2e, 0x32));
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x20));
    palette.setColor(QPalette::Link, QColor(0x1d, 0x99, 0xf3));
    return palette;
}

} // namespace qb::test
