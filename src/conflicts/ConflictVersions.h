#pragma once

#include "conflicts/CConflictCodeItem.h"

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

/// The two versions of one item, and what they say as properties.
class ConflictVersions {
public:
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

protected:
    ConflictVersions() = default;
    ~ConflictVersions() = default;

    CConflictCodeItem m_item;
    CConflictCodeItem m_tempItem;
};

} // namespace qb
