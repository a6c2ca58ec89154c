// A library whose language came with the program before languages had rules.

#include "session/RulesOffer.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestRulesOffer : public QObject {
    Q_OBJECT

private:
    /// A library of Python as it was made before: words, no rules, and a word of the user's own.
    static std::unique_ptr<Database> OldLibrary(const TemporaryHome& home, const QString& language = u"Python"_s)
    {
        const QString path = home.Path(u"old.qbd"_s);
        CDBCreate().CreateNewDB(path, LanguageType::VB, {});
        auto database = Library::Open(path);
        database->Execute(u"UPDATE Properties SET LanguageUsed = ?, CommentColour = 77"_s, {language});
        database->Execute(u"DELETE FROM Keywords"_s);
        for (const QString& word : {u"if"_s, u"elif"_s, u"myword"_s})
            database->Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, -1)"_s, {word});
        database->Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES ('Print', 0)"_s);
        return database;
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void yes_takesRulesAndWords_andTheUsersWordStays()
    {
        const TemporaryHome home;
        ScriptedPrompts prompts;
        const auto database = OldLibrary(home);
        prompts.ExpectMsgBox(u"Language of the Library"_s, MsgBoxResult::Yes);
        QVERIFY(OfferRules(*database));
        const LanguageDefinition now = LanguageOfLibrary(*database);
        QVERIFY(now.Rules.contains(u"files: *.py"_s));
        QCOMPARE(now.Comment, u"#"_s);
        QVERIFY(now.ColouredWords.contains(u"nonlocal"_s));
        QVERIFY(now.ColouredWords.contains(u"myword"_s));
        QVERIFY(!now.PlainWords.contains(u"Print"_s)); // the rules know it
        QCOMPARE(now.CommentColour, 77);
        QVERIFY(!OfferRules(*database)); // there is nothing to offer any more
    }

    void no_isRememberedForThisLibrary()
    {
        const TemporaryHome home;
        ScriptedPrompts prompts;
        const auto database = OldLibrary(home);
        prompts.ExpectMsgBox(u"Language of the Library"_s, MsgBoxResult::No);
        QVERIFY(!OfferRules(*database));
        QCOMPARE(RulesOfLibrary(*database), QString());
        QVERIFY(!OfferRules(*database)); // without a question
        database->Execute(u"UPDATE Properties SET DBID = 'another'"_s);
        prompts.ExpectMsgBox(u"Language of the Library"_s, MsgBoxResult::No);
        QVERIFY(!OfferRules(*database));
    }

    void builtInAndOwnLanguages_areLeftAlone()
    {
        for (const QString& language : {u"VB"_s, u"C++"_s, u"My own"_s, QString()}) {
            const TemporaryHome home;
            const ScriptedPrompts prompts;
            QVERIFY(!OfferRules(*OldLibrary(home, language)));
        }
    }

    void libraryForReading_isLeftAlone()
    {
        const TemporaryHome home;
        const ScriptedPrompts prompts;
        OldLibrary(home).reset();
        QVERIFY(!OfferRules(*Library::Open(home.Path(u"old.qbd"_s), DBEngine::Access::ReadOnly)));
    }
};

QB_TEST_MAIN(TestRulesOffer)
#include "tst_rules_offer.moc"
