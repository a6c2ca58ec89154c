#include "panels/TreeNodes.h"
#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace qb;
using namespace Qt::StringLiterals;

class TestTreeNodes : public QObject {
    Q_OBJECT

private:
    /// root (fruit (apple, pear), nut)
    static void Build(TreeNodes& nodes)
    {
        nodes.BeginBuild();
        nodes.Clear();
        nodes.Add(0, u"root"_s, TreeImage::OBJECTS);
        for (const auto& [id, title] :
             {std::pair(1, u"fruit"_s), std::pair(2, u"apple"_s), std::pair(3, u"pear"_s), std::pair(4, u"nut"_s)})
            nodes.Add(id, title, TreeImage::CHILD);
        for (const auto& [id, parent] : {std::pair(1, 0), std::pair(2, 1), std::pair(3, 1), std::pair(4, 0)})
            nodes.PutUnder(nodes[id], nodes[parent]);
        nodes.EndBuild();
    }

    static QStringList Titles(const std::vector<TreeNode*>& nodes)
    {
        QStringList titles;
        for (const TreeNode* node : nodes)
            titles << node->Text();
        return titles;
    }

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void model_holdsItsContract()
    {
        TreeNodes nodes;
        const QAbstractItemModelTester tester(&nodes, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(nodes.rowCount(), 0);
        Build(nodes);
        nodes.SetImages(nodes[3], TreeImage::FOLDER, TreeImage::OPENFOLDER);
        nodes.SetBold(nodes[0], true);
        Build(nodes);
        nodes.BeginBuild();
        nodes.Clear();
        nodes.EndBuild();
        QCOMPARE(nodes.Count(), 0);
    }

    void model_showsTheNodes()
    {
        TreeNodes nodes;
        Build(nodes);
        const QModelIndex root = nodes.index(0, 0);
        QCOMPARE(nodes.rowCount(), 1);
        QCOMPARE(nodes.columnCount(), 1);
        QCOMPARE(nodes.rowCount(root), 2);
        const QModelIndex pear = nodes.IndexOf(&nodes[3]);
        QCOMPARE(pear.row(), 1);
        QCOMPARE(pear.parent().parent(), root);
        QCOMPARE(nodes.NodeAt(pear), &nodes[3]);
        QCOMPARE(pear.data(Qt::DisplayRole), QVariant(u"pear"_s));
        QCOMPARE(pear.data(TreeNodes::ImageRole).toInt(), int(TreeImage::CHILD));
        QCOMPARE(pear.data(TreeNodes::BoldRole), QVariant(false));
        QVERIFY(!pear.data(Qt::ToolTipRole).isValid());
        nodes.SetTag(nodes[3], u"a description"_s);
        QCOMPARE(pear.data(Qt::ToolTipRole), QVariant(u"a description"_s));
        QVERIFY(!nodes.index(2, 0, root).isValid());
        QVERIFY(!nodes.index(0, 1, root).isValid());
    }

    void changedNode_isAnnounced()
    {
        TreeNodes nodes;
        Build(nodes);
        QSignalSpy changed(&nodes, &QAbstractItemModel::dataChanged);
        nodes.SetImages(nodes[2], TreeImage::FOLDER, TreeImage::OPENFOLDER);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex(), nodes.IndexOf(&nodes[2]));
        QCOMPARE(changed[0][2].value<QList<int>>(), (QList<int>{TreeNodes::ImageRole, TreeNodes::ExpandedImageRole}));
        nodes.SetBold(nodes[2], true);
        QCOMPARE(changed[1][2].value<QList<int>>(), QList<int>{TreeNodes::BoldRole});
        QVERIFY(nodes.IndexOf(&nodes[2]).data(TreeNodes::BoldRole).toBool());
    }

    void siblings_followTheRows()
    {
        TreeNodes nodes;
        Build(nodes);
        QCOMPARE(TreeNodes::NextSibling(nodes[2]), &nodes[3]);
        QCOMPARE(TreeNodes::PreviousSibling(nodes[3]), &nodes[2]);
        QCOMPARE(TreeNodes::NextSibling(nodes[3]), nullptr);
        QCOMPARE(TreeNodes::PreviousSibling(nodes[2]), nullptr);
        QCOMPARE(TreeNodes::NextSibling(nodes[0]), nullptr);
    }

    void key_namesTheItem_data()
    {
        QTest::addColumn<qint64>("id");
        QTest::addColumn<QString>("key");
        QTest::newRow("root") << 0ll << u"ROOT"_s;
        QTest::newRow("item") << 17ll << u"C17"_s;
        QTest::newRow("largest") << 2147483647ll << u"C2147483647"_s;
    }
    void key_namesTheItem()
    {
        QFETCH(qint64, id);
        QFETCH(QString, key);
        QCOMPARE(NodeKey(id), key);
        QCOMPARE(IdOfKey(key), id);
    }

