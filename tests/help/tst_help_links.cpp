#include "exchange/BranchImport.h"
#include "help/Handbook.h"
#include "help/ItemMail.h"
#include "help/Links.h"
#include "help/ShowHelp.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The file of links, what opens them, and mails, with programs of the desktop that only write down what they get.
class TestHelpLinks : public QObject {
    Q_OBJECT

private:
    void MakeProgram(const QString& name)
    {
        const QString program = Programs() + u'/' + name;
        WriteFile(program, "#!/bin/sh\nfor one in \"$@\"; do printf '%s\\0' \"$one\"; done > '" + Received().toUtf8()
                               + ".new'\n/bin/mv '" + Received().toUtf8() + ".new' '" + Received().toUtf8() + "'\n");
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    QString Programs() const { return m_home->Path(u"programs"_s); }
    QString Received() const { return m_home->Path(u"received"_s); }
    QStringList Arguments()
    {
        if (!QTest::qWaitFor([this] { return QFile::exists(Received()); }))
            return {u"nothing"_s};
        QStringList arguments = QString::fromUtf8(ReadFile(Received())).split(QChar(u'\0'));
        arguments.removeLast();
        return arguments;
    }
    QString Own() const { return m_home->Path(u"data"_s) + u"/KTQBLinks.txt"_s; }
    QString MailFolder() const { return m_home->Path(u"cache"_s) + u"/mail"_s; }
    QStringList Mails() const { return QDir(MailFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot); }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    QByteArray m_path;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_path = qgetenv("PATH");
        QVERIFY(QDir().mkpath(Programs()));
        QVERIFY(QDir().mkpath(m_home->Path(u"data"_s)));
        qputenv("PATH", Programs().toUtf8());
    }
    void cleanup()
    {
        qputenv("PATH", m_path);
        m_prompts.reset();
        m_home.reset();
    }

    // The file of links

    void link_isFoundByItsName()
    {
        WriteFile(Own(), "\xef\xbb\xbfQuillbase Help = https://help.example/a?b=c \r\n"
                         "# Quillbase Home = https://remark.example\n"
                         "nothing\n= https://noname.example\n"
                         "  quillbase ONLINE=https://online.example/\xc3\xa4\n"
                         "Quillbase Online = https://second.example\n"
                         "Quillbase Feedback =   \n");
        QCOMPARE(GetLink(u"Quillbase Help"_s), u"https://help.example/a?b=c"_s);
        QCOMPARE(GetLink(u"Quillbase Online"_s), u"https://online.example/ä"_s);
        QCOMPARE(GetLink(u"Quillbase Home"_s), QString());
        QCOMPARE(GetLink(u"Quillbase Feedback"_s), QString());
        QCOMPARE(GetLink(QString()), QString());
        QCOMPARE(GetLink(u"nothing"_s), QString());
    }

    void fileOfTheProgram_standsInForTheUsersOwn()
    {
        QVERIFY(LinksFile() != Own());
        WriteFile(Own(), "a = b\n");
        QCOMPARE(QFileInfo(LinksFile()).canonicalFilePath(), QFileInfo(Own()).canonicalFilePath());
    }

    // Opening

    void link_isOpenedByTheDesktop()
    {
        MakeProgram(u"xdg-open"_s);
        QVERIFY(OpenLink(u"https://example.org/a b"_s));
        QCOMPARE(Arguments(), QStringList{u"https://example.org/a b"_s});
    }

