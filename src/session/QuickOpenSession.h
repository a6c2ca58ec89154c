#pragma once

#include "finder/QuickRow.h"
#include "panels/ItemTreeView.h"
#include "platform/system/Hook.h"
#include "session/Commands.h"
#include "session/ItemTree.h"
#include "session/SessionState.h"
#include "text/ItemEditor.h"

namespace qb {

/// The session as quick open sees it: its items, the commands that can run now, the code that is shown, and how to get
/// to each of them.
class QuickOpenSession : public QuickOpenHost {
public:
    QuickOpenSession(SessionState& session, ItemTreeView& view, ItemEditor& editor, ItemTree& tree, Commands& commands);

    // QuickOpenHost
    Library* OpenLibrary() override { return m_session.CurrentDatabase.get(); }
    TreeNodes& Nodes() override { return m_view.Nodes(); }
    qint64 CurrentItem() override;
    std::vector<qint64> RecentItems() override;
    std::vector<QuickCommand> RunnableCommands() override;
    std::optional<ShownCode> CurrentCode() override;
    std::optional<RichText> UnsavedCode(qint64 item) override;
    void OpenItem(qint64 item, bool inTree) override;
    void OpenPlace(qint64 item, const FindPlace& place) override;
    void GoToLine(int line) override;
    void RunCommand(const QString& name) override { m_commands.Run(name); }

    // What the window does

    /// The states of commands that menus bring up to date when they open.
    Hook<void()> UpdateCommands;
    /// Whether the window offers a command: no menu that it stands in is shut.
    Hook<bool(const QString& name)> IsOffered{true};
    /// The key of a command, as a user reads it.
    Hook<QString(const QString& name)> KeyOf;
    /// The tree is to be seen, whole.
    Hook<void()> ShowTree;
    /// The focus goes to the text of the item.
    Hook<void()> FocusText;
    /// A tab comes to the front.
    Hook<void(DetailsTab tab)> ShowTab;
    /// A stored file of the item is selected, and the focus goes to the list of files.
    Hook<void(qint64 file)> ShowFile;
    /// The caret goes to a line of the code on the tab that is shown.
    Hook<void(int line)> ShowLine;

private:
    bool GoTo(qint64 item);

    SessionState& m_session;
    ItemTreeView& m_view;
    ItemEditor& m_editor;
    ItemTree& m_tree;
    Commands& m_commands;
};

} // namespace qb
