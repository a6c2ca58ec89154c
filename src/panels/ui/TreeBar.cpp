#include "panels/ui/TreeBar.h"

#include <QAction>
#include <QStyle>
#include <QToolBar>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

int LeastWidth(const QWidget& band)
{
    return band.isHidden() ? 0 : band.sizeHint().width();
}

} // namespace

QAction* AddButton(QToolBar& bar, const QString& key)
{
    QAction* action = bar.addAction(key);
    action->setObjectName(key);
    action->setProperty("key", key);
    return action;
}

TreeBar::TreeBar(QWidget& first, QWidget& second)
{
    setObjectName(u"tlbTree"_s);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setChildrenCollapsible(false);
    addWidget(&first);
    addWidget(&second);
    connect(this, &QSplitter::splitterMoved, this, &TreeBar::SetFirstBandWidth);
}

void TreeBar::SetFirstBandWidth(int pixels)
{
    m_firstBandWidth = pixels;
    LayOut();
}

/// That of the bands one below the other, so that the panel can be made narrower than they are beside each other.
QSize TreeBar::minimumSizeHint() const
{
    return {std::max(LeastWidth(*widget(0)), LeastWidth(*widget(1))), QSplitter::minimumSizeHint().height()};
}

void TreeBar::resizeEvent(QResizeEvent* event)
{
    LayOut();
    QSplitter::resizeEvent(event);
}

void TreeBar::LayOut()
{
    const int separator = style()->pixelMetric(QStyle::PM_SplitterWidth, nullptr, this);
    const int least = LeastWidth(*widget(0));
    const int most = width() - separator - LeastWidth(*widget(1));
    const bool isOneRow = least <= most;
    setOrientation(isOneRow ? Qt::Horizontal : Qt::Vertical);
    setHandleWidth(isOneRow ? separator : 0);
    handle(1)->setEnabled(isOneRow);
    if (!isOneRow)
        return;
    const int first = std::clamp(m_firstBandWidth, least, most);
    setSizes({first, width() - separator - first});
}

} // namespace qb
