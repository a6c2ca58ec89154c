#include "store/CFileObject.h"

#include "platform/system/Clock.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "store/PendingFiles.h"
#include "store/SessionValues.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <cstdio>
#include <limits>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CFileObject"_s;

/// A file on its way into the folder of stored files: copied at first, bound to its row within the row's
/// transaction, and put in its place once that is committed. One that does not get there is removed.
class Arrival {
public:
    Arrival(const QString& source, CFileObject::Intake intake, const std::function<bool(qint64, qint64)>& progress)
    {
        const auto moved = [&] {
            return std::rename(QFile::encodeName(source).constData(), QFile::encodeName(m_work.AddingName()).constData()) == 0;
        };
        if (intake == CFileObject::Intake::Copy || !moved())
            CopyFileContents(source, m_work.AddingName(), progress);
        m_path = m_work.AddingName();
    }
    ~Arrival()
    {
        if (!m_path.isEmpty())
            QFile::remove(m_path);
    }
    Arrival(const Arrival&) = delete;
    Arrival& operator=(const Arrival&) = delete;

    qint64 Size() const { return QFileInfo(m_path).size(); }
    void Bind(qint64 id, const QString& title)
    {
        const QString arriving = m_work.ArrivingName(id, title);
        MoveIntoPlace(m_path, arriving, true);
        m_path = arriving;
    }
    void PutInPlace(const QString& place)
    {
        // The row counts now: where this fails the file stays for the next opening of the library.
        MoveIntoPlace(std::exchange(m_path, {}), place, true);
    }

private:
    PendingWork m_work;
    QString m_path;
};

} // namespace

void CFileObject::InitialiseProperties()
{
    m_state = RecordState::Clean;
    m_attributesLoaded = m_readFailed = m_fileReplaced = m_descriptionChanged = false;
    for (QString* text : {&m_key, &m_codeId, &m_title, &m_storedFile, &m_description})
        text->clear();
    m_origDateTime = m_dateAdded = {};
    m_size = 0;
    m_motherCodeId = 0;
    m_intake = Intake::Copy;
}

void CFileObject::Initialise(Database& database, const QString& key)
{
    Guarded(ModuleName, u"IDataObject_Initialise"_s, [&] {
        InitialiseProperties();
        m_database = &database;
        m_key = key;
        m_state = key.isEmpty() ? RecordState::New : RecordState::Clean;
    });
}

void CFileObject::GetAttributes()
{
    if (m_attributesLoaded || !m_database || (m_state != RecordState::Clean && m_state != RecordState::Edited))
        return;
    m_attributesLoaded = true;
    m_readFailed = !Guarded(ModuleName, u"GetAttributes"_s, [this] {
        const Recordset row = m_database->OpenRecordset(u"Files"_s, u"ID = ?"_s, {m_key.toLongLong()});
        m_descriptionChanged = false;
        if (row.IsEmpty())
            return;
        m_codeId = QString::number(row[u"CodeID"_s].ToLong());
        m_title = row[u"Title"_s].ToText();
        m_dateAdded = row[u"DateAdded"_s].ToDate();
        m_origDateTime = row[u"OrigDateTime"_s].ToDate();
        m_description = row[u"Description"_s].ToText();
        m_size = row[u"FileSize"_s].ToLong();
        if (Session().IsChildReplica)
            m_motherCodeId = qint32(row[u"MotherCodeID"_s].ToLong());
    });
}

void CFileObject::Let(QString& field, const QString& value)
{
    GetAttributes();
    field = value;
    m_state = StateForLet(m_state, u"CFileObject::SetStateForLet"_s);
}

void CFileObject::SetStoredFile(const QString& path, Intake intake)
{
    Guarded(ModuleName, u"<<Let>> StoredFile"_s, [&] {
        GetAttributes();
        m_fileReplaced = m_fileReplaced || !m_title.isEmpty();
        m_storedFile = path;
        m_intake = intake;
        Let(m_title, fnExtractPathOrFileName(path, PathPart::FileName));
    });
}

bool CFileObject::Commit()
{
    switch (m_state) {
    case RecordState::New:
        return InsertObject();
    case RecordState::MarkedForDelete:
        return DeleteObject();
    default:
        return UpdateObject();
    }
}

/// Runs @p body; that the user has ended it is no error, and false all the same.
template <class Body>
bool CFileObject::UnlessCancelled(const QString& procedure, Body&& body)
{
    return Guarded(ModuleName, procedure, [&] {
        try {
            body();
            return true;
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::UserInterrupt)
                throw;
            return false;
        }
    }, false);
}

/// A title that makes no name of a file on the disk is refused before anything is written.
void CFileObject::RequireStorableTitle() const
{
    constexpr qsizetype LongestName = 255; // bytes, of the usual file systems
    constexpr qsizetype LongestId = 20;
    const bool tooLong = m_title.size() > LongestName || QFile::encodeName(m_title).size() + LongestId + 3 > LongestName;
    if (tooLong)
        throw RuntimeError(ErrorNumber::PathAccess, u"The name '%1...' is too long to be stored; nothing was changed."_s.arg(m_title.left(60)), ModuleName);
    if (m_title.isEmpty() || StoredFilePath(1, m_title).isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess, u"'%1' is no name for a stored file; nothing was changed."_s.arg(m_title), ModuleName);
}

