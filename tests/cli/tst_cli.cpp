#include "platform/dao/DBEngine.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestCli : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"the library; \"quoted\" 'é'.qbd"_s);
    }

    void cleanup() { m_home.reset(); }

    void noArguments_printHelpAndAreWrongUsage()
    {
        const Outcome outcome = Cli({});
        QCOMPARE(outcome.Status, 2);
        for (const QString& command : {u"new"_s, u"info"_s, u"tree"_s, u"show"_s, u"add"_s, u"set"_s, u"move"_s,
                                       u"delete"_s, u"import-folder"_s, u"check"_s})
            QVERIFY2(outcome.Out.contains(u"quillbase-cli "_s + command), qPrintable(command));
        QCOMPARE(Cli({u"--help"_s}).Status, 0);
        QCOMPARE(Cli({u"--version"_s}).Out, u"1.0.0\n"_s);
    }

    void wrongUsage_exitsWith2AndSaysWhy_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("unknown command") << QStringList{u"frobnicate"_s} << u"unknown command 'frobnicate'"_s;
        QTest::newRow("unknown option") << QStringList{u"info"_s, u"L"_s, u"--colour"_s} << u"Unknown option"_s;
        QTest::newRow("missing argument") << QStringList{u"show"_s, u"L"_s} << u"An argument is missing"_s;
        QTest::newRow("one too many") << QStringList{u"check"_s, u"L"_s, u"M"_s} << u"Unexpected argument 'M'"_s;
        QTest::newRow("no ID") << QStringList{u"move"_s, u"L"_s, u"one"_s, u"2"_s} << u"'one' is not the ID"_s;
        QTest::newRow("unknown language")
            << QStringList{u"new"_s, u"L"_s, u"--language"_s, u"klingon"_s} << u"Unknown language"_s;
        QTest::newRow("two languages") << QStringList{u"new"_s, u"L"_s, u"--language"_s, u"vb"_s, u"--language-file"_s,
                                                      u"F"_s}
                                       << u"Give either"_s;
        QTest::newRow("no title") << QStringList{u"add"_s, u"L"_s, u"--parent"_s, u"0"_s} << u"--title is missing"_s;
        QTest::newRow("unknown field") << QStringList{u"show"_s, u"L"_s, u"1"_s, u"--field"_s, u"colour"_s}
                                       << u"Unknown field"_s;
        QTest::newRow("unknown encoding")
            << QStringList{u"import-folder"_s, u"L"_s, u"D"_s, u"--encoding"_s, u"ebcdic"_s} << u"Unknown encoding"_s;
    }

    void wrongUsage_exitsWith2AndSaysWhy()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        arguments.replaceInStrings(u"L"_s, NewLibrary(), Qt::CaseSensitive);
        const QByteArray before = ReadFile(m_library);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, 2);
        QVERIFY2(outcome.Error.contains(complaint), qPrintable(outcome.Error));
        QCOMPARE(ReadFile(m_library), before);
    }

    // Links

    void link_isMadeShownAndRemoved()
    {
        const QString library = NewLibrary();
        for (const QString& title : {u"A"_s, u"B"_s, u"C"_s})
            QCOMPARE(Cli({u"add"_s, library, u"--parent"_s, u"0"_s, u"--title"_s, title}).Status, 0);
        QCOMPARE(Cli({u"link"_s, library, u"1"_s, u"2"_s, u"--note"_s, u"zwei Wörter"_s}).Status, 0);
        QCOMPARE(Cli({u"link"_s, library, u"1"_s, u"3"_s, u"--two-way"_s}).Status, 0);
        QCOMPARE(Cli({u"links"_s, library, u"1"_s}).Out, u"2\tto\tB\tzwei Wörter\n3\tboth\tC\t\n"_s);
        QCOMPARE(Cli({u"links"_s, library, u"2"_s}).Out, QString());
        QCOMPARE(Cli({u"links"_s, library, u"3"_s, u"--json"_s}).Array()[0].toObject()[u"direction"_s], u"both"_s);
        QCOMPARE(Cli({u"link"_s, library, u"1"_s, u"2"_s, u"--two-way"_s}).Status, 0); // the side that it lacks
        QCOMPARE(Cli({u"links"_s, library, u"2"_s}).Out, u"1\tboth\tA\t\n"_s);
        QCOMPARE(Cli({u"unlink"_s, library, u"1"_s, u"2"_s, u"--side"_s, u"left"_s}).Status, 0);
        QCOMPARE(Cli({u"links"_s, library, u"1"_s}).Out, u"3\tboth\tC\t\n"_s);
        QCOMPARE(Cli({u"links"_s, library, u"2"_s}).Out, u"1\tto\tA\t\n"_s);
        QCOMPARE(Cli({u"unlink"_s, library, u"1"_s, u"3"_s}).Status, 0);
        QCOMPARE(Cli({u"links"_s, library, u"3"_s}).Out, QString());
    }

    void linkThatCantBe_isRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("reason");
        QTest::newRow("itself") << QStringList{u"link"_s, u"1"_s, u"1"_s} << 2 << u"with another item only"_s;
        QTest::newRow("missing") << QStringList{u"link"_s, u"1"_s, u"9"_s} << 1
                                 << u"There is no item 9; nothing was changed."_s;
        QTest::newRow("twice") << QStringList{u"link"_s, u"1"_s, u"2"_s} << 1 << u"This link already exists."_s;
        QTest::newRow("apostrophe") << QStringList{u"link"_s, u"2"_s, u"1"_s, u"--note"_s, u"it's"_s} << 1
                                    << u"apostrophe"_s;
        QTest::newRow("no link") << QStringList{u"unlink"_s, u"2"_s, u"1"_s} << 1 << u"has no link to 1"_s;
        QTest::newRow("one side") << QStringList{u"unlink"_s, u"1"_s, u"2"_s, u"--side"_s, u"right"_s} << 1
                                  << u"has one side only"_s;
        QTest::newRow("side") << QStringList{u"unlink"_s, u"1"_s, u"2"_s, u"--side"_s, u"upper"_s} << 2
                              << u"Unknown side 'upper'"_s;
        QTest::newRow("of nothing") << QStringList{u"links"_s, u"9"_s} << 1 << u"There is no item 9"_s;
    }
    void linkThatCantBe_isRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, reason);
        const QString library = NewLibrary();
        for (const QString& title : {u"A"_s, u"B"_s})
            QCOMPARE(Cli({u"add"_s, library, u"--parent"_s, u"0"_s, u"--title"_s, title}).Status, 0);
        QCOMPARE(Cli({u"link"_s, library, u"1"_s, u"2"_s}).Status, 0);
        arguments.insert(1, library);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, status);
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
        QCOMPARE(Cli({u"links"_s, library, u"1"_s}).Out, u"2\tto\tB\t\n"_s);
        QCOMPARE(Cli({u"links"_s, library, u"2"_s}).Out, QString());
    }

    void inputThatCanNotBeRead_emptiesNoText_data()
    {
        QTest::addColumn<QString>("input");
        QTest::newRow("folder") << u"/tmp"_s;
        QTest::newRow("read error") << u"/proc/self/mem"_s;
        QTest::newRow("missing") << u"/no/such/file"_s;
    }
    void inputThatCanNotBeRead_emptiesNoText()
    {
        QFETCH(QString, input);
        const QString library = NewLibrary();
        QCOMPARE(Cli({u"add"_s, library, u"--parent"_s, u"0"_s, u"--title"_s, u"A"_s, u"--code"_s, u"-"_s}, "int a;"_ba)
                     .Status,
                 0);
        const QByteArray before = ReadFile(m_library);
        for (const QString& text : {u"--code"_s, u"--usage"_s, u"--notes"_s}) {
            const Outcome outcome = Cli({u"set"_s, library, u"1"_s, text, input});
            QCOMPARE(outcome.Status, 1);
            QVERIFY2(outcome.Error.contains(input), qPrintable(outcome.Error));
        }
        QCOMPARE(ReadFile(m_library), before);
    }

    void standardInputThatCanNotBeRead_emptiesNoText()
    {
        const QString library = NewLibrary();
        QCOMPARE(Cli({u"add"_s, library, u"--parent"_s, u"0"_s, u"--title"_s, u"A"_s, u"--code"_s, u"-"_s}, "int a;"_ba)
                     .Status,
                 0);
        QProcess process;
        process.setStandardInputFile(u"/proc/self/mem"_s);
        process.start(qEnvironmentVariable("QUILLBASE_CLI"), {u"set"_s, library, u"1"_s, u"--code"_s, u"-"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(Cli({u"show"_s, library, u"1"_s, u"--field"_s, u"code"_s}).Out, u"int a;"_s);
    }

    // Languages and settings

    void language_isShownExportedAndImported()
    {
        QCOMPARE(Cli({u"new"_s, m_library, u"--language"_s, u"vb"_s}).Status, 0);
        const Outcome shown = Cli({u"language"_s, m_library, u"--json"_s});
        QCOMPARE(shown.Status, 0);
        QCOMPARE(shown.Object()[u"language"_s], u"VB"_s);
        QCOMPARE(shown.Object()[u"comment"_s], u"'"_s);
        QCOMPARE(shown.Object()[u"colouredKeywordColour"_s], u"#000080"_s);
        QVERIFY(shown.Object()[u"colouredWords"_s].toArray().contains(u"Dim"_s));
        QVERIFY(Cli({u"language"_s, m_library}).Out.contains(u"comment:        '\n"_s));
        const QString file = m_home->Path(u"vb.qbl"_s);
        QCOMPARE(Cli({u"language"_s, u"export"_s, m_library, file}).Status, 0);
        const QString other = m_home->Path(u"other.qbd"_s);
        QCOMPARE(Cli({u"new"_s, other, u"--language"_s, u"cpp"_s}).Status, 0);
        QCOMPARE(Cli({u"language"_s, u"import"_s, other, file}).Status, 0);
        QCOMPARE(Cli({u"language"_s, other, u"--json"_s}).Out, shown.Out);
    }

    void languageFileThatCantBeTaken_leavesTheLibrary_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << QByteArray() << u"You have to specify comment delimiter."_s;
        QTest::newRow("long name") << QByteArray("\0\0\x28\0", 4) + QByteArray(40, 'x')
                                   << u"has 40 characters; 20 is the most"_s;
        QTest::newRow("noise") << QByteArray(70000, '\x41') << u"20 is the most"_s;
    }
    void languageFileThatCantBeTaken_leavesTheLibrary()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        QCOMPARE(Cli({u"new"_s, m_library, u"--language"_s, u"vb"_s}).Status, 0);
        const QByteArray before = ReadFile(m_library);
        const QString file = m_home->Path(u"bad.qbl"_s);
        WriteFile(file, bytes);
        const Outcome outcome = Cli({u"language"_s, u"import"_s, m_library, file});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
        QCOMPARE(Cli({u"language"_s, m_library, u"--json"_s}).Object()[u"language"_s], u"VB"_s);
        QCOMPARE(ReadFile(m_library), before);
        QVERIFY(Cli({u"language"_s, u"import"_s, m_library, m_home->Path(u"none.qbl"_s)})
                    .Error.contains(u"was not found"_s));
    }

    void settings_areListedReadAndSet()
    {
        QCOMPARE(Cli({u"new"_s, m_library, u"--language"_s, u"vb"_s}).Status, 0);
        QVERIFY(Cli({u"settings"_s, u"list"_s}).Out.contains(u"SaveFormLayout=True\n"_s));
        QVERIFY(!Cli({u"settings"_s, u"list"_s}).Out.contains(u"DBBackupPeriod"_s));
        QVERIFY(Cli({u"settings"_s, u"list"_s, u"--library"_s, m_library}).Out.contains(u"DBBackupPeriod=15\n"_s));
        QCOMPARE(Cli({u"settings"_s, u"set"_s, u"defaultfontname"_s, u"Sans Serif"_s}).Status, 0);
        QCOMPARE(Cli({u"settings"_s, u"get"_s, u"DefaultFontName"_s}).Out, u"Sans Serif\n"_s);
        QCOMPARE(Cli({u"settings"_s, u"set"_s, u"DBShared"_s, u"true"_s, u"--library"_s, m_library}).Status, 0);
        const auto database = Library::Open(m_library);
        QCOMPARE(database->QueryValue(u"SELECT SharedDatabase FROM Properties"_s).ToBoolean(), true);
        QCOMPARE(Cli({u"settings"_s, u"get"_s, u"DBShared"_s, u"--library"_s, m_library, u"--json"_s})
                     .Object()[u"DBShared"_s],
                 u"True"_s);
        QVERIFY(
            database->QueryValue(u"SELECT LastOpened FROM Properties"_s).ToDate().IsNone()); // no day of use is counted
    }

    void settingThatCantBe_isRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown") << QStringList{u"set"_s, u"Colour"_s, u"1"_s}
                                 << u"There is no setting of that name."_s;
        QTest::newRow("unknown to get") << QStringList{u"get"_s, u"Colour"_s} << u"There is no setting 'Colour'"_s;
        QTest::newRow("flag") << QStringList{u"set"_s, u"ShowStatusBar"_s, u"perhaps"_s} << u"It is True or False."_s;
        QTest::newRow("number") << QStringList{u"set"_s, u"DefaultFontSize"_s, u"big"_s} << u"It is a whole number."_s;
        QTest::newRow("library's") << QStringList{u"set"_s, u"DBShared"_s, u"True"_s} << u"name one with --library"_s;
        QTest::newRow("no verb") << QStringList{u"put"_s} << u"Give list, get or set."_s;
    }
    void settingThatCantBe_isRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        const Outcome outcome = Cli(QStringList{u"settings"_s} + arguments);
        QCOMPARE(outcome.Status, 2);
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
    }

    void newLibrary_hasTheLanguageAskedFor_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("keywords");
        QTest::newRow("default") << QStringList{} << u"VB"_s << 250;
        QTest::newRow("vb") << QStringList{u"--language"_s, u"vb"_s} << u"VB"_s << 250;
        QTest::newRow("cpp") << QStringList{u"--language"_s, u"cpp"_s} << u"C++"_s << 73;
        QTest::newRow("none") << QStringList{u"--language"_s, u"none"_s} << u""_s << 0;
    }

    void newLibrary_hasTheLanguageAskedFor()
    {
        QFETCH(QStringList, options);
        QCOMPARE(Cli(QStringList{u"new"_s, m_library} + options).Status, 0);
        const QJsonObject info = Cli({u"info"_s, m_library, u"--json"_s}).Object();
        QTEST(info[u"language"].toString(), "language");
        QTEST(info[u"keywords"].toInt(), "keywords");
        QCOMPARE(info[u"items"].toInt(-1), 0);
        QCOMPARE(info[u"kind"].toString(), u"plain"_s);
        QCOMPARE(info[u"identity"].toString().size(), 10);
    }

    void newLibrary_overAnExistingFile_isRefused()
    {
        WriteFile(m_library, "something of the user's");
        const Outcome outcome = Cli({u"new"_s, m_library});
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Error.contains(u"exists already"_s));
        QCOMPARE(ReadFile(m_library), QByteArray("something of the user's"));
    }

    void newLibrary_withAMissingLanguageFile_leavesNothing()
    {
        const Outcome outcome = Cli({u"new"_s, m_library, u"--language-file"_s, m_home->Path(u"gone.qbl"_s)});
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Error.contains(u"was not found"_s));
        QCOMPARE(QDir(m_home->Path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void badLibrary_isNamedAndRefusedByEveryCommand_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("text") << QByteArray("int main() { return 0; }\n") << u"is not a database of this program"_s;
        QTest::newRow("empty") << QByteArray("") << u"is empty"_s;
        QTest::newRow("only the head of a library") << QByteArray("SQLite format 3\0 and no more", 28) << u""_s;
    }

    void badLibrary_isNamedAndRefusedByEveryCommand()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, complaint);
        WriteFile(m_library, content);
        for (const QStringList& command : CommandsOn(m_library)) {
            const Outcome outcome = Cli(command);
            QCOMPARE(outcome.Status, 1);
            QVERIFY2(outcome.Error.contains(complaint) && outcome.Error.contains(QFileInfo(m_library).fileName()),
                     qPrintable(outcome.Error));
            QCOMPARE(ReadFile(m_library), content);
        }
    }

    void missingLibraryOrFolder_isRefused()
    {
        for (const QStringList& command : CommandsOn(m_library))
            QVERIFY(Cli(command).Error.contains(u"was not found"_s));
        for (const QStringList& command : CommandsOn(m_home->Path()))
            QVERIFY(Cli(command).Error.contains(u"is a folder"_s));
        QVERIFY(!QFileInfo::exists(m_library));
    }

    void truncatedLibrary_isRefusedAndLeftAsItIs()
    {
        NewLibrary();
        const QByteArray whole = ReadFile(m_library);
        WriteFile(m_library, whole.left(whole.size() / 2));
        const Outcome outcome = Cli({u"tree"_s, m_library});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"damaged or incomplete"_s), qPrintable(outcome.Error));
        QCOMPARE(ReadFile(m_library), whole.left(whole.size() / 2));
    }

    void item_addedWithAllTexts_isShown()
    {
        NewLibrary();
        WriteFile(m_home->Path(u"usage.txt"_s), "call it\n");
        const Outcome added = Cli({u"add"_s, m_library, u"--parent"_s, u"0"_s, u"--title"_s, u"Straße \"x\""_s,
                                   u"--description"_s, u"what it is"_s, u"--info"_s, u"from me"_s, u"--code"_s, u"-"_s,
                                   u"--usage"_s, m_home->Path(u"usage.txt"_s)},
                                  "int f()\n{\n\treturn 1; // é😀\n}\n");
        QCOMPARE(added.Status, 0);
        QCOMPARE(added.Out, u"1\n"_s);
        QCOMPARE(Field(1, u"title"_s), u"Straße \"x\"\n"_s);
        QCOMPARE(Field(1, u"description"_s), u"what it is\n"_s);
        QCOMPARE(Field(1, u"info"_s), u"from me\n"_s);
        QCOMPARE(Field(1, u"code"_s), u"int f()\n{\n\treturn 1; // é😀\n}\n"_s);
        QCOMPARE(Field(1, u"usage"_s), u"call it\n"_s);
        QCOMPARE(Field(1, u"notes"_s), QString());
        const QString raw = Cli({u"show"_s, m_library, u"1"_s, u"--field"_s, u"code"_s, u"--raw"_s}).Out;
        QVERIFY(raw.startsWith(u"{\\rtf1"_s));
        const QJsonObject item = Cli({u"show"_s, m_library, u"1"_s, u"--json"_s}).Object();
        QCOMPARE(item[u"id"].toInt(), 1);
        QCOMPARE(item[u"parent"].toInt(-1), 0);
        QCOMPARE(item[u"usage"].toString(), u"call it\n"_s);
        QVERIFY(Cli({u"show"_s, m_library, u"1"_s}).Out.startsWith(u"Straße \"x\" [1]\n"_s));
    }

    void set_changesOnlyWhatIsGiven()
    {
        NewLibrary();
        AddItem(u"old"_s);
        QCOMPARE(Cli({u"set"_s, m_library, u"1"_s, u"--description"_s, u"d"_s, u"--code"_s, u"-"_s}, "x = 1").Status,
                 0);
        QCOMPARE(Field(1, u"title"_s), u"old\n"_s);
        QCOMPARE(Field(1, u"description"_s), u"d\n"_s);
        QCOMPARE(Field(1, u"code"_s), u"x = 1"_s);
        QCOMPARE(Cli({u"set"_s, m_library, u"1"_s}).Status, 2);
    }

    void changesThatAreRefused_leaveTheLibraryAsItIs_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("complaint");
        const QString longTitle(256, u'x');
        QTest::newRow("title too long") << QStringList{u"set"_s, u"1"_s, u"--title"_s, longTitle}
                                        << u"'Title' is too long"_s;
        QTest::newRow("empty title") << QStringList{u"set"_s, u"1"_s, u"--title"_s, u""_s}
                                     << u"'Title' can't be empty"_s;
        QTest::newRow("new title too long")
            << QStringList{u"add"_s, u"--title"_s, longTitle} << u"'Title' is too long"_s;
        QTest::newRow("no such parent") << QStringList{u"add"_s, u"--parent"_s, u"77"_s, u"--title"_s, u"t"_s}
                                        << u"no item 77"_s;
        QTest::newRow("no such item") << QStringList{u"set"_s, u"77"_s, u"--title"_s, u"t"_s} << u"no item 77"_s;
        QTest::newRow("reserved title") << QStringList{u"add"_s, u"--title"_s, u"Orphaned Items"_s}
                                        << u"reserved for the program"_s;
        QTest::newRow("reserved new title")
            << QStringList{u"set"_s, u"1"_s, u"--title"_s, u"Orphaned Items"_s} << u"reserved"_s;
        QTest::newRow("below itself") << QStringList{u"move"_s, u"1"_s, u"2"_s} << u"can't be moved below itself"_s;
        QTest::newRow("under itself") << QStringList{u"move"_s, u"1"_s, u"1"_s} << u"can't be moved below itself"_s;
        QTest::newRow("to nowhere") << QStringList{u"move"_s, u"1"_s, u"77"_s} << u"no item 77"_s;
        QTest::newRow("from nowhere") << QStringList{u"move"_s, u"77"_s, u"1"_s} << u"no item 77"_s;
        QTest::newRow("delete nothing") << QStringList{u"delete"_s, u"77"_s} << u"no item 77"_s;
        QTest::newRow("missing code") << QStringList{u"add"_s, u"--title"_s, u"t"_s, u"--code"_s, u"/no/such/file"_s}
                                      << u"can't be read"_s;
        QTest::newRow("missing folder") << QStringList{u"import-folder"_s, u"/no/such/folder"_s}
                                        << u"is not a folder"_s;
    }

    void changesThatAreRefused_leaveTheLibraryAsItIs()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        NewLibrary();
        AddItem(u"parent"_s);
        AddItem(u"child"_s, 1);
        const QByteArray before = ReadFile(m_library);
        arguments.insert(1, m_library);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(complaint), qPrintable(outcome.Error));
        QCOMPARE(ReadFile(m_library), before);
    }

    void tree_isSortedAndIndented()
    {
        NewLibrary();
        AddItem(u"banana"_s);
        AddItem(u"Äpfel"_s);
        AddItem(u"cherry"_s, 1);
        AddItem(u"Apple"_s);
        QCOMPARE(Cli({u"tree"_s, m_library}).Out, u"Äpfel [2]\nApple [4]\nbanana [1]\n  cherry [3]\n"_s);
        QCOMPARE(Cli({u"tree"_s, m_library, u"--depth"_s, u"1"_s}).Out, u"Äpfel [2]\nApple [4]\nbanana [1]\n"_s);
        const QJsonArray list = Cli({u"tree"_s, m_library, u"--json"_s}).Array();
        QCOMPARE(list.size(), 4);
        QCOMPARE(list[3].toObject(), (QJsonObject{{u"id"_s, 3},
                                                  {u"parent"_s, 1},
                                                  {u"depth"_s, 2},
                                                  {u"title"_s, u"cherry"_s},
                                                  {u"description"_s, QString()}}));
    }

    void moveAndDelete_changeTheTree()
    {
        NewLibrary();
        AddItem(u"a"_s);
        AddItem(u"b"_s, 1);
        AddItem(u"c"_s, 2);
        QCOMPARE(Cli({u"move"_s, m_library, u"2"_s, u"0"_s}).Status, 0);
        QCOMPARE(Cli({u"tree"_s, m_library}).Out, u"a [1]\nb [2]\n  c [3]\n"_s);
        QCOMPARE(Cli({u"delete"_s, m_library, u"2"_s}).Status, 0);
        QCOMPARE(Cli({u"tree"_s, m_library}).Out, u"a [1]\n"_s);
        QCOMPARE(Cli({u"check"_s, m_library}).Status, 0);
    }

    void importFolder_takesTextAndNamesTheRest()
    {
        NewLibrary();
        const QString folder = m_home->Path(u"src é"_s);
        WriteFile(folder + u"/main.cpp"_s, "int main() {}\n");
        WriteFile(folder + u"/sub dir/util.h"_s, "#pragma once\n");
        WriteFile(folder + u"/sub dir/picture.bin"_s, QByteArray("\x00\x01\x02", 3));
        WriteFile(folder + u"/old.c"_s, "/* caf\xe9 */\n");
        const Outcome outcome = Cli({u"import-folder"_s, m_library, folder});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Out, u"2 files in 2 folders imported below item 1, 2 skipped\n"_s);
        QVERIFY(outcome.Error.contains(u"picture.bin"_s) && outcome.Error.contains(u"old.c"_s));
        QCOMPARE(Cli({u"tree"_s, m_library}).Out, u"src é [1]\n  main.cpp [2]\n  sub dir [3]\n    util.h [4]\n"_s);
        QCOMPARE(Field(2, u"code"_s), u"int main() {}\n"_s);
        const QJsonObject again = Cli({u"import-folder"_s, m_library, folder, u"--glob"_s, u"*.c"_s, u"--encoding"_s,
                                       u"latin1"_s, u"--parent"_s, u"3"_s, u"--json"_s})
                                      .Object();
        QCOMPARE(again[u"files"].toInt(), 1);
        QCOMPARE(again[u"folders"].toInt(), 1);
        QCOMPARE(again[u"skipped"].toArray().size(), 0);
        QCOMPARE(Field(again[u"id"].toInt() + 1, u"code"_s), u"/* café */\n"_s);
    }

    void folderOfOrphans_canBeDescribed()
    {
        NewLibrary();
        const auto database = Library::Open(m_library);
        database->Execute(u"INSERT INTO Items (Title) VALUES ('Orphaned Items')"_s);
        QCOMPARE(Cli({u"set"_s, m_library, u"1"_s, u"--description"_s, u"waiting"_s}).Status, 0);
        QCOMPARE(Field(1, u"description"_s), u"waiting\n"_s);
    }

    void newLibraryInAMissingFolder_isNamedAsTheUserDid()
    {
        const QString path = m_home->Path(u"no folder/x.qbd"_s);
        const Outcome outcome = Cli({u"new"_s, path});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"'%1' can't be made"_s.arg(path)), qPrintable(outcome.Error));
        QVERIFY(!outcome.Error.contains(u".new"_s));
    }

    void limitOnFileSizes_isAnErrorOfTheWrite()
    {
        NewLibrary();
        WriteFile(m_home->Path(u"big.txt"_s), QByteArray(3'000'000, 'x'));
        const QByteArray before = ReadFile(m_library);
        QProcess shell; // blocks of 1024 bytes
        shell.start(u"bash"_s,
                    {u"-c"_s, u"ulimit -f 1024; exec \"$@\""_s, u"bash"_s, qEnvironmentVariable("QUILLBASE_CLI"),
                     u"add"_s, m_library, u"--title"_s, u"t"_s, u"--code"_s, m_home->Path(u"big.txt"_s)});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitStatus(), QProcess::NormalExit);
        QCOMPARE(shell.exitCode(), 1);
        QVERIFY(shell.readAllStandardError().contains("a limit on file sizes"));
        QCOMPARE(ReadFile(m_library), before);
    }

    void check_namesLostItemsAndExitsWith1()
    {
        NewLibrary();
        AddItem(u"lost"_s);
        AddItem(u"self"_s);
        {
            const auto database = Library::Open(m_library);
            database->Execute(u"UPDATE Items SET ParentID = 77 WHERE ID = 1"_s);
            database->Execute(u"UPDATE Items SET ParentID = 2 WHERE ID = 2"_s);
        }
        const Outcome outcome = Cli({u"check"_s, m_library});
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Out.contains(u"'lost' has the parent 77"_s)
                && outcome.Out.contains(u"'self' stands below itself"_s));
        QCOMPARE(outcome.Error, u"1000 of 1000 parts of a thousand\n"_s);
        const QJsonArray faults = Cli({u"check"_s, m_library, u"--json"_s}).Array();
        QCOMPARE(faults.size(), 2);
        QCOMPARE(faults[0].toObject()[u"kind"].toString(), u"lost-parent"_s);
        QCOMPARE(faults[1].toObject()[u"kind"].toString(), u"cycle"_s);
        const Outcome tree = Cli({u"tree"_s, m_library});
        QCOMPARE(tree.Status, 1);
        QVERIFY(tree.Error.contains(u"2 items have lost their place"_s));
    }

    void libraryInUse_isNotChanged()
    {
        NewLibrary();
        const auto database = Library::Open(m_library);
        database->BeginTrans();
        database->Execute(u"PRAGMA user_version = 3"_s);
        const Outcome outcome = Cli({u"add"_s, m_library, u"--title"_s, u"t"_s});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"in use"_s), qPrintable(outcome.Error));
        database->Rollback();
        QCOMPARE(Cli({u"tree"_s, m_library}).Out, QString());
    }

private:
    QString NewLibrary()
    {
        Cli({u"new"_s, m_library, u"--language"_s, u"none"_s});
        return m_library;
    }

    void AddItem(const QString& title, int parent = 0)
    {
        QCOMPARE(Cli({u"add"_s, m_library, u"--parent"_s, QString::number(parent), u"--title"_s, title}).Status, 0);
    }

    QString Field(int id, const QString& field)
    {
        return Cli({u"show"_s, m_library, QString::number(id), u"--field"_s, field}).Out;
    }

    static QList<QStringList> CommandsOn(const QString& library)
    {
        return {{u"info"_s, library},
                {u"tree"_s, library},
                {u"show"_s, library, u"1"_s},
                {u"add"_s, library, u"--title"_s, u"t"_s},
                {u"set"_s, library, u"1"_s, u"--title"_s, u"t"_s},
                {u"move"_s, library, u"1"_s, u"0"_s},
                {u"delete"_s, library, u"1"_s},
                {u"import-folder"_s, library, QDir::tempPath()},
                {u"check"_s, library}};
    }

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;
};

QB_TEST_MAIN(TestCli)
#include "tst_cli.moc"
