#include "support/ui/Appearance.h"

#include "support/ui/Icons.h"
#include "support/ui/SchemeStyle.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QPalette SchemePalette(const QColor& window, const QColor& base, const QColor& text, const QColor& link)
{
    constexpr int Half = 50; // percent
    QPalette palette(window, window);
    const QColor highlight(0x2f, 0x8c, 0xcc);
    const QColor faint((text.red() + window.red()) / 2, (text.green() + window.green()) / 2,
                       (text.blue() + window.blue()) / 2);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, window);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, faint);
    }
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, faint);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, link);
    palette.setColor(QPalette::LinkVisited, link.darker(100 + Half));
    return palette;
}

std::optional<QPalette> PaletteOf(const QString& colourScheme)
{
    if (colourScheme == u"Dark"_s)
        return SchemePalette(QColor(0x2a, 0x2e, 0x32), QColor(0x1b, 0x1e, 0x20), QColor(0xef, 0xf0, 0xf1),
                             QColor(0x4d, 0xb0, 0xf5));
    if (colourScheme == u"Light"_s)
        return SchemePalette(QColor(0xef, 0xf0, 0xf1), Qt::white, QColor(0x23, 0x26, 0x29), QColor(0x1d, 0x6f, 0xb8));
    return std::nullopt;
}

} // namespace

void ApplyAppearance(const QString& colourScheme, const QString& fontName, int fontSize)
{
    // What the program has never changed it leaves to the desktop, which may change it at any time.
    static const QString systemStyle = QApplication::style()->name();
    static const QFont systemFont = QApplication::font();
    static bool ownStyle = false;
    static bool ownColours = false;
    static bool ownFont = false;
    const std::optional<QPalette> palette = PaletteOf(colourScheme);
    // A style of the desktop may draw in colours of its own.
    const bool wantsStyle = palette || systemStyle == u"fusion"_s;
    if (wantsStyle != ownStyle) {
        if (wantsStyle)
            QApplication::setStyle(new SchemeStyle);
        else
            QApplication::setStyle(systemStyle);
        ownStyle = wantsStyle;
    }
    if (palette || ownColours) {
        QApplication::setPalette(palette.value_or(QPalette()));
        ownColours = palette.has_value();
    }
    const bool wantsFont = !fontName.isEmpty() || fontSize > 0;
    if (wantsFont || ownFont) {
        QFont font = systemFont;
        if (!fontName.isEmpty())
            font.setFamilies({fontName});
        if (fontSize > 0)
            font.setPointSize(fontSize);
        QApplication::setFont(font);
        ownFont = wantsFont;
    }
    InitialiseIcons();
}

} // namespace qb
