#include "platform/system/Expression.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

namespace qb {

namespace {

constexpr uint32_t MostSteps = 20000;

struct Free {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};

std::unique_ptr<pcre2_code, Free> Compile(const QString& pattern, uint32_t options)
{
    int error = 0;
    PCRE2_SIZE place = 0;
    return std::unique_ptr<pcre2_code, Free>(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.utf16()),
                                                           PCRE2_SIZE(pattern.size()), PCRE2_UTF | options, &error,
                                                           &place, nullptr));
}

/// What a match can begin with; everything where the library can't tell.
void ReadBegins(const pcre2_code& code, std::array<bool, 129>& begins)
{
    uint32_t kind = 0;
    uint32_t unit = 0;
    const uint8_t* bits = nullptr;
    pcre2_pattern_info(&code, PCRE2_INFO_FIRSTCODETYPE, &kind);
    pcre2_pattern_info(&code, PCRE2_INFO_FIRSTCODEUNIT, &unit);
    pcre2_pattern_info(&code, PCRE2_INFO_FIRSTBITMAP, &bits);
    uint32_t matchesEmpty = 0;
    pcre2_pattern_info(&code, PCRE2_INFO_MATCHEMPTY, &matchesEmpty);
    uint32_t options = 0;
    pcre2_pattern_info(&code, PCRE2_INFO_ALLOPTIONS, &options);
    constexpr int OneUnit = 1;
    const bool isKnown = matchesEmpty == 0 && ((kind == OneUnit && (options & PCRE2_CASELESS) == 0) || bits);
    begins.fill(!isKnown);
    if (!isKnown)
        return;
    if (kind == OneUnit) {
        begins[unit < 128 ? unit : 128] = true;
        return;
    }
    for (size_t character = 0; character < 256; ++character) {
        if (bits[character / 8] & (1u << (character % 8)))
            begins[character < 128 ? character : 128] = true;
    }
}

} // namespace

struct Expression::Compiled {
    std::unique_ptr<pcre2_code, Free> Code;
    std::unique_ptr<pcre2_match_data, Free> Data; ///< one for all matches: texts are scanned by one thread at a time
    std::unique_ptr<pcre2_match_context, Free> Context;
};

Expression::Expression(const QString& pattern, Case sensitivity)
{
    const uint32_t options = sensitivity == Folds ? uint32_t(PCRE2_CASELESS) : 0;
    // What a match begins with is worked out for expressions that may match anywhere only.
    const std::unique_ptr<pcre2_code, Free> anywhere = Compile(pattern, options);
    auto compiled = std::make_shared<Compiled>();
    compiled->Code = Compile(pattern, options | PCRE2_ANCHORED);
    if (!anywhere || !compiled->Code)
        return;
    ReadBegins(*anywhere, m_begins);
    pcre2_jit_compile(compiled->Code.get(), PCRE2_JIT_COMPLETE); // without, it is interpreted
    compiled->Data.reset(pcre2_match_data_create_from_pattern(compiled->Code.get(), nullptr));
    compiled->Context.reset(pcre2_match_context_create(nullptr));
    pcre2_set_match_limit(compiled->Context.get(), MostSteps);
    m_compiled = std::move(compiled);
}

bool Expression::MatchesAt(QStringView text, qsizetype place, Match& match) const
{
    const int groups = pcre2_match(m_compiled->Code.get(), reinterpret_cast<PCRE2_SPTR>(text.utf16()),
                                   PCRE2_SIZE(text.size()), PCRE2_SIZE(place), PCRE2_NO_UTF_CHECK,
                                   m_compiled->Data.get(), m_compiled->Context.get());
    if (groups <= 0) // no match, or given up
        return false;
    const PCRE2_SIZE* places = pcre2_get_ovector_pointer(m_compiled->Data.get());
    const auto range = [places](int group) {
        return places[2 * group] == PCRE2_UNSET ? Range()
                                                : Range{qsizetype(places[2 * group]), qsizetype(places[2 * group + 1])};
    };
    match = {.Whole = range(0), .Group = groups > 1 ? range(1) : Range()};
    return match.Whole.Begin == place; // \K could move it
}

} // namespace qb
