// The panel of bookmarks and info in the main window: its commands, and how it is connected.

#include "finder/ui/frmQuickOpen.h"
#include "panels/ui/BookmarkView.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "panels/ui/frmAddBookmark.h"
#include "platform/system/Prompts.h"
#include "session/ui/LibraryFind.h"
#include "session/ui/frmCodeLib.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QToolBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

/// The list has the entries of the menu beside those of its buttons, and their keys where it has the focus.
void frmCodeLib::MakeBookmarkToolbars()
{
    m_faces->FillToolbar(*ctlBookMarkList->BookmarkToolbar(), CommandRow::Place::BookmarkToolbar);
    m_faces->FillToolbar(*ctlBookMarkList->InfoToolbar(), CommandRow::Place::InfoToolbar);
    m_find->MakeFaces(*m_faces);
    m_find->ShowPanel = std::bind_front(&frmCodeLib::ShowBookmarks, this, true);
    const QList<QAction*> entries = m_faces->MakeActions(CommandRow::Place::BookmarkMenu);
    BookmarkView* view = ctlBookMarkList->View();
    view->addActions(entries);
    view->addActions({m_faces->Action(u"mnuRemoveBookMark"_s), m_faces->Action(u"mnuRemoveAllItem"_s)});
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    static constexpr std::pair<const char*, Qt::Key> keys[] = {{"mnuRemoveBookMark", Qt::Key_Delete},
                                                               {"mnuEditBookMark", Qt::Key_F2}};
    for (const auto& [name, key] : keys) {
        QAction* action = m_faces->Action(QLatin1StringView(name));
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
    }
}

void frmCodeLib::ConnectBookmarks()
{
    RegisterBookmarkCommands();
    connect(ctlBookMarkList, &ctlBookmarks::SelectionChanged, this, &frmCodeLib::ShowBookmarkCommands);
    connect(ctlBookMarkList, &ctlBookmarks::BookmarkOpened, this, &frmCodeLib::OpenBookmark);
    m_libraries->DatabaseOpened = [this] {
        m_bookmarkGroup = 0;
        ctlBookMarkList->Initialise(*CurrentDatabase());
        ctlBookMarkList->SetDatabaseLastBackedUp(Settings().DBLastBackedUp());
        m_find->LibraryOpened();
    };
    m_libraries->DatabaseClosing = [this] {
        m_quickOpen->Close();
        m_find->LibraryClosing();
        ctlBookMarkList->Terminate();
    };
    m_libraries->ReplicationRead = std::bind_front(&ctlBookmarks::UpdateReplicationInfo, ctlBookMarkList);
    m_items->ItemAdded = [this] { ctlBookMarkList->SetDisplayedTab(int(BookmarkTab::Info)); };
    FollowTree();
    ConnectInfo();
    ShowBookmarkCommands();
}

/// Bookmarks bear the titles of their items, and go with them.
void frmCodeLib::FollowTree()
{
    const TreeNodes* nodes = &tvCodeItems->Nodes();
    m_refreshBookmarks.setSingleShot(true);
    connect(&m_refreshBookmarks, &QTimer::timeout, this, std::bind_front(&ctlBookmarks::Refresh, ctlBookMarkList));
    const auto refresh = [this] { m_refreshBookmarks.start(0); };
    connect(nodes, &TreeNodes::rowsRemoved, this, refresh);
    connect(nodes, &TreeNodes::modelReset, this, refresh);
    connect(nodes, &TreeNodes::dataChanged, this, [this, nodes](const QModelIndex& first, const QModelIndex& last) {
        for (int row = first.row(); row <= last.row(); ++row) {
            if (const TreeNode* node = nodes->NodeAt(first.siblingAtRow(row)); node && !node->IsRoot()) {
                ctlBookMarkList->List().Rows().SetTitle(node->Id, node->Text());
                ctlBookMarkList->Info().TitleChanged(node->Id, node->Text());
            }
        }
    });
}

void frmCodeLib::ConnectInfo()
{
    ItemInfo& info = ctlBookMarkList->Info();
    m_items->SetInfo(info);
    info.AutoSaveOn = std::bind_front(&ItemCommands::AutoSaveOn, m_items.get());
    connect(ctlCodeItemDetails, &ctlCodeDetails::ItemInitialised, this,
            [this](CCodeItem* item) { ctlBookMarkList->InitialiseItem(item, ctlCodeItemDetails->Locked()); });
    connect(ctlCodeItemDetails, &ctlCodeDetails::FactsChanged, this, [this] {
        ctlBookMarkList->Info().Refresh();
        ctlBookMarkList->ShowItem();
        ctlBookMarkList->UpdateDatabaseSize();
    });
    connect(&info, &ItemInfo::InfoTyped, &ctlCodeItemDetails->Editor(), &ItemEditor::InfoTyped);
    connect(&info, &ItemInfo::LockChanged, this, [this, &info] {
        const bool locked = info.Locked();
        m_commands.SetChecked(u"LOCK"_s, locked);
        m_commands.SetImage(u"LOCK"_s, locked ? u"LOCKED"_s : u"UNLOCKED"_s,
                            locked ? u"Let the page follow the item that is shown"_s
                                   : u"Keep the page at this item while others are shown"_s);
    });
    connect(ctlBookMarkList, &ctlBookmarks::LinkFollowed, this, &frmCodeLib::FollowLink);
    connect(ctlBookMarkList, &ctlBookmarks::LinkRemoveAsked, this, &frmCodeLib::RemoveShownLink);
    connect(ctlBookMarkList, &ctlBookmarks::ChildrenAsked, this, &frmCodeLib::ListChildren);
}

