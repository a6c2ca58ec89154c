#pragma once

#include "session/WindowLayout.h"

#include <QObject>
#include <QTimer>

class QMainWindow;
class QSplitter;

namespace qb {

class ctlFileDetails;
class ctlSmartTreeView;

/// Where the main window stands, and where the separators between its panels do: as they were left, kept while the
/// window is moved, resized and shrunk, and remembered.
class WindowPlaces : public QObject {
public:
    /// What has a place. All must outlive this.
    struct Parts {
        QMainWindow& Window;
        QSplitter& Panels;    ///< the tree beside the details
        QSplitter& Bookmarks; ///< the rest above the bookmarks
        ctlSmartTreeView& Tree;
        ctlFileDetails& Files;
    };
    WindowPlaces(WindowLayout& layout, const Parts& parts);

    /// Puts the window where it was left; the first time it is maximised over a place in the middle of the screen.
    void PlaceWindow();
    /// Where it stands in its normal state is remembered for the time when it has another.
    void RememberPlace();
    /// The window has another size.
    void Resized();
    /// The window is shown. The first time, the separators are placed as soon as it has its size.
    void Shown();
    /// The splitter follows the tree's own hiding: fixed at its small width, free again when it grows.
    void TreeShrinks(bool shrinks);
    /// Writes the places to the layout, which does not save them yet.
    void Write();

private:
    void PlaceSeparators();
    void PlaceBookmarks();

    WindowLayout& m_layout;
    Parts m_parts;
    bool m_isRead = false;   ///< the separators are asked for once, when the window is shown
    bool m_isShrunk = false; ///< the splitter is fixed at its small width
    int m_treeWidth = 0;     ///< of the tree before it was shrunk
    QTimer m_settling;       ///< the window has just been shown, and may get its size yet
};

} // namespace qb
