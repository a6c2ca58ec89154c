#pragma once

#include "platform/system/Date.h"
#include "store/CLinks.h"
#include "store/IDataObject.h"

#include <QObject>

namespace qb {

class Recordset;

/// One row of `Items`. The row is read at the first look at a stored property, not before:
/// trees and searches make many items of which only the key is needed.
class CCodeItem : public QObject, public IDataObject {
    Q_OBJECT

public:
    CCodeItem();

    QString Key() const override { return m_key; }
    void Initialise(Database& database, const QString& key) override;
    void Delete() override;
    bool Commit() override;
    /// Deletes the row at once, with what refers to it, as a commit of Delete does. Raises an error,
    /// with the row as it was.
    void DeleteRow();
    RecordState State() const { return m_state; }

    QString Title() { return Loaded(m_title); }
    void SetTitle(const QString& value) { Let(m_title, value); }
    QString Description() { return Loaded(m_description); }
    void SetDescription(const QString& value) { Let(m_description, value); }
    QString Info() { return Loaded(m_info); }
    void SetInfo(const QString& value) { Let(m_info, value); }
    /// Code, notes and usage are RTF strings.
    QString Code() { return Loaded(m_code); }
    void SetCode(const QString& value) { Let(m_code, value); }
    QString Notes() { return Loaded(m_notes); }
    void SetNotes(const QString& value) { Let(m_notes, value); }
    QString Example() { return Loaded(m_example); } ///< the usage text
    void SetExample(const QString& value) { Let(m_example, value); }
    bool HTMLPage() { return Loaded(m_htmlPage); }
    void SetHTMLPage(bool value) { Let(m_htmlPage, value); }

    /// The ID of the parent as text, "0" under the root.
    QString ParentKey() { return Loaded(m_parentKey); }
    /// An empty value means "0". In a child replica the mother's parent is worked out too.
    void SetParentKey(const QString& value);

    QString User() { return Loaded(m_user); }
    void SetUser(const QString& value) { LetOfAnyState(m_user, value); }
    qint32 ItemRating() { return Loaded(m_itemRating); }
    void SetItemRating(qint32 value) { LetOfAnyState(m_itemRating, value); }
    qint32 ItemStatus() { return Loaded(m_itemStatus); }
    void SetItemStatus(qint32 value);
    /// The code sections in Code and Example: a sum of 1, 2, 4, 8 and 16.
    quint8 CodeHeaders() { return Loaded(m_codeHeaders); }
    void SetCodeHeaders(quint8 value) { LetOfAnyState(m_codeHeaders, value); }
    quint8 UsageHeaders() { return Loaded(m_usageHeaders); }
    void SetUsageHeaders(quint8 value) { LetOfAnyState(m_usageHeaders, value); }

    Date Created() { return Loaded(m_created); }
    void SetCreated(Date value) { m_created = value; }
    Date LastChanged() { return Loaded(m_lastChanged); }
    void SetLastChanged(Date value) { m_lastChanged = value; }
    Date HTMLLastUpdated() { return Loaded(m_htmlLastUpdated); }
    void SetHTMLLastUpdated(Date value) { m_htmlLastUpdated = value; }

    /// The mother's ID of the parent, in a child replica.
    qint32 MotherParentKey() { return Loaded(m_motherParentKey); }
    void SetMotherParentKey(qint32 value) { LetOfAnyState(m_motherParentKey, value); }
    /// The mother's ID of this item, in a child replica.
    qint32 MotherRecordKey() const { return m_motherRecordKey; }
    /// The links that lead from this item; written at the next commit after SetLinksChanged.
    CLinks& Links()
    {
        GetAttributes();
        return m_links;
    }
    bool LinksChanged() const { return m_linksChanged; }
    void SetLinksChanged(bool value) { m_linksChanged = value; }
    /// Reads the links anew, with the IDs that new ones got.
    void ReloadLinks() { LoadLinks(); }
    /// There is something to be written at the next commit.
    bool Unsaved() const { return m_itemChanged || m_linksChanged; }
    /// LastChanged was "none" when the row was read: the item waits for removal.
    bool ItemMarkedForDelete() const { return m_itemMarkedForDelete; }

    /// The row is to be written at the next commit.
    bool ItemChanged() const { return m_itemChanged; }
    /// Moves LastChanged to now, whatever the value, unless DontUpdateLastChangedDate holds it.
    void SetItemChanged(bool value);
    bool DontUpdateLastChangedDate() const { return m_dontUpdateLastChangedDate; }
    void SetDontUpdateLastChangedDate(bool value) { m_dontUpdateLastChangedDate = value; }

    bool CodeHeaderPresent(quint8 header) { return (CodeHeaders() & header) != 0; }
    bool UsageHeaderPresent(quint8 header) { return (UsageHeaders() & header) != 0; }
    void AddCodeHeader(quint8 header);
    void RemoveCodeHeader(quint8 header);
    void AddUsageHeader(quint8 header);
    void RemoveUsageHeader(quint8 header);

Q_SIGNALS:
    // Raised when the row is read, in this order; each says whether the item has such content.
    void CodeLoaded(bool hasCode);
    void NotesLoaded(bool hasNotes);
    void UsageLoaded(bool hasUsage);
    void FilesLoaded(bool hasFiles);
    void LinkLoaded(bool hasPage);
    void NewItemLoaded(qb::Date created, qb::Date lastChanged);
    void StatusUpdated(qint32 status);

private:
    template <class Field>
    const Field& Loaded(const Field& field)
    {
        GetAttributes();
        return field;
    }
    template <class Field>
    void LetOfAnyState(Field& field, const Field& value)
    {
        GetAttributes();
        field = value;
    }
    template <class Field>
    void Let(Field& field, const Field& value)
    {
        LetOfAnyState(field, value);
        SetStateForLet();
    }

    void InitialiseProperties();
    void SetStateForLet();
    void GetAttributes();
    void ReadRow(const Recordset& row);
    void ReadLongColumns(const Recordset& row);
    bool InsertObject();
    bool UpdateObject();
    bool DeleteObject();
    void WriteSharedColumns(Recordset& row);
    void FindMotherParent();

    /// What writing a link changes in memory.
    struct LinkChange {
        qint64 ID2;
        bool Removed;
    };
    void LoadLinks();
    void UpdateLinks();
    LinkChange UpdateLink(const CLink& link);
    qint64 InsertLinkRow(qint64 from, qint64 to, const QString& note);
    void DeleteLinkRow(qint64 id);
    qint64 MotherRecordOf(qint64 item) const;
    static QString NoteText(const QString& note);

    Database* m_database = nullptr;
    RecordState m_state = RecordState::Clean;
    bool m_attributesLoaded = false;
    bool m_readFailed = false;
    bool m_itemChanged = false;
    bool m_linksChanged = false;
    CLinks m_links;
    bool m_itemMarkedForDelete = false;
    bool m_dontUpdateLastChangedDate = false;
    bool m_statusGuard = false;

    QString m_key;
    QString m_parentKey;
    QString m_title;
    QString m_description;
    QString m_info;
    QString m_user;
    QString m_notes;
    QString m_code;
    QString m_example;
    qint32 m_itemStatus = 0;
    qint32 m_itemRating = 0;
    quint8 m_codeHeaders = 0;
    quint8 m_usageHeaders = 0;
    bool m_htmlPage = false;
    Date m_created;
    Date m_lastChanged;
    Date m_htmlLastUpdated;
    qint32 m_motherParentKey = 0;
    qint32 m_motherRecordKey = 0;
};

} // namespace qb
