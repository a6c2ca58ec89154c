#pragma once

#include "platform/system/Expression.h"
#include "text/TokenKind.h"
#include "text/WordKinds.h"

#include <QStringList>
#include <vector>

namespace qb {

/// One rule of a language: what opens it, what closes it, and what is painted. Which of the values
/// count depends on the form; docs/language-rules.md tells how they are written.
struct ScanRule {
    enum class Form : quint8 {
        Line,         ///< from its opener to the end of the line
        Block,        ///< up to its closer, over lines; may nest
        String,       ///< up to its closer; escapes, interpolations
        Raw,          ///< opener and closer hold a mark of the text's own choice
        Heredoc,      ///< the lines below, up to one that holds the mark
        Character,    ///< one character between quotes; anything else is none
        Regex,        ///< a regular expression where an operand can stand
        Quote,        ///< delimiters of the text's own choice behind a word
        Sigil,        ///< a name behind a character
        NumberPrefix, ///< begins a number
        Match,        ///< a regular expression of the language's own
        Enter,        ///< begins another context
        Leave,        ///< ends the context
        Skip,         ///< is nothing special
    };
    enum class Place : quint8 { Anywhere, AfterBlank, FirstInLine, LineBegin };
    enum class MarkOf : quint8 { Word, Hash, Equals, Any };

    Form Kind = Form::Line;
    TokenKind Paint = TokenKind::Comment;
    Place Where = Place::Anywhere;
    MarkOf Mark = MarkOf::Word;
    bool NotAfterWord = false;
    bool WholeWord = false; ///< no word character may follow the opener
    bool Lines = false;     ///< goes on in the next line
    bool Nested = false;
    bool Doubled = false; ///< a doubled closer stands for itself
    bool Spaced = false;  ///< blanks may stand between the opener of a heredoc and its mark
    bool Loose = false;   ///< code may follow the closing mark of a heredoc
    bool Braces = false;  ///< of a sigil: the name may stand in braces
    bool Dotted = false;  ///< of a sigil: the name may have dots
    bool Leaves = false;  ///< of a match: ends the context
    quint8 Parts = 1;     ///< of a quote
    QChar Escape;
    QString Open;
    QString Close;
    QString OpenTail; ///< of a raw form: what stands behind the mark
    QString CloseTail;
    QString InterpolationOpen;
    QString InterpolationClose;
    QString Specials;  ///< of a sigil: single characters that are names; of a heredoc: what makes it indented
    QString Follow;    ///< one of these has to follow the opener; empty: anything may
    QString NotFollow; ///< none of these may
    QStringList After; ///< of a regular expression: words behind which an operand stands
    QString ContextName;
    int Context = -1; ///< that is entered
    Expression Pattern;
};

/// Where a set of rules holds.
struct ScanContext {
    QString Name;
    TokenKind Paint = TokenKind::Text; ///< of what no rule paints
    bool UntilLineEnd = false;
    QChar Continues; ///< the last character of a line that makes it go on
    bool HasWords = true;
    bool HasNumbers = true;
    QString Includes;
    std::vector<ScanRule> Rules;
    WordKinds Words;
    // Made of the rules
    std::vector<std::vector<int>>
        Openers;                  ///< rules by the first character of the opener, longest first; the last: all others
    std::vector<int> LineMatches; ///< matches that are tried once a line
};

/// The rules by which texts of a language are painted, made of their text.
class LanguageRules {
public:
    LanguageRules() = default;
    /// Reads rules. What can't be understood is passed over and named in Problems().
    /// @p keywords and @p plain are the words of the language that lie outside the rules.
    LanguageRules(const QString& text, const QStringList& keywords, const QStringList& plain);

    /// Whether there is any rule that paints; without, the text is painted as languages without
    /// rules are.
    bool Paints() const { return m_paints; }
    /// "line 3: ..." for each line that was passed over.
    const QStringList& Problems() const { return m_problems; }

    /// Case does not count in words, openers, closers and patterns.
    bool FoldsCase() const { return m_folds; }
    /// There is one at least: a text begins in the first. ScanRule::Context is a place in here.
    const std::vector<ScanContext>& Contexts() const { return m_contexts; }
    /// A word stands behind one of these: it is a member's name, whatever it reads.
    const QStringList& MemberMarks() const { return m_members; }
    bool IsWordStart(QChar character) const { return IsOf(character, WordStartBit); }
    bool IsWordPart(QChar character) const { return IsOf(character, WordPartBit); }
    QStringView NumberSeparators() const { return m_numberSeparators; }

private:
    static constexpr quint8 WordStartBit = 1;
    static constexpr quint8 WordPartBit = 2;

    bool IsOf(QChar character, quint8 bit) const
    {
        const char16_t unit = character.unicode();
        return unit < m_classes.size() ? (m_classes[unit] & bit) != 0
                                       : character.isLetterOrNumber() || character.isSurrogate();
    }
    friend class LanguageRulesReader;

    std::vector<ScanContext> m_contexts{1};
    std::array<quint8, 128> m_classes{};
    QStringList m_members;
    QStringList m_problems;
    QString m_numberSeparators = QStringLiteral("_");
    bool m_folds = false;
    bool m_paints = false;
};

} // namespace qb
