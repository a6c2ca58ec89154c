#pragma once

#include "exchange/ImportPreview.h"
#include "panels/ItemTreeView.h"
#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "publishing/BranchPublisher.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ShellView.h"

#include <QStringList>
#include <functional>
#include <optional>

namespace qb {

class ItemTree;

/// Branches that go out of the library and come in, as the window's commands do it: what is asked, and what is said
/// of how it went.
class ItemExchange {
public:
    /// Registers the commands. Everything must outlive this.
    ItemExchange(SessionState& session, Commands& commands, ItemTree& tree, ItemTreeView& view, ShellView& shell);

    // Commands
    void mnuExport_Click();
    void mnuImport_Click();
    /// Writes the selected branch for readers; into a folder that is made under the name chosen.
    void ExportForReaders(ReaderForm form);

    /// Runs a work that takes its time, with something to watch it by.
    WatchedRun Watched = RunUnwatched;
    /// Shows what an import would bring; the keys of the branches to be taken in, none for all, or nothing when the
    /// user cancelled.
    Hook<std::optional<QStringList>(const std::vector<PreviewedItem>& items)> ChooseBranches{QStringList()};

private:
    /// The selected item, 0 for the root; nothing where none is selected.
    std::optional<qint64> SelectedItem() const;
    /// What is proposed as a name for the selected node.
    QString ProposedName() const;
    void ImportFrom(const QString& file, qint64 parent);
    void Run(const QString& title, const QString& failure, const std::function<void(Work&)>& body);

    SessionState& m_session;
    ItemTree& m_tree;
    ItemTreeView& m_view;
    ShellView& m_shell;
};

} // namespace qb
