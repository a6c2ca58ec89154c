#include "support/EditingWindow.h"

#include "exchange/BranchImport.h"

#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The commands of the menu Help, and the mail of an item, with programs of the desktop that only write down what they
/// get.
class TestHelpCommands : public QObject, private EditingWindow {
    Q_OBJECT

private:
    void MakeProgram(const QString& name)
    {
        const QString program = m_home->Path(u"programs/"_s + name);
        WriteFile(program, "#!/bin/sh\nfor one in \"$@\"; do printf '%s\\0' \"$one\"; done > '" + Received().toUtf8()
                               + ".new'\n/bin/mv '" + Received().toUtf8() + ".new' '" + Received().toUtf8() + "'\n");
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    QString Received() const { return m_home->Path(u"received"_s); }
    QStringList Arguments()
    {
        if (!QTest::qWaitFor([this] { return QFile::exists(Received()); }))
            return {u"nothing"_s};
        QStringList arguments = QString::fromUtf8(ReadFile(Received())).split(QChar(u'\0'));
        arguments.removeLast();
        return arguments;
    }

    QByteArray m_path;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_path = qgetenv("PATH");
        QVERIFY(QDir().mkpath(m_home->Path(u"programs"_s)));
        qputenv("PATH", m_home->Path(u"programs"_s).toUtf8());
    }
    void cleanup()
    {
        qputenv("PATH", m_path);
        End();
    }

    void commandsToTheWeb_areThoseWithAnAddress()
    {
        MakeProgram(u"xdg-open"_s);
        WriteFile(m_home->Path(u"data/KTQBLinks.txt"_s), "Quillbase Home = https://home.example\n"
                                                         "Quillbase WishSubmit = \n");
        Open();
        QVERIFY(Action(u"mnuHomePageItem"_s)->isVisible());
        for (const QString& name : {u"mnuHelpOnlineItem"_s, u"mnuOnlineItem"_s, u"mnuFeedbackFormItem"_s,
                                    u"mnuBugFormItem"_s, u"mnuWishFormItem"_s})
            QVERIFY2(!Action(name)->isVisible(), qPrintable(name));
        Action(u"mnuHomePageItem"_s)->trigger();
        QCOMPARE(Arguments(), QStringList{u"https://home.example"_s});
    }

    void mailsToTheMakers_areOpened_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("setting");
        QTest::newRow("wish") << u"mnuMailWishItem"_s << u"WishAddress"_s;
        QTest::newRow("feedback") << u"mnuMailFeedbackItem"_s << u"FeedbackAddress"_s;
    }
    void mailsToTheMakers_areOpened()
    {
        QFETCH(QString, command);
        QFETCH(QString, setting);
        MakeProgram(u"xdg-email"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, setting, u"someone@example.org"_s);
        Open();
        Action(command)->trigger();
        QCOMPARE(Arguments().last(), u"someone@example.org"_s);
    }

    void itemThatIsShown_isMailedAsItStands()
    {
        MakeProgram(u"xdg-email"_s);
        Open();
        m_window->show();
        QVERIFY(!Action(u"mnuMailItem"_s)->isEnabled()); // nothing is selected yet
        ClickOn(0);
        QVERIFY(Action(u"mnuMailItem"_s)->isEnabled());
        Code()->setFocus();
        QTest::keyClicks(Code(), u"typed"_s);
        Action(u"mnuMailItem"_s)->trigger();
        const QStringList arguments = Arguments();
        QCOMPARE(arguments.value(2), u"item (KTQuillbase exported item)"_s);
        QCOMPARE(QFileInfo(arguments.last()).fileName(), u"item.qbx"_s);
        QVERIFY(Read(u"Code"_s).contains(u"typed"_s)); // saved before it was exported
        const UnpackedBranch branch(arguments.last());
        QCOMPARE(branch.Items().front().Title, u"item"_s);
        QVERIFY(!QApplication::overrideCursor());
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Root()).center());
        QVERIFY(!Action(u"mnuMailItem"_s)->isEnabled());
    }

    void mailWithoutAMailProgram_isTold()
    {
        Open();
        m_window->show();
        ClickOn(0);
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        Action(u"mnuMailItem"_s)->trigger();
        QCOMPARE(m_prompts->Messages.last().Text, u"No mail program could be started."_s);
    }
};

QB_GUI_TEST_MAIN(TestHelpCommands)
#include "tst_help_commands.moc"
