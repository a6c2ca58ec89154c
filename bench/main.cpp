#include "support/ui/Icons.h"

#include <QApplication>
#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    qb::InitialiseIcons();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
