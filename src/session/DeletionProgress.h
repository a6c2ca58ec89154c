#pragma once

#include "platform/system/Work.h"
#include "session/ShellView.h"

#include <QElapsedTimer>
#include <algorithm>

namespace qb {

/// Tells the bar how far a deletion is, and lets the window paint, some twenty times a second.
class DeletionProgress : public Work {
public:
    DeletionProgress(ShellView& shell, size_t items)
        : m_shell(shell), m_maximum(int(std::max<size_t>(2, items))) // the bar's ends must differ
    {
        m_shell.SetStatusText(QStringLiteral("Deleting Items...."));
        m_shell.ShowProgressStatusBar(1, m_maximum);
    }
    ~DeletionProgress() override
    {
        m_shell.SetStatusText({});
        m_shell.ShowProgressStatusBar(0, 0);
    }

    void Advance(qint64 done, qint64) override
    {
        constexpr int Interval = 50; // milliseconds
        if (m_told.isValid() && m_told.elapsed() < Interval)
            return;
        m_told.start();
        m_shell.ShowProgressStatusBar(int(std::min<qint64>(done, m_maximum)), m_maximum);
    }

private:
    ShellView& m_shell;
    int m_maximum;
    QElapsedTimer m_told;
};

} // namespace qb
