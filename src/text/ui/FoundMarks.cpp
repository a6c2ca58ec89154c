#include "text/ui/FoundMarks.h"

#include <algorithm>
#include <functional>

namespace qb {

namespace {

constexpr size_t MostMarks = 2000;    ///< more can't be told apart, and cost time
constexpr size_t MostPlaces = 100000; ///< that can be gone to

void Select(UserTextBox& box, const TextRange& range)
{
    box.SetSelStart(range.Begin);
    box.SetSelLength(range.Length);
}

} // namespace

FoundMarks::FoundMarks(std::function<UserTextBox*()> box) : m_box(std::move(box))
{
    constexpr int Pause = 200; // milliseconds
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(Pause);
    QObject::connect(&m_refresh, &QTimer::timeout, &m_refresh, std::bind_front(&FoundMarks::Refresh, this));
}

void FoundMarks::SetMatcher(const FindMatcher* matcher)
{
    if (matcher)
        m_matcher.emplace(matcher->Query());
    else
        m_matcher.reset();
    Refresh();
}

void FoundMarks::Refresh()
{
    m_refresh.stop();
    UserTextBox* box = m_box();
    if (m_marked && (m_marked != box || !m_matcher))
        m_marked->MarkFound({});
    m_marked = m_matcher ? box : nullptr;
    if (m_marked)
        m_marked->MarkFound(RangesIn(m_marked->Text(), *m_matcher, MostMarks));
}

void FoundMarks::RefreshSoon()
{
    if (m_matcher)
        m_refresh.start();
}

bool FoundMarks::GoTo(const FindMatcher& matcher, bool forward, bool fromCaret)
{
    UserTextBox* box = m_box();
    if (!box)
        return false;
    const std::vector<TextRange> ranges = RangesIn(box->Text(), matcher, MostPlaces);
    const auto begins = [](const TextRange& range, qsizetype place) { return range.Begin < place; };
    if (forward) {
        const qsizetype from = fromCaret ? box->SelStart() + box->SelLength() : 0;
        const auto behind = std::lower_bound(ranges.begin(), ranges.end(), from, begins);
        if (behind == ranges.end())
            return false;
        Select(*box, *behind);
        return true;
    }
    const auto before = fromCaret ? std::lower_bound(ranges.begin(), ranges.end(), box->SelStart(), begins)
                                  : ranges.end();
    if (before == ranges.begin())
        return false;
    Select(*box, *(before - 1));
    return true;
}

bool FoundMarks::GoToNumber(const FindMatcher& matcher, qsizetype number)
{
    UserTextBox* box = m_box();
    if (!box)
        return false;
    const std::vector<TextRange> ranges = RangesIn(box->Text(), matcher, MostPlaces);
    if (ranges.empty())
        return false;
    Select(*box, ranges[size_t(std::clamp<qsizetype>(number, 0, qsizetype(ranges.size()) - 1))]);
    return true;
}

} // namespace qb
