#include "panels/ui/StoredFileView.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QTimer>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString UriList = u"text/uri-list"_s;

/// Files that are made when somebody wants them, and once.
class FilesOnDemand : public QMimeData {
public:
    explicit FilesOnDemand(std::function<QList<QUrl>()> make) : m_make(std::move(make)) {}

    QStringList formats() const override { return {UriList}; }
    bool hasFormat(const QString& type) const override { return type == UriList; }

protected:
    QVariant retrieveData(const QString& type, QMetaType wanted) const override
    {
        if (type != UriList)
            return {};
        if (m_make) {
            const_cast<FilesOnDemand*>(this)->setUrls(m_make());
            m_make = nullptr;
        }
        return QMimeData::retrieveData(type, wanted);
    }

private:
    mutable std::function<QList<QUrl>()> m_make;
};

QStringList LocalFiles(const QMimeData& data)
{
    QStringList files;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile())
            files << url.toLocalFile();
    }
    return files;
}

} // namespace

StoredFileView::StoredFileView(QWidget* parent) : QTreeView(parent)
{
    setObjectName(u"lvFiles"_s);
    setAccessibleName(u"Stored files"_s);
    setFrameShape(QFrame::NoFrame);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(DragDrop);
    setSortingEnabled(true);
    header()->setStretchLastSection(false);
}

/// Its own files are in it already.
bool StoredFileView::Accepts(const QDropEvent& event) const
{
    return !m_locked && event.source() != this && !LocalFiles(*event.mimeData()).isEmpty();
}

void StoredFileView::dragEnterEvent(QDragEnterEvent* event)
{
    dragMoveEvent(event);
}

void StoredFileView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!Accepts(*event))
        return event->ignore();
    event->setDropAction(Qt::CopyAction); // whatever the other side proposes: its files stay
    event->accept();
}

void StoredFileView::dropEvent(QDropEvent* event)
{
    if (!Accepts(*event))
        return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Receive(*event->mimeData());
}

void StoredFileView::Receive(const QMimeData& arrived)
{
    const QStringList files = LocalFiles(arrived);
    if (files.isEmpty())
        return;
    // The program that they come from waits until the drop is over.
    QTimer::singleShot(0, this, [this, files] { Q_EMIT FilesArrived(files); });
}

void StoredFileView::startDrag(Qt::DropActions)
{
    if (!MakeCopies || !selectionModel()->hasSelection())
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(new FilesOnDemand(MakeCopies));
    const QModelIndex current = currentIndex();
    constexpr int IconSize = 32;
    drag->setPixmap(current.siblingAtColumn(0).data(Qt::DecorationRole).value<QIcon>().pixmap(IconSize));
    drag->exec(Qt::CopyAction);
}

void StoredFileView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Paste) && !m_locked) {
        if (const QMimeData* copied = QApplication::clipboard()->mimeData()) // none while nothing was ever copied
            Receive(*copied);
        return;
    }
    if (event->matches(QKeySequence::Copy) && MakeCopies && selectionModel()->hasSelection()) {
        auto* copies = new QMimeData;
        copies->setUrls(MakeCopies());
        return QApplication::clipboard()->setMimeData(copies);
    }
    QTreeView::keyPressEvent(event);
}

/// An empty list says so, and what to do about it.
void StoredFileView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (!model() || model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString hint = m_locked ? QString() : u"\nDrop files here, or press Insert to add some."_s;
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                     u"No files are stored with this item."_s + hint);
}

} // namespace qb
