#include "session/ui/ClickCounter.h"

#include <QApplication>
#include <utility>

namespace qb {

ClickCounter::ClickCounter()
{
    tmrStartTimer.setSingleShot(true);
    connect(&tmrStartTimer, &QTimer::timeout, this, &ClickCounter::tmrStartTimer_Timer);
}

void ClickCounter::Click()
{
    ++m_clicks;
    tmrStartTimer.start(QApplication::doubleClickInterval());
}

void ClickCounter::tmrStartTimer_Timer()
{
    if (IsBusy())
        return tmrStartTimer.start();
    Q_EMIT Clicked(std::exchange(m_clicks, 0));
}

} // namespace qb
