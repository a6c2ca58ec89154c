#include "platform/system/Trace.h"

#include <QFile>

#include <ctime>
#include <unistd.h>

namespace qb {

namespace {

/// Milliseconds from boot to the start of this process, by the kernel's own record; the
/// fields are counted behind the process name, which may hold blanks and parentheses.
double ProcessStart()
{
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray stat = file.readAll();
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    constexpr qsizetype StartTimeField = 19; // field 22 of proc(5), of which three stand before
    if (fields.size() <= StartTimeField)
        return 0;
    return fields[StartTimeField].toDouble() * 1000.0 / double(sysconf(_SC_CLK_TCK));
}

double SinceBoot()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return double(now.tv_sec) * 1000.0 + double(now.tv_nsec) / 1e6;
}

} // namespace

void Trace(const char* stage)
{
    const QString name = qEnvironmentVariable("QUILLBASE_TRACE");
    if (name.isEmpty())
        return;
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    file.write(QByteArray(stage) + ' ' + QByteArray::number(SinceBoot() - ProcessStart(), 'f', 1) + '\n');
}

} // namespace qb
