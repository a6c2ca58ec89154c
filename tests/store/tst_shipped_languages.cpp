#include "platform/system/RuntimeError.h"
#include "store/CDBCreate.h"
#include "store/KeywordDefiner.h"
#include "store/LanguageTable.h"
#include "store/Library.h"
#include "store/ShippedLanguages.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The languages that come with the program, and the tables that they are made from.
class TestShippedLanguages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void languages_areMany()
    {
        QStringList names;
        for (const ShippedLanguage& language : ShippedLanguages())
            names << language.Name;
        QVERIFY2(names.size() >= 20, qPrintable(names.join(u", "_s)));
        for (const QString& name : {u"C"_s, u"C#"_s, u"Java"_s, u"JavaScript"_s, u"Python"_s, u"Rust"_s, u"SQL"_s})
            QVERIFY2(names.contains(name), qPrintable(name));
        names.removeDuplicates();
        QCOMPARE(names.size(), ShippedLanguages().size());
    }

    void language_goesIntoALibraryAndOutAgain_data()
    {
        QTest::addColumn<QString>("path");
        for (const ShippedLanguage& language : ShippedLanguages())
            QTest::newRow(qPrintable(language.Name)) << language.Path;
    }
    void language_goesIntoALibraryAndOutAgain()
    {
        QFETCH(QString, path);
        const TemporaryHome home;
        const ScriptedPrompts noConflicts;
        const LanguageDefinition file = ReadLanguageFile(path);
        QCOMPARE(BytesOf(file), ReadFile(path));
        QVERIFY(!file.Comment.isEmpty());
        QVERIFY(WhyNotStorable(file).isEmpty());
        const QString library = home.Path(u"library.qbd"_s);
        QVERIFY(CDBCreate().CreateNewDB(library, LanguageType::File, path));
        const auto database = Library::Open(library);
        const QString copy = home.Path(u"copy.qbl"_s);
        KeywordDefiner(*database).ExportLanguageDefinition(copy);
        LanguageDefinition again = ReadLanguageFile(copy);
        const auto sorted = [](QStringList words) {
            words.sort(Qt::CaseInsensitive);
            return words;
        };
        QCOMPARE(sorted(again.ColouredWords), sorted(file.ColouredWords));
        QCOMPARE(sorted(again.PlainWords), sorted(file.PlainWords));
        again.ColouredWords = file.ColouredWords;
        again.PlainWords = file.PlainWords;
        QCOMPARE(BytesOf(again), BytesOf(file));
    }

    void table_isRead()
    {
        const LanguageDefinition language = LanguageFromTable(
            u"# a remark\nlanguage: My Language\ncomment: #\ncomment-start: /*\n"
            "comment-end: */\n\n[coloured]\nif  then\n# more\nelse\n[plain]\nPrint\n"_s);
        QCOMPARE(language.Language, u"My Language"_s);
        QCOMPARE(language.Comment, u"#"_s);
        QCOMPARE(language.CommentStart, u"/*"_s);
        QCOMPARE(language.CommentEnd, u"*/"_s);
        QCOMPARE(language.ColouredWords, (QStringList{u"if"_s, u"then"_s, u"else"_s}));
        QCOMPARE(language.PlainWords, QStringList{u"Print"_s});
        QCOMPARE(language.ColouredKeywordColour, 0x800000);
    }

    void faultyTable_isRefusedByItsLine_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("reason");
        QTest::newRow("value") << u"language: x\ncolour: red\n"_s
                               << u"line 2: 'colour: red' is no value of a language."_s;
        QTest::newRow("no colon") << u"language\n"_s << u"line 1:"_s;
        QTest::newRow("twice") << u"language: x\ncomment: #\n[coloured]\nif\n[plain]\nIF\n"_s
                               << u"line 6: The word 'IF' stands there already."_s;
        QTest::newRow("no comment") << u"language: x\n[coloured]\nif\n"_s
                                    << u"The language or its comment is not named."_s;
        QTest::newRow("long word") << u"language: x\ncomment: #\n[plain]\n%1\n"_s.arg(QString(31, u'x'))
                                   << u"31 characters; 30 is the most"_s;
    }
    void faultyTable_isRefusedByItsLine()
    {
        QFETCH(QString, table);
        QFETCH(QString, reason);
        try {
            LanguageFromTable(table);
            QFAIL("it was read");
        } catch (const RuntimeError& error) {
            QVERIFY2(error.Description().contains(reason), qPrintable(error.Description()));
        }
    }
};

QTEST_GUILESS_MAIN(TestShippedLanguages)
#include "tst_shipped_languages.moc"
