#include "BenchLibrary.h"

#include "platform/system/Clock.h"
#include "printing/PrintOrder.h"
#include "printing/PrintRequest.h"
#include "printing/ui/PdfFile.h"
#include "printing/ui/PrintPreview.h"
#include "printing/ui/frmPrint.h"
#include "store/CCodeItem.h"
#include "store/Library.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int Items = 1000;

qint64 LongestItem(Library& library)
{
    return library.QueryValue(u"SELECT ID FROM Items ORDER BY length(Code) DESC LIMIT 1"_s).ToLong();
}

/// All items of a library to a PDF, in this process.
void PdfOfCodedItems(benchmark::State& state)
{
    const auto library = Library::Open(BenchLibrary(Items), DBEngine::Access::ReadOnly);
    const QString file = DataFolder(u"print"_s) + u"/all.pdf"_s;
    int pages = 0;
    for (auto unused : state) {
        (void)unused;
        LibraryPrintSource source(*library, PrintOrder(*library, 0), AllPrintParts);
        PagedPrint print(source, PrintSetup(), {.Title = u"all"_s, .Library = u"lib"_s, .Printed = Clock::Now()});
        pages = WritePdf(print, file, library->Name());
    }
    state.counters["pages"] = pages;
}
BENCHMARK(PdfOfCodedItems)->Unit(benchmark::kMillisecond)->Name("print_pdf_1000_items")->Iterations(1);

/// The same as the command line does it.
void PdfByCommand(benchmark::State& state)
{
    const QString file = DataFolder(u"print"_s) + u"/cli.pdf"_s;
    for (auto unused : state) {
        (void)unused;
        if (QProcess::execute(QStringLiteral(QUILLBASE_CLI_PROGRAM), {u"export"_s, BenchLibrary(Items), u"0"_s, file})
            != 0)
            state.SkipWithError("no PDF");
    }
}
BENCHMARK(PdfByCommand)->Unit(benchmark::kMillisecond)->Name("print_export_pdf_1000_items")->Iterations(1);

/// From the command to the first page on the screen, of the longest item that there is.
void Preview(benchmark::State& state)
{
    const auto library = Library::Open(BenchLibrary(Items), DBEngine::Access::ReadOnly);
    CCodeItem item;
    item.Initialise(*library, QString::number(LongestItem(*library)));
    for (auto unused : state) {
        (void)unused;
        frmPrint window(nullptr);
        const PrintRequest request{
            .Database = *library, .Item = item, .PagePath = {}, .LibraryName = u"lib"_s, .Typed = {}};
        window.Initialize(request);
        window.show();
        QCoreApplication::processEvents();
        benchmark::DoNotOptimize(window.Preview()->viewport()->grab());
    }
}
BENCHMARK(Preview)->Unit(benchmark::kMillisecond)->Name("print_preview_item");

} // namespace

} // namespace qb::bench
