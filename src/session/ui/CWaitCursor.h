#pragma once

#include <QApplication>

namespace qb {

/// Shows the hourglass from SetCursor on until the object goes.
class CWaitCursor {
public:
    static constexpr int Hourglass = 11;

    CWaitCursor() = default;
    ~CWaitCursor() { Restore(); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;

    /// Any pointer but Hourglass is the arrow. What was set before by this object is taken back first.
    void SetCursor(int pointer)
    {
        Restore();
        QApplication::setOverrideCursor(pointer == Hourglass ? Qt::WaitCursor : Qt::ArrowCursor);
        m_set = true;
    }
    /// The pointer is what it was before SetCursor; nothing happens without that.
    void Restore()
    {
        if (m_set)
            QApplication::restoreOverrideCursor();
        m_set = false;
    }

private:
    bool m_set = false;
};

} // namespace qb
