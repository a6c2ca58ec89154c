#include "conflicts/ConflictSolver.h"

#include "conflicts/ConflictOrigin.h"
#include "platform/system/Prompts.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

bool ConflictSolver::Load()
{
    auto info = Prompts::Current().InformUser(u"Trying to resolve problems automaticaly. Please wait..."_s);
    AutomaticResolveProblems(OwnLibrary(), &m_settled);
    ReadItems();
    m_count = int(m_items.size());
    if (m_items.empty()) {
        info.reset();
        Prompts::Current().MsgBox({.Text = u"All conflicts were resolved automaticaly."_s,
                                   .Caption = u"All problems resolved"_s,
                                   .Icon = MsgBoxIcon::Information});
        return false;
    }
    m_number = 1;
    SetSince(LastCommonMoment(OwnLibrary()));
    Show(m_items[m_place]);
    return true;
}

void ConflictSolver::ReadItems()
{
    m_items.clear();
    m_place = 0;
    if (!OwnLibrary().TableExists(u"TempItems"_s))
        return;
    Statement rows = OwnLibrary().Query(u"SELECT ID FROM TempItems ORDER BY rowid"_s);
    while (rows.Step()) {
        if (!m_only || *m_only == rows.Long(0))
            m_items.push_back(rows.Long(0));
    }
}

QString ConflictSolver::StatusText() const
{
    return u"Conflict No. %1 of %2"_s.arg(m_number).arg(m_count);
}

// Decisions and moves

bool ConflictSolver::Decide(int which)
{
    const qint64 item = m_items[m_place];
    ApplyChosenSides();
    if (!Conflict().KeepItem(which)) {
        Show(m_items[m_place]); // both versions as they are now
        return false;
    }
    Leave();
    m_count -= 1;
    Decided(item);
    return true;
}

bool ConflictSolver::Keep(int which)
{
    if (!HasConflict())
        return false;
    SaveEditedField();
    if (!Decide(which))
        return false;
    AfterDecision();
    return HasConflict();
}

/// The next one takes the place of the one that was decided, at the end the one before.
void ConflictSolver::AfterDecision()
{
    m_items.erase(m_items.begin() + std::ptrdiff_t(m_place));
    if (m_items.empty()) {
        m_number = 0;
        Prompts::Current().MsgBox({.Text = u"All conflicts have been solved."_s,
                                   .Caption = u"All confilicts solved"_s,
                                   .Icon = MsgBoxIcon::Information});
        AllSolved();
        return;
    }
    m_place = std::min(m_place, m_items.size() - 1);
    m_number = int(m_place) + 1;
    Show(m_items[m_place]);
}

int ConflictSolver::KeepAllLikeThis(int which)
{
    if (!HasConflict())
        return 0;
    SaveEditedField();
    auto info = Prompts::Current().InformUser(u"All items that differ like this are decided. Please wait..."_s);
    const std::array<bool, SolverFieldCount> like = FieldsOfConflict();
    int decided = 0;
    for (m_place = 0; m_place < m_items.size();) {
        const bool isLike = Show(m_items[m_place]) && FieldsOfConflict() == like;
        if (!isLike || !Decide(which)) {
            ++m_place;
            continue;
        }
        m_items.erase(m_items.begin() + std::ptrdiff_t(m_place));
        ++decided;
    }
    info.reset();
    m_place = 0;
    if (m_items.empty()) {
        m_items.push_back(0); // that was decided last
        AfterDecision();
    } else {
        m_number = 1;
        Show(m_items[m_place]);
    }
    return decided;
}

bool ConflictSolver::MayLeave(QStringView way)
{
    if (!IsEdited())
        return true;
    return Prompts::Current().MsgBox(
               {.Text = u"The actually displayed record has been changed! You should press one of the coloured buttons "
                        "('Keep New Version' or 'Keep Old Version') to choose which version of the record you want to "
                        "keep and which version to discard.\r\nYou can also cancel all changes and just %1."_s.arg(way),
                .Caption = u"Save changes?"_s,
                .Buttons = MsgBoxButtons::OkCancel})
           == MsgBoxResult::Ok;
}

bool ConflictSolver::MoveNext()
{
    if (!CanMoveNext() || !MayLeave(u"move to the next record"))
        return false;
    ++m_place;
    ++m_number;
    Show(m_items[m_place]);
    return true;
}

bool ConflictSolver::MovePrevious()
{
    if (!CanMovePrevious() || !MayLeave(u"move to the previous record"))
        return false;
    --m_place;
    --m_number;
    Show(m_items[m_place]);
    return true;
}

} // namespace qb
