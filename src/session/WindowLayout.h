#pragma once

#include "platform/system/SettingsStore.h"

#include <QRect>
#include <QSize>
#include <QString>
#include <array>

namespace qb {

/// How the main window stood at the end of the last session: its place, its splitters and what is
/// shown, in the user's settings. All lengths are in twips, of which a pixel has 15.
class WindowLayout {
public:
    enum Key {
        MainLeft,
        MainTop,
        MainWidth,
        MainHeight,
        WindowState, ///< 0 normal, 1 minimised, 2 maximised
        ViewBookMarks,
        FormatTlbrNewRow,
        FormatTlbrPoss,
        SmartTreeCoolBarBendWidth,
        AutoSave,
        BookmarkSingleClick,
        FindResultsSingleClick,
        SearchResultsViewType,
        MainResizerSeparatorPos,
        SubResizerSeparatorPos,
        CodeItemsSeparatorPos,
        FileSectionSeparatorPos,
        KeyCount
    };
    enum State { Normal = 0, Minimised = 1, Maximised = 2 };
    static constexpr int TwipsPerPixel = 15;
    /// How high the panel of bookmarks may be, so that the upper part of the window keeps the rest.
    static constexpr int HighestBookmarks = 5000;

    /// Reads all but the separators; the place of the window is by default a tenth of the screen
    /// from its corner, at eight tenths of its size.
    void Read(const QSize& screen);
    /// Reads the separators, whose defaults depend on the sizes of the window and of the tree.
    void ReadSeparatorPositions(const QSize& form, int treeHeight);
    /// Writes the place of the window and the separators unless it is minimised, and the rest in
    /// every case. The tree's width is not written while the tree is hidden; a negative place is
    /// written as 0.
    void Save(bool treeHidden);

    /// The width of the address of a web page. In a new row it is that of the window's inner area (@p form), less
    /// the buttons and what stands beside them; in the second band it is what the band has left (@p left).
    int AddressWidth(int form, int left) const;

    /// The values in memory, read or set; only Save writes them. One that was never read is 0, or false. The numbers
    /// of places and sizes are twips.
    int Number(Key key) const;
    bool Flag(Key key) const;
    void SetNumber(Key key, int value);
    void SetFlag(Key key, bool value);

    /// The remembered place of the window, in its normal state.
    QRect Place() const;
    void SetPlace(const QRect& place);

private:
    void Load(Key key, const QString& preset);
    StoredSetting Stored(Key key) const;

    std::array<QString, KeyCount> m_values;
};

} // namespace qb
