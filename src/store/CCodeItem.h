#pragma once

#include "store/CLinks.h"
#include "store/CPrintFiles.h"
#include "store/ItemRow.h"

#include <QObject>
#include <memory>

namespace qb {

/// One row of `Items`. The row is read at the first look at a stored property, not before:
/// trees and searches make many items of which only the key is needed.
class CCodeItem : public QObject, public ItemRow {
    Q_OBJECT

public:
    CCodeItem();

    /// Deletes the row at once, with what refers to it, as a commit of Delete does. Raises an error,
    /// with the row as it was.
    void DeleteRow();

    /// An empty value means "0". In a child replica the mother's parent is worked out too.
    void SetParentKey(const QString& value);
    /// Raises StatusUpdated; what that sets is not heard.
    void SetItemStatus(qint32 value);
    /// The links that lead from this item; written at the next commit after SetLinksChanged.
    CLinks& Links()
    {
        GetAttributes();
        return m_links;
    }
    bool LinksChanged() const { return m_linksChanged; }
    void SetLinksChanged(bool value) { m_linksChanged = value; }
    /// Reads the links anew, with the IDs that new ones got.
    void LoadLinks();
    /// Changes what is noted of the link under @p key, to be written at the next commit; nothing when
    /// there is no such link or the note is the same. @p note is taken as WritableNote has it.
    void ChangeLinkNote(const QString& key, const QString& note);
    /// The list of stored files that is printed with the item: made at the first call, and empty until it is read.
    CPrintFiles& PrintFiles();
    /// The list goes; the next call of PrintFiles makes another one.
    void ReleasePrintFiles() { m_printFiles.reset(); }
    /// A note as it can be written: apostrophes, which the statement can't take, are typographic ones.
    static QString WritableNote(QString note) { return note.replace(u'\'', u'\u2019'); }
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

protected:
    // RowObject
    void InitialiseProperties() override;
    void RowBegun() override;
    void RowRead(bool exists) override;
    bool InsertObject() override;
    bool UpdateObject() override;
    bool DeleteObject() override;

private:
    void NoteNewChecksums(qint64 id) const;
    void NoteChecksums(const Recordset& row, qint64 formerStamp) const;
    void NoteDatelessChange(const Recordset& row) const;
    void RecordDeletion(const Recordset& row) const;
    Date Moment() const;
    void FindMotherParent();

    /// What writing a link changes in memory.
    struct LinkChange {
        qint64 ID2;
        bool Removed;
    };
    void ReadLinks();
    void UpdateLinks();
    LinkChange UpdateLink(const CLink& link);
    qint64 EnsureLinkRow(qint64 from, qint64 to, const QString& note);
    qint64 InsertLinkRow(qint64 from, qint64 to, const QString& note);
    void DeleteLinkRow(qint64 id);
    void RecordLinkDeletion(qint64 id);
    qint64 MotherRecordOf(qint64 item) const;
    QString NoteText(const QString& note) const;

    bool m_itemChanged = false;
    bool m_linksChanged = false;
    CLinks m_links;
    std::unique_ptr<CPrintFiles> m_printFiles;
    bool m_itemMarkedForDelete = false;
    bool m_dontUpdateLastChangedDate = false;
    bool m_statusGuard = false;
};

} // namespace qb
