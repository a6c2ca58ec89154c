#pragma once

#include "store/CCodeItem.h"

namespace qb {

/// The sections that an item says its code or its usage has, as a sum of bits. The item's own operations on
/// the headers of the usage don't mirror those of the code, so the bits of the usage are written from here.
class SectionBits {
public:
    /// @p isCode: those of the code, else those of the usage. The item must outlive this.
    SectionBits(CCodeItem& item, bool isCode) : m_item(item), m_isCode(isCode) {}

    /// Reads the item's row, if that was not done yet.
    quint8 All() const { return m_isCode ? m_item.CodeHeaders() : m_item.UsageHeaders(); }
    /// No change of the item by itself, as with Add.
    void SetAll(quint8 bits) { m_isCode ? m_item.SetCodeHeaders(bits) : m_item.SetUsageHeaders(bits); }
    /// With more than one bit: any of them.
    bool Has(quint8 bit) const { return (All() & bit) != 0; }
    /// No change of the item by itself: the text that comes with it is one.
    void Add(quint8 bit) { SetAll(quint8(All() | bit)); }
    /// A change of the item, where the bit was set.
    void Remove(quint8 bit)
    {
        if (!Has(bit))
            return;
        SetAll(quint8(All() & ~bit));
        m_item.SetItemChanged(true);
    }

private:
    CCodeItem& m_item;
    bool m_isCode;
};

} // namespace qb
