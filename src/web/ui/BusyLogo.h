#pragma once

#include <QTimer>
#include <QWidget>

namespace qb {

/// The program's mark, which turns while something is loading.
class BusyLogo : public QWidget {
    Q_OBJECT

public:
    explicit BusyLogo(QWidget* parent = nullptr);

    void SetBusy(bool busy);
    bool IsBusy() const { return m_timer.isActive(); }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer m_timer;
    int m_angle = 0; ///< in degrees
};

} // namespace qb
