#pragma once

namespace qb {

/// Runs the window from start to end, inside a QApplication; returns the exit status. It refuses
/// to be a second instance for the same user.
int Main();

} // namespace qb
