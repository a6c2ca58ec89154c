#pragma once

#include <QSplitter>

class QAction;
class QToolBar;

namespace qb {

/// Adds a button under its key.
QAction* AddButton(QToolBar& bar, const QString& key);

/// The bar over the tree, of two bands: beside each other where both have the room, with a separator that the user
/// moves; otherwise the second one below the first.
class TreeBar : public QSplitter {
    Q_OBJECT

public:
    /// Takes the bands in.
    TreeBar(QWidget& first, QWidget& second);

    /// How wide the first band is where the second one stands beside it and leaves it so much, in pixels.
    int FirstBandWidth() const { return m_firstBandWidth; }
    void SetFirstBandWidth(int pixels);

    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void LayOut();

    int m_firstBandWidth = 0;
};

} // namespace qb
