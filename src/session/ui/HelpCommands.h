#pragma once

class QWidget;

namespace qb {

class Commands;

/// Registers the commands of the menu Help; @p window is that of their dialogs.
void RegisterHelpCommands(Commands& commands, QWidget& window);

} // namespace qb
