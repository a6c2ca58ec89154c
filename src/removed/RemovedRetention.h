#pragma once

#include "platform/system/Date.h"

#include <QString>
#include <QStringList>

namespace qb {

/// How long what was removed is kept beside its library. 0: without a limit of that kind.
struct RetentionRule {
    int Days = 365;
    int Megabytes = 1024; ///< of all events of a library together
};
/// What the user's settings say; what is no number there, or below 0, counts as the default.
RetentionRule ReadRetention();

/// Removes events of a library that are older, or, from the oldest on, until the others are no more; the newest one
/// always stays. What can't be removed is left. Returns the names of those that went.
QStringList PruneRemoved(const QString& libraryPath, const RetentionRule& rule, Date now);

} // namespace qb
