#include "store/StoredFiles.h"

#include "platform/system/Clock.h"
#include "store/Deletions.h"
#include "store/SessionValues.h"

#include <QFile>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The ID by which the other side knows a file: its mother's for a child. Null when the other
/// side can't be told.
Value IdForTheOtherSide(Database& database, const Recordset& row, bool& lacksMotherRecord)
{
    if (!Session().IsChildReplica)
        return row[u"ID"_s];
    const qint64 motherRecord = row[u"MotherRecordID"_s].ToLong();
    if (Session().IsMotherReplica)
        return row[u"DateAdded"_s].ToDate() < OwnLastSynchronized(database) ? Value(motherRecord) : Value();
    lacksMotherRecord = motherRecord <= 0;
    return lacksMotherRecord ? Value() : Value(motherRecord);
}

} // namespace

QString StoredFilePath(qint64 id, const QString& title)
{
    if (title.contains(u'/') || title.contains(u'\\') || title.contains(QChar(u'\0')))
        return {};
    return Session().CurrentFilesFolder + QString::number(id) + u" - "_s + title;
}

bool IsPlainFile(const QString& path)
{
    struct stat state {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0 && S_ISREG(state.st_mode);
}

QString ReadableStoredFile(qint64 id, const QString& title)
{
    const QString path = StoredFilePath(id, title);
    return IsPlainFile(path) ? path : QString();
}

DeletedFileRow DeleteStoredFileRow(Database& database, qint64 id)
{
    Recordset row = database.OpenRecordset(u"Files"_s, u"ID = ?"_s, {id});
    if (row.IsEmpty())
        return {};
    DeletedFileRow deletion{.Place = StoredFilePath(id, row[u"Title"_s].ToText())};
    const Value added = row[u"DateAdded"_s];
    const bool replicated = Session().IsChildReplica || Session().IsMotherReplica;
    // A file has no changes to merge: what counts is whether the other side has seen it.
    if (replicated && (added.IsNull() || added.ToDate() < DeletionCutOff(database))) {
        Recordset deleted = database.OpenRecordset(u"DeletedFiles"_s, u"ItemID IS NULL"_s);
        deleted.AddNew();
        deleted.Set(u"ItemID"_s, IdForTheOtherSide(database, row, deletion.LacksMotherRecord));
        deleted.Set(u"DateDeleted"_s, Clock::Now());
        deleted.Update();
    }
    row.Delete();
    return deletion;
}

std::vector<qint64> StoredFilesOf(Database& database, qint64 itemId)
{
    std::vector<qint64> ids;
    Statement rows = database.Query(u"SELECT ID FROM Files WHERE CodeID = ?"_s, {itemId});
    while (rows.Step())
        ids.push_back(rows.Long(0));
    return ids;
}

} // namespace qb
