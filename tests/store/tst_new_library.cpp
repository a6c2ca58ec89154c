#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "support/Version.h"

#include <QDir>
#include <QRegularExpression>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestNewLibrary : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Database> Create(LanguageType language)
    {
        if (!CDBCreate().CreateNewDB(m_path, language, {}))
            return nullptr;
        return Library::Open(m_path);
    }

    /// Without the marks of libraries that are open.
    QStringList FilesInTheFolder() const
    {
        return QDir(m_home->Path(u"libraries"_s))
            .entryList(QDir::Files | QDir::Hidden)
            .filter(QRegularExpression(u"^(?!.*\\.open-)"_s));
    }

    std::optional<TemporaryHome> m_home;
    QString m_path;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        QDir().mkpath(m_home->Path(u"libraries"_s));
        m_path = m_home->Path(u"libraries/new & größer.qbd"_s);
    }

    void cleanup() { m_home.reset(); }

    void newLibrary_isOneFileWithTheMark()
    {
        const auto library = Create(LanguageType::VB);
        QVERIFY(library);
        QCOMPARE(FilesInTheFolder(), QStringList{u"new & größer.qbd"_s});
        QCOMPARE(library->QueryValue(u"PRAGMA application_id"_s), Value(DBEngine::ApplicationId));
        QCOMPARE(library->QueryValue(u"PRAGMA user_version"_s), Value(DBEngine::FormatVersion));
        QCOMPARE(library->QueryValue(u"SELECT Version FROM DBVersion"_s), Value(DBEngine::FormatVersion));
    }

    void newLibrary_isEmptyButForItsProperties()
    {
        const auto library = Create(LanguageType::None);
        for (const QString& table : {u"Items"_s, u"Files"_s, u"ItemLinks"_s, u"BookmarkGroups"_s, u"Bookmarks"_s,
                                     u"ChildCopies"_s, u"Keywords"_s})
            QCOMPARE(CountOf(*library, table), 0);
        QCOMPARE(CountOf(*library, u"Properties"_s), 1);
    }

    void newLibrary_lacksWhatReplicationAdds()
    {
        const auto library = Create(LanguageType::Cpp);
        for (const QString& table :
             {u"HTMLFiles"_s, u"DeletedItems"_s, u"DeletedFiles"_s, u"DeletedItemLinks"_s, u"TempItems"_s})
            QVERIFY2(!library->TableExists(table), qPrintable(table));
        QVERIFY(!library->GetTableDef(u"Files"_s).FindField(u"File"_s));
        QVERIFY(!library->GetTableDef(u"Properties"_s).FindField(u"MasterReplicaPath"_s));
    }

    void identity_isTenCharactersOfItsAlphabet()
    {
        const auto library = Create(LanguageType::None);
        const QString id = library->QueryValue(u"SELECT DBID FROM Properties"_s).ToText();
        QVERIFY2(QRegularExpression(u"^[0-9:B-Zb-z]{10}$"_s).match(id).hasMatch(), qPrintable(id));
    }

    void identities_useTheWholeAlphabetAndNoOtherCharacter()
    {
        QSet<QChar> seen;
        for (int i = 0; i < 3000; ++i) {
            const QString id = CDBCreate::DBIDGenerate();
            QCOMPARE(id.size(), 10);
            seen.unite(QSet<QChar>(id.begin(), id.end()));
        }
        QString alphabet = u"0123456789:"_s;
        for (char16_t letter = u'B'; letter <= u'Z'; ++letter)
            alphabet += QString(letter) + QChar(letter).toLower();
        QCOMPARE(seen, QSet<QChar>(alphabet.begin(), alphabet.end()));
    }

    void properties_areSeededByTheLanguage_data()
    {
        QTest::addColumn<LanguageType>("language");
        QTest::addColumn<QStringList>("values");
        const QStringList maintenance{u"-1"_s, u"5"_s, u"-1"_s, u"15"_s, u"-1"_s, u"5"_s};
        const QStringList colours{u"8388608"_s, u"0"_s, u"32768"_s};
        QTest::newRow("VB") << LanguageType::VB
                            << QStringList{ProgramVersion(), u"VB"_s, u"'"_s, u""_s, u""_s} + colours + maintenance;
        QTest::newRow("C++") << LanguageType::Cpp
                             << QStringList{ProgramVersion(), u"C++"_s, u"//"_s, u"/*"_s, u"*/"_s} + colours
                                    + maintenance;
        const QStringList none = QStringList(5, u""_s) + QStringList(9, u"0"_s);
        QTest::newRow("none") << LanguageType::None << none;
        QTest::newRow("self-defined") << LanguageType::SelfDefined << none;
    }
    void properties_areSeededByTheLanguage()
    {
        QFETCH(LanguageType, language);
        QFETCH(QStringList, values);
        const auto library = Create(language);
        const Recordset row = library->OpenRecordset(u"Properties"_s);
        QStringList found;
        for (const QString& column : {u"Version"_s, u"LanguageUsed"_s, u"CommentIdentifier"_s,
                                      u"CommentIdentifierStart"_s, u"CommentIdentifierEnd"_s})
            found << row[column].ToText();
        for (const QString& column : {u"ColouredKeywordColour"_s, u"KeywordColour"_s, u"CommentColour"_s,
                                      u"CompactOnExit"_s, u"CompactOnExitEvery"_s, u"BackupOnExit"_s,
                                      u"BackupOnExitEvery"_s, u"BackupAutoDelete"_s, u"BackupAutoDeleteNo"_s})
            found << QString::number(row[column].ToLong());
        QCOMPARE(found, values);
    }

    void propertiesOfNoLanguage_startAtTheirDefaults()
    {
        const auto library = Create(LanguageType::None);
        const Recordset row = library->OpenRecordset(u"Properties"_s);
        for (const QString& column :
             {u"SharedDatabase"_s, u"CompactOnExit"_s, u"BackupOnExit"_s, u"BackupAutoDelete"_s})
            QVERIFY2(!row[column].ToBoolean(), qPrintable(column));
        for (const QString& column : {u"LastCompacted"_s, u"LastBackedUp"_s, u"LastOpened"_s})
            QVERIFY2(row[column].ToDate().IsNone(), qPrintable(column));
    }

    void words_areSeededByTheLanguage_data()
    {
        QTest::addColumn<LanguageType>("language");
        QTest::addColumn<int>("coloured");
        QTest::addColumn<int>("plain");
        QTest::newRow("VB") << LanguageType::VB << 123 << 127;
        QTest::newRow("C++") << LanguageType::Cpp << 62 << 11;
        QTest::newRow("none") << LanguageType::None << 0 << 0;
        QTest::newRow("self-defined") << LanguageType::SelfDefined << 0 << 0;
    }
    void words_areSeededByTheLanguage()
    {
        QFETCH(LanguageType, language);
        const auto library = Create(language);
        const QString count = u"SELECT count(*) FROM Keywords WHERE Coloured = ?"_s;
        QTEST(int(library->QueryValue(count, {true}).ToLong()), "coloured");
        QTEST(int(library->QueryValue(count, {false}).ToLong()), "plain");
    }

    void word_standsInItsSpellingWithItsFlag_data()
    {
        QTest::addColumn<LanguageType>("language");
        QTest::addColumn<QString>("word");
        QTest::addColumn<bool>("coloured");
        const auto row = [](LanguageType language, const char* word, bool coloured) {
            QTest::newRow(word) << language << QString::fromLatin1(word) << coloured;
        };
        for (const char* word :
             {"#Const", "#End If", "ByVal", "CVErr", "DefVar", "ElseIf", "LSet", "UBound", "Nothing", "To"})
            row(LanguageType::VB, word, true);
        for (const char* word :
             {"Abs", "BeginProperty", "DDB", "EOF", "GetAllSettings", "IPmt", "MkDir", "RmDir", "WeekDay", "Year"})
            row(LanguageType::VB, word, false);
        for (const char* word :
             {"auto", "Char", "Class", "cerr", "virtual", "__asm", "__fastcall", "__virtual_inheritance"})
            row(LanguageType::Cpp, word, true);
        for (const char* word : {"define", "ifndef", "pragma", "#"})
            row(LanguageType::Cpp, word, false);
    }
    void word_standsInItsSpellingWithItsFlag()
    {
        QFETCH(LanguageType, language);
        QFETCH(QString, word);
        const auto library = Create(language);
        Statement row = library->Query(u"SELECT Keyword, Coloured FROM Keywords WHERE Keyword = ?"_s, {word});
        QVERIFY(row.Step());
        QCOMPARE(row.Text(0), word);
        QTEST(row.Column(1).ToBoolean(), "coloured");
    }

    void existingFile_staysAsItIs()
    {
        WriteFile(m_path, "not a library");
        QVERIFY(CDBCreate().CreateNewDB(m_path, LanguageType::VB, {}));
        QVERIFY(!CDBCreate().Create_Database(m_path, DatabaseKind::Library));
        QCOMPARE(ReadFile(m_path), QByteArray("not a library"));
        QCOMPARE(FilesInTheFolder().size(), 1);
    }

    void existingLibrary_staysAsItIs()
    {
        Create(LanguageType::Cpp).reset();
        const QByteArray bytes = ReadFile(m_path);
        QVERIFY(CDBCreate().CreateNewDB(m_path, LanguageType::VB, {}));
        QCOMPARE(ReadFile(m_path), bytes);
    }

    void databaseOfAKind_isMadeWithItsProperties()
    {
        QVERIFY(CDBCreate().Create_Database(m_path, DatabaseKind::Child));
        const auto database = Library::Open(m_path);
        QVERIFY(database->GetTableDef(u"Properties"_s).FindField(u"MasterReplicaPath"_s));
        QCOMPARE(database->QueryValue(u"SELECT length(DBID) FROM Properties"_s), Value(10));
    }

    void pathThatCannotBeMade_leavesNothing()
    {
        const QString path = m_home->Path(u"no such folder/library.qbd"_s);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!CDBCreate().CreateNewDB(path, LanguageType::VB, {}));
        const QString folder = QDir::toNativeSeparators(m_home->Path(u"no such folder"_s));
        QVERIFY2(prompts.Errors.first().endsWith(u"The folder '%1' does not exist."_s.arg(folder)),
                 qPrintable(prompts.Errors.first()));
        QVERIFY(ReadFile(ErrorLogFile()).contains(", CDBCreate, CreateNewDB, "));
        QVERIFY(!QFileInfo::exists(m_home->Path(u"no such folder"_s)));
    }
};

QB_TEST_MAIN(TestNewLibrary)
#include "tst_new_library.moc"
