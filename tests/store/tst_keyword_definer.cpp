#include "platform/dao/DBEngine.h"
#include "store/KeywordDefiner.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "support/Version.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The language of a library while it is edited.
class TestKeywordDefiner : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = m_home->Path(u"Sprächen.qbd"_s);
        m_database = MakeLibrary(m_library, LanguageType::None);
        m_database->Execute(
            u"UPDATE Properties SET LanguageUsed = 'Mine', CommentIdentifier = '#', CommentIdentifierStart = '/*', "
            "CommentIdentifierEnd = '*/', ColouredKeywordColour = ?, KeywordColour = 1, CommentColour = 2"_s,
            {qint64(0x80800000) - 0x100000000}); // with the bit of the system's colours
        for (const auto& [word, coloured] :
             {std::pair(u"while"_s, true), std::pair(u"do"_s, true), std::pair(u"print"_s, false)})
            m_database->Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, ?)"_s, {word, coloured});
    }
    void cleanup()
    {
        m_definer.reset();
        m_database.reset();
        m_prompts.reset();
        m_home.reset();
    }

    void language_isReadWithItsWords()
    {
        Open();
        QCOMPARE(m_definer->Values().Language, u"Mine"_s);
        QCOMPARE(m_definer->Values().Comment, u"#"_s);
        QCOMPARE(m_definer->Values().CommentStart, u"/*"_s);
        QCOMPARE(m_definer->Values().CommentEnd, u"*/"_s);
        QCOMPARE(m_definer->Values().ColouredKeywordColour, 0x800000);
        QCOMPARE(m_definer->Values().KeywordColour, 1);
        QCOMPARE(m_definer->Values().CommentColour, 2);
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
        QVERIFY(!m_definer->Changed());
        QVERIFY(!m_definer->TransactionOpen());
    }

    // The grid

    void typedWord_isWrittenWithEachKey()
    {
        Open();
        QVERIFY(m_definer->SetWord(3, u"f"_s));
        QVERIFY(m_definer->TransactionOpen());
        QCOMPARE(Stored(), u"do+ f print while+"_s);
        QVERIFY(m_definer->SetWord(3, u"fo"_s));
        QCOMPARE(Stored(), u"do+ fo print while+"_s);
        QCOMPARE(Grid(), u"do+ print while+ fo _"_s); // a new empty row stands below
    }

    void wordThatExists_isRefused_whileTypingGoesOn()
    {
        Open();
        QVERIFY(m_definer->SetWord(3, u"d"_s));
        QVERIFY(!m_definer->SetWord(3, u"DO"_s));
        QCOMPARE(Stored(), u"d do+ print while+"_s);
        QVERIFY(m_definer->SetWord(3, u"dot"_s));
        QCOMPARE(Stored(), u"do+ dot print while+"_s);
        QVERIFY(!m_definer->SetWord(4, u"while"_s)); // in the new row
        QCOMPARE(Grid(), u"do+ print while+ dot _"_s);
        QVERIFY(!m_definer->SetWord(0, u"print"_s));
        QCOMPARE(Stored(), u"do+ dot print while+"_s);
    }

    void emptiedWord_isDeletedAtOnce()
    {
        Open();
        QVERIFY(m_definer->SetWord(1, {}));
        QCOMPARE(Stored(), u"do+ while+"_s);
        QCOMPARE(Grid(), u"do+ while+ _"_s);
        QVERIFY(m_definer->SetWord(2, {})); // the new row has nothing to delete
        QCOMPARE(Grid(), u"do+ while+ _"_s);
    }

    void tick_isSwitched()
    {
        Open();
        m_definer->UpdateColouredTick(1);
        QCOMPARE(Stored(), u"do+ print+ while+"_s);
        m_definer->UpdateColouredTick(1);
        QCOMPARE(Stored(), u"do+ print while+"_s);
        m_definer->UpdateColouredTick(3); // the new row has none
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
    }

    void selectedRows_areDeleted()
    {
        Open();
        m_definer->DeleteRows({0, 2, 3});
        QCOMPARE(Stored(), u"print"_s);
        QCOMPARE(Grid(), u"print _"_s);
    }

    void wordThatHasGone_isAnErrorOfItsOwn()
    {
        Open();
        m_database->Execute(u"DELETE FROM Keywords WHERE Keyword = 'print'"_s);
        m_prompts->ExpectError();
        QVERIFY(!m_definer->FindWord(1));
        QVERIFY(
            m_prompts->Errors.last().contains(u"Error finding corresponding record in the underlying recordset."_s));
        QVERIFY(m_definer->FindWord(0));
    }

    // The transaction

    void rollback_dropsAllEdits()
    {
        Open();
        m_definer->SetWord(3, u"new"_s);
        m_definer->UpdateColouredTick(0);
        m_definer->DeleteRows({2});
        m_definer->Rollback();
        QVERIFY(!m_definer->TransactionOpen());
        QCOMPARE(Stored(), u"do+ print while+"_s);
    }

    void endWithoutCommit_dropsAllEdits()
    {
        Open();
        m_definer->SetWord(3, u"new"_s);
        m_definer.reset();
        QVERIFY(!m_database->InTransaction());
        QCOMPARE(Stored(), u"do+ print while+"_s);
    }

    void commit_keepsThem()
    {
        Open();
        m_definer->SetWord(3, u"new"_s);
        LanguageDefinition values = m_definer->Values();
        values.Language.clear();
        values.Comment = u"--"_s;
        m_definer->SetValues(values);
        QVERIFY(m_definer->CheckCommentDelimiter());
        m_definer->SaveLanguage();
        m_definer->Commit();
        QVERIFY(!m_definer->Changed());
        m_definer.reset();
        m_database = Library::Open(m_library);
        QCOMPARE(Stored(), u"do+ new print while+"_s);
        QCOMPARE(Property(u"CommentIdentifier"_s), u"--"_s);
        QVERIFY(!m_database->QueryValue(u"SELECT LanguageUsed FROM Properties"_s).IsNull());
        QCOMPARE(Property(u"LanguageUsed"_s), QString());
        QCOMPARE(Property(u"ColouredKeywordColour"_s), QString::number(0x800000));
    }

    void unchangedLanguage_isNotWritten()
    {
        Open();
        m_database->Execute(u"UPDATE Properties SET LanguageUsed = 'of another'"_s);
        m_definer->SaveLanguage();
        QCOMPARE(Property(u"LanguageUsed"_s), u"of another"_s);
    }

    void missingDelimiter_isToldAbout()
    {
        Open();
        LanguageDefinition values = m_definer->Values();
        values.Comment.clear();
        m_definer->SetValues(values);
        m_prompts->ExpectMsgBox(u"Notes Delimiter Missing"_s);
        QVERIFY(!m_definer->CheckCommentDelimiter());
        QCOMPARE(m_prompts->Messages.last().Text, u"You have to specify comment delimiter."_s);
    }

    // Files

    void file_isWrittenAndReadBack()
    {
        Open();
        const QString path = m_home->Path(u"größe.qbl"_s);
        m_definer->ExportLanguageDefinition(path);
        const LanguageDefinition file = ReadLanguageFile(path);
        QCOMPARE(file.Version, ProgramVersion());
        QCOMPARE(file.Language, u"Mine"_s);
        QCOMPARE(file.ColouredWords, (QStringList{u"do"_s, u"while"_s}));
        QCOMPARE(file.PlainWords, QStringList{u"print"_s});
        QCOMPARE(file.ColouredKeywordColour, 0x800000);
        QCOMPARE(ReadFile(path), BytesOf(file));
        m_definer->DeleteAllKeywords();
        m_definer->SetValues({});
        QVERIFY(m_definer->ImportLanguageDefinition(path));
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
        QCOMPARE(m_definer->Values().Comment, u"#"_s);
        QCOMPARE(m_definer->Values().CommentColour, 2);
    }

    void importThatIsRolledBack_changesNothing()
    {
        Open();
        QVERIFY(m_definer->ImportLanguageDefinition(
            File({.Language = u"Other"_s, .Comment = u"//"_s, .ColouredWords = {u"x"_s}})));
        QCOMPARE(Grid(), u"x+ _"_s);
        m_definer->Rollback();
        QCOMPARE(Stored(), u"do+ print while+"_s);
        QCOMPARE(Property(u"LanguageUsed"_s), u"Mine"_s);
    }

    void wordInBothLists_isPlain()
    {
        Open();
        m_prompts->ExpectMsgBox(u"Conflicts"_s);
        QVERIFY(m_definer->ImportLanguageDefinition(
            File({.Comment = u"//"_s, .ColouredWords = {u"a"_s, u"B"_s, u"c"_s}, .PlainWords = {u"b"_s, u"C"_s}})));
        QCOMPARE(m_prompts->Messages.last().Text, u"The following conflicts has been encountered:B, c"_s);
        QCOMPARE(m_prompts->Messages.last().Icon, MsgBoxIcon::Information);
        QCOMPARE(Grid(), u"a+ b C _"_s);
    }

    void missingFile_isPassedOver()
    {
        Open();
        QVERIFY(!m_definer->ImportLanguageDefinition(m_home->Path(u"nothing.qbl"_s)));
        QVERIFY(!m_definer->TransactionOpen());
    }

    void fileThatCantBeTaken_changesNothing_data()
    {
        QTest::addColumn<LanguageDefinition>("file");
        QTest::addColumn<QString>("reason");
        const QString longWord(31, u'x');
        QTest::newRow("word") << LanguageDefinition{.ColouredWords = {u"ok"_s, longWord}} << u"The word '"_s;
        QTest::newRow("plain word") << LanguageDefinition{.PlainWords = {longWord}} << u"The word '"_s;
        QTest::newRow("name") << LanguageDefinition{.Language = QString(21, u'x')} << u"The name of the language '"_s;
        QTest::newRow("mark") << LanguageDefinition{.CommentEnd = u"######"_s}
                              << u"The comment delimiter '######' has 6 characters; 5 is the most."_s;
    }
    void fileThatCantBeTaken_changesNothing()
    {
        QFETCH(LanguageDefinition, file);
        QFETCH(QString, reason);
        Open();
        try {
            m_definer->ImportLanguageDefinition(File(file));
            QFAIL("it was taken");
        } catch (const RuntimeError& error) {
            QVERIFY2(error.Description().contains(reason), qPrintable(error.Description()));
            QVERIFY(error.Description().contains(u"nothing was changed"_s));
        }
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
        QVERIFY(!m_definer->Changed());
        QVERIFY(!m_definer->TransactionOpen());
    }

    void importThatTheLibraryRefuses_changesNothing()
    {
        Open();
        QStringList many;
        for (int i = 0; i < 3000; ++i)
            many << u"a_word_of_some_length_%1"_s.arg(i);
        const QString file = File({.ColouredWords = many.mid(0, 1000), .PlainWords = many.mid(1000, 1000)});
        // The disk is full.
        const qint64 pages = m_database->QueryValue(u"PRAGMA page_count"_s).ToLong();
        QCOMPARE(m_database->QueryValue(u"PRAGMA max_page_count = %1"_s.arg(pages + 2)).ToLong(), pages + 2);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, m_definer->ImportLanguageDefinition(file));
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
        QVERIFY(!m_definer->TransactionOpen());
        QVERIFY(!m_definer->Changed());
        QVERIFY(m_definer->SetWord(3, u"mine"_s));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, m_definer->ImportLanguageDefinition(file));
        QVERIFY(!m_definer->TransactionOpen()); // a full disk takes all of it back
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
        QVERIFY(m_definer->SetWord(3, u"again"_s));
        m_definer->Commit();
        QCOMPARE(Stored(), u"again do+ print while+"_s);
    }

    /// However a file is cut, it is read as far as it goes or refused; never half of it.
    /// A full disk ends the transaction; the rows are other ones then: an edit of one must not meet another.
    void editAfterALostTransaction_isRefusedAndMeetsNoOtherWord()
    {
        Open();
        QVERIFY(m_definer->SetWord(0, u"zzz"_s)); // the rows stay in their order until they are read anew
        QVERIFY(m_definer->SetWord(3, u"mine"_s));
        LoseTransaction(*m_database);
        try {
            m_definer->SetWord(3, QString()); // "mine", where nothing stands now
            QFAIL("was done");
        } catch (const RuntimeError& error) {
            QVERIFY(error.Description().contains(u"all words are as they were"_s));
        }
        QCOMPARE(Grid(), u"do+ print while+ _"_s);
        QVERIFY(!m_definer->TransactionOpen());
        MakeRoom(*m_database);
        QVERIFY(m_definer->SetWord(3, u"again"_s));
        m_definer->Commit();
        QCOMPARE(Stored(), u"again do+ print while+"_s);
    }

    void tickAfterALostTransaction_isRefused()
    {
        Open();
        QVERIFY(m_definer->SetWord(0, QString())); // "print" is the first now
        LoseTransaction(*m_database);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, m_definer->UpdateColouredTick(0));
        m_definer->Commit();
        QCOMPARE(Stored(), u"do+ print while+"_s);
    }

    void languageThatIsNotCommitted_isNotKept()
    {
        Open();
        LanguageDefinition values = m_definer->Values();
        values.Comment = u";"_s;
        m_definer->SetValues(values);
        m_definer->SaveLanguage();
        m_definer.reset();
        QCOMPARE(m_database->QueryValue(u"SELECT CommentIdentifier FROM Properties"_s).ToText(), u"#"_s);
    }

    /// A library without a language needs no delimiter, until it is to get a language.
    void libraryWithoutALanguage_needsNoDelimiter()
    {
        m_database->Execute(u"UPDATE Properties SET LanguageUsed = '', CommentIdentifier = NULL"_s);
        Open();
        QVERIFY(m_definer->CheckCommentDelimiter());
        m_definer->SetWord(0, u"other"_s);
        m_prompts->ExpectMsgBox(u"Notes Delimiter Missing"_s);
        QVERIFY(!m_definer->CheckCommentDelimiter());
    }

    void fileCutAnywhere_isTakenWholeOrNotAtAll()
    {
        Open();
        const QByteArray bytes = BytesOf({.Version = u"1"_s,
                                          .Language = u"Cut"_s,
                                          .CommentStart = u"(*"_s,
                                          .CommentEnd = u"*)"_s,
                                          .Comment = u"//"_s,
                                          .ColouredWords = {u"alpha"_s, u"beta"_s},
                                          .PlainWords = {u"gamma"_s}});
        const QString path = m_home->Path(u"cut.qbl"_s);
        for (qsizetype length = 0; length <= bytes.size(); ++length) {
            WriteFile(path, bytes.left(length));
            QVERIFY(m_definer->ImportLanguageDefinition(path));
            QCOMPARE(Stored().isEmpty(), m_definer->RowCount() == 1);
            QVERIFY(u"Cut"_s.startsWith(m_definer->Values().Language));
        }
        QCOMPARE(Grid(), u"alpha+ beta+ gamma _"_s);
        m_definer->Rollback();
        QCOMPARE(Stored(), u"do+ print while+"_s);
    }

    void hugeFile_isReadAsFarAsARecordGoes()
    {
        Open();
        const QString path = m_home->Path(u"huge.qbl"_s);
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(BytesOf({.Comment = u"//"_s, .ColouredWords = {u"one"_s}}));
            QVERIFY(file.resize(100'000'000));
        }
        QVERIFY(m_definer->ImportLanguageDefinition(path));
        QCOMPARE(Grid(), u"one+ _"_s);
    }

