#pragma once

#include <QToolButton>
#include <span>

class QIcon;

namespace qb {

/// A colour with a name; red in the low byte.
struct ColorPreset {
    const char* Key;
    const char* Caption;
    quint32 Value;
};
/// The colours that every menu of colours offers, in its order.
std::span<const ColorPreset> ColorPresets();

/// A small square of a colour.
QIcon Swatch(quint32 color);

/// Asks for a colour, with the custom colours that the user has kept; keeps them again. Nothing
/// when it is cancelled.
std::optional<quint32> AskForColor(QWidget* parent, quint32 now, const QString& title);

/// A button that shows a colour, and lets it be chosen from a menu or the colour dialog.
class ColorButton : public QToolButton {
    Q_OBJECT

public:
    /// @p title is that of the dialog.
    explicit ColorButton(const QString& title, QWidget* parent = nullptr);

    quint32 Color() const { return m_color; }
    void SetColor(quint32 color);
    /// Colours that were used last, at the top of the menu.
    void SetRecent(const QList<quint32>& colors);

Q_SIGNALS:
    /// The user has chosen a colour.
    void ColorChosen(quint32 color);

private:
    void Choose(quint32 color);

    quint32 m_color = 0;
    QList<QAction*> m_recent;
};

} // namespace qb
