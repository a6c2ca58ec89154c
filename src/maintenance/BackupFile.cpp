#include "maintenance/BackupFile.h"

#include "maintenance/Containers.h"
#include "maintenance/PhasedWork.h"
#include "maintenance/StatementPulse.h"
#include "platform/archive/CBFileSplitter.h"
#include "platform/dao/Catalog.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "store/Library.h"
#include "store/LibrarySchema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// By which a comment is known as one of this program's.
constexpr QLatin1StringView Form{"quillbase-backup-1"};

QJsonObject ToJson(const ContentSums& sums)
{
    return {{u"count"_s, sums.Count}, {u"bytes"_s, sums.Bytes}, {u"sum"_s, qint64(sums.Sum)}};
}

ContentSums SumsFromJson(const QJsonObject& object)
{
    return {object.value(u"count"_s).toInteger(), object.value(u"bytes"_s).toInteger(),
            quint32(object.value(u"sum"_s).toInteger())};
}

/// The last bytes of a file that may lie in several pieces.
QByteArray TailOf(const QStringList& files, qint64 most)
{
    QByteArray tail;
    for (qsizetype i = files.size() - 1; i >= 0 && tail.size() < most; --i) {
        QFile file(files[i]);
        QByteArray bytes;
        if (!file.open(QIODevice::ReadOnly) || !file.seek(qMax<qint64>(0, file.size() - (most - tail.size())))
            || !ReadAll(file, bytes, most).isEmpty())
            return {};
        tail.prepend(bytes);
    }
    return tail;
}

/// The comment of a zip archive from its last bytes: it is the end of the last record, and its length stands before it.
QByteArray CommentIn(const QByteArray& tail)
{
    constexpr qsizetype RecordLength = 22;
    const QByteArray mark("PK\x05\x06", 4);
    for (qsizetype at = tail.lastIndexOf(mark); at >= 0; at = at > 0 ? tail.lastIndexOf(mark, at - 1) : -1) {
        if (at + RecordLength > tail.size())
            continue;
        const auto byte = [&](qsizetype offset) { return qsizetype(uchar(tail[at + offset])); };
        if (const qsizetype length = byte(20) + byte(21) * 256; at + RecordLength + length == tail.size())
            return tail.mid(at + RecordLength);
    }
    return {};
}

QStringList Differences(const BackupSummary& said, const BackupSummary& found)
{
    QStringList faults;
    for (auto table = said.Rows.begin(); table != said.Rows.end(); ++table) {
        if (const qint64 rows = found.Rows.value(table.key(), -1); rows != table.value())
            faults << u"The table %1 has %2 rows in place of %3."_s.arg(table.key())
                          .arg(qMax<qint64>(0, rows))
                          .arg(table.value());
    }
    const auto compare = [&faults](const QString& what, const ContentSums& one, const ContentSums& other) {
        if (one != other)
            faults << u"The %1 are %2 with %3 bytes in place of %4 with %5 bytes, or have other contents."_s.arg(what)
                          .arg(other.Count)
                          .arg(other.Bytes)
                          .arg(one.Count)
                          .arg(one.Bytes);
    };
    compare(u"stored files"_s, said.Files, found.Files);
    compare(u"files of web pages"_s, said.Pages, found.Pages);
    if (said.Damaged > 0)
        faults << u"%1 texts or stored files of the library were damaged already when it was made."_s.arg(said.Damaged);
    if (said.Library != found.Library)
        faults << u"It holds another library than it says."_s;
    return faults;
}

/// What the file's own structure says of damage.
QStringList StructureFaults(Database& database, Work& work)
{
    QStringList faults;
    RunPulsed(database, work, [&] {
        Statement rows = database.Query(u"PRAGMA integrity_check(10)"_s);
        while (rows.Step()) {
            if (rows.Text(0) != u"ok"_s)
                faults << u"Its database is damaged: %1."_s.arg(rows.Text(0));
        }
    });
    return faults;
}

} // namespace

