#pragma once

#include "panels/ItemTreeView.h"
#include "session/ShellView.h"
#include "store/CCodeItem.h"
#include "support/WindowlessBox.h"
#include "text/ItemDetailsView.h"
#include "text/ItemEditor.h"

#include <QPointer>
#include <QRegularExpression>
#include <QStringList>
#include <functional>
#include <optional>

namespace qb::test {

/// A tree without a window.
class FakeTreeView : public ItemTreeView {
public:
    TreeNodes& Nodes() override { return m_nodes; }
    TreeNode* SelectedItem() const override { return m_nodes.Find(Selected); }
    void SelectItem(TreeNode& node) override { Selected = node.Id; }
    void EnsureVisible(TreeNode& node) override { Shown = node.Id; }
    void SetExpanded(TreeNode& node, bool expanded) override { node.Expanded = expanded; }
    void FocusTree() override { ++Focused; }
    void SetTreeVisible(bool visible) override { Visible = visible; }
    void StartLabelEdit(TreeNode& node) override { Edited = node.Id; }
    void EndLabelEdit() override { Edited = -1; }
    void RemoveNode(TreeNode& node) override
    {
        TreeNode* parent = node.Parent;
        for (const TreeNode* at = SelectedItem(); at; at = at->Parent) {
            if (at == &node)
                Selected = parent ? parent->Id : -1;
        }
        m_nodes.Remove(node);
    }
    void SetDropHighlight(const TreeNode* node) override { Highlight = node ? node->Id : -1; }
    void ScrollLines(int lines) override { Scrolled += lines; }
    void SetLinkMode(LinkMode mode) override { Mode = mode; }
    bool InPermanentLinkMode() const override { return Permanent; }
    void ClearLinkCombo() override { Links.clear(); }
    void AddNewLinkToCombo(const CLink& link) override { Links << LinkText(link); }
    void UpdateLinkItemInCombo(const CLink& link) override
    {
        const qsizetype index = Links.indexOf(QRegularExpression(
            QStringLiteral("^") + QRegularExpression::escape(link.LinkedItemTitle) + QStringLiteral("[<>]+$")));
        index < 0 ? Links.append(LinkText(link)) : Links.replace(index, LinkText(link));
    }
    void UpdateDescription(const QString& text) override { Description = text; }

    QStringList Links; ///< titles with ">" for a link that leads there, "<>" for both ways
    LinkMode Mode = LinkMode::None;
    bool Permanent = false;
    QString Description;

    qint64 Selected = -1;
    qint64 Shown = -1;
    qint64 Edited = -1;
    qint64 Highlight = -1;
    int Scrolled = 0;
    int Focused = 0;
    bool Visible = true;

private:
    static QString LinkText(const CLink& link)
    {
        return link.LinkedItemTitle
               + (link.Direction == LinkDirection::Both ? QStringLiteral("<>") : QStringLiteral(">"));
    }
    TreeNodes m_nodes;
};

/// A details panel without a window: the real editor over boxes without one. Writes down what it is told.
class FakeDetailsView : public ItemDetailsView, private ItemEditorView {
public:
    FakeDetailsView()
    {
        for (const ItemText text : {ItemText::Code, ItemText::Notes, ItemText::Usage})
            Boxes[size_t(text)].Changed = [this, text] { Editor.BoxChanged(text); };
        Editor.KeepingDeletedRecord = [this](const QString& id) {
            if (KeepingDeletedRecord)
                KeepingDeletedRecord(id);
        };
        Editor.TitleTaken = [this](const QString& id, const QString& title) {
            if (TitleTaken)
                TitleTaken(id, title);
        };
    }

    void Initialise(Library* library, CCodeItem* item) override
    {
        HasDatabase = library != nullptr;
        Item = item;
        Code = Notes = Usage = Files = Links = false;
        Editor.Initialise(library, item);
        ++Initialised;
    }
    void TreeReplaced() override
    {
        Editor.TreeReplaced();
        ++Replaced;
    }
    void SetLocked(bool locked) override
    {
        IsLocked = locked;
        Editor.SetLocked(locked);
    }
    bool Locked() const override { return IsLocked; }
    void FormatingInitialize(Library& library) override
    {
        Editor.FormatingInitialize(library);
        ++FormatsRead;
    }
    void SetTabEnabled(DetailsTab tab, bool has) override { Editor.SetTabEnabled(tab, has); }
    void SetCurrentView(DetailsTab tab) override { View = tab; }
    void ColorizeItem() override
    {
        ++Colorized;
        Editor.ColorizeItem();
    }
    /// The user types a text into the item that is shown, in the place of its code.
    void Type(const QString& code)
    {
        WindowlessBox& box = Boxes[size_t(ItemText::Code)];
        box.SetSelStart(0);
        box.SetSelLength(box.Text().size());
        box.TypeText(code);
    }
    /// What was typed and is not saved.
    std::optional<QString> Typed() const
    {
        return Editor.Changed(ItemText::Code) ? std::optional(Boxes[size_t(ItemText::Code)].Text()) : std::nullopt;
    }
    bool SaveItem(bool keep = false) override
    {
        return Counted([&] { return Editor.SaveItem(keep); });
    }
    bool SetItemChanged(bool automatic) override
    {
        if (Item && Item->Unsaved())
            Automatic = automatic;
        return Counted([&] { return Editor.SetItemChanged(automatic); });
    }
    bool SaveFileDescChanges(bool) override { return true; }
    void ForgetFileDescChanges() override {}

