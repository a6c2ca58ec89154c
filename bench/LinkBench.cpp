#include "BenchLibrary.h"

#include "panels/ui/ctlSmartTreeView.h"
#include "platform/dao/DBEngine.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/Library.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <algorithm>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

/// An item with that many links, half of them both ways: reading the row and the links.
void LoadItemWithLinks(benchmark::State& state)
{
    const BenchHome home(u"links"_s);
    QFile::remove(home.Library());
    CDBCreate().CreateNewDB(home.Library(), LanguageType::Cpp, {});
    const auto database = Library::Open(home.Library());
    {
        Transaction whole(*database);
        for (int i = 0; i <= state.range(0); ++i)
            database->Execute(u"INSERT INTO Items (ParentID, Title) VALUES (0, ?)"_s, {u"item %1"_s.arg(i)});
        for (int i = 2; i <= state.range(0) + 1; ++i) {
            database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (1, ?, 'why')"_s, {i});
            if (i % 2 == 0)
                database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, 1, '')"_s, {i});
        }
        whole.Commit();
    }
    for (auto _ : state) {
        CCodeItem item;
        item.Initialise(*database, u"1"_s);
        if (item.Links().Count() != state.range(0))
            state.SkipWithError("links are missing");
    }
}

/// A key in the filter over a tree of real titles, until what is left is painted. The text grows and
/// shrinks, so that many and few titles match.
void FilterTitles(benchmark::State& state)
{
    ctlSmartTreeView panel;
    TreeNodes& nodes = panel.Nodes();
    nodes.BeginBuild();
    TreeNode& root = nodes.Add(0, u"Library"_s, TreeImage::OBJECTS);
    constexpr int PerFolder = 100;
    TreeNode* folder = nullptr;
    for (int i = 1; i <= state.range(0); ++i) {
        const bool isFolder = i % PerFolder == 1;
        TreeNode& node = nodes.Add(i, isFolder ? u"Folder %1"_s.arg(i) : u"class_%1_iterator.h"_s.arg(i),
                                   TreeImage::CHILD);
        nodes.PutUnder(node, isFolder ? root : *folder);
        if (isFolder)
            folder = &node;
    }
    nodes.EndBuild();
    panel.resize(320, 900);
    panel.show();
    QCoreApplication::processEvents();
    auto* filter = panel.findChild<QLineEdit*>(u"txtFilter"_s);
    const QStringList texts{u"it"_s, u"iter"_s, u"9"_s, u"99"_s, u"_999"_s, u"_9999_"_s, u"nothing"_s};
    qsizetype next = 0;
    double slowest = 0; // milliseconds
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        filter->setText(texts[next++ % texts.size()]);
        QCoreApplication::processEvents();
        panel.repaint();
        slowest = std::max(slowest, double(timer.nsecsElapsed()) / 1e6);
    }
    state.counters["slowest_ms"] = slowest;
}

} // namespace

BENCHMARK(LoadItemWithLinks)->Name("load_item/1000_links")->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(FilterTitles)
    ->Name("filter_titles")
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(70);

} // namespace qb::bench
