#include "conflicts/CConflictCodeItem.h"

#include "platform/system/RuntimeError.h"
#include "store/CCodeItem.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of CConflictCodeItem::Column.
constexpr RowColumn Columns[] = {
    {.Name = "Title"},
    {.Name = "Description"},
    {.Name = "Info"},
    {.Name = "Code", .Holds = RowColumn::Memo, .Optional = true},
    {.Name = "Notes", .Holds = RowColumn::Memo, .Optional = true},
    {.Name = "Example", .Holds = RowColumn::Memo, .Optional = true},
    {.Name = "CodeHeaders", .Holds = RowColumn::Number},
    {.Name = "UsageHeaders", .Holds = RowColumn::Number},
    {.Name = "Created", .Holds = RowColumn::Number, .Fixed = true},
    {.Name = "LastChanged", .Holds = RowColumn::Number},
    {.Name = "HTMLPage", .Holds = RowColumn::Boolean, .Optional = true},
    {.Name = "HTMLLastUpdated", .Holds = RowColumn::Number, .Optional = true},
    {.Name = "ItemStatus", .Holds = RowColumn::Number},
    {.Name = "ItemRating", .Holds = RowColumn::Number, .Optional = true},
    {.Name = "ReplicaOrigin", .Holds = RowColumn::Boolean, .Optional = true, .Fixed = true},
};

} // namespace

CConflictCodeItem::CConflictCodeItem() : RowObject(u"CConflictCodeItem"_s, u"Items"_s, Columns) {}

void CConflictCodeItem::Initialise(Library& library, const QString& key)
{
    const bool isGiven = Guarded(ModuleName(), u"IDataObject_Initialise"_s, [&] {
        if (key.isEmpty())
            throw RuntimeError(ErrorNumber::InvalidCall, u"Missing required parameter."_s, ModuleName());
    });
    if (isGiven)
        RowObject::Initialise(library, key);
}

void CConflictCodeItem::InitialiseProperties()
{
    RowObject::InitialiseProperties();
    m_itemChanged = m_filesRead = m_isThere = false;
}

void CConflictCodeItem::RowRead(bool exists)
{
    m_isThere = exists;
}

void CConflictCodeItem::SetTemporaryTable(bool value)
{
    UseTable(value ? u"TempItems"_s : u"Items"_s);
    m_files.SetTemporaryTable(value);
}

CConflictFileObjects& CConflictCodeItem::FileObjects()
{
    if (!m_filesRead && HasLibrary()) {
        m_filesRead = true;
        m_files.SetDB(&OwnLibrary());
        m_files.AddAll(RowKey());
    }
    return m_files;
}

bool CConflictCodeItem::AreTextsChanged() const
{
    constexpr Column Texts[] = {TitleColumn, DescriptionColumn, InfoColumn, CodeColumn, NotesColumn, ExampleColumn};
    return std::any_of(std::begin(Texts), std::end(Texts), [this](Column column) { return IsChanged(column); });
}

void CConflictCodeItem::RequireUnchanged()
{
    GetAttributes();
    bool isChanged = !m_isThere || !ForeignChanges().empty(); // which raises an error when the row has gone
    QStringList known;
    for (const auto& file : FileObjects())
        known << file->Key() + u'\n' + file->ReadValue(CConflictFileObject::DescriptionColumn).ToText();
    QStringList there;
    Statement rows = OwnLibrary().Query(u"SELECT ID, Description FROM %1 WHERE CodeID = ? ORDER BY ID"_s.arg(
                                            TemporaryTable() ? u"TempFiles"_s : u"Files"_s),
                                        {RowKey()});
    while (rows.Step())
        there << rows.Text(0) + u'\n' + rows.Text(1);
    if (isChanged || known != there)
        throw RuntimeError(
            ErrorNumber::Engine,
            u"The item '%1' was changed by another program since it was shown. Nothing was decided; look "
            "at both versions again."_s.arg(Title()),
            ModuleName());
}

bool CConflictCodeItem::InsertObject()
{
    return Guarded(ModuleName(), u"InsertObject"_s, [this] {
        throw RuntimeError(ErrorNumber::RecordNotCreated, u"A version in conflict is never made here."_s, ModuleName());
    });
}

/// A row of `Items` is written by the object that answers for it: checksums, dates and the other replicas.
void CConflictCodeItem::WriteItem()
{
    CCodeItem item;
    item.Initialise(OwnLibrary(), Key());
    item.ReadWhole();
    item.SetTitle(Title());
    item.SetDescription(Description());
    item.SetInfo(Info());
    item.SetCode(Code());
    item.SetNotes(Notes());
    item.SetExample(Example());
    item.SetCodeHeaders(CodeHeaders());
    item.SetUsageHeaders(UsageHeaders());
    item.SetHTMLPage(HTMLPage());
    item.SetHTMLLastUpdated(HTMLLastUpdated());
    item.SetItemStatus(ItemStatus());
    item.SetItemRating(ItemRating());
    item.SetItemChanged(true);
    if (!item.Commit())
        throw RuntimeError(ErrorNumber::Engine, u"The item '%1' could not be stored."_s.arg(Title()), ModuleName());
    SetLastChanged(item.LastChanged());
}

void CConflictCodeItem::WriteTemporaryRow()
{
    Recordset row = OwnLibrary().OpenRecordset(TableName(), u"ID = ?"_s, {RowKey()});
    row.Edit();
    WriteChanged(row);
    row.Update();
}

bool CConflictCodeItem::UpdateObject()
{
    return Guarded(ModuleName(), u"UpdateObject"_s, [this] {
        if (!m_itemChanged)
            return;
        ReadWhole();
        RequireRead();
        TemporaryTable() ? WriteTemporaryRow() : WriteItem();
        m_itemChanged = false;
        RowWritten();
    });
}

bool CConflictCodeItem::DeleteObject()
{
    return Guarded(ModuleName(), u"DeleteObject"_s, [this] {
        Library& library = OwnLibrary();
        Transaction whole(library);
        if (TemporaryTable()) {
            library.Execute(u"DELETE FROM TempFiles WHERE CodeID = ?"_s, {RowKey()});
            library.Execute(u"DELETE FROM TempHTMLFiles WHERE ItemIDRef = ?"_s, {RowKey()});
            library.Execute(u"DELETE FROM TempItems WHERE ID = ?"_s, {RowKey()});
        } else {
            CCodeItem item;
            item.Initialise(library, Key());
            item.DeleteRow();
        }
        whole.Commit();
        RowDeleted();
    });
}

} // namespace qb
