#pragma once

#include <QList>
#include <QString>

namespace qb {

/// A definition file that comes with the program.
struct ShippedLanguage {
    QString Name; ///< of the language
    QString Path;
};

/// All of them, by name. A file that can't be read is left out.
QList<ShippedLanguage> ShippedLanguages();

} // namespace qb
