#include "support/ui/ColorButton.h"

#include "platform/system/SettingsStore.h"
#include "support/ui/Colors.h"

#include <QColorDialog>
#include <QMenu>
#include <QPixmap>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr ColorPreset Presets[] = {
    {"BLACK", "Black", 0x000000},    {"GREY", "Grey", 0x808080},     {"RED", "Red", 0x0000ff},
    {"BROWN", "Brown", 0x004080},    {"ORANGE", "Orange", 0x0080ff}, {"KHAKI", "Khaki", 0x6b7d8b},
    {"GREEN", "Green", 0x008000},    {"TEAL", "Teal", 0x808000},     {"BLUE", "Blue", 0xff0000},
    {"NAVY", "Dark blue", 0x800000}, {"PURPLE", "Purple", 0x800080}, {"PINK", "Pink", 0x8040ff},
};

const QString CustomColorsKey = u"PredefinedColours"_s;

void LoadCustomColors()
{
    const QStringList colors =
        GetSetting(SettingsApplication, u"Settings"_s, CustomColorsKey).split(u',', Qt::SkipEmptyParts);
    for (int i = 0; i < int(colors.size()) && i < QColorDialog::customCount(); ++i)
        QColorDialog::setCustomColor(i, ColorOf(colors[i].toUInt()));
}

void SaveCustomColors()
{
    QStringList colors;
    for (int i = 0; i < QColorDialog::customCount(); ++i)
        colors << QString::number(ColorNumber(QColorDialog::customColor(i)));
    SaveSetting(SettingsApplication, u"Settings"_s, CustomColorsKey, colors.join(u','));
}

} // namespace

std::span<const ColorPreset> ColorPresets()
{
    return Presets;
}

QIcon Swatch(quint32 color)
{
    constexpr int Size = 16;
    QPixmap pixmap(Size, Size);
    pixmap.fill(ColorOf(color));
    return pixmap;
}

std::optional<quint32> AskForColor(QWidget* parent, quint32 now, const QString& title)
{
    LoadCustomColors();
    const QColor color = QColorDialog::getColor(ColorOf(now), parent, title);
    if (!color.isValid())
        return std::nullopt;
    SaveCustomColors();
    return ColorNumber(color);
}

ColorButton::ColorButton(const QString& title, QWidget* parent) : QToolButton(parent)
{
    setAccessibleName(title);
    setPopupMode(QToolButton::InstantPopup);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    auto* menu = new QMenu(this);
    for (const ColorPreset& preset : Presets) {
        QAction* entry = menu->addAction(Swatch(preset.Value), QString::fromLatin1(preset.Caption));
        entry->setProperty("key", QString::fromLatin1(preset.Key));
        connect(entry, &QAction::triggered, this, std::bind_front(&ColorButton::Choose, this, preset.Value));
    }
    menu->addSeparator();
    QAction* custom = menu->addAction(u"Custom..."_s);
    custom->setProperty("key", u"CUSTOM"_s);
    connect(custom, &QAction::triggered, this, [this, title] {
        if (const auto color = AskForColor(this, m_color, title))
            Choose(*color);
    });
    setMenu(menu);
    SetColor(0);
}

void ColorButton::SetColor(quint32 color)
{
    m_color = color;
    setIcon(Swatch(color));
    setText(ColorOf(color).name().toUpper());
}

void ColorButton::SetRecent(const QList<quint32>& colors)
{
    qDeleteAll(m_recent);
    m_recent.clear();
    QAction* first = menu()->actions().constFirst();
    for (const quint32 color : colors) {
        auto* entry = new QAction(Swatch(color), u"Used last: %1"_s.arg(ColorOf(color).name().toUpper()), menu());
        entry->setProperty("key", u"LAST"_s);
        connect(entry, &QAction::triggered, this, std::bind_front(&ColorButton::Choose, this, color));
        menu()->insertAction(first, entry);
        m_recent << entry;
    }
}

void ColorButton::Choose(quint32 color)
{
    SetColor(color);
    Q_EMIT ColorChosen(color);
}

} // namespace qb
