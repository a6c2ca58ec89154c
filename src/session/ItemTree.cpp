#include "session/ItemTree.h"

#include "platform/system/Prompts.h"
#include "session/LoadTree.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

#include <QLocale>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

QString ShortDateAndTime(Date date)
{
    const QLocale locale;
    return locale.toString(date.Day(), QLocale::ShortFormat) + u' '
           + locale.toString(date.Time(), QLocale::ShortFormat);
}

} // namespace

ItemTree::ItemTree(SessionState& session, ItemTreeView& view, ItemDetailsView& details, ShellView& shell,
                   Commands& commands)
    : m_session(session), m_view(view), m_details(details), m_shell(shell), m_commands(commands)
{
    RegisterCommands();
}

void ItemTree::RegisterCommands()
{
    const auto both = [this](const QString& button, const QString& entry, const std::function<void()>& run) {
        m_commands.Register(button, run);
        m_commands.Register(entry, run);
    };
    both(u"NEXT"_s, u"mnuNextItem"_s, [this] { WalksProblems() ? FindNextConflictItem() : MoveOnNextItem(); });
    both(u"PREVIOUS"_s, u"mnuPreviousItem"_s,
         [this] { WalksProblems() ? FindPreviousConflictItem() : MoveOnPreviousItem(); });
    // The item is saved before the history moves.
    both(u"BACK"_s, u"mnuBackItem"_s, [this] {
        if (SaveItem())
            GoBack();
    });
    both(u"FORWARD"_s, u"mnuForwardItem"_s, [this] {
        if (SaveItem())
            GoToNode(m_session.moHistory->NextInHistory());
    });
    m_commands.Register(u"mnuViewRefresh"_s, [this] {
        if (SaveItem())
            Reload();
    });
    m_commands.Register(u"mnuCollapseBranchesItem"_s, this, &ItemTree::CollapseBranches);
}

void ItemTree::FollowHistory()
{
    const CHistory* history = m_session.moHistory.get();
    const auto enable = [this](const QString& button, const QString& entry, bool enabled) {
        return std::bind_front(&ItemTree::EnableBoth, this, button, entry, enabled);
    };
    connect(history, &CHistory::FirstHistoryItem, this, enable(u"BACK"_s, u"mnuBackItem"_s, false));
    connect(history, &CHistory::HistoryItemAdded, this, enable(u"BACK"_s, u"mnuBackItem"_s, true));
    connect(history, &CHistory::HistoryMovedBack, this, enable(u"FORWARD"_s, u"mnuForwardItem"_s, true));
    connect(history, &CHistory::HistoryMovedForward, this, enable(u"BACK"_s, u"mnuBackItem"_s, true));
    connect(history, &CHistory::LastHistoryItem, this, enable(u"FORWARD"_s, u"mnuForwardItem"_s, false));
}

void ItemTree::EnableBoth(const QString& button, const QString& entry, bool enabled)
{
    m_commands.SetEnabled(button, enabled);
    m_commands.SetEnabled(entry, enabled);
}

QString ItemTree::TreeQuery()
{
    return u"SELECT ID, ParentID, Title, Description FROM Items ORDER BY ParentID, Title"_s;
}

// Filling

void ItemTree::FillTree()
{
    m_details.TreeReplaced();
    m_view.ClearLinkCombo(); // of an item that may be of another library
    TreeNodes& nodes = m_view.Nodes();
    bool complete = false;
    nodes.BeginBuild();
    try {
        BuildNodes();
        complete = true;
    } catch (const RuntimeError& error) {
        nodes.EndBuild(); // the views may look again before the error is shown
        if (error.Number() != ErrorNumber::ObjectNotSet)
            HandleError(error.Number(), error.Description(), ModuleName, u"FillTree"_s, error.Source(), true);
    }
    if (complete)
        nodes.EndBuild();
    if (TreeNode* root = nodes.Root()) {
        m_view.SetExpanded(*root, complete);
        BoldTreeNode(*root);
    }
    ShowStanding();
}

void ItemTree::BuildNodes()
{
    TreeNodes& nodes = m_view.Nodes();
    nodes.Clear();
    m_session.CurrentItemKey.clear();
    AddRoot();
    if (!m_session.CurrentDatabase)
        return;
    const std::vector<SiblingRows> rows = ReadTreeRows(*m_session.CurrentDatabase, nodes, TreeImage::FOLDER);
    if (rows.empty())
        return; // an empty library: the commands stay as they are
    PutUnderParents(nodes, rows);
    Decorate();
}

