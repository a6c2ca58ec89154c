#pragma once

#include "store/CCodeItem.h"

#include <memory>

namespace qb {

/// One row of `Bookmarks`: a named pointer to an item, in a group.
class CBookmark : public RowObject {
public:
    CBookmark();

    /// The longest description, in characters.
    static constexpr int LongestDescription = 255;

    /// The ID of the item, as text.
    QString CodeItemKey() { return QString::number(Loaded(CodeItemColumn).ToLong()); }
    void SetCodeItemKey(const QString& value) { Let(CodeItemColumn, value.toLongLong()); }
    /// The item itself, of which nothing is read before it is asked for.
    CCodeItem& CodeItem();
    void SetCodeItem(const CCodeItem& item) { SetCodeItemKey(item.Key()); }
    QString Description() { return Loaded(DescriptionColumn).ToText(); }
    void SetDescription(const QString& value) { Let(DescriptionColumn, value); }
    /// The ID of the group; a bookmark can't be written without one.
    qint64 GroupNo() { return Loaded(GroupColumn).ToLong(); }
    void SetGroupNo(qint64 value) { Let(GroupColumn, value); }

protected:
    // RowObject
    void InitialiseProperties() override;
    void RowRead(bool) override {}
    bool InsertObject() override;
    bool UpdateObject() override;
    bool DeleteObject() override;

private:
    enum Column : size_t { CodeItemColumn, DescriptionColumn, GroupColumn };

    std::unique_ptr<CCodeItem> m_codeItem;
};

} // namespace qb
