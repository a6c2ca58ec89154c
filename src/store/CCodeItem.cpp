#include "store/CCodeItem.h"

#include "platform/dao/Database.h"
#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "store/Deletions.h"
#include "store/SessionValues.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CCodeItem"_s;

/// Blobs and long texts move in pieces of this many characters.
constexpr qsizetype ChunkLength = 16384;

void AppendText(Recordset& row, const QString& field, const QString& text)
{
    row.Set(field, QString(u""_s));
    for (qsizetype start = 0; start < text.size(); start += ChunkLength)
        row.AppendChunk(field, text.mid(start, ChunkLength));
}

} // namespace

CCodeItem::CCodeItem()
{
    InitialiseProperties();
}

void CCodeItem::InitialiseProperties()
{
    m_state = RecordState::Clean;
    m_attributesLoaded = false;
    m_readFailed = false;
    m_itemChanged = false;
    m_linksChanged = false;
    m_links.Clear();
    m_itemMarkedForDelete = false;
    for (QString* text : {&m_key, &m_title, &m_description, &m_info, &m_user, &m_notes, &m_code, &m_example})
        text->clear();
    m_parentKey = u"0"_s;
    m_itemStatus = 0;
    m_itemRating = 0;
    m_codeHeaders = 0;
    m_usageHeaders = 0;
    m_htmlPage = false;
    m_created = Clock::Now();
    m_lastChanged = m_created;
    m_htmlLastUpdated = {};
    m_motherParentKey = 0;
    m_motherRecordKey = 0;
}

void CCodeItem::Initialise(Database& database, const QString& key)
{
    Guarded(ModuleName, u"IDataObject_Initialise"_s, [&] {
        InitialiseProperties();
        m_database = &database;
        m_key = key;
        m_state = key.isEmpty() ? RecordState::New : RecordState::Clean;
    });
}

void CCodeItem::SetStateForLet()
{
    m_state = StateForLet(m_state, u"CCodeItem::SetStateForLet"_s);
}

void CCodeItem::GetAttributes()
{
    if (m_attributesLoaded || !m_database || (m_state != RecordState::Clean && m_state != RecordState::Edited))
        return;
    m_attributesLoaded = true; // at once, so that the events below can't start it again
    // What could not be read must not be written back as empty.
    m_readFailed = !Guarded(ModuleName, u"GetAttributes"_s, [this] {
        const Recordset row = m_database->OpenRecordset(u"Items"_s, u"ID = ?"_s, {m_key.toLongLong()});
        if (row.IsEmpty()) {
            Q_EMIT CodeLoaded(false);
            Q_EMIT NotesLoaded(false);
            Q_EMIT UsageLoaded(false);
            Q_EMIT FilesLoaded(false);
            Q_EMIT LinkLoaded(false);
            return;
        }
        ReadRow(row);
        ReadLongColumns(row);
        Q_EMIT CodeLoaded(!m_code.isEmpty());
        Q_EMIT NotesLoaded(!m_notes.isEmpty());
        Q_EMIT UsageLoaded(!m_example.isEmpty());
        Q_EMIT FilesLoaded(
            !m_database->QueryValue(u"SELECT 1 FROM Files WHERE CodeID = ? LIMIT 1"_s, {m_key.toLongLong()}).IsNull());
        Q_EMIT LinkLoaded(m_htmlPage);
        Q_EMIT NewItemLoaded(m_created, m_lastChanged);
        LoadLinks();
    });
}

void CCodeItem::ReadRow(const Recordset& row)
{
    m_parentKey = QString::number(row[u"ParentID"_s].ToLong());
    m_title = row[u"Title"_s].ToText();
    m_description = row[u"Description"_s].ToText();
    m_info = row[u"Info"_s].ToText();
    m_created = row[u"Created"_s].ToDate();
    m_lastChanged = row[u"LastChanged"_s].ToDate();
    m_itemMarkedForDelete = m_lastChanged.IsNone();
    m_user = row[u"User"_s].ToText();
    m_itemStatus = qint32(row[u"ItemStatus"_s].ToLong());
    m_itemRating = qint32(row[u"ItemRating"_s].ToLong());
    m_codeHeaders = quint8(row[u"CodeHeaders"_s].ToLong());
    m_usageHeaders = quint8(row[u"UsageHeaders"_s].ToLong());
}

