#include "panels/ui/ctlSmartTreeView.h"

#include "panels/ui/FilteredTree.h"
#include "panels/ui/LinkBar.h"
#include "panels/ui/NodeTreeView.h"
#include "panels/ui/TreeBar.h"
#include "support/ui/Icons.h"

#include <QAction>
#include <QCursor>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSplitter>
#include <QToolBar>
#include <QVBoxLayout>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QPlainTextEdit* NewDescription()
{
    auto* description = new QPlainTextEdit;
    description->setObjectName(u"txtItemDescription"_s);
    description->setAccessibleName(u"Description of the item"_s);
    description->setReadOnly(true);
    description->setFrameShape(QFrame::NoFrame);
    description->setPlaceholderText(u"No description"_s);
    return description;
}

} // namespace

ctlSmartTreeView::ctlSmartTreeView(QWidget* parent)
    : QWidget(parent), m_tree(new NodeTreeView(m_nodes)), m_trees(new FilteredTree(m_nodes, *m_tree)),
      tbrTree(new QToolBar), tbrLinks(new LinkBar), m_bar(new TreeBar(*tbrTree, *tbrLinks)),
      m_splitter(new QSplitter(Qt::Vertical)), txtDescription(NewDescription())
{
    tbrTree->setObjectName(u"tbrTree"_s);
    tbrTree->setIconSize(tbrLinks->iconSize());
    m_shrink = AddButton(*tbrTree, u"SHRINK"_s);
    connect(m_shrink, &QAction::triggered, this, [this] { SetTreeHidden(!IsShrunk()); });
    m_description = AddButton(*tbrTree, u"DESCRIPTION"_s);
    connect(m_description, &QAction::triggered, this, [this] { SetDescriptionHidden(!m_descriptionHidden); });
    tbrTree->addWidget(m_trees->Box());
    m_tree->setObjectName(u"tvwTree"_s);
    m_tree->setAccessibleName(u"Items"_s);
    m_tree->viewport()->installEventFilter(this);
    for (QWidget* keys : std::initializer_list<QWidget*>{m_trees->Box(), m_trees->Found(), m_tree})
        keys->installEventFilter(this);
    constexpr int DescriptionHeight = 86;
    constexpr int TreeHeight = 500;
    m_splitter->setObjectName(u"ctlTreeResizer"_s);
    m_splitter->addWidget(m_trees);
    m_splitter->addWidget(txtDescription);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setSizes({TreeHeight, DescriptionHeight});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_bar, 0, Qt::AlignTop);
    layout->addWidget(m_splitter, 1);
    setFocusProxy(m_tree);
    ConnectTree();
    ShowShrunk();
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
        if (LinkMode() == qb::LinkMode::None)
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
                if (LinkMode() == qb::LinkMode::None)
                    click(index);
                else if (index.isValid() && !m_selecting)
                    Q_EMIT LinkTargetChosen(m_nodes.NodeAt(index));
            });
    connect(m_tree, &NodeTreeView::expanded, this,
            [this](const QModelIndex& index) { Q_EMIT NodeExpanded(m_nodes.NodeAt(index)); });
    connect(m_tree, &NodeTreeView::collapsed, this,
            [this](const QModelIndex& index) { Q_EMIT NodeCollapsed(m_nodes.NodeAt(index)); });
    connect(m_trees, &FilteredTree::NodeChosen, this, [this](TreeNode* node) {
        {
            const QScopedValueRollback guard(m_selecting, true);
            m_tree->setCurrentIndex(m_nodes.IndexOf(node));
        }
        Q_EMIT NodeClick(node); // as if its node in the whole tree had been clicked
    });
    connect(tbrLinks, &LinkBar::ModeStarted, this, &ctlSmartTreeView::LinkModeStarted);
    connect(tbrLinks, &LinkBar::ModeEnded, this, &ctlSmartTreeView::LinkModeEnded);
    connect(tbrLinks, &LinkBar::LinkFollowed, this, &ctlSmartTreeView::LinkFollowed);
    connect(tbrLinks, &LinkBar::LinkRemoveAsked, this, &ctlSmartTreeView::LinkRemoveAsked);
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
    m_trees->Select(&node);
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
    m_trees->TakeFocus();
}

void ctlSmartTreeView::SetTreeVisible(bool visible)
{
    m_tree->setVisible(visible && !m_trees->IsFiltering());
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
    m_trees->StartFilter();
}

void ctlSmartTreeView::EndFilter()
{
    m_trees->EndFilter();
}

bool ctlSmartTreeView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_tree->viewport() && event->type() == QEvent::Paint && m_nodes.Count() > 0) {
        m_tree->viewport()->removeEventFilter(this);
        // Told once the event, and with it the drawing, is over.
        QTimer::singleShot(0, this, &ctlSmartTreeView::TreePainted);
    }
    // Keys in a title are the editor's, and come this way when it is done with them.
    if (event->type() == QEvent::KeyPress && LinkMode() != qb::LinkMode::None && !m_tree->IsEditingLabel()) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape) {
            Q_EMIT LinkModeEnded();
            return true;
        }
        if (watched == m_tree && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
            Q_EMIT NodeClick(SelectedItem());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

// Links

qb::LinkMode ctlSmartTreeView::LinkMode() const
{
    return tbrLinks->Mode();
}

void ctlSmartTreeView::SetLinkMode(qb::LinkMode mode)
{
    constexpr int CursorSize = 24;
    tbrLinks->SetMode(mode);
    for (QTreeView* tree : {static_cast<QTreeView*>(m_tree), m_trees->Found()}) {
        if (mode == qb::LinkMode::None)
            tree->viewport()->unsetCursor();
        else
            tree->viewport()->setCursor(QCursor(IconNamed(u"LINK_CURSOR"_s).pixmap(CursorSize), 1, 1));
    }
}

bool ctlSmartTreeView::InPermanentLinkMode() const
{
    return tbrLinks->IsPermanent();
}

void ctlSmartTreeView::SetInPermanentLinkMode(bool permanent)
{
    tbrLinks->SetPermanent(permanent);
}

void ctlSmartTreeView::ClearLinkCombo()
{
    tbrLinks->ClearLinks();
}

void ctlSmartTreeView::AddNewLinkToCombo(const CLink& link)
{
    tbrLinks->AddLink(link);
}

void ctlSmartTreeView::UpdateLinkItemInCombo(const CLink& link)
{
    tbrLinks->UpdateLink(link);
}

void ctlSmartTreeView::EnableLinking(bool adding, bool removing)
{
    tbrLinks->EnableLinking(adding, removing);
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
    tbrLinks->setVisible(!shrunk);
    txtDescription->setVisible(!m_descriptionHidden);
    for (QAction* action : tbrTree->actions())
        action->setVisible(!shrunk || action == m_shrink);
    Q_EMIT Shrinking(shrunk);
}

int ctlSmartTreeView::ShrunkWidth() const
{
    constexpr int Margins = 8;
    return tbrTree->widgetForAction(m_shrink)->sizeHint().width() + Margins;
}

void ctlSmartTreeView::SetDescriptionHidden(bool hidden)
{
    m_descriptionHidden = hidden;
    ShowShrunk();
}

void ctlSmartTreeView::UpdateDescription(const QString& text)
{
    if (txtDescription->toPlainText() != text)
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

int ctlSmartTreeView::CoolBarFirstBandWidth() const
{
    return m_bar->FirstBandWidth();
}

void ctlSmartTreeView::SetCoolBarFirstBandWidth(int width)
{
    m_bar->SetFirstBandWidth(width);
}

} // namespace qb
