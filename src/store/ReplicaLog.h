#pragma once

#include "platform/system/Date.h"

#include <QString>
#include <vector>

namespace qb {

class Database;

/// What happened to a record of a replica.
enum class ReplicaEvent {
    Arrived = 1,   ///< it came from another replica, new or changed, with the date that it has there
    Deleted = 2,   ///< it was deleted, here or by the replica that it came from
    TakenOver = 3, ///< in a child: it came from the mother, and got a date after the synchronization
    Changed = 4,   ///< it was changed here and kept its date, as orphans of a mother do
    Exported = 5,  ///< the changes of this child were written into a file, dated RowDate; no record
    Missing = 6,   ///< in a mother: the replica Origin does not have the item; when it gets it, then as a whole
    Withheld = 7,  ///< in a mother: the replica Origin did not get the item since it waits for a decision; as Missing
};

/// A row of `ReplicaLog`.
struct ReplicaLogEntry {
    ReplicaEvent Event = ReplicaEvent::Deleted;
    QString Table = {};      ///< "Items", "Files", "ItemLinks" or "Pages", by their items; empty for Exported
    qint64 Record = 0;       ///< its ID here; of a link the item that it leads from
    qint64 Second = 0;       ///< of a link the item that it leads to
    qint64 MotherRecord = 0; ///< in a child: what the mother calls Record; 0 where it isn't known
    qint64 MotherSecond = 0; ///< the same of Second
    Date Moment = {};        ///< when it was noted here; what an export after that moment is bound by
    /// The date of the record then: of a deletion its own date, of what was taken over the date that it got here.
    Date RowDate = {};
    QString Origin = {}; ///< `DBID` of the replica that it came from; empty for this one

    friend bool operator==(const ReplicaLogEntry&, const ReplicaLogEntry&) = default;
};

/// The log of a mother or a child: the table `ReplicaLog`, which holds what the columns of its records and the tables
/// of deletions can't tell. It is made when the first child is made (Make); where it is missing, nothing is noted. The
/// store itself notes what a user deletes (Deletions.h) and orphans that are edited. The rest is for those who
/// synchronize: they note what arrives, what is taken over and what is exported, one record by Note or many by one
/// statement of their own, inside the transaction that makes the change. An event of one record in one state is one
/// row, with the last moment, if it is written by INSERT OR REPLACE.
///
/// It is read by statements that join it. With B the bound of an export:
///   - what came from others and is to go on: Event = 1 AND Moment > B AND Origin <> the `DBID` of who gets it;
///   - what was deleted: Event = 2 AND Moment > B. A mother exports RecordID and SecondID, a child MotherRecordID and
///     MotherSecondID where they are above 0; RowDate is the date of the deletion. That has all rows of the tables of
///     deletions, and what was changed after the last synchronization and deleted then;
///   - what a child took over and did not change since: Event = 3 AND RowDate = the date that the record has;
///   - what was changed and kept its date: Event = 4 AND Moment > B;
///   - of items that are exported to a child that lacks them (Event = 6), or did not get them while they waited for a
///     decision (Event = 7), everything.
/// An item that the other side brought back bears its date 0 in RowDate of its arrival.
/// The first statement of the last step of a child is MoveOn, the last one of each synchronization Trim.
class ReplicaLog {
public:
    /// Of a library; @p schema is the name under which it is attached, empty for the main file.
    explicit ReplicaLog(Database& database, const QString& schema = {});

    /// Adds the table where it is missing.
    void Make();
    bool IsThere();
    /// Notes an event, in place of one that differs in its moment only. Nothing without the table.
    void Note(const ReplicaLogEntry& entry);
    /// All rows, in the order of their moments.
    std::vector<ReplicaLogEntry> Entries();
    /// Whether there is such an event of the record.
    bool Has(ReplicaEvent event, const QString& table, qint64 record);

    /// In a child that takes its mother's answer in: what was deleted after the export at @p exported has not been told
    /// yet, and counts as of @p moment, which is later than the mother's stamp.
    void MoveOn(Date exported, Date moment);
    /// What stands for the mother as the Origin of what a child took over, for its own children.
    static QString FromMother() { return QStringLiteral("the mother"); }

    /// Removes what every other replica has got: all before the earliest of the last synchronizations of the children
    /// and, in a child, of its own; everything when there is no other replica any more.
    void Trim();
    /// Empties it, as in the copy that becomes a child.
    void Clear();

private:
    Database* m_database;
    QString m_schema;
    QString m_table; ///< as a statement names it
};

} // namespace qb
