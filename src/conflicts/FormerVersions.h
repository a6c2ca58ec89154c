#pragma once

#include "conflicts/ConflictSolver.h"

namespace qb {

/// The versions that both sides came from, as far as a mother's answer before the last synchronization has them: items
/// that one side had from the other then. Nothing is known of others, nor in a library that is no mother. The library
/// must outlive what is returned.
FindBaseVersion FormerVersionsOf(Library& library);

} // namespace qb
