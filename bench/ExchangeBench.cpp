// A large branch on its way: into an export, out of it, and to readers.

#include "BenchLibrary.h"

#include "exchange/BranchExport.h"
#include "exchange/BranchImport.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Paths.h"
#include "publishing/BranchPublisher.h"
#include "store/CCodeItem.h"
#include "store/CDBCreate.h"
#include "store/CFileObject.h"
#include "store/Library.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int Items = 10'000;
constexpr int FilesStored = 1'000;
constexpr int TextSize = 10'000; ///< of an item, as it is stored: 100 MB in all
constexpr int FileSize = 20'000;
constexpr int ItemsOfABranch = 20;

void FillBranch(Library& library, const QString& source)
{
    const QString text = CppSource(1 << 20);
    Transaction transaction(library);
    qint64 parent = 0;
    for (int index = 0; index < Items; ++index) {
        CCodeItem item;
        item.Initialise(library, {});
        item.SetTitle(u"Item %1"_s.arg(index));
        item.SetParentKey(QString::number(parent));
        item.SetCode(RtfFromPlainText(text.mid(index * 97 % (text.size() - TextSize), TextSize * 19 / 20), CodeFont));
        item.Commit();
        if (index % ItemsOfABranch == 0)
            parent = index == 0 || index % (ItemsOfABranch * ItemsOfABranch) != 0 ? item.Key().toLongLong() : 1;
    }
    transaction.Commit();
    for (int index = 0; index < FilesStored; ++index) {
        CFileObject row;
        row.Initialise(library, {});
        row.SetCodeID(QString::number(1 + index * (Items / FilesStored)));
        row.SetStoredFile(source);
        row.Commit();
    }
}

/// The library with that branch below its first item; made when it is not there yet.
QString LibraryWithBranch()
{
    const QString folder = DataFolder(u"exchange"_s);
    const QString path = folder + u"/Branch.qbd"_s;
    if (QFileInfo::exists(folder + u"/ready"_s))
        return path;
    QFile::remove(path);
    CDBCreate().CreateNewDB(path, LanguageType::Cpp, {});
    QFile source(folder + u"/source.bin"_s);
    if (!source.open(QIODevice::WriteOnly) || source.write(CppSource(FileSize).toLatin1()) < 0)
        return {};
    source.close();
    FillBranch(*Library::Open(path), source.fileName());
    QFile ready(folder + u"/ready"_s);
    return ready.open(QIODevice::WriteOnly) ? path : QString();
}

void Report(benchmark::State& state, const QString& made)
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_mb"] = double(usage.ru_maxrss) / 1024;
    if (!made.isEmpty())
        state.counters["size_mb"] = double(QFileInfo(made).size()) / (1 << 20);
}

void ExportBranch(benchmark::State& state)
{
    const auto library = Library::Open(LibraryWithBranch());
    const QString file = DataFolder(u"exchange"_s) + u"/branch.qbx"_s;
    for (auto _ : state)
        ExportItems(*library, 0, file);
    Report(state, file);
}

void ImportBranch(benchmark::State& state)
{
    const QString folder = DataFolder(u"exchange"_s);
    ExportItems(*Library::Open(LibraryWithBranch()), 0, folder + u"/branch.qbx"_s);
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(folder + u"/target.qbd"_s);
        DeleteFolder(folder + u"/target_Files"_s);
        DeleteFolder(folder + u"/target_HTML"_s);
        CDBCreate().CreateNewDB(folder + u"/target.qbd"_s, LanguageType::Cpp, {});
        const auto target = Library::Open(folder + u"/target.qbd"_s);
        state.ResumeTiming();
        ImportItems(*target, UnpackedBranch(folder + u"/branch.qbx"_s), {});
    }
    Report(state, {});
}

void PublishPage(benchmark::State& state)
{
    const auto library = Library::Open(LibraryWithBranch());
    const QString file = DataFolder(u"exchange"_s) + u"/branch.html"_s;
    for (auto _ : state)
        PublishBranch(*library, 0, ReaderForm::Html, file);
    Report(state, file);
}

void PublishFolder(benchmark::State& state, ReaderForm form)
{
    const auto library = Library::Open(LibraryWithBranch());
    const QString folder = DataFolder(u"exchange"_s) + u"/branch"_s;
    for (auto _ : state) {
        state.PauseTiming();
        DeleteFolder(folder);
        state.ResumeTiming();
        PublishBranch(*library, 0, form, folder);
    }
    Report(state, {});
}

BENCHMARK(PublishPage)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ExportBranch)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ImportBranch)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(PublishFolder, Markdown, ReaderForm::Markdown)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(PublishFolder, Files, ReaderForm::Files)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

} // namespace qb::bench
