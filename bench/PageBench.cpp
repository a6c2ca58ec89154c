#include "BenchLibrary.h"

#include "components/ui/WindowPages.h"
#include "components/ui/frmPageEditor.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/frmCodeLib.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "web/ItemPages.h"
#include "web/ui/BrowserView.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTabWidget>
#include <QTreeView>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int ItemCount = 20;
constexpr int LinksTab = 4;

/// A library whose items have a page of some kilobytes each.
void MakeLibraryWithPages(const QString& path)
{
    CDBCreate().CreateNewDB(path, LanguageType::None, {});
    const auto database = Library::Open(path);
    for (int i = 0; i < ItemCount; ++i) {
        CCodeItem item;
        item.Initialise(*database, {});
        item.SetTitle(u"item %1"_s.arg(i, 2));
        item.Commit();
        WritePage(*database, item.Key().toLongLong(),
                  "<!DOCTYPE html><html><body><h1>Page</h1>"
                      + QByteArray("<p>A line of text in a page.</p>\n").repeated(200) + "</body></html>");
    }
}

/// The window with the pages of its items on their tab.
class PageWindow {
public:
    explicit PageWindow(const QString& library)
    {
        MakeLibraryWithPages(library);
        Window.Form_Load();
        Window.resize(1400, 900);
        Window.show();
        QCoreApplication::processEvents();
        m_tree = Window.findChild<QTreeView*>(u"tvwTree"_s);
        QObject::connect(Window.findChild<BrowserView*>(u"webLinks"_s), &BrowserView::DocumentComplete, &Window,
                         [this] { ++m_loaded; });
    }
    ~PageWindow() { Window.close(); }

    void Select(int row) { m_tree->setCurrentIndex(m_tree->model()->index(row, 0, m_tree->model()->index(0, 0))); }
    void ShowTab() { Window.findChild<QTabWidget*>(u"tbsTabs"_s)->setCurrentIndex(LinksTab); }
    int Loaded() const { return m_loaded; }
    void WaitForPage(int before) const
    {
        while (m_loaded == before)
            QCoreApplication::processEvents();
    }

    frmCodeLib Window;

private:
    QTreeView* m_tree;
    int m_loaded = 0;
};

/// From the selection of an item on its tab until its page is shown.
void OpenPage(benchmark::State& state)
{
    const BenchHome home(u"page"_s);
    PageWindow pages(home.Library());
    pages.Select(0);
    pages.ShowTab();
    pages.WaitForPage(0);
    int row = 1;
    for (auto _ : state) {
        const int before = pages.Loaded();
        pages.Select(row++ % ItemCount);
        pages.WaitForPage(before);
    }
}

/// The first page of a session, with the longest time for which the window does not answer meanwhile.
void OpenFirstPage(benchmark::State& state)
{
    const BenchHome home(u"page-first"_s);
    qint64 longest = 0;
    for (auto _ : state) {
        state.PauseTiming();
        PageWindow pages(home.Library());
        state.ResumeTiming();
        pages.Select(0);
        pages.ShowTab();
        QElapsedTimer turn;
        while (pages.Loaded() == 0) {
            turn.start();
            QCoreApplication::processEvents();
            longest = std::max(longest, turn.elapsed());
        }
        state.PauseTiming();
        state.counters["longest_turn_ms"] = double(longest);
        state.ResumeTiming();
    }
}

/// From the command until the editor shows a page of 200 kB and takes keys, the browser warm.
void OpenEditor(benchmark::State& state)
{
    const QString folder = DataFolder(u"page-editor"_s);
    const QString path = folder + u"/1.htm"_s;
    QFile page(path);
    const QByteArray line =
        "<p>A paragraph with <b>bold</b> words and <a href='x'>links</a>, one of very many here.</p>\n";
    if (!page.open(QIODevice::WriteOnly) || page.write("<h1>Large</h1>\n" + line.repeated(200'000 / line.size())) < 0)
        return state.SkipWithError("no page can be made");
    page.close();
    const auto open = [&path] {
        auto editor = std::make_unique<frmPageEditor>(nullptr, path, EditingTools(TokenPalette::Default(), false),
                                                      [] { return std::vector<LinkableItem>(); });
        bool isOpen = false;
        QObject::connect(editor.get(), &frmPageEditor::Opened, editor.get(), [&isOpen] { isOpen = true; });
        editor->show();
        while (!isOpen)
            QCoreApplication::processEvents();
        return editor;
    };
    auto editor = open();
    for (auto _ : state) {
        state.PauseTiming();
        editor.reset();
        state.ResumeTiming();
        editor = open();
    }
}

} // namespace

// The first one counts: the engine is loaded once.
BENCHMARK(OpenFirstPage)->Name("page_open/first")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(OpenEditor)->Name("editor_open")->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);
BENCHMARK(OpenPage)->Name("page_open/warm")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace qb::bench
