#include "BenchLibrary.h"

#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "session/ui/frmCodeLib.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/ShippedLanguages.h"
#include "text/ui/CodeBox.h"

#include <QAction>
#include <QCoreApplication>
#include <QFile>
#include <QKeyEvent>
#include <QTreeView>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

/// The window over a library of two items with texts of one size, coloured on opening.
class Window {
    BenchHome m_home{u"texts"_s}; // before the window, which reads its settings there

public:
    enum Language { ByWords, ByRules };

    Window(qsizetype size, bool withUsageAndNotes, Language language)
    {
        const QString path = m_home.Library();
        if (language == ByWords)
            CDBCreate().CreateNewDB(path, LanguageType::Cpp, {});
        else
            CDBCreate().CreateNewDB(path, LanguageType::File, ShippedLanguageNamed(u"C++ (current)"_s)->Path);
        {
            const auto database = Library::Open(path);
            for (int i = 0; i < 2; ++i) {
                CCodeItem item;
                item.Initialise(*database, {});
                item.SetTitle(u"item %1"_s.arg(i));
                const QString text = CppSource(size - i);
                item.SetCode(RtfFromPlainText(text, CodeFont));
                if (withUsageAndNotes) {
                    item.SetExample(RtfFromPlainText(text, CodeFont));
                    item.SetNotes(RtfFromPlainText(text, {u"Verdana"_s, 10}));
                }
                item.Commit();
            }
        }
        Form.Form_Load();
        Form.Settings().SetAutoColorizeWhenItemOpened(true);
        Form.resize(1400, 900);
        Form.show();
        Settle();
    }
    ~Window() { Form.close(); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    CodeBox& Code() { return *Form.findChild<CodeBox*>(u"rtbCode"_s); }
    void Select(int row)
    {
        auto* tree = Form.findChild<QTreeView*>(u"tvwTree"_s);
        tree->setCurrentIndex(tree->model()->index(row, 0, tree->model()->index(0, 0)));
    }
    void Type()
    {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, u"x"_s);
        QCoreApplication::sendEvent(&Code(), &key);
    }
    void Paint()
    {
        QCoreApplication::processEvents();
        Code().viewport()->repaint();
    }
    static void Settle()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
    }

    frmCodeLib Form;
};

/// From the click on an item, the one before saved, until its code is painted in colour.
void OpenItem(benchmark::State& state, Window::Language language)
{
    Window window(state.range(0), true, language);
    int row = 0;
    window.Select(1); // colours and saves both once
    window.Select(0);
    for (auto _ : state) {
        window.Select(++row % 2);
        window.Paint();
    }
}

void TypeKey(benchmark::State& state, Window::Language language)
{
    Window window(1'000'000, false, language);
    window.Select(0);
    Window::Settle();
    window.Code().SetSelStart(window.Code().Text().size() / 2);
    for (auto _ : state) {
        window.Type();
        window.Paint();
    }
}

void SaveItem(benchmark::State& state)
{
    Window window(10'000, true, Window::ByWords);
    window.Select(0);
    for (auto _ : state) {
        state.PauseTiming();
        window.Type();
        Window::Settle();
        state.ResumeTiming();
        window.Form.findChild<QAction*>(u"mnuSaveItem"_s)->trigger();
    }
}

} // namespace

BENCHMARK_CAPTURE(OpenItem, words, Window::ByWords)
    ->Name("open_item")
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(10);
BENCHMARK_CAPTURE(OpenItem, rules, Window::ByRules)
    ->Name("open_item_rules")
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(10);
BENCHMARK_CAPTURE(TypeKey, words, Window::ByWords)
    ->Name("type_key/1MB")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(100);
BENCHMARK_CAPTURE(TypeKey, rules, Window::ByRules)
    ->Name("type_key_rules/1MB")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(100);
BENCHMARK(SaveItem)->Name("save_item/10kB")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

} // namespace qb::bench
