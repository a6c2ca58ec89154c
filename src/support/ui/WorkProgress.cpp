#include "support/ui/WorkProgress.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QLabel>
#include <limits>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
constexpr int Steps = 1000;
constexpr int Width = 420;
} // namespace

WorkProgress::WorkProgress(QWidget* parent, const QString& title) : m_dialog(parent)
{
    m_dialog.setObjectName(u"WorkProgress"_s);
    m_dialog.setWindowTitle(title);
    m_dialog.setWindowModality(Qt::ApplicationModal);
    m_dialog.setMinimumDuration(std::numeric_limits<int>::max()); // it is shown by Advance()
    m_dialog.setRange(0, Steps);
    m_dialog.setAutoClose(false);
    m_dialog.setAutoReset(false);
    m_dialog.setFixedWidth(Width);
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText); // it names files
    m_dialog.setLabel(label);
    m_lasted.start();
}

WorkProgress::~WorkProgress() = default;

void WorkProgress::SetCaption(const QString& text)
{
    constexpr int Margins = 60;
    m_dialog.setLabelText(m_dialog.fontMetrics().elidedText(text.trimmed(), Qt::ElideMiddle, Width - Margins));
}

void WorkProgress::Say(const QString& text, int)
{
    if (!text.isEmpty())
        SetCaption(text);
}

void WorkProgress::Advance(qint64 done, qint64 total)
{
    if (m_lasted.elapsed() < Delay.count())
        return;
    m_dialog.show();
    m_dialog.setValue(total > 0 ? int(qMin(done, total) * (Steps - 1) / total) : 0);
    QCoreApplication::processEvents(); // what the user does reaches this dialog only
}

void WorkProgress::Pulse()
{
    if (m_lasted.elapsed() < Delay.count())
        return;
    m_dialog.show();
    QCoreApplication::processEvents();
}

bool WorkProgress::IsCancelled()
{
    return m_dialog.wasCanceled();
}

WatchedRun WatchedIn(QWidget& window)
{
    return [&window](const QString& title, const std::function<void(Work&)>& body) {
        WorkProgress progress(&window, title);
        body(progress);
    };
}

} // namespace qb
