#pragma once

#include <QIcon>
#include <QString>

class QAction;

namespace qb {

/// The icon of a name: the program's own drawing, or one of the desktop's icon theme (Breeze
/// where the theme lacks it), light or dark to fit the colour scheme.
QIcon IconNamed(const QString& name);
/// Gives an action the icon of a name, none for an empty one, unless it has that: what shows the action is painted
/// anew with every icon that it is given.
void ShowIcon(QAction& action, const QString& name);

/// Chooses the icon theme that fits the palette; called once the application exists.
void InitialiseIcons();

} // namespace qb
