#include "platform/dao/DBEngine.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/CDBCreate.h"
#include "store/KeywordDefiner.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QtEndian>
#include <zlib.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString Rules = u"line: //\nblock: /* */ lines\nwords type: größe €uro 整数\n"_s;

LanguageDefinition SomeLanguage()
{
    return {.Version = u"1.2.3"_s,
            .Language = u"Mine"_s,
            .CommentStart = u"/*"_s,
            .CommentEnd = u"*/"_s,
            .Comment = u"//"_s,
            .ColouredWords = {u"if"_s, u"else"_s},
            .PlainWords = {u"print"_s},
            .ColouredKeywordColour = 1,
            .KeywordColour = 2,
            .CommentColour = 3,
            .Rules = Rules};
}

/// Without its rules: the record alone.
QByteArray RecordOf(LanguageDefinition language)
{
    language.Rules.clear();
    return BytesOf(language);
}

QByteArray Number(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// What is to stand behind a record, made of its parts.
QByteArray Tail(const QByteArray& record, const QByteArray& rules, quint32 version = 1,
                std::optional<quint32> length = {})
{
    const auto* bytes = reinterpret_cast<const Bytef*>(record.constData());
    return "QBRULES\n" + Number(version) + Number(quint32(crc32(0, bytes, uInt(record.size()))))
           + Number(length.value_or(quint32(rules.size()))) + rules;
}

} // namespace

/// The rules of a language where they are kept: in a library, in a definition file, while they are
/// edited; and the name of a language in a text.
class TestLibraryLanguage : public QObject {
    Q_OBJECT

private:
    QString FilePath() const { return m_home->Path(u"Sprächen/mine.qbl"_s); }
    QString LibraryPath() const { return m_home->Path(u"new.qbd"_s); }
    std::unique_ptr<Database> NewLibrary(LanguageType type = LanguageType::None, const QString& file = {})
    {
        return CDBCreate().CreateNewDB(LibraryPath(), type, file) ? qb::Library::Open(LibraryPath()) : nullptr;
    }
    QString Written(const LanguageDefinition& language)
    {
        WriteFile(FilePath(), BytesOf(language));
        return FilePath();
    }

