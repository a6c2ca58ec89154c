#include "panels/ctlFileDetails.h"

#include "panels/ui/StoredFileList.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

ctlFileDetails::ctlFileDetails(QWidget* parent) : QWidget(parent), m_files(new StoredFileList(this)), lvFiles(new QTreeView)
{
    setObjectName(u"ctlFileDetails1"_s);
    lvFiles->setObjectName(u"lvFiles"_s);
    lvFiles->setFrameShape(QFrame::NoFrame);
    lvFiles->setRootIsDecorated(false);
    lvFiles->setUniformRowHeights(true);
    lvFiles->setAllColumnsShowFocus(true);
    lvFiles->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* sorted = new QSortFilterProxyModel(this);
    sorted->setSourceModel(m_files);
    sorted->setSortRole(StoredFileList::SortRole);
    sorted->setSortLocaleAware(true);
    lvFiles->setModel(sorted);
    lvFiles->setSortingEnabled(true);
    lvFiles->sortByColumn(StoredFileList::TitleColumn, Qt::AscendingOrder);
    lvFiles->hideColumn(StoredFileList::SortColumn); // the key of the sizes
    lvFiles->header()->setStretchLastSection(false);
    lvFiles->viewport()->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lvFiles);
}

void ctlFileDetails::Initialise(Database& database, const QString& key)
{
    m_files->Read(database, key);
    if (m_files->rowCount() == 0)
        return;
    for (int column = 0; column < StoredFileList::ColumnCount; ++column)
        lvFiles->resizeColumnToContents(column);
}

void ctlFileDetails::Terminate()
{
    m_files->Clear();
}

/// An empty list says so.
bool ctlFileDetails::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Paint || m_files->rowCount() > 0)
        return QWidget::eventFilter(watched, event);
    QPainter painter(lvFiles->viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(lvFiles->viewport()->rect(), Qt::AlignCenter, u"No files are stored with this item."_s);
    return true;
}

} // namespace qb
