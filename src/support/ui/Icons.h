#pragma once

#include <QIcon>
#include <QString>

namespace qb {

/// The icon of a name: the program's own drawing, or one of the desktop's icon theme (Breeze
/// where the theme lacks it), light or dark to fit the colour scheme.
QIcon IconNamed(const QString& name);

/// Chooses the icon theme that fits the palette; called once the application exists.
void InitialiseIcons();

} // namespace qb