    std::optional<TemporaryHome> m_home;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        QDir().mkpath(m_home->Path(u"Sprächen"_s));
    }
    void cleanup() { m_home.reset(); }

    // In a library

    void rules_haveATableOnlyWhenThereAreAny()
    {
        const auto library = NewLibrary(LanguageType::VB);
        QVERIFY(!library->TableExists(u"LanguageRules"_s));
        QCOMPARE(RulesOfLibrary(*library), QString());
        StoreRulesOfLibrary(*library, {});
        QVERIFY(!library->TableExists(u"LanguageRules"_s));
        StoreRulesOfLibrary(*library, Rules);
        QVERIFY(library->TableExists(u"LanguageRules"_s));
        QCOMPARE(RulesOfLibrary(*library), Rules);
    }

    void rulesStoredTwice_areOneRow()
    {
        const auto library = NewLibrary();
        StoreRulesOfLibrary(*library, Rules);
        StoreRulesOfLibrary(*library, u"line: ;\n"_s);
        QCOMPARE(CountOf(*library, u"LanguageRules"_s), 1);
        QCOMPARE(RulesOfLibrary(*library), u"line: ;\n"_s);
    }

    void emptyRules_goFromTheLibrary()
    {
        const auto library = NewLibrary();
        StoreRulesOfLibrary(*library, Rules);
        StoreRulesOfLibrary(*library, {});
        QCOMPARE(CountOf(*library, u"LanguageRules"_s), 0);
        QCOMPARE(RulesOfLibrary(*library), QString());
    }

    void rulesThatAreRolledBack_leaveThoseBefore()
    {
        const auto library = NewLibrary();
        StoreRulesOfLibrary(*library, Rules);
        {
            Transaction transaction(*library);
            StoreRulesOfLibrary(*library, u"line: ;\n"_s);
            QCOMPARE(RulesOfLibrary(*library), u"line: ;\n"_s);
        }
        QCOMPARE(RulesOfLibrary(*library), Rules);
    }

    void tableThatIsRolledBack_isGone()
    {
        const auto library = NewLibrary();
        {
            Transaction transaction(*library);
            StoreRulesOfLibrary(*library, Rules);
        }
        QVERIFY(!library->TableExists(u"LanguageRules"_s));
        QCOMPARE(RulesOfLibrary(*library), QString());
    }

    void rules_areStillThereWhenTheLibraryIsOpenedAgain()
    {
        const QString many = Rules.repeated(1000);
        StoreRulesOfLibrary(*NewLibrary(), many);
        QCOMPARE(RulesOfLibrary(*qb::Library::Open(LibraryPath())), many);
    }

    void newLibraryOfAFile_hasTheWholeLanguage()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        QVERIFY(library);
        QCOMPARE(CountOf(*library, u"LanguageRules"_s), 1);
        const LanguageDefinition stored = LanguageOfLibrary(*library);
        const LanguageDefinition expected = SomeLanguage();
        QCOMPARE(stored.Rules, Rules);
        QCOMPARE(stored.Language, expected.Language);
        QCOMPARE(stored.Comment, expected.Comment);
        QCOMPARE(stored.CommentStart, expected.CommentStart);
        QCOMPARE(stored.CommentEnd, expected.CommentEnd);
        QCOMPARE(stored.ColouredWords, expected.ColouredWords);
        QCOMPARE(stored.PlainWords, expected.PlainWords);
        QCOMPARE(stored.ColouredKeywordColour, 1);
        QCOMPARE(stored.KeywordColour, 2);
        QCOMPARE(stored.CommentColour, 3);
    }

    void newLibraryOfAFileWithoutRules_hasNoTableForThem()
    {
        LanguageDefinition plain = SomeLanguage();
        plain.Rules.clear();
        const auto library = NewLibrary(LanguageType::File, Written(plain));
        QVERIFY(!library->TableExists(u"LanguageRules"_s));
        QCOMPARE(LanguageOfLibrary(*library).Rules, QString());
    }

    void shippedLanguages_makeLibrariesWithTheirRules()
    {
        for (const QString& key : {u"cpp23"_s, u"python"_s, u"html"_s, u"cobol"_s}) {
            const ShippedLanguage* shipped = ShippedLanguageNamed(key);
            QVERIFY2(shipped, qPrintable(key));
            QFile::remove(LibraryPath());
            const auto library = NewLibrary(LanguageType::File, shipped->Path);
            const LanguageDefinition file = ReadLanguageFile(shipped->Path);
            QVERIFY2(!file.Rules.isEmpty(), qPrintable(key));
            QCOMPARE(RulesOfLibrary(*library), file.Rules);
            QCOMPARE(LanguageOfLibrary(*library).ColouredWords, file.ColouredWords);
        }
    }

    // While it is edited

    void definer_writesRulesToAFileAndTakesThem()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        const QString path = m_home->Path(u"Sprächen/out.qbl"_s);
        KeywordDefiner(*library).ExportLanguageDefinition(path);
        QCOMPARE(ReadLanguageFile(path).Rules, Rules);
        QCOMPARE(ReadLanguageFile(path).ColouredWords, (QStringList{u"else"_s, u"if"_s})); // in the order of the grid

        LanguageDefinition other = SomeLanguage();
        other.Rules = u"line: ;\n"_s;
        KeywordDefiner definer(*library);
        QVERIFY(definer.ImportLanguageDefinition(Written(other)));
        QCOMPARE(definer.Values().Rules, u"line: ;\n"_s);
        QCOMPARE(RulesOfLibrary(*library), Rules); // not before it is saved
        definer.SaveLanguage();
        definer.Commit();
        QCOMPARE(RulesOfLibrary(*library), u"line: ;\n"_s);
        QCOMPARE(CountOf(*library, u"LanguageRules"_s), 1);
    }

    void fileWithoutRules_takesThoseOfTheLibraryAway()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        LanguageDefinition plain = SomeLanguage();
        plain.Rules.clear();
        KeywordDefiner definer(*library);
        QVERIFY(definer.ImportLanguageDefinition(Written(plain)));
        definer.SaveLanguage();
        definer.Commit();
        QCOMPARE(RulesOfLibrary(*library), QString());
    }

    void importThatIsRolledBack_leavesTheRules()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        LanguageDefinition other = SomeLanguage();
        other.Rules = u"line: ;\n"_s;
        KeywordDefiner definer(*library);
        QVERIFY(definer.ImportLanguageDefinition(Written(other)));
        definer.SaveLanguage();
        QCOMPARE(RulesOfLibrary(*library), u"line: ;\n"_s); // inside the transaction
        definer.Rollback();
        QCOMPARE(RulesOfLibrary(*library), Rules);
        QVERIFY(!library->OpenRecordset(u"Properties"_s)[u"LanguageUsed"_s].ToText().isEmpty());
    }

    void definerThatEnds_dropsRulesThatWereNotCommitted()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        {
            KeywordDefiner definer(*library);
            definer.SetWord(definer.RowCount() - 1, u"while"_s); // begins the transaction
            LanguageDefinition values = definer.Values();
            values.Rules.clear();
            definer.SetValues(values);
            definer.SaveLanguage();
            QCOMPARE(RulesOfLibrary(*library), QString());
        }
        QCOMPARE(RulesOfLibrary(*library), Rules);
    }

    void wordWithAStar_isRefused()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        KeywordDefiner definer(*library);
        const int last = definer.RowCount() - 1;
        for (const QString& word : {u"*"_s, u"a*b"_s, u"while*"_s})
            QVERIFY2(!definer.SetWord(last, word), qPrintable(word));
        QVERIFY(!definer.SetWord(0, u"el*se"_s));
        QVERIFY(!definer.TransactionOpen());
        QCOMPARE(Texts(*library, u"SELECT Keyword FROM Keywords ORDER BY Keyword"_s),
                 (QStringList{u"else"_s, u"if"_s, u"print"_s}));
        QVERIFY(definer.SetWord(last, u"while"_s));
    }

    void definitionWithAStar_isNoneThatALibraryHolds()
    {
        QCOMPARE(WhyNotStorable(SomeLanguage()), QString());
        using List = QStringList LanguageDefinition::*;
        for (const List list : {&LanguageDefinition::ColouredWords, &LanguageDefinition::PlainWords}) {
            LanguageDefinition language = SomeLanguage();
            (language.*list) << u"a*b"_s;
            QVERIFY2(WhyNotStorable(language).contains(u"'a*b'"_s), qPrintable(WhyNotStorable(language)));
        }
    }

    void fileWithAStarWord_isNotImported()
    {
        const auto library = NewLibrary(LanguageType::File, Written(SomeLanguage()));
        LanguageDefinition bad = SomeLanguage();
        bad.ColouredWords << u"a*b"_s;
        bad.Rules = u"line: ;\n"_s;
        KeywordDefiner definer(*library);
        QB_VERIFY_RAISES(definer.ImportLanguageDefinition(Written(bad)), ErrorNumber::InvalidCall);
        QVERIFY(!definer.Changed());
        QCOMPARE(definer.Values().Rules, Rules);
        QCOMPARE(RulesOfLibrary(*library), Rules);
    }

    // In a file

    void recordBeforeTheRules_isTheOneWithoutThem()
    {
        const QByteArray record = RecordOf(SomeLanguage());
        const QByteArray whole = BytesOf(SomeLanguage());
        QVERIFY(whole.startsWith(record));
        QCOMPARE(whole.mid(record.size()), Tail(record, Rules.toUtf8()));
        int strings = 0; // 28 of them and three colours
        qsizetype at = 0;
        for (; strings < 28; ++strings)
            at += 2 + qFromLittleEndian<quint16>(record.constData() + at);
        QCOMPARE(at + 12, record.size());
    }

    void rulesInAFile_goThereAndBack()
    {
        for (const QString& rules : {Rules, u"x"_s, u"\n\n"_s, Rules.repeated(5000)}) {
            LanguageDefinition language = SomeLanguage();
            language.Rules = rules;
            WriteLanguageFile(FilePath(), language);
            const LanguageDefinition read = ReadLanguageFile(FilePath());
            QCOMPARE(read.Rules, rules);
            QCOMPARE(read.Language, u"Mine"_s);
            QCOMPARE(read.PlainWords, QStringList{u"print"_s});
            QCOMPARE(read.CommentColour, 3);
            QCOMPARE(BytesOf(read), ReadFile(FilePath()));
            QFile::remove(FilePath());
        }
    }

    void tailCutAnywhere_givesNoRulesAndTheWholeRecord()
    {
        const QByteArray record = RecordOf(SomeLanguage());
        const QByteArray whole = BytesOf(SomeLanguage());
        for (qsizetype length = record.size(); length < whole.size(); ++length) {
            const LanguageDefinition cut = LanguageFromBytes(whole.left(length));
            QVERIFY2(cut.Rules.isEmpty(), qPrintable(QString::number(length)));
            QCOMPARE(RecordOf(cut), record);
        }
        QCOMPARE(LanguageFromBytes(whole).Rules, Rules);
    }

    void whatStandsBehindTheRules_isPassedOver()
    {
        QCOMPARE(LanguageFromBytes(BytesOf(SomeLanguage()) + "rest of a longer file").Rules, Rules);
    }

    void rulesBehindAnotherRecord_dontCount()
    {
        LanguageDefinition other = SomeLanguage();
        other.Language = u"Mind"_s; // of the same length
        const QByteArray record = RecordOf(SomeLanguage());
        const QByteArray tail = BytesOf(SomeLanguage()).mid(record.size());
        const LanguageDefinition read = LanguageFromBytes(RecordOf(other) + tail);
        QCOMPARE(read.Language, u"Mind"_s);
        QCOMPARE(read.Rules, QString());
        QCOMPARE(LanguageFromBytes(record + tail).Rules, Rules);
    }

    void tailOfAnotherForm_isNone_data()
    {
        const QByteArray record = RecordOf(SomeLanguage());
        const QByteArray rules = Rules.toUtf8();
        QTest::addColumn<QByteArray>("tail");
        QTest::addColumn<bool>("counts");
        QTest::newRow("as it is written") << Tail(record, rules) << true;
        QTest::newRow("version 0") << Tail(record, rules, 0) << false;
        QTest::newRow("version 2") << Tail(record, rules, 2) << false;
        QTest::newRow("longer than it is") << Tail(record, rules, 1, quint32(rules.size() + 1)) << false;
        QTest::newRow("longest length") << Tail(record, rules, 1, 0xffffffff) << false;
        QTest::newRow("half of the longest length") << Tail(record, rules, 1, 0x80000000) << false;
        QTest::newRow("more than 1 MiB") << Tail(record, QByteArray(1024 * 1024 + 1, 'x')) << false;
        QTest::newRow("1 MiB") << Tail(record, QByteArray(1024 * 1024, 'x')) << true;
        QTest::newRow("a byte before the mark") << ' ' + Tail(record, rules) << false;
    }
    void tailOfAnotherForm_isNone()
    {
        QFETCH(QByteArray, tail);
        QFETCH(bool, counts);
        const LanguageDefinition read = LanguageFromBytes(RecordOf(SomeLanguage()) + tail);
        QCOMPARE(!read.Rules.isEmpty(), counts);
        QCOMPARE(read.CommentColour, 3);
    }

    void bitThatIsFlippedInRecordOrHead_disarmsTheRules()
    {
        const QByteArray whole = BytesOf(SomeLanguage());
        const qsizetype headEnd = RecordOf(SomeLanguage()).size() + 8 + 12;
        for (qsizetype at = 0; at < headEnd; ++at) {
            for (int bit = 0; bit < 8; ++bit) {
                QByteArray damaged = whole;
                damaged[at] = char(damaged[at] ^ (1 << bit));
                const QString rules = LanguageFromBytes(damaged).Rules;
                // The length may come out smaller, in which case less is read, but nothing that was not there.
                const bool isLength = at >= headEnd - 4;
                const bool isPart = Rules.startsWith(rules) || rules.endsWith(QChar::ReplacementCharacter);
                QVERIFY2(isLength ? isPart : rules.isEmpty(),
                         qPrintable(u"byte %1, bit %2: %3"_s.arg(at).arg(bit).arg(rules)));
            }
        }
    }

    void rulesTooLong_areRefusedAndTheOldFileStays()
    {
        LanguageDefinition language = SomeLanguage();
        language.Rules = QString(1024 * 1024, u'x');
        WriteLanguageFile(FilePath(), language);
        QCOMPARE(ReadLanguageFile(FilePath()).Rules.size(), 1024 * 1024);
        language.Rules = QString(1024 * 1024 - 1, u'x') + u'ä'; // bytes count
        QB_VERIFY_RAISES(WriteLanguageFile(FilePath(), language), ErrorNumber::InvalidCall);
        QCOMPARE(ReadLanguageFile(FilePath()).Rules.size(), 1024 * 1024);
    }

    void largestDefinition_isReadWhole()
    {
        QStringList words;
        for (int i = 0; i < 3600; ++i)
            words << u"word"_s + QString::number(i);
        LanguageDefinition language = SomeLanguage();
        language.ColouredWords = words;
        language.PlainWords = words;
        language.Rules = QString(1024 * 1024, u'y');
        WriteLanguageFile(FilePath(), language);
        QCOMPARE(ReadLanguageFile(FilePath()).Rules, language.Rules);
    }

    void sameDefinitionWithoutRules_disarmsTheTailOfTheFileBefore()
    {
        WriteLanguageFile(FilePath(), SomeLanguage());
        const qint64 size = QFileInfo(FilePath()).size();
        LanguageDefinition plain = SomeLanguage();
        plain.Rules.clear();
        WriteLanguageFile(FilePath(), plain);
        QCOMPARE(QFileInfo(FilePath()).size(), size); // a longer file keeps its tail
        QCOMPARE(ReadLanguageFile(FilePath()).Rules, QString());
        QCOMPARE(ReadLanguageFile(FilePath()).Language, u"Mine"_s);
    }

    void shorterRules_takeTheirPlaceInALongerFile()
    {
        WriteLanguageFile(FilePath(), SomeLanguage());
        LanguageDefinition shorter = SomeLanguage();
        shorter.Rules = u"line: ;\n"_s;
        WriteLanguageFile(FilePath(), shorter);
        QCOMPARE(ReadLanguageFile(FilePath()).Rules, u"line: ;\n"_s);
    }

    // In a text

    void languageInATextsRtf_isSetReplacedAndRemoved()
    {
        const QString rtf = RtfFromPlainText(u"{a} \\ ä\r\n整数\r\n"_s, CodeFont);
        QCOMPARE(LanguageInRtf(rtf), QString());
        const QString python = WithLanguageInRtf(rtf, u"Python"_s);
        QVERIFY(python.contains(u"{\\*\\qblang Python}"_s));
        QCOMPARE(LanguageInRtf(python), u"Python"_s);
        QCOMPARE(QString(python).remove(u"{\\*\\qblang Python}"_s), rtf); // the rest is as it was
        QCOMPARE(PlainTextFromRtf(python), PlainTextFromRtf(rtf));
        const QString rust = WithLanguageInRtf(python, u"Rust"_s);
        QCOMPARE(LanguageInRtf(rust), u"Rust"_s);
        QCOMPARE(rust, QString(python).replace(u"Python"_s, u"Rust"_s));
        QCOMPARE(WithLanguageInRtf(rust, {}), rtf);
        QCOMPARE(WithLanguageInRtf(rtf, {}), rtf);
    }

    void emptyText_hasNoLanguage()
    {
        QCOMPARE(WithLanguageInRtf({}, u"Python"_s), QString());
        QCOMPARE(LanguageInRtf({}), QString());
    }

    void plainText_becomesRtfThatNamesTheLanguage()
    {
        const QString rtf = WithLanguageInRtf(u"a {b} \\c\r\nd"_s, u"Python"_s);
        QCOMPARE(LanguageInRtf(rtf), u"Python"_s);
        QCOMPARE(PlainTextFromRtf(rtf), u"a {b} \\c\r\nd"_s);
        QCOMPARE(WithLanguageInRtf(u"plain"_s, {}), u"plain"_s);
    }

    void anyName_goesThereAndBack_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString& name :
             {u"C++ (current)"_s, u"a{b}c"_s, u"}"_s, u"{"_s, u"back\\slash"_s, u"C#"_s, u"Größe"_s, u"言語"_s,
              u"a;b"_s, u"\U0001F600"_s, u"\\'7d"_s, u"\\qblang"_s, QString(20, u'ä')})
            QTest::addRow("%s", qPrintable(name)) << name;
    }
    void anyName_goesThereAndBack()
    {
        QFETCH(QString, name);
        const QString rtf = RtfFromPlainText(u"text }\r\n"_s, CodeFont);
        const QString with = WithLanguageInRtf(rtf, name);
        QCOMPARE(LanguageInRtf(with), name);
        QCOMPARE(PlainTextFromRtf(with), u"text }\r\n"_s);
        RichTextDocument document;
        ReadRtf(with, document);
        QCOMPARE(document.Language(), name);
        QCOMPARE(WithLanguageInRtf(with, {}), rtf);
        QCOMPARE(LanguageInRtf(WithLanguageInRtf(with, u"Other"_s)), u"Other"_s);
    }

    void documentsLanguage_isWrittenAndRead()
    {
        RichTextDocument document;
        document.Replace(0, 0, u"code"_s, document.DefaultFormat());
        document.SetLanguage(u"Python"_s);
        const QString rtf = WriteRtf(document);
        QCOMPARE(LanguageInRtf(rtf), u"Python"_s);
        RichTextDocument read;
        read.SetLanguage(u"Other"_s); // what was there before
        ReadRtf(rtf, read);
        QCOMPARE(read.Language(), u"Python"_s);
        QCOMPARE(read.Text(), u"code"_s);
        QCOMPARE(WriteRtf(read), rtf);
        ReadRtf(RtfFromPlainText(u"code"_s, CodeFont), read);
        QCOMPARE(read.Language(), QString());
    }

    void textThatLooksLikeTheGroup_isText()
    {
        const QString text = u"{\\*\\qblang Python} is how it is written"_s;
        const QString rtf = RtfFromPlainText(text, CodeFont);
        QCOMPARE(LanguageInRtf(rtf), QString());
        const QString with = WithLanguageInRtf(rtf, u"Rust"_s);
        QCOMPARE(LanguageInRtf(with), u"Rust"_s);
        QCOMPARE(PlainTextFromRtf(with), text);
    }

    void hostileDestinations_areReadWithoutHarm_data()
    {
        QTest::addColumn<QString>("group");
        QTest::addColumn<QString>("language");
        QTest::newRow("empty") << u"{\\*\\qblang }"_s << QString();
        QTest::newRow("a word without the blank") << u"{\\*\\qblang}"_s << QString();
        QTest::newRow("blanks around") << u"{\\*\\qblang   Python  }"_s << u"Python"_s;
        QTest::newRow("twice") << u"{\\*\\qblang Python}{\\*\\qblang Rust}"_s << u"Rust"_s;
    }
    void hostileDestinations_areReadWithoutHarm()
    {
        QFETCH(QString, group);
        QFETCH(QString, language);
        const QString rtf = u"{\\rtf1\\ansi"_s + group + u"{\\fonttbl{\\f0 Courier New;}}\\f0 text\\par}"_s;
        RichTextDocument document;
        ReadRtf(rtf, document);
        QCOMPARE(document.Language(), language);
        LanguageInRtf(rtf);
        QCOMPARE(document.Text(), u"text"_s);
    }

    void groupWithoutEnd_isReadWithoutHarm()
    {
        const QString rtf = u"{\\rtf1\\ansi{\\*\\qblang Python{\\fonttbl{\\f0 Courier New;}}\\f0 text\\par"_s;
        for (qsizetype length = 0; length <= rtf.size(); ++length) {
            RichTextDocument document;
            ReadRtf(rtf.left(length), document);
            QVERIFY(document.Language().size() <= 64);
            LanguageInRtf(rtf.left(length));
            WithLanguageInRtf(rtf.left(length), u"Rust"_s);
        }
    }

    void languageWithNestedGroups_isReplacedAndTheTextStays()
    {
        const QString rtf = u"{\\rtf1\\ansi{\\*\\qblang Py{\\b th}on}{\\fonttbl{\\f0 Courier New;}}\\f0 text\\par}"_s;
        QCOMPARE(PlainTextFromRtf(rtf), u"text"_s);
        const QString changed = WithLanguageInRtf(rtf, u"Rust"_s);
        QCOMPARE(LanguageInRtf(changed), u"Rust"_s);
        QCOMPARE(PlainTextFromRtf(changed), u"text"_s);
    }

    void nestedGroupsInTheName_staySound()
    {
        RichTextDocument document;
        ReadRtf(u"{\\rtf1\\ansi{\\*\\qblang Py{\\b th{\\i on}}x}{\\fonttbl{\\f0 A;}}text\\par}"_s, document);
        QCOMPARE(document.Text(), u"text"_s);
        QVERIFY(document.Language().size() <= 64);
        const QString groups = QString(100'000, u'{') + u"x"_s + QString(100'000, u'}');
        const QString deep = u"{\\rtf1\\ansi{\\*\\qblang "_s + groups + u"}{\\fonttbl{\\f0 A;}}text\\par}"_s;
        ReadRtf(deep, document);
        QCOMPARE(document.Text(), u"text"_s);
        WithLanguageInRtf(deep, u"Rust"_s);
    }

    void nameOfAMegabyte_isCutAndCostsLittle()
    {
        const QString name(1024 * 1024, u'x');
        const QString rtf = u"{\\rtf1\\ansi{\\*\\qblang "_s + name + u"}{\\fonttbl{\\f0 A;}}text\\par}"_s;
        QElapsedTimer clock;
        clock.start();
        RichTextDocument document;
        ReadRtf(rtf, document);
        QVERIFY(document.Language().size() <= 64);
        QCOMPARE(document.Text(), u"text"_s);
        QVERIFY(LanguageInRtf(rtf).size() <= 64);
        const QString changed = WithLanguageInRtf(rtf, u"Rust"_s);
        QCOMPARE(LanguageInRtf(changed), u"Rust"_s);
        QCOMPARE(PlainTextFromRtf(changed), u"text"_s);
        QVERIFY(clock.elapsed() < 5000);
    }

    void nameOfManyPieces_isCutAndCostsLittle()
    {
        RichTextDocument document;
        ReadRtf(u"{\\rtf1\\ansi{\\*\\qblang "_s + u"\\'e4 x"_s.repeated(200'000) + u"}text\\par}"_s, document);
        QVERIFY(document.Language().size() <= 64);
        QCOMPARE(document.Text(), u"text"_s);
    }

    void groupBeyondTheHead_isNotLookedFor()
    {
        // A text may hold the group at any place; the begin of the string is where it is written.
        const QString rtf = WithLanguageInRtf(RtfFromPlainText(u"x"_s, CodeFont), u"Python"_s);
        QVERIFY(rtf.indexOf(u"\\qblang"_s) < 100);
        QVERIFY(rtf.indexOf(u"\\qblang"_s) < rtf.indexOf(u"\\fonttbl"_s));
    }
};

QB_TEST_MAIN(TestLibraryLanguage)
#include "tst_library_language.moc"
