#pragma once

#include "text/ui/UserTextBox.h"

#include <QTimer>
#include <QWidget>
#include <functional>

class QLabel;
class QLineEdit;
class QToolButton;

namespace qb {

/// Finds a text in the box that is shown: next and previous, around the end, with all places
/// marked and counted.
class FindBar : public QWidget {
    Q_OBJECT

public:
    /// @p box gives the box to look in, or null.
    explicit FindBar(std::function<UserTextBox*()> box, QWidget* parent = nullptr);

    /// Shows the bar, with the selected text to look for.
    void Open();
    void Close();
    void FindNext() { Find(true); }
    void FindPrevious() { Find(false); }
    /// Another text is shown, or it was changed.
    void Refresh();
    /// The same once the typing pauses.
    void RefreshSoon();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Find(bool forward);
    QList<qsizetype> Places(const UserTextBox& box) const;
    void ShowCount(const QList<qsizetype>& places, qsizetype current);
    void Mark(const QList<qsizetype>& places);

    std::function<UserTextBox*()> m_box;
    QLineEdit* txtFindText;
    QToolButton* chkMatchCase;
    QToolButton* chkWholeWord;
    QLabel* lblFound;
    QTimer m_refresh;
    UserTextBox* m_marked = nullptr; ///< the box with marks in it
};

} // namespace qb
