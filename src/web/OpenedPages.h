#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace qb {

/// A page that is open in a browser of the user's own.
struct OpenedPage {
    QString Title;
    QString Address;
};

/// The pages with a title that are open in the browsers which tell of theirs. No browser of this platform does by
/// itself; what can ask one is set as the source.
std::vector<OpenedPage> OpenedPages();
using OpenedPagesSource = std::function<std::vector<OpenedPage>()>;
/// Gives back what was before.
OpenedPagesSource SetOpenedPagesSource(OpenedPagesSource source);

} // namespace qb
