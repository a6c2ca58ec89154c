#include "BenchLibrary.h"

#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/TextEncoding.h"
#include "text/CTextFormat.h"

#include <QFile>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

QString VbSource(qsizetype size)
{
    const QString piece = u"' Works out the price of an order\r\nPrivate Function Price(ByVal Count As Long, rate As Double) As Double\r\n"
                          "    Dim total As Double, name As String\r\n    name = \"price of \" & CStr(Count)\r\n"
                          "    If Count > 0 Then\r\n        total = Count * rate ' plain\r\n    Else\r\n        total = 0\r\n"
                          "    End If\r\n    Price = total\r\nEnd Function\r\n\r\n"_s;
    return piece.repeated(size / piece.size() + 1).left(size);
}

CTextFormat& Formatter(LanguageType type)
{
    static CTextFormat format;
    format.SetLanguage(BuiltInLanguage(type));
    return format;
}

void Colorize(benchmark::State& state, const QString& source, LanguageType language)
{
    CTextFormat& format = Formatter(language);
    qsizetype bytes = 0;
    size_t runs = 0;
    for (auto _ : state) {
        state.PauseTiming();
        RichText box;
        box.SetText(source);
        bytes = box.Text().size();
        state.ResumeTiming();
        format.ColorizeCode(box);
        runs = box.Document().Runs().Count();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes);
    state.counters["runs"] = double(runs);
}

void ColorizeCpp(benchmark::State& state)
{
    Colorize(state, CppSource(2'000'000), LanguageType::Cpp);
}

void ColorizeVb(benchmark::State& state)
{
    Colorize(state, VbSource(2'000'000), LanguageType::VB);
}

/// Coloured source as RTF of about 10 MB.
const QString& ColouredRtf()
{
    static const QString rtf = [] {
        RichText box;
        box.SetText(CppSource(6'500'000));
        Formatter(LanguageType::Cpp).ColorizeCode(box);
        return box.TextRTF();
    }();
    return rtf;
}

void RtfRead(benchmark::State& state)
{
    const QString& rtf = ColouredRtf();
    for (auto _ : state) {
        RichTextDocument document;
        ReadRtf(rtf, document);
        benchmark::DoNotOptimize(document.Length());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * rtf.size());
}

void RtfWrite(benchmark::State& state)
{
    RichTextDocument document;
    ReadRtf(ColouredRtf(), document);
    qsizetype size = 0;
    for (auto _ : state)
        size = WriteRtf(document).size();
    state.SetBytesProcessed(int64_t(state.iterations()) * size);
}

} // namespace

BENCHMARK(ColorizeCpp)->Name("colorize/cpp_2MB")->Unit(benchmark::kMillisecond);
BENCHMARK(ColorizeVb)->Name("colorize/vb_2MB")->Unit(benchmark::kMillisecond);
BENCHMARK(RtfRead)->Name("rtf_read/10MB")->Unit(benchmark::kMillisecond);
BENCHMARK(RtfWrite)->Name("rtf_write/10MB")->Unit(benchmark::kMillisecond);

} // namespace qb::bench
