#include "BenchLibrary.h"

#include "maintenance/FolderImport.h"
#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "store/Library.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

/// A folder with @p count copies of real source files, 100 a sub-folder.
QString SourceTree(int count)
{
    const QString folder = DataFolder(u"sources-%1"_s.arg(count));
    const QString complete = folder + u".complete"_s;
    if (QFileInfo::exists(complete))
        return folder;
    const QStringList files = SourceFiles(count);
    for (int i = 0; i < count; ++i) {
        const QString sub = folder + u"/%1"_s.arg(i / 100);
        QDir().mkpath(sub);
        const QString& source = files[i % files.size()];
        QFile::copy(source, sub + u"/%1-%2"_s.arg(i).arg(QFileInfo(source).fileName()));
    }
    QFile(complete).open(QIODevice::WriteOnly);
    return folder;
}

void ImportFolderBench(benchmark::State& state)
{
    const int files = int(state.range(0));
    const QString folder = SourceTree(files);
    const QString path = DataFolder(u"import"_s) + u"/import.qbd"_s;
    int imported = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(path);
        CDBCreate().CreateNewDB(path, LanguageType::Cpp, {});
        state.ResumeTiming();
        const auto database = Library::Open(path);
        imported = ImportFolder(*database, folder, {}).Files;
    }
    state.counters["files"] = imported;
    state.counters["files_per_second"] = benchmark::Counter(double(imported),
                                                            benchmark::Counter::kIsIterationInvariantRate);
    QFile::remove(path);
}

} // namespace

BENCHMARK(ImportFolderBench)->Name("import_folder")->Arg(20000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace qb::bench
