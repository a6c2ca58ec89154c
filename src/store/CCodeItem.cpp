#include "store/CCodeItem.h"

#include "platform/dao/Database.h"
#include "platform/system/Clock.h"
#include "platform/system/Prompts.h"
#include "store/Checksums.h"
#include "store/Deletions.h"
#include "store/Library.h"
#include "store/PageChanges.h"
#include "store/ReplicaLog.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of CCodeItem::Column. Only children have the mother's columns.
constexpr RowColumn Columns[] = {
    {.Name = "ParentID", .Holds = RowColumn::Number},
    {.Name = "Title"},
    {.Name = "Description"},
    {.Name = "Info"},
    {.Name = "Created", .Holds = RowColumn::Number, .Fixed = true},
    {.Name = "LastChanged", .Holds = RowColumn::Number},
    {.Name = "User"},
    {.Name = "ItemStatus", .Holds = RowColumn::Number},
    {.Name = "ItemRating", .Holds = RowColumn::Number},
    {.Name = "CodeHeaders", .Holds = RowColumn::Number},
    {.Name = "UsageHeaders", .Holds = RowColumn::Number},
    {.Name = "Notes", .Holds = RowColumn::Memo, .Optional = true},
    {.Name = "Code", .Holds = RowColumn::Memo, .Optional = true},
    {.Name = "Example", .Holds = RowColumn::Memo, .Optional = true},
    {.Name = "HTMLPage", .Holds = RowColumn::Boolean, .Optional = true},
    {.Name = "HTMLLastUpdated", .Holds = RowColumn::Number, .Optional = true},
    {.Name = "MotherParentID", .Holds = RowColumn::Number, .Optional = true},
    {.Name = "MotherRecordID", .Holds = RowColumn::Number, .Optional = true, .Fixed = true},
};

/// Long texts move in pieces of this many characters.
constexpr qsizetype ChunkLength = 16384;

/// The columns whose checksums are noted.
constexpr CCodeItem::Column TextColumns[] = {CCodeItem::TitleColumn,   CCodeItem::DescriptionColumn,
                                             CCodeItem::InfoColumn,    CCodeItem::CodeColumn,
                                             CCodeItem::ExampleColumn, CCodeItem::NotesColumn};

/// A long text goes in pieces.
void SetText(Recordset& row, const QString& name, const QString& text)
{
    row.Set(name, QString(u""_s));
    for (qsizetype start = 0; start < text.size(); start += ChunkLength)
        row.AppendChunk(name, text.mid(start, ChunkLength));
}

} // namespace

CCodeItem::CCodeItem() : ItemRow(u"CCodeItem"_s, u"Items"_s, Columns)
{
    CCodeItem::InitialiseProperties();
}

void CCodeItem::InitialiseProperties()
{
    RowObject::InitialiseProperties();
    m_itemChanged = false;
    m_linksChanged = false;
    m_links.Clear();
    m_itemMarkedForDelete = false;
    const Date now = Clock::Now();
    SetCreated(now);
    SetLastChanged(now);
}

void CCodeItem::RowBegun()
{
    if (!OwnLibrary().IsReplicated())
        return;
    const Date now = OwnLibrary().NextStamp();
    SetCreated(now);
    SetLastChanged(now);
}

/// What a change that is made now is dated; the present time where there is no library yet.
Date CCodeItem::Moment() const
{
    return HasLibrary() ? OwnLibrary().NextStamp() : Clock::Now();
}

void CCodeItem::RowRead(bool exists)
{
    if (!exists) {
        Q_EMIT CodeLoaded(false);
        Q_EMIT NotesLoaded(false);
        Q_EMIT UsageLoaded(false);
        Q_EMIT FilesLoaded(false);
        Q_EMIT LinkLoaded(false);
        return;
    }
    m_itemMarkedForDelete = LastChanged().IsNone();
    Q_EMIT CodeLoaded(HasText(CodeColumn));
    Q_EMIT NotesLoaded(HasText(NotesColumn));
    Q_EMIT UsageLoaded(HasText(ExampleColumn));
    Q_EMIT FilesLoaded(
        !OwnLibrary().QueryValue(u"SELECT 1 FROM Files WHERE CodeID = ? LIMIT 1"_s, {RowKey()}).IsNull());
    Q_EMIT LinkLoaded(HTMLPage());
    ReadLinks();                                    // half of them would be written as if they were all
    Q_EMIT NewItemLoaded(Created(), LastChanged()); // whoever hears it finds a whole item
}

