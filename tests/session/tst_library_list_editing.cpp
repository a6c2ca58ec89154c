#include "platform/dao/DBEngine.h"
#include "support/ErrorRoutine.h"
#include "support/TestSession.h"

#include <QDir>
#include <QRegularExpression>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The commands that change the list of libraries.
class TestLibraryListEditing : public QObject {
    Q_OBJECT

private:
    /// Starts with two libraries in the list, the first one open.
    void StartWithTwo()
    {
        m_one = s->LibraryFile(u"eins ä.qbd"_s, u"first"_s);
        m_two = s->LibraryFile(u"zwei.qbd"_s, u"second"_s);
        m_list = u"%1|One;%2|Two;"_s.arg(m_one, m_two);
        QVERIFY(s->Start(m_list));
    }

    /// Adds the side folders of a library with a file in each.
    static void AddSideFolders(const QString& library)
    {
        WriteFile(FilesFolderOf(library) + u"1 - a ü.txt"_s, "file");
        WriteFile(HTMLFolderOf(library) + u"1.htm"_s, "page");
    }

    QString LastMessage() const { return s->Script.Messages.isEmpty() ? QString() : s->Script.Messages.last().Text; }
    MsgBoxIcon LastIcon() const { return s->Script.Messages.last().Icon; }
    /// Without the marks of libraries that are open.
    QStringList FilesInTheFolder() const
    {
        return QDir(s->Home.Path())
            .entryList(QDir::Files | QDir::Hidden)
            .filter(QRegularExpression(u"^(?!.*\\.open-)"_s));
    }

