#include "panels/ui/ctlSmartTreeView.h"

#include "panels/ui/NodeLook.h"
#include "panels/ui/NodeTreeView.h"
#include "panels/ui/SteadyTreeView.h"
#include "support/ui/Icons.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QTextDocument>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

ctlSmartTreeView::ctlSmartTreeView(QWidget* parent)
    : QWidget(parent), m_matches(m_nodes), m_tree(new NodeTreeView(m_nodes))
{
    MakeFilter();
    MakeToolbar();
    MakeTree();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tbrLinks, 0, Qt::AlignTop);
    layout->addWidget(txtFilter);
    layout->addWidget(m_splitter, 1);
    setFocusProxy(m_tree);
    ConnectTree();
    ClearLinkCombo();
    ShowMode();
    ShowShrunk();
}

void ctlSmartTreeView::MakeTree()
{
    constexpr int DescriptionHeight = 86;
    constexpr int TreeHeight = 500;
    m_tree->setObjectName(u"tvwTree"_s);
    m_tree->setAccessibleName(u"Items"_s);
    m_tree->viewport()->installEventFilter(this);
    m_tree->installEventFilter(this);
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
    m_trees = new QStackedWidget;
    m_trees->addWidget(m_tree);
    m_trees->addWidget(m_found);
    m_noMatch = new QLabel;
    m_noMatch->setObjectName(u"lblNoMatch"_s);
    m_noMatch->setTextFormat(Qt::PlainText);
    m_noMatch->setWordWrap(true);
    m_noMatch->setBackgroundRole(QPalette::Base);
    m_noMatch->setAutoFillBackground(true);
    m_noMatch->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    constexpr int Margin = 12;
    m_noMatch->setMargin(Margin);
    m_trees->addWidget(m_noMatch);
    txtDescription = new QPlainTextEdit;
    txtDescription->setObjectName(u"txtItemDescription"_s);
    txtDescription->setAccessibleName(u"Description of the item"_s);
    txtDescription->setReadOnly(true);
    txtDescription->setFrameShape(QFrame::NoFrame);
    txtDescription->setPlaceholderText(u"No description"_s);
    m_splitter = new QSplitter(Qt::Vertical);
    m_splitter->setObjectName(u"ctlTreeResizer"_s);
    m_splitter->addWidget(m_trees);
    m_splitter->addWidget(txtDescription);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setSizes({TreeHeight, DescriptionHeight});
}

void ctlSmartTreeView::MakeFilter()
{
    txtFilter = new QLineEdit;
    txtFilter->setObjectName(u"txtFilter"_s);
    txtFilter->setPlaceholderText(u"Filter titles"_s);
    txtFilter->setAccessibleName(u"Filter titles"_s);
    txtFilter->setClearButtonEnabled(true);
    txtFilter->installEventFilter(this);
    m_refilter.setSingleShot(true);
    connect(&m_refilter, &QTimer::timeout, this, &ctlSmartTreeView::ApplyFilter);
    connect(txtFilter, &QLineEdit::textChanged, this, &ctlSmartTreeView::ApplyFilter);
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

void ctlSmartTreeView::MakeToolbar()
{
    tbrLinks = new QToolBar;
    tbrLinks->setObjectName(u"tbrLinks"_s);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    tbrLinks->setIconSize({size, size});
    const auto add = [this](const QString& key, auto run) {
        QAction* action = tbrLinks->addAction(key);
        action->setObjectName(key);
        action->setProperty("key", key);
        connect(action, &QAction::triggered, this, run);
        return action;
    };
    m_shrink = add(u"SHRINK"_s, [this] { SetTreeHidden(!IsShrunk()); });
    m_description = add(u"DESCRIPTION"_s, [this] { SetDescriptionHidden(!m_descriptionHidden); });
    tbrLinks->addSeparator();
    MakeModeMenu();
    cboLinkedItems = new QComboBox;
    cboLinkedItems->setObjectName(u"cboLinkedItems"_s);
    cboLinkedItems->setAccessibleName(u"Linked items"_s);
    cboLinkedItems->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    cboLinkedItems->setMinimumContentsLength(1);
    cboLinkedItems->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_linkBox = tbrLinks->addWidget(cboLinkedItems);
    const auto follow = [this] {
        if (ComboItem() != 0)
            Q_EMIT LinkFollowed(ComboItem());
    };
    m_linkGoto = add(u"LINK_GOTO"_s, follow);
    m_linkGoto->setIcon(IconNamed(u"LINK_GOTO"_s));
    m_linkGoto->setToolTip(u"Go to the linked item"_s);
    m_linkRemove = add(u"LINK_REMOVE"_s, [this] {
        if (ComboItem() != 0)
            Q_EMIT LinkRemoveAsked(ComboItem());
    });
    m_linkRemove->setIcon(IconNamed(u"edit-delete"_s));
    m_linkRemove->setToolTip(u"Remove the link"_s);
    connect(cboLinkedItems, &QComboBox::currentIndexChanged, this, &ctlSmartTreeView::UpdateCombo);
}

void ctlSmartTreeView::ConnectTree()
{
    const auto click = [this](const QModelIndex& index) {
        if (index.isValid() && !m_selecting)
            Q_EMIT NodeClick(m_nodes.NodeAt(index));
    };
    // A click on the node that is selected already is a click all the same; one on a node that was
    // not left for it is over.
    connect(m_tree, &NodeTreeView::clicked, this, [this, click](const QModelIndex& index) {
        if (index != m_tree->currentIndex())
            return;
        if (m_mode == qb::LinkMode::None)
            return click(index);
        // The second step may open an editor, which the rest of the click would take for a leftover.
        QTimer::singleShot(0, this, [this, id = m_nodes.NodeAt(index)->Id] {
            if (TreeNode* node = m_nodes.Find(id))
                Q_EMIT NodeClick(node);
        });
    });
    // In a link mode a click names an item; going about with the keys does not.
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this, click](const QModelIndex& index) {
                if (m_mode == qb::LinkMode::None)
                    click(index);
                else if (index.isValid() && !m_selecting)
                    Q_EMIT LinkTargetChosen(m_nodes.NodeAt(index));
            });
    connect(m_tree, &NodeTreeView::expanded, this,
            [this](const QModelIndex& index) { Q_EMIT NodeExpanded(m_nodes.NodeAt(index)); });
    connect(m_tree, &NodeTreeView::collapsed, this,
            [this](const QModelIndex& index) { Q_EMIT NodeCollapsed(m_nodes.NodeAt(index)); });
    connect(m_found, &QTreeView::clicked, this, &ctlSmartTreeView::GoToFound);
}

