#pragma once

#include "platform/richtext/TextFormats.h"

namespace qb {

/// What stands before an item of a list: a bullet, or its number and a full stop ("iv."). Numbers
/// that letters or Roman numerals hardly tell are decimal.
QString ListMark(ListKind kind, int number);

} // namespace qb
