#include "BenchLibrary.h"

#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/TextEncoding.h"
#include "store/ShippedLanguages.h"
#include "text/CTextFormat.h"
#include "text/LineColours.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

QString VbSource(qsizetype size)
{
    const QString piece =
        u"' Works out the price of an order\r\nPrivate Function Price(ByVal Count As Long, rate As Double) As "
        "Double\r\n"
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

/// Real source of about 2 MB: the files that fit a pattern below a folder, one behind the other.
QString RealSource(const QString& folder, const QString& pattern)
{
    constexpr qsizetype Size = 2'000'000;
    QString source;
    QDirIterator files(folder, {pattern}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext() && source.size() < Size) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly))
            source += DecodeText(file.readAll(), FallbackEncoding::Latin1).value_or(QString());
    }
    return source.repeated(source.isEmpty() ? 0 : Size / source.size() + 1).left(Size);
}

/// The scan by rules with the painting of all runs.
void ColorizeByRules(benchmark::State& state, const QString& language, const QString& source)
{
    CTextFormat format;
    format.SetLanguage(LanguageNamed(language));
    if (source.isEmpty() || !format.Rules())
        return state.SkipWithError("no source or no rules");
    qsizetype bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        RichText box;
        box.SetText(source);
        bytes = box.Text().size();
        state.ResumeTiming();
        format.ColorizeCode(box);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes);
}

/// The scan by rules alone, line by line.
void ScanByRules(benchmark::State& state, const QString& language, const QString& source)
{
    CTextFormat format;
    format.SetLanguage(LanguageNamed(language));
    if (source.isEmpty() || !format.Rules())
        return state.SkipWithError("no source or no rules");
    const QList<QStringView> lines = QStringView(source).split(u'\n');
    std::vector<Token> tokens;
    for (auto _ : state) {
        int line = RuleScan::Begin;
        for (const QStringView text : lines)
            line = format.Rules()->ScanLine(text, line, tokens);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * source.size());
}

struct RuleCase {
    const char* Name;
    const char* Language;
    const char* Folder;
    const char* Pattern;
};
constexpr RuleCase RuleCases[] = {
    {"cpp", "C++ (current)", "/usr/include/c++", "*.h"},
    {"python", "Python", "/usr/lib/python3", "*.py"},
    {"js", "JavaScript", "/usr", "*.js"},
};

[[maybe_unused]] const bool RegisteredRules = [] {
    for (const RuleCase& one : RuleCases) {
        const auto source = [&one] {
            return RealSource(QString::fromLatin1(one.Folder), QString::fromLatin1(one.Pattern));
        };
        const auto name = [&one](const char* what) { return std::string(what) + "/" + one.Name + "_2MB"; };
        benchmark::RegisterBenchmark(name("rule_scan").c_str(), [&one, source](benchmark::State& state) {
            ScanByRules(state, QString::fromLatin1(one.Language), source());
        })->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(name("rule_paint").c_str(), [&one, source](benchmark::State& state) {
            ColorizeByRules(state, QString::fromLatin1(one.Language), source());
        })->Unit(benchmark::kMillisecond);
    }
    return true;
}();

/// A key in the middle of 1 MB, and the colours of the lines in sight.
void RecolourKey(benchmark::State& state)
{
    CTextFormat format;
    format.SetLanguage(LanguageNamed(u"C++ (current)"_s));
    QStringList lines = CppSource(1'000'000).split(QRegularExpression(u"\r?\n"_s));
    LineColours colours;
    colours.Reset(format.Rules(), int(lines.size()));
    const auto textOf = [&lines](int line) { return lines[line]; };
    const int middle = int(lines.size()) / 2;
    constexpr int Sight = 60;
    colours.TokensOf(int(lines.size()) - 1, textOf);
    for (auto _ : state) {
        lines[middle] += u'x';
        colours.LinesChanged(middle, 1, 1);
        for (int line = middle - Sight / 2; line < middle + Sight / 2; ++line)
            benchmark::DoNotOptimize(colours.TokensOf(line, textOf).size());
    }
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
BENCHMARK(RecolourKey)->Name("recolour_key/1MB")->Unit(benchmark::kMillisecond);
BENCHMARK(RtfRead)->Name("rtf_read/10MB")->Unit(benchmark::kMillisecond);
BENCHMARK(RtfWrite)->Name("rtf_write/10MB")->Unit(benchmark::kMillisecond);

} // namespace qb::bench
