#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QString>
#include <deque>
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

/// A node of the item tree. Its key is `ROOT`, or `C` and the item's ID.
struct TreeNode {
    qint64 Id = 0;              ///< 0 is the root
    TreeNode* Parent = nullptr; ///< null at top level
    std::vector<TreeNode*> Children;
    QString Text;
    QString Tag; ///< the item's description
    int Row = 0; ///< among its siblings
    TreeImage Image = TreeImage::FOLDER;
    TreeImage ExpandedImage = TreeImage::FOLDER;
    bool Expanded = false;
    bool Bold = false;

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

/// Order of titles in the tree: by their letters, without regard to case and accents.
bool TitleLess(const TreeNode& left, const TreeNode& right);

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
    TreeNode& Add(qint64 id, const QString& text, TreeImage image);
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
    /// Puts a node among its siblings where its title belongs, as a tree that is read anew has it.
    void PlaceByTitle(TreeNode& node);

    qsizetype Count() const { return m_byId.size(); }
    /// All nodes in the order in which they were added; removed ones stand there empty.
    std::deque<TreeNode>& All() { return m_nodes; }
    /// The node, or null.
    TreeNode* Find(qint64 id) const { return m_byId.value(id); }
    /// The node; raises 35601 when there is none.
    TreeNode& operator[](qint64 id) const;
    TreeNode* Root() const { return Find(0); }
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
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    void RefuseCycle(const TreeNode& node, const TreeNode& parent) const;
    std::vector<TreeNode*>& SiblingsOf(const TreeNode& node)
    {
        return node.Parent ? node.Parent->Children : m_topLevel;
    }
    void TakeOut(const TreeNode& node);
    void PutLast(TreeNode& node, TreeNode& parent);
    void Forget(TreeNode& node);
    const std::vector<TreeNode*>& ChildrenOf(const TreeNode* node) const { return node ? node->Children : m_topLevel; }
    void NumberRows();

    std::deque<TreeNode> m_nodes; ///< nodes never move in memory
    QHash<qint64, TreeNode*> m_byId;
    std::vector<TreeNode*> m_topLevel;
};

} // namespace qb
