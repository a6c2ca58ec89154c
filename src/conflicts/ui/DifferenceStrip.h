#pragma once

#include "conflicts/LineComparison.h"

#include <QWidget>

namespace qb {

/// A narrow strip beside two texts that shows over their whole length where they differ. A click goes there.
class DifferenceStrip : public QWidget {
    Q_OBJECT

public:
    explicit DifferenceStrip(QWidget* parent = nullptr);

    void SetComparison(const LineComparison& comparison);
    void Clear();
    QSize sizeHint() const override;

Q_SIGNALS:
    void LineChosen(int line);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    struct Block {
        int Begin;
        int End;
        LineOwner Owner;
        bool IsClash;
    };
    std::vector<Block> m_blocks;
    int m_lines = 0;
};

} // namespace qb
