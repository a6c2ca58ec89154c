// Replication of a large library.

#include "BenchLibrary.h"

#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryRestore.h"
#include "replication/ChangeFile.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaOpening.h"
#include "replication/Synchronization.h"
#include "store/CFileObject.h"
#include "store/ItemBranch.h"
#include "store/Library.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int Items = 100000;

QString Folder()
{
    return DataFolder(u"replicas"_s);
}

/// A library of its own, which becomes a mother.
QString Mother()
{
    const QString path = Folder() + u"/mother.qbd"_s;
    if (!QFileInfo::exists(path))
        QFile::copy(BenchLibrary(Items), path);
    return path;
}

QString Transfer()
{
    const QString path = Folder() + u"/child.qbr"_s;
    if (!QFileInfo::exists(path))
        GiveOutChild(Mother(), path);
    return path;
}

bool Anyway(const QString&)
{
    return true;
}

QString Child()
{
    QDir().mkpath(Folder() + u"/away"_s);
    return OpenReplica(Transfer(), Folder() + u"/away/child.qbd"_s, RestoreOver::Replace, {}, Anyway).Library;
}

void BackUpOfIt(benchmark::State& state)
{
    const QString mother = Mother();
    for (auto _ : state)
        BackUpLibrary(mother, Folder() + u"/mother.qbb"_s, {});
}

void Create(benchmark::State& state)
{
    const QString mother = Mother();
    for (auto _ : state)
        GiveOutChild(mother, Folder() + u"/another.qbr"_s);
}

void RestoreOfIt(benchmark::State& state)
{
    const QString backup = Folder() + u"/mother.qbb"_s;
    BackUpLibrary(Mother(), backup, {});
    QDir().mkpath(Folder() + u"/restored"_s);
    for (auto _ : state)
        RestoreLibrary(backup, Folder() + u"/restored/mother.qbd"_s, RestoreOver::Replace);
}

void Open(benchmark::State& state)
{
    Transfer();
    for (auto _ : state)
        Child();
}

/// So many changed items, with a tenth as many new files of 10 kB.
void Export(benchmark::State& state)
{
    const auto child = Library::Open(Child());
    const int changed = int(state.range(0));
    {
        Transaction transaction(*child);
        child->Execute(u"UPDATE Items SET LastChanged = ? WHERE ID <= ?"_s, {child->NextStamp(), changed});
        transaction.Commit();
    }
    const QString source = Folder() + u"/source.bin"_s;
    QFile file(source);
    if (!file.open(QIODevice::WriteOnly) || file.write(CppSource(10000).toLatin1()) < 0)
        return state.SkipWithError("can't be written");
    file.close();
    for (int i = 0; i < changed / 10; ++i) {
        CFileObject row;
        row.Initialise(*child, {});
        row.SetCodeID(QString::number(i + 1));
        row.SetStoredFile(source);
        row.Commit();
    }
    for (auto _ : state) {
        const auto changes = WriteChanges(*child, Folder() + u"/changes.qbs"_s, ExportAgain::Yes);
        if (!changes || changes->Counts.Items != changed)
            state.SkipWithError("not all was exported");
    }
}

/// Changes on both sides of so many items, with a tenth as many new ones and a fiftieth as many deleted.
void ChangeItems(Library& library, qint64 first, int changed)
{
    const Date stamp = library.NextStamp();
    Transaction transaction(library);
    library.Execute(u"UPDATE Items SET Title = Title || ' changed', LastChanged = ? WHERE ID >= ? AND ID < ?"_s,
                    {stamp, first, first + changed});
    library.Execute(
        u"INSERT INTO Items (Title, Code, ParentID, Created, LastChanged) SELECT 'new', Code, 0, ?1, ?1 FROM "
        "Items WHERE ID >= ?2 AND ID < ?3"_s,
        {stamp, first, first + changed / 10});
    transaction.Commit();
    for (qint64 i = 0; i < changed / 50; ++i)
        DeleteItem(library, first + changed + i);
}

/// A page for each of so many items.
void WritePages(Library& library, qint64 first, int count)
{
    QDir().mkpath(library.HTMLFolder());
    const QByteArray text = CppSource(10000).toLatin1();
    for (qint64 item = first; item < first + count; ++item) {
        QFile page(library.HTMLFolder() + QString::number(item) + u".htm"_s);
        if (page.open(QIODevice::WriteOnly))
            page.write("<p><a href=\"local://Item" + QByteArray::number(item + 1) + "\">next</a>" + text);
    }
    library.Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = ?1, LastChanged = ?1 WHERE ID >= ?2 AND ID < "
                    "?3"_s,
                    {library.NextStamp(), first, first + count});
}

enum class Step { Mother, Child };

/// A round of a library of so many items; only the one step is timed.
void Merge(benchmark::State& state, Step step, bool withPages)
{
    const int items = int(state.range(0)), changed = int(state.range(1));
    const QString folder = DataFolder(u"merge-%1"_s.arg(items));
    QDir(folder).removeRecursively();
    QDir().mkpath(folder + u"/away"_s);
    const QString mother = folder + u"/mother.qbd"_s, transfer = folder + u"/child.qbr"_s,
                  file = folder + u"/changes.qbs"_s;
    QFile::copy(BenchLibrary(items), mother);
    GiveOutChild(mother, transfer);
    const QString child =
        OpenReplica(transfer, folder + u"/away/child.qbd"_s, RestoreOver::Replace, {}, Anyway).Library;
    for (auto _ : state) {
        const auto ofMother = Library::Open(mother), ofChild = Library::Open(child);
        ChangeItems(*ofMother, 1, changed);
        ChangeItems(*ofChild, items / 2, changed);
        if (withPages) {
            WritePages(*ofMother, 1, changed);
            WritePages(*ofChild, items / 2, changed);
        }
        if (!WriteChanges(*ofChild, file, ExportAgain::No))
            return state.SkipWithError("nothing was exported");
        for (const Step one : {Step::Mother, Step::Child}) {
            QElapsedTimer timer;
            timer.start();
            const SyncResult result = Synchronize(one == Step::Mother ? *ofMother : *ofChild, file);
            if (!result.Done)
                return state.SkipWithError("nothing was merged");
            if (one == step)
                state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        }
    }
}

} // namespace

BENCHMARK(BackUpOfIt)->Name("replica_backup_of_it")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(Create)->Name("replica_create")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(RestoreOfIt)->Name("replica_restore_of_it")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(Open)->Name("replica_open")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(Export)
    ->Name("replica_export")
    ->Arg(0)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);
BENCHMARK_CAPTURE(Merge, mother, Step::Mother, false)
    ->Name("replica_merge_mother")
    ->Args({10000, 1000})
    ->Args({100000, 1000})
    ->Args({100000, 10000})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(Merge, child, Step::Child, false)
    ->Name("replica_merge_child")
    ->Args({10000, 1000})
    ->Args({100000, 1000})
    ->Args({100000, 10000})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(Merge, mother_pages, Step::Mother, true)
    ->Name("replica_merge_mother_pages")
    ->Args({10000, 1000})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(Merge, child_pages, Step::Child, true)
    ->Name("replica_merge_child_pages")
    ->Args({10000, 1000})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);

} // namespace qb::bench
