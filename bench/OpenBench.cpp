#include "BenchLibrary.h"

#include <QFile>
#include <QFileInfo>
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

struct Finished {
    double Seconds;
    double PeakMegabytes;
    bool Succeeded;
};

/// Runs a program to its end with its output thrown away.
Finished Run(const std::vector<QByteArray>& command)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        std::vector<char*> arguments;
        for (const QByteArray& word : command)
            arguments.push_back(const_cast<char*>(word.constData()));
        arguments.push_back(nullptr);
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    return {seconds.count(), double(usage.ru_maxrss) / 1024, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

/// Milliseconds from the start of the process to a stage, as the program has written it.
double StageOf(const QString& traceFile, const QByteArray& stage)
{
    QFile trace(traceFile);
    if (trace.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : trace.readAll().split('\n')) {
            if (line.startsWith(stage + ' '))
                return line.mid(stage.size() + 1).toDouble();
        }
    }
    return 0;
}

/// From the start of the process until the tree is drawn.
void OpenFillTree(benchmark::State& state)
{
    const int items = int(state.range(0));
    const QString library = items > 100'000 ? FolderLibrary(items) : BenchLibrary(items);
    const QString folder = DataFolder(u"open-%1"_s.arg(items)); // with its own list of libraries
    const QString trace = folder + u"/trace"_s;
    qputenv("QUILLBASE_DATA_HOME", QFile::encodeName(QFileInfo(library).absolutePath()));
    qputenv("QUILLBASE_CONFIG_HOME", QFile::encodeName(folder + u"/config"_s));
    qputenv("QUILLBASE_TRACE", QFile::encodeName(trace));
    qputenv("QUILLBASE_PICTURE", QFile::encodeName(folder + u"/picture.png"_s)); // ends the program
    double peak = 0;
    Run({QUILLBASE_PROGRAM}); // warms the disk cache
    for (auto _ : state) {
        QFile::remove(trace);
        const Finished finished = Run({QUILLBASE_PROGRAM});
        const double painted = StageOf(trace, "tree_painted");
        if (!finished.Succeeded || painted <= 0)
            return state.SkipWithError("the program did not show the library");
        state.SetIterationTime(painted / 1000);
        peak = finished.PeakMegabytes;
    }
    state.counters["peak_resident_MB"] = peak;
    for (const char* variable :
         {"QUILLBASE_DATA_HOME", "QUILLBASE_CONFIG_HOME", "QUILLBASE_TRACE", "QUILLBASE_PICTURE"})
        qunsetenv(variable);
}

void TreeCli(benchmark::State& state)
{
    const QString library = BenchLibrary(int(state.range(0)));
    Run({QUILLBASE_CLI_PROGRAM, "tree", QFile::encodeName(library)});
    for (auto _ : state) {
        const Finished finished = Run({QUILLBASE_CLI_PROGRAM, "tree", QFile::encodeName(library)});
        if (!finished.Succeeded)
            return state.SkipWithError("the tree was not printed");
        state.SetIterationTime(finished.Seconds);
    }
}

} // namespace

BENCHMARK(OpenFillTree)
    ->Name("open_fill_tree")
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5);
BENCHMARK(TreeCli)->Name("tree_cli")->Arg(100000)->Unit(benchmark::kMillisecond)->UseManualTime();

} // namespace qb::bench