void CCodeItem::SetParentKey(const QString& value)
{
    Let(ParentColumn, value.toLongLong());
    if (HasLibrary() && OwnLibrary().IsChildReplica())
        FindMotherParent();
}

void CCodeItem::FindMotherParent()
{
    const qint64 parent = OwnValue(ParentColumn).ToLong();
    if (parent <= 0) {
        Store(MotherParentColumn, 0);
        return;
    }
    const Recordset row = OwnLibrary().OpenRecordset(u"Items"_s, u"ID = ?"_s, {parent});
    if (row.IsEmpty()) {
        Prompts::Current().MsgBox({.Text = u"Error - the item is being moved under non existing parent!!!"_s,
                                   .Caption = u"Error"_s,
                                   .Icon = MsgBoxIcon::Critical});
        return;
    }
    const Value motherRecord = row[u"MotherRecordID"_s];
    Store(MotherParentColumn, motherRecord.IsNull() ? -1 : std::max(motherRecord.ToLong(), qint64(-1)));
}

void CCodeItem::SetItemStatus(qint32 value)
{
    if (m_statusGuard)
        return;
    m_statusGuard = true;
    LetOfAnyState(StatusColumn, value);
    Q_EMIT StatusUpdated(value);
    m_statusGuard = false;
}

void CCodeItem::SetItemChanged(bool value)
{
    GetAttributes(); // a row that was never read must not be overwritten with empty columns
    m_itemChanged = value;
    if (!m_dontUpdateLastChangedDate)
        Guarded(ModuleName(), u"<<Let>> ItemChanged"_s, [this] { SetLastChanged(Moment()); });
}

CPrintFiles& CCodeItem::PrintFiles()
{
    if (!m_printFiles)
        m_printFiles = std::make_unique<CPrintFiles>();
    return *m_printFiles;
}

void CCodeItem::AddCodeHeader(quint8 header)
{
    if (CodeHeaderPresent(header)) {
        Prompts::Current().MsgBox({.Text = u"Header already present in this item."_s,
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Exclamation});
        return;
    }
    SetCodeHeaders(quint8(CodeHeaders() + header));
}

void CCodeItem::RemoveCodeHeader(quint8 header)
{
    if (!CodeHeaderPresent(header))
        return;
    SetCodeHeaders(quint8(CodeHeaders() - header));
    SetItemChanged(true);
}

// The two operations on usage headers are deliberately not the mirror of those on code headers:
// the first looks at the code's bits, the second adds where one would expect it to take away.

