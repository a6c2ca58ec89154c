#pragma once

#include "panels/BookmarkTree.h"

#include <QSet>
#include <QTreeView>

namespace qb {

/// The list `lvBookMarks`: bookmarks under their groups, sorted by a click on a column; the third click brings back
/// the order in which they were made. A bookmark can be dragged to another group. What is selected and which groups
/// are closed stays when it is read anew.
class BookmarkView : public QTreeView {
    Q_OBJECT

public:
    explicit BookmarkView(BookmarkTree& rows, QWidget* parent = nullptr);

    /// Whether a click opens a bookmark, or a double click.
    void SetSingleClick(bool single) { m_singleClick = single; }
    /// Selects a place and brings it into view.
    void Select(const QModelIndex& index);

Q_SIGNALS:
    /// A bookmark is to be opened.
    void BookmarkActivated(qint64 bookmark);
    /// Another place is the current one.
    void CurrentChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void Remember();
    void Restore();
    void Open(const QModelIndex& index);
    bool IsClick(const QMouseEvent& event) const;

    BookmarkTree& m_rows;
    bool m_singleClick = false;
    QPersistentModelIndex m_pressed;
    QString m_current;      ///< key of what was selected before the list was read anew
    QString m_group;        ///< key of the group of that; empty: it was one
    int m_row = 0;          ///< where it stood
    QSet<QString> m_closed; ///< keys of the groups that the user has closed
    bool m_restoring = false;
    bool m_columnsSized = false;
};

} // namespace qb
