#pragma once

namespace qb {

/// The window's program as the helper of the command line: reads a job from standard input, prints it without a window,
/// and answers on standard output. Returns the exit status, 0 or 1.
int RunPrintHelper(int argc, char** argv);

} // namespace qb
