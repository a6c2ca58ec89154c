#include "session/WindowLayout.h"

#include "platform/system/SettingsStore.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Section = u"Settings"_s;

/// In the order of the keys.
constexpr const char* Names[WindowLayout::KeyCount] = {"MainLeft",
                                                       "MainTop",
                                                       "MainWidth",
                                                       "MainHeight",
                                                       "WindowState",
                                                       "ViewBookMarks",
                                                       "FormatTlbrNewRow",
                                                       "FormatTlbrPoss",
                                                       "SmartTreeCoolBarBendWidth",
                                                       "AutoSave",
                                                       "BookmarkSingleClick",
                                                       "FindResultsSingleClick",
                                                       "SearchResultsViewType",
                                                       "MainResizerSeparatorPos",
                                                       "SubResizerSeparatorPos",
                                                       "CodeItemsSeparatorPos",
                                                       "FileSectionSeparatorPos"};

bool IsFlag(WindowLayout::Key key)
{
    static constexpr WindowLayout::Key flags[] = {WindowLayout::ViewBookMarks, WindowLayout::FormatTlbrNewRow,
                                                  WindowLayout::AutoSave, WindowLayout::BookmarkSingleClick,
                                                  WindowLayout::FindResultsSingleClick};
    return std::find(std::begin(flags), std::end(flags), key) != std::end(flags);
}

} // namespace

/// What is no number where one should stand counts as missing.
void WindowLayout::Load(Key key, const QString& preset)
{
    const QString text = GetSetting(SettingsApplication, Section, QString::fromLatin1(Names[key]), preset);
    bool isNumber = false;
    text.toInt(&isNumber);
    m_values[key] = isNumber || IsFlag(key) ? text : preset;
}

StoredSetting WindowLayout::Stored(Key key) const
{
    return {Section, QString::fromLatin1(Names[key]), m_values[key]};
}

void WindowLayout::Read(const QSize& screen)
{
    constexpr int Parts = 10;
    constexpr int Shown = 8;
    const std::pair<Key, QString> presets[] = {
        {MainLeft, QString::number(screen.width() / Parts)},
        {MainTop, QString::number(screen.height() / Parts)},
        {MainWidth, QString::number(screen.width() / Parts * Shown)},
        {MainHeight, QString::number(screen.height() / Parts * Shown)},
        {WindowState, QString::number(Maximised)},
        {ViewBookMarks, BooleanText(true)},
        {FormatTlbrNewRow, BooleanText(false)},
        {FormatTlbrPoss, u"6405"_s},
        {SmartTreeCoolBarBendWidth, u"3165"_s},
        {AutoSave, BooleanText(true)},
        {BookmarkSingleClick, BooleanText(false)},
        {FindResultsSingleClick, BooleanText(false)},
        {SearchResultsViewType, u"0"_s},
    };
    for (const auto& [key, preset] : presets)
        Load(key, preset);
}

void WindowLayout::ReadSeparatorPositions(const QSize& form, int treeHeight)
{
    constexpr int DescriptionHeight = 1300;
    Load(MainResizerSeparatorPos, QString::number(form.height() / 4 * 3));
    Load(SubResizerSeparatorPos, QString::number(form.width() / 7));
    Load(CodeItemsSeparatorPos, QString::number(treeHeight - DescriptionHeight));
    Load(FileSectionSeparatorPos, QString::number(Number(MainResizerSeparatorPos) / 2));
}

void WindowLayout::Save(bool treeHidden)
{
    std::vector<StoredSetting> settings;
    if (Number(WindowState) != Minimised) {
        for (const Key key : {MainLeft, MainTop})
            SetNumber(key, qMax(0, Number(key)));
        for (const Key key : {MainResizerSeparatorPos, SubResizerSeparatorPos, CodeItemsSeparatorPos,
                              FileSectionSeparatorPos, WindowState, MainLeft, MainTop, MainWidth, MainHeight}) {
            if (m_values[key].isEmpty() || (key == SubResizerSeparatorPos && treeHidden))
                continue; // a window that was never shown has no separators
            settings.push_back(Stored(key));
        }
    }
    for (const Key key : {ViewBookMarks, FormatTlbrNewRow, FormatTlbrPoss, SmartTreeCoolBarBendWidth, AutoSave,
                          BookmarkSingleClick, FindResultsSingleClick, SearchResultsViewType})
        settings.push_back(Stored(key));
    SaveSettings(SettingsApplication, settings);
}

int WindowLayout::AddressWidth(int form, int left) const
{
    constexpr int Beside = 3665;
    const int inNewRow = form - Beside;
    return std::max(0, Flag(FormatTlbrNewRow) ? inNewRow : std::min(inNewRow, left));
}

int WindowLayout::Number(Key key) const
{
    return m_values[key].toInt();
}

bool WindowLayout::Flag(Key key) const
{
    return BooleanFromText(m_values[key]);
}

void WindowLayout::SetNumber(Key key, int value)
{
    m_values[key] = QString::number(value);
}

void WindowLayout::SetFlag(Key key, bool value)
{
    m_values[key] = BooleanText(value);
}

QRect WindowLayout::Place() const
{
    return {Number(MainLeft), Number(MainTop), Number(MainWidth), Number(MainHeight)};
}

void WindowLayout::SetPlace(const QRect& place)
{
    SetNumber(MainLeft, place.x());
    SetNumber(MainTop, place.y());
    SetNumber(MainWidth, place.width());
    SetNumber(MainHeight, place.height());
}

} // namespace qb
