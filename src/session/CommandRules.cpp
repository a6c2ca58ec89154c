#include "session/CommandRules.h"

#include "panels/TreeNodes.h"

#include <QHash>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Standing = const ItemStanding&;

bool Always(Standing)
{
    return true;
}

struct CommandRule {
    const char* Name;
    ItemChange Change;
    bool (*Fits)(Standing standing) = Always; ///< the library's part in replication
};

constexpr CommandRule Rules[] = {
    {"mnuAddCode", ItemChange::Add},
    {"NEW", ItemChange::Add},
    {"mnuNewSiblingItem", ItemChange::AddBeside},
    {"mnuRename", ItemChange::Rename},
    {"mnuDeleteCode", ItemChange::Delete},
    {"DELETE", ItemChange::Delete},
    {"mnuImport", ItemChange::Import},
    {"mnuBookMark", ItemChange::Bookmark},
    {"BOOKMARK", ItemChange::Bookmark},
    {"mnuRemoveBookMark", ItemChange::Write},
    {"mnuRemoveAllItem", ItemChange::Write},
    {"mnuEditBookMark", ItemChange::Write},
    {"mnuRenameGroup", ItemChange::Write},
    {"mnuRemoveGroup", ItemChange::Write},
    {"mnuKeepItem", ItemChange::Keep},
    {"mnuResolveItem", ItemChange::Resolve},
    {"mnuUndoReplace", ItemChange::Write},
    {"mnuSaveItem", ItemChange::Write},
    {"SAVE", ItemChange::Write},
    {"mnuColorize", ItemChange::Edit},
    {"COLORIZE", ItemChange::Edit},
    {"mnuAddLink", ItemChange::Link},
    {"mnuAddLinkOneWayFromSelItem", ItemChange::Link},
    {"mnuAddLinkToSelectedItem", ItemChange::Link},
    {"mnuAddLinkOneWayNewFromSelItem", ItemChange::Link},
    {"mnuAddLinkOneWayNewToSelItem", ItemChange::Link},
    {"mnuAddLinkTwoWayItem", ItemChange::Link},
    {"mnuAddLinkTwoWayNew", ItemChange::Link},
    {"LINK_MODE", ItemChange::Link},
    {"LINK_REMOVE", ItemChange::Edit},
    {"mnuWebEditPage", ItemChange::EditUnasked},
    {"mnuWebInsertPicture", ItemChange::EditUnasked},
    {"mnuWebInsertLink", ItemChange::EditUnasked},
    {"mnuWebDeletePage", ItemChange::EditUnasked},
    {"PRINT", ItemChange::Print},
    {"mnuFilePrint", ItemChange::Print},
    {"mnuConflictSolver", ItemChange::Write, [](Standing s) { return s.IsMother; }},
    {"mnuRemoveDeletedItems", ItemChange::Write, [](Standing s) { return s.IsMother; }},
    {"mnuUndoThisSessionChanges", ItemChange::Write},
    {"mnuDBToolsCreateReplicaItem", ItemChange::Write, [](Standing s) { return !s.IsChild; }},
    {"mnuDBToolsExportChangesItem", ItemChange::Write, [](Standing s) { return s.IsChild && !s.Exported; }},
    {"mnuExportAgainItem", ItemChange::Write, [](Standing s) { return s.IsChild && s.Exported; }},
    {"mnuDBToolsSynchronizeItem", ItemChange::Write,
     [](Standing s) { return s.IsMother || (s.IsChild && s.Exported); }},
    {"mnuSynchronizationReportsItem", ItemChange::Read, [](Standing s) { return s.IsMother || s.IsChild; }},
    {"mnuHandOutAgainItem", ItemChange::Read, [](Standing s) { return s.IsMother; }},
    {"mnuUndoSynchronization", ItemChange::Write, [](Standing s) { return s.IsMother || s.IsChild; }},
    {"mnuDBToolsForgetReplicaItem", ItemChange::Write, [](Standing s) { return s.IsMother; }},
};

const QHash<QString, const CommandRule*>& RulesByName()
{
    static const QHash<QString, const CommandRule*> rules = [] {
        QHash<QString, const CommandRule*> all;
        for (const CommandRule& rule : Rules)
            all.insert(QString::fromLatin1(rule.Name), &rule);
        return all;
    }();
    return rules;
}

} // namespace

QStringList CommandRules::Names()
{
    QStringList names;
    for (const CommandRule& rule : Rules)
        names << QString::fromLatin1(rule.Name);
    return names;
}

bool CommandRules::Allows(const QString& command, const ItemStanding& standing)
{
    const CommandRule* rule = RulesByName().value(command);
    return !rule || (rule->Fits(standing) && !IsBarred(rule->Change, standing));
}

ItemStanding StandingOf(const SessionState& session)
{
    return {.NoLibrary = !session.CurrentDatabase,
            .FileGone = session.FileHasGone(),
            .ReadOnly = session.IsReadOnly(),
            .IsChild = session.IsChildReplica(),
            .IsMother = session.IsMotherReplica(),
            .Exported = !session.LastExportedDate().IsNone(),
            .Root = true};
}

ItemStanding StandingOf(const SessionState& session, const TreeNode& node)
{
    ItemStanding standing = StandingOf(session);
    standing.Root = node.IsRoot();
    standing.Deleted = node.Image == TreeImage::DELETED_ITEM;
    standing.Conflict = node.Image == TreeImage::CONFLICT_ITEM;
    standing.Waiting = node.Image == TreeImage::CONFLICT_ITEM_INFO;
    standing.Orphan = IsOrphaned(node);
    standing.OrphanUnderRoot = standing.Orphan && node.Parent->IsRoot();
    standing.Marked = standing.Deleted || standing.Waiting;
    return standing;
}

bool IsOrphaned(const TreeNode& node)
{
    if (node.IsRoot() || !node.Parent)
        return false;
    const TreeNode* top = &node; // the ancestor directly under the root
    while (!top->Parent->IsRoot() && top->Parent->Parent)
        top = top->Parent;
    // Its title decides by how it begins; the root's text, which is the user's, must not.
    return IsOrphanFolderTitle(top->Text());
}

} // namespace qb
