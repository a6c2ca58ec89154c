#pragma once

namespace qb {

/// Settles, for the whole program, what must be settled before the first object of the browser's engine is made: the
/// scheme of local pages, what the engine writes to the log, and that root has no sandbox.
void PrepareEngine();

} // namespace qb
