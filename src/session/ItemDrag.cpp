#include "session/ItemDrag.h"

#include "platform/system/Prompts.h"
#include "store/ItemBranch.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString ModuleName = u"MainForm"_s;
} // namespace

ItemDrag::ItemDrag(SessionState& session, ItemTreeView& view, ItemTree& tree, ItemCommands& commands)
    : m_session(session), m_view(view), m_tree(tree), m_commands(commands)
{
}

const QString& ItemDrag::TreeClipboardFormat()
{
    static const QString format = u"VBCodeLibTree"_s;
    return format;
}

bool ItemDrag::Start(TreeNode& node)
{
    const Bar bar = WhatBars(ItemChange::Move, StandingOf(m_session, node));
    m_dropCancelled = bar == Bar::LockedOrphan || bar == Bar::OrphanFolder; // it is picked up, and goes nowhere
    if (bar != Bar::None && !m_dropCancelled)
        return false;
    m_draggedNode = node.Id;
    m_dragging = true;
    m_hoverTicks = 0;
    m_scrollDirection = 0;
    return true;
}

void ItemDrag::SetHighlight(TreeNode* node)
{
    m_highlight = node ? node->Id : -1;
    m_view.SetDropHighlight(node);
}

bool ItemDrag::Over(const TreeNode* node, int y, int treeHeight)
{
    constexpr int TopZone = 300; // twips
    constexpr int BottomZone = 500;
    bool refused = m_dropCancelled || !node || IsBarred(ItemChange::Receive, StandingOf(m_session, *node));
    for (const TreeNode* at = node; at && !refused; at = at->Parent)
        refused = at->Id == m_draggedNode; // itself, or what stands below it
    SetHighlight(refused ? nullptr : m_view.Nodes().Find(node->Id));
    if (y > 0 && y < TopZone)
        m_scrollDirection = -1;
    else
        m_scrollDirection = y < treeHeight && y > treeHeight - BottomZone ? 1 : 0;
    return !refused;
}

void ItemDrag::Tick()
{
    constexpr int TicksToOpen = 40;
    if (m_draggedNode == 0)
        return;
    TreeNode* target = m_view.Nodes().Find(m_highlight);
    m_hoverTicks = target ? m_hoverTicks + 1 : 0;
    if (m_hoverTicks > TicksToOpen) {
        m_hoverTicks = 0;
        if (!target->Expanded)
            m_view.SetExpanded(*target, true);
    }
    if (m_scrollDirection != 0) {
        m_hoverTicks = 0;
        m_view.ScrollLines(m_scrollDirection);
    }
}

bool ItemDrag::Drop()
{
    return Guarded(
        ModuleName, u"tvCodeItems_OLEDragDrop"_s,
        [this] {
            TreeNode* node = m_draggedNode != 0 ? m_view.Nodes().Find(m_draggedNode) : nullptr;
            TreeNode* target = m_view.Nodes().Find(m_highlight);
            SetHighlight(nullptr);
            m_draggedNode = 0;
            if (!node || !target)
                return false;
            const ItemStanding standing = StandingOf(m_session, *node);
            if (IsBarred(ItemChange::Move, standing))
                return false;
            if (target->IsRoot() && node->Text() == OrphanedItemsTitle) {
                Prompts::Current().MsgBox(
                    {.Text =
                         u"It is not possible to move this item under the root!  Name 'Orphaned Items' under the root "
                         "directory is reserved for the program. Directory with this name is used by it during "
                         "synchronization.\r\nYou can rename the item and then repeat the action."_s,
                     .Caption = u"Can not move this item"_s,
                     .Icon = MsgBoxIcon::Information});
                return false;
            }
            return MoveTo(*node, *target, MovesDate(ItemChange::Move, standing));
        },
        false);
}

/// The row first: a tree that shows a move which was not written would lie.
bool ItemDrag::MoveTo(TreeNode& node, TreeNode& target, bool stamp)
{
    TreeNode* oldParent = node.Parent;
    const bool isCurrent = m_session.oCodeItem && m_session.oCodeItem->Key() == QString::number(node.Id);
    if (isCurrent && !m_commands.SaveItem())
        return false;
    Library& library = *m_session.CurrentDatabase;
    Transaction transaction(library); // others may have moved or deleted either of them
    if (!target.IsRoot())
        RequireItem(library, target.Id);
    if (IsInBranch(library, node.Id, target.Id))
        throw RuntimeError(ErrorNumber::NodeCycle,
                           u"The item '%1' can't be moved below itself; nothing was changed."_s.arg(node.Text()),
                           ModuleName);
    CCodeItem item;
    item.Initialise(library, QString::number(node.Id));
    item.SetParentKey(QString::number(target.Id));
    item.SetDontUpdateLastChangedDate(!stamp);
    item.SetItemChanged(true);
    if (isCurrent)
        m_session.CurrentItemKey.clear(); // it is shown anew: what the panel holds is of the time before
    if (!item.Commit())
        return false;
    transaction.Commit();
    m_view.Nodes().Move(node, target);
    m_view.Nodes().PlaceByTitle(node);
    if (!target.IsRoot())
        m_view.Nodes().SetImages(target, target.Image, TreeImage::OPENFOLDER); // its image stays, deliberately
    if (oldParent && !oldParent->IsRoot() && oldParent->Children.empty()) {
        m_view.SetExpanded(*oldParent, false);
        m_view.Nodes().SetImages(*oldParent, TreeImage::CHILD, TreeImage::CHILD);
    }
    m_view.SelectItem(node);
    if (stamp)
        m_commands.CheckIfToDeleteOrphanedItemsFolder();
    return true;
}

void ItemDrag::Complete()
{
    m_draggedNode = 0;
    if (!m_dragging)
        return;
    SetHighlight(nullptr);
    m_dragging = false;
    if (TreeNode* selected = m_view.SelectedItem())
        m_tree.TreeViewNodeClick(*selected);
}

} // namespace qb
