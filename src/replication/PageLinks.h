#pragma once

#include "replication/ExportRows.h"
#include "replication/MergeRun.h"

namespace qb {

/// Addresses of items in pages, "local://Item17", name items by the numbers of the library in which the page lies. In a
/// synchronization file they are those of who wrote the page into it; a merge changes them in the file, before it takes
/// a page from there.
///
/// A child tells its numbers in a table of its own in the file. What leads to an item that the mother doesn't have
/// leads nowhere in her ("local://Item-17"). What leads to one of hers that the child doesn't have, as to one that
/// waits for a decision, leads nowhere in the child, but is known to her again ("local://Item0-17").

/// Writes which items of a child the mother calls otherwise.
void WriteItemNumbers(const ExportPlace& place);

/// Lets the child's pages lead to the mother's items. The new ones have their numbers.
void LeadPagesToMothersItems(MergeRun& run);
/// Lets the mother's pages lead to the child's items. The new ones have their numbers.
void LeadPagesToChildsItems(MergeRun& run);

} // namespace qb
