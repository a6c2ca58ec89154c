#include "BenchLibrary.h"

#include "platform/richtext/RichText.h"
#include "text/CTextFormat.h"
#include "text/ui/CodeBox.h"

#include <QApplication>
#include <QKeyEvent>
#include <benchmark/benchmark.h>
#include <malloc.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MegaByte = 1'000'000;

QString ColouredRtf(const QString& source)
{
    CTextFormat format;
    format.SetLanguage(BuiltInLanguage(LanguageType::Cpp));
    RichText box;
    box.SetText(source);
    format.ColorizeCode(box);
    return box.TextRTF();
}

size_t UsedMemory()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void ShowInWindow(benchmark::State& state, const QString& rtf)
{
    size_t most = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const size_t before = UsedMemory();
        auto box = std::make_unique<CodeBox>();
        box->resize(900, 700);
        box->show();
        QCoreApplication::processEvents();
        state.ResumeTiming();
        box->SetTextRTF(rtf);
        box->viewport()->repaint();
        state.PauseTiming();
        QCoreApplication::processEvents();
        most = std::max(most, UsedMemory() - before);
        box.reset();
        state.ResumeTiming();
    }
    state.counters["memory_times_utf16"] = double(most) / double(MegaByte * qsizetype(sizeof(QChar)));
}

void WidgetLoad(benchmark::State& state)
{
    ShowInWindow(state, ColouredRtf(CppSource(MegaByte)));
}

void WidgetLoadOneLine(benchmark::State& state)
{
    ShowInWindow(state, ColouredRtf(CppSource(MegaByte).replace(u'\r', u' ').replace(u'\n', u' ')));
}

void WidgetTypeKey(benchmark::State& state)
{
    CodeBox box;
    box.resize(900, 700);
    box.show();
    box.SetTextRTF(ColouredRtf(CppSource(MegaByte)));
    QCoreApplication::processEvents();
    box.SetSelStart(box.Text().size() / 2);
    for (auto _ : state) {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, u"x"_s);
        QCoreApplication::sendEvent(&box, &key);
        QCoreApplication::processEvents();
    }
}

} // namespace

BENCHMARK(WidgetLoad)->Name("widget_load/1MB")->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(WidgetLoadOneLine)->Name("widget_load/1MB_on_one_line")->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(WidgetTypeKey)->Name("widget_type_key/1MB")->Unit(benchmark::kMillisecond)->Iterations(100);

} // namespace qb::bench