void CCodeItem::AddUsageHeader(quint8 header)
{
    Guarded(ModuleName(), u"AddUsageHeader"_s, [&] {
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
    Guarded(ModuleName(), u"RemoveUsageHeader"_s, [&] {
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

bool CCodeItem::InsertObject()
{
    return Guarded(ModuleName(), u"InsertObject"_s, [this] {
        Recordset row = OwnLibrary().OpenRecordset(u"Items"_s, u"ID = 0"_s);
        row.AddNew();
        for (size_t column = 0; column < std::size(Columns); ++column) {
            const bool isMothers = column == MotherParentColumn || column == MotherRecordColumn;
            const QString name = QString::fromLatin1(Columns[column].Name);
            if (Columns[column].Holds == RowColumn::Memo)
                SetText(row, name, OwnValue(column).ToText());
            else if (!isMothers || (column == MotherParentColumn && OwnLibrary().IsChildReplica()))
                row.Set(name, OwnValue(column));
        }
        Transaction whole(OwnLibrary()); // the row and the note of its checksums
        row.Update();
        NoteNewChecksums(row.LastModified());
        whole.Commit();
        RowInserted(row.LastModified());
    });
}

void CCodeItem::NoteNewChecksums(qint64 id) const
{
    Checksums sums;
    for (const Column column : TextColumns)
        sums[QString::fromLatin1(Columns[column].Name)] = ChecksumOfText(OwnValue(column).ToText());
    WriteChecksums(OwnLibrary(), u"Items"_s, id, OwnValue(LastChangedColumn).ToLong(), sums);
}

/// Notes the checksums of the row that was written. Those of the columns that were not are kept, so that what has
/// rotted meanwhile is not taken for good; only where another program has written the row since are they made anew.
void CCodeItem::NoteChecksums(const Recordset& row, qint64 formerStamp) const
{
    if (!HasChecksumTable(OwnLibrary()))
        return;
    const std::optional<NotedChecksums> former = ReadChecksums(OwnLibrary(), u"Items"_s, RowKey());
    const bool isKnown = former && former->IsWhole && former->Stamp == formerStamp;
    const TableDef& table = OwnLibrary().GetTableDef(u"Items"_s);
    Checksums sums;
    for (const Column column : TextColumns) {
        const QString name = QString::fromLatin1(Columns[column].Name);
        if (!table.FindField(name))
            continue;
        if (isKnown && !IsChanged(column) && former->Sums.contains(name))
            sums[name] = former->Sums[name];
        else
            sums[name] = ChecksumOfText((IsChanged(column) ? OwnValue(column) : row[name]).ToText());
    }
    WriteChecksums(OwnLibrary(), u"Items"_s, RowKey(), row[u"LastChanged"_s].ToLong(), sums);
}

/// An orphan that is edited keeps its date, by which nobody would learn of the change.
void CCodeItem::NoteDatelessChange(const Recordset& row) const
{
    Library& library = OwnLibrary();
    if (library.IsReplicated())
        ReplicaLog(library).Note({.Event = ReplicaEvent::Changed,
                                  .Table = u"Items"_s,
                                  .Record = RowKey(),
                                  .Moment = library.NextStamp(),
                                  .RowDate = row[u"LastChanged"_s].ToDate()});
}

bool CCodeItem::UpdateObject()
{
    return Guarded(ModuleName(), u"UpdateObject"_s, [this] {
        // The row first, and whatever becomes of the links: a text that was typed waits for no note.
        Transaction whole(OwnLibrary());
        if (m_itemChanged) {
            RequireRead();
            Recordset row = OwnLibrary().OpenRecordset(u"Items"_s, u"ID = ?"_s, {RowKey()});
            row.Edit();
            const qint64 formerStamp = row[u"LastChanged"_s].ToLong();
            WriteChanged(row);
            row.Update();
            NoteChecksums(row, formerStamp);
            if (m_dontUpdateLastChangedDate)
                NoteDatelessChange(row);
        }
        whole.Commit();
        if (m_itemChanged) {
            m_itemMarkedForDelete = LastChanged().IsNone();
            RowWritten();
        } else {
            SetUnchanged();
        }
        m_itemChanged = false;
        if (m_linksChanged)
            UpdateLinks();
        m_linksChanged = false;
    });
}

bool CCodeItem::DeleteObject()
{
    return Guarded(ModuleName(), u"DeleteObject"_s, [this] { DeleteRow(); });
}

/// The table of deletions has what the other side has seen in its present form, the log all that it may have.
void CCodeItem::RecordDeletion(const Recordset& row) const
{
    Library& library = OwnLibrary();
    const Date now = library.NextStamp();
    const Value lastChanged = row[u"LastChanged"_s];
    if (lastChanged.IsNull() || lastChanged.ToDate() < DeletionCutOff(library)) {
        Recordset deleted = library.OpenRecordset(u"DeletedItems"_s, u"ItemID IS NULL"_s);
        deleted.AddNew();
        deleted.Set(u"ItemID"_s, RowKey());
        deleted.Set(u"DateDeleted"_s, now);
        deleted.Update();
    }
    LogDeletion(library, {.Table = u"Items"_s,
                          .Record = RowKey(),
                          .MotherRecord = library.IsChildReplica() ? row[u"MotherRecordID"_s].ToLong() : 0,
                          .Added = row[u"Created"_s],
                          .Deleted = now});
}

void CCodeItem::DeleteRow()
{
    const qint64 id = RowKey();
    Transaction transaction(OwnLibrary());
    Recordset row = OwnLibrary().OpenRecordset(u"Items"_s, u"ID = ?"_s, {id});
    if (OwnLibrary().IsReplicated()) // an ordinary library has nobody to tell
        RecordDeletion(row);
    row.Delete();
    ForgetChecksums(OwnLibrary(), u"Items"_s, id);
    ForgetPageChanges(OwnLibrary(), id);
    OwnLibrary().Execute(u"DELETE FROM Bookmarks WHERE CodeID = ?"_s, {id});
    OwnLibrary().Execute(u"DELETE FROM Files WHERE CodeID = ?"_s, {id});
    OwnLibrary().Execute(u"DELETE FROM ItemLinks WHERE ItemID = ?"_s, {id});
    OwnLibrary().Execute(u"DELETE FROM ItemLinks WHERE LinkItemID = ?"_s, {id});
    transaction.Commit();
    RowDeleted();
}

} // namespace qb
