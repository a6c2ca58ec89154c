#pragma once

#include "store/Library.h"

#include <QString>
#include <vector>

namespace qb {

/// An item as it stands in a branch.
struct OutlinedForPrint {
    qint64 Id = 0;
    int Depth = 0; ///< of the branch's own item: 0
    QString Title;
};

/// An item with all below it in the order in which the tree shows them; 0 stands for all items of the library, those
/// that have lost their place last. A cycle in damaged rows is walked once.
std::vector<OutlinedForPrint> PrintOutline(Library& library, qint64 item);

/// The same by their IDs alone.
std::vector<qint64> PrintOrder(Library& library, qint64 item);

} // namespace qb
