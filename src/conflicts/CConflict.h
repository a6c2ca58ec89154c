#pragma once

#include "conflicts/ConflictVersions.h"
#include "conflicts/DiscardedVersions.h"

#include <QObject>
#include <QStringList>

namespace qb {

/// The two versions of one item, and the decision between them. An object serves one decision.
class CConflict : public QObject, public IDataObject, public ConflictVersions {
    Q_OBJECT

public:
    CConflict() = default;

    /// Loads both versions of an item. Raises 3167 when one of them is not there.
    void Initialize(Library& library, qint64 item);
    /// Where discarded versions go, for tests.
    void SetDiscardInto(DiscardInto into) { m_discardInto = std::move(into); }

    // IDataObject
    QString Key() const override { return m_item.Key(); }
    void Initialise(Library& library, const QString& key) override { Initialize(library, key.toLongLong()); }
    void Delete() override { m_tempItem.Delete(); }
    bool Commit() override; ///< both versions, the library's own first

    /// The version that was changed later; at equal dates the library's own.
    ConflictSide NewerSide();
    /// The version that KeepItem chooses.
    ConflictSide SideOf(int which) { return which == 1 ? NewerSide() : OtherSide(NewerSide()); }

    /// Raises the event of each field in which the versions differ, as they are stored: a difference in looks counts.
    void CompareItems();

    /// The page of this version is kept, whichever version wins.
    void SetPageSide(ConflictSide side) { m_pageSide = side; }

    /// Carries the decision out: 1 keeps the newer version, 2 the older one. All of it counts together, with files and
    /// page, or nothing does; it is dated so that other replicas get it. The version that is discarded is handed on
    /// first. An error is reported; false then, and both versions are as they were. Another program's change of either
    /// since they were loaded is such an error.
    bool KeepItem(int which);

Q_SIGNALS:
    void TitleConflict();
    void DescriptionConflict();
    void InfoConflict();
    void CodeConflict();
    void NotesConflict();
    void UsageConflict();
    void HTMLConflict();
    void FilesConflict();

private:
    friend class ConflictDecision;
    bool FilesDiffer();

    Library* m_library = nullptr;
    std::optional<ConflictSide> m_pageSide; ///< unset: that of the winner
    DiscardInto m_discardInto = IntoRemovedItems();
};

} // namespace qb
