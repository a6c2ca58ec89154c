#include "replication/MergeTables.h"

#include "platform/dao/Database.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct MergeTable {
    QLatin1StringView Name;
    QLatin1StringView Columns;
};
constexpr MergeTable MergeTables[] = {
    {"merge_Changed"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Deleted"_L1, "ID INTEGER PRIMARY KEY, DateDeleted INTEGER, Round INTEGER"_L1},
    {"merge_Kept"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Spared"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Gone"_L1, "ID INTEGER PRIMARY KEY, DateDeleted INTEGER"_L1},
    {"merge_GoneFiles"_L1, "ID INTEGER PRIMARY KEY, DateDeleted INTEGER"_L1},
    {"merge_Survivors"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_GoneLinks"_L1, "ID INTEGER PRIMARY KEY, DateDeleted INTEGER"_L1},
    {"merge_Orphaned"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Loose"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Taken"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_OwnPages"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_MothersPages"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Touched"_L1, "ID INTEGER PRIMARY KEY"_L1},
    {"merge_Verdicts"_L1,
     "SRow INTEGER PRIMARY KEY, SID INTEGER, OldMother INTEGER, LID INTEGER, What TEXT, OldParent INTEGER"_L1},
};

} // namespace

void MakeMergeTables(Database& library)
{
    DropMergeTables(library);
    for (const MergeTable& table : MergeTables)
        library.Execute(u"CREATE TEMP TABLE %1 (%2)"_s.arg(table.Name, table.Columns));
    library.Execute(u"CREATE INDEX temp.merge_VerdictsSID ON merge_Verdicts (SID)"_s);
    library.Execute(u"CREATE INDEX temp.merge_VerdictsLID ON merge_Verdicts (LID)"_s);
    library.Execute(u"CREATE INDEX temp.merge_VerdictsOld ON merge_Verdicts (OldMother)"_s);
}

void DropMergeTables(Database& library)
{
    for (const MergeTable& table : MergeTables)
        library.Execute(u"DROP TABLE IF EXISTS temp."_s + table.Name);
}

QString IsKnown(const QString& column)
{
    return u"coalesce(%1, 0) > 0"_s.arg(column);
}

QString ItemsOf(const QString& verdicts)
{
    return u"SELECT LID FROM temp.merge_Verdicts WHERE What IN (%1)"_s.arg(verdicts);
}

QString RowsOf(const QString& verdicts)
{
    return u"SELECT SRow FROM temp.merge_Verdicts WHERE What IN (%1)"_s.arg(verdicts);
}

QString SharedColumns(const QString& row)
{
    const QStringList columns{u"Title"_s, u"Description"_s, u"Info"_s,         u"Created"_s,  u"LastChanged"_s,
                              u"User"_s,  u"ItemStatus"_s,  u"ItemRating"_s,   u"Code"_s,     u"CodeHeaders"_s,
                              u"Notes"_s, u"Example"_s,     u"UsageHeaders"_s, u"HTMLPage"_s, u"HTMLLastUpdated"_s};
    const QString of = row.isEmpty() ? QString() : row + u'.';
    return of + columns.join(u", "_s + of);
}

QString IsTakenOver(const QString& table, const QString& id, const QString& date)
{
    return u"EXISTS (SELECT 1 FROM main.ReplicaLog AS l WHERE l.Event = 3 AND l.OfTable = '%1' AND l.RecordID = %2 "
           "AND l.SecondID = 0 AND l.RowDate = %3)"_s.arg(table, id, date);
}

QString IsDeletedHere(const QString& table, const QString& mothers)
{
    return u"EXISTS (SELECT 1 FROM main.ReplicaLog AS l WHERE l.Event = 2 AND l.OfTable = '%1' "
           "AND l.MotherRecordID = %2 AND l.Moment > ?1)"_s.arg(table, mothers);
}

} // namespace qb