/// The columns that a library may lack or fail to read: each one missing leaves its default.
void CCodeItem::ReadLongColumns(const Recordset& row)
{
    const auto read = [&row](const QString& field, auto store) {
        try {
            store(row[field]);
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::ItemNotFound) // only children have the mother's columns
                throw;
        }
    };
    read(u"Notes"_s, [this](const Value& value) { m_notes = value.ToText(); });
    read(u"Code"_s, [this](const Value& value) { m_code = value.ToText(); });
    read(u"Example"_s, [this](const Value& value) { m_example = value.ToText(); });
    read(u"HTMLPage"_s, [this](const Value& value) { m_htmlPage = value.ToBoolean(); });
    read(u"HTMLLastUpdated"_s, [this](const Value& value) { m_htmlLastUpdated = value.ToDate(); });
    if (!Session().IsChildReplica)
        return;
    read(u"MotherParentID"_s, [this](const Value& value) { m_motherParentKey = qint32(value.ToLong()); });
    read(u"MotherRecordID"_s, [this](const Value& value) { m_motherRecordKey = qint32(value.ToLong()); });
}

void CCodeItem::SetParentKey(const QString& value)
{
    Let(m_parentKey, value.isEmpty() ? u"0"_s : value);
    if (Session().IsChildReplica)
        FindMotherParent();
}

void CCodeItem::FindMotherParent()
{
    const qint64 parent = m_parentKey.toLongLong();
    if (parent <= 0) {
        m_motherParentKey = 0;
        return;
    }
    const Recordset row = m_database->OpenRecordset(u"Items"_s, u"ID = ?"_s, {parent});
    if (row.IsEmpty()) {
        Prompts::Current().MsgBox({.Text = u"Error - the item is being moved under non existing parent!!!"_s,
                                   .Caption = u"Error"_s,
                                   .Icon = MsgBoxIcon::Critical});
        return;
    }
    const qint64 motherRecord = row[u"MotherRecordID"_s].ToLong();
    m_motherParentKey = motherRecord > -1 ? qint32(motherRecord) : -1;
}

void CCodeItem::SetItemStatus(qint32 value)
{
    if (m_statusGuard)
        return;
    m_statusGuard = true;
    LetOfAnyState(m_itemStatus, value);
    Q_EMIT StatusUpdated(value);
    m_statusGuard = false;
}

void CCodeItem::SetItemChanged(bool value)
{
    GetAttributes(); // a row that was never read must not be overwritten with empty columns
    m_itemChanged = value;
    if (!m_dontUpdateLastChangedDate)
        m_lastChanged = Clock::Now();
}

void CCodeItem::AddCodeHeader(quint8 header)
{
    if (CodeHeaderPresent(header)) {
        Prompts::Current().MsgBox({.Text = u"Header already present in this item."_s,
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Exclamation});
        return;
    }
    SetCodeHeaders(quint8(m_codeHeaders + header));
}

void CCodeItem::RemoveCodeHeader(quint8 header)
{
    if (!CodeHeaderPresent(header))
        return;
    SetCodeHeaders(quint8(m_codeHeaders - header));
    SetItemChanged(true);
}

// The two operations on usage headers are deliberately not the mirror of those on code headers:
// the first looks at the code's bits, the second adds where one would expect it to take away.

void CCodeItem::AddUsageHeader(quint8 header)
{
    Guarded(ModuleName, u"AddUsageHeader"_s, [&] {
        if ((CodeHeaders() & quint8(~header)) == 0) {
            Prompts::Current().MsgBox({.Text = u"Header already present in this item."_s,
                                       .Caption = ApplicationTitle,
                                       .Icon = MsgBoxIcon::Exclamation});
            return;
        }
        const int sum = UsageHeaders() + header;
        if (sum > 255)
            throw RuntimeError(ErrorNumber::Overflow, u"Overflow"_s, u"CCodeItem::AddUsageHeader"_s);
        SetUsageHeaders(quint8(sum));
    });
}

void CCodeItem::RemoveUsageHeader(quint8 header)
{
    Guarded(ModuleName, u"RemoveUsageHeader"_s, [&] {
        if (!UsageHeaderPresent(header)) {
            Prompts::Current().MsgBox({.Text = u"Selected header doesn't exist in this item."_s,
                                       .Caption = ApplicationTitle,
                                       .Icon = MsgBoxIcon::Exclamation});
            return;
        }
        const int sum = UsageHeaders() + header;
        if (sum > 255)
            throw RuntimeError(ErrorNumber::Overflow, u"Overflow"_s, u"CCodeItem::RemoveUsageHeader"_s);
        SetUsageHeaders(quint8(sum));
        SetItemChanged(true);
    });
}

void CCodeItem::Delete()
{
    m_state = RecordState::MarkedForDelete;
}

