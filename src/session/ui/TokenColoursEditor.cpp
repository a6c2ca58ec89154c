#include "session/ui/TokenColoursEditor.h"

#include "support/ui/ColorButton.h"
#include "support/ui/Colors.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr double LeastContrast = 4.5; ///< of the guidelines for text
const QColor DarkBackground(0x23, 0x26, 0x29);

} // namespace

TokenColoursEditor::TokenColoursEditor(QWidget* parent) : QWidget(parent), m_advice(new QLabel)
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(new QLabel(u"light"_s), 0, 1, Qt::AlignHCenter);
    grid->addWidget(new QLabel(u"dark"_s), 0, 2, Qt::AlignHCenter);
    int row = 1;
    for (const TokenKindRow& kind : TokenKindRows) {
        if (kind.Kind == TokenKind::Text)
            continue; // has the colour of all texts
        const QString caption = QString::fromLatin1(kind.Caption);
        grid->addWidget(new QLabel(caption), row, 0);
        const auto add = [&](const char* side, TokenColors TokenPalette::*colors, int column) {
            auto* button = new ColorButton(u"%1, %2"_s.arg(caption, QLatin1StringView(side)));
            button->setObjectName(u"cmdColour_%1_%2"_s.arg(QLatin1StringView(kind.Name), QLatin1StringView(side)));
            connect(button, &ColorButton::ColorChosen, this,
                    std::bind_front(&TokenColoursEditor::Choose, this, colors, kind.Kind));
            grid->addWidget(button, row, column, Qt::AlignHCenter);
            return button;
        };
        m_light[size_t(kind.Kind)] = add("light", &TokenPalette::Light, 1);
        m_dark[size_t(kind.Kind)] = add("dark", &TokenPalette::Dark, 2);
        ++row;
    }
    auto* usual = new QPushButton(u"&Usual Colours"_s);
    usual->setObjectName(u"cmdUsualColours"_s);
    usual->setAutoDefault(false);
    grid->addWidget(usual, row, 0, 1, 3, Qt::AlignLeft);
    m_advice->setObjectName(u"lblColourAdvice"_s);
    m_advice->setWordWrap(true);
    grid->addWidget(m_advice, row + 1, 0, 1, 3);
    grid->setRowStretch(row + 2, 1);
    connect(usual, &QPushButton::clicked, this, [this] {
        SetPalette(TokenPalette::Default());
        Q_EMIT Changed();
    });
    ShowColours();
}

void TokenColoursEditor::SetPalette(const TokenPalette& palette)
{
    m_palette = palette;
    ShowColours();
}

void TokenColoursEditor::Choose(TokenColors TokenPalette::*side, TokenKind kind, quint32 color)
{
    (m_palette.*side)[size_t(kind)] = color;
    ShowColours();
    Q_EMIT Changed();
}

void TokenColoursEditor::ShowColours()
{
    QStringList faint;
    for (const TokenKindRow& kind : TokenKindRows) {
        const size_t place = size_t(kind.Kind);
        if (!m_light[place])
            continue;
        m_light[place]->SetColor(m_palette.Light[place]);
        m_dark[place]->SetColor(m_palette.Dark[place]);
        if (Contrast(ColorOf(m_palette.Light[place]), Qt::white) < LeastContrast
            || Contrast(ColorOf(m_palette.Dark[place]), DarkBackground) < LeastContrast)
            faint << QString::fromLatin1(kind.Caption);
    }
    m_advice->setText(faint.isEmpty() ? QString() : u"Hard to read: "_s + faint.join(u", "_s).toLower());
}

} // namespace qb
