#include "platform/system/Work.h"

namespace qb {

void Work::Say(const QString&, int) {}

void Work::Advance(qint64, qint64) {}

void Work::Pulse() {}

bool Work::IsCancelled()
{
    return false;
}

Work& NoWork()
{
    static Work none;
    return none;
}

void RunUnwatched(const QString&, const std::function<void(Work&)>& body)
{
    body(NoWork());
}

} // namespace qb
