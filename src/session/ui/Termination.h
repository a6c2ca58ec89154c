#pragma once

namespace qb {

class frmCodeLib;

/// Before the system ends the program (SIGTERM), what was typed goes where the next start finds it. For one window,
/// from now on.
void KeepTextsAtTermination(frmCodeLib& window);

} // namespace qb