    void imageKeys_areTheirNames_data()
    {
        QTest::addColumn<int>("image");
        const char* names[] = {"OBJECTS",      "FOLDER", "OPENFOLDER", "CHILD", "DELETED_ITEM", "CONFLICT_ITEM_INFO",
                               "CONFLICT_ITEM"};
        for (int i = 0; i < 7; ++i)
            QTest::newRow(names[i]) << i;
    }
    void imageKeys_areTheirNames()
    {
        QFETCH(int, image);
        QCOMPARE(ImageKey(TreeImage(image)), QString::fromLatin1(QTest::currentDataTag()));
    }

    void fullPath_joinsTheTextsFromTheTop()
    {
        TreeNodes nodes;
        Build(nodes);
        QCOMPARE(nodes[3].FullPath(), u"root\\fruit\\pear"_s);
        QCOMPARE(nodes[0].FullPath(), u"root"_s);
    }

    void titles_areSortedWithoutCaseAndAccents()
    {
        const QStringList shuffled{u"zebra"_s,  u"Éclair"_s, u"apple"_s,     u"Straße 2"_s,
                                   u"Banana"_s, u"Äpfel"_s,  u"strasse 1"_s, u"eclair 2"_s};
        TreeNodes nodes;
        nodes.BeginBuild();
        TreeNode& root = nodes.Add(0, u"root"_s, TreeImage::OBJECTS);
        for (int i = 0; i < shuffled.size(); ++i)
            nodes.PutUnder(nodes.Add(i + 1, shuffled[i], TreeImage::CHILD), root);
        nodes.SortChildren(root);
        nodes.EndBuild();
        QCOMPARE(Titles(root.Children.All()), (QStringList{u"Äpfel"_s, u"apple"_s, u"Banana"_s, u"Éclair"_s,
                                                           u"eclair 2"_s, u"strasse 1"_s, u"Straße 2"_s, u"zebra"_s}));
        for (size_t i = 0; i < root.Children.size(); ++i)
            QCOMPARE(root.Children[i]->Row, int(i));
    }

