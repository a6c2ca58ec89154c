#pragma once

#include "conflicts/CConflictFileObjects.h"
#include "platform/system/Date.h"
#include "store/RowObject.h"

namespace qb {

/// One version of an item in conflict: the library's own, a row of `Items`, or the other one, a row of `TempItems`.
class CConflictCodeItem : public RowObject {
public:
    CConflictCodeItem();

    /// The columns, as RowObject numbers them.
    enum Column : size_t {
        TitleColumn,
        DescriptionColumn,
        InfoColumn,
        CodeColumn,
        NotesColumn,
        ExampleColumn,
        CodeHeadersColumn,
        UsageHeadersColumn,
        CreatedColumn,
        LastChangedColumn,
        HTMLPageColumn,
        HTMLLastUpdatedColumn,
        StatusColumn,
        RatingColumn,
        OriginInReplicaColumn
    };

    /// The key must be that of a row: without one an error is reported.
    void Initialise(Library& library, const QString& key) override;

    /// True: the row is one of `TempItems`, and the files are of `TempFiles`. To be set before anything is read.
    bool TemporaryTable() const { return m_files.TemporaryTable(); }
    void SetTemporaryTable(bool value);

    QString Title() { return Loaded(TitleColumn).ToText(); }
    void SetTitle(const QString& value) { Let(TitleColumn, value); }
    QString Description() { return Loaded(DescriptionColumn).ToText(); }
    void SetDescription(const QString& value) { Let(DescriptionColumn, value); }
    QString Info() { return Loaded(InfoColumn).ToText(); }
    void SetInfo(const QString& value) { Let(InfoColumn, value); }
    /// Code, notes and usage are RTF strings.
    QString Code() { return Loaded(CodeColumn).ToText(); }
    void SetCode(const QString& value) { Let(CodeColumn, value); }
    QString Notes() { return Loaded(NotesColumn).ToText(); }
    void SetNotes(const QString& value) { Let(NotesColumn, value); }
    QString Example() { return Loaded(ExampleColumn).ToText(); } ///< the usage text
    void SetExample(const QString& value) { Let(ExampleColumn, value); }
    /// The sections in Code and Example, which go with these texts.
    quint8 CodeHeaders() { return quint8(Loaded(CodeHeadersColumn).ToLong()); }
    void SetCodeHeaders(quint8 value) { Let(CodeHeadersColumn, value); }
    quint8 UsageHeaders() { return quint8(Loaded(UsageHeadersColumn).ToLong()); }
    void SetUsageHeaders(quint8 value) { Let(UsageHeadersColumn, value); }
    bool HTMLPage() { return Loaded(HTMLPageColumn).ToBoolean(); }
    void SetHTMLPage(bool value) { Let(HTMLPageColumn, value); }
    Date HTMLLastUpdated() { return Loaded(HTMLLastUpdatedColumn).ToDate(); }
    void SetHTMLLastUpdated(Date value) { LetOfAnyState(HTMLLastUpdatedColumn, value); }
    Date Created() { return Loaded(CreatedColumn).ToDate(); }
    Date LastChanged() { return Loaded(LastChangedColumn).ToDate(); }
    void SetLastChanged(Date value) { LetOfAnyState(LastChangedColumn, value); }
    qint32 ItemStatus() { return qint32(Loaded(StatusColumn).ToLong()); }
    void SetItemStatus(qint32 value) { Let(StatusColumn, value); }
    qint32 ItemRating() { return qint32(Loaded(RatingColumn).ToLong()); }
    void SetItemRating(qint32 value) { Let(RatingColumn, value); }
    /// The version came out of a synchronization file. False for a row of `Items`.
    bool OriginInReplica() { return Loaded(OriginInReplicaColumn).ToBoolean(); }

    /// The row is to be written at the next commit.
    bool ItemChanged() const { return m_itemChanged; }
    void SetItemChanged(bool value) { m_itemChanged = value; }

    /// Title, description, info, code, notes or usage say something else than the row.
    bool AreTextsChanged() const;

    /// Filled at the first call.
    CConflictFileObjects& FileObjects();
    /// Raises 3167 when the row has gone, 3000 when the row, or which files it has, is not what was read.
    void RequireUnchanged();

protected:
    // RowObject
    QString StateModule() const override { return QStringLiteral("CCodeItem"); }
    void InitialiseProperties() override;
    void RowRead(bool exists) override;
    bool InsertObject() override;
    bool UpdateObject() override;
    bool DeleteObject() override;

private:
    void WriteItem();
    void WriteTemporaryRow();

    bool m_itemChanged = false;
    bool m_filesRead = false;
    bool m_isThere = false;
    CConflictFileObjects m_files;
};

} // namespace qb
