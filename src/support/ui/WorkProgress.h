#pragma once

#include "platform/system/Work.h"

#include <QElapsedTimer>
#include <QProgressDialog>
#include <QString>
#include <chrono>

namespace qb {

/// A dialog over a work that takes its time: what is being done, how far it is, and a button to cancel
/// it. It appears once the work has lasted for a delay, and never by itself: a question that the work
/// asks must not find it in its way.
class WorkProgress : public Work {
public:
    /// Shows nothing yet. @p title is the dialog's; once shown, it keeps all other windows from the user.
    WorkProgress(QWidget* parent, const QString& title);
    ~WorkProgress() override;

    /// How long a work lasts before it is shown.
    static inline std::chrono::milliseconds Delay{500};

    /// What is being done, such as a file's name; cut in the middle where it is too long.
    void SetCaption(const QString& text);

    // Work
    /// An empty text leaves the caption.
    void Say(const QString& text, int percent) override;
    /// Lets the window paint itself.
    void Advance(qint64 done, qint64 total) override;
    void Pulse() override;
    bool IsCancelled() override;

private:
    QProgressDialog m_dialog;
    QElapsedTimer m_lasted;
};

/// Runs works with such a dialog over @p window, which lives as long.
WatchedRun WatchedIn(QWidget& window);

} // namespace qb
