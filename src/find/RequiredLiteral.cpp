#include "find/FindExpression.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Goes through a pattern once and keeps to what it understands: groups that capture or don't, literals, their
/// repetition.
/// A pattern with more to it has no known literal.
class Reader {
public:
    Reader(const QString& pattern, bool asciiOnly) : m_pattern(pattern), m_asciiOnly(asciiOnly) {}

    QString Read()
    {
        while (m_at < m_pattern.size() && m_isKnown)
            TakeOne();
        EndRun();
        return m_isKnown ? m_best : QString();
    }

private:
    void TakeOne()
    {
        const QChar character = m_pattern[m_at++];
        switch (character.unicode()) {
        case u'|':
            m_isKnown = false; // of all alternatives of a group nothing is taken; this one is outside of any
            break;
        case u'(':
            PassGroup();
            break;
        case u'[':
            PassClass();
            break;
        case u'\\':
            TakeEscape();
            break;
        case u'.':
        case u'^':
        case u'$':
            EndRun();
            break;
        case u'*':
        case u'?':
            DropLast();
            break;
        case u'{':
            TakeCount();
            break;
        case u'+':
            EndRun();
            break;
        default:
            Take(character);
        }
    }

    void Take(QChar character)
    {
        if (m_asciiOnly && character.unicode() >= 0x80)
            EndRun();
        else
            m_run += character;
    }

    /// What may be missing is not part of every match; with half of a pair goes the other half.
    void DropLast()
    {
        if (!m_run.isEmpty()) {
            const bool isPair = m_run.back().isLowSurrogate();
            m_run.chop(isPair ? 2 : 1);
        }
        EndRun();
    }

    void EndRun()
    {
        if (m_run.size() > m_best.size())
            m_best = m_run;
        m_run.clear();
    }

    void TakeCount()
    {
        const qsizetype end = m_pattern.indexOf(u'}', m_at);
        const bool isCount = end > m_at && (m_pattern[m_at].isDigit() || m_pattern[m_at] == u',');
        if (!isCount) {
            Take(u'{'); // it stands for itself then
            return;
        }
        m_at = end + 1;
        DropLast(); // it may be none, or many
    }

    void TakeEscape()
    {
        if (m_at >= m_pattern.size()) {
            m_isKnown = false;
            return;
        }
        const QChar character = m_pattern[m_at++];
        static const QString simple = u"dDwWsShHvVbBAzZGRX"_s; // a place or a class, of one letter
        if (character == u'n')
            Take(u'\n');
        else if (character == u't')
            Take(u'\t');
        else if (simple.contains(character))
            EndRun();
        else if (character.isLetterOrNumber())
            m_isKnown = false; // a number, a name, a quotation ...
        else
            Take(character);
    }

    void PassClass()
    {
        EndRun();
        if (m_at < m_pattern.size() && m_pattern[m_at] == u'^')
            ++m_at;
        if (m_at < m_pattern.size() && m_pattern[m_at] == u']')
            ++m_at;
        for (; m_at < m_pattern.size(); ++m_at) {
            const QChar character = m_pattern[m_at];
            if (character == u'[' && m_at + 1 < m_pattern.size() && m_pattern[m_at + 1] == u':') {
                const qsizetype end = m_pattern.indexOf(":]"_L1, m_at);
                if (end >= 0)
                    m_at = end + 1;
            } else if (character == u'\\') {
                if (m_at + 1 < m_pattern.size() && m_pattern[m_at + 1] == u'Q')
                    m_isKnown = false;
                ++m_at;
            } else if (character == u']') {
                ++m_at;
                return;
            }
        }
        m_isKnown = false;
    }

    /// Nothing is taken of what stands in a group; one that sets options changes what comes behind it.
    void PassGroup()
    {
        EndRun();
        const QStringView rest = QStringView(m_pattern).mid(m_at);
        const bool isOrdinary = !rest.startsWith(u'?') && !rest.startsWith(u'*');
        const bool isKnownKind = rest.startsWith("?:"_L1) || rest.startsWith("?="_L1) || rest.startsWith("?!"_L1)
                                 || rest.startsWith("?<="_L1) || rest.startsWith("?<!"_L1);
        if (!isOrdinary && !isKnownKind) {
            m_isKnown = false;
            return;
        }
        if (!isOrdinary)
            ++m_at;          // behind the question mark
        Reader inner(*this); // as deep as groups nest, which the library bounds
        while (inner.m_at < m_pattern.size() && m_pattern[inner.m_at] != u')' && inner.m_isKnown) {
            if (m_pattern[inner.m_at] == u'|')
                ++inner.m_at;
            else
                inner.TakeOne();
        }
        m_isKnown = inner.m_isKnown && inner.m_at < m_pattern.size();
        m_at = inner.m_at + 1;
    }

    const QString& m_pattern;
    bool m_asciiOnly;
    qsizetype m_at = 0;
    bool m_isKnown = true;
    QString m_run;
    QString m_best;
};

} // namespace

QString RequiredLiteral(const QString& pattern, bool asciiOnly)
{
    return Reader(pattern, asciiOnly).Read();
}

} // namespace qb
