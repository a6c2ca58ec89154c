#pragma once

#include "store/LanguageDefinition.h"

#include <QList>

namespace qb {

/// A definition file that comes with the program.
struct ShippedLanguage {
    QString Name; ///< of the language
    QString Key;  ///< the name of its file, by which it is called on the command line
    QString Path;
    QStringList Files;        ///< patterns of the names of its files
    QString Tells;            ///< an expression that its texts match, where another language has files of that name too
    QStringList Interpreters; ///< names of programs that a script's first line may call
    bool HasRules = false;
};

/// All of them, by name. A file that can't be read is left out. They are read once, at the first
/// call.
const QList<ShippedLanguage>& ShippedLanguages();

/// The one of that name or key, without regard to case; null when there is none.
const ShippedLanguage* ShippedLanguageNamed(const QString& name);

/// The one whose files are called so, or whose interpreter the first line of @p text names; null
/// when there is none. Of several patterns that fit the longest counts.
const ShippedLanguage* ShippedLanguageOfFile(const QString& fileName, QStringView text);

/// Whether LanguageNamed knows a name.
bool IsLanguageName(const QString& name);

/// A definition by name: "vb", "cpp" (the two built in), a shipped language's name or key, or the
/// path of a `.qbl` file. Raises RuntimeError 5 for one that there is not.
LanguageDefinition LanguageNamed(const QString& name);

} // namespace qb
