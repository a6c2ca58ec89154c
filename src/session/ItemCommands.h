#pragma once

#include "panels/ItemInfo.h"
#include "panels/ItemTreeView.h"
#include "session/Commands.h"
#include "session/ItemTree.h"
#include "session/SessionState.h"
#include "session/ShellView.h"
#include "text/ItemDetailsView.h"

namespace qb {

/// The commands that change the set of items: add, rename, delete, save, keep and clear, with the
/// rules that allow them.
class ItemCommands {
public:
    /// Registers the commands of items and of saving, and takes over the tree's SaveItem and the panel's
    /// KeepingDeletedRecord and TitleTaken. Everything must outlive this.
    ItemCommands(SessionState& session, ItemTreeView& view, ItemDetailsView& details, ShellView& shell,
                 Commands& commands, ItemTree& tree);

    // Saving

    /// An item that is left is saved without a question.
    bool AutoSaveOn() const { return m_autoSaveOn; }
    /// Shows it on the button and in the menu, too; it is the window that keeps it for the next session.
    void SetAutoSaveOn(bool on);
    /// The current item is about to be left: saves it, or asks about it. False when it could not
    /// be saved and is not to be lost.
    bool SaveItem();
    /// Saves the current item now.
    void mnuSaveItem_Click();
    /// What the button for saving does by the number of clicks on it: one saves, two switch
    /// auto-save.
    void SaveButtonClicked(int clicks);

    // Adding and renaming

    /// A click on a node opens its item, or is the second step of a link mode.
    void tvCodeItems_NodeClick(TreeNode& node);
    /// The editor of a node's title has closed, with another title or without, or @p cancelled by
    /// Escape, which takes back an item that was made to be linked.
    void LabelEditEnded(TreeNode& node, bool cancelled = false);
    /// Links the current item with that of the selected node; its title, or empty for the node's text.
    std::function<void(const QString& title)> AddNewLinkToSelectedItem;
    /// The file of the library has gone, as a command has found; the window shows it.
    std::function<void()> LibraryHasGone;
    /// Ends a link mode without a link.
    std::function<void()> CancelLinkMode;
    /// An item was added and is shown.
    std::function<void()> ItemAdded;
    /// The info page may be locked to another item, which is saved with the current one from now on.
    void SetInfo(ItemInfo& info) { m_info = &info; }

    /// Adds an item under the selected node and lets the user type its title.
    void AddCode();
    void mnuNewSiblingItem_Click();
    void mnuRename_Click();
    /// The user has typed a title. False when it is refused: the node keeps its own.
    bool AfterLabelEdit(TreeNode& node, const QString& newText);

    // Deleting and keeping

    /// Deletes the selected item with all below it, after a question.
    void DeleteCodeItem();
    /// An item that a child has deleted stays.
    void mnuKeepItem_Click();
    void KeepingDeletedRecord(const QString& id);
    /// Removes all items that a child has deleted; nothing else is touched.
    void mnuRemoveDeletedItems_Click();
    /// Removes the folder of orphaned items when nothing is left in it; true when it went.
    bool CheckIfToDeleteOrphanedItemsFolder();

    /// Sets the item menu for the selected node, before it opens.
    void ItemMenuEdit() { m_tree.ShowStanding(); }

private:
    void RegisterCommands();
    bool TellOfBar(ItemChange change, const TreeNode& node);
    QString ParentKeyOf(const TreeNode& node) const;
    void AddUnder(TreeNode& parent);
    bool TellOfGoneFile();
    void TakeBackLinkedItem(TreeNode& node);
    void LinkNewItem(TreeNode& node, const QString& description, bool pureLink);
    void DeleteNode(TreeNode& node, const std::vector<qint64>& branch, bool orphan);
    void ShowAsChildless(TreeNode& parent);
    void ShowSelected();

    SessionState& m_session;
    ItemTreeView& m_view;
    ItemDetailsView& m_details;
    ShellView& m_shell;
    Commands& m_commands;
    ItemTree& m_tree;
    ItemInfo* m_info = nullptr;
    bool m_autoSaveOn = true;
    qint64 m_newLinkedItem = 0; ///< to be linked when the editor of its title has closed; 0: none
};

} // namespace qb
