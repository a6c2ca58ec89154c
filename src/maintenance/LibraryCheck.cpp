#include "maintenance/LibraryCheck.h"

#include "maintenance/StatementPulse.h"
#include "platform/dao/StatementLimit.h"
#include "platform/system/Paths.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFileInfo>
#include <optional>
#include <unordered_map>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

using Faults = std::vector<LibraryFault>;
using Kind = LibraryFault::Kind;

constexpr std::chrono::seconds DamagedFileTime{5};

void ReadStructure(Database& database, Faults& faults)
{
    Statement rows = database.Query(u"PRAGMA integrity_check"_s);
    while (rows.Step()) {
        if (rows.Text(0) != u"ok"_s)
            faults.push_back({Kind::Damage, {}, 0, u"The file is damaged: %1."_s.arg(rows.Text(0))});
    }
    Statement references = database.Query(u"SELECT \"table\", rowid, parent FROM pragma_foreign_key_check"_s);
    while (references.Step())
        faults.push_back({Kind::Damage, references.Text(0), references.Long(1),
                          u"The row %1 of %2 refers to a row of %3 that does not exist."_s.arg(references.Long(1))
                              .arg(references.Text(0), references.Text(2))});
}

/// Most of it are single steps of the engine.
void CheckStructure(Database& database, Work& work, Faults& faults)
{
    RunPulsed(database, work, [&] { ReadStructure(database, faults); });
}

bool CheckTables(Database& database, Faults& faults)
{
    bool complete = true;
    for (const QString& table : {u"BookmarkGroups"_s, u"Bookmarks"_s, u"ChildCopies"_s, u"DBVersion"_s, u"Files"_s,
                                 u"ItemLinks"_s, u"Items"_s, u"Keywords"_s, u"Properties"_s}) {
        if (database.TableExists(table))
            continue;
        faults.push_back({Kind::MissingTable, table, 0, u"The table %1 is missing."_s.arg(table)});
        complete = false;
    }
    return complete;
}

void CheckProperties(Database& database, Faults& faults)
{
    // A count of all rows is one step, which no limit ends.
    const qint64 rows = database.QueryValue(u"SELECT sum(1) FROM Properties"_s).ToLong();
    if (rows != 1)
        faults.push_back(
            {Kind::MissingProperties, u"Properties"_s, 0, u"Properties has %1 rows; a library has one."_s.arg(rows)});
}

/// The rules of the language are one row, in a table that is there only if there are any.
void CheckRules(Database& database, Faults& faults)
{
    const QString table = u"LanguageRules"_s;
    const qint64 rows = database.TableExists(table)
                            ? database.QueryValue(u"SELECT sum(1) FROM LanguageRules"_s).ToLong()
                            : 0;
    if (rows > 1)
        faults.push_back({Kind::Damage, table, 0, u"LanguageRules has %1 rows; the first one counts."_s.arg(rows)});
}

/// A replica that has no log doesn't tell the others of all that is deleted in it.
void CheckReplicaLog(Database& database, Faults& faults)
{
    const QString table = u"ReplicaLog"_s;
    const ReplicaState state = ReadReplicaState(database);
    if (!database.TableExists(table)) {
        if (state.IsChild || state.IsMother)
            faults.push_back({Kind::MissingTable, table, 0, u"The table %1 is missing."_s.arg(table)});
        return;
    }
    Statement rows = database.Query(
        u"SELECT rowid, Event FROM ReplicaLog WHERE Event NOT BETWEEN 1 AND 5 OR (Event < 5) <> (OfTable IN ('Items', "
        "'Files', 'ItemLinks'))"_s);
    while (rows.Step())
        faults.push_back(
            {Kind::Damage, table, rows.Long(0), u"The row %1 of %2 tells of no event."_s.arg(rows.Long(0)).arg(table)});
}

struct Item {
    qint64 Parent;
    enum { Unknown, OnTheWay, ReachesTop } State = Unknown;
};
using Items = std::unordered_map<qint64, Item>;

QString TitleOf(Database& database, qint64 id)
{
    return database.QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {id}).ToText();
}

/// Follows the parents of @p id up to an item that is known to reach the top (or to end, lost or
/// in a cycle, where that was reported already); returns an item of a cycle that was met anew, or 0.
qint64 FollowParents(Items& items, qint64 id)
{
    std::vector<Item*> way;
    qint64 cycle = 0;
    for (qint64 at = id;;) {
        const auto found = items.find(at);
        if (found == items.end() || found->second.State == Item::ReachesTop)
            break;
        if (found->second.State == Item::OnTheWay) {
            cycle = at;
            break;
        }
        found->second.State = Item::OnTheWay;
        way.push_back(&found->second);
        at = found->second.Parent;
    }
    for (Item* item : way)
        item->State = Item::ReachesTop; // seen; what is wrong on this way has been reported
    return cycle;
}