bool CCodeItem::Commit()
{
    return Guarded(ModuleName, u"IDataObject_Commit"_s, [this] {
        switch (m_state) {
        case RecordState::New:
            return InsertObject();
        case RecordState::MarkedForDelete:
            return DeleteObject();
        default:
            return UpdateObject();
        }
    }, false);
}

/// The columns that an insert and an update write alike.
void CCodeItem::WriteSharedColumns(Recordset& row)
{
    row.Set(u"ParentID"_s, m_parentKey.toLongLong());
    row.Set(u"Title"_s, m_title);
    row.Set(u"Description"_s, m_description);
    row.Set(u"Info"_s, m_info);
    row.Set(u"LastChanged"_s, m_lastChanged);
    row.Set(u"User"_s, m_user);
    row.Set(u"ItemStatus"_s, m_itemStatus);
    row.Set(u"ItemRating"_s, m_itemRating);
    row.Set(u"CodeHeaders"_s, m_codeHeaders);
    row.Set(u"UsageHeaders"_s, m_usageHeaders);
    row.Set(u"HTMLPage"_s, m_htmlPage);
    row.Set(u"HTMLLastUpdated"_s, m_htmlLastUpdated);
}

bool CCodeItem::InsertObject()
{
    return Guarded(ModuleName, u"InsertObject"_s, [this] {
        Recordset row = m_database->OpenRecordset(u"Items"_s, u"ID = 0"_s);
        row.AddNew();
        WriteSharedColumns(row);
        row.Set(u"Created"_s, m_created);
        AppendText(row, u"Code"_s, m_code);
        AppendText(row, u"Notes"_s, m_notes);
        AppendText(row, u"Example"_s, m_example);
        if (Session().IsChildReplica)
            row.Set(u"MotherParentID"_s, m_motherParentKey);
        row.Update();
        m_key = QString::number(row.LastModified());
        m_state = RecordState::Clean;
    });
}

bool CCodeItem::UpdateObject()
{
    return Guarded(ModuleName, u"UpdateObject"_s, [this] {
        Transaction whole(*m_database);
        if (m_itemChanged) {
            if (m_readFailed)
                throw RuntimeError(ErrorNumber::NoCurrentRecord,
                                   u"The item %1 could not be read, so it is not written either; nothing was changed."_s.arg(m_key), ModuleName);
            Recordset row = m_database->OpenRecordset(u"Items"_s, u"ID = ?"_s, {m_key.toLongLong()});
            row.Edit();
            WriteSharedColumns(row);
            row.Set(u"Code"_s, m_code);
            row.Set(u"Notes"_s, m_notes);
            row.Set(u"Example"_s, m_example);
            if (Session().IsChildReplica && m_database->GetTableDef(u"Items"_s).FindField(u"MotherParentID"_s))
                row.Set(u"MotherParentID"_s, m_motherParentKey);
            row.Update();
            m_itemMarkedForDelete = m_lastChanged.IsNone();
        }
        if (m_linksChanged)
            UpdateLinks();
        whole.Commit();
        m_state = RecordState::Clean;
        m_attributesLoaded = true;
        m_itemChanged = false;
        m_linksChanged = false;
    });
}

bool CCodeItem::DeleteObject()
{
    return Guarded(ModuleName, u"DeleteObject"_s, [this] { DeleteRow(); });
}

void CCodeItem::DeleteRow()
{
    const qint64 id = m_key.toLongLong();
    Transaction transaction(*m_database);
    Recordset row = m_database->OpenRecordset(u"Items"_s, u"ID = ?"_s, {id});
    const Value lastChanged = row[u"LastChanged"_s];
    const bool replicated = Session().IsChildReplica || Session().IsMotherReplica;
    // What the other side has seen in its present form it must be told of. An ordinary library
    // has no such table and nobody to tell.
    if (replicated && (lastChanged.IsNull() || lastChanged.ToDate() < DeletionCutOff(*m_database))) {
        Recordset deleted = m_database->OpenRecordset(u"DeletedItems"_s, u"ItemID IS NULL"_s);
        deleted.AddNew();
        deleted.Set(u"ItemID"_s, id);
        deleted.Set(u"DateDeleted"_s, Clock::Now());
        deleted.Update();
    }
    row.Delete();
    m_database->Execute(u"DELETE FROM Bookmarks WHERE CodeID = ?"_s, {id});
    m_database->Execute(u"DELETE FROM Files WHERE CodeID = ?"_s, {id});
    m_database->Execute(u"DELETE FROM ItemLinks WHERE ItemID = ?"_s, {id});
    m_database->Execute(u"DELETE FROM ItemLinks WHERE LinkItemID = ?"_s, {id});
    transaction.Commit();
    m_state = RecordState::Deleted;
}

} // namespace qb
