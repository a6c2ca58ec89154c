// The find over a library of real source text, beside ripgrep on the same texts as files and LIKE in the library.

#include "BenchLibrary.h"

#include "find/FindCache.h"
#include "find/FindRun.h"
#include "find/FuzzyTitles.h"
#include "store/CCodeItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <sys/resource.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int Items = 100000;

/// The texts of the library, read once for all benchmarks of a run.
FindCache& Cache()
{
    static FindCache cache(BenchLibrary(Items), DataFolder(u"find"_s) + u'/');
    cache.Update();
    return cache;
}

struct Search {
    const char* Name;
    const char* Text;
    FindMode Mode;
    bool AcceptsLess = false; ///< it is hopeless
};
constexpr Search Searches[] = {
    {"phrase", "constexpr auto", FindMode::Phrase},
    {"rare_phrase", "zzqx_not_there", FindMode::Phrase},
    {"punctuation", "std::move(", FindMode::Phrase},
    {"common_word", "return", FindMode::Phrase},
    {"all_words", "template typename allocator", FindMode::AllWords},
    {"one_letter", "e", FindMode::Phrase},
    {"regex_with_literal", "std::\\w+_ptr<", FindMode::Expression},
    {"regex_nested", "(x+x+)+y", FindMode::Expression, true},
    {"regex_without_literal", "\\b[a-z]+\\d{3}\\b", FindMode::Expression},
};

FindQuery QueryOf(const Search& search)
{
    FindQuery query;
    query.Text = QString::fromLatin1(search.Text);
    query.Mode = search.Mode;
    return query;
}

double MillisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double ResidentAnonymousMB()
{
    QFile status(u"/proc/self/status"_s);
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("RssAnon:"))
                return line.mid(8).trimmed().split(' ')[0].toDouble() / 1024;
        }
    }
    return 0;
}

/// All hits with their counters, in order.
void FindAllHits(benchmark::State& state)
{
    const Search& search = Searches[state.range(0)];
    const auto texts = Cache().Last();
    size_t hits = 0;
    quint64 places = 0;
    for (auto _ : state) {
        const FindResult result = FindAll(texts, QueryOf(search));
        if (!result.Outcome.IsComplete() && !search.AcceptsLess)
            return state.SkipWithError("the search was not complete");
        hits = result.Hits.size();
        places = 0;
        for (const FindHit& hit : result.Hits) {
            for (const quint32 count : hit.Counters)
                places += count;
        }
    }
    state.SetLabel(search.Name);
    state.counters["items"] = double(hits);
    state.counters["places"] = double(places);
}

/// Until the first hits could be shown.
void FindFirstHits(benchmark::State& state)
{
    const Search& search = Searches[state.range(0)];
    const auto texts = Cache().Last();
    for (auto _ : state) {
        std::atomic<double> first = 0;
        const auto start = std::chrono::steady_clock::now();
        FindRun run(texts, QueryOf(search), [&](std::vector<FindHit>&&) {
            if (first == 0)
                first = MillisecondsSince(start);
        });
        run.Wait();
        state.SetIterationTime(first / 1000);
    }
    state.SetLabel(search.Name);
}

void FindHopeless(benchmark::State& state)
{
    const auto texts = Cache().Last();
    FindQuery query;
    query.Text = u"(\\w+\\s*)+\u00a7"_s;
    query.Mode = FindMode::Expression;
    query.Deadline = std::chrono::milliseconds(500);
    for (auto _ : state)
        benchmark::DoNotOptimize(FindAll(texts, query).Outcome.DeadlineReached);
}

void FindCacheFromNothing(benchmark::State& state)
{
    const QString library = BenchLibrary(Items);
    const QString folder = DataFolder(u"find-new"_s) + u'/';
    for (auto _ : state) {
        state.PauseTiming();
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
        state.ResumeTiming();
        FindCache cache(library, folder);
        cache.Update();
    }
    QDir(folder).removeRecursively();
}

/// A process that starts when nothing has changed.
void FindCacheOpen(benchmark::State& state)
{
    Cache();
    const double before = ResidentAnonymousMB();
    double after = before;
    for (auto _ : state) {
        FindCache cache(BenchLibrary(Items), DataFolder(u"find"_s) + u'/');
        const FindResult result = FindAll(cache.Update(), QueryOf(Searches[0]));
        after = std::max(after, ResidentAnonymousMB());
    }
    state.counters["grows_MB"] = after - before;
}