    void ResetChangedBooleans() override
    {
        Editor.ResetChangedBooleans();
        ++Resets;
    }

    void Navigate(const QString& address) override { Addresses << address; }

    QStringList Addresses; ///< that were navigated to
    bool HasDatabase = false;
    QPointer<CCodeItem> Item; ///< of the last Initialise
    QString Title;
    int Initialised = 0;
    int Replaced = 0;
    int FormatsRead = 0;
    int Colorized = 0;
    int Saves = 0;
    int Resets = 0;
    bool Automatic = false;
    std::optional<DetailsTab> View;
    bool IsLocked = false;
    bool Code = false, Notes = false, Usage = false, Files = false, Links = false;

    CTextFormat Formatter;
    std::array<WindowlessBox, 3> Boxes;
    ItemEditor Editor{Formatter, {&Boxes[0], &Boxes[1], &Boxes[2]}, *this};

private:
    bool Counted(const std::function<bool()>& save)
    {
        const bool waits = Item && Item->Unsaved();
        const bool saved = save();
        Saves += waits && saved && Item && !Item->Unsaved() ? 1 : 0;
        return saved;
    }

    // ItemEditorView
    void ShowFacts(CCodeItem& item) override { Title = item.Title(); }
    void ShowLinks() override {}
    void ShowTabEnabled(DetailsTab tab, bool has) override
    {
        bool* const flags[] = {nullptr, &Code, &Notes, &Usage, &Files, &Links};
        if (bool* flag = flags[size_t(tab)])
            *flag = has;
    }
    std::optional<DetailsTab> CurrentView() const override { return View; }
    void DisplayTabWithContent() override { View = Editor.TabToShow(View.value_or(DetailsTab::Code)); }
    void ShowStage(const QString&) override {}
};

/// A main window without a window. A change of the combo box's index runs ComboClick, as a real
/// one does.
class FakeShellView : public ShellView {
public:
    void SetStatusText(const QString& text) override { StatusText = text; }
    void SetItemDate(const QString& text, const QString& tip) override
    {
        ItemDate = text;
        ItemDateTip = tip;
    }
    int ComboCount() const override { return int(Aliases.size()); }
    int ComboIndex() const override { return Index; }
    void SetComboIndex(int index) override
    {
        const bool changed = index != Index;
        Index = index;
        Text = Aliases.value(index);
        if (changed && index >= 0 && ComboClick)
            ComboClick();
    }
    QString ComboText() const override { return Text; }
    void SetComboText(const QString& text) override
    {
        Index = -1;
        Text = text;
    }
    void InsertComboEntry(int index, const QString& alias) override { Aliases.insert(index, alias); }
    void RemoveComboEntry(int index) override
    {
        Aliases.removeAt(index);
        if (index == Index)
            Index = -1;
        else if (index < Index)
            --Index;
    }
    void SetComboToolTip(const QString& tip) override { ComboToolTip = tip; }
    void ShowProgressStatusBar(int value, int maximum) override { Progress << std::pair(value, maximum); }
    std::shared_ptr<void> WaitCursor() override
    {
        ++Waited;
        return {};
    }
    void EnableEditing(bool enabled) override { EditingEnabled = enabled; }
    LanguageChoice AskForLanguage() override { return Language; }
    void EnableMenus(bool enabled) override { MenusEnabled = enabled; }

    QString StatusText, ItemDate, ItemDateTip, ComboToolTip, Text;
    QStringList Aliases;
    int Index = -1;
    LanguageChoice Language;
    bool MenusEnabled = false;
    bool EditingEnabled = true;
    int Waited = 0;
    QList<std::pair<int, int>> Progress;
    std::function<void()> ComboClick;
};

} // namespace qb::test
