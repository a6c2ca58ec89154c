#pragma once

#include "platform/dao/Database.h"

namespace qb {

/// Asks, once for each library and user, whether a library whose language came with the program
/// before languages had rules shall take the one that has them. True when it was taken. Libraries
/// that can only be read, and those of the two built-in languages, are left alone.
bool OfferRules(Database& database);

} // namespace qb
