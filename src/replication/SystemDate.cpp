#include "replication/SystemDate.h"

#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "store/Library.h"
#include "store/ReplicaLog.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Caption = u"System Date Alert"_s;

/// Which dates of a table may lie in the future, and how a row is known in the log.
struct DatedTable {
    const char* Label;
    const char* Table;
    const char* Dates; ///< parted by commas
    const char* Record = "ID";
    const char* Second = "0";
    bool IsDeletion = false;
};
constexpr DatedTable DatedTables[] = {
    {"Items", "Items", "LastChanged,Created,HTMLLastUpdated"},
    {"Files", "Files", "LastUpdated,DateAdded"},
    {"Item links", "ItemLinks", "DateAdded", "ItemID", "LinkItemID"},
    {"Deleted files", "DeletedFiles", "DateDeleted", "", "0", true},
    {"Deleted item links", "DeletedItemLinks", "DateDeleted", "", "0", true},
    {"Deleted items", "DeletedItems", "DateDeleted", "", "0", true},
    {"Conflict files", "TempFiles", "LastUpdated,DateAdded"},
    {"Conflict Items", "TempItems", "LastChanged,Created,HTMLLastUpdated"},
};

/// The rows of a table that lie in the future; ?1 is the present time.
QString FutureRows(Database& connection, const QString& library, const DatedTable& table)
{
    const QString name = QString::fromLatin1(table.Table);
    const bool isLogged = name == u"Items" || name == u"Files" || name == u"ItemLinks";
    const bool hasLog = isLogged && ReplicaLog(connection, library).IsThere();
    const bool isChild = ReadReplicaState(connection, library).IsChild;
    QStringList conditions;
    for (const QString& date : QString::fromLatin1(table.Dates).split(u',')) {
        QString condition = u"r.%1 > ?1"_s.arg(date);
        if (hasLog)
            condition += u" AND NOT EXISTS (SELECT 1 FROM %1 AS l WHERE l.Event IN (%2, %3) AND l.OfTable = '%4' AND "
                         "l.RecordID = r.%5 AND l.SecondID = %6 AND l.RowDate = r.%7)"_s.arg(
                             Qualified(library, u"ReplicaLog"_s), QString::number(int(ReplicaEvent::TakenOver)),
                             QString::number(int(ReplicaEvent::Changed)), name, QString::fromLatin1(table.Record),
                             table.Second[0] == '0' ? u"0"_s : u"r."_s + QString::fromLatin1(table.Second), date);
        if (table.IsDeletion && isChild) // a synchronization has moved it to a minute after itself
            condition += u" AND r.%1 <> (SELECT coalesce(max(p.LastSynchronized), 0) + 60 FROM %2 AS p)"_s.arg(
                date, Qualified(library, u"Properties"_s));
        conditions << u'(' + condition + u')';
    }
    return u"SELECT count(*) FROM %1 AS r WHERE %2"_s.arg(Qualified(library, name), conditions.join(u" OR "_s));
}

void Alert(const QString& text)
{
    Prompts::Current().MsgBox(
        {.Text = text, .Caption = Caption, .Icon = MsgBoxIcon::Exclamation, .HelpName = u"frmSystemDateAlert"_s});
}

} // namespace

void UpdateDateErrorArray(Database& connection, const QString& sql, const Values& values, const QString& tableLabel,
                          std::vector<DateError>& errors)
{
    try {
        if (const qint64 count = connection.QueryValue(sql, values).ToLong(); count > 0)
            errors.push_back({tableLabel, count});
    } catch (const RuntimeError&) {
        // Not every library has all of these tables.
    }
}

bool InvalidSystemDate(Database& connection, const QString& library, Date lastSynchronized)
{
    const Date now = Clock::Now();
    if (lastSynchronized > now) {
        Alert(u"The actual system date is lower than date of last synchronization!\r\nCheck the system date. If the "
              "date is right, than you have created the replica while the system date was set wrongly and you will "
              "have to create new replica and delete the old one.\r\nYou should also use 'Database Repair' tool from "
              "the 'Tools' menu to correct any wrong dates in main database.\r\n\r\nSee help for more details."_s);
        return true;
    }
    std::vector<DateError> errors;
    for (const DatedTable& table : DatedTables)
        UpdateDateErrorArray(connection, FutureRows(connection, library, table), {now},
                             QString::fromLatin1(table.Label), errors);
    if (errors.empty())
        return false;
    QString text = u"You can't synchronize because one or more records in the database has higher date of its update "
                   "than is current system date.\r\nPlease check the system clock date and try again. \r\nShould this "
                   "problem occure again, that would mean, that you have used the program while the system clock date "
                   "was invalid.\r\nUse 'Database Repair' tool from the 'Tools' menu to correct any wrong dates in "
                   "database.\r\n\r\nSee help for more details.\r\n\r\n(Tables and number of records containing "
                   "invalid date follow: "_s;
    for (const DateError& error : errors)
        text += u"%1 (%2),"_s.arg(error.Label).arg(error.Count);
    Alert(text.mid(1)); // it has always been cut at this end, and not at the other
    return true;
}

} // namespace qb
