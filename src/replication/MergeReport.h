#pragma once

#include "platform/system/Date.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

class Database;

/// What a merge did to a record.
enum class MergeEvent {
    ItemAdded,
    ItemChanged,
    ItemMoved,
    ItemDeleted,
    ItemOrphaned, ///< it lost its parent, and stands below the folder of orphaned items
    ItemKept,     ///< deleted on the other side, and kept since it was changed here
    ItemRegained, ///< deleted here, and brought back since the other side had changed it
    Conflict,     ///< changed on both sides; the version that lost waits for the solver
    SetAside,     ///< a version, or a part of one, that counts for nothing; the detail tells what it was
    FileAdded,
    FileChanged, ///< its description
    FileDeleted,
    PageChanged,
    LinkAdded,
    LinkDeleted,
};

/// The name of an event, as programs read it: "item-added".
QString NameOf(MergeEvent event);
/// The same for people: "Added".
QString LabelOf(MergeEvent event);

/// One line of a report.
struct MergeLine {
    MergeEvent Event = MergeEvent::ItemChanged;
    qint64 Item = 0; ///< which it is about, by its ID in this library
    QString Title = {};
    QString Detail = {}; ///< what else there is to know; may be empty

    friend bool operator==(const MergeLine&, const MergeLine&) = default;
};

/// A fault in the data that a merge went on over, as it is told.
struct MergeFault {
    QString Text;
    QString Caption;

    friend bool operator==(const MergeFault&, const MergeFault&) = default;
};

/// What a merge did, or would do.
struct MergeReport {
    bool AsMother = false; ///< the second step; else the third
    QString Replica = {};  ///< what the other side is called: a child's description, the path of the mother
    QString File = {};     ///< the synchronization file
    Date Made = {};
    Date Since = {}; ///< of a mother's: when both sides were last the same before
    std::vector<MergeLine> Lines = {};
    std::vector<MergeFault> Faults = {};

    qint64 CountOf(MergeEvent event) const;
    /// "3 items changed, 1 conflict": what there is, in one line; says so when there is nothing.
    QString Summary() const;

    friend bool operator==(const MergeReport&, const MergeReport&) = default;
};

/// Keeps a report with the library, inside the transaction of the merge; the last ten stay.
void KeepReport(Database& library, const MergeReport& report);

/// The reports of the last merges, the latest first, at most @p most of them.
std::vector<MergeReport> ReadReports(Database& library, int most = 10);

} // namespace qb
