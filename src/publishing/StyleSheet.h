#pragma once

#include "text/TokenPalette.h"

#include <QByteArray>
#include <QHash>
#include <QString>

namespace qb {

/// How characters or a paragraph look on a page, as declarations without braces.
struct PageLook {
    QByteArray Always;
    QByteArray Light; ///< what differs on a light background ...
    QByteArray Dark;  ///< ... and on a dark one

    bool IsEmpty() const { return Always.isEmpty() && Light.isEmpty(); }
    friend bool operator==(const PageLook&, const PageLook&) = default;
};

/// The looks of a page, each under a class of its own.
class StyleSheet {
public:
    /// The class of a look, which is noted; empty for an empty one.
    QByteArray ClassOf(const PageLook& look);
    /// The class of characters that have no look but a colour, as Colored makes it.
    QByteArray ClassOfColor(quint32 color);
    /// Of a colour of characters, legible on both backgrounds; red in the low byte.
    static PageLook Colored(quint32 color);

    /// The rules of all looks so far, and of the kinds of tokens.
    QByteArray Rules(const TokenPalette& palette) const;
    /// The class of a kind of token; empty for plain text.
    static QByteArray ClassOf(TokenKind kind);

private:
    QHash<QByteArray, int> m_numbers; ///< of looks, by their declarations
    QList<PageLook> m_looks;
    QHash<quint32, QByteArray> m_colors; ///< classes of colours: code has a few, in each of its lines
};

/// "#rrggbb".
QByteArray HtmlColor(quint32 color);
/// The colour, or a lighter one that can be read on a dark background.
quint32 LegibleOnDark(quint32 color);

} // namespace qb
