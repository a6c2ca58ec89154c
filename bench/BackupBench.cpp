// Backup and restore of a large library, beside what the system's own programs take for the same bytes.

#include "BenchLibrary.h"

#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryRestore.h"
#include "platform/dao/DBEngine.h"
#include "store/CFileObject.h"
#include "store/Library.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <benchmark/benchmark.h>
#include <random>
#include <sys/resource.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int Items = 100000;
constexpr int Piece = 4; // mebibytes of a stored file

/// Every second one is source text, the others can't be compressed.
QByteArray Contents(int index)
{
    static const QByteArray source = CppSource(1 << 20).toLatin1();
    QByteArray bytes;
    if (index % 2 == 0) {
        while (bytes.size() < Piece << 20)
            bytes += source;
        return bytes.left(Piece << 20);
    }
    std::mt19937_64 random{quint64(index)};
    bytes.resize(Piece << 20);
    for (qsizetype at = 0; at < bytes.size(); at += 8) {
        const quint64 word = random();
        memcpy(bytes.data() + at, &word, 8);
    }
    return bytes;
}

/// A library with that many mebibytes of stored files; made when it is not there yet.
QString LibraryWithFiles(int mebibytes)
{
    const QString folder = DataFolder(u"backup-%1"_s.arg(mebibytes));
    const QString path = folder + u"/Books.qbd"_s;
    if (QFileInfo::exists(folder + u"/ready"_s))
        return path;
    QFile::remove(path);
    QFile::copy(BenchLibrary(Items), path);
    const auto library = Library::Open(path);
    const QString source = folder + u"/source.bin"_s;
    for (int i = 0; i < mebibytes / Piece; ++i) {
        QFile file(source);
        if (!file.open(QIODevice::WriteOnly) || file.write(Contents(i)) < 0)
            return {};
        file.close();
        CFileObject row;
        row.Initialise(*library, {});
        row.SetCodeID(QString::number(i + 1));
        row.SetStoredFile(source);
        row.Commit();
    }
    QFile ready(folder + u"/ready"_s);
    return ready.open(QIODevice::WriteOnly) ? path : QString();
}

/// How long nobody was told anything, at most.
class Watch : public Work {
public:
    Watch() { m_timer.start(); }
    void Say(const QString&, int) override { Told(); }
    void Advance(qint64 done, qint64) override
    {
        m_done = done;
        Told();
    }
    void Pulse() override { Told(); }
    bool IsCancelled() override
    {
        m_longestUnasked = qMax(m_longestUnasked, m_asked.isValid() ? m_asked.elapsed() : 0);
        m_asked.start();
        return false;
    }
    void Report(benchmark::State& state) const
    {
        state.counters["longest_silence_ms"] = double(m_longest);
        state.counters["silent_until"] = double(m_silentUntil); // parts of a thousand
        state.counters["longest_without_cancel_ms"] = double(m_longestUnasked);
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        state.counters["peak_mb"] = double(usage.ru_maxrss) / 1024;
    }

private:
    void Told()
    {
        if (m_timer.elapsed() > m_longest)
            m_silentUntil = m_done;
        m_longest = qMax(m_longest, m_timer.elapsed());
        m_timer.restart();
    }
    QElapsedTimer m_timer, m_asked;
    qint64 m_done = 0, m_silentUntil = 0, m_longest = 0, m_longestUnasked = 0;
};

void BackUp(benchmark::State& state)
{
    const QString library = LibraryWithFiles(int(state.range(0)));
    const QString backup = QFileInfo(library).path() + u"/own.qbb"_s;
    Watch watch;
    for (auto _ : state)
        BackUpLibrary(library, backup, {}, watch);
    watch.Report(state);
    state.counters["size_mb"] = double(QFileInfo(backup).size()) / (1 << 20);
}

bool Shell(const QString& folder, const QString& command)
{
    return QProcess::execute(u"/bin/sh"_s, {u"-c"_s, u"cd '%1' && %2"_s.arg(folder, command)}) == 0;
}

/// `VACUUM INTO` and `zip -6` of the same, flushed.
void VacuumAndZip(benchmark::State& state)
{
    const QString library = LibraryWithFiles(int(state.range(0)));
    const QString folder = QFileInfo(library).path();
    for (auto _ : state) {
        Shell(folder, u"rm -f other.zip copy.qbd"_s);
        DBEngine::OpenDatabase(library)->Execute(u"VACUUM INTO ?"_s, {folder + u"/copy.qbd"_s});
        if (!Shell(folder, u"zip -6 -q -r other.zip copy.qbd Books_Files Books_HTML && sync other.zip"_s))
            state.SkipWithError("zip is not there");
    }
    state.counters["size_mb"] = double(QFileInfo(folder + u"/other.zip"_s).size()) / (1 << 20);
}

void Restore(benchmark::State& state)
{
    const QString folder = QFileInfo(LibraryWithFiles(int(state.range(0)))).path();
    QDir(folder).mkpath(u"restored"_s);
    Watch watch;
    for (auto _ : state)
        RestoreLibrary(folder + u"/own.qbb"_s, folder + u"/restored/Books.qbd"_s, RestoreOver::Replace, watch);
    watch.Report(state);
}

void UnzipAndCopy(benchmark::State& state)
{
    const QString folder = QFileInfo(LibraryWithFiles(int(state.range(0)))).path();
    for (auto _ : state) {
        if (!Shell(folder, u"rm -rf unzipped copied && mkdir unzipped && cd unzipped && unzip -q ../other.zip && cd .. "
                           "&& cp -r unzipped copied && sync"_s))
            state.SkipWithError("unzip is not there");
    }
}

} // namespace

#define QB_LARGE(function, name)                                                                                       \
    BENCHMARK(function)->Name(name)->Arg(64)->Arg(1024)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)
QB_LARGE(BackUp, "backup");
QB_LARGE(VacuumAndZip, "vacuum_and_zip_6");
QB_LARGE(Restore, "restore");
QB_LARGE(UnzipAndCopy, "unzip_and_copy");

} // namespace qb::bench