void frmCodeLib::RegisterBookmarkCommands()
{
    const auto add = [this](const QString& name, const std::function<void()>& run) { m_commands.Register(name, run); };
    for (const QString& name : {u"mnuBookMark"_s, u"BOOKMARK"_s})
        add(name, std::bind_front(&frmCodeLib::AddBookmark, this));
    for (const QString& name : {u"mnuViewBookmarks"_s, u"VIEWBOOKMARKS"_s})
        add(name, [this] { ShowBookmarks(!m_bookmarksVisible); });
    add(u"mnuOpenBookMark"_s, [this] { OpenBookmark(ctlBookMarkList->SelectedItem()); });
    add(u"mnuEditBookMark"_s, std::bind_front(&frmCodeLib::EditBookmark, this));
    add(u"mnuRemoveBookMark"_s, std::bind_front(&ctlBookmarks::RemoveBookMark, ctlBookMarkList));
    add(u"mnuRemoveAllItem"_s, [this] { ctlBookMarkList->List().RemoveAllBookmarks(); });
    add(u"mnuRenameGroup"_s, [this] { ctlBookMarkList->List().RenameGroup(ctlBookMarkList->SelectedGroup()); });
    add(u"mnuRemoveGroup"_s, [this] { ctlBookMarkList->List().RemoveGroup(ctlBookMarkList->SelectedGroup()); });
    add(u"SINGLE_CLICK"_s, [this] {
        ctlBookMarkList->SetBookmarkSingleClick(!ctlBookMarkList->BookmarkSingleClick());
        m_commands.SetChecked(u"SINGLE_CLICK"_s, ctlBookMarkList->BookmarkSingleClick());
    });
    add(u"LOCK"_s, [this] { ctlBookMarkList->Info().ToggleLock(); });
}

/// What is not selected can't be worked on; whether the library can be written to, the rules know.
void frmCodeLib::ShowBookmarkCommands()
{
    const bool isBookmark = ctlBookMarkList->SelectedBookmark() != 0;
    for (const QString& name : {u"mnuOpenBookMark"_s, u"mnuEditBookMark"_s, u"mnuRemoveBookMark"_s})
        m_commands.SetEnabled(name, isBookmark);
    for (const QString& name : {u"mnuRenameGroup"_s, u"mnuRemoveGroup"_s})
        m_commands.SetEnabled(name, ctlBookMarkList->SelectedGroup() != 0);
    m_commands.SetEnabled(u"mnuRemoveAllItem"_s, ctlBookMarkList->List().Rows().BookmarkCount() > 0);
}

// Commands

void frmCodeLib::AddBookmark()
{
    if (!CurrentDatabase() || !m_session.oCodeItem || m_session.oCodeItem->Key().isEmpty())
        return;
    BookmarkDraft draft(*CurrentDatabase(), m_session.oCodeItem->Key().toLongLong());
    draft.SelectGroup(m_bookmarkGroup);
    frmAddBookmark dialog(this);
    dialog.Initialise(draft);
    dialog.exec();
    ctlBookMarkList->Refresh(); // a group may be new, whatever has become of the bookmark
    if (dialog.Cancelled())
        return;
    m_bookmarkGroup = draft.Group();
    ctlBookMarkList->SelectBookmark(draft.Bookmark());
}

void frmCodeLib::EditBookmark()
{
    const qint64 bookmark = ctlBookMarkList->SelectedBookmark();
    if (!CurrentDatabase() || bookmark == 0)
        return;
    BookmarkDraft draft = BookmarkDraft::Of(*CurrentDatabase(), bookmark);
    frmAddBookmark dialog(this);
    dialog.Initialise(draft);
    dialog.exec();
    ctlBookMarkList->Refresh();
    ctlBookMarkList->SelectBookmark(bookmark);
}

/// The item may be one that another program has added since the tree was read.
void frmCodeLib::OpenBookmark(qint64 item)
{
    if (item == 0)
        return;
    if (!tvCodeItems->Nodes().Find(item) && m_tree->SaveItem())
        m_tree->Reload();
    if (tvCodeItems->Nodes().Find(item))
        return m_tree->GoToNode(NodeKey(item));
    ctlBookMarkList->Refresh();
    Prompts::Current().MsgBox({.Text = u"The bookmarked item is not in the library any more."_s,
                               .Caption = ApplicationTitle,
                               .Icon = MsgBoxIcon::Information});
}

/// Of the current item by the rules for it; of one that the page is locked to by those that the page knows.
void frmCodeLib::RemoveShownLink(const QString& key)
{
    ItemInfo& info = ctlBookMarkList->Info();
    if (info.ShowsCurrent())
        return m_linking->DeleteLink(key);
    if (info.MayEdit() && m_linking->DeleteLinkOf(*info.Item(), key))
        info.LinksEdited();
}

void frmCodeLib::ListChildren()
{
    m_commands.Run(u"mnuDBToolsForgetReplicaItem"_s);
}

// The panel

void frmCodeLib::ShowBookmarks(bool visible)
{
    m_bookmarksVisible = visible;
    for (const QString& name : {u"mnuViewBookmarks"_s, u"VIEWBOOKMARKS"_s})
        m_commands.SetChecked(name, visible);
    ctlBookMarkList->setVisible(visible && !m_bookmarksHidden);
}

void frmCodeLib::HideBookmarksWhileBrowsing(bool hidden)
{
    m_bookmarksHidden = hidden;
    ctlBookMarkList->setVisible(m_bookmarksVisible && !hidden);
}

} // namespace qb
