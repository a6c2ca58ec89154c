#pragma once

#include <QStringList>
#include <QTreeView>
#include <QUrl>
#include <functional>

namespace qb {

/// The list `lvFiles`: sorted by its columns, files from elsewhere can be dropped and pasted into it, its
/// own dragged out and copied.
class StoredFileView : public QTreeView {
    Q_OBJECT

public:
    explicit StoredFileView(QWidget* parent = nullptr);

    void SetLocked(bool locked) { m_locked = locked; }

    /// Copies of the selected files, made when the place where they are dropped asks for them.
    std::function<QList<QUrl>()> MakeCopies;

Q_SIGNALS:
    /// Files or folders of this computer were pasted or dropped, at least one. Told after the drop is over; a locked
    /// list takes none.
    void FilesArrived(const QStringList& paths);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void Receive(const QMimeData& data);
    bool Accepts(const QDropEvent& event) const;

    bool m_locked = false;
};

} // namespace qb
