#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "support/EditingWindow.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QStackedWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The filter over the item tree, by the keys of the main window.
class TestTreeFilter : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void textWithoutAHit_saysSo()
    {
        Open();
        ClickOn(0);
        StartFilter();
        QTest::keyClicks(Filter(), u"no <b>such"_s);
        auto* label = m_window->findChild<QLabel*>(u"lblNoMatch"_s);
        QVERIFY(label->isVisible());
        QCOMPARE(label->text(), u"No title holds “no <b>such”."_s);
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QVERIFY(!Tree()->isVisible());
        TakePicture(*m_window, u"filter-no-match"_s);
        Filter()->setText(u"oth"_s);
        QVERIFY(!label->isVisible());
        QVERIFY(Found()->isVisible());
        Filter()->setText(u"xyz"_s);
        QTest::keyClick(Filter(), Qt::Key_Escape);
        QVERIFY(Tree()->isVisible());
        QVERIFY(Tree()->hasFocus());
    }

    void down_leadsToTheHit()
    {
        Open();
        ClickOn(0);
        Tree()->setCurrentIndex(Root()); // which stands in what is found, too, and is no hit
        StartFilter();
        QTest::keyClicks(Filter(), u"oth"_s);
        QTest::keyClick(Filter(), Qt::Key_Down);
        QVERIFY(Found()->hasFocus());
        QCOMPARE(Found()->currentIndex().data().toString(), u"other"_s);
        QTest::keyClick(Found(), Qt::Key_Return);
        QCOMPARE(Title(), u"other"_s);
    }

    void enter_leadsToTheHit()
    {
        Open();
        ClickOn(0);
        StartFilter();
        QTest::keyClicks(Filter(), u"oth"_s);
        QTest::keyClick(Filter(), Qt::Key_Return);
        QCOMPARE(Title(), u"other"_s);
        QCOMPARE(Found()->currentIndex().data().toString(), u"other"_s);
    }

    void key_worksWhereverTheFocusIs_data()
    {
        QTest::addColumn<QString>("focus");
        QTest::addColumn<int>("tab");
        QTest::newRow("tree") << u"tvwTree"_s << 0;
        QTest::newRow("code") << u"rtbCode"_s << 0;
        QTest::newRow("notes") << u"rtbNotes"_s << 1;
        QTest::newRow("usage") << u"rtbUsage"_s << 2;
        QTest::newRow("files") << u"lvFiles"_s << 3;
        QTest::newRow("info") << u"txtInfo"_s << 0;
        QTest::newRow("bookmarks") << u"lvBookMarks"_s << 0;
        QTest::newRow("libraries") << u"cboDatabase"_s << 0;
        QTest::newRow("tabs") << u"tbsTabs"_s << 0;
        QTest::newRow("description") << u"txtItemDescription"_s << 0;
    }
    void key_worksWhereverTheFocusIs()
    {
        QFETCH(QString, focus);
        QFETCH(int, tab);
        Open();
        ClickOn(0);
        Tab(tab);
        m_window->findChild<ctlBookmarks*>()->SetDisplayedTab(focus == u"txtInfo"_s ? 2 : 0);
        auto* widget = m_window->findChild<QWidget*>(focus);
        widget->setFocus();
        QVERIFY(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(Filter()->hasFocus());
    }

    void key_worksOnTheWelcomePage()
    {
        Open();
        Tree()->setCurrentIndex(Root());
        Tree()->setFocus();
        StartFilter();
        QVERIFY(Filter()->hasFocus());
    }

    void key_bringsBackATreeThatIsHidden()
    {
        Open();
        ClickOn(0);
        auto* panel = m_window->findChild<ctlSmartTreeView*>(u"tvCodeItems"_s);
        panel->AutoHideTree(true);
        Code()->setFocus();
        StartFilter();
        QVERIFY(Filter()->isVisible());
        QVERIFY(Filter()->hasFocus());
    }

private:
    QLineEdit* Filter() { return m_window->findChild<QLineEdit*>(u"txtFilter"_s); }
    QTreeView* Found() { return m_window->findChild<QTreeView*>(u"tvwFound"_s); }
    QString Title() { return m_window->findChild<QLabel*>(u"lblTitle"_s)->text(); }
    void StartFilter() { QTest::keyClick(m_window->focusWidget(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier); }
};

QB_GUI_TEST_MAIN(TestTreeFilter)
#include "tst_tree_filter.moc"
