#include "session/ItemCommands.h"

#include "platform/system/Prompts.h"
#include "removed/Keeping.h"
#include "session/DeletionProgress.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

bool Asked(const QString& text, const QString& caption, MsgBoxResult preset = MsgBoxResult::Yes,
           bool mustAnswer = false)
{
    return Prompts::Current().MsgBox({.Text = text,
                                      .Caption = caption,
                                      .Buttons = MsgBoxButtons::YesNo,
                                      .Icon = MsgBoxIcon::Question,
                                      .Default = preset,
                                      .MustAnswer = mustAnswer})
           == MsgBoxResult::Yes;
}

void Inform(const QString& text, const QString& caption)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = MsgBoxIcon::Information});
}

/// A title stands in one line.
QString InOneLine(const QString& text)
{
    QString line = QString::fromUtf8(text.toUtf8()); // without halves of characters
    for (QChar& character : line) {
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator
            || character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return line.trimmed();
}

} // namespace

ItemCommands::ItemCommands(SessionState& session, ItemTreeView& view, ItemDetailsView& details, ShellView& shell,
                           Commands& commands, ItemTree& tree)
    : m_session(session), m_view(view), m_details(details), m_shell(shell), m_commands(commands), m_tree(tree)
{
    m_tree.SaveItem = std::bind_front(&ItemCommands::SaveItem, this);
    m_details.KeepingDeletedRecord = std::bind_front(&ItemCommands::KeepingDeletedRecord, this);
    m_details.TitleTaken = [this](const QString& id, const QString& title) {
        if (TreeNode* node = m_view.Nodes().Find(id.toLongLong()))
            m_view.Nodes().SetText(*node, title);
    };
    RegisterCommands();
}

void ItemCommands::RegisterCommands()
{
    // They are meant for the item that is shown, not for one that a link mode has come to.
    const auto ofShownItem = [this](const QString& name, void (ItemCommands::*run)()) {
        m_commands.Register(name, [this, name, run] {
            if (CancelLinkMode)
                CancelLinkMode();
            ItemMenuEdit();
            if (m_commands.Get(name).Enabled)
                (this->*run)();
        });
    };
    for (const QString& name : {u"mnuAddCode"_s, u"NEW"_s})
        ofShownItem(name, &ItemCommands::AddCode);
    for (const QString& name : {u"mnuDeleteCode"_s, u"DELETE"_s})
        ofShownItem(name, &ItemCommands::DeleteCodeItem);
    ofShownItem(u"mnuNewSiblingItem"_s, &ItemCommands::mnuNewSiblingItem_Click);
    ofShownItem(u"mnuRename"_s, &ItemCommands::mnuRename_Click);
    m_commands.Register(u"mnuKeepItem"_s, this, &ItemCommands::mnuKeepItem_Click);
    m_commands.Register(u"mnuSaveItem"_s, this, &ItemCommands::mnuSaveItem_Click);
    m_commands.Register(u"mnuAutoSaveItem"_s, [this] { SetAutoSaveOn(!m_autoSaveOn); });
    m_commands.Register(u"mnuRemoveDeletedItems"_s, this, &ItemCommands::mnuRemoveDeletedItems_Click);
}

/// What a click in a link mode names may be an item that takes no part in it; true when that was told.
bool ItemCommands::TellOfBar(ItemChange change, const TreeNode& node)
{
    const Bar bar = WhatBars(change, StandingOf(m_session, node));
    if (bar == Bar::FileGone && TellOfGoneFile())
        return true;
    if (bar != Bar::None)
        Inform(SentenceOf(bar) + u'.', ApplicationTitle);
    return bar != Bar::None;
}

// Saving

void ItemCommands::SetAutoSaveOn(bool on)
{
    m_autoSaveOn = on;
    m_commands.SetChecked(u"SAVE"_s, on);
    m_commands.SetChecked(u"mnuAutoSaveItem"_s, on);
}

