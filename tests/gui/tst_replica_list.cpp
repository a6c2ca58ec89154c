#include "replication/ui/frmReplicaList.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"
#include "support/ui/WorkProgress.h"

#include <QPushButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The list of a mother's children, and the menu of replication.
class TestReplicaList : public QObject, private EditingWindow {
    Q_OBJECT

private:
    void AddChild(const QString& identity, const QString& description, Date synchronized)
    {
        m_database->Execute(u"INSERT INTO ChildCopies (DBCopyID, ShortDescr, LastSynchronized) VALUES (?, ?, ?)"_s,
                            {identity, description, synchronized});
    }
    void OpenMother()
    {
        const Date now = m_clock.Now();
        MakeMother(*m_database, now);
        m_database->Execute(u"UPDATE ChildCopies SET ShortDescr = 'Laptop'"_s);
        AddChild(u"Child00002"_s, u"The machine in the office on the second floor, which is seldom switched on"_s,
                 Date::FromSeconds(now.Seconds() - 86400 * 40));
        AddChild(u"Child00003"_s, {}, Date::FromSeconds(now.Seconds() - 86400));
        m_database->Execute(u"UPDATE Items SET LastChanged = ?"_s, {Date::FromSeconds(now.Seconds() - 86400 * 2)});
        Open();
    }
    /// Opens the list by the menu and acts in it.
    void InList(const std::function<void(frmReplicaList&, QTreeWidget&)>& act)
    {
        bool acted = false;
        QTimer::singleShot(0, m_window.get(), [&acted, act] {
            auto* dialog = qobject_cast<frmReplicaList*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            act(*dialog, *dialog->findChild<QTreeWidget*>(u"lvReplicas"_s));
            acted = true;
            if (dialog->isVisible())
                dialog->reject();
        });
        Action(u"mnuDBToolsForgetReplicaItem"_s)->trigger();
        QVERIFY(acted);
    }

    FixedClock m_clock;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        WorkProgress::Delay = std::chrono::hours(1);
        m_clock.Set(Date::FromParts(2026, 3, 2, 14, 30, 5));
        Begin();
    }
    void cleanup()
    {
        QApplication::setPalette(QPalette());
        ApplyAppearance(u"System"_s, {}, 0);
        End();
    }

    void children_areListedWithWhatWaits()
    {
        OpenMother();
        InList([](frmReplicaList& dialog, QTreeWidget& list) {
            QCOMPARE(list.topLevelItemCount(), 3);
            QCOMPARE(list.headerItem()->text(0), u"Description"_s);
            QCOMPARE(list.headerItem()->text(1), u"Last Synchronized"_s);
            QCOMPARE(list.topLevelItem(0)->text(0), u"Laptop"_s);
            QCOMPARE(list.topLevelItem(0)->text(1), u"2026-03-02 14:30"_s);
            QCOMPARE(list.topLevelItem(0)->text(2), u"nothing"_s);
            QCOMPARE(list.topLevelItem(1)->text(2), u"2 changed items"_s);
            QCOMPARE(list.topLevelItem(2)->text(0), u"(no description, Child00003)"_s);
            QVERIFY(dialog.findChild<QPushButton*>(u"cmdForget"_s)->isEnabled());
            TakePicture(dialog, u"replica-list"_s);
            dialog.resize(380, 240);
            TakePicture(dialog, u"replica-list-narrow"_s);
        });
    }

    void list_isReadableInTheDark()
    {
        QApplication::setPalette(DarkPalette());
        OpenMother();
        InList([](frmReplicaList& dialog, QTreeWidget&) { TakePicture(dialog, u"replica-list-dark"_s); });
    }

    void forgottenChildren_goFromTheListWhichClosesWhenItIsEmpty()
    {
        OpenMother();
        m_prompts->ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        m_prompts->ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        m_prompts->ExpectMsgBox(u"Confirm removal"_s, MsgBoxResult::Yes);
        m_prompts->ExpectMsgBox(u"Closing form..."_s);
        InList([](frmReplicaList& dialog, QTreeWidget& list) {
            auto* cmdForget = dialog.findChild<QPushButton*>(u"cmdForget"_s);
            list.setCurrentItem(list.topLevelItem(1));
            cmdForget->click();
            QCOMPARE(list.topLevelItemCount(), 2);
            QCOMPARE(list.topLevelItem(1)->text(0), u"(no description, Child00003)"_s);
            cmdForget->click();
            QVERIFY(dialog.isVisible());
            cmdForget->click();
            QVERIFY(!dialog.isVisible());
        });
        QCOMPARE(CountOf(*m_database, u"ChildCopies"_s), 0);
        QVERIFY(!Action(u"mnuDBToolsForgetReplicaItem"_s)->isEnabled());
    }

    void listWithoutALibrary_saysSo()
    {
        Open();
        m_prompts->ExpectMsgBox(u"Error"_s);
        frmReplicaList dialog;
        QCOMPARE(dialog.exec(), int(QDialog::Rejected));
        QCOMPARE(m_prompts->Messages.last().Text, u"Database not set. (frmReplicaList; Load)"_s);
    }

    void menu_isThatOfReplication()
    {
        OpenMother();
        OpenMenu(u"mnuReplication"_s, [this] {
            auto* menu = m_window->findChild<QMenu*>(u"mnuReplication"_s);
            QVERIFY(menu);
            QVERIFY(Action(u"mnuDBToolsCreateReplicaItem"_s)->isEnabled());
            QVERIFY(Action(u"mnuDBToolsForgetReplicaItem"_s)->isVisible());
            QVERIFY(!Action(u"mnuExportAgainItem"_s)->isEnabled());
            TakePicture(*menu, u"replication-menu"_s);
        });
    }
};

QB_GUI_TEST_MAIN(TestReplicaList)
#include "tst_replica_list.moc"
