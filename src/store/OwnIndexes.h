#pragma once

namespace qb {

class Database;

/// Makes the table of checksums and those indexes of a library that the program has for itself, beyond those of its
/// tables' definitions, where they are missing: libraries of older versions have none. They hold what
/// the item tree shows, so that it opens without the long texts, and let what has changed be found without them.
/// Raises an error when the file can't be written.
void MakeOwnIndexes(Database& library);

/// The same for those that only a library with a part in replication has: they let what changed since a moment, and
/// what has a date in the future, be found without the long texts.
void MakeReplicaIndexes(Database& library);

/// The same at an opening: a failure is no reason not to open a library.
void CompleteOwnIndexes(Database& library);

} // namespace qb