/// Nothing can be saved while the library's file is not there; true when that is so.
bool ItemCommands::TellOfGoneFile()
{
    if (!m_session.FileHasGone())
        return false;
    if (LibraryHasGone)
        LibraryHasGone();
    return true;
}

bool ItemCommands::SaveItem()
{
    return Guarded(
        ModuleName, u"SaveItem"_s,
        [this] {
            // First: what was typed of a file goes when the item is shown anew.
            if (!m_details.SaveFileDescChanges()) {
                if (!Asked(u"The description of the file could not be saved. Do you wish to go on without it? It will "
                           "be lost."_s,
                           u"Save Item"_s, MsgBoxResult::No))
                    return false;
                m_details.ForgetFileDescChanges();
            }
            if (m_info && !m_info->LeaveKept(m_autoSaveOn))
                return false;
            CCodeItem* item = m_session.oCodeItem.get();
            bool kept = true;
            if (item && item->Unsaved()) {
                const bool gone = TellOfGoneFile();
                const QString question = u"This item has been changed. Do you wish to save the changes?"_s;
                const bool wanted = !gone && (m_autoSaveOn || Asked(question, u"Save Item"_s, MsgBoxResult::Yes, true));
                const std::shared_ptr<void> wait = wanted ? m_shell.WaitCursor() : nullptr;
                kept = !gone && (!wanted || m_details.SetItemChanged(m_autoSaveOn));
                // What could not be written may be all there is of an afternoon's work.
                if (!kept
                    && !Asked(
                        u"The changes of this item could not be saved. Do you wish to go on without them? They will "
                        "be lost."_s,
                        u"Save Item"_s, MsgBoxResult::No))
                    return false;
                // Nobody wants the changes: whatever becomes of the leaving, they are not to be seen as if stored.
                if (gone)
                    m_session.oCodeItem =
                        std::make_unique<CCodeItem>(); // what is stored can't be counted on to be read
                else if (item->Unsaved())
                    m_tree.ShowItem(item->Key().toLongLong());
            }
            m_details.ResetChangedBooleans();
            return true;
        },
        false);
}

void ItemCommands::mnuSaveItem_Click()
{
    CCodeItem* item = m_session.oCodeItem.get();
    if (TellOfGoneFile())
        return;
    m_details.SaveFileDescChanges(false);
    if (m_info)
        m_info->SaveKept();
    if (!item || !item->Unsaved())
        return;
    const std::shared_ptr<void> wait = m_shell.WaitCursor();
    if (item->ItemMarkedForDelete() ? m_details.SetItemChanged(false) : m_details.SaveItem())
        m_tree.ShowKeptDate();
}

void ItemCommands::SaveButtonClicked(int clicks)
{
    Guarded(ModuleName, u"tmrStartTimer_Timer"_s, [&] {
        const bool single = clicks < 2;
        SetAutoSaveOn(single ? m_autoSaveOn : !m_autoSaveOn); // the click has changed the button's look
        if (single || m_autoSaveOn)
            mnuSaveItem_Click();
    });
}

// Adding and renaming

QString ItemCommands::ParentKeyOf(const TreeNode& node) const
{
    return node.IsRoot() ? u"0"_s : node.Key().mid(1);
}

void ItemCommands::AddCode()
{
    if (TreeNode* node = m_view.SelectedItem())
        AddUnder(*node);
}

