#include "session/PendingConflicts.h"

#include "conflicts/AutomaticResolution.h"
#include "platform/system/Prompts.h"
#include "session/ItemTree.h"
#include "store/CDBCreate.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

PendingConflicts::PendingConflicts(SessionState& session, Commands& commands, ItemTree& tree)
    : m_session(session), m_tree(tree)
{
    commands.Register(u"mnuConflictSolver"_s, this, &PendingConflicts::mnuConflictSolver_Click);
    commands.Register(u"mnuResolveItem"_s, this, &PendingConflicts::mnuResolveItem_Click);
}

bool PendingConflicts::HasConflicts() const
{
    return m_session.CurrentDatabase && m_session.CurrentDatabase->TableExists(u"TempItems"_s)
           && !m_session.CurrentDatabase->QueryValue(u"SELECT 1 FROM TempItems LIMIT 1"_s).IsNull();
}

void PendingConflicts::mnuConflictSolver_Click()
{
    Guarded(u"MainForm"_s, u"mnuConglictSolver_Click"_s, [this] { Solve({}); });
}

void PendingConflicts::mnuResolveItem_Click()
{
    Guarded(u"MainForm"_s, u"mnuResolveItem_Click"_s, [this] { Solve(m_session.CurrentItemKey.mid(1).toLongLong()); });
}

/// The solver may decide about the item that is shown, so that is saved first and read anew afterwards.
void PendingConflicts::Solve(std::optional<qint64> item)
{
    if (!m_session.CurrentDatabase || !m_tree.SaveItem())
        return;
    const QList<qint64> decided = ShowSolver(*m_session.CurrentDatabase, item);
    const qint64 shown = m_session.CurrentItemKey.mid(1).toLongLong();
    m_tree.Reload();
    if (shown > 0 && decided.contains(shown))
        m_tree.ShowItem(shown);
    m_tree.CheckIfConflictsStillOccur();
}

bool PendingConflicts::SolveAll()
{
    for (;;) {
        Solve({});
        if (!HasConflicts())
            return true;
        const MsgBoxResult answer = Prompts::Current().MsgBox(
            {.Text = u"You haven't resolved all conflicts. Do you want to retry?"_s,
             .Caption = u"Conflicts still exist"_s,
             .Buttons = MsgBoxButtons::RetryCancel,
             .Icon = MsgBoxIcon::Question,
             .Default = MsgBoxResult::Cancel});
        if (answer != MsgBoxResult::Retry)
            return false;
    }
}

bool PendingConflicts::ResolvePendingConflicts()
{
    if (!HasConflicts())
        return true;
    const MsgBoxResult answer = Prompts::Current().MsgBox(
        {.Text = u"You can not synchronize when there are still unresolved item conflicts in the currently opened "
                 "database.\r\nYou first have to resolve all conflicts, or the program can clear all conflicts, which "
                 "would allow you to continue with the synchronization you just attempting to do.\r\nDo you want to "
                 "resolve all conflicts first?\r\nATTENTION!: If you select 'No', all conflict information will be "
                 "discarded and you will not be able to check and possibly alter the conflict information any more for "
                 "the previous synchronization."_s,
         .Caption = u"Unresolved conflicts"_s,
         .Buttons = MsgBoxButtons::YesNoCancel,
         .Icon = MsgBoxIcon::Exclamation,
         .Default = MsgBoxResult::Cancel,
         .MustAnswer = true});
    switch (answer) {
    case MsgBoxResult::Yes:
        return SolveAll() && CDBCreate().RemoveTemporaryTablesFromMainDB(*m_session.CurrentDatabase);
    case MsgBoxResult::No:
        return DiscardAll();
    default:
        return false;
    }
}

bool PendingConflicts::DiscardAll()
{
    return Guarded(u"MainForm"_s, u"ResolvePendingConflicts"_s, [this] {
        DiscardAllConflicts(*m_session.CurrentDatabase);
        m_tree.Reload();
        m_tree.CheckIfConflictsStillOccur();
    });
}

} // namespace qb
