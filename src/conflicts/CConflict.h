#pragma once

#include "conflicts/CConflictCodeItem.h"
#include "conflicts/DiscardedVersions.h"

#include <QObject>
#include <QStringList>

namespace qb {

/// The two versions of an item that both sides have changed.
enum class ConflictSide {
    Item,    ///< the library's own, in `Items`
    TempItem ///< the other one, in `TempItems`
};
inline ConflictSide OtherSide(ConflictSide side)
{
    return side == ConflictSide::Item ? ConflictSide::TempItem : ConflictSide::Item;
}

/// The two versions of one item, and the decision between them. An object serves one decision.
class CConflict : public QObject, public IDataObject {
    Q_OBJECT

public:
    CConflict() = default;

    /// Loads both versions of an item. Raises 3167 when one of them is not there.
    void Initialize(Library& library, qint64 item);
    /// Where discarded versions go, for tests.
    void SetDiscardInto(DiscardInto into) { m_discardInto = std::move(into); }

    // IDataObject
    QString Key() const override { return m_item.Key(); }
    void Initialise(Library& library, const QString& key) override { Initialize(library, key.toLongLong()); }
    void Delete() override { m_tempItem.Delete(); }
    bool Commit() override; ///< both versions, the library's own first

    CConflictCodeItem& Item() { return m_item; }
    CConflictCodeItem& TempItem() { return m_tempItem; }
    CConflictCodeItem& Side(ConflictSide side) { return side == ConflictSide::Item ? m_item : m_tempItem; }

    // Those of the library's own version, and with Temp those of the other one
    QString Title() { return m_item.Title(); }
    void SetTitle(const QString& value) { m_item.SetTitle(value); }
    QString TempTitle() { return m_tempItem.Title(); }
    void SetTempTitle(const QString& value) { m_tempItem.SetTitle(value); }
    QString Description() { return m_item.Description(); }
    void SetDescription(const QString& value) { m_item.SetDescription(value); }
    QString TempDescription() { return m_tempItem.Description(); }
    void SetTempDescription(const QString& value) { m_tempItem.SetDescription(value); }
    QString Info() { return m_item.Info(); }
    void SetInfo(const QString& value) { m_item.SetInfo(value); }
    QString TempInfo() { return m_tempItem.Info(); }
    void SetTempInfo(const QString& value) { m_tempItem.SetInfo(value); }
    QString Code() { return m_item.Code(); }
    void SetCode(const QString& value) { m_item.SetCode(value); }
    QString TempCode() { return m_tempItem.Code(); }
    void SetTempCode(const QString& value) { m_tempItem.SetCode(value); }
    QString Notes() { return m_item.Notes(); }
    void SetNotes(const QString& value) { m_item.SetNotes(value); }
    QString TempNotes() { return m_tempItem.Notes(); }
    void SetTempNotes(const QString& value) { m_tempItem.SetNotes(value); }
    QString Usage() { return m_item.Example(); }
    void SetUsage(const QString& value) { m_item.SetExample(value); }
    QString TempUsage() { return m_tempItem.Example(); }
    void SetTempUsage(const QString& value) { m_tempItem.SetExample(value); }
    Date LastChanged() { return m_item.LastChanged(); }
    void SetLastChanged(Date value) { m_item.SetLastChanged(value); }
    Date TempLastChanged() { return m_tempItem.LastChanged(); }
    void SetTempLastChanged(Date value) { m_tempItem.SetLastChanged(value); }
    Date HTMLLastUpdated() { return m_item.HTMLLastUpdated(); }
    void SetHTMLLastUpdated(Date value) { m_item.SetHTMLLastUpdated(value); }
    Date TempHTMLLastUpdated() { return m_tempItem.HTMLLastUpdated(); }
    void SetTempHTMLLastUpdated(Date value) { m_tempItem.SetHTMLLastUpdated(value); }
    /// The other version came from the other library; else it is what this one had before.
    bool TempItemIsFromReplica() { return m_tempItem.OriginInReplica(); }

    /// The version that was changed later; at equal dates the library's own.
    ConflictSide NewerSide();
    /// The version that KeepItem chooses.
    ConflictSide SideOf(int which) { return which == 1 ? NewerSide() : OtherSide(NewerSide()); }

    /// Raises the event of each field in which the versions differ, as they are stored: a difference in looks counts.
    void CompareItems();

    /// The page of this version is kept, whichever version wins.
    void SetPageSide(ConflictSide side) { m_pageSide = side; }

    /// Carries the decision out: 1 keeps the newer version, 2 the older one. All of it counts together, with files and
    /// page, or nothing does; it is dated so that other replicas get it. The version that is discarded is handed on
    /// first. An error is reported; false then, and both versions are as they were. Another program's change of either
    /// since they were loaded is such an error.
    bool KeepItem(int which);

Q_SIGNALS:
    void TitleConflict();
    void DescriptionConflict();
    void InfoConflict();
    void CodeConflict();
    void NotesConflict();
    void UsageConflict();
    void HTMLConflict();
    void FilesConflict();

private:
    friend class ConflictDecision;
    bool FilesDiffer();

    Library* m_library = nullptr;
    CConflictCodeItem m_item;
    CConflictCodeItem m_tempItem;
    std::optional<ConflictSide> m_pageSide; ///< unset: that of the winner
    DiscardInto m_discardInto = IntoRemovedItems();
};

} // namespace qb
