#pragma once

#include "panels/TextStore.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QString>
#include <array>
#include <deque>
#include <memory>
#include <vector>

namespace qb {

/// The images of the item tree. The image of a node is the one place where the session
/// remembers the replication state of its item.
enum class TreeImage : quint8 {
    OBJECTS,            ///< the root
    FOLDER,             ///< an item with children
    OPENFOLDER,         ///< the expanded image of an item with children
    CHILD,              ///< an item without children
    DELETED_ITEM,       ///< in a mother: deleted in a child, waiting for a decision
    CONFLICT_ITEM_INFO, ///< in a child: in conflict at the mother
    CONFLICT_ITEM,      ///< in a mother: changed on both sides
};

/// The image's key.
QString ImageKey(TreeImage image);

struct TreeNode;

/// The children of a node in their order. Most nodes have none, and take no more than a pointer for them.
class NodeChildren {
public:
    using Nodes = std::vector<TreeNode*>;

    bool empty() const { return !m_nodes || m_nodes->empty(); }
    size_t size() const { return m_nodes ? m_nodes->size() : 0; }
    Nodes::const_iterator begin() const { return All().begin(); }
    Nodes::const_iterator end() const { return All().end(); }
    Nodes::const_reverse_iterator rbegin() const { return All().rbegin(); }
    Nodes::const_reverse_iterator rend() const { return All().rend(); }
    TreeNode* front() const { return m_nodes->front(); }
    TreeNode* back() const { return m_nodes->back(); }
    TreeNode* operator[](size_t place) const { return (*m_nodes)[place]; }
    const Nodes& All() const { return m_nodes ? *m_nodes : None; }
    /// The same, to be changed.
    Nodes& Own();

private:
    static inline const Nodes None;
    std::unique_ptr<Nodes> m_nodes;
};

/// A node of the item tree. Its key is `ROOT`, or `C` and the item's ID. There may be a million of them: their texts
/// lie in a store, and each takes half of what it would with strings of its own.
struct TreeNode {
    qint64 Id = 0;              ///< 0 is the root
    TreeNode* Parent = nullptr; ///< null at top level
    NodeChildren Children;
    KeptText Title;
    KeptText Description;
    int Row = 0; ///< among its siblings
    TreeImage Image = TreeImage::FOLDER;
    TreeImage ExpandedImage = TreeImage::FOLDER;
    bool Expanded = false;
    bool Bold = false;

    /// What the tree shows: the item's title.
    QString Text() const { return Title.ToString(); }
    /// The item's description.
    QString Tag() const { return Description.ToString(); }
    /// The root stands for no item.
    bool IsRoot() const { return Id == 0; }
    /// As NodeKey makes it.
    QString Key() const;
    /// The texts from the top down, joined by backslashes.
    QString FullPath() const;
};

inline const QString RootKey = QStringLiteral("ROOT");
/// The key of an item's node.
QString NodeKey(qint64 id);
/// The item's ID out of a node's key; 0 for the root.
qint64 IdOfKey(const QString& key);

/// An item's title, in UTF-8, and its ID.
struct TitledItem {
    QByteArrayView Title;
    qint64 Id;
};
/// Order of titles in the tree: by their letters, without regard to case and accents; then by their IDs.
bool TitleLess(const TitledItem& left, const TitledItem& right);
/// Of the nodes' titles.
bool TitleLess(const TreeNode& left, const TreeNode& right);

/// Nodes by their IDs. These mostly follow each other, so those of sixteen lie together: a tree is read in the order of
/// its titles, and a place for each ID of its own would be another miss of the processor's cache for each of them.
class NodesById {
public:
    /// The node, or null.
    TreeNode* Find(qint64 id) const;
    /// False when the ID is taken.
    bool Insert(qint64 id, TreeNode* node);
    void Remove(qint64 id);
    void Clear();
    qsizetype Count() const { return m_count; }

private:
    static constexpr int Together = 4; ///< bits of the ID that choose a place
    static constexpr qint64 Mask = (1 << Together) - 1;
    using Places = std::array<TreeNode*, 1 << Together>;

    QHash<qint64, Places> m_places;
    qsizetype m_count = 0;
};

/// The nodes of the item tree, by key and as a model for views. Lookups and changes that can't
/// be done raise RuntimeError: 35601 no such node, 35602 the key is taken, 35614 a node would
/// stand below itself.
class TreeNodes : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Role { ImageRole = Qt::UserRole, ExpandedImageRole, BoldRole };

    explicit TreeNodes(QObject* parent = nullptr);

    /// Between these two calls the nodes change without a word to the views; then all is new.
    void BeginBuild();
    void EndBuild();

    /// Adds a node at top level while building.
    TreeNode& Add(qint64 id, const QString& text, TreeImage image) { return AddRow(id, text.toUtf8(), {}, image); }
    /// The same of a row as it lies in the database, in UTF-8.
    TreeNode& AddRow(qint64 id, QByteArrayView title, QByteArrayView description, TreeImage image);
    /// Puts a node, with what stands below it, last under another while building.
    void PutUnder(TreeNode& node, TreeNode& parent);
    /// Sorts the children of a node by title while building.
    void SortChildren(TreeNode& node);
    void Clear();

    // Changes that views are told of

    /// Adds a node as the last child of @p parent.
    TreeNode& Insert(qint64 id, const QString& text, TreeImage image, TreeNode& parent);
    /// Removes a node with all that stands below it.
    void Remove(TreeNode& node);
    /// Makes a node, with all that stands below it, the last child of @p parent.
    void Move(TreeNode& node, TreeNode& parent);
    void SetText(TreeNode& node, const QString& text);
    void SetTag(TreeNode& node, const QString& tag);
    /// Puts a node among its siblings where its title belongs, as a tree that is read anew has it.
    void PlaceByTitle(TreeNode& node);

    qsizetype Count() const { return m_byId.Count(); }
    /// All nodes in the order in which they were added; removed ones stand there empty.
    std::deque<TreeNode>& All() { return m_nodes; }
    /// The node, or null.
    TreeNode* Find(qint64 id) const { return m_byId.Find(id); }
    /// The node; raises 35601 when there is none.
    TreeNode& operator[](qint64 id) const;
    TreeNode* Root() const { return Find(0); }
    /// What has no parent, once the build has ended.
    const std::vector<TreeNode*>& TopLevel() const { return m_topLevel; }

    static TreeNode* NextSibling(const TreeNode& node);
    static TreeNode* PreviousSibling(const TreeNode& node);

    void SetImages(TreeNode& node, TreeImage image, TreeImage expandedImage);
    void SetBold(TreeNode& node, bool bold);

    QModelIndex IndexOf(const TreeNode* node) const;
    TreeNode* NodeAt(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override { return !ChildrenOf(NodeAt(parent)).empty(); }
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    TreeNode& NewNode(qint64 id, QByteArrayView title, TreeImage image);
    void RefuseCycle(const TreeNode& node, const TreeNode& parent) const;
    std::vector<TreeNode*>& SiblingsOf(const TreeNode& node)
    {
        return node.Parent ? node.Parent->Children.Own() : m_topLevel;
    }
    void TakeOut(const TreeNode& node);
    void PutLast(TreeNode& node, TreeNode& parent);
    void Forget(TreeNode& node);
    const std::vector<TreeNode*>& ChildrenOf(const TreeNode* node) const
    {
        return node ? node->Children.All() : m_topLevel;
    }
    void NumberRows();

    TextStore m_texts;
    std::deque<TreeNode> m_nodes; ///< nodes never move in memory
    NodesById m_byId;
    std::vector<TreeNode*> m_topLevel;
};

} // namespace qb