void CheckTree(Database& database, Faults& faults)
{
    Items items;
    Statement rows = database.Query(u"SELECT ID, ParentID FROM Items"_s);
    while (rows.Step())
        items.emplace(rows.Long(0), Item{rows.Long(1)});
    std::vector<qint64> ids;
    for (const auto& [id, item] : items)
        ids.push_back(id);
    std::sort(ids.begin(), ids.end());
    for (const qint64 id : ids) {
        const qint64 parent = items.at(id).Parent;
        if (parent != 0 && !items.contains(parent))
            faults.push_back({Kind::LostParent, u"Items"_s, id,
                              u"The item %1 '%2' has the parent %3, which does not exist."_s.arg(id)
                                  .arg(TitleOf(database, id))
                                  .arg(parent)});
        const qint64 cycle = FollowParents(items, id);
        if (cycle == 0)
            continue;
        qint64 at = cycle;
        do { // each row of the cycle is named
            faults.push_back({Kind::Cycle, u"Items"_s, at,
                              u"The item %1 '%2' stands below itself."_s.arg(at).arg(TitleOf(database, at))});
            at = items.at(at).Parent;
        } while (at != cycle);
    }
}

void CheckStoredFile(Database& database, const Statement& row, Faults& faults)
{
    const qint64 id = row.Long(0);
    const QString title = row.Text(1);
    const QString folder = FilesFolderOf(database.Name());
    const QString path = StoredFilePath(folder, id, title);
    const bool isThere = !path.isEmpty() && IsPlainFile(path);
    if (!isThere && IsFilePending(folder, id, title))
        return; // the next opening brings it
    if (!isThere)
        faults.push_back({Kind::MissingFile, u"Files"_s, id,
                          u"The stored file %1 '%2' of the item %3 is missing from '%4'."_s.arg(id)
                              .arg(title)
                              .arg(row.Long(2))
                              .arg(QDir::toNativeSeparators(folder))});
    else if (const qint64 size = QFileInfo(path).size(); size != row.Long(3))
        faults.push_back({Kind::OtherSize, u"Files"_s, id,
                          u"The stored file %1 '%2' of the item %3 has %4 bytes in place of %5."_s.arg(id)
                              .arg(title)
                              .arg(row.Long(2))
                              .arg(size)
                              .arg(row.Long(3))});
}

void CheckStoredFiles(Database& database, Work& work, Faults& faults)
{
    if (const QString foreign = WhoseFoldersAreForeign(database); !foreign.isEmpty()) {
        faults.push_back({Kind::ForeignFolder, QString(), 0, foreign});
        return;
    }
    const qint64 all = database.QueryValue(u"SELECT sum(1) FROM Files"_s).ToLong();
    Statement rows = database.Query(u"SELECT ID, Title, CodeID, FileSize FROM Files ORDER BY ID"_s);
    for (qint64 done = 1; rows.Step(); ++done) {
        CheckStoredFile(database, rows, faults);
        work.Advance(done, all);
        EndUnless(!work.IsCancelled(), u"CheckLibrary"_s);
    }
}

} // namespace

QString FaultName(LibraryFault::Kind kind)
{
    switch (kind) {
    case Kind::Damage:
        return u"damage"_s;
    case Kind::MissingTable:
        return u"missing-table"_s;
    case Kind::MissingProperties:
        return u"missing-properties"_s;
    case Kind::LostParent:
        return u"lost-parent"_s;
    case Kind::Cycle:
        return u"cycle"_s;
    case Kind::ForeignFolder:
        return u"foreign-folder"_s;
    case Kind::OtherSize:
        return u"other-size"_s;
    case Kind::DamagedText:
        return u"damaged-text"_s;
    case Kind::DamagedFile:
        return u"damaged-file"_s;
    case Kind::DamagedChecksum:
        return u"damaged-checksum"_s;
    case Kind::MissingFile:
        break;
    }
    return u"missing-file"_s;
}

void RefuseDamaged(Database& database, Work& work)
{
    Faults faults;
    QString state;
    RunPulsed(database, work, [&] { state = database.QueryValue(u"PRAGMA quick_check(1)"_s).ToText(); });
    const StatementPulse pulse(database, work);
    if (state != u"ok"_s)
        faults.push_back({Kind::Damage, {}, 0, state});
    else if (CheckTables(database, faults))
        CheckProperties(database, faults);
    if (!faults.empty())
        throw RuntimeError(ErrorNumber::Corrupt, faults.front().Text, u"RefuseDamaged"_s);
}

std::vector<LibraryFault> CheckLibrary(Database& database, Work& work)
{
    constexpr qint64 StructureEnd = 700, RowsEnd = 800; // of a thousand parts
    Faults faults;
    PhasedWork phases(work);
    phases.Begin(StructureEnd);
    CheckStructure(database, phases, faults);
    phases.Advance(1, 1);
    // The tables of a damaged file may have no end.
    std::optional<StatementLimit> limit;
    if (!faults.empty())
        limit.emplace(database, DamagedFileTime);
    try {
        const StatementPulse pulse(database, phases);
        if (CheckTables(database, faults)) {
            phases.Begin(RowsEnd);
            CheckProperties(database, faults);
            CheckRules(database, faults);
            CheckReplicaLog(database, faults);
            CheckTree(database, faults);
            phases.Advance(1, 1);
            phases.Begin(PhasedWork::Whole);
            CheckStoredFiles(database, phases, faults);
        }
    } catch (const RuntimeError& error) {
        if (!limit || work.IsCancelled())
            throw;
        faults.push_back({Kind::Damage, {}, 0, u"The rest could not be checked: %1"_s.arg(error.Description())});
    }
    phases.Begin(PhasedWork::Whole);
    phases.Advance(1, 1);
    return faults;
}

} // namespace qb
