#include "store/CFileObject.h"

#include "platform/system/Clock.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "store/Checksums.h"
#include "store/Deletions.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of CFileObject::Column. The description is written by its own flag.
constexpr RowColumn Columns[] = {
    {.Name = "CodeID", .Holds = RowColumn::Number},
    {.Name = "Title"},
    {.Name = "DateAdded", .Holds = RowColumn::Number, .Fixed = true},
    {.Name = "OrigDateTime", .Holds = RowColumn::Number, .Fixed = true},
    {.Name = "Description", .Fixed = true},
    {.Name = "FileSize", .Holds = RowColumn::Number, .Fixed = true},
    {.Name = "MotherCodeID", .Holds = RowColumn::Number, .Optional = true, .Fixed = true},
};

} // namespace

CFileObject::CFileObject() : RowObject(u"CFileObject"_s, u"Files"_s, Columns)
{
    CFileObject::InitialiseProperties();
}

void CFileObject::InitialiseProperties()
{
    RowObject::InitialiseProperties();
    m_fileReplaced = m_descriptionChanged = false;
    m_replaces = false;
    m_arriving.reset();
    m_replaced.reset();
    m_storedFile.clear();
    m_intake = Intake::Copy;
}

void CFileObject::RowRead(bool)
{
    m_descriptionChanged = false;
}

void CFileObject::SetStoredFile(const QString& path, Intake intake)
{
    Guarded(ModuleName(), u"<<Let>> StoredFile"_s, [&] {
        GetAttributes();
        m_fileReplaced = m_fileReplaced || !OwnTitle().isEmpty();
        m_storedFile = path;
        m_intake = intake;
        SetTitle(fnExtractPathOrFileName(path, PathPart::FileName));
    });
}

/// Runs @p body; that the user has ended it is no error, and false all the same.
template <class Body>
bool CFileObject::UnlessCancelled(const QString& procedure, Body&& body)
{
    return Guarded(
        ModuleName(), procedure,
        [&] {
            try {
                body();
                return true;
            } catch (const RuntimeError& error) {
                if (error.Number() != ErrorNumber::UserInterrupt)
                    throw;
                return false;
            }
        },
        false);
}

/// A title that makes no name of a file on the disk is refused before anything is written.
void CFileObject::RequireStorableTitle() const
{
    const QString title = OwnTitle();
    constexpr qsizetype LongestName = 255; // bytes, of the usual file systems
    constexpr qsizetype LongestId = 20;
    const bool tooLong = title.size() > LongestName || QFile::encodeName(title).size() + LongestId + 3 > LongestName;
    if (tooLong)
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The name '%1...' is too long to be stored; nothing was changed."_s.arg(title.left(60)),
                           ModuleName());
    if (title.isEmpty() || StoredFilePath(OwnLibrary(), 1, title).isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"'%1' is no name for a stored file; nothing was changed."_s.arg(title), ModuleName());
}

/// Refuses what can't be stored before anything is copied.
void CFileObject::RequireStorableFile() const
{
    constexpr qint64 LargestSize = std::numeric_limits<qint32>::max(); // of the column
    RequireStorableTitle();
    const qint64 size = QFileInfo(m_storedFile).size();
    if (size > LargestSize)
        throw RuntimeError(
            ErrorNumber::Overflow,
            u"The file '%1' has %2 bytes; a library stores files of up to %3. Nothing was changed."_s.arg(m_storedFile)
                .arg(size)
                .arg(LargestSize),
            ModuleName());
}

void CFileObject::CopyStoredFile(std::shared_ptr<PendingWork> work, qint64 number)
{
    RequireStorableFile();
    const QDateTime modified = QFileInfo(m_storedFile).lastModified(); // none when there is no such file
    m_arriving = std::make_unique<ArrivingFile>(std::move(work), number, m_storedFile, m_intake == Intake::Move,
                                                *m_work);
    if (State() == RecordState::New)
        SetOrigDateTime(modified.isValid() ? Date::FromDateTime(modified) : Date());
}

bool CFileObject::TakeIn(std::shared_ptr<PendingWork> work, qint64 number)
{
    return UnlessCancelled(u"TakeIn"_s, [&] { CopyStoredFile(std::move(work), number); });
}

void CFileObject::Settle()
{
    if (const std::unique_ptr<ArrivingFile> file = std::exchange(m_arriving, nullptr))
        file->PutInPlace(StoredFilePath(OwnLibrary(), RowKey(), OwnTitle()), m_replaces);
    if (const std::unique_ptr<StoredFileDeletion> replaced = std::exchange(m_replaced, nullptr))
        replaced->Complete();
}

bool CFileObject::PutInPlace()
{
    return UnlessCancelled(u"PutInPlace"_s, std::bind_front(&CFileObject::Settle, this));
}