// The tree

TreeNode* ctlSmartTreeView::SelectedItem() const
{
    return m_nodes.NodeAt(m_tree->currentIndex());
}

TreeNode* ctlSmartTreeView::HitTest(int x, int y) const
{
    return m_nodes.NodeAt(m_tree->indexAt({x, y}));
}

void ctlSmartTreeView::SelectItem(TreeNode& node)
{
    const QScopedValueRollback guard(m_selecting, true);
    m_tree->setCurrentIndex(m_nodes.IndexOf(&node));
    m_found->setCurrentIndex(m_matches.IndexOf(&node));
}

void ctlSmartTreeView::EnsureVisible(TreeNode& node)
{
    m_tree->scrollTo(m_nodes.IndexOf(&node));
}

void ctlSmartTreeView::SetExpanded(TreeNode& node, bool expanded)
{
    m_tree->setExpanded(m_nodes.IndexOf(&node), expanded);
}

void ctlSmartTreeView::FocusTree()
{
    m_trees->currentWidget() == m_noMatch ? txtFilter->setFocus() : m_trees->currentWidget()->setFocus();
}

void ctlSmartTreeView::SetTreeVisible(bool visible)
{
    m_tree->setVisible(visible && m_trees->currentWidget() == m_tree);
}

void ctlSmartTreeView::StartLabelEdit(TreeNode& node)
{
    EndFilter(); // a new title need not match
    m_tree->StartLabelEdit(node);
}

void ctlSmartTreeView::EndLabelEdit()
{
    m_tree->EndLabelEdit();
}

void ctlSmartTreeView::RemoveNode(TreeNode& node)
{
    const QScopedValueRollback guard(m_selecting, true); // the tree selects another one, which is no click
    m_nodes.Remove(node);
}

void ctlSmartTreeView::SetDropHighlight(const TreeNode* node)
{
    m_tree->SetDropHighlight(node);
}

void ctlSmartTreeView::ScrollLines(int lines)
{
    m_tree->verticalScrollBar()->setValue(m_tree->verticalScrollBar()->value() + lines);
}

// The filter

void ctlSmartTreeView::StartFilter()
{
    SetTreeHidden(false);
    txtFilter->setFocus();
    txtFilter->selectAll();
}

void ctlSmartTreeView::EndFilter()
{
    txtFilter->clear();
}

