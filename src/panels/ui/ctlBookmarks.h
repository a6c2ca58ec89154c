#pragma once

#include "panels/BookmarkList.h"
#include "panels/ItemInfo.h"
#include "panels/PanelCaption.h"
#include "panels/ui/ShownFacts.h"

#include <QList>
#include <QWidget>

class QAction;
class QLabel;
class QStackedWidget;
class QTabBar;
class QToolBar;

namespace qb {

class BookmarkView;
class ItemInfoPage;

/// The panel below the item: bookmarks, what was found, and the info page, a tab each. It lays out and forwards; what
/// its commands do is decided by BookmarkList and ItemInfo.
class ctlBookmarks : public QWidget, public ShownFacts {
    Q_OBJECT

public:
    explicit ctlBookmarks(QWidget* parent = nullptr);

    /// Shows the bookmarks and facts of a library, which must outlive this or its Terminate.
    void Initialise(Library& library);
    void Terminate();
    /// Reads the bookmarks anew.
    void Refresh() { m_list.Refresh(); }

    // Tabs

    /// By number: 0 bookmarks, 1 find results, 2 info. One that is not there can't be displayed.
    int DisplayedTab() const;
    void SetDisplayedTab(int tab);
    /// The page of the find results with its toolbar; their tab is there from then on.
    void SetFindControl(QWidget* page, QToolBar* toolbar);
    QToolBar* BookmarkToolbar() const { return tbrBookmarks; }
    QToolBar* InfoToolbar() const { return tbrInfo; }

    // Find, as far as the caption tells of it

    QString SearchKeyword() const { return m_searchKeyword; }
    void SetSearchKeyword(const QString& keyword);
    int FindMode() const { return m_findMode; }
    void SetFindMode(int mode);

    // Bookmarks

    BookmarkList& List() { return m_list; }
    BookmarkView* View() const { return lvBookMarks; }
    /// Removes the selected one.
    void RemoveBookMark();
    /// Selects the first row of an item, if it has one.
    void FindBookmark(qint64 item);
    /// Selects a bookmark by its ID.
    void SelectBookmark(qint64 bookmark);
    /// What is selected; 0 where it is no such thing.
    qint64 SelectedBookmark() const;
    qint64 SelectedGroup() const;
    qint64 SelectedItem() const;
    bool BookmarkSingleClick() const { return m_singleClick; }
    void SetBookmarkSingleClick(bool single);

    // Info

    ItemInfo& Info() { return m_info; }
    /// Another item is current; null: none is. @p fixed: it can't be changed.
    void InitialiseItem(CCodeItem* item, bool fixed = false);
    /// The text of the current node, which the lock stands behind.
    void SetItemText(const QString& text);
    void EnableInfoTabItemInfo(bool enabled);
    void m_oCodeItem_StatusUpdated(qint32 status);
    /// What is shown of the item has been changed, or written.
    void ShowItem();
    void AddNewLinkToList(const CLink& link);
    void UpdateItemLinkInList(const CLink& link);

    // The library

    /// All facts anew, but for the last backup, which the settings know.
    void UpdateDatabaseInfo();
    void UpdateReplicationInfo();
    void UpdateDatabaseSize();

Q_SIGNALS:
    void TabChanged(int tab);
    /// Another bookmark or group is selected.
    void SelectionChanged();
    /// The item of a bookmark is to be shown.
    void BookmarkOpened(qint64 item);
    /// The item that a link leads to is to be shown.
    void LinkFollowed(qint64 item);
    /// The link of this key, of the item that the page shows, is to be removed.
    void LinkRemoveAsked(const QString& key);
    void ChildrenAsked();

private:
    void MakeTabs();
    QWidget* MakeHeader();
    void ShowTab();
    void ShowCaption();
    void ShowFacts() override;

    BookmarkList m_list;
    ItemInfo m_info;
    Library* m_library = nullptr;
    QString m_searchKeyword;
    int m_findMode = 0;
    bool m_singleClick = false;
    QTabBar* m_tabs;
    QLabel* m_caption;
    QLabel* m_itemText;
    QLabel* lblLocked;
    QStackedWidget* m_pages;
    QList<QToolBar*> m_toolbars; ///< by tab; null: none
    BookmarkView* lvBookMarks;
    ItemInfoPage* m_infoPage;
    QToolBar* tbrBookmarks = nullptr;
    QToolBar* tbrInfo = nullptr;
    QMetaObject::Connection m_statusUpdated;
};

} // namespace qb
