#include "panels/TreeNodes.h"

#include "find/FoldText.h"
#include "platform/system/RuntimeError.h"

#include <algorithm>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Source = u"TreeNodes"_s;
constexpr qint64 NoItem = -1; ///< a node that was removed

/// The letters of a title without case and accents.
QString SortKey(const QString& title)
{
    QString key;
    for (const QChar letter : title.normalized(QString::NormalizationForm_KD)) {
        if (letter.category() != QChar::Mark_NonSpacing)
            key += letter;
    }
    return key.toCaseFolded();
}

} // namespace

QString ImageKey(TreeImage image)
{
    switch (image) {
    case TreeImage::OBJECTS:
        return u"OBJECTS"_s;
    case TreeImage::FOLDER:
        return u"FOLDER"_s;
    case TreeImage::OPENFOLDER:
        return u"OPENFOLDER"_s;
    case TreeImage::CHILD:
        return u"CHILD"_s;
    case TreeImage::DELETED_ITEM:
        return u"DELETED_ITEM"_s;
    case TreeImage::CONFLICT_ITEM_INFO:
        return u"CONFLICT_ITEM_INFO"_s;
    case TreeImage::CONFLICT_ITEM:
        break;
    }
    return u"CONFLICT_ITEM"_s;
}

QString NodeKey(qint64 id)
{
    return id == 0 ? RootKey : u'C' + QString::number(id);
}

qint64 IdOfKey(const QString& key)
{
    return key == RootKey ? 0 : key.mid(1).toLongLong();
}

NodeChildren::Nodes& NodeChildren::Own()
{
    if (!m_nodes)
        m_nodes = std::make_unique<Nodes>();
    return *m_nodes;
}

QString TreeNode::Key() const
{
    return NodeKey(Id);
}

QString TreeNode::FullPath() const
{
    QStringList texts;
    for (const TreeNode* node = this; node; node = node->Parent)
        texts.prepend(node->Text());
    return texts.join(u'\\');
}

bool TitleLess(const TitledItem& left, const TitledItem& right)
{
    const bool plain = IsAscii(left.Title) && IsAscii(right.Title);
    const int order = plain ? left.Title.compare(right.Title, Qt::CaseInsensitive)
                            : SortKey(QString::fromUtf8(left.Title)).compare(SortKey(QString::fromUtf8(right.Title)));
    return order != 0 ? order < 0 : left.Id < right.Id;
}

bool TitleLess(const TreeNode& left, const TreeNode& right)
{
    return TitleLess({left.Title.Utf8(), left.Id}, {right.Title.Utf8(), right.Id});
}

TreeNode* NodesById::Find(qint64 id) const
{
    const auto found = m_places.constFind(id >> Together);
    return found == m_places.constEnd() ? nullptr : (*found)[size_t(id & Mask)];
}

bool NodesById::Insert(qint64 id, TreeNode* node)
{
    TreeNode*& place = m_places[id >> Together][size_t(id & Mask)];
    if (place)
        return false;
    place = node;
    ++m_count;
    return true;
}

void NodesById::Remove(qint64 id)
{
    const auto found = m_places.find(id >> Together);
    if (found != m_places.end() && std::exchange((*found)[size_t(id & Mask)], nullptr))
        --m_count;
}

void NodesById::Clear()
{
    m_places.clear();
    m_count = 0;
}

TreeNodes::TreeNodes(QObject* parent) : QAbstractItemModel(parent) {}

void TreeNodes::BeginBuild()
{
    beginResetModel();
}

void TreeNodes::EndBuild()
{
    NumberRows();
    endResetModel();
}

void TreeNodes::NumberRows()
{
    const auto number = [](const std::vector<TreeNode*>& siblings) {
        for (size_t i = 0; i < siblings.size(); ++i)
            siblings[i]->Row = int(i);
    };
    m_topLevel.clear();
    for (TreeNode& node : m_nodes) {
        if (!node.Parent && node.Id != NoItem)
            m_topLevel.push_back(&node);
        number(node.Children.All());
    }
    number(m_topLevel);
}

