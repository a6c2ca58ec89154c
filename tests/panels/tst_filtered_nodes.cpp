#include "panels/FilteredNodes.h"
#include "support/TestRun.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The tree narrowed to titles that hold a text.
class TestFilteredNodes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_nodes.BeginBuild();
        m_nodes.Clear();
        for (const auto& [id, text, parent] :
             {std::tuple(0, u"Library item"_s, -1), std::tuple(1, u"Files"_s, 0), std::tuple(2, u"Read a file"_s, 1),
              std::tuple(3, u"Sockets"_s, 0), std::tuple(4, u"Übung"_s, 3), std::tuple(5, u"profile"_s, 4),
              std::tuple(6, u"Write"_s, 1)}) {
            TreeNode& node = m_nodes.Add(id, text, TreeImage::CHILD);
            if (parent >= 0)
                m_nodes.PutUnder(node, m_nodes[parent]);
        }
        m_nodes.EndBuild();
    }

    void matches_standUnderTheirAncestors_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shape");
        QTest::addColumn<int>("matches");
        QTest::newRow("some") << u"FILE"_s << u"Library item(*Files(*Read a file) Sockets(Übung(*profile)))"_s << 3;
        QTest::newRow("one") << u"wri"_s << u"Library item(Files(*Write))"_s << 1;
        QTest::newRow("letters beyond ASCII") << u"üB"_s << u"Library item(Sockets(*Übung))"_s << 1;
        QTest::newRow("none") << u"nothing"_s << QString() << 0;
        QTest::newRow("the root is no item") << u"library"_s << QString() << 0;
        QTest::newRow("no text") << QString() << QString() << 0;
    }
    void matches_standUnderTheirAncestors()
    {
        QFETCH(QString, text);
        QFETCH(QString, shape);
        QFETCH(int, matches);
        FilteredNodes filtered(m_nodes);
        const QAbstractItemModelTester tester(&filtered, QAbstractItemModelTester::FailureReportingMode::QtTest);
        filtered.SetFilter(text);
        QCOMPARE(Shape(filtered), shape);
        QCOMPARE(filtered.MatchCount(), matches);
        QCOMPARE(filtered.FirstMatch() != nullptr, matches > 0);
    }

    void firstMatch_isTheFirstFromTheTop()
    {
        FilteredNodes filtered(m_nodes);
        filtered.SetFilter(u"ofile"_s);
        QCOMPARE(filtered.FirstMatch()->Id, 5);
        filtered.SetFilter(u"file"_s);
        QCOMPARE(filtered.FirstMatch()->Id, 1);
    }

    void node_isFoundInBothDirections()
    {
        FilteredNodes filtered(m_nodes);
        filtered.SetFilter(u"profile"_s);
        const QModelIndex index = filtered.IndexOf(m_nodes.Find(5));
        QCOMPARE(filtered.NodeAt(index), m_nodes.Find(5));
        QCOMPARE(index, filtered.index(index.row(), 0, index.parent()));
        QCOMPARE(index.data().toString(), u"profile"_s);
        QVERIFY(index.data(TreeNodes::BoldRole).toBool());
        QVERIFY(!index.parent().data(TreeNodes::BoldRole).toBool());
        QVERIFY(!filtered.IndexOf(m_nodes.Find(2)).isValid());
    }

    void viewsHearOfAnotherFilter()
    {
        FilteredNodes filtered(m_nodes);
        QSignalSpy begun(&filtered, &QAbstractItemModel::modelAboutToBeReset);
        QSignalSpy done(&filtered, &QAbstractItemModel::modelReset);
        filtered.SetFilter(u"file"_s);
        QCOMPARE(begun.size(), 1);
        QCOMPARE(done.size(), 1);
    }

    void removedNode_isNotFound()
    {
        m_nodes.Remove(m_nodes[3]);
        FilteredNodes filtered(m_nodes);
        filtered.SetFilter(u"file"_s);
        QCOMPARE(Shape(filtered), u"Library item(*Files(*Read a file))"_s);
    }

private:
    /// Titles with their children in brackets; "*" before a match.
    static QString Shape(const FilteredNodes& model, const QModelIndex& parent = {})
    {
        QStringList texts;
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex index = model.index(row, 0, parent);
            const QString below = Shape(model, index);
            texts << (index.data(TreeNodes::BoldRole).toBool() ? u"*"_s : QString()) + index.data().toString()
                         + (below.isEmpty() ? QString() : u'(' + below + u')');
        }
        return texts.join(u' ');
    }

    TreeNodes m_nodes;
};

QTEST_GUILESS_MAIN(TestFilteredNodes)
#include "tst_filtered_nodes.moc"
