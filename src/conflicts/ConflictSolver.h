#pragma once

#include "conflicts/AutomaticResolution.h"
#include "conflicts/ShownConflict.h"
#include "platform/system/Hook.h"

#include <optional>
#include <vector>

namespace qb {

/// The walk through the conflicts of a library and the decisions on the way, without a window.
class ConflictSolver : public ShownConflict {
public:
    /// The library must outlive the solver.
    explicit ConflictSolver(Library& library) : ShownConflict(library) {}

    /// For the item alone instead of all conflicts.
    void SetOnly(qint64 item) { m_only = item; }
    /// An item is no conflict any more: its node gets its usual image.
    Hook<void(qint64 item)> Decided;
    /// All conflicts are solved: whether any still occur is to be looked at.
    Hook<void()> AllSolved;

    /// Resolves what can be without the user, and shows the first of the rest. False when nothing is left; the user has
    /// been told so.
    bool Load();
    /// What needed nobody, and what of it was dropped.
    const AutomaticResolution& Settled() const { return m_settled; }

    // Where it stands
    int Count() const { return m_count; }
    int Number() const { return m_number; }
    QString StatusText() const; ///< "Conflict No. 1 of 3"
    bool CanMoveNext() const { return m_place + 1 < m_items.size(); }
    bool CanMovePrevious() const { return m_place > 0 && !m_items.empty(); }
    // Decisions and moves
    /// 1 keeps the newer version, 2 the older one. False when that failed, or when it was the last conflict.
    bool Keep(int which);
    /// Keeps it in all conflicts that differ in the same fields as this one. Returns how many were decided.
    int KeepAllLikeThis(int which);
    bool MoveNext();
    bool MovePrevious();
    /// Asks about what was edited, before the solver goes.
    bool MayClose() { return MayLeave(u"close the solver"); }

private:
    void ReadItems();
    bool DisplayItem();
    bool MayLeave(QStringView way);
    bool Decide(int which);
    void AfterDecision();

    AutomaticResolution m_settled;
    std::optional<qint64> m_only;
    std::vector<qint64> m_items;
    size_t m_place = 0;
    int m_count = 0;
    int m_number = 0;
};

} // namespace qb
