#include "platform/dao/DBEngine.h"
#include "store/CDBCreate.h"
#include "support/ErrorRoutine.h"
#include "support/FileSizeLimit.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "support/Version.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// One string of a definition file: its length in two bytes, low byte first, and its bytes.
QByteArray Stored(const QByteArray& text)
{
    return QByteArray(1, char(text.size() & 0xff)) + char(text.size() >> 8) + text;
}

/// Version, language, start, end and line comment, 21 reserved strings, two word lists, and
/// the colours 0x00800000, -2 and 0x00008000.
QByteArray Definition(const QByteArray& coloured, const QByteArray& plain)
{
    return Stored("9.8.7")
           + Stored("Pas\x80"
                    "cal \xe4")
           + Stored("(*") + Stored("*)") + Stored("//") + QByteArray(21 * 2, '\0') + Stored(coloured) + Stored(plain)
           + QByteArray::fromHex("00008000"
                                 "feffffff"
                                 "00800000");
}

} // namespace

class TestLanguageDefinition : public QObject {
    Q_OBJECT

private:
    QString LanguageFile(const QByteArray& bytes)
    {
        const QString path = m_home->Path(u"Sprächen/my language.qbl"_s);
        WriteFile(path, bytes);
        return path;
    }

    bool Create(const QString& languageFile)
    {
        QDir().mkpath(m_home->Path(u"libraries"_s));
        return CDBCreate().CreateNewDB(LibraryPath(), LanguageType::File, languageFile);
    }

    QString LibraryPath() const { return m_home->Path(u"libraries/new.qbd"_s); }
    QStringList FilesLeft() const { return QDir(m_home->Path(u"libraries"_s)).entryList(QDir::Files | QDir::Hidden); }

    QStringList Words(bool coloured) const
    {
        const auto library = qb::Library::Open(LibraryPath());
        return Texts(*library, u"SELECT Keyword FROM Keywords WHERE coalesce(Coloured, 0) = ? ORDER BY rowid"_s,
                     {coloured});
    }

