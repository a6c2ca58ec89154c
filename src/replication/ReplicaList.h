#pragma once

#include "replication/ExportRows.h"

#include <QString>
#include <vector>

namespace qb {

/// A child that a mother knows.
struct ChildLine {
    QString Identity;
    QString Description;
    Date LastSynchronized;
    ExportCounts Waiting; ///< what the mother still has for it

    /// In words; says so when there is nothing.
    QString WaitingText() const;
};

/// The children of a mother, those first that were given out first.
std::vector<ChildLine> ChildrenOf(Database& mother);

/// Strikes off all children that were last synchronized at that moment, of which there may be two, and what was kept
/// for them alone. Returns how many there were.
qint64 ForgetChildren(Database& mother, Date lastSynchronized);

/// What is asked before a child is struck off: @p count go with it, itself included.
QString ForgetQuestion(qint64 count);

/// The list of a mother's children on the screen: what is shown, asked and done, apart from any window.
class ReplicaList {
public:
    /// @p mother must outlive the object.
    explicit ReplicaList(Database& mother) : m_mother(mother), m_lines(ChildrenOf(mother)) {}

    const std::vector<ChildLine>& Lines() const { return m_lines; }
    /// Strikes the child at @p index off after a question. True when the list is to be closed, since it is empty now,
    /// which has been told.
    bool Forget(size_t index);

private:
    Database& m_mother;
    std::vector<ChildLine> m_lines;
};

} // namespace qb
