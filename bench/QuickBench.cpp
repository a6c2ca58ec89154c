#include "BenchLibrary.h"

#include "finder/QuickOpen.h"
#include "panels/TreeNodes.h"
#include "session/LoadTree.h"
#include "store/Library.h"

#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int Items = 100'000;

/// A session with nothing but a library and its tree.
class TreeHost : public QuickOpenHost {
public:
    TreeHost() : m_library(Library::Open(FolderLibrary(Items), DBEngine::Access::ReadOnly))
    {
        m_nodes.BeginBuild();
        LoadTree(*m_library, m_nodes, u"root"_s);
        m_nodes.EndBuild();
    }
    Library* OpenLibrary() override { return m_library.get(); }
    TreeNodes& Nodes() override { return m_nodes; }
    qint64 CurrentItem() override { return 0; }
    std::vector<qint64> RecentItems() override { return {}; }
    std::vector<QuickCommand> RunnableCommands() override { return {}; }
    std::optional<ShownCode> CurrentCode() override { return std::nullopt; }
    std::optional<RichText> UnsavedCode(qint64) override { return std::nullopt; }
    void OpenItem(qint64, bool) override {}
    void OpenPlace(qint64, const FindPlace&) override {}
    void GoToLine(int) override {}
    void RunCommand(const QString&) override {}

private:
    std::unique_ptr<Library> m_library;
    TreeNodes m_nodes;
};

const char* const Typed[] = {"", "s", "st", "str", "stri vec", "hpp iter", "e a o", "zzzzqq"};

/// From a key in the field to the rows of the list.
void QuickOpenKey(benchmark::State& state)
{
    static TreeHost host;
    static FindService find;
    static QuickOpen quick(host, find);
    const QString typed = QString::fromLatin1(Typed[state.range(0)]);
    quick.SetTyped(u"x"_s);
    for (auto _ : state) {
        quick.SetTyped(typed);
        benchmark::DoNotOptimize(quick.Rows().data());
    }
    state.SetLabel(Typed[state.range(0)]);
}

/// The first key after the tree has changed.
void QuickOpenAfterChange(benchmark::State& state)
{
    TreeHost host;
    FindService find;
    QuickOpen quick(host, find);
    TreeNode& node = *host.Nodes().Root()->Children.front();
    for (auto _ : state) {
        host.Nodes().SetText(node, node.Text());
        quick.SetTyped(u"s"_s);
        benchmark::DoNotOptimize(quick.Rows().data());
    }
}

} // namespace

BENCHMARK(QuickOpenKey)->Name("quick_open_key")->DenseRange(0, std::size(Typed) - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(QuickOpenAfterChange)->Name("quick_open_after_change")->Unit(benchmark::kMillisecond);

} // namespace qb::bench
