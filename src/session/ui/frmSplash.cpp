#include "session/ui/frmSplash.h"

#include "platform/system/Prompts.h"
#include "support/Version.h"
#include "support/ui/Icons.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QPixmap Picture()
{
    constexpr QSize Size(420, 180);
    constexpr int IconSize = 108;
    constexpr int Margin = 32;
    const double ratio = qGuiApp->devicePixelRatio();
    const QPalette palette = QGuiApplication::palette();
    QPixmap picture(Size * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(palette.color(QPalette::Base));
    QPainter painter(&picture);
    const QRect frame(QPoint(0, 0), Size);
    painter.setPen(palette.color(QPalette::Mid));
    painter.drawRect(frame.adjusted(0, 0, -1, -1));
    IconNamed(u"quillbase"_s).paint(&painter, QRect(Margin, (Size.height() - IconSize) / 2, IconSize, IconSize));
    const QRect text = frame.adjusted(2 * Margin + IconSize, 0, -Margin, 0);
    QFont font = painter.font();
    font.setPointSizeF(font.pointSizeF() * 2);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(palette.color(QPalette::Text));
    painter.drawText(text.adjusted(0, 0, 0, -Margin), Qt::AlignVCenter, ApplicationTitle);
    painter.setFont(QGuiApplication::font());
    painter.drawText(text.adjusted(0, Margin, 0, 0), Qt::AlignVCenter, u"Version "_s + ProgramVersion());
    return picture;
}

} // namespace

frmSplash::frmSplash() : QSplashScreen(Picture())
{
    setObjectName(u"frmSplash"_s);
}

} // namespace qb