/// 0 where the mother doesn't know the item yet.
qint64 CFileObject::MotherRecordOfItem() const
{
    const Value record = OwnLibrary().QueryValue(u"SELECT MotherRecordID FROM Items WHERE ID = ?"_s,
                                                 {OwnValue(CodeIDColumn)});
    return std::max(record.IsNull() ? 0 : record.ToLong(), qint64(0));
}

/// What was noted of the row; nothing where another program has written it since.
Checksums CFileObject::KnownChecksums() const
{
    const std::optional<NotedChecksums> noted = ReadChecksums(OwnLibrary(), u"Files"_s, RowKey());
    const Value stamp = OwnLibrary().QueryValue(u"SELECT LastUpdated FROM Files WHERE ID = ?"_s, {RowKey()});
    return noted && noted->IsWhole && noted->Stamp == stamp.ToLong() ? noted->Sums : Checksums();
}

/// Notes the checksums of what is written beside those that are known of the rest. The title is not among them: a new
/// title alone leaves no stamp.
void CFileObject::NoteChecksums(qint64 id, qint64 stamp, const Checksums& known) const
{
    Checksums sums = known;
    if (State() == RecordState::New || m_descriptionChanged)
        sums[u"Description"_s] = ChecksumOfText(OwnValue(DescriptionColumn).ToText());
    const bool isRenamed = m_replaced && sums.contains(FileContentsName);
    if (m_arriving && !isRenamed)
        sums[FileContentsName] = m_arriving->Checksum();
    if (!sums.isEmpty())
        WriteChecksums(OwnLibrary(), u"Files"_s, id, stamp, sums);
}

/// Adds a row of what the object holds, inside the caller's transaction; returns its ID.
qint64 CFileObject::AddRow()
{
    if (m_arriving)
        SetSize(m_arriving->Size());
    SetDateAdded(OwnLibrary().NextStamp());
    if (OwnLibrary().IsChildReplica() && OwnValue(MotherCodeIDColumn).ToLong() == 0)
        Store(MotherCodeIDColumn, MotherRecordOfItem());
    Recordset row = OwnLibrary().OpenRecordset(u"Files"_s, u"ID = 0"_s);
    row.AddNew();
    for (size_t column = 0; column < std::size(Columns); ++column) {
        if (column != MotherCodeIDColumn || OwnLibrary().IsChildReplica())
            row.Set(QString::fromLatin1(Columns[column].Name), OwnValue(column));
    }
    row.Set(u"LastUpdated"_s, OwnValue(DateAddedColumn));
    row.Update();
    return row.LastModified();
}

bool CFileObject::InsertObject()
{
    return UnlessCancelled(u"InsertObject"_s, [this] {
        const bool isWhole = !OwnLibrary().InTransaction(); // the row counts once it is committed here
        if (!m_storedFile.isEmpty() && !m_arriving)
            CopyStoredFile(std::make_shared<PendingWork>(OwnLibrary()), 0);
        Transaction transaction(OwnLibrary());
        const qint64 id = AddRow();
        NoteChecksums(id, OwnValue(DateAddedColumn).ToLong(), {});
        if (m_arriving)
            m_arriving->Bind(id, OwnTitle());
        transaction.Commit();
        RowInserted(id);
        FileWritten();
        if (isWhole)
            Settle();
    });
}

bool CFileObject::UpdateObject()
{
    return UnlessCancelled(u"UpdateObject"_s, [this] {
        const bool describes = m_descriptionChanged;
        const bool isWhole = !OwnLibrary().InTransaction();
        GetAttributes(); // what was not read must not be written as empty
        RequireRead();
        if (TravelsAsNew())
            return ReplaceRow();
        const qint64 id = RowKey();
        if (m_fileReplaced && !m_storedFile.isEmpty() && !m_arriving)
            CopyStoredFile(std::make_shared<PendingWork>(OwnLibrary()), 0);
        Transaction transaction(OwnLibrary());
        Recordset row = OwnLibrary().OpenRecordset(u"Files"_s, u"ID = ?"_s, {id});
        row.MoveFirst();
        row.Edit();
        const Checksums known = KnownChecksums();
        WriteChanged(row);
        if (describes) {
            row.Set(u"Description"_s, OwnValue(DescriptionColumn));
            row.Set(u"LastUpdated"_s, OwnLibrary().NextStamp());
        }
        row.Update();
        NoteChecksums(id, row[u"LastUpdated"_s].ToLong(), known);
        if (m_arriving)
            m_arriving->Bind(id, OwnTitle());
        transaction.Commit();
        FileWritten();
        if (isWhole)
            Settle();
    });
}