private:
    void Open() { m_definer = std::make_unique<KeywordDefiner>(*m_database); }
    QString File(const LanguageDefinition& file)
    {
        const QString path = m_home->Path(u"a file.qbl"_s);
        WriteFile(path, BytesOf(file));
        return path;
    }
    /// The rows of the grid; "+" marks a coloured word, "_" the empty row.
    QString Grid() const
    {
        QStringList words;
        for (int row = 0; row < m_definer->RowCount() - 1; ++row)
            words << m_definer->Word(row) + (m_definer->Coloured(row) ? u"+"_s : QString());
        return (words << u"_"_s).join(u' ');
    }
    QString Stored()
    {
        return Texts(*m_database,
                     u"SELECT Keyword || CASE WHEN coalesce(Coloured, 0) THEN '+' ELSE '' END FROM Keywords ORDER BY "
                     "Keyword"_s)
            .join(u' ');
    }
    QString Property(const QString& column)
    {
        return m_database->QueryValue(u"SELECT "_s + column + u" FROM Properties"_s).ToText();
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    QString m_library;
    std::unique_ptr<Library> m_database;
    std::unique_ptr<KeywordDefiner> m_definer;
};

QTEST_GUILESS_MAIN(TestKeywordDefiner)
#include "tst_keyword_definer.moc"
