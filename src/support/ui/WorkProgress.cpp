#include "support/ui/WorkProgress.h"

#include <QFontMetrics>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
constexpr int Steps = 1000;
constexpr int Width = 420;
} // namespace

WorkProgress::WorkProgress(QWidget* parent, const QString& title) : m_dialog(parent)
{
    constexpr int Delay = 500; // milliseconds
    m_dialog.setObjectName(u"WorkProgress"_s);
    m_dialog.setWindowTitle(title);
    m_dialog.setWindowModality(Qt::ApplicationModal);
    m_dialog.setMinimumDuration(Delay);
    m_dialog.setRange(0, Steps);
    m_dialog.setAutoClose(false);
    m_dialog.setAutoReset(false);
    m_dialog.setFixedWidth(Width);
    m_dialog.setValue(0);
}

WorkProgress::~WorkProgress() = default;

void WorkProgress::SetCaption(const QString& text)
{
    constexpr int Margins = 60;
    m_dialog.setLabelText(m_dialog.fontMetrics().elidedText(text.trimmed(), Qt::ElideMiddle, Width - Margins));
}

bool WorkProgress::Advance(qint64 done, qint64 total)
{
    // The value itself is what makes the dialog appear and handle its events.
    m_dialog.setValue(total > 0 ? int(qMin(done, total) * (Steps - 1) / total) : 0);
    return !m_dialog.wasCanceled();
}

} // namespace qb