void ItemCommands::AddUnder(TreeNode& parent)
{
    Guarded(ModuleName, u"AddCode"_s, [&] {
        m_view.EndLabelEdit(); // of another item
        if (!m_session.CurrentDatabase || TellOfBar(ItemChange::Add, parent) || !SaveItem())
            return;
        const bool links = m_session.Mode != LinkMode::None;
        const bool pureLink = m_session.Mode == LinkMode::OneWayNewTo
                              && Asked(u"Are you creating a 'pure link item'?"_s, u"Pure Link Item?"_s);
        const QString title = pureLink ? m_session.oCodeItem->Title() + u" (LINK)"_s : u"New Code item"_s;
        auto item = std::make_unique<CCodeItem>();
        Transaction transaction(*m_session.CurrentDatabase);
        if (!parent.IsRoot())
            RequireItem(*m_session.CurrentDatabase, parent.Id); // another program may have deleted it
        item->Initialise(*m_session.CurrentDatabase, {});
        item->SetTitle(title);
        if (pureLink)
            item->SetDescription(u"*** LINK ITEM ONLY ***"_s);
        else
            item->SetItemStatus(qint32(ItemStatus::Own));
        item->SetParentKey(ParentKeyOf(parent));
        if (!item->Commit()) {
            ShowSelected(); // as it is stored
            return;
        }
        transaction.Commit();
        if (!parent.IsRoot())
            m_view.Nodes().SetImages(parent, TreeImage::FOLDER, TreeImage::FOLDER);
        TreeNode& node = m_view.Nodes().Insert(item->Key().toLongLong(), title, TreeImage::CHILD, parent);
        m_view.EnsureVisible(node);
        m_view.SelectItem(node);
        if (links)
            return LinkNewItem(node, item->Description(), pureLink);
        m_tree.ShowNewItem(std::move(item));
        m_details.SetCurrentView(DetailsTab::Code);
        if (ItemAdded)
            ItemAdded();
        ItemMenuEdit();
        m_view.StartLabelEdit(node);
    });
}

/// The item that was current stays so; the new one is linked with it once it has its title.
void ItemCommands::LinkNewItem(TreeNode& node, const QString& description, bool pureLink)
{
    if (!pureLink) {
        m_newLinkedItem = node.Id;
        return m_view.StartLabelEdit(node);
    }
    m_view.Nodes().SetTag(node, description);
    m_view.Nodes().PlaceByTitle(node);
    if (AddNewLinkToSelectedItem)
        AddNewLinkToSelectedItem(node.Text());
}

/// The new item has nothing in it yet, and nobody wants the link that it was made for.
void ItemCommands::TakeBackLinkedItem(TreeNode& node)
{
    Guarded(ModuleName, u"TakeBackLinkedItem"_s, [&] {
        TreeNode* parent = node.Parent;
        DeleteBranch(*m_session.CurrentDatabase, node.Id);
        m_view.RemoveNode(node);
        if (parent)
            ShowAsChildless(*parent);
    });
    if (CancelLinkMode)
        CancelLinkMode();
}

void ItemCommands::LabelEditEnded(TreeNode& node, bool cancelled)
{
    if (cancelled && node.Id == m_newLinkedItem && m_session.Mode != LinkMode::None) {
        m_newLinkedItem = 0;
        return TakeBackLinkedItem(node);
    }
    m_view.Nodes().PlaceByTitle(node); // a new one stood last while its title was typed
    m_view.EnsureVisible(node);
    if (node.Id == std::exchange(m_newLinkedItem, 0) && m_session.Mode != LinkMode::None && AddNewLinkToSelectedItem)
        AddNewLinkToSelectedItem(node.Text());
}

void ItemCommands::tvCodeItems_NodeClick(TreeNode& node)
{
    if (m_session.Mode == LinkMode::None)
        m_tree.TreeViewNodeClick(node);
    else if (MakesNewItem(m_session.Mode))
        AddCode();
    else if (AddNewLinkToSelectedItem)
        AddNewLinkToSelectedItem({});
}

void ItemCommands::mnuNewSiblingItem_Click()
{
    const TreeNode* node = m_view.SelectedItem();
    if (node && node->Parent)
        AddUnder(*node->Parent);
}

void ItemCommands::mnuRename_Click()
{
    TreeNode* node = m_view.SelectedItem();
    if (node && !node->IsRoot())
        m_view.StartLabelEdit(*node);
}

