#include "panels/ui/FilteredTree.h"

#include "panels/ui/NodeLook.h"
#include "panels/ui/NodeTreeView.h"
#include "panels/ui/SteadyTreeView.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

namespace qb {

using namespace Qt::StringLiterals;

FilteredTree::FilteredTree(TreeNodes& nodes, NodeTreeView& tree) : m_nodes(nodes), m_matches(nodes), m_tree(tree)
{
    MakeFound();
    MakeBox();
    m_tree.installEventFilter(this);
    addWidget(&m_tree);
    addWidget(m_found);
    addWidget(m_noMatch);
}

void FilteredTree::MakeFound()
{
    m_found = new SteadyTreeView;
    m_found->setObjectName(u"tvwFound"_s);
    m_found->setAccessibleName(u"Items that match"_s);
    m_found->setHeaderHidden(true);
    m_found->setUniformRowHeights(true);
    m_found->setFrameShape(QFrame::NoFrame);
    m_found->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_found->setItemDelegate(new NodeLook(m_found));
    m_found->setModel(&m_matches);
    m_found->installEventFilter(this);
    connect(m_found, &QTreeView::clicked, this, &FilteredTree::GoToFound);
    m_noMatch = new QLabel;
    m_noMatch->setObjectName(u"lblNoMatch"_s);
    m_noMatch->setTextFormat(Qt::PlainText);
    m_noMatch->setWordWrap(true);
    m_noMatch->setBackgroundRole(QPalette::Base);
    m_noMatch->setAutoFillBackground(true);
    m_noMatch->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    constexpr int Margin = 12;
    m_noMatch->setMargin(Margin);
}

void FilteredTree::MakeBox()
{
    txtFilter = new QLineEdit;
    txtFilter->setObjectName(u"txtFilter"_s);
    txtFilter->setPlaceholderText(u"Filter titles"_s);
    txtFilter->setAccessibleName(u"Filter titles"_s);
    txtFilter->setClearButtonEnabled(true);
    txtFilter->installEventFilter(this);
    m_refilter.setSingleShot(true);
    connect(&m_refilter, &QTimer::timeout, this, &FilteredTree::ApplyFilter);
    connect(txtFilter, &QLineEdit::textChanged, this, &FilteredTree::ApplyFilter);
    const auto changed = [this] {
        if (!txtFilter->text().isEmpty())
            m_refilter.start(0);
    };
    // The picture of the nodes does not outlive them.
    const auto forget = [this] {
        m_matches.SetFilter({});
        m_refilter.start(0);
    };
    connect(&m_nodes, &TreeNodes::modelAboutToBeReset, this, forget);
    connect(&m_nodes, &TreeNodes::rowsAboutToBeRemoved, this, forget);
    connect(&m_nodes, &TreeNodes::rowsAboutToBeMoved, this, forget);
    connect(&m_nodes, &TreeNodes::rowsInserted, this, changed);
    connect(&m_nodes, &TreeNodes::dataChanged, this, changed);
}

bool FilteredTree::IsFiltering() const
{
    return currentWidget() != &m_tree;
}

void FilteredTree::StartFilter()
{
    txtFilter->setFocus();
    txtFilter->selectAll();
}

void FilteredTree::EndFilter()
{
    txtFilter->clear();
}

void FilteredTree::Select(const TreeNode* node)
{
    m_found->setCurrentIndex(m_matches.IndexOf(node));
}

void FilteredTree::TakeFocus()
{
    currentWidget() == m_noMatch ? txtFilter->setFocus() : currentWidget()->setFocus();
}

void FilteredTree::ApplyFilter()
{
    m_refilter.stop();
    const QString text = txtFilter->text().trimmed();
    m_matches.SetFilter(text);
    if (text.isEmpty()) {
        setCurrentWidget(&m_tree);
        m_tree.scrollTo(m_tree.currentIndex());
        return;
    }
    m_noMatch->setText(u"No title holds “%1”."_s.arg(text));
    setCurrentWidget(m_matches.MatchCount() == 0 ? static_cast<QWidget*>(m_noMatch) : m_found);
    // Of very many matches nobody reads all; their branches stay closed, which is faster.
    constexpr int MostExpanded = 5000;
    if (m_matches.MatchCount() <= MostExpanded)
        m_found->expandAll();
    else
        m_found->expand(m_matches.index(0, 0));
    if (const TreeNode* node = m_nodes.NodeAt(m_tree.currentIndex()))
        Select(node);
}

void FilteredTree::GoToFound(const QModelIndex& index)
{
    if (TreeNode* node = m_matches.NodeAt(index))
        Q_EMIT NodeChosen(node);
}

bool FilteredTree::FilterKey(QObject* watched, int key)
{
    if (m_tree.IsEditingLabel()) // whose keys come this way when it is done with them
        return false;
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (key == Qt::Key_Escape && IsFiltering()) {
        EndFilter();
        m_tree.setFocus();
        return true;
    }
    if (watched == txtFilter && (isEnter || key == Qt::Key_Down) && m_matches.MatchCount() > 0) {
        if (isEnter || !m_matches.IsMatch(m_found->currentIndex()))
            m_found->setCurrentIndex(m_matches.IndexOf(m_matches.FirstMatch()));
        m_found->setFocus();
        if (isEnter)
            GoToFound(m_found->currentIndex());
        return true;
    }
    if (watched == m_found && isEnter) {
        GoToFound(m_found->currentIndex());
        return true;
    }
    return false;
}

bool FilteredTree::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && FilterKey(watched, static_cast<QKeyEvent*>(event)->key()))
        return true;
    return QStackedWidget::eventFilter(watched, event);
}

} // namespace qb
