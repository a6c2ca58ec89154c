#pragma once

#include "text/LanguageRules.h"

#include <QHash>
#include <memory>

namespace qb {

/// Tells what the pieces of a text are, line by line, by the rules of a language. What a line
/// leaves open (a comment, a string, a context) is a state with which the next one begins, so
/// that after a change only lines whose begin has changed are looked at again. It reads and never
/// writes: what is done with the tokens is somebody else's.
class RuleScan {
public:
    /// The state in which a text begins.
    static constexpr int Begin = 0;

    /// @p rules must not be null.
    explicit RuleScan(std::shared_ptr<const LanguageRules> rules);

    /// They live at least as long as this.
    const LanguageRules& Rules() const { return *m_rules; }

    /// The tokens of a line, which comes without its line end, are put into @p tokens, in order,
    /// none within another; what is plain text has none. Returns the state behind the line.
    int ScanLine(QStringView line, int state, std::vector<Token>& tokens);

private:
    static constexpr qsizetype DeepestStack = 64; ///< what opens beyond it opens nothing

    /// Something that is open.
    struct Frame {
        enum class Is : quint8 { Context, Span, Interpolation, Heredoc } What = Is::Context;
        qint16 Context = 0; ///< the context that holds here
        qint16 Rule = -1;   ///< of the context that it was opened in
        qint16 RuleContext = 0;
        qint16 Depth = 0; ///< of nested blocks and of brackets
        QString Mark;     ///< how the text itself wants it closed
        friend bool operator==(const Frame&, const Frame&) = default;
        friend size_t qHash(const Frame& frame, size_t seed = 0)
        {
            return qHashMulti(seed, int(frame.What), frame.Context, frame.Rule, frame.RuleContext, frame.Depth,
                              frame.Mark);
        }
    };
    using Stack = QList<Frame>;

    void Load(int state);
    int Save();
    void ScanSpan();
    void OpenInterpolation();
    void CloseSpan(const ScanRule& rule);
    bool PushSpan(int number, const QString& mark = {});
    void ScanHeredoc();
    void ScanContextHere();
    bool TryRules(const std::vector<int>& rules, bool atWordBegin);
    bool TryRule(int rule);
    bool Opens(const ScanRule& rule) const;
    bool StandsRight(const ScanRule& rule) const;
    bool OpenSpan(const ScanRule& rule, int number);
    bool OpenRaw(const ScanRule& rule, int number);
    bool OpenHeredoc(const ScanRule& rule, int number);
    bool OpenQuote(const ScanRule& rule, int number);
    bool TryCharacter(const ScanRule& rule);
    bool TryRegex(const ScanRule& rule);
    bool TrySigil(const ScanRule& rule);
    bool TryNumberPrefix(const ScanRule& rule);
    bool TryMatch(const ScanRule& rule, int number);
    bool Leave(const ScanRule& rule);
    bool OperandCanStand(const ScanRule& rule) const;
    bool IsMember(qsizetype begin) const;
    bool CountBrackets(QChar character);
    void ScanWord();
    void ScanNumber(qsizetype begin);
    bool GoesOnBy(QChar character) const;
    void EndLine();
    void Paint(qsizetype begin, qsizetype end, TokenKind kind);
    void PushContext(const ScanRule& rule, int number);
    const ScanContext& ContextHere() const { return m_rules->Contexts()[size_t(m_context)]; }
    const ScanRule& RuleOf(const Frame& frame) const
    {
        return m_rules->Contexts()[size_t(frame.RuleContext)].Rules[size_t(frame.Rule)];
    }
    QChar At(qsizetype index) const { return index >= 0 && index < m_line.size() ? m_line[index] : QChar(u'\n'); }
    bool Holds(qsizetype index, QStringView text) const;
    qsizetype WordEnd(qsizetype begin) const;
    bool AtWordBegin() const { return m_at == 0 || !m_rules->IsWordPart(m_line[m_at - 1]); }
    void Refresh();

    std::shared_ptr<const LanguageRules> m_rules;
    std::vector<Stack> m_states{Stack{}};
    QHash<Stack, int> m_numbers;

    // Of the line that is scanned
    QStringView m_line;
    std::optional<bool> m_isText; ///< whether its surrogates are whole; not known until somebody asks
    qsizetype m_at = 0;
    qsizetype m_firstInLine = 0; ///< the first character that is no blank
    Stack m_stack;
    bool m_stackChanged = false;
    int m_context = 0;
    std::optional<TokenKind> m_paintAll; ///< within an interpolation: of all that stands there
    QList<Frame> m_heredocs;             ///< that begin with the next line
    std::vector<Token>* m_tokens = nullptr;
};

} // namespace qb
