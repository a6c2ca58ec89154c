#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace qb {

/// What the colouriser needs to know of a programming language, as it stands in a library and
/// in a language definition file (`.qbl`). Colours have red in the low byte.
struct LanguageDefinition {
    QString Version = {}; ///< of the program that wrote the file
    QString Language = {};
    QString CommentStart = {}; ///< opens a comment that may span lines
    QString CommentEnd = {};
    QString Comment = {}; ///< opens a comment that ends with the line
    QStringList ColouredWords = {};
    QStringList PlainWords = {};
    qint32 ColouredKeywordColour = 0;
    qint32 KeywordColour = 0;
    qint32 CommentColour = 0;
    /// By which texts of the language are painted (docs/language-rules.md); empty for a language
    /// that has marks and words only.
    QString Rules = {};
};

/// The most characters that a library holds of a language's name, of a comment mark and of a word.
inline constexpr int LongestLanguageName = 20;
inline constexpr int LongestCommentMark = 5;
inline constexpr int LongestKeyword = 30;

/// The number of a new library's language.
enum class LanguageType { None = 0, VB = 1, Cpp = 2, File = 3, SelfDefined = 4 };

/// A built-in language; @p type is VB or Cpp.
LanguageDefinition BuiltInLanguage(LanguageType type);

/// Reads the record of a `.qbl` file and the rules behind it (docs/file-formats.md). A record that
/// ends early gives what it holds; the fields beyond are empty. Rules count only if they are whole
/// and stand behind the record that they were written for.
LanguageDefinition LanguageFromBytes(const QByteArray& bytes);

/// The record of a `.qbl` file, and behind it the rules, if there are any. Raises RuntimeError 5 for
/// what it can't hold: a text that Windows-1252 can't say, a list of more than 32,767 bytes, rules
/// of more than 1 MiB.
QByteArray BytesOf(const LanguageDefinition& language);

/// Reads a `.qbl` file; raises RuntimeError 3024 or 75 when it can't be read.
LanguageDefinition ReadLanguageFile(const QString& path);

/// Writes a `.qbl` file over what stands there: a longer old file keeps its tail, which no reader
/// looks at; rules in it are made unreadable. Raises what BytesOf does, and 75 when the file can't be written;
/// what was there is then untouched.
void WriteLanguageFile(const QString& path, const LanguageDefinition& language);

/// The values of a key of rules, such as "files"; all lines of that key together.
QStringList ValuesOfRules(const QString& rules, const QString& key);

/// Whether colouring gives words the spelling of the list: not where the rules say otherwise.
bool CorrectsSpelling(const QString& rules);
/// The rules with that said; empty when nothing else is left to say.
QString WithCorrectsSpelling(const QString& rules, bool corrects);

/// Why a library can't hold a definition: a name of more than 20 characters, a mark of more than 5,
/// a word of more than 30. Empty when it can.
QString WhyNotStorable(const LanguageDefinition& language);

} // namespace qb
