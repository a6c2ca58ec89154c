#pragma once

#include "panels/ItemTreeView.h"
#include "session/ShellView.h"
#include "text/ItemDetailsView.h"

#include <QStringList>
#include <functional>

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

    qint64 Selected = -1;
    qint64 Shown = -1;
    int Focused = 0;
    bool Visible = true;

private:
    TreeNodes m_nodes;
};

/// Writes down what the details panel is told.
class FakeDetailsView : public ItemDetailsView {
public:
    void Initialise(Database* database, CCodeItem* item) override
    {
        HasDatabase = database != nullptr;
        Item = item;
        ++Initialised;
    }
    void TreeReplaced() override { ++Replaced; }
    void SetLocked(bool locked) override { Locked = locked; }
    void SetCodeEnabled(bool has) override { Code = has; }
    void SetNotesEnabled(bool has) override { Notes = has; }
    void SetUsageEnabled(bool has) override { Usage = has; }
    void SetFilesEnabled(bool has) override { Files = has; }
    void SetLinksEnabled(bool has) override { Links = has; }

    bool HasDatabase = false;
    CCodeItem* Item = nullptr; ///< of the last Initialise
    int Initialised = 0;
    int Replaced = 0;
    bool Locked = false;
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
    LanguageChoice AskForLanguage() override { return Language; }
    void EnableMenus(bool enabled) override { MenusEnabled = enabled; }

    QString StatusText, ItemDate, ItemDateTip, ComboToolTip, Text;
    QStringList Aliases;
    int Index = -1;
    LanguageChoice Language;
    bool MenusEnabled = false;
    std::function<void()> ComboClick;
};

} // namespace qb::test
