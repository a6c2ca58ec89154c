#include "replication/SynchroFile.h"

#include "maintenance/BackupFile.h"
#include "maintenance/Containers.h"
#include "platform/system/FileCopy.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/LibrarySchema.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"SynchronizationOf"_s;
const QString SynchroProperties[] = {u"DBID"_s, u"LastSynchronized"_s, u"LastExported"_s};

bool IsDatabase(const QString& path)
{
    const QByteArray mark("SQLite format 3\0", 16);
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.read(mark.size()) == mark;
}

[[noreturn]] void Refuse(const QString& why)
{
    throw RuntimeError(
        ErrorNumber::NotADatabase,
        u"The file is no synchronization file of a KT Quillbase library: %1. Nothing was changed."_s.arg(why),
        Procedure);
}

/// The tables as an export makes them, whoever has worked on the file since.
std::vector<TableDef> Tables()
{
    using namespace LibrarySchema;
    return {Files(u"Files"_s), ItemLinks({}, true), Items({}, true), DeletedFiles(),
            DeletedItems(),    DeletedItemLinks(),  HTMLFiles({})};
}

void RefuseOtherTables(Database& database)
{
    const Value other = database.QueryValue(
        u"SELECT type || ' ' || name FROM sqlite_schema WHERE type NOT IN ('table', "
        "'index') OR sql LIKE 'CREATE VIRTUAL%' LIMIT 1"_s);
    if (!other.IsNull())
        Refuse(u"it has a %1 in it"_s.arg(other.ToText()));
    if (const QString why = WhyColumnsDiffer(database, Tables(),
                                             LibrarySchema::AditionalFields(TableSet::Plain, DatabaseKind::Library));
        !why.isEmpty())
        Refuse(why);
    for (const QString& column : SynchroProperties) {
        if (!database.TableExists(u"Properties"_s) || !database.GetTableDef(u"Properties"_s).FindField(column))
            Refuse(u"the table Properties has no column %1"_s.arg(column));
    }
}

/// By which two rows would be one record; rows that are still to get a number have none.
void RefuseDoubles(Database& database)
{
    struct Key {
        const char* Table;
        const char* Columns;
        const char* Where;
    };
    constexpr Key Keys[] = {{"Items", "MotherRecordID", "MotherRecordID > 0"},
                            {"Files", "MotherRecordID", "MotherRecordID > 0"},
                            {"Items", "ID", "coalesce(MotherRecordID, 0) <= 0"},
                            {"Files", "ID", "coalesce(MotherRecordID, 0) <= 0"}};
    // An item that both have changed is in the file once for each side.
    const bool isAnswer = database.GetTableDef(u"Items"_s).FindField(u"ConflictItem"_s) != nullptr;
    for (const Key& key : Keys) {
        const QString more = isAnswer && QLatin1StringView(key.Table) == "Items"_L1 ? u" AND ConflictItem = 0"_s
                                                                                    : QString();
        if (!database
                 .QueryValue(u"SELECT 1 FROM %1 WHERE %2%3 GROUP BY %4 HAVING count(*) > 1 LIMIT 1"_s.arg(
                     QLatin1StringView(key.Table), QLatin1StringView(key.Where), more, QLatin1StringView(key.Columns)))
                 .IsNull())
            Refuse(u"the table %1 has a record twice"_s.arg(QLatin1StringView(key.Table)));
    }
    if (!database
             .QueryValue(u"SELECT 1 FROM Items WHERE ID <= 0 OR coalesce(Title, '') = '' UNION ALL SELECT 1 FROM Files "
                         "WHERE ID <= 0 LIMIT 1"_s)
             .IsNull())
        Refuse(u"it has a record without a number or a title"_s);
}

void RefuseNames(Database& database)
{
    constexpr qsizetype LongestName = 255; // bytes, of the usual file systems
    Statement titles = database.Query(u"SELECT Title FROM Files"_s);
    while (titles.Step()) {
        const QString title = titles.Text(0);
        if (StoredFilePath(u"/"_s, 1, title).isEmpty() || QFile::encodeName(title).size() > LongestName - 24)
            Refuse(u"a stored file in it is called '%1', which is no name"_s.arg(title));
    }
    Statement pages = database.Query(u"SELECT Folder, Name FROM HTMLFiles"_s);
    while (pages.Step()) {
        QString place = pages.Text(0) + u'\\' + pages.Text(1);
        place.replace(u'\\', u'/');
        for (const QString& part : place.split(u'/')) {
            if (part == u"."_s || part == u".."_s || part.contains(QChar::Null))
                Refuse(u"a file of a web page in it is called '%1', which is no name"_s.arg(place));
        }
    }
}

} // namespace

QString UnpackSynchroFile(const QString& file, const QString& folder, Work& work)
{
    if (!QFileInfo(file).isFile())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"There is no file '%1'. Nothing was changed."_s.arg(QDir::toNativeSeparators(file)),
                           Procedure);
    if (!IsDatabase(file)) {
        const QString unpacked = UnpackLibraryTo(file, folder, work);
        if (unpacked.isEmpty())
            throw RuntimeError(ErrorNumber::Cancelled, u"The synchronization was stopped; nothing was changed."_s,
                               Procedure);
        if (!IsDatabase(unpacked))
            Refuse(u"what is packed in it is no database"_s);
        return unpacked;
    }
    const QString copy = folder + u"/changes.qbt"_s;
    CopyFileContents(file, copy, work);
    return copy;
}

void RefuseWhatIsNoSynchroFile(Database& database)
{
    RefuseOtherTables(database);
    if (database.QueryValue(u"SELECT count(*) FROM Properties"_s).ToLong() != 1 || FactsOf(database).Identity.isEmpty())
        Refuse(u"it does not tell which library it is of"_s);
    RefuseDoubles(database);
    RefuseNames(database);
}

SynchroFacts FactsOf(Database& database, const QString& schema)
{
    Statement row = database.Query(u"SELECT DBID, LastSynchronized, LastExported FROM "_s
                                   + Qualified(schema, u"Properties"_s));
    if (!row.Step())
        return {};
    return {row.Text(0), row.Column(1).ToDate(), row.Column(2).ToDate()};
}

} // namespace qb