/// One that stands nowhere yet.
TreeNode& TreeNodes::NewNode(qint64 id, QByteArrayView title, TreeImage image)
{
    TreeNode& node = m_nodes.emplace_back();
    if (!m_byId.Insert(id, &node)) {
        m_nodes.pop_back();
        throw RuntimeError(ErrorNumber::NodeKeyExists, u"The tree has a node '%1' already."_s.arg(NodeKey(id)), Source);
    }
    node.Id = id;
    node.Title = m_texts.Keep(title);
    node.Image = node.ExpandedImage = image;
    return node;
}

TreeNode& TreeNodes::AddRow(qint64 id, QByteArrayView title, QByteArrayView description, TreeImage image)
{
    TreeNode& node = NewNode(id, title, image);
    node.Description = m_texts.Keep(description);
    return node;
}

void TreeNodes::RefuseCycle(const TreeNode& node, const TreeNode& parent) const
{
    // A node without children can only be its own parent, so most nodes need no walk.
    bool below = &node == &parent;
    for (const TreeNode* at = node.Children.empty() ? nullptr : &parent; at && !below; at = at->Parent)
        below = at == &node;
    if (below)
        throw RuntimeError(ErrorNumber::NodeCycle,
                           u"The item '%1' (%2) can't stand below itself."_s.arg(node.Text()).arg(node.Id), Source);
}

void TreeNodes::PutUnder(TreeNode& node, TreeNode& parent)
{
    RefuseCycle(node, parent);
    if (node.Parent)
        std::erase(node.Parent->Children.Own(), &node);
    node.Parent = &parent;
    parent.Children.Own().push_back(&node);
}

void TreeNodes::SortChildren(TreeNode& node)
{
    const auto less = [](const TreeNode* left, const TreeNode* right) { return TitleLess(*left, *right); };
    // They mostly come in order, and sorting what is in order costs more than looking.
    if (!std::is_sorted(node.Children.begin(), node.Children.end(), less))
        std::sort(node.Children.Own().begin(), node.Children.Own().end(), less);
}

// Changes that views are told of

/// Out of its siblings, which close up.
void TreeNodes::TakeOut(const TreeNode& node)
{
    std::vector<TreeNode*>& siblings = SiblingsOf(node);
    siblings.erase(siblings.begin() + node.Row);
    for (size_t i = size_t(node.Row); i < siblings.size(); ++i)
        siblings[i]->Row = int(i);
}

void TreeNodes::PutLast(TreeNode& node, TreeNode& parent)
{
    node.Parent = &parent;
    node.Row = int(parent.Children.size());
    parent.Children.Own().push_back(&node);
}

TreeNode& TreeNodes::Insert(qint64 id, const QString& text, TreeImage image, TreeNode& parent)
{
    TreeNode& node = NewNode(id, text.toUtf8(), image);
    const int row = int(parent.Children.size());
    beginInsertRows(IndexOf(&parent), row, row);
    PutLast(node, parent);
    endInsertRows();
    return node;
}

void TreeNodes::Remove(TreeNode& node)
{
    beginRemoveRows(IndexOf(node.Parent), node.Row, node.Row);
    TakeOut(node);
    Forget(node);
    endRemoveRows();
}

/// The node and all below it are empty from now on; others still stand where they are in memory.
void TreeNodes::Forget(TreeNode& node)
{
    std::vector<TreeNode*> branch{&node};
    while (!branch.empty()) {
        TreeNode* gone = branch.back();
        branch.pop_back();
        branch.insert(branch.end(), gone->Children.begin(), gone->Children.end());
        m_byId.Remove(gone->Id);
        *gone = TreeNode();
        gone->Id = NoItem;
    }
}

void TreeNodes::Move(TreeNode& node, TreeNode& parent)
{
    RefuseCycle(node, parent);
    const bool isLast = node.Parent == &parent && size_t(node.Row) + 1 == parent.Children.size();
    if (isLast)
        return;
    beginMoveRows(IndexOf(node.Parent), node.Row, node.Row, IndexOf(&parent), int(parent.Children.size()));
    TakeOut(node);
    PutLast(node, parent);
    endMoveRows();
}

void TreeNodes::SetText(TreeNode& node, const QString& text)
{
    node.Title = m_texts.Keep(text.toUtf8());
    const QModelIndex changed = IndexOf(&node);
    Q_EMIT dataChanged(changed, changed, {Qt::DisplayRole});
}

