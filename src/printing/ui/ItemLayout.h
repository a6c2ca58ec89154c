#pragma once

#include "printing/PrintSetup.h"
#include "printing/PrintedItem.h"
#include "printing/ui/PrintBlock.h"

#include <QSizeF>
#include <memory>
#include <vector>

namespace qb {

/// An item laid out for a column of the paper.
class ItemLayout {
public:
    /// @p column in dots.
    ItemLayout(PrintedItem item, const PrintSetup& setup, QSizeF column);

    ItemLayout(const ItemLayout&) = delete; // its blocks refer to the item in it
    ItemLayout& operator=(const ItemLayout&) = delete;

    const PrintedItem& Item() const { return m_item; }
    const std::vector<std::unique_ptr<PrintBlock>>& Blocks() const { return m_blocks; }
    /// A measure of the memory that it takes.
    qsizetype Cost() const { return m_item.Characters; }

private:
    void AddHead();
    void AddCode(const QString& caption, const PrintedCode& code);
    void AddNotes();
    void AddFiles();
    void AddLinks();
    void AddPage();
    void AddHeading(const QString& caption);
    template <class Block, class... Arguments>
    Block& Add(Arguments&&... arguments);

    PrintedItem m_item;
    PrintSetup m_setup;
    QSizeF m_column;
    std::vector<std::unique_ptr<PrintBlock>> m_blocks;
};

} // namespace qb