bool ItemCommands::AfterLabelEdit(TreeNode& node, const QString& newText)
{
    return Guarded(
        ModuleName, u"tvCodeItems_AfterLabelEdit"_s,
        [&] {
            const QString title = InOneLine(newText);
            if (!m_session.CurrentDatabase)
                return false;
            if (title.isEmpty()) {
                Inform(u"You must enter some text for a title."_s, ApplicationTitle);
                return false;
            }
            if (title == OrphanedItemsTitle && node.Parent && node.Parent->IsRoot()) {
                Prompts::Current().MsgBox(
                    {.Text = u"You can't create an 'Orphaned Items' folder! This name is reserved for the program."_s,
                     .Caption = u"Reserved Folder Name"_s});
                return false;
            }
            const qint64 id = node.Id;
            const QString key = node.Key();
            // Edits of its texts are of the row as it was; they come before the title.
            if (m_session.oCodeItem && m_session.oCodeItem->Key() == QString::number(id) && !SaveItem())
                return false;
            m_shell.SetStatusText(title);
            RenameItem(*m_session.CurrentDatabase, id, title); // if it can't be, the tree still says what was typed
            m_view.Nodes().SetText(node, title);
            m_view.Nodes().PlaceByTitle(node);
            if (m_session.Mode == LinkMode::None)
                m_tree.SElectCodeItem(key);
            else
                m_newLinkedItem = id; // linked once the editor has closed
            return true;
        },
        false);
}

// Deleting and keeping

void ItemCommands::DeleteCodeItem()
{
    Guarded(ModuleName, u"DeleteCodeItem"_s, [this] {
        TreeNode* node = m_view.SelectedItem();
        if (!m_session.CurrentDatabase || (node && node->IsRoot()))
            return;
        if (!node) {
            Prompts::Current().MsgBox({.Text = u"No Selected Record"_s, .Caption = ApplicationTitle});
            return;
        }
        const bool orphan = (m_session.IsMotherReplica() || m_session.IsChildReplica())
                            && ItemTree::OrphanedItem(*node);
        // The rows decide what goes: others may have added some that the tree does not show.
        const std::vector<qint64> branch = BranchOf(*m_session.CurrentDatabase, node->Id);
        const QString question = branch.size() <= 1 ? u"Delete selected item?"_s
                                                    : u"Delete selected item and all child records?"_s;
        if (Asked(question, u"Delete Stored Item"_s, MsgBoxResult::No))
            DeleteNode(*node, branch, orphan);
    });
}

void ItemCommands::DeleteNode(TreeNode& node, const std::vector<qint64>& branch, bool orphan)
{
    TreeNode* parent = node.Parent;
    const std::shared_ptr<void> wait = m_shell.WaitCursor();
    Library& library = *m_session.CurrentDatabase;
    Kept(library, RemovalKind::DeletedByUser, u"Items deleted"_s, [&](Keeping& keeping) {
        DeletionProgress deletion(m_shell, branch.size());
        DeleteBranch(library, node.Id, deletion, keeping);
    });
    const bool isShown = m_session.oCodeItem
                         && std::find(branch.begin(), branch.end(), m_session.oCodeItem->Key().toLongLong())
                                != branch.end();
    if (isShown) { // edits of what is gone are gone
        m_session.oCodeItem = std::make_unique<CCodeItem>();
        m_details.ForgetFileDescChanges();
    }
    m_view.RemoveNode(node);
    for (const qint64 id : branch) {
        if (TreeNode* below = m_view.Nodes().Find(id)) // elsewhere, in a tree that could not be built whole
            m_view.RemoveNode(*below);
    }
    if (orphan && CheckIfToDeleteOrphanedItemsFolder())
        parent = m_view.Nodes().Root();
    ShowSelected();
    if (parent)
        ShowAsChildless(*parent);
}