void TreeNodes::SetTag(TreeNode& node, const QString& tag)
{
    node.Description = m_texts.Keep(tag.toUtf8());
    const QModelIndex changed = IndexOf(&node);
    Q_EMIT dataChanged(changed, changed, {Qt::ToolTipRole});
}

void TreeNodes::PlaceByTitle(TreeNode& node)
{
    if (!node.Parent)
        return;
    std::vector<TreeNode*>& siblings = node.Parent->Children.Own();
    const auto isBefore = [&node](const TreeNode* one) { return TitleLess(*one, node); };
    const int row = int(std::count_if(siblings.begin(), siblings.end(), isBefore));
    if (row == node.Row)
        return;
    const QModelIndex parent = IndexOf(node.Parent);
    beginMoveRows(parent, node.Row, node.Row, parent, row > node.Row ? row + 1 : row);
    siblings.erase(siblings.begin() + node.Row);
    siblings.insert(siblings.begin() + row, &node);
    for (size_t i = 0; i < siblings.size(); ++i)
        siblings[i]->Row = int(i);
    endMoveRows();
}

void TreeNodes::Clear()
{
    m_topLevel.clear();
    m_byId.Clear();
    m_nodes.clear();
    m_texts.Clear();
}

TreeNode& TreeNodes::operator[](qint64 id) const
{
    TreeNode* node = Find(id);
    if (!node)
        throw RuntimeError(ErrorNumber::NodeNotFound, u"The item %1 is not in the tree."_s.arg(id), Source);
    return *node;
}

TreeNode* TreeNodes::NextSibling(const TreeNode& node)
{
    if (!node.Parent)
        return nullptr;
    const size_t next = size_t(node.Row) + 1;
    return next < node.Parent->Children.size() ? node.Parent->Children[next] : nullptr;
}

TreeNode* TreeNodes::PreviousSibling(const TreeNode& node)
{
    return node.Parent && node.Row > 0 ? node.Parent->Children[size_t(node.Row) - 1] : nullptr;
}

void TreeNodes::SetImages(TreeNode& node, TreeImage image, TreeImage expandedImage)
{
    node.Image = image;
    node.ExpandedImage = expandedImage;
    const QModelIndex changed = IndexOf(&node);
    Q_EMIT dataChanged(changed, changed, {ImageRole, ExpandedImageRole});
}

void TreeNodes::SetBold(TreeNode& node, bool bold)
{
    node.Bold = bold;
    const QModelIndex changed = IndexOf(&node);
    Q_EMIT dataChanged(changed, changed, {BoldRole});
}

QModelIndex TreeNodes::IndexOf(const TreeNode* node) const
{
    return node ? createIndex(node->Row, 0, node) : QModelIndex();
}

TreeNode* TreeNodes::NodeAt(const QModelIndex& index) const
{
    return static_cast<TreeNode*>(index.internalPointer());
}

QModelIndex TreeNodes::index(int row, int column, const QModelIndex& parent) const
{
    const std::vector<TreeNode*>& children = ChildrenOf(NodeAt(parent));
    const bool exists = column == 0 && row >= 0 && size_t(row) < children.size();
    return exists ? createIndex(row, 0, children[size_t(row)]) : QModelIndex();
}

QModelIndex TreeNodes::parent(const QModelIndex& child) const
{
    return child.isValid() ? IndexOf(NodeAt(child)->Parent) : QModelIndex();
}

int TreeNodes::rowCount(const QModelIndex& parent) const
{
    return int(ChildrenOf(NodeAt(parent)).size());
}

int TreeNodes::columnCount(const QModelIndex&) const
{
    return 1;
}

Qt::ItemFlags TreeNodes::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    // All through the view, which asks the session.
    return QAbstractItemModel::flags(index) | Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
}

QVariant TreeNodes::data(const QModelIndex& index, int role) const
{
    const TreeNode* node = NodeAt(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return node->Text();
    case Qt::ToolTipRole:
        return node->Description.IsEmpty() ? QVariant() : QVariant(node->Tag());
    case ImageRole:
        return int(node->Image);
    case ExpandedImageRole:
        return int(node->ExpandedImage);
    case BoldRole:
        return node->Bold;
    default:
        return {};
    }
}

} // namespace qb
