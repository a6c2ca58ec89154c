#pragma once

#include "conflicts/CConflict.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace qb {

/// A decision that takes parts of the version that loses.
struct ConflictChoice {
    int Which = 1;                  ///< 1: the newer version is kept, 2: the older one
    QMap<QString, int> Fields = {}; ///< by name, which version a field is taken from
    QStringList MovedFiles = {};    ///< tags of files that go to the other side, as "17X"; or their numbers alone
};

/// The names of fields: "title", "description", "info", "code", "notes", "usage", "page", "files", "status",
/// "rating".
QStringList ConflictFieldNames();
/// Those in which the versions differ, in that order.
QStringList DifferingFields(CConflict& conflict);
/// The plain text of a field of one version; empty for those that are no text.
QString PlainFieldText(CConflict& conflict, ConflictSide side, const QString& field);

/// Carries a choice out, as CConflict::KeepItem does. Raises 5 for a field or a file that there is not, or a number
/// that two files have; nothing was changed then. False when the decision failed, which has been reported.
bool Decide(CConflict& conflict, const ConflictChoice& choice);

} // namespace qb