void FindCacheAfterSave(benchmark::State& state)
{
    const auto library = Library::Open(BenchLibrary(Items));
    FindCache& cache = Cache();
    qint64 id = 1;
    for (auto _ : state) {
        state.PauseTiming();
        CCodeItem item;
        item.Initialise(*library, QString::number(++id));
        item.SetDescription(u"saved %1"_s.arg(std::rand()));
        item.SetItemChanged(true);
        item.Commit();
        state.ResumeTiming();
        cache.Saved({id});
    }
    cache.Keep();
}

/// After a change by nobody knows whom.
void FindCacheCheck(benchmark::State& state)
{
    const auto library = Library::Open(BenchLibrary(Items));
    FindCache& cache = Cache();
    for (auto _ : state) {
        state.PauseTiming();
        library->Execute(u"UPDATE Properties SET DBDescription = ?"_s, {QString::number(std::rand())});
        state.ResumeTiming();
        cache.Update();
    }
}

void FindQuickOpen(benchmark::State& state)
{
    const auto texts = Cache().Last();
    std::vector<FuzzyTitles::Title> all;
    for (const FindSnapshot::Place place : texts->Places())
        all.push_back({texts->Item(place).Id, texts->Title(place)});
    const FuzzyTitles titles(all);
    const QString typed = QStringList{u"i"_s, u"itm 99"_s, u"77 item"_s}[state.range(0)];
    for (auto _ : state)
        benchmark::DoNotOptimize(titles.Find(typed, 50));
}

/// The texts as files, a thousand a folder.
QString TextsAsFiles()
{
    const QString folder = DataFolder(u"find-files"_s);
    if (QFileInfo::exists(folder + u"/complete"_s))
        return folder;
    const auto texts = Cache().Last();
    for (const FindSnapshot::Place place : texts->Places()) {
        const FindItemTexts item = texts->SegmentOf(place).Copy(place.Item);
        const QString own = u"%1/%2"_s.arg(folder).arg(item.Item.Id / 1000);
        QDir().mkpath(own);
        QFile file(u"%1/%2"_s.arg(own).arg(item.Item.Id));
        if (!file.open(QIODevice::WriteOnly))
            return {};
        for (const FindText& text : item.Texts)
            file.write(text.Text + '\n');
    }
    QFile(folder + u"/complete"_s).open(QIODevice::WriteOnly);
    return folder;
}

void FindByRipgrep(benchmark::State& state)
{
    const Search& search = Searches[state.range(0)];
    const QByteArray command = QByteArray("rg --count-matches -S ") + (search.Mode == FindMode::Expression ? "" : "-F ")
                               + "-- '" + search.Text + "' '" + QFile::encodeName(TextsAsFiles()) + "' > /dev/null";
    if (std::system("rg --version > /dev/null 2>&1") != 0)
        return state.SkipWithError("ripgrep is not installed");
    for (auto _ : state)
        benchmark::DoNotOptimize(std::system(command.constData()));
    state.SetLabel(search.Name);
}

/// What the library itself can do: in the stored RTF, without counters.
void FindByLike(benchmark::State& state)
{
    const auto library = Library::Open(BenchLibrary(Items), DBEngine::Access::ReadOnly);
    const QString pattern = u'%' + QString::fromLatin1(Searches[state.range(0)].Text) + u'%';
    for (auto _ : state) {
        qint64 count = 0;
        Statement rows = library->Query(
            u"SELECT ID FROM Items WHERE Title LIKE ?1 OR Description LIKE ?1 OR Code LIKE ?1 "
            "OR Notes LIKE ?1 OR Example LIKE ?1"_s,
            {pattern});
        while (rows.Step())
            ++count;
        benchmark::DoNotOptimize(count);
    }
    state.SetLabel(Searches[state.range(0)].Name);
}

constexpr int Last = int(std::size(Searches)) - 1;
constexpr int LastOfRipgrep = 6; ///< it has no expression that goes back

} // namespace

BENCHMARK(FindAllHits)->Name("find_all_hits")->DenseRange(0, Last)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(FindFirstHits)->Name("find_first_hits")->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(30);
BENCHMARK(FindHopeless)
    ->Name("find_hopeless_deadline_500")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);
BENCHMARK(FindByRipgrep)
    ->Name("find_ripgrep")
    ->DenseRange(0, LastOfRipgrep)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(FindByLike)->Name("find_like")->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(FindQuickOpen)->Name("find_quick_open")->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(FindCacheOpen)->Name("find_cache_open")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(FindCacheAfterSave)
    ->Name("find_cache_after_save")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(30);
BENCHMARK(FindCacheCheck)->Name("find_cache_check")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(FindCacheFromNothing)->Name("find_cache_new")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

} // namespace qb::bench
