#pragma once

#include "platform/system/SettingsStore.h"
#include "session/ItemCommands.h"
#include "session/ItemDrag.h"
#include "session/ItemTree.h"
#include "session/LibraryList.h"
#include "support/FakeViews.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

namespace qb::test {

/// The session's controllers over views without a window, with data, settings, clock and
/// prompts of their own. No library is open at first.
struct TestSession {
    TestSession()
    {
        State.moHistory = std::make_unique<CHistory>();
        State.moSettings = std::make_unique<CSettings>([this] { return State.CurrentDatabase.get(); });
        State.moSettings->Initialise();
        Shell.ComboClick = [this] { Libraries.cboDatabase_Click(); };
    }
    TestSession(const TestSession&) = delete;
    TestSession& operator=(const TestSession&) = delete;

    /// Makes and opens a library for the tree alone; the list of libraries does not know it.
    Library& OpenLibrary()
    {
        State.CurrentDatabase = MakeLibrary(Home.Path(QStringLiteral("Bäume und Äste.qbd")), LanguageType::None);
        Shell.Text = QStringLiteral("Ali äs");
        return *State.CurrentDatabase;
    }

    /// Makes a library with one item on the disk; returns its path.
    QString LibraryFile(const QString& name, const QString& item = QStringLiteral("item"))
    {
        const QString path = Home.Path(name);
        AddItem(*MakeLibrary(path, LanguageType::Cpp), 0, item);
        return path;
    }

    static void Store(const QString& section, const QString& key, const QString& value)
    {
        SaveSetting(SettingsApplication, section, key, value);
    }
    static QString StoredList()
    {
        return GetSetting(SettingsApplication, QStringLiteral("Databases"), QStringLiteral("ChosenDatabases"));
    }
    static QString LastDB()
    {
        return GetSetting(SettingsApplication, QStringLiteral("Settings"), QStringLiteral("LastDB"));
    }

    /// Starts with these libraries in the list ("path|alias;" each), the first of them open.
    bool Start(const QString& list)
    {
        Store(QStringLiteral("Databases"), QStringLiteral("ChosenDatabases"), list);
        Store(QStringLiteral("Settings"), QStringLiteral("LastDB"), list.section(u'|', 0, 0));
        return Start();
    }
    /// Starts as the main window does.
    bool Start()
    {
        Libraries.GetLastDBName();
        Libraries.CreateDBArray();
        const bool open = Libraries.SetupDBConnection();
        if (open)
            Tree.FillTree();
        Libraries.EnableControls(open);
        return open;
    }
    QString OpenPath() const { return State.CurrentDatabase ? State.CurrentDatabase->Name() : QString(); }

    TreeNode& Node(const QString& title)
    {
        for (TreeNode& node : View.Nodes().All()) {
            if (node.Text() == title)
                return node;
        }
        throw RuntimeError(ErrorNumber::NodeNotFound, title, QStringLiteral("TestSession"));
    }
    void Select(const QString& title) { View.SelectItem(Node(title)); }
    QString Selected() const { return View.SelectedItem() ? View.SelectedItem()->Text() : QString(); }
    /// Selects a node and clicks on it, as the user does.
    void Click(const QString& title)
    {
        Select(title);
        Tree.TreeViewNodeClick(Node(title));
    }

    /// Titles with their children in brackets, in the tree's order.
    static QString Shape(const std::vector<TreeNode*>& nodes)
    {
        QStringList texts;
        for (const TreeNode* node : nodes)
            texts << node->Text() + (node->Children.empty() ? QString() : u'(' + Shape(node->Children.All()) + u')');
        return texts.join(u' ');
    }
    QString Shape() { return Shape(View.Nodes().TopLevel()); }

    QString Image(const QString& title) { return ImageKey(Node(title).Image); }
    QString ExpandedImage(const QString& title) { return ImageKey(Node(title).ExpandedImage); }
    bool Enabled(const QString& command) const { return CommandStates.Get(command).Enabled; }
    bool Shown(const QString& command) const { return CommandStates.Get(command).Visible; }

    TemporaryHome Home;
    FixedClock Time;
    ScriptedPrompts Script;
    SessionState State;
    FakeTreeView View;
    FakeDetailsView Details;
    FakeShellView Shell;
    Commands CommandStates;
    ItemTree Tree{State, View, Details, Shell, CommandStates};
    ItemCommands Items{State, View, Details, Shell, CommandStates, Tree};
    ItemDrag Drag{State, View, Tree, Items};
    LibraryList Libraries{State, Shell, Details, CommandStates, Tree};
};

} // namespace qb::test
