#pragma once

#include "finder/FindResults.h"

#include <QTreeView>

class QComboBox;

namespace qb {

/// The list of find results, as plain rows or as a report with a column for each letter. It lays out and forwards:
/// what a click does is decided by FindResults.
class FindResultsView : public QTreeView {
    Q_OBJECT

public:
    explicit FindResultsView(FindResults& results, QWidget* parent = nullptr);

    /// The combo box of the words, for the toolbar; made by this and owned by whoever lays it out.
    QComboBox* SearchWords() const { return cboSearchWords; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void ShowViewType();
    void SizeColumns();
    void ShowRow(int row);
    void ShowWords();
    bool IsClick(const QMouseEvent& event) const;

    FindResults& m_results;
    QComboBox* cboSearchWords;
    QPersistentModelIndex m_pressed;
};

} // namespace qb
