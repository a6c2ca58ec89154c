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
#include <limits>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CFileObject"_s;

/// The row of `Files` is written in a transaction; the file goes to its place once it is committed.
void Arrive(qint64 id, const QString& title)
{
    MoveIntoPlace(ArrivingName(id), StoredFilePath(id, title), true);
}

} // namespace

void CFileObject::InitialiseProperties()
{
    m_state = RecordState::Clean;
    m_attributesLoaded = m_fileReplaced = m_descriptionChanged = false;
    for (QString* text : {&m_key, &m_codeId, &m_title, &m_storedFile, &m_description})
        text->clear();
    m_origDateTime = m_dateAdded = {};
    m_size = 0;
    m_motherCodeId = 0;
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
    Guarded(ModuleName, u"GetAttributes"_s, [this] {
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

void CFileObject::SetStoredFile(const QString& path)
{
    Guarded(ModuleName, u"<<Let>> StoredFile"_s, [&] {
        GetAttributes();
        m_fileReplaced = m_fileReplaced || !m_title.isEmpty();
        m_storedFile = path;
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

/// Copies the file into the folder of stored files, under a name for what has no row yet.
QString CFileObject::TakeIn() const
{
    constexpr qint64 LargestSize = std::numeric_limits<qint32>::max(); // of the column
    const qint64 size = QFileInfo(m_storedFile).size();
    if (size > LargestSize)
        throw RuntimeError(ErrorNumber::Overflow,
                           u"The file '%1' has %2 bytes; a library stores files of up to %3. Nothing was changed."_s.arg(m_storedFile).arg(size).arg(LargestSize),
                           ModuleName);
    QDir().mkpath(Session().CurrentFilesFolder);
    const QString interim = AddingName();
    CopyFileContents(m_storedFile, interim, Progress);
    return interim;
}

bool CFileObject::InsertObject()
{
    return UnlessCancelled(u"InsertObject"_s, [this] {
        const bool hasFile = !m_storedFile.isEmpty();
        QString interim;
        const auto discard = qScopeGuard([&interim] {
            if (!interim.isEmpty())
                QFile::remove(interim);
        });
        if (hasFile) {
            RequireStorableTitle();
            interim = TakeIn();
            const QDateTime modified = QFileInfo(m_storedFile).lastModified(); // of none when it has gone meanwhile
            m_origDateTime = modified.isValid() ? Date::FromDateTime(modified) : Date();
            m_size = QFileInfo(interim).size();
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
        if (hasFile) {
            MoveIntoPlace(interim, ArrivingName(id), true);
            interim = ArrivingName(id);
        }
        transaction.Commit();
        interim.clear();
        if (hasFile)
            Arrive(id, m_title);
        m_key = QString::number(id);
        m_state = RecordState::Clean;
        m_fileReplaced = m_descriptionChanged = false;
        m_storedFile.clear();
        m_attributesLoaded = true;
    });
}

bool CFileObject::UpdateObject()
{
    return UnlessCancelled(u"UpdateObject"_s, [this] {
        const qint64 id = m_key.toLongLong();
        const bool replaces = m_fileReplaced && !m_storedFile.isEmpty();
        QString interim;
        const auto discard = qScopeGuard([&interim] {
            if (!interim.isEmpty())
                QFile::remove(interim);
        });
        if (replaces) {
            RequireStorableTitle();
            interim = TakeIn();
        }
        Transaction transaction(*m_database);
        Recordset row = m_database->OpenRecordset(u"Files"_s, u"ID = ?"_s, {id});
        row.MoveFirst();
        row.Edit();
        row.Set(u"CodeID"_s, m_codeId.toLongLong());
        row.Set(u"Title"_s, m_title);
        if (m_descriptionChanged) {
            row.Set(u"Description"_s, m_description);
            row.Set(u"LastUpdated"_s, Clock::Now());
        }
        row.Update();
        if (replaces) {
            MoveIntoPlace(interim, ArrivingName(id), true);
            interim = ArrivingName(id);
        }
        transaction.Commit();
        interim.clear();
        if (replaces)
            Arrive(id, m_title);
        m_state = RecordState::Clean;
        m_attributesLoaded = true;
        m_descriptionChanged = m_fileReplaced = false;
        m_storedFile.clear();
    });
}

bool CFileObject::DeleteObject()
{
    return Guarded(ModuleName, u"DeleteObject"_s, [this] {
        const qint64 id = m_key.toLongLong();
        const QString leaving = LeavingName(id);
        QString path;
        const auto putBack = qScopeGuard([&] {
            if (!path.isEmpty())
                QFile::rename(leaving, path);
        });
        Transaction transaction(*m_database);
        const QString place = DeleteStoredFileRow(*m_database, id);
        if (!place.isEmpty() && QFile::exists(place)) {
            MoveIntoPlace(place, leaving, true);
            path = place;
        }
        transaction.Commit();
        path.clear();
        QFile::remove(leaving);
        m_state = RecordState::Deleted;
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
        if (source.isEmpty() || !QFile::exists(source)) {
            const bool deletes = Prompts::Current().MsgBox({.Text = u"Source file not found in its location. Do you wish to delete the record "
                                                                    "from the database?"_s,
                                                            .Caption = u"Update database?"_s,
                                                            .Buttons = MsgBoxButtons::YesNo,
                                                            .Icon = MsgBoxIcon::Question})
                == MsgBoxResult::Yes;
            if (deletes) {
                Delete();
                Commit();
            }
            return;
        }
        const QString interim = InterimName(target);
        CopyFileContents(source, interim, Progress);
        MoveIntoPlace(interim, target, true);
        written = target;
    });
    return written;
}

} // namespace qb
