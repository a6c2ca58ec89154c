#include "text/ui/ColorizeProgress.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

ColorizeProgress::ColorizeProgress(QWidget& panel)
    : QFrame(&panel), m_panel(panel), lblColorize(new QLabel(u"Colorizing"_s)), prbColorize(new QProgressBar)
{
    setObjectName(u"picColorize"_s);
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    lblColorize->setObjectName(u"lblColorize"_s);
    prbColorize->setObjectName(u"prbColorize"_s);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(lblColorize);
    layout->addWidget(prbColorize, 1);
    hide();
}

void ColorizeProgress::SetStage(const QString& stage)
{
    lblColorize->setText(stage);
}

void ColorizeProgress::SetPercent(int percent)
{
    constexpr int Done = 100;
    constexpr int NarrowestWithBar = 1000 / 15; // pixels; a bar in less would tell nothing
    if (percent >= Done)
        return hide();
    prbColorize->setValue(percent);
    if (percent > 0 || m_panel.width() < NarrowestWithBar)
        return;
    show();
    raise();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ColorizeProgress::Place()
{
    constexpr int Widest = 420;
    const int width = std::min(Widest, m_panel.width());
    const int height = sizeHint().height();
    setGeometry((m_panel.width() - width) / 2, (m_panel.height() - height) / 3, width, height);
}

} // namespace qb
