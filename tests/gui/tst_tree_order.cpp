#include "support/EditingWindow.h"

#include <QStringList>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The order of the item tree in the main window, and what reading it anew leaves as it was.
class TestTreeOrder : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void newItem_standsWhereItsTitleBelongs()
    {
        Open();
        Tree()->setCurrentIndex(Root());
        AddTitled(u"middle"_s);
        QCOMPARE(Titles(Root()), (QStringList{u"item"_s, u"middle"_s, u"other"_s}));
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        QCOMPARE(Titles(Root()), (QStringList{u"item"_s, u"middle"_s, u"other"_s}));
    }

    void newItemWithItsPresetTitle_standsThereToo()
    {
        Open();
        Tree()->setCurrentIndex(Root());
        QTest::keyClick(m_window.get(), Qt::Key_N, Qt::ControlModifier);
        QTest::keyClick(TitleEditor(), Qt::Key_Return);
        QTRY_COMPARE(Titles(Root()), (QStringList{u"item"_s, u"New Code item"_s, u"other"_s}));
    }

    void renamedItem_goesToItsPlace()
    {
        const qint64 child = AddItem(*m_database, m_item, u"child"_s);
        Q_UNUSED(child)
        Open();
        ClickOn(0);
        Tree()->expand(Child(0));
        QTest::keyClick(m_window.get(), Qt::Key_F2);
        TitleEditor()->setText(u"zebra"_s);
        Enter(TitleEditor());
        QTRY_COMPARE(Titles(Root()), (QStringList{u"other"_s, u"zebra"_s}));
        QCOMPARE(Tree()->currentIndex(), Child(1));
        QVERIFY(Tree()->isExpanded(Child(1)));
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        QCOMPARE(Titles(Root()), (QStringList{u"other"_s, u"zebra"_s}));
    }

    void readingAnew_keepsBranchesOpenAndTheItem()
    {
        const qint64 child = AddItem(*m_database, m_item, u"child"_s);
        AddItem(*m_database, child, u"leaf"_s);
        const qint64 other = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToLong();
        AddItem(*m_database, other, u"closed"_s);
        Open();
        Tree()->expand(Child(0));
        Tree()->expand(Tree()->model()->index(0, 0, Child(0)));
        const auto leaf = [this] { return Tree()->model()->index(0, 0, Tree()->model()->index(0, 0, Child(0))); };
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(leaf()).center());
        AddItem(*m_database, 0, u"added elsewhere"_s);
        m_database->Execute(u"UPDATE Items SET Title = 'item 2' WHERE ID = ?"_s, {m_item});
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        QCOMPARE(Titles(Root()), (QStringList{u"added elsewhere"_s, u"item 2"_s, u"other"_s}));
        const QModelIndex branch = Tree()->model()->index(0, 0, Child(1));
        QVERIFY(Tree()->isExpanded(Child(1)));
        QVERIFY(Tree()->isExpanded(branch));
        QVERIFY(!Tree()->isExpanded(Child(2)));
        QCOMPARE(Tree()->currentIndex(), Tree()->model()->index(0, 0, branch));
        QCOMPARE(m_window->findChild<QLabel*>(u"lblTitle"_s)->text(), u"leaf"_s);
    }

    void readingAnewWithoutTheItem_showsTheRoot()
    {
        Open();
        ClickOn(1);
        m_database->Execute(u"DELETE FROM Items WHERE Title = 'other'"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        QCOMPARE(Tree()->currentIndex(), Root());
        QVERIFY(!m_window->findChild<QLabel*>(u"lblTitle"_s)->isVisible());
    }

private:
    QLineEdit* TitleEditor() { return m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s); }
    void AddTitled(const QString& title)
    {
        QTest::keyClick(m_window.get(), Qt::Key_N, Qt::ControlModifier);
        QVERIFY(TitleEditor());
        TitleEditor()->setText(title);
        Enter(TitleEditor());
    }
    QStringList Titles(const QModelIndex& parent)
    {
        QStringList titles;
        for (int row = 0; row < Tree()->model()->rowCount(parent); ++row)
            titles << Tree()->model()->index(row, 0, parent).data().toString();
        return titles;
    }
};

QB_GUI_TEST_MAIN(TestTreeOrder)
#include "tst_tree_order.moc"
