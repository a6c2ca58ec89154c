// Branches that open and close, and walks through the tree.

#include "session/ItemTree.h"

#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

bool IsProblem(TreeImage image)
{
    return image == TreeImage::DELETED_ITEM || image == TreeImage::CONFLICT_ITEM;
}

/// The images that expanding and collapsing leave alone.
bool KeepsItsImage(TreeImage image, const SessionState& session)
{
    return (session.IsMotherReplica() && IsProblem(image))
           || (session.IsChildReplica() && image == TreeImage::CONFLICT_ITEM_INFO);
}

} // namespace

// Expand and collapse

void ItemTree::NodeExpanded(TreeNode& node)
{
    node.Expanded = true;
    if (node.IsRoot())
        return;
    const bool plainLibrary = !m_session.IsMotherReplica() && !m_session.IsChildReplica();
    TreeImage expanded = node.ExpandedImage;
    if (plainLibrary || (m_session.IsChildReplica() && node.Image != TreeImage::CONFLICT_ITEM_INFO))
        expanded = TreeImage::OPENFOLDER;
    if (m_session.IsMotherReplica() && node.Image == TreeImage::FOLDER)
        expanded = TreeImage::OPENFOLDER;
    if (m_session.IsMotherReplica() && IsProblem(node.Image))
        expanded = node.Image;
    m_view.Nodes().SetImages(node, node.Image, expanded);
    m_shell.SetStatusText(node.Text());
}

void ItemTree::NodeCollapsed(TreeNode& node)
{
    node.Expanded = false;
    if (node.IsRoot() || node.Children.empty())
        return;
    if (!KeepsItsImage(node.Image, m_session))
        m_view.Nodes().SetImages(node, TreeImage::FOLDER, node.ExpandedImage);
    m_shell.SetStatusText(node.Text());
}

void ItemTree::CollapseBranches()
{
    for (TreeNode& node : m_view.Nodes().All()) {
        if (node.Expanded && !node.IsRoot())
            m_view.SetExpanded(node, false);
    }
}

// Walks

TreeNode* ItemTree::NextParentNode(const TreeNode& node)
{
    for (const TreeNode* at = node.Parent; at; at = at->Parent) {
        if (TreeNode* next = TreeNodes::NextSibling(*at))
            return next;
    }
    return nullptr;
}

TreeNode* ItemTree::PreviousLowestNode(TreeNode& node)
{
    TreeNode* at = &node;
    while (!at->Children.empty())
        at = at->Children.back();
    return at;
}

void ItemTree::GoTo(TreeNode& node)
{
    if (!SaveItem())
        return;
    m_view.EnsureVisible(node);
    m_view.SelectItem(node);
    m_view.FocusTree();
    SElectCodeItem(node.Key());
}

void ItemTree::MoveOnNextItem()
{
    Guarded(ModuleName, u"MoveOnNextItem"_s, [this] {
        const TreeNode* node = m_view.SelectedItem();
        if (!node)
            return;
        TreeNode* target = nullptr;
        if (!node->Children.empty() && (node->Expanded || m_session.moSettings->ExpandBranches()))
            target = node->Children.front();
        if (!target)
            target = TreeNodes::NextSibling(*node);
        if (!target)
            target = NextParentNode(*node);
        if (target)
            GoTo(*target);
    });
}

void ItemTree::MoveOnPreviousItem()
{
    Guarded(ModuleName, u"MoveOnPreviousItem"_s, [this] {
        const TreeNode* node = m_view.SelectedItem();
        if (!node)
            return;
        TreeNode* target = TreeNodes::PreviousSibling(*node);
        if (!target) {
            if (node->Parent)
                GoTo(*node->Parent);
            return;
        }
        while (!target->Children.empty() && (target->Expanded || m_session.moSettings->ExpandBranches()))
            target = target->Children.back();
        GoTo(*target);
    });
}

void ItemTree::FindNextConflictItem()
{
    Guarded(ModuleName, u"FindNextConflictItem"_s, [this] {
        m_commands.SetEnabled(u"PREVIOUS"_s, true);
        for (TreeNode* at = m_view.SelectedItem(); at;) {
            if (!at->Children.empty())
                at = at->Children.front();
            else if (TreeNode* next = TreeNodes::NextSibling(*at))
                at = next;
            else
                at = NextParentNode(*at);
            if (at && IsProblem(at->Image))
                return GoTo(*at);
        }
        m_commands.SetEnabled(u"NEXT"_s, false);
    });
}

void ItemTree::FindPreviousConflictItem()
{
    Guarded(ModuleName, u"FindPreviousConflictItem"_s, [this] {
        m_commands.SetEnabled(u"NEXT"_s, true);
        for (TreeNode* at = m_view.SelectedItem(); at;) {
            TreeNode* previous = TreeNodes::PreviousSibling(*at);
            at = previous ? PreviousLowestNode(*previous) : at->Parent;
            if (at && IsProblem(at->Image))
                return GoTo(*at);
        }
        m_commands.SetEnabled(u"PREVIOUS"_s, false);
    });
}

} // namespace qb