TreeNode& ItemTree::AddRoot()
{
    TreeNode& root = m_view.Nodes().Add(0, m_shell.ComboText() + u" Library"_s, TreeImage::OBJECTS);
    root.Bold = true;
    return root;
}

void ItemTree::Decorate()
{
    TreeNodes& nodes = m_view.Nodes();
    for (TreeNode& node : nodes.All()) {
        node.Expanded = false;
        if (!node.Children.empty())
            nodes.SortChildren(node);
        else if (!node.IsRoot())
            node.Image = node.ExpandedImage = TreeImage::CHILD;
    }
    nodes.Root()->Expanded = true;
    ShowWalkButtons(MarkProblemItems());
}

ItemTree::ProblemItems ItemTree::MarkProblemItems()
{
    ProblemItems problems;
    if (!m_session.IsMotherReplica() && !m_session.IsChildReplica())
        return problems;
    problems.Deleted = MarkNodes(u"SELECT ID FROM Items WHERE LastChanged = 0"_s,
                                 m_session.IsChildReplica() ? TreeImage::CONFLICT_ITEM_INFO : TreeImage::DELETED_ITEM);
    // The table exists only between a synchronization and its solution.
    if (m_session.IsMotherReplica() && m_session.CurrentDatabase->TableExists(u"TempItems"_s))
        problems.Conflicting = MarkNodes(u"SELECT ID FROM TempItems"_s, TreeImage::CONFLICT_ITEM);
    return problems;
}

bool ItemTree::MarkNodes(const QString& query, TreeImage image)
{
    bool any = false;
    Statement rows = m_session.CurrentDatabase->Query(query);
    while (rows.Step()) {
        any = true;
        if (TreeNode* node = m_view.Nodes().Find(rows.Long(0)))
            node->Image = node->ExpandedImage = image;
    }
    return any;
}

void ItemTree::ShowWalkButtons(const ProblemItems& problems)
{
    const bool conflicts = m_session.IsMotherReplica() && (problems.Deleted || problems.Conflicting);
    EnableWalks(conflicts);
    m_commands.SetEnabled(u"mnuConflictSolver"_s, conflicts && problems.Conflicting);
    m_commands.SetEnabled(u"mnuRemoveDeletedItems"_s, conflicts && problems.Deleted);
}

void ItemTree::ForgetProblems()
{
    EnableWalks(false);
    m_commands.SetEnabled(u"mnuConflictSolver"_s, false);
    m_commands.SetEnabled(u"mnuRemoveDeletedItems"_s, false);
}

void ItemTree::EnableWalks(bool conflicts)
{
    m_walksProblems = conflicts;
    if (conflicts) {
        m_commands.SetImage(u"NEXT"_s, u"DOWN_RED"_s, u"Next Conflicting Item"_s);
        m_commands.SetImage(u"PREVIOUS"_s, u"UP_RED"_s, u"Previous Conflicting Item"_s);
    } else {
        m_commands.SetImage(u"NEXT"_s, u"DOWN"_s, u"Next Tree Item"_s);
        m_commands.SetImage(u"PREVIOUS"_s, u"UP"_s, u"Previous Tree Item"_s);
    }
}

bool ItemTree::CheckIfConflictsStillOccur()
{
    Database& database = *m_session.CurrentDatabase;
    const auto any = [&](const QString& query) { return !database.QueryValue(query).IsNull(); };
    bool left = false;
    if (database.TableExists(u"TempItems"_s)) {
        left = any(u"SELECT 1 FROM TempItems LIMIT 1"_s);
        // The table itself stays, deliberately; only what belongs to it goes.
        for (const QString& table : {u"TempFiles"_s, u"TempHTMLFiles"_s}) {
            if (!left && database.TableExists(table))
                database.DeleteTableDef(table);
        }
    }
    left = left || any(u"SELECT 1 FROM Items WHERE LastChanged = 0 LIMIT 1"_s);
    if (!left)
        ForgetProblems();
    return left;
}

void ItemTree::Refill()
{
    m_view.EndLabelEdit();
    m_view.SetTreeVisible(false);
    ClearTreeView();
    FillTree();
    m_view.SetTreeVisible(true);
}

