#include "finder/ui/FindResultsView.h"

#include "support/ui/Icons.h"

#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int LetterWidth = 350 / 15; ///< pixels: of 350 twips

class ResultLook : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QString image = index.data(FindResults::ImageRole).toString();
        if (image.isEmpty())
            return;
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->icon = IconNamed(image);
        option->decorationSize = option->widget->style()->pixelMetric(QStyle::PM_SmallIconSize) * QSize(1, 1);
    }
};

} // namespace

FindResultsView::FindResultsView(FindResults& results, QWidget* parent)
    : QTreeView(parent), m_results(results), cboSearchWords(new QComboBox)
{
    setObjectName(u"lvFindResults"_s);
    setAccessibleName(u"Find results"_s);
    setFrameShape(QFrame::NoFrame);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setEditTriggers(NoEditTriggers);
    setItemDelegate(new ResultLook(this));
    setModel(&results);
    header()->setMinimumSectionSize(LetterWidth);
    cboSearchWords->setObjectName(u"cboSearchWords"_s);
    cboSearchWords->setAccessibleName(u"Word to go to"_s);
    cboSearchWords->setPlaceholderText(u"Select word"_s);
    cboSearchWords->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(cboSearchWords, &QComboBox::currentIndexChanged, this,
            std::bind_front(&FindResults::SelectWord, &m_results));
    connect(&results, &FindResults::WordsChanged, this, &FindResultsView::ShowWords);
    connect(&results, &FindResults::WordAsked, cboSearchWords, [this] { cboSearchWords->setFocus(); });
    connect(&results, &FindResults::ViewTypeChanged, this, &FindResultsView::ShowViewType);
    connect(&results, &FindResults::RowSelected, this, &FindResultsView::ShowRow);
    ShowViewType();
    ShowWords();
}

void FindResultsView::ShowViewType()
{
    setHeaderHidden(m_results.SearchResultViewType() == FindResults::QuickList);
    SizeColumns();
}

/// The letters are narrow; title and description share the rest.
void FindResultsView::SizeColumns()
{
    const int columns = m_results.columnCount();
    if (columns == 1)
        return;
    constexpr int LeastTitle = 120;
    header()->setStretchLastSection(true);
    for (int column = 1; column < columns - 1; ++column)
        setColumnWidth(column, LetterWidth);
    const int rest = viewport()->width() - (columns - 2) * LetterWidth;
    setColumnWidth(0, qMax(LeastTitle, rest / 2));
}

void FindResultsView::ShowRow(int row)
{
    const QModelIndex index = m_results.index(row, 0);
    setCurrentIndex(index);
    if (index.isValid())
        scrollTo(index);
}

/// It waits for something to choose from.
void FindResultsView::ShowWords()
{
    const QSignalBlocker blocker(cboSearchWords);
    const QStringList& words = m_results.Words();
    if (cboSearchWords->count() != words.size()) {
        cboSearchWords->clear();
        cboSearchWords->addItems(words);
    }
    for (int i = 0; i < int(words.size()); ++i)
        cboSearchWords->setItemText(i, words[i]);
    cboSearchWords->setCurrentIndex(m_results.SelectedWord());
    cboSearchWords->setEnabled(!words.isEmpty());
}

// What the user does

void FindResultsView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTreeView::currentChanged(current, previous);
    if (current.isValid() && current.row() != m_results.SelectedRow())
        m_results.Select(current.row());
}

void FindResultsView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        return m_results.OpenRow(currentIndex().row());
    QTreeView::keyPressEvent(event);
}

bool FindResultsView::IsClick(const QMouseEvent& event) const
{
    return event.button() == Qt::LeftButton && event.modifiers() == Qt::NoModifier;
}

void FindResultsView::mousePressEvent(QMouseEvent* event)
{
    m_pressed = indexAt(event->pos());
    QTreeView::mousePressEvent(event);
}

/// Pressed on one row and let go over another is no click.
void FindResultsView::mouseReleaseEvent(QMouseEvent* event)
{
    QTreeView::mouseReleaseEvent(event);
    const QModelIndex index = indexAt(event->pos());
    if (IsClick(*event) && index.isValid() && index == m_pressed)
        m_results.RowClicked(index.row(), false);
}

void FindResultsView::mouseDoubleClickEvent(QMouseEvent* event)
{
    QTreeView::mouseDoubleClickEvent(event);
    m_pressed = QModelIndex(); // its second click is not one more
    const QModelIndex index = indexAt(event->pos());
    if (IsClick(*event) && index.isValid())
        m_results.RowClicked(index.row(), true);
}

// Looks

void FindResultsView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    SizeColumns();
}

/// An empty list says so, and what to do about it.
void FindResultsView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (m_results.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString text = m_results.SearchKeyword().isEmpty()
                             ? u"Nothing has been looked for yet.\nCtrl+Shift+F finds in the whole library."_s
                             : u"Nothing was found."_s;
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, text);
}

} // namespace qb
