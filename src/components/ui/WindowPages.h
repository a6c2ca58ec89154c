#pragma once

#include "text/TokenPalette.h"
#include "web/PageEditing.h"
#include "web/ui/frmInsertLink.h"

#include <functional>
#include <memory>

class QWidget;

namespace qb {

/// What the window's page editor and dialogs use of the session.
struct WindowPagesTools {
    ItemSource Items;                      ///< of the open library; asked for when a link to one is wanted
    std::function<TokenPalette()> Palette; ///< the colours of code
};

/// The page editor and the dialogs that put something into pages, as windows over @p parent.
std::unique_ptr<PageComponents> MakePageComponents(QWidget* parent, WindowPagesTools tools);

/// What the page editor gets of the program's look.
PageEditingTools EditingTools(const TokenPalette& palette, bool isDark);

} // namespace qb
