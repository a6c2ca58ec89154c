#include "finder/FindSearch.h"

#include "platform/system/RuntimeError.h"

#include <QLocale>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds Pause{120}; ///< between two looks of a list that fills

/// "1 place", "1,200 places".
QString Counted(qint64 count, const QString& one, const QString& many)
{
    return QLocale().toString(count) + u' ' + (count == 1 ? one : many);
}

} // namespace

QString TextOfField(const FindSnapshot& texts, FindSnapshot::Place item, FindField field)
{
    const FindSegment& segment = texts.SegmentOf(item);
    for (const SegmentPart& part : segment.PartsOfItem(item.Item)) {
        if (part.Field == field)
            return QString::fromUtf8(segment.TextOf(segment.ChunkOfItem(item.Item), part));
    }
    return {};
}

FindSearch::FindSearch(FindService& service, QObject* parent) : QObject(parent), m_service(service)
{
    m_show.setSingleShot(true);
    connect(&m_show, &QTimer::timeout, this, [this] {
        m_shown.start();
        Q_EMIT Changed();
    });
    connect(&service, &FindService::StateChanged, this, [this] {
        if (IsRunning() && !m_texts)
            Q_EMIT Changed(); // how far the reading is
    });
}

FindSearch::~FindSearch() = default;

void FindSearch::Look(const FindQuery& query)
{
    m_request.reset();
    m_show.stop();
    m_shown.invalidate();
    m_query = query;
    ++m_number;
    m_texts.reset();
    m_hits.clear();
    m_places = 0;
    m_error.clear();
    if (query.Text.isEmpty()) {
        Q_EMIT Changed();
        return;
    }
    try {
        m_query.Deadline = Deadline;
        m_request = m_service.Start(m_query);
    } catch (const RuntimeError& error) {
        m_error = error.Description();
        Q_EMIT Changed();
        Q_EMIT Ended();
        return;
    }
    connect(m_request.get(), &FindRequest::Started, this, [this] {
        m_texts = m_request->Texts();
        m_hits.clear();
        m_places = 0;
    });
    connect(m_request.get(), &FindRequest::Found, this, &FindSearch::Take);
    connect(m_request.get(), &FindRequest::Ended, this, &FindSearch::Finish);
    connect(m_request.get(), &FindRequest::Failed, this, [this](const QString& reason) {
        m_error = reason;
        Finish();
    });
    m_show.start(Pause); // what was found before stays in sight if this is quick
}

/// They come in order within a batch.
void FindSearch::Take(const std::vector<FindHit>& hits)
{
    const auto before = std::ptrdiff_t(m_hits.size());
    m_hits.insert(m_hits.end(), hits.begin(), hits.end());
    const auto isBetter = [this](const FindHit& a, const FindHit& b) { return IsBetter(*m_texts, a, b); };
    std::sort(m_hits.begin() + before, m_hits.end(), isBetter);
    std::inplace_merge(m_hits.begin(), m_hits.begin() + before, m_hits.end(), isBetter);
    for (const FindHit& hit : hits) {
        for (const quint32 count : hit.Counters)
            m_places += count;
    }
    ShowSoon();
}

/// The first hits at once, what follows now and then.
void FindSearch::ShowSoon()
{
    if (!m_shown.isValid())
        m_show.start(0);
    else if (!m_show.isActive())
        m_show.start(Pause);
}

void FindSearch::Finish()
{
    m_show.stop();
    Q_EMIT Changed();
    Q_EMIT Ended();
}

bool FindSearch::IsComplete() const
{
    return m_error.isEmpty() && m_request && m_request->HasEnded() && m_request->Outcome().IsComplete();
}

QString FindSearch::StatusText() const
{
    if (!m_error.isEmpty())
        return m_error;
    if (m_query.Text.isEmpty())
        return m_service.CurrentState() == FindService::State::Closed ? u"No library is open."_s
                                                                      : m_service.StateText();
    if (!m_texts) {
        const QString state = m_service.StateText();
        return state.isEmpty() ? u"Searching"_s : state;
    }
    const QString found = m_hits.empty() ? u"Nothing was found"_s
                                         : u"%1 in %2"_s.arg(Counted(m_places, u"place"_s, u"places"_s),
                                                             Counted(qint64(m_hits.size()), u"item"_s, u"items"_s));
    return IsRunning() ? (m_hits.empty() ? u"Searching"_s : found + u" so far"_s) : found + OutcomeText();
}

QString FindSearch::OutcomeText() const
{
    const FindOutcome& outcome = m_request->Outcome();
    QString text;
    if (outcome.DeadlineReached)
        text += u". The time was up before all texts were looked at: there may be more"_s;
    if (outcome.GivenUp > 0)
        text += u". %1 would have taken the expression too long: there may be more in them"_s.arg(
            Counted(qint64(outcome.GivenUp), u"text"_s, u"texts"_s));
    if (outcome.LeftOut > 0)
        text += u". %1 of more than %2 MB"_s.arg(Counted(qint64(outcome.LeftOut), u"file"_s, u"files"_s))
                    .arg(LargestSearchedFile >> 20)
                + (outcome.LeftOut == 1 ? u" was not looked through"_s : u" were not looked through"_s);
    if (outcome.IsCancelled)
        text += u". The search was ended before all texts were looked at"_s;
    if (!m_service.Warning().isEmpty())
        text += u". "_s + m_service.Warning();
    return text;
}

std::vector<FindResultRow> FindSearch::Rows() const
{
    std::vector<FindResultRow> rows;
    rows.reserve(m_hits.size());
    for (const FindHit& hit : m_hits)
        rows.push_back({.Item = hit.Id,
                        .Title = m_texts->Title(hit.Place),
                        .Description = TextOfField(*m_texts, hit.Place, FindField::Description),
                        .Counters = hit.Counters,
                        .Rating = m_texts->Item(hit.Place).Rating});
    return rows;
}

} // namespace qb
