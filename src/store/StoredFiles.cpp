#include "store/StoredFiles.h"

#include "store/Checksums.h"
#include "store/Deletions.h"

#include <QFile>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The ID by which the other side knows a file: its mother's for a child. Null when the other
/// side can't be told.
Value IdForTheOtherSide(Library& library, const Recordset& row, bool& lacksMotherRecord)
{
    if (!library.IsChildReplica())
        return row[u"ID"_s];
    const qint64 motherRecord = row[u"MotherRecordID"_s].ToLong();
    if (library.IsMotherReplica())
        return row[u"DateAdded"_s].ToDate() < OwnLastSynchronized(library) ? Value(motherRecord) : Value();
    lacksMotherRecord = motherRecord <= 0;
    return lacksMotherRecord ? Value() : Value(motherRecord);
}

void RecordDeletion(Library& library, const Recordset& row, bool& lacksMotherRecord)
{
    const Date now = library.NextStamp();
    const Value added = row[u"DateAdded"_s];
    // A file has no changes to merge: what counts is whether the other side has seen it.
    if (added.IsNull() || added.ToDate() < DeletionCutOff(library)) {
        Recordset deleted = library.OpenRecordset(u"DeletedFiles"_s, u"ItemID IS NULL"_s);
        deleted.AddNew();
        deleted.Set(u"ItemID"_s, IdForTheOtherSide(library, row, lacksMotherRecord));
        deleted.Set(u"DateDeleted"_s, now);
        deleted.Update();
    }
    LogDeletion(library, {.Table = u"Files"_s,
                          .Record = row[u"ID"_s].ToLong(),
                          .MotherRecord = library.IsChildReplica() ? row[u"MotherRecordID"_s].ToLong() : 0,
                          .Added = added,
                          .Deleted = now});
}

} // namespace

QString StoredFilePath(const QString& filesFolder, qint64 id, const QString& title)
{
    if (title.contains(u'/') || title.contains(u'\\') || title.contains(QChar(u'\0')))
        return {};
    return filesFolder + QString::number(id) + u" - "_s + title;
}

bool IsPlainFile(const QString& path)
{
    struct stat state {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0 && S_ISREG(state.st_mode);
}

QString ReadableStoredFile(const Library& library, qint64 id, const QString& title)
{
    const QString path = StoredFilePath(library, id, title);
    return IsPlainFile(path) ? path : QString();
}

DeletedFileRow DeleteStoredFileRow(Library& library, qint64 id)
{
    Recordset row = library.OpenRecordset(u"Files"_s, u"ID = ?"_s, {id});
    if (row.IsEmpty())
        return {};
    DeletedFileRow deletion{.Place = StoredFilePath(library, id, row[u"Title"_s].ToText())};
    if (library.IsReplicated())
        RecordDeletion(library, row, deletion.LacksMotherRecord);
    row.Delete();
    ForgetChecksums(library, u"Files"_s, id);
    return deletion;
}

std::vector<qint64> StoredFilesOf(Library& library, qint64 itemId)
{
    std::vector<qint64> ids;
    Statement rows = library.Query(u"SELECT ID FROM Files WHERE CodeID = ?"_s, {itemId});
    while (rows.Step())
        ids.push_back(rows.Long(0));
    return ids;
}

} // namespace qb
