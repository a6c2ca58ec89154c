#include "find/FindRun.h"

#include <algorithm>
#include <tuple>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned MostThreads = 8;

auto OrderOf(const FindSnapshot& texts, const FindHit& hit)
{
    return std::tuple(hit.Rank, -texts.Item(hit.Place).LastChanged, hit.Id);
}

FindRank RankOf(const ChunkSearch::Found& found, quint64 all)
{
    return found.WholeInTitle == all ? FindRank::WordInTitle
           : found.InTitle == all    ? FindRank::InTitle
           : found.Whole == all      ? FindRank::Word
                                     : FindRank::Part;
}

} // namespace

QString FindHit::Letters() const
{
    QString letters;
    for (size_t field = 0; field < FindFields; ++field) {
        if (Counters[field] > 0)
            letters += letters.isEmpty() ? QString(LetterOf(FindField(field)))
                                         : u'/' + QString(LetterOf(FindField(field)));
    }
    return letters;
}

bool IsBetter(const FindSnapshot& texts, const FindHit& a, const FindHit& b)
{
    return OrderOf(texts, a) < OrderOf(texts, b);
}

void SortHits(const FindSnapshot& texts, std::vector<FindHit>& hits)
{
    std::sort(hits.begin(), hits.end(), [&texts](const FindHit& a, const FindHit& b) { return IsBetter(texts, a, b); });
}

FindRun::FindRun(std::shared_ptr<const FindSnapshot> texts, const FindQuery& query, Receiver receiver, Ending ending)
    : m_texts(std::move(texts)), m_matcher(query), m_receiver(std::move(receiver)), m_ending(std::move(ending)),
      m_deadline(query.Deadline.count() > 0 ? QDeadlineTimer(query.Deadline) : QDeadlineTimer(QDeadlineTimer::Forever))
{
    m_selects = query.Branch != 0 || !query.ChangedSince.IsNone() || query.Status || query.Rating
                || !query.Language.isEmpty();
    if (query.Branch != 0)
        m_branch = m_texts->Branch(query.Branch);
    m_leftOut = CountLeftOut();
    ListTasks();
    const size_t threads = std::min<size_t>(std::clamp(std::thread::hardware_concurrency(), 1u, MostThreads),
                                            std::max<size_t>(m_tasks.size(), 1));
    m_working = threads;
    for (size_t i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { Work(); });
}

FindRun::~FindRun()
{
    Cancel();
    Wait();
}

FindOutcome FindRun::Wait()
{
    for (std::jthread& thread : m_threads) {
        if (thread.joinable())
            thread.join();
    }
    return Outcome();
}

FindOutcome FindRun::Outcome() const
{
    return {.IsCancelled = m_cancelled,
            .DeadlineReached = m_late,
            .GivenUp = m_givenUp,
            .LeftOut = m_leftOut,
            .IsDamaged = m_texts->IsDamaged()};
}

/// Of those that the query asks for.
size_t FindRun::CountLeftOut() const
{
    size_t count = 0;
    for (quint32 layer = 0; layer < m_texts->Layers().size(); ++layer) {
        const FindSnapshot::Layer& own = m_texts->Layers()[layer];
        for (const SegmentSource& source : own.Segment->All().Sources) {
            const FindField field = source.Source.File == 0 ? FindField::WebPage : FindField::FileTexts;
            if (source.Source.IsLeftOut && (m_matcher.Query().Fields & BitOf(field)) != 0 && !own.Hidden[source.Item]
                && Passes({layer, source.Item}))
                ++count;
        }
    }
    return count;
}

/// What was added last tends to be what is looked for.
void FindRun::ListTasks()
{
    const std::vector<FindSnapshot::Layer>& layers = m_texts->Layers();
    for (size_t layer = layers.size(); layer-- > 0;) {
        for (size_t chunk = layers[layer].Segment->All().Chunks.size(); chunk-- > 0;)
            m_tasks.push_back({quint32(layer), quint32(chunk)});
    }
}

bool FindRun::IsEnough()
{
    if (m_cancelled || m_late)
        return true;
    if (m_deadline.hasExpired())
        m_late = true;
    return m_late;
}

bool FindRun::Passes(FindSnapshot::Place place) const
{
    const FindQuery& query = m_matcher.Query();
    const FindItem& item = m_texts->Item(place);
    return (query.Branch == 0 || std::binary_search(m_branch.begin(), m_branch.end(), item.Id))
           && (query.ChangedSince.IsNone() || item.LastChanged >= query.ChangedSince.Seconds())
           && (!query.Status || item.Status == *query.Status) && (!query.Rating || item.Rating == *query.Rating)
           && (query.Language.isEmpty()
               || m_texts->LanguageOf(place).compare(query.Language, Qt::CaseInsensitive) == 0);
}

/// False when nothing of the chunk is to be looked at.
bool FindRun::MarkWanted(const Task& task, std::vector<char>& wanted) const
{
    const FindSnapshot::Layer& layer = m_texts->Layers()[task.Layer];
    const SegmentChunk& chunk = layer.Segment->All().Chunks[task.Chunk];
    wanted.assign(chunk.Items, 0);
    bool any = false;
    for (quint32 i = 0; i < chunk.Items; ++i) {
        const quint32 item = chunk.FirstItem + i;
        wanted[i] = !layer.Hidden[item] && (!m_selects || Passes({task.Layer, item}));
        any = any || wanted[i];
    }
    return any;
}

std::vector<FindHit> FindRun::Hits(const Task& task, const std::vector<ChunkSearch::Found>& found) const
{
    const FindSegment& segment = *m_texts->Layers()[task.Layer].Segment;
    const quint32 first = segment.All().Chunks[task.Chunk].FirstItem;
    const quint64 all = m_matcher.AllBits();
    std::vector<FindHit> hits;
    for (quint32 i = 0; i < found.size(); ++i) {
        if (found[i].Seen == all)
            hits.push_back({.Id = segment.All().Items[first + i].Item.Id,
                            .Place = {task.Layer, first + i},
                            .Rank = RankOf(found[i], all),
                            .Counters = found[i].Counters});
    }
    SortHits(*m_texts, hits);
    return hits;
}

void FindRun::Work()
{
    ChunkSearch search(m_matcher, [this] { return IsEnough(); });
    std::vector<char> wanted;
    for (size_t next = m_next++; next < m_tasks.size() && !IsEnough(); next = m_next++) {
        const Task& task = m_tasks[next];
        if (!MarkWanted(task, wanted))
            continue;
        const FindSegment& segment = *m_texts->Layers()[task.Layer].Segment;
        std::vector<FindHit> hits = Hits(
            task, search.Search(segment, segment.All().Chunks[task.Chunk], wanted, m_matcher.Query().Fields));
        const std::scoped_lock lock(m_receiving);
        if (!hits.empty() && !m_cancelled && !segment.IsDamaged())
            m_receiver(std::move(hits));
    }
    m_givenUp += search.GivenUp();
    if (--m_working == 0)
        End();
}

void FindRun::End()
{
    if (m_ending)
        m_ending(Outcome());
}

FindResult FindAll(const std::shared_ptr<const FindSnapshot>& texts, const FindQuery& query)
{
    FindResult result;
    FindRun run(texts, query, [&result](std::vector<FindHit>&& batch) {
        result.Hits.insert(result.Hits.end(), batch.begin(), batch.end());
    });
    result.Outcome = run.Wait();
    SortHits(*texts, result.Hits);
    return result;
}

} // namespace qb
