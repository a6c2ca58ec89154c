#pragma once

#include <QFrame>

class QLabel;
class QProgressBar;

namespace qb {

/// The bar that stands over the panel while a long text is coloured.
class ColorizeProgress : public QFrame {
public:
    /// @p panel is what it stands over.
    explicit ColorizeProgress(QWidget& panel);

    /// The words beside the bar, which tell what is being done. Does not show it.
    void SetStage(const QString& stage);
    /// 0 shows it, where the panel is wide enough to tell something, 100 hides it.
    void SetPercent(int percent);
    /// The panel has another size.
    void Place();

private:
    QWidget& m_panel;
    QLabel* lblColorize;
    QProgressBar* prbColorize;
};

} // namespace qb
