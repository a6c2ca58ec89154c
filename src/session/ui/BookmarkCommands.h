#pragma once

#include "session/ItemCommands.h"
#include "session/ItemLinking.h"
#include "session/ItemTree.h"
#include "session/SessionState.h"
#include "session/WindowLayout.h"
#include "session/ui/CommandFaces.h"

#include <QTimer>

namespace qb {

class CCodeItem;
class ctlBookmarks;
class ctlCodeDetails;

/// The panel of bookmarks and info in the main window: its commands, and how it follows the session.
class BookmarkCommands : public QObject {
    Q_OBJECT

public:
    /// What of the window takes part. All must outlive this.
    struct Parts {
        QWidget& Window;
        SessionState& Session;
        Commands& Registry;
        ItemTree& Tree;
        const TreeNodes& Nodes;
        ItemCommands& Items;
        ItemLinking& Linking;
        ctlCodeDetails& Details;
        ctlBookmarks& Panel;
    };
    explicit BookmarkCommands(const Parts& parts);

    /// Gives the lists their toolbars and menus. The list of bookmarks has the entries of the menu beside those of its
    /// buttons, and their keys where it has the focus.
    void MakeFaces(CommandFaces& faces);

    /// Whether the panel is shown, and how bookmarks are opened.
    void ReadLayout(const WindowLayout& layout);
    void WriteLayout(WindowLayout& layout) const;
    /// Shows the panel, or not.
    void Show(bool visible);
    bool IsShown() const { return m_isShown; }
    /// Hides it while a web page is shown, whatever the user wants at other times.
    void HideWhileBrowsing(bool hidden);

    void LibraryOpened();
    void LibraryClosing();

private:
    void RegisterCommands();
    void FollowTree();
    void TitlesChanged(const QModelIndex& first, const QModelIndex& last);
    void ConnectInfo();
    void ShowNewItem(CCodeItem* item);
    void ShowFacts();
    void ShowLock();
    void ShowCommands();
    void AddBookmark();
    void EditBookmark();
    void OpenBookmark(qint64 item);
    void RemoveShownLink(const QString& key);
    void SetSingleClick(bool single);

    Parts m_parts;
    ctlBookmarks& m_panel;
    bool m_isShown = true;
    bool m_isHidden = false; ///< while a web page is shown
    qint64 m_group = 0;      ///< of the bookmark that was made last
    QTimer m_refresh;        ///< items have gone, or the tree was read anew
};

} // namespace qb
