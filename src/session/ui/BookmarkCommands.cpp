#include "session/ui/BookmarkCommands.h"

#include "panels/ui/BookmarkView.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/frmAddBookmark.h"
#include "platform/system/Prompts.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QToolBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

BookmarkCommands::BookmarkCommands(const Parts& parts) : m_parts(parts), m_panel(parts.Panel)
{
    RegisterCommands();
    connect(&m_panel, &ctlBookmarks::SelectionChanged, this, &BookmarkCommands::ShowCommands);
    connect(&m_panel, &ctlBookmarks::BookmarkOpened, this, &BookmarkCommands::OpenBookmark);
    m_parts.Items.ItemAdded = std::bind_front(&ctlBookmarks::SetDisplayedTab, &m_panel, int(BookmarkTab::Info));
    FollowTree();
    ConnectInfo();
    ShowCommands();
}

void BookmarkCommands::MakeFaces(CommandFaces& faces)
{
    faces.FillToolbar(*m_panel.BookmarkToolbar(), CommandRow::Place::BookmarkToolbar);
    faces.FillToolbar(*m_panel.InfoToolbar(), CommandRow::Place::InfoToolbar);
    const QList<QAction*> entries = faces.MakeActions(CommandRow::Place::BookmarkMenu);
    BookmarkView* view = m_panel.View();
    view->addActions(entries);
    view->addActions({faces.Action(u"mnuRemoveBookMark"_s), faces.Action(u"mnuRemoveAllItem"_s)});
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    static constexpr std::pair<const char*, Qt::Key> keys[] = {{"mnuRemoveBookMark", Qt::Key_Delete},
                                                               {"mnuEditBookMark", Qt::Key_F2}};
    for (const auto& [name, key] : keys) {
        QAction* action = faces.Action(QLatin1StringView(name));
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
    }
}

void BookmarkCommands::LibraryOpened()
{
    m_group = 0;
    m_panel.Initialise(*m_parts.Session.CurrentDatabase);
    m_panel.SetDatabaseLastBackedUp(m_parts.Session.moSettings->DBLastBackedUp());
}

void BookmarkCommands::LibraryClosing()
{
    m_panel.Terminate();
}

/// Bookmarks bear the titles of their items, and go with them.
void BookmarkCommands::FollowTree()
{
    m_refresh.setSingleShot(true);
    connect(&m_refresh, &QTimer::timeout, this, std::bind_front(&ctlBookmarks::Refresh, &m_panel));
    const auto refresh = [this] { m_refresh.start(0); };
    connect(&m_parts.Nodes, &TreeNodes::rowsRemoved, this, refresh);
    connect(&m_parts.Nodes, &TreeNodes::modelReset, this, refresh);
    connect(&m_parts.Nodes, &TreeNodes::dataChanged, this, &BookmarkCommands::TitlesChanged);
}

void BookmarkCommands::TitlesChanged(const QModelIndex& first, const QModelIndex& last)
{
    for (int row = first.row(); row <= last.row(); ++row) {
        const TreeNode* node = m_parts.Nodes.NodeAt(first.siblingAtRow(row));
        if (!node || node->IsRoot())
            continue;
        m_panel.List().Rows().SetTitle(node->Id, node->Text());
        m_panel.Info().TitleChanged(node->Id, node->Text());
    }
}

void BookmarkCommands::ConnectInfo()
{
    ItemInfo& info = m_panel.Info();
    m_parts.Items.SetInfo(info);
    info.AutoSaveOn = std::bind_front(&ItemCommands::AutoSaveOn, &m_parts.Items);
    connect(&m_parts.Details, &ctlCodeDetails::ItemInitialised, this, &BookmarkCommands::ShowNewItem);
    connect(&m_parts.Details, &ctlCodeDetails::FactsChanged, this, &BookmarkCommands::ShowFacts);
    connect(&info, &ItemInfo::InfoTyped, &m_parts.Details.Editor(), &ItemEditor::InfoTyped);
    connect(&info, &ItemInfo::LockChanged, this, &BookmarkCommands::ShowLock);
    connect(&m_panel, &ctlBookmarks::LinkRemoveAsked, this, &BookmarkCommands::RemoveShownLink);
    connect(&m_panel, &ctlBookmarks::ChildrenAsked, this,
            std::bind_front(&Commands::Run, &m_parts.Registry, u"mnuDBToolsForgetReplicaItem"_s));
}

void BookmarkCommands::ShowNewItem(CCodeItem* item)
{
    m_panel.InitialiseItem(item, m_parts.Details.Locked());
    m_panel.Info().Refresh();
    m_panel.UpdateDatabaseSize();
}

void BookmarkCommands::ShowFacts()
{
    m_panel.Info().Refresh();
    m_panel.ShowItem();
    m_panel.UpdateDatabaseSize();
}

void BookmarkCommands::ShowLock()
{
    const bool locked = m_panel.Info().Locked();
    m_parts.Registry.SetChecked(u"LOCK"_s, locked);
    m_parts.Registry.SetImage(u"LOCK"_s, locked ? u"LOCKED"_s : u"UNLOCKED"_s,
                              locked ? u"Let the page follow the item that is shown"_s
                                     : u"Keep the page at this item while others are shown"_s);
}

