#pragma once

#include <functional>

namespace qb {

/// Runs @p body in a thread of its own and waits for it; meanwhile @p beat is called here, at once and then several
/// times a second. For what can't be asked to tell how far it is: a single call of the system or of an engine. What
/// either raises is raised here, not before the body has ended.
void RunBeside(const std::function<void()>& body, const std::function<void()>& beat);

} // namespace qb
