#pragma once

#include "panels/ItemTreeView.h"
#include "platform/system/Hook.h"
#include "session/CommandRules.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ShellView.h"
#include "text/ItemDetailsView.h"

#include <QObject>

namespace qb {

/// The item tree of the session: how rows become nodes, what their images say, how a selection
/// reaches the details panel, and how the user walks.
class ItemTree : public QObject {
    Q_OBJECT

public:
    ItemTree(SessionState& session, ItemTreeView& view, ItemDetailsView& details, ShellView& shell, Commands& commands);

    /// Saves the item that is about to be left. False when it has to stay.
    Hook<bool()> SaveItem{true};
    /// Another item, or the root, is the current one.
    Hook<void()> ItemShown;

    /// Builds the whole tree anew. A parent that names no row, or a cycle, ends it with an error
    /// report; the nodes that have no place by then stay beside the root.
    void FillTree();
    void ClearTreeView();
    /// Both, with the tree hidden meanwhile.
    void Refill();
    /// Reads the items anew. Open branches stay open, and the item that is shown stays that.
    void Reload();
    /// Selects a node and draws it bold.
    void BoldTreeNode(TreeNode& node);
    /// Shows the selected node in the details panel.
    void OpenItem();
    /// Makes @p key the current item.
    void SElectCodeItem(const QString& key);
    /// Makes a row that was added just now the current item, without a place in the history.
    void ShowNewItem(std::unique_ptr<CCodeItem> item);
    /// Shows an item as it is stored; what was typed into it is gone.
    void ShowItem(qint64 id);
    /// Shows when the current item was changed last, or "00:00".
    void ShowKeptDate();
    /// Whether there is something left for the conflict solver; the walk buttons and the command
    /// follow.
    bool CheckIfConflictsStillOccur();
    /// No item waits for a decision any more, or the library of those is closed.
    void ForgetProblems();
    /// There are items that wait for a decision, and NEXT and PREVIOUS walk these.
    bool WalksProblems() const { return m_walksProblems; }
    /// The commands, the panel and the tools follow the selected node and the library as they stand now.
    void ShowStanding();
    /// No item is shown: of the library, or, with @p library false, since there is none. Nothing of the item before
    /// stays: its bars, its lock, its links and its description.
    void ShowNoItem(bool library);
    /// The events of the history, which is a new one, enable the ways back and forward.
    void FollowHistory();
    /// Selects the node of @p key and opens it; an empty key does nothing.
    void GoToNode(const QString& key);
    /// Goes to the item of a link; says so where it is not in the library any more.
    void FollowLink(qint64 item);
    /// Goes to the item that was visited before; from the root, which is no step of the history, to
    /// the one that was left for it.
    void GoBack();
    /// The user has clicked @p node, or gone to it with the keyboard.
    void TreeViewNodeClick(TreeNode& node);
    void NodeExpanded(TreeNode& node);
    void NodeCollapsed(TreeNode& node);
    /// Closes every branch; the root stays open.
    void CollapseBranches();

    void MoveOnNextItem();
    void MoveOnPreviousItem();
    void FindNextConflictItem();
    void FindPreviousConflictItem();

    /// The node is the folder of orphaned items under the root, or stands below it.
    static bool OrphanedItem(const TreeNode& node) { return IsOrphaned(node); }
    /// The nearest ancestor's next sibling, or null.
    static TreeNode* NextParentNode(const TreeNode& node);
    /// The deepest last descendant of a node: the node itself when it has no children.
    static TreeNode* PreviousLowestNode(TreeNode& node);

    /// The statement that reads the tree: what the covering index holds, nothing else.
    static QString TreeQuery();

private:
    struct ProblemItems {
        bool Deleted = false;
        bool Conflicting = false;
    };

    void BuildNodes();
    TreeNode& AddRoot();
    void Decorate();
    ProblemItems MarkProblemItems();
    bool MarkNodes(const QString& query, TreeImage image);
    void ShowWalkButtons(const ProblemItems& problems);
    void GoTo(TreeNode& node);
    void ConnectItem();
    void EnableWalks(bool conflicts);
    void Apply(const ItemStanding& standing);
    void ApplyToNode(qint64 id);
    void RegisterCommands();
    void EnableBoth(const QString& button, const QString& entry, bool enabled);
    void StayAt(const QString& key);
    void ShowItemDate(Date created, Date lastChanged);

    SessionState& m_session;
    ItemTreeView& m_view;
    ItemDetailsView& m_details;
    ShellView& m_shell;
    Commands& m_commands;
    bool m_walksProblems = false;
};

} // namespace qb