    void nodeWithAnotherTitle_getsToItsPlace_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("titles");
        QTest::newRow("to the begin") << 2 << u"a"_s << QStringList{u"a"_s, u"b"_s, u"d"_s, u"h"_s};
        QTest::newRow("to the end") << 0 << u"x"_s << QStringList{u"d"_s, u"f"_s, u"h"_s, u"x"_s};
        QTest::newRow("to the middle") << 3 << u"e"_s << QStringList{u"b"_s, u"d"_s, u"e"_s, u"f"_s};
        QTest::newRow("stays") << 1 << u"c"_s << QStringList{u"b"_s, u"c"_s, u"f"_s, u"h"_s};
    }
    void nodeWithAnotherTitle_getsToItsPlace()
    {
        QFETCH(int, row);
        QFETCH(QString, title);
        TreeNodes nodes;
        const QAbstractItemModelTester tester(&nodes, QAbstractItemModelTester::FailureReportingMode::QtTest);
        nodes.BeginBuild();
        TreeNode& root = nodes.Add(0, u"root"_s, TreeImage::OBJECTS);
        for (const auto& [id, text] :
             {std::pair(1, u"b"_s), std::pair(2, u"d"_s), std::pair(3, u"f"_s), std::pair(4, u"h"_s)})
            nodes.PutUnder(nodes.Add(id, text, TreeImage::CHILD), root);
        nodes.EndBuild();
        TreeNode& node = *root.Children[size_t(row)];
        nodes.SetText(node, title);
        nodes.PlaceByTitle(node);
        QTEST(Titles(root.Children.All()), "titles");
        for (size_t i = 0; i < root.Children.size(); ++i)
            QCOMPARE(root.Children[i]->Row, int(i));
    }

    void titlesThatAreEqual_areSortedByNumber_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("same") << u"title"_s << u"title"_s;
        QTest::newRow("case") << u"TITLE"_s << u"title"_s;
        QTest::newRow("accents") << u"tïtle"_s << u"title"_s;
    }
    void titlesThatAreEqual_areSortedByNumber()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        const auto less = [](qint64 leftId, const QString& left, qint64 rightId, const QString& right) {
            const QByteArray a = left.toUtf8();
            const QByteArray b = right.toUtf8();
            return TitleLess({a, leftId}, {b, rightId});
        };
        QVERIFY(less(1, first, 2, second) && less(1, second, 2, first));
        QVERIFY(!less(2, first, 1, second) && !less(2, second, 1, first));
        QVERIFY(!less(1, first, 1, first));
    }

    // Errors

    void takenKey_isRefused()
    {
        TreeNodes nodes;
        Build(nodes);
        nodes.BeginBuild();
        QB_VERIFY_RAISES(nodes.Add(3, u"another pear"_s, TreeImage::CHILD), ErrorNumber::NodeKeyExists);
        nodes.EndBuild();
        QCOMPARE(nodes[3].Text(), u"pear"_s);
        QCOMPARE(nodes.Count(), 5);
    }

    void unknownKey_isRefused()
    {
        TreeNodes nodes;
        Build(nodes);
        QCOMPARE(nodes.Find(99), nullptr);
        QB_VERIFY_RAISES(nodes[99], ErrorNumber::NodeNotFound);
        QCOMPARE(nodes.Count(), 5);
    }

    void nodeBelowItself_isRefused_data()
    {
        QTest::addColumn<int>("node");
        QTest::addColumn<int>("parent");
        QTest::newRow("its own parent") << 3 << 3;
        QTest::newRow("under its child") << 1 << 3;
        QTest::newRow("under its grandchild") << 0 << 3;
    }
    void nodeBelowItself_isRefused()
    {
        QFETCH(int, node);
        QFETCH(int, parent);
        TreeNodes nodes;
        Build(nodes);
        nodes.BeginBuild();
        QB_VERIFY_RAISES(nodes.PutUnder(nodes[node], nodes[parent]), ErrorNumber::NodeCycle);
        nodes.EndBuild();
        QCOMPARE(nodes[3].FullPath(), u"root\\fruit\\pear"_s);
        QCOMPARE(Titles(nodes[1].Children.All()), (QStringList{u"apple"_s, u"pear"_s}));
    }

    void movedNode_leavesItsOldParent()
    {
        TreeNodes nodes;
        const QAbstractItemModelTester tester(&nodes, QAbstractItemModelTester::FailureReportingMode::QtTest);
        Build(nodes);
        nodes.BeginBuild();
        nodes.PutUnder(nodes[2], nodes[4]);
        nodes.EndBuild();
        QCOMPARE(Titles(nodes[1].Children.All()), QStringList{u"pear"_s});
        QCOMPARE(Titles(nodes[4].Children.All()), QStringList{u"apple"_s});
        QCOMPARE(nodes[3].Row, 0);
    }

    // Size

    void flatTree_keepsItsOrder()
    {
        constexpr int Count = 20000;
        TreeNodes nodes;
        nodes.BeginBuild();
        TreeNode& root = nodes.Add(0, u"root"_s, TreeImage::OBJECTS);
        for (int i = Count; i > 0; --i)
            nodes.PutUnder(nodes.Add(i, u"title %1"_s.arg(i, 6, 10, QChar(u'0')), TreeImage::CHILD), root);
        nodes.SortChildren(root);
        nodes.EndBuild();
        QCOMPARE(nodes.rowCount(nodes.IndexOf(&root)), Count);
        for (int i = 1; i <= Count; ++i)
            QCOMPARE(root.Children[size_t(i) - 1]->Id, qint64(i));
        QCOMPARE(nodes.IndexOf(&nodes[Count]).row(), Count - 1);
    }

    void deepTree_isBuiltFromEitherEnd_data()
    {
        QTest::addColumn<bool>("fromTheTop");
        QTest::newRow("from the top") << true;
        QTest::newRow("from the bottom") << false;
    }
    void deepTree_isBuiltFromEitherEnd()
    {
        QFETCH(bool, fromTheTop);
        constexpr int Depth = 5000;
        TreeNodes nodes;
        nodes.BeginBuild();
        for (int i = 0; i <= Depth; ++i)
            nodes.Add(i, u"n"_s, TreeImage::CHILD);
        for (int i = 1; i <= Depth; ++i) {
            const int id = fromTheTop ? i : Depth + 1 - i;
            nodes.PutUnder(nodes[id], nodes[id - 1]);
        }
        nodes.EndBuild();
        QCOMPARE(nodes.TopLevel().size(), size_t(1));
        QModelIndex at = nodes.IndexOf(&nodes[Depth]);
        int depth = 0;
        while (at.parent().isValid()) {
            at = at.parent();
            ++depth;
        }
        QCOMPARE(depth, Depth);
        QCOMPARE(nodes[Depth].FullPath().size(), 2 * Depth + 1);
    }
};

QB_TEST_MAIN(TestTreeNodes)
#include "tst_tree_nodes.moc"