    std::optional<TemporaryHome> m_home;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
    }

    void cleanup() { m_home.reset(); }

    void record_isWrittenFieldByField()
    {
        LanguageDefinition language = LanguageFromBytes(Definition("begin|end", "writeln"));
        QCOMPARE(BytesOf(language), Definition("begin|end", "writeln"));
        language.ColouredWords.clear();
        language.PlainWords.clear();
        QCOMPARE(BytesOf(language), Definition("", ""));
    }

    void fileThatFailsWhileItIsRead_isNoEmptyLanguage() { QB_VERIFY_RAISES(ReadLanguageFile(u"/proc/self/mem"_s), 75); }

    void whatTheRecordCantHold_isRefused_data()
    {
        QTest::addColumn<LanguageDefinition>("language");
        QTest::addColumn<QString>("reason");
        QTest::newRow("characters") << LanguageDefinition{.PlainWords = {u"слово"_s}}
                                    << u"'слово', which has characters beyond Windows-1252"_s;
        QTest::newRow("length") << LanguageDefinition{.ColouredWords = QStringList(4097, u"1234567"_s)}
                                << u"a list of 32775 bytes; 32767 is the most"_s;
        QTest::newRow("separator") << LanguageDefinition{.ColouredWords = {u"a|b"_s}} << u"the word 'a|b'"_s;
    }
    void whatTheRecordCantHold_isRefused()
    {
        QFETCH(LanguageDefinition, language);
        QFETCH(QString, reason);
        const QString path = LanguageFile("old");
        try {
            WriteLanguageFile(path, language);
            QFAIL("it was written");
        } catch (const RuntimeError& error) {
            QVERIFY2(error.Description().contains(reason), qPrintable(error.Description()));
        }
        QCOMPARE(ReadFile(path), "old");
    }

    void longerOldFile_keepsItsTail()
    {
        const QByteArray bytes = BytesOf({.Language = u"new"_s});
        const QString path = LanguageFile(QByteArray(bytes.size(), 'x') + "tail");
        WriteLanguageFile(path, {.Language = u"new"_s});
        QCOMPARE(ReadFile(path), bytes + "tail");
        QCOMPARE(ReadLanguageFile(path).Language, u"new"_s);
    }

    void fullDisk_keepsTheOldFile()
    {
        const QString path = LanguageFile("old");
        const FileSizeLimit full(10);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, WriteLanguageFile(path, {.Language = u"new"_s}));
        QCOMPARE(ReadFile(path), "old");
    }

    void placeThatCantBeWritten_isAnError()
    {
        QVERIFY_THROWS_EXCEPTION(RuntimeError, WriteLanguageFile(m_home->Path(u"no/such/folder/x.qbl"_s), {}));
    }

    void record_isReadFieldByField()
    {
        const LanguageDefinition language = LanguageFromBytes(Definition("begin|end", "writeln"));
        QCOMPARE(language.Version, u"9.8.7"_s);
        QCOMPARE(language.Language, u"Pas€cal ä"_s); // the bytes are of code page 1252
        QCOMPARE(language.CommentStart, u"(*"_s);
        QCOMPARE(language.CommentEnd, u"*)"_s);
        QCOMPARE(language.Comment, u"//"_s);
        QCOMPARE(language.ColouredWords, (QStringList{u"begin"_s, u"end"_s}));
        QCOMPARE(language.PlainWords, QStringList{u"writeln"_s});
        QCOMPARE(language.ColouredKeywordColour, 0x800000);
        QCOMPARE(language.KeywordColour, -2);
        QCOMPARE(language.CommentColour, 0x8000);
    }

    void reservedStringsThatAreFilled_arePassedOver()
    {
        QByteArray bytes = Stored("1") + Stored("L") + Stored({}) + Stored({}) + Stored({});
        for (int i = 0; i < 21; ++i)
            bytes += Stored("reserved");
        bytes += Stored("word") + Stored({}) + QByteArray(12, '\1');
        const LanguageDefinition language = LanguageFromBytes(bytes);
        QCOMPARE(language.ColouredWords, QStringList{u"word"_s});
        QVERIFY(language.PlainWords.isEmpty());
        QCOMPARE(language.CommentColour, 0x01010101);
    }

    void longestString_isReadWhole()
    {
        QByteArray list = "x";
        while (list.size() < 65535 - 8)
            list += "|word123";
        list += QByteArray(65535 - list.size(), 'y');
        const LanguageDefinition language = LanguageFromBytes(Definition(list, "last"));
        QCOMPARE(language.ColouredWords.join(u'|').toLatin1(), list);
        QCOMPARE(language.PlainWords, QStringList{u"last"_s});
    }

    void recordCutAnywhere_givesWhatItHolds()
    {
        const QByteArray whole = Definition("begin|end", "writeln");
        const LanguageDefinition all = LanguageFromBytes(whole);
        for (qsizetype length = 0; length < whole.size(); ++length) {
            const LanguageDefinition cut = LanguageFromBytes(whole.left(length));
            QVERIFY(all.Version.startsWith(cut.Version));
            QVERIFY(all.Language.startsWith(cut.Language));
            QVERIFY(all.ColouredWords.join(u'|').startsWith(cut.ColouredWords.join(u'|')));
            QVERIFY(all.PlainWords.join(u'|').startsWith(cut.PlainWords.join(u'|')));
            QCOMPARE(cut.CommentColour, 0); // the last field is never complete
        }
        QCOMPARE(LanguageFromBytes(whole.chopped(4)).KeywordColour, -2);
        QCOMPARE(LanguageFromBytes(whole.chopped(12)).PlainWords, all.PlainWords);
    }

    void libraryOfAFile_hasItsWordsAndProperties()
    {
        QVERIFY(Create(LanguageFile(Definition("begin|end", "writeln|read"))));
        QCOMPARE(Words(true), (QStringList{u"begin"_s, u"end"_s}));
        QCOMPARE(Words(false), (QStringList{u"writeln"_s, u"read"_s}));
        const auto library = qb::Library::Open(LibraryPath());
        const Recordset row = library->OpenRecordset(u"Properties"_s);
        const std::pair<QString, Value> values[] = {{u"Version"_s, ProgramVersion()},
                                                    {u"LanguageUsed"_s, u"Pas€cal ä"_s},
                                                    {u"CommentIdentifier"_s, u"//"_s},
                                                    {u"CommentIdentifierStart"_s, u"(*"_s},
                                                    {u"CommentIdentifierEnd"_s, u"*)"_s},
                                                    {u"ColouredKeywordColour"_s, 8388608},
                                                    {u"KeywordColour"_s, -2},
                                                    {u"CommentColour"_s, 32768},
                                                    {u"CompactOnExit"_s, true},
                                                    {u"CompactOnExitEvery"_s, 5},
                                                    {u"BackupOnExit"_s, true},
                                                    {u"BackupOnExitEvery"_s, 15},
                                                    {u"BackupAutoDelete"_s, true},
                                                    {u"BackupAutoDeleteNo"_s, 5}};
        for (const auto& [column, value] : values)
            QVERIFY2(row[column] == value, qPrintable(column));
    }

    void wordsOfBothLists_goToThePlainOneAndAreNamed()
    {
        ScriptedPrompts prompts;
        prompts.ExpectMsgBox(u"Conflicts"_s);
        QVERIFY(Create(LanguageFile(Definition("begin|Both|END|two", "both|two|read"))));
        QCOMPARE(prompts.Messages.size(), 1);
        QCOMPARE(prompts.Messages[0].Text, u"The following conflicts has been encountered:Both, two"_s);
        QCOMPARE(prompts.Messages[0].Icon, MsgBoxIcon::Information);
        QCOMPARE(Words(false), (QStringList{u"both"_s, u"two"_s, u"read"_s}));
        QCOMPARE(Words(true), (QStringList{u"begin"_s, u"END"_s}));
    }

    void wordsTwiceInOneList_areNamedForEachList()
    {
        ScriptedPrompts prompts;
        prompts.ExpectMsgBox(u"Conflicts"_s);
        prompts.ExpectMsgBox(u"Conflicts"_s);
        QVERIFY(Create(LanguageFile(Definition("a|A", "b|B|b"))));
        QCOMPARE(prompts.Messages[0].Text, u"The following conflicts has been encountered:B, b"_s);
        QCOMPARE(prompts.Messages[1].Text, u"The following conflicts has been encountered:A"_s);
        QCOMPARE(Words(false) + Words(true), (QStringList{u"b"_s, u"a"_s}));
    }

    void emptyLists_areNoError()
    {
        QVERIFY(Create(LanguageFile(Definition({}, {}))));
        QVERIFY(Words(true).isEmpty() && Words(false).isEmpty());
    }

    void fileCutAnywhere_givesALibrary()
    {
        const QByteArray whole = Definition("begin", "writeln");
        for (const qsizetype length :
             {qsizetype(0), qsizetype(1), qsizetype(10), whole.size() - 20, whole.size() - 1}) {
            QFile::remove(LibraryPath());
            QVERIFY(Create(LanguageFile(whole.left(length))));
            QCOMPARE(Words(true), LanguageFromBytes(whole.left(length)).ColouredWords);
        }
    }

    void definitionThatTheLibraryRefuses_leavesNoFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error");
        QTest::newRow("word of 31 characters")
            << Definition("ok|" + QByteArray(31, 'w'), {})
            << u"The word '%1' was refused: 'Keyword' is too long; nothing was changed."_s.arg(QString(31, u'w'));
        QTest::newRow("language of 21 characters")
            << Stored("1") + Stored(QByteArray(21, 'L')) << u"'LanguageUsed' is too long; nothing was changed."_s;
        QTest::newRow("comment of 6 characters") << Stored("1") + Stored("L") + Stored("((((((")
                                                 << u"'CommentIdentifierStart' is too long; nothing was changed."_s;
    }
    void definitionThatTheLibraryRefuses_leavesNoFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!Create(LanguageFile(bytes)));
        QCOMPARE(prompts.Errors, QStringList{error});
        QVERIFY(FilesLeft().isEmpty());
    }

    void longestWord_isTaken()
    {
        const QByteArray word(30, 'w');
        QVERIFY(Create(LanguageFile(Definition(word, {}))));
        QCOMPARE(Words(true), QStringList{QString::fromLatin1(word)});
    }

    void refusedWord_isReportedUnderSetKeywords()
    {
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!Create(LanguageFile(Definition(QByteArray(31, 'w'), {}))));
        const QString log = QString::fromUtf8(ReadFile(ErrorLogFile()));
        QVERIFY2(log.contains(u", CDBCreate, SetKeywords, "), qPrintable(log));
    }

    void missingFile_leavesNoLibrary()
    {
        const QString missing = m_home->Path(u"no such language.qbl"_s);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!Create(missing));
        QCOMPARE(prompts.Errors, QStringList{u"The language definition file '%1' was not found."_s.arg(
                                     QDir::toNativeSeparators(missing))});
        QVERIFY(FilesLeft().isEmpty());
    }
};

QB_TEST_MAIN(TestLanguageDefinition)
#include "tst_language_definition.moc"