QByteArray BackupSummary::ToComment() const
{
    QJsonObject rows;
    for (auto table = Rows.begin(); table != Rows.end(); ++table)
        rows.insert(table.key(), table.value());
    const QJsonObject object{{u"form"_s, QString(Form)},
                             {u"library"_s, Library},
                             {u"name"_s, Name},
                             {u"made"_s, Made.WallSeconds()},
                             {u"moment"_s, Made.Seconds()},
                             {u"version"_s, Version},
                             {u"rows"_s, rows},
                             {u"changed"_s, Changed},
                             {u"files"_s, ToJson(Files)},
                             {u"pages"_s, ToJson(Pages)},
                             {u"damaged"_s, Damaged}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<BackupSummary> BackupSummary::FromComment(const QByteArray& comment)
{
    const QJsonObject object = QJsonDocument::fromJson(comment).object();
    if (object.value(u"form"_s).toString() != Form)
        return std::nullopt;
    // Older versions only said what the clock read.
    const Date made = object.contains(u"moment"_s) ? Date::FromSeconds(object.value(u"moment"_s).toInteger())
                                                   : Date::FromWallSeconds(object.value(u"made"_s).toInteger());
    BackupSummary summary{.Library = object.value(u"library"_s).toString(),
                          .Name = object.value(u"name"_s).toString(),
                          .Made = made,
                          .Version = object.value(u"version"_s).toString(),
                          .Rows = {},
                          .Changed = object.value(u"changed"_s).toInteger(),
                          .Files = SumsFromJson(object.value(u"files"_s).toObject()),
                          .Pages = SumsFromJson(object.value(u"pages"_s).toObject()),
                          .Damaged = object.value(u"damaged"_s).toInteger()};
    const QJsonObject rows = object.value(u"rows"_s).toObject();
    for (auto table = rows.begin(); table != rows.end(); ++table)
        summary.Rows.insert(table.key(), table.value().toInteger());
    return summary;
}

QStringList FilesOfBackup(const QString& file)
{
    return CBFileSplitter::IsVolume(file) ? CBFileSplitter::Volumes(file) : QStringList{file};
}

std::optional<BackupSummary> ReadBackupSummary(const QString& file)
{
    constexpr qint64 Longest = 65535 + 22;
    try {
        return BackupSummary::FromComment(CommentIn(TailOf(FilesOfBackup(file), Longest)));
    } catch (const RuntimeError&) { // a volume is missing
        return std::nullopt;
    }
}

BackupSummary SummaryOf(Database& database, Work& work)
{
    BackupSummary summary;
    const StatementPulse pulse(database, work);
    for (const QString& table : database.TableNames())
        summary.Rows.insert(table, database.QueryValue(u"SELECT count(*) FROM "_s + Quoted(table)).ToLong());
    summary.Library = database.QueryValue(u"SELECT DBID FROM Properties"_s).ToText();
    summary.Changed = database.QueryValue(u"SELECT max(LastChanged) FROM Items"_s).ToLong();
    ContentPace pace(work, BytesOfTable(database, u"Files"_s) + BytesOfTable(database, u"HTMLFiles"_s));
    summary.Files = SumOfTable(database, u"Files"_s, pace);
    summary.Pages = SumOfTable(database, u"HTMLFiles"_s, pace);
    return summary;
}

void RefuseWhatIsNoBackup(Database& database)
{
    const auto refuse = [](const QString& why) {
        throw RuntimeError(ErrorNumber::NotADatabase,
                           u"The file is no backup of a KT Quillbase library: %1. Nothing was changed."_s.arg(why),
                           u"RefuseWhatIsNoBackup"_s);
    };
    const Value other = database.QueryValue(
        u"SELECT type || ' ' || name FROM sqlite_schema WHERE type NOT IN ('table', "
        "'index') OR sql LIKE 'CREATE VIRTUAL%' LIMIT 1"_s);
    if (!other.IsNull())
        refuse(u"it has a %1 in it"_s.arg(other.ToText()));
    const std::pair<QString, QStringList> needed[] = {
        {u"Items"_s, {u"ID"_s, u"Title"_s, u"ParentID"_s, u"HTMLPage"_s}},
        {u"Files"_s, {u"ID"_s, u"Title"_s, u"File"_s}},
        {u"HTMLFiles"_s, {u"ItemIDRef"_s, u"Name"_s, u"Folder"_s, u"File"_s}},
        {u"Properties"_s, {u"DBID"_s}},
        {u"ItemLinks"_s, {u"ItemID"_s, u"LinkItemID"_s}},
        {u"ChildCopies"_s, {}}};
    if (!IsLibrary(database))
        refuse(u"the database in it is none"_s);
    for (const auto& [table, columns] : needed) {
        if (!database.TableExists(table))
            refuse(u"the table %1 is missing"_s.arg(table));
        const TableDef& definition = database.GetTableDef(table);
        for (const QString& column : columns) {
            if (!definition.FindField(column))
                refuse(u"the table %1 has no column %2"_s.arg(table, column));
        }
    }
}

namespace {

/// How the type of a column begins in the file.
QString DeclaredType(const Field& column)
{
    return column.AutoIncrement ? u"INTEGER"_s : Catalog::ColumnSql(column, false).section(u' ', 1, 1);
}

QString WhyColumnDiffers(Database& database, const QString& table, const Field& column)
{
    if (!database.TableExists(table))
        return u"the table %1 is missing"_s.arg(table);
    // What the file says of its tables may be another thing than what they are.
    const Field* said = database.GetTableDef(table).FindField(column.Name);
    const QString is = database
                           .QueryValue(u"SELECT type FROM pragma_table_info(?) WHERE name = ? COLLATE NOCASE"_s,
                                       {table, column.Name})
                           .ToText();
    if (said && said->Type == column.Type && is.startsWith(DeclaredType(column)))
        return {};
    return u"the table %1 has no column %2 as it should have"_s.arg(table, column.Name);
}

} // namespace

QString WhyColumnsDiffer(Database& database, const std::vector<TableDef>& tables,
                         const std::vector<LibrarySchema::AddedField>& added)
{
    for (const TableDef& table : tables) {
        for (const Field& column : table.Fields) {
            if (const QString why = WhyColumnDiffers(database, table.Name, column); !why.isEmpty())
                return why;
        }
    }
    for (const LibrarySchema::AddedField& column : added) {
        if (const QString why = WhyColumnDiffers(database, column.Table, column.Column); !why.isEmpty())
            return why;
    }
    return {};
}

void RefuseWhatIsNoReplica(Database& database)
{
    const auto refuse = [](const QString& why) {
        throw RuntimeError(ErrorNumber::NotADatabase,
                           u"The file is no replica of a KT Quillbase library: %1. Nothing was changed."_s.arg(why),
                           u"RefuseWhatIsNoReplica"_s);
    };
    RefuseWhatIsNoBackup(database);
    if (const QString why = WhyColumnsDiffer(database, LibrarySchema::TablesOfChild(),
                                             LibrarySchema::AditionalFields(TableSet::Plain, DatabaseKind::Child));
        !why.isEmpty())
        refuse(why);
    if (database.QueryValue(u"SELECT count(*) FROM Properties"_s).ToLong() != 1
        || database.QueryValue(u"SELECT MasterReplicaPath FROM Properties"_s).ToText().isEmpty()
        || database.QueryValue(u"SELECT DBID FROM Properties"_s).ToText().isEmpty())
        refuse(u"the library in it is no child"_s);
}

QString UnpackBackup(const QString& file, const QString& folder, Work& work)
{
    const QString database = UnpackLibraryTo(file, folder, work);
    EndUnless(!database.isEmpty(), u"UnpackBackup"_s);
    KeepNoMoreRightsThan(file, database);
    return database;
}

BackupCheck CheckBackup(const QString& file, const QString& scratch, Work& work)
{
    BackupCheck check;
    PhasedWork phases(work);
    StagedFiles stage(scratch);
    check.Summary = ReadBackupSummary(file);
    try {
        phases.Begin(PhasedWork::Whole * 6 / 10);
        const QString path = UnpackBackup(file, stage.Scratch(), phases);
        const std::unique_ptr<Database> database = DBEngine::OpenDatabase(path, DatabaseAccess::ReadOnly);
        RefuseWhatIsNoBackup(*database);
        phases.Begin(PhasedWork::Whole * 8 / 10);
        check.Faults = StructureFaults(*database, phases);
        phases.Begin(PhasedWork::Whole);
        if (const BackupSummary found = SummaryOf(*database, phases); check.Summary)
            check.Faults += Differences(*check.Summary, found);
    } catch (const RuntimeError& error) {
        if (IsCancellation(error))
            throw;
        check.Faults << error.Description();
    }
    return check;
}

} // namespace qb
