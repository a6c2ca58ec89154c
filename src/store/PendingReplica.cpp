#include "store/PendingReplica.h"

#include "platform/system/FileCopy.h"
#include "platform/system/FileLock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/ReplicaLog.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Table = u"own_PendingReplica"_s;

/// By which a file is known wherever it lies: its end, where a container says what is in it, and when it was made.
QByteArray EndOf(const QString& path)
{
    constexpr qint64 Length = 4096;
    QFile file(path);
    QByteArray bytes;
    if (!IsPlainFile(path) || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)
        || !file.seek(qMax<qint64>(0, file.size() - Length)) || !ReadAll(file, bytes, Length).isEmpty())
        return {};
    return QByteArray::number(file.size()) + '\n' + bytes;
}

/// What was noted; nothing when nothing is pending, or what stands there is not this program's.
std::optional<PendingReplica> ReadNote(Database& library, QByteArray& end)
{
    if (!library.TableExists(Table))
        return std::nullopt;
    Statement row = library.Query(u"SELECT File, Locked, Identity, IsFirst, Exported, End, Complete, Kept FROM "_s
                                  + Table);
    if (!row.Step())
        return std::nullopt;
    end = row.Column(5).ToBytes();
    return PendingReplica{.File = row.Text(0),
                          .Complete = row.Text(6),
                          .Locked = row.Text(1),
                          .Identity = row.Text(2),
                          .IsFirst = row.Long(3) != 0,
                          .Exported = row.Column(4).ToDate(),
                          .Kept = row.Text(7)};
}

void TakeBack(Database& library, const PendingReplica& pending)
{
    if (pending.Identity.isEmpty()) {
        if (library.TableExists(u"ReplicaLog"_s))
            library.Execute(u"DELETE FROM ReplicaLog WHERE Event = ? AND RowDate = (SELECT LastExported FROM "
                            "Properties)"_s,
                            {int(ReplicaEvent::Exported)});
        library.Execute(u"UPDATE Properties SET LastExported = ?"_s,
                        {pending.Exported.IsNone() ? Value() : Value(pending.Exported)});
        return;
    }
    library.Execute(u"DELETE FROM ChildCopies WHERE DBCopyID = ?"_s, {pending.Identity});
    if (!pending.IsFirst || !library.QueryValue(u"SELECT 1 FROM ChildCopies LIMIT 1"_s).IsNull())
        return;
    for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s, u"ReplicaLog"_s}) {
        if (library.TableExists(table))
            library.DeleteTableDef(table);
    }
}

/// The library is as it was before a merge, and so the file is to be: as long as the one that is there is the one that
/// was there then. What can't be written now is, by another opening.
void FinishUndoneFile(Database& library, const PendingReplica& pending, const QByteArray& end)
{
    if (IsPlainFile(pending.Kept) && (!QFileInfo::exists(pending.File) || EndOf(pending.File) == end)) {
        const QString interim = InterimName(pending.File);
        try {
            CopyFileContents(pending.Kept, interim);
            MoveIntoPlace(interim, pending.File, true);
        } catch (const RuntimeError&) {
            QFile::remove(interim);
            return;
        }
    }
    ForgetPendingReplica(library);
}

/// The library has merged, and what it answered lies where it was worked on, or where it is kept. It does where it
/// belongs, as it is: nobody waits for it to be packed.
void FinishAnswer(Database& library, const PendingReplica& pending)
{
    if (IsPlainFile(pending.Complete))
        MoveIntoPlace(pending.Complete, pending.Kept, true);
    if (IsPlainFile(pending.Kept) && QFileInfo(QFileInfo(pending.File).absolutePath()).isDir()) {
        const QString interim = InterimName(pending.File);
        try {
            CopyFileContents(pending.Kept, interim);
            MoveIntoPlace(interim, pending.File, true);
        } catch (const RuntimeError&) {
            QFile::remove(interim); // it can be had again from what is kept
        }
    }
    ForgetPendingReplica(library);
}

} // namespace

void NotePendingReplica(Database& library, const PendingReplica& pending)
{
    const QByteArray end = EndOf(pending.Complete.isEmpty() ? pending.File : pending.Complete);
    if (end.isEmpty() && pending.Kept.isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be read. Nothing was changed."_s.arg(QDir::toNativeSeparators(pending.Complete)),
            u"NotePendingReplica"_s);
    ForgetPendingReplica(library);
    library.Execute(
        u"CREATE TABLE %1 (File TEXT, Locked TEXT, Identity TEXT, IsFirst INTEGER, Exported INTEGER, End BLOB, "
        "Complete TEXT, Kept TEXT)"_s.arg(Table));
    library.Execute(u"INSERT INTO %1 VALUES (?, ?, ?, ?, ?, ?, ?, ?)"_s.arg(Table),
                    {QFileInfo(pending.File).absoluteFilePath(), pending.Locked, pending.Identity, pending.IsFirst,
                     pending.Exported, end, pending.Complete, pending.Kept});
}

void ForgetPendingReplica(Database& library)
{
    library.Execute(u"DROP TABLE IF EXISTS "_s + Table);
}

void TakePendingReplicaBack(Database& library)
{
    QByteArray end;
    Transaction transaction(library);
    if (const auto pending = ReadNote(library, end))
        TakeBack(library, *pending);
    ForgetPendingReplica(library);
    transaction.Commit();
}

void FinishPendingReplica(Database& library)
{
    try {
        if (library.IsReadOnly() || !library.TableExists(Table))
            return;
        QByteArray end;
        const std::optional<PendingReplica> pending = ReadNote(library, end);
        if (!pending)
            return ForgetPendingReplica(library);
        if (FileLock(pending->Locked, FileLock::Target::Existing).IsBusy())
            return;
        if (!pending->Kept.isEmpty() && pending->Complete.isEmpty())
            return FinishUndoneFile(library, *pending, end);
        if (!pending->Kept.isEmpty())
            return FinishAnswer(library, *pending);
        if (EndOf(pending->File) == end)
            return ForgetPendingReplica(library);
        if (QFileInfo(QFileInfo(pending->File).absolutePath()).isDir())
            TakePendingReplicaBack(library);
    } catch (const RuntimeError&) {
        // The note is still there: another opening will find the library free, or the disk with room.
    }
}

} // namespace qb
