#pragma once

#include "platform/system/Hook.h"

#include <QObject>
#include <QTimer>

namespace qb {

/// Tells a single click on a button from a double click, once no second can come any more.
class ClickCounter : public QObject {
    Q_OBJECT

public:
    ClickCounter();

    /// The button was clicked.
    void Click();
    /// Something is under way that nothing must come between: the clicks wait.
    Hook<bool()> IsBusy;

Q_SIGNALS:
    void Clicked(int clicks);

private:
    void tmrStartTimer_Timer();

    QTimer tmrStartTimer;
    int m_clicks = 0;
};

} // namespace qb