void ctlSmartTreeView::ApplyFilter()
{
    m_refilter.stop();
    const QString text = txtFilter->text().trimmed();
    m_matches.SetFilter(text);
    if (text.isEmpty()) {
        m_trees->setCurrentWidget(m_tree);
        m_tree->scrollTo(m_tree->currentIndex());
        return;
    }
    m_noMatch->setText(u"No title holds “%1”."_s.arg(text));
    m_trees->setCurrentWidget(m_matches.MatchCount() == 0 ? static_cast<QWidget*>(m_noMatch) : m_found);
    // Of very many matches nobody reads all; their branches stay closed, which is faster.
    constexpr int MostExpanded = 5000;
    if (m_matches.MatchCount() <= MostExpanded)
        m_found->expandAll();
    else
        m_found->expand(m_matches.index(0, 0));
    if (const TreeNode* node = SelectedItem())
        m_found->setCurrentIndex(m_matches.IndexOf(node));
}

/// Goes to the item as if its node in the whole tree had been clicked.
void ctlSmartTreeView::GoToFound(const QModelIndex& index)
{
    TreeNode* node = m_matches.NodeAt(index);
    if (!node)
        return;
    {
        const QScopedValueRollback guard(m_selecting, true);
        m_tree->setCurrentIndex(m_nodes.IndexOf(node));
    }
    Q_EMIT NodeClick(node);
}

bool ctlSmartTreeView::FilterKey(QObject* watched, int key)
{
    if (m_tree->IsEditingLabel()) // whose keys come this way when it is done with them
        return false;
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (key == Qt::Key_Escape && m_mode != qb::LinkMode::None) {
        Q_EMIT LinkModeEnded();
        return true;
    }
    if (watched == m_tree && isEnter && m_mode != qb::LinkMode::None) {
        Q_EMIT NodeClick(SelectedItem());
        return true;
    }
    if (key == Qt::Key_Escape && m_trees->currentWidget() != m_tree) {
        EndFilter();
        m_tree->setFocus();
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

bool ctlSmartTreeView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_tree->viewport() && event->type() == QEvent::Paint && m_nodes.Count() > 0) {
        m_tree->viewport()->removeEventFilter(this);
        // Told once the event, and with it the drawing, is over.
        QTimer::singleShot(0, this, &ctlSmartTreeView::TreePainted);
    }
    if (event->type() == QEvent::KeyPress && FilterKey(watched, static_cast<QKeyEvent*>(event)->key()))
        return true;
    return QWidget::eventFilter(watched, event);
}

// Size

void ctlSmartTreeView::SetTreeHidden(bool hidden)
{
    if (hidden == m_hidden && (hidden || !m_autoHidden))
        return;
    m_hidden = hidden;
    m_autoHidden = m_autoHidden && hidden; // who asks for the tree gets it, whatever has hidden it
    ShowShrunk();
}

void ctlSmartTreeView::AutoHideTree(bool hide)
{
    if (hide == m_autoHidden)
        return;
    m_autoHidden = hide;
    ShowShrunk();
}

void ctlSmartTreeView::ShowShrunk()
{
    const bool shrunk = IsShrunk();
    m_shrink->setIcon(IconNamed(shrunk ? u"TREE_SHOW"_s : u"TREE_HIDE"_s));
    m_shrink->setToolTip(shrunk ? u"Expand Tree"_s : u"Shrink Tree"_s);
    m_description->setIcon(IconNamed(m_descriptionHidden ? u"DESCR_SHOW"_s : u"DESCR_HIDE"_s));
    m_description->setToolTip(m_descriptionHidden ? u"Show Item Description"_s : u"Hide Item Description"_s);
    m_splitter->setVisible(!shrunk);
    txtFilter->setVisible(!shrunk);
    txtDescription->setVisible(!m_descriptionHidden);
    for (QAction* action : tbrLinks->actions())
        action->setVisible(!shrunk || action == m_shrink);
    Q_EMIT Shrinking(shrunk);
}

QSize ctlSmartTreeView::minimumSizeHint() const
{
    constexpr int ToolsAndALink = 210;
    const QSize size = QWidget::minimumSizeHint();
    return IsShrunk() ? size : size.expandedTo({ToolsAndALink, 0});
}

int ctlSmartTreeView::ShrunkWidth() const
{
    constexpr int Margins = 8;
    return tbrLinks->widgetForAction(m_shrink)->sizeHint().width() + Margins;
}

void ctlSmartTreeView::SetDescriptionHidden(bool hidden)
{
    m_descriptionHidden = hidden;
    ShowShrunk();
}

void ctlSmartTreeView::UpdateDescription(const QString& text)
{
    txtDescription->setPlainText(text);
}

int ctlSmartTreeView::SeparatorPosition() const
{
    return m_splitter->sizes().value(0);
}

void ctlSmartTreeView::SetSeparatorPosition(int position)
{
    m_splitter->setSizes({position, std::max(1, m_splitter->height() - position)});
}

} // namespace qb
