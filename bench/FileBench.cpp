#include "BenchLibrary.h"

#include "panels/ui/ctlFileDetails.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "store/CFileObject.h"
#include "store/Library.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <benchmark/benchmark.h>
#include <random>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<Library> NewLibrary(const BenchHome& home)
{
    QFile::remove(home.Library());
    CDBCreate().CreateNewDB(home.Library(), LanguageType::Cpp, {});
    auto database = Library::Open(home.Library());
    database->Execute(u"INSERT INTO Items (ParentID, Title) VALUES (0, 'item')"_s);
    return database;
}

/// A file of that many mebibytes that can't be compressed; made when it is not there yet.
QString Noise(int mebibytes)
{
    const QString path = DataFolder(u"files"_s) + u"/noise-%1.bin"_s.arg(mebibytes);
    if (QFileInfo(path).size() == qint64(mebibytes) << 20)
        return path;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    std::mt19937_64 random;
    std::vector<quint64> block((1 << 20) / sizeof(quint64));
    for (int i = 0; i < mebibytes; ++i) {
        for (quint64& word : block)
            word = random();
        file.write(reinterpret_cast<const char*>(block.data()), 1 << 20);
    }
    return path;
}

/// A file is attached: copied, flushed, and its row committed.
void AttachFile(benchmark::State& state)
{
    const BenchHome home(u"attach"_s);
    const auto database = NewLibrary(home);
    const QString source = Noise(int(state.range(0)));
    for (auto _ : state) {
        CFileObject file;
        file.Initialise(*database, {});
        file.SetCodeID(u"1"_s);
        file.SetStoredFile(source);
        if (!file.Commit())
            state.SkipWithError("was not stored");
        state.PauseTiming();
        file.Delete();
        file.Commit();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}

/// What the system's own program takes for the same, with (1) and without (0) the flush.
void CopyWithCp(benchmark::State& state)
{
    const QString source = Noise(int(state.range(0)));
    const QString target = DataFolder(u"files"_s) + u"/copy.bin"_s;
    const QString flush = state.range(1) ? u" && sync '%1'"_s.arg(target) : QString();
    for (auto _ : state) {
        if (QProcess::execute(u"/bin/sh"_s, {u"-c"_s, u"cp '%1' '%2'"_s.arg(source, target) + flush}) != 0)
            state.SkipWithError("was not copied");
        state.PauseTiming();
        QFile::remove(target);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}

/// Real source files into one archive.
void PackSources(benchmark::State& state)
{
    const QStringList files = SourceFiles(int(state.range(0)));
    const QString target = DataFolder(u"files"_s) + u"/own.zip"_s;
    qint64 bytes = 0;
    for (const QString& file : files)
        bytes += QFileInfo(file).size();
    for (auto _ : state) {
        BrindletonZip zip;
        zip.SetZipFileName(target);
        zip.SetBaseDirectory(u"/"_s);
        for (const QString& file : files)
            zip.AddFile(file);
        zip.Zip();
    }
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["size"] = double(QFileInfo(target).size());
}

/// The same files by `zip -6`.
void PackWithZip(benchmark::State& state)
{
    const QString names = DataFolder(u"files"_s) + u"/names.txt"_s;
    const QString target = DataFolder(u"files"_s) + u"/other.zip"_s;
    const QStringList files = SourceFiles(int(state.range(0)));
    QFile list(names);
    if (list.open(QIODevice::WriteOnly))
        list.write(files.join(u'\n').toUtf8());
    list.close();
    for (auto _ : state) {
        QFile::remove(target);
        if (QProcess::execute(u"/bin/sh"_s, {u"-c"_s, u"zip -6 -q '%1' -@ <'%2' && sync '%1'"_s.arg(target, names)})
            != 0)
            state.SkipWithError("zip is not there");
    }
    state.counters["size"] = double(QFileInfo(target).size());
}

/// An item's files until the list is painted.
void ListFiles(benchmark::State& state)
{
    const BenchHome home(u"list-files"_s);
    const auto database = NewLibrary(home);
    static const char* const endings[] = {"cpp", "h", "txt", "png", "zip", "pdf", "py", "md"};
    {
        Transaction whole(*database);
        for (int i = 0; i < state.range(0); ++i)
            database->Execute(
                u"INSERT INTO Files (CodeID, Title, OrigDateTime, DateAdded, FileSize) VALUES (1, ?, 3989000000, "
                "3989000000, ?)"_s,
                {u"file %1.%2"_s.arg((i * 7919) % 10007).arg(QString::fromLatin1(endings[i % 8])), i * 13});
        whole.Commit();
    }
    ctlFileDetails panel;
    panel.resize(900, 700);
    panel.show();
    QCoreApplication::processEvents();
    for (auto _ : state) {
        panel.Initialise(*database, u"1"_s);
        QCoreApplication::processEvents();
        panel.repaint();
    }
}

} // namespace

BENCHMARK(AttachFile)->Name("attach")->Arg(1024)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(CopyWithCp)
    ->Name("cp")
    ->Args({1024, 0})
    ->Args({1024, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
BENCHMARK(PackSources)->Name("pack_sources")->Arg(5000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(PackWithZip)->Name("zip_6")->Arg(5000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(ListFiles)->Name("list_files")->Arg(10'000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace qb::bench
