#pragma once

#include <QtGlobal>

namespace qb {

class Database;

/// The form in which a database holds dates. Those of format 1 are readings of a clock on the wall; from format 2 on
/// they are moments (see Date). A database of format 1 reads all the same as one of format 2: what a statement gives
/// of a date column is the moment. It can't be written before its dates were converted.
namespace DateForm {

/// The first format whose dates are moments.
inline constexpr int FirstFormat = 2;

/// Converts all columns of dates by the zone of the system, and makes it a database of the present format. Runs
/// inside the caller's transaction, after which other connections that are open must not go on. What is none, or no
/// date, stays.
void Convert(Database& database);

} // namespace DateForm

} // namespace qb
