#pragma once

#include <QByteArrayView>
#include <QString>
#include <memory>
#include <optional>

namespace qb {

/// A regular expression of Perl's kind that is looked for in texts in UTF-8. It is compiled to machine code where that
/// is
/// possible, and gives up on a text after a number of steps. Lines end with LF; ^ and $ are those of a line.
class FindExpression {
public:
    /// Raises RuntimeError 5, which says what is wrong and where, when the pattern is not understood.
    FindExpression(const QString& pattern, bool countsCase, bool wholeWord);
    ~FindExpression();

    /// What one thread matches with.
    class Matcher {
    public:
        explicit Matcher(const FindExpression& expression);
        ~Matcher();

        struct Match {
            qsizetype Begin = 0;
            qsizetype End = 0;
        };
        /// The first match that is not empty from @p from on. Nothing also when it was given up, which HasGivenUp says.
        std::optional<Match> Next(QByteArrayView text, qsizetype from, bool isAscii);
        /// What a group took part with in the match that Next returned last; 0 is all of it. An empty one if it didn't.
        Match Group(int number) const;
        bool HasGivenUp() const { return m_givenUp; }

    private:
        struct Data;

        const FindExpression& m_expression;
        std::unique_ptr<Data> m_data;
        bool m_givenUp = false;
    };

    /// What stands in every match, as it is written; empty when nothing is known.
    const QByteArray& Literal() const { return m_literal; }

private:
    struct Compiled;

    std::unique_ptr<Compiled> m_compiled;
    QByteArray m_literal;
};

/// The longest stretch of characters that stands in everything that a pattern matches; empty when there is none, or it
/// can't be told. With @p asciiOnly it has none but ASCII characters.
QString RequiredLiteral(const QString& pattern, bool asciiOnly);

} // namespace qb
