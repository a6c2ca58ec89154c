#pragma once

#include "printing/ItemGatherer.h"
#include "printing/PrintedItem.h"

#include <vector>

namespace qb {

/// The items of a print, each gathered when it is asked for.
class PrintSource {
public:
    virtual ~PrintSource() = default;

    virtual size_t Count() const = 0;
    /// Raises an error when the item can't be read.
    virtual PrintedItem Item(size_t index) = 0;
};

/// Items of a library by their IDs.
class LibraryPrintSource : public PrintSource {
public:
    /// The library must outlive it.
    LibraryPrintSource(Library& library, std::vector<qint64> ids, PrintParts parts)
        : m_gatherer(library, parts), m_ids(std::move(ids))
    {
    }

    size_t Count() const override { return m_ids.size(); }
    PrintedItem Item(size_t index) override { return m_gatherer.Gather(m_ids[index]); }

private:
    ItemGatherer m_gatherer;
    std::vector<qint64> m_ids;
};

} // namespace qb
