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

    void SetCursor(int pointer)
    {
        Restore();
        QApplication::setOverrideCursor(pointer == Hourglass ? Qt::WaitCursor : Qt::ArrowCursor);
        m_set = true;
    }
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