void ItemTree::Reload()
{
    std::vector<qint64> open;
    for (const TreeNode& node : m_view.Nodes().All()) {
        if (node.Expanded && !node.Children.empty())
            open.push_back(node.Id);
    }
    const bool hasItem = m_session.oCodeItem && !m_session.oCodeItem->Key().isEmpty();
    const qint64 shown = hasItem ? m_session.oCodeItem->Key().toLongLong() : 0;
    Refill();
    TreeNodes& nodes = m_view.Nodes();
    for (const qint64 id : open) {
        if (TreeNode* node = nodes.Find(id); node && !node->Children.empty())
            m_view.SetExpanded(*node, true);
    }
    TreeNode* node = nodes.Find(shown) ? nodes.Find(shown) : nodes.Root();
    if (!node)
        return;
    m_view.SelectItem(*node);
    m_view.EnsureVisible(*node);
    SElectCodeItem(node->Key());
}

void ItemTree::ClearTreeView()
{
    TreeNodes& nodes = m_view.Nodes();
    nodes.BeginBuild();
    nodes.Clear();
    nodes.EndBuild();
}

void ItemTree::BoldTreeNode(TreeNode& node)
{
    m_view.SelectItem(node);
    m_view.Nodes().SetBold(node, true);
}

// Selection

void ItemTree::TreeViewNodeClick(TreeNode& node)
{
    Guarded(ModuleName, u"tvCodeItems_NodeClick"_s, [&] {
        if (!m_session.CurrentDatabase || node.Key() == m_session.CurrentItemKey)
            return;
        const QString before = std::exchange(m_session.CurrentItemKey, node.Key());
        if (!SaveItem()) {
            StayAt(before);
            return;
        }
        OpenItem();
        for (const QString& name : {u"PRINT"_s, u"mnuFilePrint"_s, u"mnuMailItem"_s})
            m_commands.SetEnabled(name, !node.IsRoot());
        // A look at an item that waits for a decision must not be one.
        if (!node.IsRoot() && m_session.moSettings->AutoColorizeWhenItemOpened() && !m_details.Locked()
            && !m_session.oCodeItem->ItemMarkedForDelete())
            m_details.ColorizeItem();
    });
}

/// The item that could not be saved stays the current one.
void ItemTree::StayAt(const QString& key)
{
    m_session.CurrentItemKey = key;
    if (TreeNode* node = m_view.Nodes().Find(m_session.oCodeItem->Key().toLongLong()))
        m_view.SelectItem(*node);
}

void ItemTree::OpenItem()
{
    Guarded(ModuleName, u"OpenItem"_s, [this] {
        const TreeNode* node = m_view.SelectedItem();
        if (!node)
            return;
        m_commands.SetEnabled(u"NEXT"_s, true);
        m_commands.SetEnabled(u"PREVIOUS"_s, true);
        if (!SaveItem())
            return;
        EnableBoth(u"COLORIZE"_s, u"mnuColorize"_s, false);
        SElectCodeItem(node->Key());
    });
}

/// However the item is reached, an orphan must be locked in a child, and not get a new date from being tidied
/// anywhere else. What was typed while the file has gone stays in sight and can be copied.
void ItemTree::Apply(const ItemStanding& standing)
{
    m_commands.SetStanding(standing);
    const bool locked = WhatBars(ItemChange::Edit, standing) == Bar::LockedOrphan;
    m_details.SetLocked(locked || m_session.IsReadOnly());
    m_shell.EnableEditing(!locked);
    if (m_session.oCodeItem)
        m_session.oCodeItem->SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, standing));
}

void ItemTree::ShowStanding()
{
    const TreeNode* node = m_view.SelectedItem();
    m_commands.SetStanding(node ? StandingOf(m_session, *node) : StandingOf(m_session));
}

void ItemTree::SElectCodeItem(const QString& key)
{
    Guarded(ModuleName, u"SElectCodeItem"_s, [&] {
        if (!m_session.CurrentDatabase)
            return;
        const bool root = key == RootKey;
        // Of the item that is left, where nobody has asked for it yet.
        if (!m_details.SetItemChanged(false) && m_session.oCodeItem && !SaveItem())
            return StayAt(NodeKey(m_session.oCodeItem->Key().toLongLong()));
        m_session.CurrentItemKey = key;
        if (root) {
            ShowNoItem(true);
            m_shell.SetItemDate({}, {});
            if (m_session.moHistory && m_session.moHistory->Position() > 0)
                EnableBoth(u"BACK"_s, u"mnuBackItem"_s, true);
            ItemShown();
            return;
        }
        ShowItem(IdOfKey(key));
        if (m_session.moHistory)
            m_session.moHistory->AddToHistory(key);
        ItemShown();
    });
}