    void ExpectAlias(const std::optional<QString>& alias)
    {
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, alias);
    }

    inline static const QString Separators = u"\"|\" and \";\", which separate the entries of the list of libraries."_s;

    std::optional<TestSession> s;
    QString m_one, m_two, m_list;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s.emplace();
    }

    void cleanup() { s.reset(); }

    // Adding an existing library

    void addedLibrary_isOpenedAndListedUnderItsAlias()
    {
        StartWithTwo();
        const QString path = s->LibraryFile(u"drei ß.qbd"_s, u"third"_s);
        s->Script.ExpectFileName(u"Select a Quillbase Library Database"_s, path);
        ExpectAlias(u"Dreï"_s);
        s->Libraries.mnuOpenDatabase_Click();
        QCOMPARE(s->Script.Questions.first().Filter, u"KT Quillbase Files|*.qbd;*.qbr"_s);
        QVERIFY(!s->Script.Questions.first().Save);
        QCOMPARE(
            s->Script.InputTexts,
            QStringList{
                u"Do you wish to include this database to the list of your favourite databases?\nIf so, enter an alias "
                "for this database to be used in the list. Otherwise select Cancel."_s});
        QCOMPARE(s->Script.InputPresets, QStringList{u"drei ß.qbd"_s});
        QCOMPARE(s->OpenPath(), path);
        QCOMPARE(s->StoredList(), m_list + path + u"|Dreï;"_s);
        QCOMPARE(s->LastDB(), path);
        QCOMPARE(s->Shell.Index, 2);
        QCOMPARE(s->Shape(), u"Dreï Library(third)"_s);
    }

    /// Another program has added, renamed and removed libraries meanwhile.
    void listThatAnotherProgramChanged_isPutTogether()
    {
        StartWithTwo();
        const QString theirs = s->LibraryFile(u"theirs.qbd"_s, u"x"_s);
        const QString stored = u"%1|Eins;%2|Theirs;"_s.arg(m_one, theirs); // one renamed, two removed, one added
        SaveSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s, stored);
        const QString path = s->LibraryFile(u"drei ß.qbd"_s, u"third"_s);
        s->Script.ExpectFileName(u"Select a Quillbase Library Database"_s, path);
        ExpectAlias(u"Dreï"_s);
        s->Libraries.mnuOpenDatabase_Click();
        QCOMPARE(s->StoredList(), stored + path + u"|Dreï;"_s);
        s->Libraries.ChangeAlias(u"Drei"_s, false);
        QCOMPARE(s->StoredList(), stored + path + u"|Drei;"_s);
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->StoredList(), stored);
    }

    void listThatWasLost_isWrittenWhole()
    {
        StartWithTwo();
        SaveSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s, {});
        s->Libraries.ChangeAlias(u"First"_s, false);
        QCOMPARE(s->StoredList(), u"%1|First;%2|Two;"_s.arg(m_one, m_two));
    }

    void cancelledFileDialog_changesNothing()
    {
        StartWithTwo();
        s->Script.ExpectFileName(u"Select a Quillbase Library Database"_s, {});
        s->Libraries.mnuOpenDatabase_Click();
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->StoredList(), m_list);
    }

    void libraryWithoutAnAlias_isUsedInTheInterim_data()
    {
        QTest::addColumn<bool>("cancel");
        QTest::newRow("cancelled") << true;
        QTest::newRow("empty alias") << false;
    }
    void libraryWithoutAnAlias_isUsedInTheInterim()
    {
        QFETCH(bool, cancel);
        StartWithTwo();
        const QString path = s->LibraryFile(u"drei.qbd"_s, u"third"_s);
        ExpectAlias(cancel ? std::nullopt : std::optional(QString()));
        s->Script.ExpectMsgBox(u"Interim Database"_s);
        s->Libraries.SelectDatabase(path);
        QCOMPARE(LastMessage(), u"Database will not be saved in the list."_s);
        QCOMPARE(s->Shell.Text, u"*drei.qbd"_s);
        QCOMPARE(s->Shape(), u"*drei.qbd Library(third)"_s);
        QCOMPARE(s->StoredList(), m_list);
        QCOMPARE(s->LastDB(), path);
        s->Shell.SetComboIndex(0); // back to a listed one
        QCOMPARE(s->OpenPath(), m_one);
    }

    void libraryThatIsListed_isSwitchedTo()
    {
        StartWithTwo();
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Libraries.SelectDatabase(m_two);
        QCOMPARE(
            LastMessage(),
            u"This database is already in list with an alias of 'Two'. You will be automatically swithced to it."_s);
        QCOMPARE(s->OpenPath(), m_two);
        QCOMPARE(s->Shell.Index, 1);
        QCOMPARE(s->Shape(), u"Two Library(second)"_s);
        QCOMPARE(s->StoredList(), m_list);
    }

    void libraryThatTheCallerKnows_isNotAskedAbout()
    {
        StartWithTwo();
        s->Libraries.SelectDatabase(m_two, true);
        QCOMPARE(s->OpenPath(), m_two);
        QCOMPARE(s->StoredList(), m_list);
    }

    void aliasThatBreaksTheList_isAskedForAgain_data()
    {
        QTest::addColumn<QString>("alias");
        QTest::newRow("bar") << u"a|b"_s;
        QTest::newRow("semicolon") << u"a;b"_s;
    }
    void aliasThatBreaksTheList_isAskedForAgain()
    {
        QFETCH(QString, alias);
        StartWithTwo();
        const QString path = s->LibraryFile(u"drei.qbd"_s);
        ExpectAlias(alias);
        s->Script.ExpectMsgBox(ApplicationTitle);
        ExpectAlias(u"Good"_s);
        s->Libraries.SelectDatabase(path);
        QCOMPARE(LastMessage(), u"An alias can't contain the characters "_s + Separators);
        QCOMPARE(LastIcon(), MsgBoxIcon::Exclamation);
        QCOMPARE(s->StoredList(), m_list + path + u"|Good;"_s);
    }

    void pathThatBreaksTheList_isUsedInTheInterim_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("bar") << u"a|b.qbd"_s;
        QTest::newRow("semicolon") << u"a;b.qbd"_s;
    }
    void pathThatBreaksTheList_isUsedInTheInterim()
    {
        QFETCH(QString, name);
        StartWithTwo();
        const QString path = s->LibraryFile(name);
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Script.ExpectMsgBox(u"Interim Database"_s);
        s->Libraries.SelectDatabase(path);
        QCOMPARE(s->Script.Messages[0].Text,
                 u"The path of a library in the list can't contain the characters "_s + Separators);
        QCOMPARE(s->OpenPath(), path);
        QCOMPARE(s->StoredList(), m_list);
    }

    void replicaFile_isUnpackedFirst_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("small letters") << u"a ü.qbr"_s;
        QTest::newRow("capitals") << u"A.QBR"_s;
    }
    void replicaFile_isUnpackedFirst()
    {
        QFETCH(QString, name);
        StartWithTwo();
        const QString path = s->Home.Path(name);
        const QString library = s->LibraryFile(u"drei ß.qbd"_s, u"third"_s);
        QStringList asked;
        s->Libraries.UnpackReplica = [&](const QString& file) {
            asked << file;
            return library;
        };
        ExpectAlias(u"Dreï"_s);
        s->Libraries.SelectDatabase(path);
        QCOMPARE(asked, QStringList{path});
        QCOMPARE(s->OpenPath(), library);
    }

    void replicaFileThatIsNotUnpacked_leavesTheLibrary()
    {
        StartWithTwo();
        s->Libraries.UnpackReplica = [](const QString&) { return QString(); };
        s->Libraries.SelectDatabase(s->Home.Path(u"a.qbr"_s));
        QCOMPARE(s->OpenPath(), m_one);
    }

    // Alias

    void alias_isChangedByTheMenu()
    {
        StartWithTwo();
        s->Script.ExpectInputBox(u"New Alias"_s, u"Erste Bücher"_s);
        s->Libraries.mnuNewAliasItem_Click();
        QCOMPARE(s->Script.InputTexts,
                 QStringList{
                     u"Insert new alias for current database instead of 'One'.\n\nComplete path to the open database "
                     "is:\n%1"_s.arg(QDir::toNativeSeparators(m_one))});
        QCOMPARE(s->Script.InputPresets, QStringList{u"One"_s});
        QCOMPARE(s->StoredList(), u"%1|Erste Bücher;%2|Two;"_s.arg(m_one, m_two));
        QCOMPARE(s->Shell.Aliases, (QStringList{u"Erste Bücher"_s, u"Two"_s}));
        QCOMPARE(s->Shell.Index, 0);
    }

    void aliasThatIsNotEntered_stays_data()
    {
        QTest::addColumn<bool>("cancel");
        QTest::newRow("cancelled") << true;
        QTest::newRow("empty") << false;
    }
    void aliasThatIsNotEntered_stays()
    {
        QFETCH(bool, cancel);
        StartWithTwo();
        s->Script.ExpectInputBox(u"New Alias"_s, cancel ? std::nullopt : std::optional(QString()));
        s->Libraries.mnuNewAliasItem_Click();
        QCOMPARE(s->StoredList(), m_list);
    }

    void aliasEnteredInTheBox_isAskedAbout_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("Yes") << true;
        QTest::newRow("No") << false;
    }
    void aliasEnteredInTheBox_isAskedAbout()
    {
        QFETCH(bool, yes);
        StartWithTwo();
        s->Shell.SetComboIndex(1);
        s->Shell.Text = u"Zwölf"_s; // what the user has typed
        s->Script.ExpectMsgBox(u"Alias Change"_s, yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        s->Libraries.ChangeAlias(u"Zwölf"_s, true);
        QCOMPARE(LastMessage(), u"Do you really wish to change the alias for this database?"_s);
        QCOMPARE(s->Script.Messages.last().Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(s->StoredList(), yes ? u"%1|One;%2|Zwölf;"_s.arg(m_one, m_two) : m_list);
        QCOMPARE(s->Shell.Text, yes ? u"Zwölf"_s : u"Two"_s);
        QCOMPARE(s->Shell.Index, 1);
        QCOMPARE(s->OpenPath(), m_two);
    }

    void newAliasThatBreaksTheList_isRefused()
    {
        StartWithTwo();
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Libraries.ChangeAlias(u"a;b"_s, true);
        QCOMPARE(LastMessage(), u"An alias can't contain the characters "_s + Separators);
        QCOMPARE(s->StoredList(), m_list);
        QCOMPARE(s->Shell.Text, u"One"_s);
    }

    // Remove

    void removedLibrary_staysOnTheDisk()
    {
        StartWithTwo();
        AddSideFolders(m_one);
        s->Click(u"first"_s);
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(LastMessage(), u"Would you like to keep the database on your hard drive?"_s);
        QCOMPARE(s->Script.Messages.last().Buttons, MsgBoxButtons::YesNoCancel);
        QCOMPARE(LastIcon(), MsgBoxIcon::Question);
        QVERIFY(QFileInfo::exists(m_one) && QFileInfo::exists(FilesFolderOf(m_one))
                && QFileInfo::exists(HTMLFolderOf(m_one)));
        QCOMPARE(s->StoredList(), m_two + u"|Two;"_s);
        QCOMPARE(s->OpenPath(), m_two);
        QCOMPARE(s->Shape(), u"Two Library(second)"_s);
        QCOMPARE(s->LastDB(), m_two);
        QCOMPARE(s->Shell.Index, 0);
    }

    void removeThatIsCancelled_changesNothing()
    {
        StartWithTwo();
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Cancel);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->StoredList(), m_list);
    }

    void removedLibrary_isDeletedAfterASecondQuestion_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("Yes") << true;
        QTest::newRow("No") << false;
    }
    void removedLibrary_isDeletedAfterASecondQuestion()
    {
        QFETCH(bool, yes);
        StartWithTwo();
        AddSideFolders(m_one);
        AddSideFolders(m_two);
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::No);
        s->Script.ExpectMsgBox(u"Delete database file from hard drive?"_s, yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(
            LastMessage(),
            u"The program is about to delete the database file and all coherent files from your hard drive. This is "
            "a serious "
            "step and it will not be possible to restore any of the deleted files after this operation is "
            "finished!!!\nDo you "
            "want to continue?"_s);
        QCOMPARE(s->Script.Messages.last().Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(s->Script.Messages.last().DefaultAnswer(), MsgBoxResult::No);
        QCOMPARE(LastIcon(), MsgBoxIcon::Exclamation);
        for (const QString& path : {m_one, FilesFolderOf(m_one), HTMLFolderOf(m_one)})
            QCOMPARE(QFileInfo::exists(path), !yes);
        for (const QString& path : {m_two, FilesFolderOf(m_two), HTMLFolderOf(m_two)})
            QVERIFY(QFileInfo::exists(path));
        QCOMPARE(s->StoredList(), m_two + u"|Two;"_s);
        QCOMPARE(s->OpenPath(), m_two);
    }

    void secondLibraryOfTheList_isRemovedToo()
    {
        StartWithTwo();
        s->Shell.SetComboIndex(1);
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->StoredList(), m_one + u"|One;"_s);
    }

    void lastLibrary_leavesAnEmptyWindow()
    {
        const QString path = s->LibraryFile(u"one.qbd"_s);
        QVERIFY(s->Start(path + u"|One;"_s));
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Libraries.mnuRemoveDBItem_Click();
        QVERIFY(!s->State.CurrentDatabase);
        QCOMPARE(s->State.CurrentDatabasePath, QString());
        QCOMPARE(s->StoredList(), QString());
        QCOMPARE(s->LastDB(), QString());
        QVERIFY(s->Shell.Aliases.isEmpty());
        QCOMPARE(s->Shell.Text, QString());
        QCOMPARE(s->View.Nodes().Count(), 0);
        QVERIFY(!s->Shell.MenusEnabled && !s->Enabled(u"NEW"_s) && !s->Details.HasDatabase);
        QVERIFY(QFileInfo::exists(path));
    }

    void interimLibrary_isRemovedWithoutTouchingTheList()
    {
        StartWithTwo();
        const QString path = s->LibraryFile(u"drei.qbd"_s);
        ExpectAlias(std::nullopt);
        s->Script.ExpectMsgBox(u"Interim Database"_s);
        s->Libraries.SelectDatabase(path);
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->StoredList(), m_list);
        QCOMPARE(s->OpenPath(), m_one);
        QVERIFY(QFileInfo::exists(path));
    }

    void pathThatIsListedTwice_losesOneEntry()
    {
        const QString path = s->LibraryFile(u"one.qbd"_s);
        QVERIFY(s->Start(u"%1|One;%1|Again;"_s.arg(path)));
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->StoredList(), path + u"|Again;"_s);
        QCOMPARE(s->OpenPath(), path);
    }

    // New library

    void newLibrary_isMadeInItsLanguageAndOpened_data()
    {
        QTest::addColumn<LanguageType>("type");
        QTest::addColumn<int>("words");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("keywordDefiner");
        QTest::newRow("VB") << LanguageType::VB << 250 << u"VB"_s << 0;
        QTest::newRow("C++") << LanguageType::Cpp << 73 << u"C++"_s << 0;
        QTest::newRow("file") << LanguageType::File << 0 << u"Lng"_s << 0;
        QTest::newRow("self-defined") << LanguageType::SelfDefined << 0 << QString() << 1;
    }
    void newLibrary_isMadeInItsLanguageAndOpened()
    {
        QFETCH(LanguageType, type);
        StartWithTwo();
        const QString path = s->Home.Path(u"neu ø.qbd"_s);
        s->Shell.Language.Type = type;
        if (type == LanguageType::File) {
            s->Shell.Language.File = s->Home.Path(u"my.qbl"_s);
            WriteFile(s->Shell.Language.File, QByteArray::fromHex("0000"
                                                                  "0300")
                                                  + "Lng");
        }
        int definer = 0;
        s->Libraries.DisplayKeywordDefiner = [&] { ++definer; };
        s->Script.ExpectFileName(u"Enter Name and Path for the New Database"_s, path);
        ExpectAlias(u"Neu"_s);
        s->Libraries.mnuNewDatabase_Click();
        QVERIFY(s->Script.Questions.first().Save);
        QCOMPARE(s->Script.Questions.first().Filter, u"KT Quillbase Databases|*.qbd"_s);
        QCOMPARE(s->OpenPath(), path);
        QTEST(int(CountOf(*s->State.CurrentDatabase, u"Keywords"_s)), "words");
        QTEST(s->Shell.StatusText, "language");
        QTEST(definer, "keywordDefiner");
        QCOMPARE(s->StoredList(), m_list + path + u"|Neu;"_s);
        QCOMPARE(s->Shape(), u"Neu Library"_s);
    }

    void newLibraryThatIsCancelled_isNotMade_data()
    {
        QTest::addColumn<LanguageType>("type");
        QTest::newRow("at the language") << LanguageType::None;
        QTest::newRow("at the name") << LanguageType::VB;
    }
    void newLibraryThatIsCancelled_isNotMade()
    {
        QFETCH(LanguageType, type);
        StartWithTwo();
        const QStringList files = FilesInTheFolder();
        s->Shell.Language.Type = type;
        if (type != LanguageType::None)
            s->Script.ExpectFileName(u"Enter Name and Path for the New Database"_s, {});
        s->Libraries.mnuNewDatabase_Click();
        QCOMPARE(FilesInTheFolder(), files);
        QCOMPARE(s->OpenPath(), m_one);
    }

    void newLibraryInPlaceOfAnOldOne_replacesIt_data()
    {
        QTest::addColumn<bool>("open");
        QTest::newRow("the open one") << true;
        QTest::newRow("another one") << false;
    }
    void newLibraryInPlaceOfAnOldOne_replacesIt()
    {
        QFETCH(bool, open);
        StartWithTwo();
        const QString path = open ? m_one : m_two;
        const QStringList files = FilesInTheFolder();
        s->Shell.Language.Type = LanguageType::VB;
        s->Script.ExpectFileName(u"Enter Name and Path for the New Database"_s, path);
        s->Script.ExpectMsgBox(ApplicationTitle); // it is in the list already
        s->Libraries.mnuNewDatabase_Click();
        QCOMPARE(s->OpenPath(), path);
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), 0);
        QCOMPARE(s->Shell.StatusText, u"VB"_s);
        QCOMPARE(FilesInTheFolder(), files); // nothing is left beside it
        QCOMPARE(s->StoredList(), m_list);
    }

    /// What the old library stored beside itself is not the new one's, and not deleted with it.
    void newLibraryInPlaceOfAnOldOne_keepsItsFoldersUnderOtherNames()
    {
        StartWithTwo();
        AddSideFolders(m_two);
        const QString files = FilesFolderOf(m_two).chopped(1), pages = HTMLFolderOf(m_two).chopped(1);
        QVERIFY(s->Libraries.CreateNewDatabase(m_two, LanguageType::VB, {}));
        QVERIFY(!QFileInfo::exists(files) && !QFileInfo::exists(pages));
        QCOMPARE(ReadFile(files + u"(1)/1 - a ü.txt"_s), "file"_ba);
        QCOMPARE(ReadFile(pages + u"(1)/1.htm"_s), "page"_ba);
    }

    void newLibraryThatFails_leavesTheFoldersOfTheOldOne()
    {
        StartWithTwo();
        AddSideFolders(m_two);
        s->Script.ExpectError();
        QVERIFY(!s->Libraries.CreateNewDatabase(m_two, LanguageType::File, s->Home.Path(u"no such.qbl"_s)));
        QCOMPARE(ReadFile(FilesFolderOf(m_two) + u"1 - a ü.txt"_s), "file"_ba);
        QCOMPARE(ReadFile(HTMLFolderOf(m_two) + u"1.htm"_s), "page"_ba);
    }

    void libraryWhoseFoldersAreAnothers_isOpenedAndSaysSo()
    {
        StartWithTwo();
        WriteFile(FilesFolderOf(m_two) + u".library"_s, "Another001");
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Libraries.ChangeDatabase(1);
        QCOMPARE(s->OpenPath(), m_two);
        QVERIFY2(LastMessage().contains(u"belongs to another library"), qPrintable(LastMessage()));
        QVERIFY2(LastMessage().contains(QDir::toNativeSeparators(FilesFolderOf(m_two).chopped(1))),
                 qPrintable(LastMessage()));
        QCOMPARE(LastIcon(), MsgBoxIcon::Exclamation);
    }

    void newLibraryThatFails_leavesTheOldFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("the open one") << u"eins ä.qbd"_s;
        QTest::newRow("another one") << u"zwei.qbd"_s;
        QTest::newRow("a text") << u"text.qbd"_s;
    }
    void newLibraryThatFails_leavesTheOldFile()
    {
        QFETCH(QString, name);
        StartWithTwo();
        WriteFile(s->Home.Path(u"text.qbd"_s), "my text");
        const QString path = s->Home.Path(name);
        const QByteArray before = ReadFile(path);
        const QStringList files = FilesInTheFolder();
        s->Shell.Language = {LanguageType::File, s->Home.Path(u"no such.qbl"_s)};
        s->Script.ExpectFileName(u"Enter Name and Path for the New Database"_s, path);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Databese Not Created"_s);
        s->Libraries.mnuNewDatabase_Click();
        QCOMPARE(LastMessage(), u"Program was not able to create the database."_s);
        QCOMPARE(LastIcon(), MsgBoxIcon::Critical);
        QVERIFY(ReadFile(path) == before);
        QCOMPARE(FilesInTheFolder(), files);
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->Shape(), u"One Library(first)"_s);
        QCOMPARE(s->StoredList(), m_list);
    }

    void newLibraryInNoFolder_isSaid()
    {
        StartWithTwo();
        const QString path = s->Home.Path(u"no folder/new.qbd"_s);
        s->Shell.Language.Type = LanguageType::VB;
        s->Script.ExpectFileName(u"Enter Name and Path for the New Database"_s, path);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Databese Not Created"_s);
        s->Libraries.mnuNewDatabase_Click();
        QCOMPARE(LastMessage(), u"Program was not able to create the database."_s);
        QVERIFY(!QFileInfo::exists(s->Home.Path(u"no folder"_s)));
        QCOMPARE(s->OpenPath(), m_one);
    }

    void fileWithTheNameOfTheOneHeldAside_isKept()
    {
        StartWithTwo();
        const QString theirs = m_two + u".replaced"_s;
        WriteFile(theirs, "somebody's file");
        QVERIFY(s->Libraries.CreateNewDatabase(m_two, LanguageType::VB, {}));
        QVERIFY2(QFileInfo::exists(theirs), "a file of somebody else was deleted");
        QCOMPARE(ReadFile(theirs), QByteArray("somebody's file"));
    }
};

QB_TEST_MAIN(TestLibraryListEditing)
#include "tst_library_list_editing.moc"