/// Whether it was given another file or name that the other replicas would not learn of by its row. A file that is
/// missing keeps its row: they may have it still.
bool CFileObject::TravelsAsNew() const
{
    const bool isReplaced = m_fileReplaced && !m_storedFile.isEmpty();
    if (!OwnLibrary().IsReplicated() || !(isReplaced || IsChanged(TitleColumn)))
        return false;
    if (!isReplaced && ReadableStoredFile(OwnLibrary(), RowKey(), ReadValue(TitleColumn).ToText()).isEmpty())
        return false;
    const Recordset row = OwnLibrary().OpenRecordset(u"Files"_s, u"ID = ?"_s, {RowKey()});
    return !row.IsEmpty()
           && IsKnownElsewhere(OwnLibrary(),
                               {.Table = u"Files"_s,
                                .Record = RowKey(),
                                .MotherRecord = OwnLibrary().IsChildReplica() ? row[u"MotherRecordID"_s].ToLong() : 0,
                                .Added = row[u"DateAdded"_s]});
}

/// Deletes the row, which is recorded, and adds another one in its place.
void CFileObject::ReplaceRow()
{
    const bool isWhole = !OwnLibrary().InTransaction();
    const bool isReplaced = m_fileReplaced && !m_storedFile.isEmpty();
    const qint64 old = RowKey();
    Checksums sums = KnownChecksums();
    if (!isReplaced) {
        m_storedFile = StoredFilePath(OwnLibrary(), old, ReadValue(TitleColumn).ToText());
        m_intake = Intake::Copy;
    }
    const Date original = isReplaced ? Date::FromDateTime(QFileInfo(m_storedFile).lastModified()) : OrigDateTime();
    if (!m_arriving)
        CopyStoredFile(std::make_shared<PendingWork>(OwnLibrary()), 0);
    SetOrigDateTime(original);
    if (isReplaced)
        sums.remove(FileContentsName); // a copy of the old contents is held against what was known of those
    m_replaced = std::make_unique<StoredFileDeletion>();
    try {
        Transaction transaction(OwnLibrary());
        m_replaced->Delete(OwnLibrary(), old);
        const qint64 id = AddRow();
        NoteChecksums(id, OwnValue(DateAddedColumn).ToLong(), sums);
        m_arriving->Bind(id, OwnTitle());
        transaction.Commit();
        RowInserted(id);
    } catch (...) {
        m_replaced.reset(); // the file comes back
        throw;
    }
    FileWritten();
    m_replaces = false;
    if (isWhole)
        Settle();
}

/// The row is as this object is.
void CFileObject::FileWritten()
{
    RowWritten();
    m_replaces = m_fileReplaced;
    m_descriptionChanged = m_fileReplaced = false;
    m_storedFile.clear();
}

bool CFileObject::DeleteObject()
{
    return Guarded(ModuleName(), u"DeleteObject"_s, [this] {
        const qint64 id = RowKey();
        StoredFileDeletion deletion;
        Transaction transaction(OwnLibrary());
        deletion.Delete(OwnLibrary(), id);
        transaction.Commit();
        RowDeleted();
        deletion.Complete();
    });
}

QString CFileObject::SaveToFile2(const QString& target)
{
    QString written;
    UnlessCancelled(u"SaveToFile2"_s, [&] {
        const qint64 id = RowKey();
        const Value title = OwnLibrary().QueryValue(u"SELECT Title FROM Files WHERE ID = ?"_s, {id});
        if (title.IsNull())
            return;
        if (const QString foreign = WhoseFoldersAreForeign(OwnLibrary()); !foreign.isEmpty())
            throw RuntimeError(ErrorNumber::PathAccess, foreign, ModuleName());
        const QString source = StoredFilePath(OwnLibrary(), id, title.ToText());
        if (!QFile::exists(source))
            FinishPendingFiles(OwnLibrary()); // it may be on its way since a power cut
        if (source.isEmpty() || !QFile::exists(source)) {
            if (OwnLibrary().IsReadOnly())
                throw RuntimeError(ErrorNumber::FileNotFound,
                                   u"The stored file '%1' is missing in the library's folder."_s.arg(title.ToText()),
                                   ModuleName());
            const bool deletes =
                Prompts::Current().MsgBox(
                    {.Text = u"Source file not found in its location. Do you wish to delete the record "
                             "from the database?"_s,
                     .Caption = u"Update database?"_s,
                     .Buttons = MsgBoxButtons::YesNo,
                     .Icon = MsgBoxIcon::Question,
                     .Default = MsgBoxResult::No})
                == MsgBoxResult::Yes;
            if (deletes) {
                Delete();
                Commit();
            }
            return;
        }
        if (!IsPlainFile(source))
            throw RuntimeError(
                ErrorNumber::PathAccess,
                u"What stands in the place of the stored file '%1' is no file; it is neither followed nor read."_s.arg(
                    title.ToText()),
                ModuleName());
        RemoveStaleInterims(QFileInfo(target).absolutePath());
        const QString interim = InterimName(target);
        const auto clear = qScopeGuard([&interim] { QFile::remove(interim); }); // where it can't be moved
        CopyFileContents(source, interim, *m_work);
        MoveIntoPlace(interim, target, true);
        written = target;
    });
    return written;
}

} // namespace qb
