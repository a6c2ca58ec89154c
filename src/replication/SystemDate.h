#pragma once

#include "platform/dao/Database.h"

#include <QString>
#include <vector>

namespace qb {

/// A table with rows that are dated in the future.
struct DateError {
    QString Label;
    qint64 Count;
};

/// Says in a message, and returns true, when the clock can't be trusted: it is behind the last synchronization, or rows
/// of the library have later dates than it has. Dates that a synchronization has given to rows don't count.
/// @p library is the schema of the library.
bool InvalidSystemDate(Database& connection, const QString& library, Date lastSynchronized);

/// Counts the rows of a statement, and adds them to @p errors under a label if there are any; a table that does not
/// exist has none.
void UpdateDateErrorArray(Database& connection, const QString& sql, const Values& values, const QString& tableLabel,
                          std::vector<DateError>& errors);

} // namespace qb