    void linkThatCannotBeOpened_isTold()
    {
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!OpenLink(u"https://example.org"_s));
        QCOMPARE(m_prompts->Messages[0].Text, u"Error Opening Link to https://example.org\r\n\r\n"
                                              "No application could be started for it."_s);
        QCOMPARE(m_prompts->Messages[0].Icon, MsgBoxIcon::Information);
    }

    void linkToAProgram_isNeverOpened_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("program") << u"/tmp/run.desktop"_s;
        QTest::newRow("option") << u"--version"_s;
        QTest::newRow("nothing") << QString();
    }
    void linkToAProgram_isNeverOpened()
    {
        QFETCH(QString, target);
        MakeProgram(u"xdg-open"_s);
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!OpenLink(target));
        QVERIFY(m_prompts->Messages[0].Text.startsWith(u"Error Opening Link to "_s + target + u"\r\n\r\n"_s));
        QVERIFY(!QFile::exists(Received()));
    }

    void nameWithoutAnAddress_isTold()
    {
        WriteFile(Own(), "");
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!OpenNamedLink(u"Quillbase Home"_s));
        QVERIFY(m_prompts->Messages[0].Text.startsWith(u"Error Opening Link to Quillbase Home\r\n\r\nThe file '"_s));
    }

    // Help

    void helpThatIsThere_isShown()
    {
        if (!Handbook::Exists())
            QSKIP("built without a window, and so without the handbook");
        QStringList shown;
        ShowHelp(u"items"_s, [&shown](const QString& topic) { shown << topic; });
        QCOMPARE(shown, QStringList{u"items"_s});
    }

    void helpThatIsMissing_isOfferedOnTheWeb()
    {
        MakeProgram(u"xdg-open"_s);
        WriteFile(Own(), "Quillbase Help = https://help.example\n");
        m_prompts->ExpectMsgBox(u"Help file not found"_s, MsgBoxResult::Yes);
        ShowHelp(
            u"items"_s, [](const QString&) { QFAIL("there is nothing to show"); }, m_home->Path(u"none"_s));
        QCOMPARE(m_prompts->Messages[0].Text,
                 u"The help file was not found. You have probably installed Quillbase without the help file. However, "
                 "you can view help on-line. To do that you have to be connected to the Internet.\r\nDo you wish to "
                 "open the on-line help now?"_s);
        QCOMPARE(m_prompts->Messages[0].Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(m_prompts->Messages[0].Icon, MsgBoxIcon::Question);
        QCOMPARE(Arguments(), QStringList{u"https://help.example"_s});
    }

    void helpOnTheWebThatIsNotWanted_isNotOpened()
    {
        MakeProgram(u"xdg-open"_s);
        WriteFile(Own(), "Quillbase Help = https://help.example\n");
        m_prompts->ExpectMsgBox(u"Help file not found"_s, MsgBoxResult::No);
        ShowHelp(
            u"items"_s, [](const QString&) { QFAIL("there is nothing to show"); }, m_home->Path(u"none"_s));
        QVERIFY(!QTest::qWaitFor([this] { return QFile::exists(Received()); }, 200));
    }

    void helpOnTheWebWithoutAnAddress_isTold()
    {
        m_prompts->ExpectMsgBox(u"Help file not found"_s, MsgBoxResult::Yes);
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        WriteFile(Own(), "");
        ShowHelp(
            u"items"_s, [](const QString&) { QFAIL("there is nothing to show"); }, m_home->Path(u"none"_s));
        QVERIFY(m_prompts->Messages[1].Text.startsWith(u"Error Opening Link to Quillbase Help\r\n\r\n"_s));
    }

    // Mails

    void mailToTheMakers_hasTheirAddress()
    {
        MakeProgram(u"xdg-email"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"WishAddress"_s, u"wish@example.org"_s);
        QVERIFY(SendToMakers(WishAddress(), u"A wish"_s));
        QCOMPARE(Arguments(), (QStringList{u"--utf8"_s, u"--subject"_s, u"A wish"_s, u"--body"_s, QString(),
                                           u"wish@example.org"_s}));
        QCOMPARE(FeedbackAddress(), QString());
    }

    void mailWithoutAMailProgram_isTold()
    {
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!SendToMakers({}, u"A wish"_s));
        QCOMPARE(m_prompts->Messages[0].Text, u"No mail program could be started."_s);
    }

    void item_isMailedWithItsExport()
    {
        MakeProgram(u"xdg-email"_s);
        WriteFile(Own(), "Quillbase Home = https://home.example\n");
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, u"Größe"_s);
        AddItem(*library, item, u"below"_s);
        QVERIFY(MailItem(*library, item));
        const QStringList arguments = Arguments();
        QCOMPARE(arguments.mid(0, 5),
                 (QStringList{u"--utf8"_s, u"--subject"_s, u"Größe (KTQuillbase exported item)"_s, u"--body"_s,
                              u"This email contains exported item in KTQuillbase proprietary format.\r\nThe item can "
                              "be imported to and viewed in KTQuillbase universal code library. You can get the "
                              "latest version of the software on https://home.example or on other colaborating "
                              "sites."_s}));
        QCOMPARE(arguments.size(), 7);
        const QString file = arguments[6];
        QCOMPARE(QFileInfo(file).fileName(), u"Größe.qbx"_s);
        const UnpackedBranch branch(file);
        QCOMPARE(branch.Items().size(), 2u);
    }

    void fileThatIsMissing_isTold()
    {
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, u"item"_s);
        AddStoredFile(*library, item, u"gone.txt"_s, "bytes", Date::FromParts(2026, 3, 2));
        for (const QString& name : StoredNames(library->FilesFolder()))
            QVERIFY(QFile::remove(QDir(library->FilesFolder()).filePath(name)));
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(QFile::exists(MailOfItem(*library, item).Attachment));
        QVERIFY(m_prompts->Messages[0].Text.endsWith(u"they are empty in the mail:\n\ngone.txt"_s));
    }

    void exportForAMail_isPrivate()
    {
        MakeProgram(u"xdg-email"_s);
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, u"item"_s);
        const Mail mail = MailOfItem(*library, item);
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
                                          | QFile::WriteOther | QFile::ExeOther;
        for (const QString& folder : {QFileInfo(mail.Attachment).absolutePath(), MailFolder()})
            QVERIFY2(!(QFile::permissions(folder) & others), qPrintable(folder));
    }

    void nameOfTheExport_holdsNothingThatHasAMeaning_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("name");
        QTest::newRow("path") << u"../../etc/passwd"_s << u"_.._etc_passwd.qbx"_s;
        QTest::newRow("option") << u"--help"_s << u"help.qbx"_s;
        QTest::newRow("list") << u"a,b='c';\"d\""_s << u"a_b=_c___d_.qbx"_s;
        QTest::newRow("address") << u"a%20b&c#d?"_s << u"a_20b_c_d_.qbx"_s;
        QTest::newRow("lines") << u"a\r\nb\tc"_s << u"a__b_c.qbx"_s;
        QTest::newRow("nothing") << u"..."_s << u"Item.qbx"_s;
        QTest::newRow("long") << QString(200, u'x') << QString(80, u'x') + u".qbx"_s;
        QTest::newRow("pair at the cut") << QString(79, u'x') + u"😀😀"_s << QString(79, u'x') + u".qbx"_s;
    }
    void nameOfTheExport_holdsNothingThatHasAMeaning()
    {
        QFETCH(QString, title);
        QFETCH(QString, name);
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, title);
        const Mail mail = MailOfItem(*library, item);
        QCOMPARE(QFileInfo(mail.Attachment).fileName(), name);
        QVERIFY(QFile::exists(mail.Attachment));
        QVERIFY(!mail.Subject.contains(u'\n'));
    }

    void mailThatCannotBeOpened_leavesNothing()
    {
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, u"item"_s);
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!MailItem(*library, item));
        QCOMPARE(Mails(), QStringList());
    }

    void mailOfAnItemThatIsNotThere_isAnError()
    {
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        for (const qint64 item : {qint64(0), qint64(99)})
            QVERIFY_THROWS_EXCEPTION(RuntimeError, MailItem(*library, item));
        QCOMPARE(Mails(), QStringList());
    }

    void export_staysUntilTheMailIsAWeekOld()
    {
        MakeProgram(u"xdg-email"_s);
        FixedClock clock(Date::FromDateTime(QDateTime::currentDateTime()));
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, u"item"_s);
        QVERIFY(MailItem(*library, item));
        clock.Set(clock.Now().AddDays(6));
        RemoveOldMails();
        QCOMPARE(Mails().size(), 1);
        clock.Set(clock.Now().AddDays(2));
        QVERIFY(MailItem(*library, item)); // the old one goes with the next
        QCOMPARE(Mails().size(), 1);
        RemoveOldMails();
        QCOMPARE(Mails().size(), 0);
    }

    void removal_followsNoLink()
    {
        FixedClock clock(Date::FromDateTime(QDateTime::currentDateTime()).AddDays(30));
        QVERIFY(QDir().mkpath(MailFolder()));
        QVERIFY(QDir().mkpath(m_home->Path(u"mine"_s)));
        WriteFile(m_home->Path(u"mine/file"_s), "x");
        QVERIFY(QFile::link(m_home->Path(u"mine"_s), MailFolder() + u"/link"_s));
        RemoveOldMails();
        QVERIFY(QFile::exists(m_home->Path(u"mine/file"_s)));
    }

    void commandMail_opensAMail()
    {
        MakeProgram(u"xdg-email"_s);
        const auto library = MakeLibrary(m_home->Path(u"a.qbd"_s));
        const qint64 item = AddItem(*library, 0, u"item"_s);
        const QString path = library->Name();
        QCOMPARE(Cli({u"mail"_s, path, QString::number(item)}).Status, 0);
        QVERIFY(Arguments().last().endsWith(u"/item.qbx"_s));
        const Outcome none = Cli({u"mail"_s, path, u"99"_s});
        QCOMPARE(none.Status, 1);
        QVERIFY2(none.Error.contains(u"There is no item 99 in the library; nothing was mailed."_s),
                 qPrintable(none.Error));
        QCOMPARE(Cli({u"mail"_s, path}).Status, 2);
        QVERIFY(QFile::remove(Programs() + u"/xdg-email"_s));
        const Outcome refused = Cli({u"mail"_s, path, QString::number(item)});
        QCOMPARE(refused.Status, 1);
        QVERIFY2(refused.Error.contains(u"No mail program could be started."_s), qPrintable(refused.Error));
    }
};

QB_TEST_MAIN(TestHelpLinks)
#include "tst_help_links.moc"
