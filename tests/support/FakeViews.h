#pragma once

#include "panels/ItemTreeView.h"
#include "session/ShellView.h"
#include "store/CCodeItem.h"
#include "text/ItemDetailsView.h"

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

/// Writes down what the details panel is told.
class FakeDetailsView : public ItemDetailsView {
public:
    void Initialise(Library* library, CCodeItem* item) override
    {
        HasDatabase = library != nullptr;
        Item = item;
        Code = Notes = Usage = Files = Links = false;
        if (item)
            Title = item->Title();
        ++Initialised;
    }
    void TreeReplaced() override { ++Replaced; }
    void SetLocked(bool locked) override { IsLocked = locked; }
    bool Locked() const override { return IsLocked; }
    void FormatingInitialize(Library&) override { ++FormatsRead; }
    void SetCodeEnabled(bool has) override { Code = has; }
    void SetNotesEnabled(bool has) override { Notes = has; }
    void SetUsageEnabled(bool has) override { Usage = has; }
    void SetFilesEnabled(bool has) override { Files = has; }
    void SetLinksEnabled(bool has) override { Links = has; }
    void SetCurrentView(DetailsTab tab) override { View = tab; }
    void ColorizeItem() override
    {
        ++Colorized;
        Item->SetItemChanged(true);
    }
    /// The user types a text into the item that is shown.
    void Type(const QString& code)
    {
        Typed = code;
        Item->SetItemChanged(true);
    }
    bool SaveItem(bool keep = false) override
    {
        if (!Item || !Item->Unsaved())
            return true;
        ++Saves;
        if (Typed)
            Item->SetCode(*Typed);
        if (!Item->Commit())
            return false;
        Typed.reset();
        if (keep && KeepingDeletedRecord)
            KeepingDeletedRecord(Item->Key());
        return true;
    }
    bool SetItemChanged(bool automatic) override
    {
        if (Item && Item->Unsaved())
            Automatic = automatic;
        return SaveItem(Item && Item->ItemMarkedForDelete());
    }
    bool SaveFileDescChanges(bool) override { return true; }
    void ForgetFileDescChanges() override {}

    void ResetChangedBooleans() override
    {
        Typed.reset();
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
    std::optional<QString> Typed;
    std::optional<DetailsTab> View;
    bool IsLocked = false;
    bool Code = false, Notes = false, Usage = false, Files = false, Links = false;
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
