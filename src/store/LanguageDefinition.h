#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace qb {

/// What the colouriser needs to know of a programming language, as it stands in a library and
/// in a language definition file (`.qbl`). Colours have red in the low byte.
struct LanguageDefinition {
    QString Version; ///< of the program that wrote the file
    QString Language;
    QString CommentStart; ///< opens a comment that may span lines
    QString CommentEnd;
    QString Comment; ///< opens a comment that ends with the line
    QStringList ColouredWords;
    QStringList PlainWords;
    qint32 ColouredKeywordColour = 0;
    qint32 KeywordColour = 0;
    qint32 CommentColour = 0;
};

/// The number of a new library's language.
enum class LanguageType { None = 0, VB = 1, Cpp = 2, File = 3, SelfDefined = 4 };

/// A built-in language; @p type is VB or Cpp.
LanguageDefinition BuiltInLanguage(LanguageType type);

/// Reads the record of a `.qbl` file (docs/file-formats.md). A record that ends early gives what
/// it holds; the fields beyond are empty.
LanguageDefinition LanguageFromBytes(const QByteArray& bytes);

/// Reads a `.qbl` file; raises RuntimeError 3024 or 75 when it can't be read.
LanguageDefinition ReadLanguageFile(const QString& path);

} // namespace qb
