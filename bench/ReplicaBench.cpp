// Replication of a large library.

#include "BenchLibrary.h"

#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryRestore.h"
#include "replication/ChangeFile.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaOpening.h"
#include "store/CFileObject.h"
#include "store/Library.h"

#include <QDir>
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

} // namespace qb::bench