void ItemCommands::ShowSelected()
{
    if (const TreeNode* selected = m_view.SelectedItem())
        m_tree.SElectCodeItem(selected->Key());
}

/// A parent that has lost its last child is a plain item.
void ItemCommands::ShowAsChildless(TreeNode& parent)
{
    if (!parent.Children.empty())
        return;
    m_view.SetExpanded(parent, false);
    if (!parent.IsRoot())
        m_view.Nodes().SetImages(parent, TreeImage::CHILD, TreeImage::CHILD);
}

void ItemCommands::mnuKeepItem_Click()
{
    Guarded(ModuleName, u"mnuKeepItem_Click"_s, [this] {
        if (!m_session.CurrentDatabase || !m_session.oCodeItem || m_session.oCodeItem->Key().isEmpty())
            return;
        const std::shared_ptr<void> wait = m_shell.WaitCursor();
        m_session.oCodeItem->SetItemChanged(true);
        if (m_details.SaveItem(true))
            m_tree.ShowKeptDate();
    });
}

void ItemCommands::KeepingDeletedRecord(const QString& id)
{
    Guarded(ModuleName, u"KeepingDeletedRecord"_s, [&] {
        TreeNode& node = m_view.Nodes()[id.toLongLong()];
        TreeImage image = TreeImage::CHILD;
        if (!node.Children.empty())
            image = node.Expanded ? TreeImage::OPENFOLDER : TreeImage::FOLDER;
        m_view.Nodes().SetImages(node, image, node.Children.empty() ? TreeImage::CHILD : TreeImage::OPENFOLDER);
        if (m_view.SelectedItem() == &node)
            m_commands.HideItemMenuItems(false, false);
        m_tree.CheckIfConflictsStillOccur();
    });
}

void ItemCommands::mnuRemoveDeletedItems_Click()
{
    Guarded(ModuleName, u"mnuRemoveDeletedItems_Click"_s, [this] {
        if (!m_session.CurrentDatabase || !SaveItem())
            return;
        RemovedItems removed;
        Kept(*m_session.CurrentDatabase, RemovalKind::RemoveAllDeleted, u"Deleted items removed"_s,
             [&](Keeping& keeping) { removed = RemoveItemsMarkedForDelete(*m_session.CurrentDatabase, {}, keeping); });
        if (removed.Orphans > 0)
            m_tree.Refill(); // what stood below them is in another place
        for (const qint64 id : removed.Items) {
            if (TreeNode* node = m_view.Nodes().Find(id)) // one below another has gone with it
                m_view.RemoveNode(*node);
        }
        m_session.oCodeItem = std::make_unique<CCodeItem>();
        ShowSelected();
        m_tree.CheckIfConflictsStillOccur();
    });
}

bool ItemCommands::CheckIfToDeleteOrphanedItemsFolder()
{
    return Guarded(
        ModuleName, u"CheckIfToDeleteOrphanedItemsFolder"_s,
        [this] {
            const qint64 folder = RemoveEmptyOrphanFolder(*m_session.CurrentDatabase);
            if (folder == 0)
                return false;
            if (m_session.moSettings->DisplaySynchroNotifications()) {
                QString text =
                    u"All orphaned items has either been moved or deleted from the database. The 'Orphaned Items' "
                    "folder "
                    "will be automaticaly removed."_s;
                if (m_tree.WalksProblems())
                    text.prepend(
                        u"However to be able to synchronize this database again, you have to solve also all item "
                        "conflicts "
                        "and decide about deletion of items marked. You can use the 'Conflict Solver' tool from the "
                        "'Tools' "
                        "menu or use the red arrows on the toolbar to move to these problem items one after "
                        "another.\n"_s);
                Inform(text, u"No other orphaned items present"_s);
            }
            if (TreeNode* node = m_view.Nodes().Find(folder))
                m_view.RemoveNode(*node);
            return true;
        },
        false);
}

} // namespace qb
