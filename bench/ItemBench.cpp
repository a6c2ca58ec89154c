#include "BenchLibrary.h"

#include "panels/ui/NodeTreeView.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Prompts.h"
#include "session/ui/frmCodeLib.h"
#include "store/CCodeItem.h"
#include "store/Library.h"

#include <QAction>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int LibrarySize = 100'000;
constexpr int BranchSize = 10'000;

/// Answers every question with Yes.
class YesPrompts : public SilentPrompts {
public:
    YesPrompts() : m_before(SetCurrent(this)) {}
    ~YesPrompts() override { SetCurrent(m_before); }
    MsgBoxResult MsgBox(const Message&) override { return MsgBoxResult::Yes; }

private:
    Prompts* m_before;
};

/// The window over a copy of the big library, with one item more that has many children.
class Window {
    BenchHome m_home{u"items"_s}; // before the window, which reads its settings there

public:
    Window()
    {
        QFile::copy(BenchLibrary(LibrarySize), m_home.Library());
        AddBranch(m_home.Library());
        Form.Form_Load();
        Form.resize(1400, 900);
        Form.show();
        Settle();
    }
    ~Window() { Form.close(); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    NodeTreeView& Tree() { return *Form.findChild<NodeTreeView*>(u"tvwTree"_s); }
    TreeNodes& Nodes() { return Form.findChild<ctlSmartTreeView*>(u"tvCodeItems"_s)->Nodes(); }
    TreeNode& Node(qint64 id) { return Nodes()[id]; }
    QModelIndex Index(qint64 id) { return Nodes().IndexOf(&Node(id)); }
    void Trigger(const QString& action) { Form.findChild<QAction*>(action)->trigger(); }
    void Key(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(Form.findChild<QLineEdit*>(u"txtLabelEdit"_s), &event);
    }
    /// What has been asked for is done and painted.
    void Paint()
    {
        QCoreApplication::processEvents();
        Tree().viewport()->repaint();
    }
    void Settle()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
    }

    frmCodeLib Form;
    qint64 Branch = 0;

private:
    void AddBranch(const QString& path)
    {
        const auto database = Library::Open(path);
        Transaction transaction(*database);
        for (int i = 0; i <= BranchSize; ++i) {
            CCodeItem item;
            item.Initialise(*database, {});
            item.SetTitle(u"branch %1"_s.arg(i));
            item.SetParentKey(QString::number(Branch));
            item.Commit();
            if (Branch == 0)
                Branch = item.Key().toLongLong();
        }
        transaction.Commit();
    }
};

void AddItem(benchmark::State& state)
{
    Window window;
    qint64 parent = 1;
    for (auto _ : state) {
        state.PauseTiming();
        window.Tree().setCurrentIndex(window.Index(parent += 97));
        window.Settle();
        state.ResumeTiming();
        window.Trigger(u"NEW"_s);
        window.Paint();
        state.PauseTiming();
        window.Key(Qt::Key_Escape);
        window.Settle();
        state.ResumeTiming();
    }
}

void RenameItem(benchmark::State& state)
{
    Window window;
    qint64 id = 1;
    for (auto _ : state) {
        state.PauseTiming();
        window.Tree().setCurrentIndex(window.Index(id += 97));
        window.Trigger(u"mnuRename"_s);
        window.Settle();
        window.Form.findChild<QLineEdit*>(u"txtLabelEdit"_s)->setText(u"renamed %1"_s.arg(id));
        state.ResumeTiming();
        window.Key(Qt::Key_Return);
        window.Paint();
        state.PauseTiming();
        window.Settle();
        state.ResumeTiming();
    }
}

void MoveItem(benchmark::State& state)
{
    Window window;
    const TreeDragRules& rules = window.Tree().DragRules();
    qint64 id = 50'000;
    for (auto _ : state) {
        state.PauseTiming();
        window.Tree().setCurrentIndex(window.Index(++id));
        window.Settle();
        rules.Start(window.Node(id));
        state.ResumeTiming();
        rules.Over(&window.Node(id / 1000), 3000, 6000);
        rules.Drop();
        rules.Complete();
        window.Paint();
    }
}

void DeleteBranch(benchmark::State& state)
{
    const YesPrompts prompts;
    for (auto _ : state) {
        state.PauseTiming();
        auto window = std::make_unique<Window>();
        window->Tree().setCurrentIndex(window->Index(window->Branch));
        window->Settle();
        state.ResumeTiming();
        window->Trigger(u"DELETE"_s);
        window->Paint();
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}

void ExpandNode(benchmark::State& state)
{
    Window window;
    for (auto _ : state) {
        window.Tree().expand(window.Index(window.Branch));
        window.Paint();
        state.PauseTiming();
        window.Tree().collapse(window.Index(window.Branch));
        window.Paint();
        state.ResumeTiming();
    }
}

/// One step of a walk, at the begin and at the end of all items.
void WalkNext(benchmark::State& state)
{
    Window window;
    const qint64 start = state.range(0) == 0 ? 1 : window.Branch + BranchSize / 2;
    window.Tree().setCurrentIndex(window.Index(start));
    window.Settle();
    for (auto _ : state) {
        window.Trigger(u"NEXT"_s);
        window.Paint();
    }
}

} // namespace

BENCHMARK(AddItem)->Name("add_item/100000")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50);
BENCHMARK(RenameItem)->Name("rename_item/100000")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50);
BENCHMARK(MoveItem)->Name("move_item/100000")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50);
BENCHMARK(DeleteBranch)->Name("delete_branch/10000")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(ExpandNode)->Name("expand_node/10000")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);
BENCHMARK(WalkNext)
    ->Name("walk_next/100000")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(100);

} // namespace qb::bench
