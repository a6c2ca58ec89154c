#include "support/EditingWindow.h"
#include "support/OrdinaryUser.h"

#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Libraries in the main window that can't be written: for reading only, or their file has gone.
class TestReadOnly : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_library = m_home->Path(u"data/QBLib.qbd"_s);
    }
    void cleanup() { End(); }

    // For reading only

    void libraryForReading_saysSoAndOffersNothingThatCantWork()
    {
        Write(u"Code"_s, RtfFromPlainText(u"x = 1"_s, CodeFont));
        MakeReadOnly();
        auto user = std::make_unique<OrdinaryUser>();
        m_prompts->ExpectMsgBox(ApplicationTitle); // that it is opened for reading
        Open();
        QVERIFY2(m_window->windowTitle().contains(u"read-only"_s), qPrintable(m_window->windowTitle()));
        ClickOn(0);
        QVERIFY(m_window->findChild<QLabel*>(u"lblLockedState"_s)->text().contains(u"read-only"_s));
        m_window->findChild<QMenu*>(u"mnuItem"_s)->aboutToShow();
        for (const char* name :
             {"NEW", "SAVE", "DELETE", "mnuAddCode", "mnuNewSiblingItem", "mnuRename", "mnuDeleteCode", "mnuSaveItem",
              "mnuAddLink", "mnuAddLinkTwoWayItem", "mnuColorize", "COLORIZE"})
            QVERIFY2(!Action(QString::fromLatin1(name))->isEnabled(), name);
        for (const char* name : {"mnuFindInText", "mnuNextItem", "mnuViewRefresh", "mnuFilterTree"})
            QVERIFY2(Action(QString::fromLatin1(name))->isEnabled(), name);
        QVERIFY(!CodeButton(u"BAS_MODULE"_s)->isEnabled());
        QVERIFY(CodeButton(u"ALLTOCLIPBOARD"_s)->isEnabled());
        QVERIFY(!m_window->findChild<QToolButton*>(u"LINK_MODE"_s)->isEnabled());
        user.reset(); // who may write the picture
        TakePicture(*m_window, u"read-only"_s);
        user = std::make_unique<OrdinaryUser>();
        QVERIFY(Code()->Locked());
        QTest::keyClicks(Code(), u"typed"_s);
        QCOMPARE(Code()->Text(), u"x = 1"_s);
        Tree()->setFocus();
        for (const Qt::Key key : {Qt::Key_Insert, Qt::Key_Delete, Qt::Key_F2})
            QTest::keyClick(Tree(), key); // nobody is asked, and nothing fails
        QVERIFY(!m_window->findChild<QLineEdit*>(u"txtLabelEdit"_s));
        QTest::keyClick(m_window.get(), Qt::Key_N, Qt::ControlModifier);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        Tab(1);
        QVERIFY(!Button(u"BOLD"_s)->isEnabled());
        ClickOn(1);
        QTest::keyClick(m_window.get(), Qt::Key_F5);
        m_window->close();
        QVERIFY(m_prompts->Errors.isEmpty());
        m_window.reset();
    }

    void libraryForWriting_isNotCalledReadOnly()
    {
        Open();
        ClickOn(0);
        QCOMPARE(m_window->windowTitle(), ApplicationTitle);
        for (const char* name : {"NEW", "SAVE", "DELETE", "mnuAddCode", "mnuRename"})
            QVERIFY2(Action(QString::fromLatin1(name))->isEnabled(), name);
        QVERIFY(CodeButton(u"BAS_MODULE"_s)->isEnabled());
        QVERIFY(!Code()->Locked());
    }

    // The file has gone

    void libraryWhoseFileHasGone_saysSoAndHowToKeepTheText()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"typed"_s);
        QVERIFY(QFile::rename(m_library, m_library + u".away"_s));
        m_prompts->ExpectMsgBox(ApplicationTitle);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_prompts->Messages.size(), 1);
        const QString told = m_prompts->Messages.first().Text;
        for (const QString& part : {u"QBLib.qbd"_s, u"not there any more"_s, u"Ctrl+C"_s})
            QVERIFY2(told.contains(part), qPrintable(told));
        QCOMPARE(m_window->windowTitle(), ApplicationTitle + u" (read-only, its file has gone)"_s);
        QVERIFY(!Action(u"NEW"_s)->isEnabled());
        QVERIFY(!Action(u"mnuSaveItem"_s)->isEnabled());
        QCOMPARE(Code()->Text(), u"typed"_s);
        TakePicture(*m_window, u"library-gone"_s);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No); // stays with what was typed
        ClickOn(1);
        QCOMPARE(Tree()->currentIndex(), Child(0));
        QCOMPARE(Code()->Text(), u"typed"_s);
        QVERIFY(QFile::rename(m_library + u".away"_s, m_library));
        QEvent activate(QEvent::WindowActivate);
        QCoreApplication::sendEvent(m_window.get(), &activate);
        QTRY_COMPARE(m_window->windowTitle(), ApplicationTitle);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"typed"_s);
        QVERIFY(m_prompts->Errors.isEmpty());
    }

    void closingWithATextOfAGoneLibrary_asksAndCloses()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"typed"_s);
        QVERIFY(QFile::rename(m_library, m_library + u".away"_s));
        m_prompts->ExpectMsgBox(ApplicationTitle);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        m_window->close();
        QVERIFY(m_window->isVisible());
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        m_window->close();
        QVERIFY(!m_window->isVisible());
        QVERIFY(m_prompts->Errors.isEmpty());
    }

    void goneFile_isNoticedWhenTheWindowIsComeBackTo()
    {
        Open();
        ClickOn(0);
        QVERIFY(QFile::rename(m_library, m_library + u".away"_s));
        m_prompts->ExpectMsgBox(ApplicationTitle);
        QEvent activate(QEvent::WindowActivate);
        QCoreApplication::sendEvent(m_window.get(), &activate);
        QTRY_VERIFY(m_window->windowTitle().contains(u"its file has gone"_s));
        ClickOn(1); // and is told once
        m_window->close();
        QVERIFY(!m_window->isVisible());
        QVERIFY(m_prompts->Errors.isEmpty());
    }

    void fileThatIsAnotherOne_isNoFaultOfTheProgram()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"typed"_s);
        QVERIFY(QFile::rename(m_library, m_library + u".away"_s));
        QVERIFY(QFile::copy(m_library + u".away"_s, m_library)); // as a program does that puts back a copy
        m_prompts->ExpectMsgBox(ApplicationTitle);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY2(m_prompts->Messages.first().Text.contains(u"has gone: it was moved, renamed or deleted"_s),
                 qPrintable(m_prompts->Messages.first().Text));
        QCOMPARE(Code()->Text(), u"typed"_s);
        m_prompts->ExpectMsgBox(ApplicationTitle);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        ClickOn(1);
        QCOMPARE(Code()->Text(), u"typed"_s);
        QVERIFY(m_prompts->Errors.isEmpty());
    }

private:
    /// The library, and the folder in which its journal is written, can't be written by an ordinary user; what the
    /// program writes of its own can.
    void MakeReadOnly()
    {
        m_database.reset();
        QVERIFY(QFile::setPermissions(m_library, QFileDevice::Permissions(0x4444)));
        for (const QString& folder : {m_home->Path(), m_home->Path(u"data"_s), m_home->Path(u"config"_s)}) {
            if (QFile::exists(folder))
                QVERIFY(QFile::setPermissions(folder, QFileDevice::Permissions(0x7777)));
        }
    }

    QString m_library;
};

QB_GUI_TEST_MAIN(TestReadOnly)
#include "tst_read_only.moc"
