#include "replication/PageLinks.h"

#include "store/PageReferences.h"

#include <QHash>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString NumbersTable = u"own_ItemNumbers"_s;
const QString Unknown = u"0-"_s;      ///< before a number of the mother's
constexpr int LongestPage = 64 << 20; ///< bytes; what is longer was not written by hand

/// Rewrites the pages of items in the synchronization file, but not the other files that belong to them.
void RenumberPages(MergeRun& run, const NewItemNumber& newNumber)
{
    if (run.IsPreview)
        return;
    std::vector<qint64> pages;
    Statement rows = run.Lib.Query(u"SELECT min(rowid) FROM synchro.HTMLFiles WHERE ItemIDRef > 0 AND "
                                   "coalesce(Folder, '') = '' AND Name = ItemIDRef || '.htm' AND length(File) "
                                   "<= ? GROUP BY ItemIDRef"_s,
                                   {LongestPage});
    while (rows.Step())
        pages.push_back(rows.Long(0));
    for (const qint64 page : pages) {
        const QByteArray was =
            run.Lib.QueryValue(u"SELECT File FROM synchro.HTMLFiles WHERE rowid = ?"_s, {page}).ToBytes();
        const QByteArray is = WithItemNumbers(was, newNumber);
        if (is != was)
            run.Execute(u"UPDATE synchro.HTMLFiles SET File = ? WHERE rowid = ?"_s, {is, page});
        run.EndIfCancelled();
    }
}

/// What a file tells of the child's numbers, and what those are that items have got in this merge.
QHash<qint64, qint64> MothersNumbers(MergeRun& run)
{
    QHash<qint64, qint64> numbers;
    const auto read = [&](const QString& sql) {
        Statement rows = run.Lib.Query(sql);
        while (rows.Step())
            numbers.insert(rows.Long(0), rows.Long(1));
    };
    if (run.Lib.TableExists(u"synchro."_s + NumbersTable))
        read(u"SELECT ID, MotherRecordID FROM "_s + Qualified(u"synchro"_s, NumbersTable));
    read(u"SELECT SID, LID FROM temp.merge_Verdicts WHERE LID > 0"_s);
    return numbers;
}

} // namespace

void WriteItemNumbers(const ExportPlace& place)
{
    const QString items = Qualified(place.Library, u"Items"_s);
    const QString table = Qualified(place.File, NumbersTable);
    place.Connection.Execute(u"CREATE TABLE %1 (ID INTEGER PRIMARY KEY, MotherRecordID INTEGER NOT NULL)"_s.arg(table));
    place.Connection.Execute(u"INSERT INTO %1 SELECT ID, max(coalesce(MotherRecordID, 0), 0) FROM %2 "
                             "WHERE coalesce(MotherRecordID, 0) <> ID"_s.arg(table, items));
    // Nothing has such a number here any more; the item to which the mother gave it has another one.
    place.Connection.Execute(u"INSERT OR IGNORE INTO %1 SELECT i.MotherRecordID, 0 FROM %2 AS i "
                             "WHERE i.MotherRecordID > 0 AND NOT EXISTS (SELECT 1 FROM %2 AS o "
                             "WHERE o.ID = i.MotherRecordID)"_s.arg(table, items));
}

void LeadPagesToMothersItems(MergeRun& run)
{
    const QHash<qint64, qint64> numbers = MothersNumbers(run);
    RenumberPages(run, [&numbers](const QString& number) {
        if (number.startsWith(Unknown))
            return number.mid(Unknown.size());
        const auto mothers = numbers.constFind(number.toLongLong());
        if (mothers == numbers.constEnd())
            return number;
        return *mothers > 0 ? QString::number(*mothers) : u'-' + number;
    });
}

void LeadPagesToChildsItems(MergeRun& run)
{
    QHash<QString, QString> numbers;
    RenumberPages(run, [&](const QString& number) {
        if (number.startsWith(Unknown))
            return Unknown + number;
        if (number.toLongLong() <= 0)
            return number; // nor has it a number that is no item's
        if (const auto known = numbers.constFind(number); known != numbers.constEnd())
            return *known;
        const Value own = run.Lib.QueryValue(
            u"SELECT coalesce((SELECT max(LID) FROM temp.merge_Verdicts WHERE OldMother = ?1 AND What = 'new'), "
            "(SELECT min(ID) FROM main.Items WHERE MotherRecordID = ?1))"_s,
            {number.toLongLong()});
        return *numbers.insert(number, own.IsNull() ? Unknown + number : own.ToText());
    });
}

} // namespace qb
