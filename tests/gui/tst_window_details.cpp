#include "config/CSettings.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/frmSettings.h"
#include "support/EditingWindow.h"

#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QComboBox>
#include <QMenuBar>
#include <QTabBar>
#include <memory>
#include <vector>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the main window says and offers beside its panels: status bar, history, keys of its parts.
class TestWindowDetails : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    // Status bar

    void statusBar_namesTheItemThatIsShown()
    {
        const qint64 child = AddItem(*m_database, m_item, u"child"_s);
        Q_UNUSED(child)
        Open();
        const QString language = Status();
        QVERIFY(!language.isEmpty());
        ClickOn(0);
        QTest::keyClick(Tree(), Qt::Key_Right); // opens the branch
        QCOMPARE(Status(), u"item"_s);
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Child(1)).center());
        QCOMPARE(Status(), u"other"_s);
        m_window->findChild<QAction*>(u"mnuRename"_s)->trigger();
        m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s)->setText(u"third"_s);
        Enter(m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s));
        QCOMPARE(Status(), u"third"_s);
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Root()).center());
        QCOMPARE(Status(), language);
    }

    // History

    void backFromTheRoot_goesToTheItemThatWasLeft()
    {
        Open();
        ClickOn(0);
        ClickOn(1);
        ClickRoot();
        QTest::keyClick(m_window.get(), Qt::Key_Left, Qt::ControlModifier);
        QCOMPARE(Title(), u"other"_s);
        QTest::keyClick(m_window.get(), Qt::Key_Left, Qt::ControlModifier);
        QCOMPARE(Title(), u"item"_s);
        QVERIFY(!Action(u"BACK"_s)->isEnabled());
        ClickRoot();
        QVERIFY(Action(u"BACK"_s)->isEnabled()); // there is a way back from here
        QTest::keyClick(m_window.get(), Qt::Key_Left, Qt::ControlModifier);
        QCOMPARE(Title(), u"item"_s);
        QVERIFY(!Action(u"BACK"_s)->isEnabled());
    }

    // Keys and looks of parts

    void keysOfMenusAndTabs_areEachThereOnce()
    {
        Open();
        ClickOn(0);
        QStringList keys;
        const auto take = [&keys](const QString& caption) {
            const QKeySequence key = QKeySequence::mnemonic(caption);
            QVERIFY2(!key.isEmpty(), qPrintable(caption));
            QVERIFY2(!keys.contains(key.toString()), qPrintable(caption));
            keys << key.toString();
        };
        for (const QAction* menu : m_window->menuBar()->actions()) {
            if (menu->isVisible())
                take(menu->text());
        }
        const auto* tabs = m_window->findChild<QTabWidget*>(u"tbsTabs"_s);
        for (int i = 0; i < tabs->count(); ++i)
            take(tabs->tabText(i));
    }

    void keysOfTabs_leadToThem()
    {
        Open();
        ClickOn(0);
        QTest::keyClick(m_window.get(), Qt::Key_N, Qt::AltModifier);
        QCOMPARE(m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->currentIndex(), 1);
        QTest::keyClick(m_window.get(), Qt::Key_U, Qt::AltModifier);
        QCOMPARE(m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->currentIndex(), 2);
    }

    void rename_paintsNothingThatStaysAsItWas()
    {
        Write(u"Description"_s, u"what it does"_s);
        Open();
        ClickOn(0);
        m_window->findChild<QAction*>(u"mnuRename"_s)->trigger();
        auto* editor = m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s);
        editor->setText(u"renamed"_s);
        SettlePaint();
        const EventCount ofTree(*Tree()->viewport(), QEvent::Paint);
        const auto paintOf = [](QWidget* widget) { return std::make_unique<EventCount>(*widget, QEvent::Paint); };
        QToolBar* sections = m_window->findChild<QToolBar*>(u"tbrCode"_s);
        std::vector<std::unique_ptr<EventCount>> unchanged;
        unchanged.push_back(paintOf(Code()->viewport()));
        unchanged.push_back(paintOf(m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->tabBar()));
        unchanged.push_back(paintOf(sections->widgetForAction(sections->actions().first())));
        unchanged.push_back(paintOf(m_window->findChild<QComboBox*>(u"cboLinkedItems"_s)));
        unchanged.push_back(paintOf(m_window->findChild<QAbstractScrollArea*>(u"txtItemDescription"_s)->viewport()));
        Enter(editor);
        SettlePaint();
        QCOMPARE(Title(), u"renamed"_s);
        QVERIFY(ofTree.Count() > 0);
        for (size_t i = 0; i < unchanged.size(); ++i)
            QVERIFY2(unchanged[i]->Count() == 0, qPrintable(QString::number(i)));
    }

    void emptyLinkBox_staysDisabledWhenTheTreeComesBack()
    {
        Open();
        ClickOn(0);
        auto* box = m_window->findChild<QComboBox*>(u"cboLinkedItems"_s);
        QVERIFY(!box->isEnabled());
        QAction* shrink = m_window->findChild<ctlSmartTreeView*>(u"tvCodeItems"_s)->findChild<QAction*>(u"SHRINK"_s);
        shrink->trigger();
        shrink->trigger();
        QVERIFY(box->isVisible());
        QVERIFY(!box->isEnabled());
    }

    void optionOfWalking_saysThatItIsWalked()
    {
        Open();
        frmSettings dialog;
        dialog.InitializeSettings(m_window->Settings(), m_database.get());
        const QString label = dialog.findChild<QCheckBox*>(u"chkExpandBranches"_s)->text();
        QVERIFY2(label.contains(u"Next and previous item"_s) && !label.contains(u"loaded"_s), qPrintable(label));
        TakePicture(dialog, u"options-walking"_s);
    }

private:
    QString Status() { return m_window->findChild<QLabel*>(u"sbrMainPanel1"_s)->text(); }
    /// What has been asked for is laid out and painted.
    static void SettlePaint()
    {
        constexpr int Rounds = 5;
        for (int i = 0; i < Rounds; ++i)
            QCoreApplication::processEvents();
    }
    QString Title() { return m_window->findChild<QLabel*>(u"lblTitle"_s)->text(); }
    void ClickRoot() { QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Root()).center()); }
};

QB_GUI_TEST_MAIN(TestWindowDetails)
#include "tst_window_details.moc"
