#pragma once

#include "session/SessionState.h"
#include "store/ItemRules.h"

#include <QString>
#include <QStringList>

namespace qb {

struct TreeNode;

/// What bars the commands of the main window, wherever they are given: by menu, key, toolbar or panel.
namespace CommandRules {

/// The commands that something can bar.
QStringList Names();

/// Whether a command is allowed as the library and the current item stand.
bool Allows(const QString& command, const ItemStanding& standing);

} // namespace CommandRules

/// How the open library stands, with no item: the root of the tree.
ItemStanding StandingOf(const SessionState& session);

/// How the item of a node stands. Its image tells its part in a synchronization.
ItemStanding StandingOf(const SessionState& session, const TreeNode& node);

/// The node is the folder of orphaned items under the root, or stands below it.
bool IsOrphaned(const TreeNode& node);

} // namespace qb
