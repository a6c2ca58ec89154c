#pragma once

#include "platform/dao/Database.h"

#include <chrono>

namespace qb {

/// What the engine may take to read the schema of a file: a thousand times what one of the program's own needs.
inline constexpr std::chrono::seconds OpeningTime{20};

/// Raises what OpenDatabase does for a file that can't be a database: 3024 when there is none, 3343 for a
/// folder, an empty file and one of another kind, 3051 when it can't be read. Says before the engine does,
/// and more clearly, what is wrong.
void RefuseWhatIsNoDatabase(const QString& path);

/// Raises 3051 when the file or its folder can't be written to.
void RefuseUnwritable(const QString& path);

/// To be called on a file that has been opened or attached as @p schema: 3051 when it is wanted for writing
/// and can only be read, or is of a newer version; 3049 when it is cut short. Ends a write-ahead log.
void RefuseWhatCantBeUsed(Database& database, const QString& schema, DatabaseAccess access);

/// How the file of a schema is written and held in memory.
void ApplyFilePragmas(Database& database, const QString& schema);

} // namespace qb