void BookmarkCommands::RegisterCommands()
{
    Commands& commands = m_parts.Registry;
    for (const QString& name : {u"mnuBookMark"_s, u"BOOKMARK"_s})
        commands.Register(name, this, &BookmarkCommands::AddBookmark);
    for (const QString& name : {u"mnuViewBookmarks"_s, u"VIEWBOOKMARKS"_s})
        commands.Register(name, [this] { Show(!m_isShown); });
    commands.Register(u"mnuOpenBookMark"_s, [this] { OpenBookmark(m_panel.SelectedItem()); });
    commands.Register(u"mnuEditBookMark"_s, this, &BookmarkCommands::EditBookmark);
    commands.Register(u"mnuRemoveBookMark"_s, &m_panel, &ctlBookmarks::RemoveBookMark);
    commands.Register(u"mnuRemoveAllItem"_s, &m_panel.List(), &BookmarkList::RemoveAllBookmarks);
    commands.Register(u"mnuRenameGroup"_s, [this] { m_panel.List().RenameGroup(m_panel.SelectedGroup()); });
    commands.Register(u"mnuRemoveGroup"_s, [this] { m_panel.List().RemoveGroup(m_panel.SelectedGroup()); });
    commands.Register(u"SINGLE_CLICK"_s, [this] { SetSingleClick(!m_panel.BookmarkSingleClick()); });
    commands.Register(u"LOCK"_s, &m_panel.Info(), &ItemInfo::ToggleLock);
}

/// What is not selected can't be worked on; whether the library can be written to, the rules know.
void BookmarkCommands::ShowCommands()
{
    const bool isBookmark = m_panel.SelectedBookmark() != 0;
    for (const QString& name : {u"mnuOpenBookMark"_s, u"mnuEditBookMark"_s, u"mnuRemoveBookMark"_s})
        m_parts.Registry.SetEnabled(name, isBookmark);
    for (const QString& name : {u"mnuRenameGroup"_s, u"mnuRemoveGroup"_s})
        m_parts.Registry.SetEnabled(name, m_panel.SelectedGroup() != 0);
    m_parts.Registry.SetEnabled(u"mnuRemoveAllItem"_s, m_panel.List().Rows().BookmarkCount() > 0);
}

// Commands

void BookmarkCommands::AddBookmark()
{
    const CCodeItem* item = m_parts.Session.oCodeItem.get();
    if (!m_parts.Session.CurrentDatabase || !item || item->Key().isEmpty())
        return;
    BookmarkDraft draft(*m_parts.Session.CurrentDatabase, item->Key().toLongLong());
    draft.SelectGroup(m_group);
    frmAddBookmark dialog(&m_parts.Window);
    dialog.Initialise(draft);
    dialog.exec();
    m_panel.Refresh(); // a group may be new, whatever has become of the bookmark
    if (dialog.Cancelled())
        return;
    m_group = draft.Group();
    m_panel.SelectBookmark(draft.Bookmark());
}

void BookmarkCommands::EditBookmark()
{
    const qint64 bookmark = m_panel.SelectedBookmark();
    if (!m_parts.Session.CurrentDatabase || bookmark == 0)
        return;
    BookmarkDraft draft = BookmarkDraft::Of(*m_parts.Session.CurrentDatabase, bookmark);
    frmAddBookmark dialog(&m_parts.Window);
    dialog.Initialise(draft);
    dialog.exec();
    m_panel.Refresh();
    m_panel.SelectBookmark(bookmark);
}

/// The item may be one that another program has added since the tree was read.
void BookmarkCommands::OpenBookmark(qint64 item)
{
    if (item == 0)
        return;
    if (!m_parts.Nodes.Find(item) && m_parts.Tree.SaveItem())
        m_parts.Tree.Reload();
    if (m_parts.Nodes.Find(item))
        return m_parts.Tree.GoToNode(NodeKey(item));
    m_panel.Refresh();
    Prompts::Current().MsgBox({.Text = u"The bookmarked item is not in the library any more."_s,
                               .Caption = ApplicationTitle,
                               .Icon = MsgBoxIcon::Information});
}

/// Of the current item by the rules for it; of one that the page is locked to by those that the page knows.
void BookmarkCommands::RemoveShownLink(const QString& key)
{
    ItemInfo& info = m_panel.Info();
    if (info.ShowsCurrent())
        return m_parts.Linking.DeleteLink(key);
    if (info.MayEdit() && m_parts.Linking.DeleteLinkOf(*info.Item(), key))
        info.LinksEdited();
}

// The panel

void BookmarkCommands::ReadLayout(const WindowLayout& layout)
{
    Show(layout.Flag(WindowLayout::ViewBookMarks));
    SetSingleClick(layout.Flag(WindowLayout::BookmarkSingleClick));
}

void BookmarkCommands::WriteLayout(WindowLayout& layout) const
{
    layout.SetFlag(WindowLayout::ViewBookMarks, m_isShown);
    layout.SetFlag(WindowLayout::BookmarkSingleClick, m_panel.BookmarkSingleClick());
}

void BookmarkCommands::SetSingleClick(bool single)
{
    m_panel.SetBookmarkSingleClick(single);
    m_parts.Registry.SetChecked(u"SINGLE_CLICK"_s, single);
}

void BookmarkCommands::Show(bool visible)
{
    m_isShown = visible;
    for (const QString& name : {u"mnuViewBookmarks"_s, u"VIEWBOOKMARKS"_s})
        m_parts.Registry.SetChecked(name, visible);
    m_panel.setVisible(visible && !m_isHidden);
}

void BookmarkCommands::HideWhileBrowsing(bool hidden)
{
    m_isHidden = hidden;
    m_panel.setVisible(m_isShown && !hidden);
}

} // namespace qb
