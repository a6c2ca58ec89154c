#pragma once

#include "platform/system/Date.h"
#include "store/RowObject.h"

namespace qb {

/// The columns of a row of `Items`, or of a table of the same columns, as properties: what they say, and how what is
/// set in them is held until a commit.
class ItemRow : public RowObject {
public:
    /// The columns, as RowObject numbers them.
    enum Column : size_t {
        ParentColumn,
        TitleColumn,
        DescriptionColumn,
        InfoColumn,
        CreatedColumn,
        LastChangedColumn,
        UserColumn,
        StatusColumn,
        RatingColumn,
        CodeHeadersColumn,
        UsageHeadersColumn,
        NotesColumn,
        CodeColumn,
        ExampleColumn,
        HTMLPageColumn,
        HTMLLastUpdatedColumn,
        MotherParentColumn,
        MotherRecordColumn
    };

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
    bool HTMLPage() { return Loaded(HTMLPageColumn).ToBoolean(); }
    void SetHTMLPage(bool value) { Let(HTMLPageColumn, value); }

    /// The ID of the parent as text, "0" under the root.
    QString ParentKey() { return QString::number(Loaded(ParentColumn).ToLong()); }

    QString User() { return Loaded(UserColumn).ToText(); }
    void SetUser(const QString& value) { LetOfAnyState(UserColumn, value); }
    qint32 ItemRating() { return qint32(Loaded(RatingColumn).ToLong()); }
    void SetItemRating(qint32 value) { LetOfAnyState(RatingColumn, value); }
    qint32 ItemStatus() { return qint32(Loaded(StatusColumn).ToLong()); }
    /// The code sections in Code and Example: a sum of 1, 2, 4, 8 and 16.
    quint8 CodeHeaders() { return quint8(Loaded(CodeHeadersColumn).ToLong()); }
    void SetCodeHeaders(quint8 value) { LetOfAnyState(CodeHeadersColumn, value); }
    quint8 UsageHeaders() { return quint8(Loaded(UsageHeadersColumn).ToLong()); }
    void SetUsageHeaders(quint8 value) { LetOfAnyState(UsageHeadersColumn, value); }

    Date Created() { return Loaded(CreatedColumn).ToDate(); }
    void SetCreated(Date value) { Store(CreatedColumn, value); }
    Date LastChanged() { return Loaded(LastChangedColumn).ToDate(); }
    void SetLastChanged(Date value) { Store(LastChangedColumn, value); }
    Date HTMLLastUpdated() { return Loaded(HTMLLastUpdatedColumn).ToDate(); }
    void SetHTMLLastUpdated(Date value) { Store(HTMLLastUpdatedColumn, value); }

    /// The mother's ID of the parent, in a child replica.
    qint32 MotherParentKey() { return qint32(Loaded(MotherParentColumn).ToLong()); }
    void SetMotherParentKey(qint32 value) { LetOfAnyState(MotherParentColumn, value); }
    /// The mother's ID of this item, in a child replica.
    qint32 MotherRecordKey() const { return qint32(OwnValue(MotherRecordColumn).ToLong()); }
    bool CodeHeaderPresent(quint8 header) { return (CodeHeaders() & header) != 0; }
    bool UsageHeaderPresent(quint8 header) { return (UsageHeaders() & header) != 0; }

protected:
    using RowObject::RowObject;
};

} // namespace qb
