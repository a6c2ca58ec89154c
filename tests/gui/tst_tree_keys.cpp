#include "panels/TreeNodes.h"
#include "support/EditingWindow.h"

#include <QHelpEvent>
#include <QTextDocumentFragment>
#include <QToolTip>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Keys, clicks and tips in the item tree of the main window.
class TestTreeKeys : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void keysPastTheEdge_scrollToTheRow_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<QString>("title");
        QTest::newRow("End") << QList<int>{Qt::Key_End} << u"row 199"_s;
        QTest::newRow("Home") << QList<int>{Qt::Key_End, Qt::Key_Home} << QString();
        QTest::newRow("Down") << QList<int>(120, Qt::Key_Down) << u"row 119"_s;
        QTest::newRow("Up") << (QList<int>{Qt::Key_End} + QList<int>(120, Qt::Key_Up)) << u"row 079"_s;
        const QList<int> typed{Qt::Key_R, Qt::Key_O, Qt::Key_W, Qt::Key_Space, Qt::Key_1, Qt::Key_5};
        QTest::newRow("a typed title") << typed << u"row 150"_s;
    }
    void keysPastTheEdge_scrollToTheRow()
    {
        QFETCH(QList<int>, keys);
        QFETCH(QString, title);
        AddRows(200);
        OpenAtTheRoot();
        for (const int key : keys)
            key < 0x80 ? QTest::keyClick(Tree(), char(key)) : QTest::keyClick(Tree(), Qt::Key(key));
        const QModelIndex current = Tree()->currentIndex();
        QCOMPARE(current.data().toString(), title.isEmpty() ? Root().data().toString() : title);
        QVERIFY(IsSeen(current));
    }

    void pageDown_scrollsToTheRow()
    {
        AddRows(200);
        OpenAtTheRoot();
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(Tree(), Qt::Key_PageDown);
        QVERIFY(!IsSeen(Root()));
        QVERIFY(IsSeen(Tree()->currentIndex()));
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(Tree(), Qt::Key_PageUp);
        QVERIFY(IsSeen(Root()));
    }

    void homeOnTheFirstRow_comesBackToIt()
    {
        AddRows(200);
        OpenAtTheRoot();
        Tree()->scrollToBottom();
        QVERIFY(!IsSeen(Root()));
        QTest::keyClick(Tree(), Qt::Key_Home);
        QVERIFY(IsSeen(Root()));
    }

    // The key that opens all branches

    void asterisk_opensBranchesAndLeavesLeavesAlone()
    {
        const qint64 child = AddItem(*m_database, m_item, u"child"_s);
        AddItem(*m_database, child, u"leaf"_s);
        OpenAtTheRoot();
        QTest::keyClick(Tree(), Qt::Key_Asterisk);
        QVERIFY(Tree()->isExpanded(Child(0)));
        const QModelIndex below = Tree()->model()->index(0, 0, Child(0));
        QVERIFY(Tree()->isExpanded(below));
        const QModelIndex leaf = Tree()->model()->index(0, 0, below);
        QCOMPARE(leaf.data().toString(), u"leaf"_s);
        for (const QModelIndex& childless : {leaf, Child(1)}) {
            QVERIFY(!Tree()->isExpanded(childless));
            QCOMPARE(childless.data(TreeNodes::ExpandedImageRole).toInt(), int(TreeImage::CHILD));
        }
        QCOMPARE(Child(0).data(TreeNodes::ExpandedImageRole).toInt(), int(TreeImage::OPENFOLDER));
        TakePicture(*m_window, u"tree-all-open"_s);
    }

    void plusOnALeaf_opensNothing()
    {
        OpenAtTheRoot();
        ClickOn(1);
        QTest::keyClick(Tree(), Qt::Key_Plus);
        QVERIFY(!Tree()->isExpanded(Child(1)));
        QCOMPARE(Child(1).data(TreeNodes::ExpandedImageRole).toInt(), int(TreeImage::CHILD));
    }

    // Clicks

    void clickBesideTheRows_leavesTheSelection()
    {
        OpenAtTheRoot();
        ClickOn(1);
        const QPoint empty(Tree()->viewport()->width() / 2, Tree()->viewport()->height() - 3);
        QVERIFY(!Tree()->indexAt(empty).isValid());
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, empty);
        QVERIFY(Tree()->selectionModel()->isSelected(Child(1)));
        QCOMPARE(Tree()->currentIndex(), Child(1));
        const QPoint row = Tree()->visualRect(Child(1)).center();
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, Qt::ControlModifier, row);
        QVERIFY(Tree()->selectionModel()->isSelected(Child(1)));
    }

    // Tips

    void tipOfAnItem_isPlainText()
    {
        m_database->Execute(u"UPDATE Items SET Description = '<b>no markup</b> & so' WHERE ID = ?"_s, {m_item});
        OpenAtTheRoot();
        QCOMPARE(TipOn(Child(0)), u"<b>no markup</b> & so"_s);
    }

    void elidedTitle_hasATipWithAllOfIt()
    {
        const QString title = u"a title that is longer than the panel is ever, and longer "_s.repeated(3).trimmed();
        m_database->Execute(u"UPDATE Items SET Title = ?, Description = '' WHERE ID = ?"_s, {title, m_item});
        OpenAtTheRoot();
        QCOMPARE(TipOn(Child(0)), title);
        QCOMPARE(TipOn(Child(1)), QString());
    }

private:
    void AddRows(int count)
    {
        Transaction rows(*m_database);
        m_database->Execute(u"DELETE FROM Items"_s);
        for (int i = 0; i < count; ++i)
            AddItem(*m_database, 0, u"row %1"_s.arg(i, 3, 10, QLatin1Char('0')));
        rows.Commit();
    }
    void OpenAtTheRoot()
    {
        Open();
        Tree()->setFocus();
        Tree()->setCurrentIndex(Root());
    }
    bool IsSeen(const QModelIndex& index)
    {
        const QRect row = Tree()->visualRect(index);
        return row.isValid() && Tree()->viewport()->rect().contains(row.center());
    }
    /// What the tip over a row says, read as it is shown.
    QString TipOn(const QModelIndex& index)
    {
        QToolTip::hideText();
        static_cast<void>(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
        const QPoint place = Tree()->visualRect(index).center();
        QHelpEvent event(QEvent::ToolTip, place, Tree()->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(Tree()->viewport(), &event);
        if (!QToolTip::isVisible())
            return {};
        const QString text = QToolTip::text();
        return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
    }
};

QB_GUI_TEST_MAIN(TestTreeKeys)
#include "tst_tree_keys.moc"