void ItemTree::ShowItem(qint64 id)
{
    auto item = std::make_unique<CCodeItem>();
    item->Initialise(*m_session.CurrentDatabase, QString::number(id));
    m_session.oCodeItem = std::move(item);
    ConnectItem();
    ApplyToNode(id);
    m_details.Initialise(m_session.CurrentDatabase.get(), m_session.oCodeItem.get());
}

void ItemTree::ShowNewItem(std::unique_ptr<CCodeItem> item)
{
    m_session.CurrentItemKey = item->Key(); // not the node's key: a click on the node opens it anew
    m_session.oCodeItem = std::move(item);
    ConnectItem();
    ApplyToNode(m_session.CurrentItemKey.toLongLong());
    m_details.Initialise(m_session.CurrentDatabase.get(), m_session.oCodeItem.get());
    ItemShown();
}

void ItemTree::ShowNoItem(bool library)
{
    m_details.Initialise(library ? m_session.CurrentDatabase.get() : nullptr, nullptr);
    if (m_session.oCodeItem)
        m_session.oCodeItem = std::make_unique<CCodeItem>(); // nothing that could be changed
    m_view.ClearLinkCombo();
    m_view.UpdateDescription({});
    Apply(StandingOf(m_session));
}

void ItemTree::ApplyToNode(qint64 id)
{
    ItemStanding standing = StandingOf(m_session);
    standing.Root = false;
    const TreeNode* node = m_view.Nodes().Find(id);
    Apply(node ? StandingOf(m_session, *node) : standing);
}

void ItemTree::ConnectItem()
{
    const CCodeItem* item = m_session.oCodeItem.get();
    connect(item, &CCodeItem::CodeLoaded, this, std::bind_front(&ItemDetailsView::SetCodeEnabled, &m_details));
    connect(item, &CCodeItem::NotesLoaded, this, std::bind_front(&ItemDetailsView::SetNotesEnabled, &m_details));
    connect(item, &CCodeItem::UsageLoaded, this, std::bind_front(&ItemDetailsView::SetUsageEnabled, &m_details));
    connect(item, &CCodeItem::FilesLoaded, this, std::bind_front(&ItemDetailsView::SetFilesEnabled, &m_details));
    connect(item, &CCodeItem::LinkLoaded, this, std::bind_front(&ItemDetailsView::SetLinksEnabled, &m_details));
    connect(item, &CCodeItem::NewItemLoaded, this, &ItemTree::ShowItemDate);
}

void ItemTree::ShowItemDate(Date created, Date lastChanged)
{
    QString text;
    if (!lastChanged.IsNone())
        text = ShortDateAndTime(lastChanged);
    else if (m_session.IsChildReplica() || !m_session.IsMotherReplica())
        text = m_session.IsChildReplica() ? u"Conflicting item"_s : QString();
    else
        text = m_commands.Standing().Deleted ? u"Conflicting Deleted Item"_s : u"Conflicting item"_s;
    m_shell.SetItemDate(text, u"Item last updated. (Created on %1)"_s.arg(ShortDateAndTime(created)));
}

void ItemTree::ShowKeptDate()
{
    CCodeItem& item = *m_session.oCodeItem;
    const Date changed = item.LastChanged();
    m_shell.SetItemDate(changed.IsNone() ? u"00:00"_s : ShortDateAndTime(changed),
                        u"Item last updated. (Created on %1)"_s.arg(ShortDateAndTime(item.Created())));
}

void ItemTree::GoToNode(const QString& key)
{
    if (key.isEmpty())
        return;
    Guarded(ModuleName, u"GoToNode"_s, [&] {
        TreeNode& node = m_view.Nodes()[IdOfKey(key)];
        if (!SaveItem())
            return;
        EnableBoth(u"COLORIZE"_s, u"mnuColorize"_s, false);
        m_view.EnsureVisible(node);
        m_view.SelectItem(node);
        SElectCodeItem(key);
        m_view.FocusTree();
    });
}

void ItemTree::FollowLink(qint64 item)
{
    if (m_view.Nodes().Find(item))
        return GoToNode(NodeKey(item));
    Prompts::Current().MsgBox({.Text = u"The linked item is not in the library any more. The link can be removed."_s,
                               .Caption = ApplicationTitle,
                               .Icon = MsgBoxIcon::Information});
}

void ItemTree::GoBack()
{
    CHistory& history = *m_session.moHistory;
    if (m_session.CurrentItemKey != RootKey || history.Position() == 0)
        return GoToNode(history.PreviousInHistory());
    GoToNode(history.Keys()[history.Position() - 1]);
    EnableBoth(u"BACK"_s, u"mnuBackItem"_s, history.Position() > 1);
}

} // namespace qb
