#include "store/Library.h"
#include "support/TestSession.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Reading the list of libraries and opening one; the commands that change the list are tested
/// in tst_library_list_editing.
class TestLibraryList : public QObject {
    Q_OBJECT

private:
    QString DefaultPath() const { return s->Home.Path(u"data/QBLib.qbd"_s); }

    /// The program's folder can't be made: its parent is a file.
    void SpoilTheProgramsFolder()
    {
        WriteFile(s->Home.Path(u"a file"_s), "x");
        qputenv("QUILLBASE_DATA_HOME", QFile::encodeName(s->Home.Path(u"a file/data"_s)));
    }

    void CompareMessage(int index, const QString& text, MsgBoxIcon icon)
    {
        QVERIFY(index < s->Script.Messages.size());
        QCOMPARE(s->Script.Messages[index].Text, text);
        QCOMPARE(s->Script.Messages[index].Icon, icon);
    }

    static QString NotFoundText(const QString& alias)
    {
        return u"The database %1 could not be found in the set location. It will be removed from the list and the "
               "first valid "
               "database in your list will be selected."_s.arg(alias);
    }
    inline static const QString NoLibraryText =
        u"The database you are trying to open is not a KT Quillbase database!"_s;

    std::optional<TestSession> s;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s.emplace();
    }

    void cleanup() { s.reset(); }

    // Start

    void firstStart_makesTheDefaultLibrary()
    {
        QVERIFY(s->Start());
        QCOMPARE(LibraryList::DefaultLibraryPath(), DefaultPath());
        QCOMPARE(s->OpenPath(), DefaultPath());
        QCOMPARE(s->LastDB(), DefaultPath());
        QCOMPARE(s->StoredList(), DefaultPath() + u"|KT Quillbase;"_s);
        QCOMPARE(s->Shell.Aliases, QStringList{u"KT Quillbase"_s});
        QCOMPARE(s->Shell.Index, 0);
        QCOMPARE(s->Shape(), u"KT Quillbase Library"_s);
        QCOMPARE(s->Shell.StatusText, u"VB"_s);
        QCOMPARE(s->Shell.ComboToolTip, u"Currently selected database: KT Quillbase"_s);
    }

    void firstStartBesideAnOldLibrary_keepsIt()
    {
        s->LibraryFile(u"data/QBLib.qbd"_s, u"old work"_s);
        QVERIFY(s->Start());
        QCOMPARE(s->Shape(), u"KT Quillbase Library(old work)"_s);
    }

    void secondStart_opensTheLibraryUsedLast()
    {
        const QString one = s->LibraryFile(u"eins ä.qbd"_s), two = s->LibraryFile(u"zwei.qbd"_s);
        s->Store(u"Databases"_s, u"ChosenDatabases"_s, u"%1|One;%2|Twö;"_s.arg(one, two));
        s->Store(u"Settings"_s, u"LastDB"_s, two);
        QVERIFY(s->Start());
        QCOMPARE(s->OpenPath(), two);
        QCOMPARE(s->Shell.Index, 1);
        QCOMPARE(s->Shape(), u"Twö Library(item)"_s);
        QVERIFY(!QFileInfo::exists(DefaultPath()));
    }

    void lastLibraryGone_opensTheFirstOfTheList()
    {
        const QString one = s->LibraryFile(u"one.qbd"_s);
        s->Store(u"Databases"_s, u"ChosenDatabases"_s, one + u"|One;"_s);
        s->Store(u"Settings"_s, u"LastDB"_s, s->Home.Path(u"gone.qbd"_s));
        s->Libraries.GetLastDBName();
        QCOMPARE(s->State.CurrentDatabasePath, QString());
        QVERIFY(s->Start());
        QCOMPARE(s->OpenPath(), one);
    }

    void storedList_isRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("paths");
        QTest::addColumn<QStringList>("aliases");
        QTest::newRow("one") << u"/a b/ä.qbd|Älias;"_s << QStringList{u"/a b/ä.qbd"_s} << QStringList{u"Älias"_s};
        QTest::newRow("three") << u"/a|A;/b|B;/c|C;"_s << QStringList{u"/a"_s, u"/b"_s, u"/c"_s}
                               << QStringList{u"A"_s, u"B"_s, u"C"_s};
        QTest::newRow("no end") << u"/a|A;/b|B"_s << QStringList{u"/a"_s, u"/b"_s} << QStringList{u"A"_s, u"B"_s};
        QTest::newRow("same path twice") << u"/a|A;/a|B;"_s << QStringList{u"/a"_s, u"/a"_s}
                                         << QStringList{u"A"_s, u"B"_s};
        QTest::newRow("empty alias") << u"/a|;/b|B;"_s << QStringList{u"/a"_s, u"/b"_s}
                                     << QStringList{QString(u""_s), u"B"_s};
    }
    void storedList_isRead()
    {
        QFETCH(QString, text);
        s->Store(u"Databases"_s, u"ChosenDatabases"_s, text);
        s->State.CurrentDatabasePath = u"/elsewhere"_s;
        s->Libraries.CreateDBArray();
        QStringList paths, aliases;
        for (const LibraryEntry& entry : s->State.DatabaseList) {
            paths << entry.Path;
            aliases << entry.Alias;
        }
        QTEST(paths, "paths");
        QTEST(aliases, "aliases");
        QCOMPARE(s->Shell.Aliases, aliases);
        QCOMPARE(s->Shell.Index, -1); // the current one is not in the list
        QCOMPARE(s->State.CurrentDatabasePath, u"/elsewhere"_s);
        QCOMPARE(s->StoredList(), text);
    }

    void noFolderForTheFirstLibrary_endsInAnEmptyWindow()
    {
        SpoilTheProgramsFolder();
        s->Script.ExpectError(); // at the first look
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"No Database to Use"_s);
        s->Script.ExpectFileName(u"Select a Quillbase Library Database"_s, {});
        QVERIFY(!s->Start());
        CompareMessage(
            0,
            u"Database could not be created. You will have to select existing one, or try to create a new one using "
            "the 'File' menu."_s,
            MsgBoxIcon::Critical);
        QVERIFY(s->Shell.Aliases.isEmpty());
        QCOMPARE(s->StoredList(), QString());
        QVERIFY(!s->Shell.MenusEnabled && !s->Enabled(u"NEW"_s));
        QVERIFY(!s->Details.HasDatabase);
    }

    // A library that is gone

    void missingLibrary_leavesTheListAndTheNextIsOpened()
    {
        const QString gone = s->Home.Path(u"gone.qbd"_s), two = s->LibraryFile(u"zwei.qbd"_s),
                      three = s->LibraryFile(u"drei.qbd"_s);
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        QVERIFY(s->Start(u"%1|Gone;%2|Two;%3|Three;"_s.arg(gone, two, three)));
        CompareMessage(0, NotFoundText(u"Gone"_s), MsgBoxIcon::Exclamation);
        QCOMPARE(s->OpenPath(), two);
        QCOMPARE(s->StoredList(), u"%1|Two;%2|Three;"_s.arg(two, three));
        QCOMPARE(s->Shell.Aliases, (QStringList{u"Two"_s, u"Three"_s}));
        QCOMPARE(s->Shell.Text, u"Two"_s);
    }

    void allLibrariesMissing_makeTheDefaultLibrary()
    {
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        QVERIFY(s->Start(u"%1|One;%2|Two;"_s.arg(s->Home.Path(u"1.qbd"_s), s->Home.Path(u"2.qbd"_s))));
        CompareMessage(0, NotFoundText(u"One"_s), MsgBoxIcon::Exclamation);
        CompareMessage(1, NotFoundText(u"Two"_s), MsgBoxIcon::Exclamation);
        QCOMPARE(s->OpenPath(), DefaultPath());
        QCOMPARE(s->StoredList(), QString());
        QVERIFY(s->Shell.Aliases.isEmpty());
        QCOMPARE(s->Shell.Text, u"QBLib.qbd"_s);
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Keywords"_s), 250); // of language 1
    }

    void allLibrariesMissingBesideADefaultOne_openThatAsItIs()
    {
        s->LibraryFile(u"data/QBLib.qbd"_s, u"old work"_s);
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        QVERIFY(s->Start(s->Home.Path(u"1.qbd"_s) + u"|One;"_s));
        QCOMPARE(s->Shape(), u"QBLib.qbd Library(old work)"_s);
    }

    void noLibraryAtAll_isSaid()
    {
        SpoilTheProgramsFolder();
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"No Database Found"_s);
        QVERIFY(!s->Start(s->Home.Path(u"1.qbd"_s) + u"|One;"_s));
        CompareMessage(
            1,
            u"No KT Quillbase Library database found.\nYou will have to connect a database to this program manually "
            "using the File menu."_s,
            MsgBoxIcon::Exclamation);
        QCOMPARE(s->State.CurrentDatabasePath, QString());
        QVERIFY(!s->State.CurrentDatabase);
    }

    void libraryThatVanished_isSaidWhenItIsChosen()
    {
        const QString one = s->LibraryFile(u"one.qbd"_s), two = s->LibraryFile(u"two.qbd"_s);
        QVERIFY(s->Start(u"%1|One;%2|Two;"_s.arg(one, two)));
        QVERIFY(QFile::remove(two));
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        s->Shell.SetComboIndex(1);
        CompareMessage(0, NotFoundText(u"Two"_s), MsgBoxIcon::Exclamation);
        QCOMPARE(s->OpenPath(), one);
        QCOMPARE(s->StoredList(), one + u"|One;"_s);
        QCOMPARE(s->Shell.Text, u"One"_s);
        QCOMPARE(s->LastDB(), one);
    }

    // Files that are no library

    void whatIsNoLibrary_isRefusedAndTheOldOneStaysOpen_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        QTest::newRow("text file") << u"text"_s << NoLibraryText;
        QTest::newRow("empty file") << u"empty"_s << NoLibraryText;
        QTest::newRow("folder") << u"folder"_s << NoLibraryText;
        QTest::newRow("database of another kind") << u"foreign"_s << NoLibraryText;
        QTest::newRow("library cut short") << u"cut"_s << u"'%1' is damaged or incomplete."_s;
    }
    void whatIsNoLibrary_isRefusedAndTheOldOneStaysOpen()
    {
        QFETCH(QString, kind);
        QFETCH(QString, message);
        const QString old = s->LibraryFile(u"old.qbd"_s);
        QVERIFY(s->Start(old + u"|Old;"_s));
        const QString path = s->Home.Path(u"kein Bücherregal.qbd"_s);
        if (kind == u"folder")
            QDir().mkpath(path);
        else if (kind == u"foreign")
            DBEngine::CreateDatabase(path)->Execute(u"CREATE TABLE Items (ID INTEGER)"_s);
        else
            WriteFile(path, kind == u"text"  ? QByteArray("no database at all")
                            : kind == u"cut" ? ReadFile(old).left(6000)
                                             : QByteArray());
        const QByteArray before = kind == u"folder" ? QByteArray() : ReadFile(path);

        s->Script.ExpectMsgBox(u"Invalid Database"_s);
        s->Libraries.SelectDatabase(path);
        CompareMessage(0, message.contains(u'%') ? message.arg(QDir::toNativeSeparators(path)) : message,
                       MsgBoxIcon::Exclamation);
        QCOMPARE(s->OpenPath(), old);
        QCOMPARE(s->State.CurrentDatabasePath, old);
        QCOMPARE(s->StoredList(), old + u"|Old;"_s);
        QCOMPARE(s->LastDB(), old);
        QCOMPARE(s->Shell.Text, u"Old"_s);
        QCOMPARE(s->Shape(), u"Old Library(item)"_s);
        if (kind != u"folder")
            QCOMPARE(ReadFile(path), before);
    }

    void whatIsNoLibraryInTheList_leavesItWhenChosen()
    {
        const QString one = s->LibraryFile(u"one.qbd"_s), bad = s->Home.Path(u"bad.qbd"_s);
        WriteFile(bad, "no database at all");
        QVERIFY(s->Start(u"%1|One;%2|Bad;"_s.arg(one, bad)));
        s->Script.ExpectMsgBox(u"Invalid Database"_s);
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        s->Shell.SetComboIndex(1);
        CompareMessage(0, NoLibraryText, MsgBoxIcon::Exclamation);
        CompareMessage(1, u"No valid database was found."_s, MsgBoxIcon::Exclamation);
        QCOMPARE(s->StoredList(), one + u"|One;"_s);
        QCOMPARE(s->Shell.Aliases, QStringList{u"One"_s});
        QCOMPARE(s->LastDB(), one);
        QCOMPARE(ReadFile(bad), QByteArray("no database at all"));
        QCOMPARE(s->Shell.Text, QString()); // no library is open, and none is shown
        QCOMPARE(s->Shell.Index, -1);
        QCOMPARE(s->State.CurrentDatabasePath, QString());
        s->Shell.SetComboIndex(0); // and the other one can be chosen again
        QCOMPARE(s->OpenPath(), one);
    }

    void libraryUsedLastThatIsNotInTheList_isNamedWithAStar()
    {
        const QString listed = s->LibraryFile(u"listed.qbd"_s);
        const QString interim = s->LibraryFile(u"interim.qbd"_s);
        TestSession::Store(u"Databases"_s, u"ChosenDatabases"_s, listed + u"|Listed;"_s);
        TestSession::Store(u"Settings"_s, u"LastDB"_s, interim);
        QVERIFY(s->Start());
        QCOMPARE(s->Shell.ComboText(), u"*interim.qbd"_s);
        QCOMPARE(s->Shape(), u"*interim.qbd Library(item)"_s);
    }

    void itemShownWhenALibraryIsRefused_canBeOpenedAgain()
    {
        const QString old = s->LibraryFile(u"old.qbd"_s);
        QVERIFY(s->Start(old + u"|Old;"_s));
        s->Click(u"item"_s);
        const QString bad = s->Home.Path(u"bad.qbd"_s);
        WriteFile(bad, "no database at all");
        s->Script.ExpectMsgBox(u"Invalid Database"_s);
        s->Libraries.SelectDatabase(bad);
        s->Click(u"item"_s);
        QVERIFY(s->State.oCodeItem);
        QCOMPARE(s->State.oCodeItem->Title(), u"item"_s);
    }

    // Changing

    void chosenLibrary_isOpenedAndRemembered()
    {
        const QString one = s->LibraryFile(u"one.qbd"_s, u"first"_s), two = s->LibraryFile(u"two.qbd"_s, u"second"_s);
        QVERIFY(s->Start(u"%1|One;%2|Two;"_s.arg(one, two)));
        s->Click(u"first"_s);
        s->Shell.SetComboIndex(1);
        QCOMPARE(s->OpenPath(), two);
        QCOMPARE(s->Shape(), u"Two Library(second)"_s);
        QCOMPARE(s->LastDB(), two);
        QCOMPARE(s->Shell.ComboToolTip, u"Currently selected database: Two"_s);
        QCOMPARE(s->Shell.StatusText, u"C++"_s);
        QVERIFY(s->State.moHistory->Keys().isEmpty());
        QVERIFY(!s->State.oCodeItem);
        QCOMPARE(s->Details.Item, nullptr);
        QCOMPARE(s->State.CurrentDatabase->FilesFolder(), s->Home.Path(u"two_Files/"_s));
        QVERIFY(!s->Enabled(u"BACK"_s) && !s->Enabled(u"FORWARD"_s));
        s->Click(u"second"_s); // whose visit the new history tells of
        QVERIFY(s->Enabled(u"BACK"_s) && s->Enabled(u"mnuBackItem"_s));
    }

    void controls_followTheLibrary()
    {
        QVERIFY(s->Start());
        QVERIFY(s->Shell.MenusEnabled && s->Details.HasDatabase);
        for (const QString& name : {u"NEW"_s, u"SAVE"_s, u"NEXT"_s, u"PREVIOUS"_s, u"FIND"_s, u"VIEWBOOKMARKS"_s})
            QVERIFY2(s->Enabled(name), qPrintable(name));
        const QStringList later{u"BACK"_s,           u"FORWARD"_s, u"mnuBackItem"_s,
                                u"mnuForwardItem"_s, u"DELETE"_s,  u"BOOKMARK"_s};
        for (const QString& name : later)
            QVERIFY2(!s->Enabled(name), qPrintable(name));
        s->Libraries.EnableControls(false);
        QVERIFY(!s->Shell.MenusEnabled && !s->Details.HasDatabase);
        for (const QString& name : later + QStringList{u"NEW"_s, u"SAVE"_s, u"NEXT"_s, u"PREVIOUS"_s, u"FIND"_s})
            QVERIFY2(!s->Enabled(name), qPrintable(name));
        QVERIFY(s->Enabled(u"mnuNewDatabase"_s) && s->Enabled(u"mnuOpenDatabase"_s)); // so that one can be made
    }

    void replicaState_isReadWithTheLibrary()
    {
        const QString one = s->LibraryFile(u"one.qbd"_s), two = s->LibraryFile(u"two.qbd"_s);
        MakeChild(*Library::Open(two), u"/Mütter/m.qbd"_s, s->Time.Now());
        Library::Open(two)->Execute(u"UPDATE Properties SET LastExported = 77"_s);
        QVERIFY(s->Start(u"%1|One;%2|Two;"_s.arg(one, two)));
        QVERIFY(!s->State.CurrentDatabase->IsChildReplica() && s->Enabled(u"mnuDBToolsCreateReplicaItem"_s));
        s->Shell.SetComboIndex(1);
        QVERIFY(s->State.CurrentDatabase->IsChildReplica() && !s->Enabled(u"mnuDBToolsCreateReplicaItem"_s));
        QVERIFY(s->Enabled(u"mnuDBToolsSynchronizeItem"_s));
        QCOMPARE(s->State.CurrentDatabase->LastExportedDate().Seconds(), 77);
        int told = 0;
        s->Libraries.ReplicationRead = [&told] { ++told; };
        s->State.CurrentDatabase->Execute(u"UPDATE Properties SET LastExported = 78"_s); // as an export does
        s->Libraries.UpdateGlobalSynchronizationVariables();
        QCOMPARE(s->State.CurrentDatabase->LastExportedDate().Seconds(), 78);
        QCOMPARE(told, 1);
    }
};

QB_TEST_MAIN(TestLibraryList)
#include "tst_library_list.moc"
