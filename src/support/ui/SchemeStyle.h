#pragma once

#include <QProxyStyle>

namespace qb {

/// The style of the program's own colour schemes: Fusion, with frames of check boxes and radio buttons that are seen.
/// Its own are a little darker than the window, however dark that is; so is its button to clear a line.
class SchemeStyle : public QProxyStyle {
    Q_OBJECT

public:
    SchemeStyle() : QProxyStyle(QStringLiteral("fusion")) {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const override;
};

} // namespace qb
