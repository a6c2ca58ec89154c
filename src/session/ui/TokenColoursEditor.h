#pragma once

#include "text/TokenPalette.h"

#include <QWidget>

class QLabel;

namespace qb {

class ColorButton;

/// The colours in which texts are painted by rules: a row a kind, with its colour on light and on
/// dark backgrounds.
class TokenColoursEditor : public QWidget {
    Q_OBJECT

public:
    explicit TokenColoursEditor(QWidget* parent = nullptr);

    const TokenPalette& Palette() const { return m_palette; }
    void SetPalette(const TokenPalette& palette);

Q_SIGNALS:
    /// The user has chosen a colour, or the usual ones.
    void Changed();

private:
    void ShowColours();
    void Choose(TokenColors TokenPalette::*side, TokenKind kind, quint32 color);

    TokenPalette m_palette = TokenPalette::Default();
    std::array<ColorButton*, TokenKindCount> m_light{};
    std::array<ColorButton*, TokenKindCount> m_dark{};
    QLabel* m_advice;
};

} // namespace qb
