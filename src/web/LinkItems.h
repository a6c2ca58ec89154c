#pragma once

#include "store/Library.h"
#include "web/PageComponents.h"

namespace qb {

/// The address that leads to an item: "local://Item17".
QString ItemAddress(qint64 id);

/// All items of a library with the titles above them, in the order of their titles.
std::vector<LinkableItem> LinkableItemsOf(Library& library);

/// Those in whose title or place each word of @p text stands, @p most of them: first where the title begins so.
std::vector<LinkableItem> MatchingItems(const std::vector<LinkableItem>& items, const QString& text, size_t most);

} // namespace qb
