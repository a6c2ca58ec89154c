#pragma once

#include <functional>

class QWidget;

namespace qb {

class Commands;
struct SessionState;

/// Registers the commands of the menu Help and lets F1 open the handbook; @p window is that of their dialogs.
void RegisterHelpCommands(Commands& commands, QWidget& window);

/// Registers the command that mails the item that is shown; @p saveItem saves it first and says whether to go on.
void RegisterItemMail(Commands& commands, QWidget& window, SessionState& session, std::function<bool()> saveItem);

} // namespace qb
