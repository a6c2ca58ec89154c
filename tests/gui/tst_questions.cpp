#include "help/ui/frmHelp.h"
#include "support/EditingWindow.h"
#include "support/ui/DialogPrompts.h"

#include <QMessageBox>
#include <QPushButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Questions of the main window whose No loses what was typed, in their real dialogs: neither Escape nor
/// the close button answers them.
class TestQuestions : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_asked.clear();
        m_before = Prompts::SetCurrent(&m_dialogs);
    }
    void cleanup()
    {
        Prompts::SetCurrent(m_before);
        End();
    }

    void leavingAChangedItem_asksUntilItIsAnswered()
    {
        TypeWithoutAutoSave();
        AnswerAfterTryingToEscape(QMessageBox::Yes);
        ClickOn(1);
        QCOMPARE(m_asked, QStringList{u"Save Item"_s});
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"typed"_s);
    }

    void no_stillDropsTheChanges()
    {
        TypeWithoutAutoSave();
        AnswerAfterTryingToEscape(QMessageBox::No);
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), QString());
    }

    void closingTheWindow_asksUntilItIsAnswered()
    {
        TypeWithoutAutoSave();
        AnswerAfterTryingToEscape(QMessageBox::Yes);
        m_window->close();
        QCOMPARE(m_asked, QStringList{u"Save Item"_s});
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"typed"_s);
    }

    void textsOfACrash_areOfferedAgainAfterEscape()
    {
        TypeAndDie(u"typed"_s);
        Answer([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        Open();
        QVERIFY(Code()->Text() != u"typed"_s);
        m_window.reset();
        Answer([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
        Open();
        QCOMPARE(m_asked, (QStringList{u"Unsaved Changes"_s, u"Unsaved Changes"_s}));
        QCOMPARE(Code()->Text(), u"typed"_s);
    }

    void itemThatAChildHasDeleted_isAskedAboutUntilItIsAnswered()
    {
        MakeMother(*m_database, Date());
        m_database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_item});
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"typed"_s);
        AnswerAfterTryingToEscape(QMessageBox::Yes);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_asked, QStringList{u"Update this item and reset its 'Deleted' status?"_s});
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"typed"_s);
    }

    void questionWhoseNoLosesNothing_isLeftByEscape()
    {
        Open();
        ClickOn(0);
        QTimer::singleShot(0, this, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            m_asked << box->windowTitle();
            QTest::keyClick(box, Qt::Key_Escape);
        });
        QTest::keyClick(Tree(), Qt::Key_Delete);
        QCOMPARE(m_asked, QStringList{u"Delete Stored Item"_s});
        QCOMPARE(m_database->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong(), 2);
    }

    void help_isShownBesideTheBoxAndIsNoAnswer()
    {
        Open();
        const auto answerOf = [this](const std::function<void(QMessageBox&)>& answer) {
            Answer(answer);
            const MsgBoxResult result = m_dialogs.MsgBox(
                {.Text = u"The clock is wrong."_s, .Caption = u"Alert"_s, .HelpName = u"frmSystemDateAlert"_s});
            return result;
        };
        QString topic;
        QCOMPARE(answerOf([&topic](QMessageBox& box) {
                     box.button(QMessageBox::Help)->click();
                     QVERIFY(box.isVisible());
                     TakePicture(box, u"question-help"_s);
                     const auto* help = box.findChild<frmHelp*>();
                     QVERIFY(help);
                     topic = help->Topic();
                     box.button(QMessageBox::Ok)->click();
                 }),
                 MsgBoxResult::Ok);
        QCOMPARE(topic, u"replication#when-the-clock-is-wrong"_s);
        QCOMPARE(answerOf([](QMessageBox& box) {
                     QCOMPARE(box.defaultButton(), box.button(QMessageBox::Ok));
                     QTest::keyClick(&box, Qt::Key_Escape);
                     QVERIFY(!box.isVisible());
                 }),
                 MsgBoxResult::Ok);
        Answer([](QMessageBox& box) {
            QVERIFY(!box.button(QMessageBox::Help));
            box.close();
        });
        m_dialogs.MsgBox({.Text = u"Done."_s, .Caption = u"Done"_s});
    }

private:
    void TypeWithoutAutoSave()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"AutoSave"_s, u"False"_s);
        Open();
        if (Action(u"mnuAutoSaveItem"_s)->isChecked())
            Action(u"mnuAutoSaveItem"_s)->trigger();
        ClickOn(0);
        QTest::keyClicks(Code(), u"typed"_s);
    }
    /// The next box stays when Escape is pressed and when it is closed, and goes by the button.
    void Answer(const std::function<void(QMessageBox&)>& answer)
    {
        QTimer::singleShot(0, this, [this, answer] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            m_asked << box->windowTitle();
            answer(*box);
        });
    }
    void AnswerAfterTryingToEscape(QMessageBox::StandardButton answer)
    {
        QTimer::singleShot(0, this, [this, answer] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            m_asked << box->windowTitle();
            QTest::keyClick(box, Qt::Key_Escape);
            QVERIFY(box->isVisible());
            box->close();
            QVERIFY(box->isVisible());
            QVERIFY(!(box->windowFlags() & Qt::WindowCloseButtonHint));
            TakePicture(*box, u"question-%1"_s.arg(m_asked.last().left(4)));
            box->button(answer)->click();
        });
    }

    DialogPrompts m_dialogs;
    Prompts* m_before = nullptr;
    QStringList m_asked;
};

QB_GUI_TEST_MAIN(TestQuestions)
#include "tst_questions.moc"