/// Refuses what can't be stored before anything is copied.
void CFileObject::RequireStorableFile() const
{
    constexpr qint64 LargestSize = std::numeric_limits<qint32>::max(); // of the column
    RequireStorableTitle();
    const qint64 size = QFileInfo(m_storedFile).size();
    if (size > LargestSize)
        throw RuntimeError(ErrorNumber::Overflow,
                           u"The file '%1' has %2 bytes; a library stores files of up to %3. Nothing was changed."_s.arg(m_storedFile).arg(size).arg(LargestSize),
                           ModuleName);
}

bool CFileObject::InsertObject()
{
    return UnlessCancelled(u"InsertObject"_s, [this] {
        std::optional<Arrival> file;
        if (!m_storedFile.isEmpty()) {
            RequireStorableFile();
            const QDateTime modified = QFileInfo(m_storedFile).lastModified(); // none when there is no such file
            file.emplace(m_storedFile, m_intake, Progress);
            m_origDateTime = modified.isValid() ? Date::FromDateTime(modified) : Date();
            m_size = file->Size();
        }
        m_dateAdded = Clock::Now();
        Transaction transaction(*m_database);
        Recordset row = m_database->OpenRecordset(u"Files"_s, u"ID = 0"_s);
        row.AddNew();
        row.Set(u"CodeID"_s, m_codeId.toLongLong());
        row.Set(u"Title"_s, m_title);
        row.Set(u"OrigDateTime"_s, m_origDateTime);
        row.Set(u"DateAdded"_s, m_dateAdded);
        row.Set(u"FileSize"_s, m_size);
        row.Set(u"Description"_s, m_description);
        row.Set(u"LastUpdated"_s, m_dateAdded);
        if (Session().IsChildReplica)
            row.Set(u"MotherCodeID"_s, m_motherCodeId);
        row.Update();
        const qint64 id = row.LastModified();
        if (file)
            file->Bind(id, m_title);
        transaction.Commit();
        m_key = QString::number(id);
        RowWritten();
        if (file)
            file->PutInPlace(StoredFilePath(id, m_title));
    });
}

bool CFileObject::UpdateObject()
{
    return UnlessCancelled(u"UpdateObject"_s, [this] {
        const bool describes = m_descriptionChanged;
        GetAttributes(); // what was not read must not be written as empty
        if (m_readFailed)
            throw RuntimeError(ErrorNumber::NoCurrentRecord,
                               u"The stored file %1 could not be read, so it is not written either; nothing was changed."_s.arg(m_key), ModuleName);
        const qint64 id = m_key.toLongLong();
        std::optional<Arrival> file;
        if (m_fileReplaced && !m_storedFile.isEmpty()) {
            RequireStorableFile();
            file.emplace(m_storedFile, m_intake, Progress);
        }
        Transaction transaction(*m_database);
        Recordset row = m_database->OpenRecordset(u"Files"_s, u"ID = ?"_s, {id});
        row.MoveFirst();
        row.Edit();
        row.Set(u"CodeID"_s, m_codeId.toLongLong());
        row.Set(u"Title"_s, m_title);
        if (describes) {
            row.Set(u"Description"_s, m_description);
            row.Set(u"LastUpdated"_s, Clock::Now());
        }
        row.Update();
        if (file)
            file->Bind(id, m_title);
        transaction.Commit();
        RowWritten();
        if (file)
            file->PutInPlace(StoredFilePath(id, m_title));
    });
}

/// The row is as this object is.
void CFileObject::RowWritten()
{
    m_state = RecordState::Clean;
    m_attributesLoaded = true;
    m_descriptionChanged = m_fileReplaced = false;
    m_storedFile.clear();
}

bool CFileObject::DeleteObject()
{
    return Guarded(ModuleName, u"DeleteObject"_s, [this] {
        const qint64 id = m_key.toLongLong();
        StoredFileDeletion deletion;
        Transaction transaction(*m_database);
        deletion.Delete(*m_database, id);
        transaction.Commit();
        m_state = RecordState::Deleted;
        deletion.Complete();
    });
}

QString CFileObject::SaveToFile2(const QString& target)
{
    QString written;
    UnlessCancelled(u"SaveToFile2"_s, [&] {
        const qint64 id = m_key.toLongLong();
        const Value title = m_database->QueryValue(u"SELECT Title FROM Files WHERE ID = ?"_s, {id});
        if (title.IsNull())
            return;
        const QString source = StoredFilePath(id, title.ToText());
        if (!QFile::exists(source))
            FinishPendingFiles(*m_database); // it may be on its way since a power cut
        if (source.isEmpty() || !QFile::exists(source)) {
            if (m_database->IsReadOnly())
                throw RuntimeError(ErrorNumber::FileNotFound, u"The stored file '%1' is missing in the library's folder."_s.arg(title.ToText()), ModuleName);
            const bool deletes = Prompts::Current().MsgBox({.Text = u"Source file not found in its location. Do you wish to delete the record "
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
        const QString interim = InterimName(target);
        const auto clear = qScopeGuard([&interim] { QFile::remove(interim); }); // where it can't be moved
        CopyFileContents(source, interim, Progress);
        MoveIntoPlace(interim, target, true);
        written = target;
    });
    return written;
}

} // namespace qb
