#include "store/CBookmark.h"

#include "platform/dao/Database.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

#include <iterator>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of CBookmark::Column.
constexpr RowColumn Columns[] = {
    {.Name = "CodeID", .Holds = RowColumn::Number},
    {.Name = "Description"},
    {.Name = "BookmarkGroup", .Holds = RowColumn::Number},
};

} // namespace

CBookmark::CBookmark() : RowObject(u"CBookmark"_s, u"Bookmarks"_s, Columns)
{
    CBookmark::InitialiseProperties();
}

void CBookmark::InitialiseProperties()
{
    RowObject::InitialiseProperties();
    m_codeItem.reset();
}

CCodeItem& CBookmark::CodeItem()
{
    const QString key = CodeItemKey();
    if (!m_codeItem || m_codeItem->Key() != key) {
        m_codeItem = std::make_unique<CCodeItem>();
        if (HasLibrary())
            m_codeItem->Initialise(OwnLibrary(), key);
    }
    return *m_codeItem;
}

bool CBookmark::InsertObject()
{
    return Guarded(ModuleName(), u"InsertObject"_s, [this] {
        Transaction transaction(OwnLibrary());
        RequireItem(OwnLibrary(), OwnValue(CodeItemColumn).ToLong()); // another program may have deleted it
        Recordset row = OwnLibrary().OpenRecordset(u"Bookmarks"_s, u"ID = 0"_s);
        row.AddNew();
        for (size_t column = 0; column < std::size(Columns); ++column)
            row.Set(QString::fromLatin1(Columns[column].Name), OwnValue(column));
        row.Update();
        const qint64 id = row.LastModified();
        transaction.Commit();
        RowInserted(id);
    });
}

bool CBookmark::UpdateObject()
{
    return Guarded(ModuleName(), u"UpdateObject"_s, [this] {
        if (State() == RecordState::Deleted)
            return;
        RequireRead();
        if (State() != RecordState::Edited)
            return;
        Transaction transaction(OwnLibrary());
        Recordset row = OwnLibrary().OpenRecordset(u"Bookmarks"_s, u"ID = ?"_s, {RowKey()});
        row.Edit();
        WriteChanged(row);
        row.Update();
        transaction.Commit();
        RowWritten();
    });
}

/// One that another program has removed is gone all the same.
bool CBookmark::DeleteObject()
{
    return Guarded(ModuleName(), u"DeleteObject"_s, [this] {
        OwnLibrary().Execute(u"DELETE FROM Bookmarks WHERE ID = ?"_s, {RowKey()});
        RowDeleted();
    });
}

} // namespace qb
