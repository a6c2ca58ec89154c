#include "conflicts/CConflictFileObject.h"

#include "maintenance/PackedContents.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/CFileObject.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"

#include <QDir>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of CConflictFileObject::Column.
constexpr RowColumn Columns[] = {
    {.Name = "CodeID", .Holds = RowColumn::Number},
    {.Name = "Title"},
    {.Name = "Description"},
    {.Name = "FileSize", .Holds = RowColumn::Number},
    {.Name = "OrigDateTime", .Holds = RowColumn::Number},
    {.Name = "DateAdded", .Holds = RowColumn::Number},
    {.Name = "LastUpdated", .Holds = RowColumn::Number},
};

const QString TemporaryName = u"TempFiles"_s;

} // namespace

CConflictFileObject::CConflictFileObject() : RowObject(u"CConflictFileObject"_s, u"Files"_s, Columns) {}

void CConflictFileObject::InitialiseProperties()
{
    RowObject::InitialiseProperties();
    m_descriptionChanged = m_moveToTheSecondSet = false;
    m_storedFile.clear();
    m_correspondingID = 0;
    m_appearsIn = FileAppearance::Unknown;
}

bool CConflictFileObject::TemporaryTable() const
{
    return TableName() == TemporaryName;
}

void CConflictFileObject::SetTemporaryTable(bool value)
{
    UseTable(value ? TemporaryName : u"Files"_s);
}

void CConflictFileObject::SetDescription(const QString& value)
{
    const bool changes = value != Description();
    Let(DescriptionColumn, value);
    m_descriptionChanged = m_descriptionChanged || changes;
}

QString CConflictFileObject::StoredFile()
{
    if (!m_storedFile.isEmpty() || TemporaryTable() || !HasLibrary())
        return m_storedFile;
    return ReadableStoredFile(OwnLibrary(), RowKey(), Title());
}

/// The row's place in its table, which is no column of it.
qint64 CConflictFileObject::RowNumber() const
{
    return OwnLibrary().QueryValue(u"SELECT rowid FROM TempFiles WHERE ID = ?"_s, {RowKey()}).ToLong();
}

Value CConflictFileObject::FileField()
{
    if (!TemporaryTable())
        return {};
    return OwnLibrary().QueryValue(u"SELECT File FROM TempFiles WHERE ID = ?"_s, {RowKey()});
}

bool CConflictFileObject::HasContents()
{
    if (!TemporaryTable())
        return !StoredFile().isEmpty();
    return !OwnLibrary()
                .QueryValue(u"SELECT 1 FROM TempFiles WHERE ID = ? AND File IS NOT NULL"_s, {RowKey()})
                .IsNull();
}

bool CConflictFileObject::WriteContents(const QString& path)
{
    if (!TemporaryTable() || !HasContents())
        return false;
    ContentPace pace(NoWork(), Size());
    FieldToFile({OwnLibrary(), TemporaryName, RowNumber()}, path, pace);
    return true;
}

bool CConflictFileObject::InsertObject()
{
    return Guarded(ModuleName(), u"InsertObject"_s, [this] {
        Recordset row = OwnLibrary().OpenRecordset(TableName(), u"ID = 0"_s);
        row.AddNew();
        for (size_t column = 0; column < std::size(Columns); ++column)
            row.Set(QString::fromLatin1(Columns[column].Name), OwnValue(column));
        row.Update();
        RowInserted(OwnLibrary().QueryValue(u"SELECT max(ID) FROM %1"_s.arg(Quoted(TableName()))).ToLong());
        RowWritten();
    });
}

/// A row of `Files` is written by the object that answers for it: checksums, dates and the other replicas.
bool CConflictFileObject::UpdateObject()
{
    return Guarded(ModuleName(), u"UpdateObject"_s, [this] {
        if (!m_descriptionChanged)
            return SetUnchanged();
        RequireRead();
        if (TemporaryTable()) {
            OwnLibrary().Execute(u"UPDATE TempFiles SET Description = ?, LastUpdated = ? WHERE ID = ?"_s,
                                 {OwnValue(DescriptionColumn), OwnLibrary().NextStamp(), RowKey()});
        } else {
            DescribeInFiles(RowKey());
        }
        m_descriptionChanged = false;
        RowWritten();
    });
}

bool CConflictFileObject::DeleteObject()
{
    return Guarded(ModuleName(), u"DeleteObject"_s, [this] {
        if (TemporaryTable()) {
            OwnLibrary().Execute(u"DELETE FROM TempFiles WHERE ID = ?"_s, {RowKey()});
            return RowDeleted();
        }
        StoredFileDeletion deletion;
        Transaction transaction(OwnLibrary());
        deletion.Delete(OwnLibrary(), RowKey());
        transaction.Commit();
        RowDeleted();
        deletion.Complete();
    });
}

void CConflictFileObject::DescribeInFiles(qint64 id)
{
    CFileObject file;
    file.Initialise(OwnLibrary(), QString::number(id));
    file.SetDescription(Description());
    file.SetDescriptionChanged(true);
    if (!file.Commit())
        throw RuntimeError(ErrorNumber::Engine, u"The description of the file '%1' could not be stored."_s.arg(Title()),
                           ModuleName());
}

void CConflictFileObject::AddToFiles()
{
    const auto work = std::make_shared<PendingWork>(OwnLibrary());
    CFileObject file;
    file.Initialise(OwnLibrary(), {});
    file.SetCodeID(CodeID());
    if (const QString contents = work->PackingFolder() + u"contents"_s; WriteContents(contents)) {
        file.SetStoredFile(contents, CFileObject::Intake::Move);
        file.SetTitle(Title());
        if (!file.TakeIn(work, 0))
            throw RuntimeError(ErrorNumber::PathAccess, u"The file '%1' could not be stored."_s.arg(Title()),
                               ModuleName());
    }
    file.SetTitle(Title());
    file.SetOrigDateTime(OrigDateTime());
    file.SetSize(Size());
    file.SetDescription(Description());
    if (!file.Commit())
        throw RuntimeError(ErrorNumber::Engine, u"The file '%1' could not be stored."_s.arg(Title()), ModuleName());
    RowInserted(file.Key().toLongLong());
}

bool CConflictFileObject::KeepObject()
{
    return Guarded(ModuleName(), u"KeepObject"_s, [this] {
        ReadWhole();
        if (!TemporaryTable()) {
            DescribeInFiles(RowKey());
        } else if (HasCorrespondingID()) {
            DescribeInFiles(m_correspondingID);
            RowInserted(m_correspondingID);
        } else {
            AddToFiles();
        }
        m_descriptionChanged = false;
        SetTemporaryTable(false);
    });
}

} // namespace qb
