#include "find/FindExpression.h"

#include "find/FoldText.h"
#include "platform/system/RuntimeError.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// For one match, about a hundredth of a second.
constexpr uint32_t MostSteps = 1'000'000;
constexpr uint32_t MostHeap = 16 * 1024; // kB

struct Free {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
    void operator()(pcre2_compile_context* context) const { pcre2_compile_context_free(context); }
    void operator()(pcre2_jit_stack* stack) const { pcre2_jit_stack_free(stack); }
};
using Code = std::unique_ptr<pcre2_code, Free>;

struct Failure {
    int Number = 0;
    PCRE2_SIZE Place = 0;
};

Code Compile(const QByteArray& pattern, uint32_t options, Failure& failure)
{
    const std::unique_ptr<pcre2_compile_context, Free> context(pcre2_compile_context_create(nullptr));
    pcre2_set_newline(context.get(), PCRE2_NEWLINE_LF);
    Code code(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.constData()), PCRE2_SIZE(pattern.size()),
                            options | PCRE2_MULTILINE | PCRE2_NEVER_BACKSLASH_C, &failure.Number, &failure.Place,
                            context.get()));
    if (code)
        pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE); // without, it is interpreted
    return code;
}

QString Sentence(const Failure& failure, const QByteArray& pattern)
{
    constexpr size_t Longest = 256;
    PCRE2_UCHAR text[Longest];
    pcre2_get_error_message(failure.Number, text, Longest);
    const qsizetype place = QString::fromUtf8(pattern.first(std::min(qsizetype(failure.Place), pattern.size()))).size();
    return u"The expression is not valid, at character %1: %2."_s.arg(place + 1).arg(
        QString::fromUtf8(reinterpret_cast<const char*>(text)));
}

} // namespace

struct FindExpression::Compiled {
    Code Narrow; ///< for texts of ASCII; none where the pattern needs more
    Code Wide;
};

FindExpression::FindExpression(const QString& pattern, bool countsCase, bool wholeWord)
    : m_compiled(std::make_unique<Compiled>())
{
    const QByteArray bytes = pattern.toUtf8();
    const uint32_t caseless = countsCase ? 0 : uint32_t(PCRE2_CASELESS);
    Failure failure;
    m_compiled->Wide = Compile(bytes, caseless | PCRE2_UTF | PCRE2_UCP, failure);
    if (!m_compiled->Wide)
        throw RuntimeError(ErrorNumber::InvalidCall, Sentence(failure, bytes), u"FindExpression"_s);
    // What is valid alone may still leave something open that the words around it close, such as a comment.
    const QByteArray whole = wholeWord ? "(?<!\\w)(?:" + bytes + ")(?!\\w)" : bytes;
    if (wholeWord)
        m_compiled->Wide = Compile(whole, caseless | PCRE2_UTF | PCRE2_UCP, failure);
    if (!m_compiled->Wide)
        throw RuntimeError(ErrorNumber::InvalidCall, u"The expression can't be one of whole words."_s,
                           u"FindExpression"_s);
    if (IsAscii(bytes)) // bytes of one character are not to be taken apart
        m_compiled->Narrow = Compile(whole, caseless, failure);
    m_literal = RequiredLiteral(pattern, !countsCase).toUtf8(); // which relies on it being valid
}

FindExpression::~FindExpression() = default;

struct FindExpression::Matcher::Data {
    std::unique_ptr<pcre2_match_data, Free> Narrow;
    std::unique_ptr<pcre2_match_data, Free> Wide;
    std::unique_ptr<pcre2_match_context, Free> Context;
    std::unique_ptr<pcre2_jit_stack, Free> Stack;
    pcre2_match_data* Last = nullptr; ///< of the last match
    int Groups = 0;
};

FindExpression::Matcher::Matcher(const FindExpression& expression)
    : m_expression(expression), m_data(std::make_unique<Data>())
{
    constexpr size_t LeastStack = 32 * 1024;
    constexpr size_t MostStack = 1024 * 1024;
    const Compiled& compiled = *expression.m_compiled;
    if (compiled.Narrow)
        m_data->Narrow.reset(pcre2_match_data_create_from_pattern(compiled.Narrow.get(), nullptr));
    m_data->Wide.reset(pcre2_match_data_create_from_pattern(compiled.Wide.get(), nullptr));
    m_data->Context.reset(pcre2_match_context_create(nullptr));
    m_data->Stack.reset(pcre2_jit_stack_create(LeastStack, MostStack, nullptr));
    pcre2_jit_stack_assign(m_data->Context.get(), nullptr, m_data->Stack.get());
    pcre2_set_match_limit(m_data->Context.get(), MostSteps);
    pcre2_set_heap_limit(m_data->Context.get(), MostHeap);
}

FindExpression::Matcher::~Matcher() = default;

std::optional<FindExpression::Matcher::Match> FindExpression::Matcher::Next(QByteArrayView text, qsizetype from,
                                                                            bool isAscii)
{
    const bool isNarrow = isAscii && m_data->Narrow;
    const Compiled& compiled = *m_expression.m_compiled;
    pcre2_match_data* data = isNarrow ? m_data->Narrow.get() : m_data->Wide.get();
    // A text is looked at for broken characters once, at its begin.
    const uint32_t options = PCRE2_NOTEMPTY | (from == 0 ? 0u : uint32_t(PCRE2_NO_UTF_CHECK));
    const int groups = pcre2_match(isNarrow ? compiled.Narrow.get() : compiled.Wide.get(),
                                   reinterpret_cast<PCRE2_SPTR>(text.data()), PCRE2_SIZE(text.size()), PCRE2_SIZE(from),
                                   options, data, m_data->Context.get());
    m_givenUp = groups < 0 && groups != PCRE2_ERROR_NOMATCH;
    if (groups < 0)
        return {};
    const PCRE2_SIZE* places = pcre2_get_ovector_pointer(data);
    if (places[1] <= places[0])
        return {};
    m_data->Last = data;
    m_data->Groups = groups;
    return Match{qsizetype(places[0]), qsizetype(places[1])};
}

FindExpression::Matcher::Match FindExpression::Matcher::Group(int number) const
{
    if (number >= m_data->Groups)
        return {};
    const PCRE2_SIZE* places = pcre2_get_ovector_pointer(m_data->Last) + 2 * number;
    return places[0] == PCRE2_UNSET ? Match() : Match{qsizetype(places[0]), qsizetype(places[1])};
}

} // namespace qb
