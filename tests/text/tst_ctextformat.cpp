#include "platform/dao/DBEngine.h"
#include "platform/richtext/RichText.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"

#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Writes down which property was set to what, and fails where it is told to.
class LoggingBox : public RichText {
public:
    QStringList Log;
    bool Fails = false;

    void SetSelFontName(const QString& name) override { Note(u"font "_s + name), RichText::SetSelFontName(name); }
    void SetSelFontSize(double points) override { Note(u"size %1"_s.arg(points)), RichText::SetSelFontSize(points); }
    void SetSelBold(bool on) override { Note(u"bold %1"_s.arg(on)), RichText::SetSelBold(on); }
    void SetSelItalic(bool on) override { Note(u"italic %1"_s.arg(on)), RichText::SetSelItalic(on); }
    void SetSelUnderline(bool on) override { Note(u"underline %1"_s.arg(on)), RichText::SetSelUnderline(on); }
    void SetSelColor(quint32 color) override { Note(u"color %1"_s.arg(color)), RichText::SetSelColor(color); }
    void SetSelBullet(bool on) override { Note(u"bullet %1"_s.arg(on)), RichText::SetSelBullet(on); }
    void SetBulletIndent(int twips) override
    {
        Note(u"bullet indent %1"_s.arg(twips)), RichText::SetBulletIndent(twips);
    }
    void SetSelAlignment(TextAlignment alignment) override
    {
        Note(u"alignment %1"_s.arg(int(alignment))), RichText::SetSelAlignment(alignment);
    }
    void SetSelIndent(int twips) override { Note(u"indent %1"_s.arg(twips)), RichText::SetSelIndent(twips); }
    std::optional<QString> SelFontName() const override
    {
        if (Fails)
            throw RuntimeError(7, u"no such thing"_s, u"box"_s);
        return RichText::SelFontName();
    }

private:
    void Note(const QString& what)
    {
        if (Fails)
            throw RuntimeError(7, u"no such thing"_s, u"box"_s);
        Log << what;
    }
};

} // namespace

class TestCTextFormat : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_box = std::make_unique<LoggingBox>();
        m_box->SetText(u"abcd\r\nefgh"_s);
        m_format = std::make_unique<CTextFormat>();
        m_format->SetRichTextBox(m_box.get());
        CTextFormat* format = m_format.get();
        QStringList& log = m_box->Log; // events stand between what is done to the box
        connect(format, &CTextFormat::eFontChanged, this,
                [&log](const QString& font) { log << u"eFontChanged "_s + font; });
        connect(format, &CTextFormat::eFontSizeChanged, this,
                [&log](int size) { log << u"eFontSizeChanged %1"_s.arg(size); });
        connect(format, &CTextFormat::eBoldStateChanged, this,
                [&log](bool on) { log << u"eBoldStateChanged %1"_s.arg(on); });
        connect(format, &CTextFormat::eItalicStateChanged, this,
                [&log](bool on) { log << u"eItalicStateChanged %1"_s.arg(on); });
        connect(format, &CTextFormat::eUnderlineStateChanged, this,
                [&log](bool on) { log << u"eUnderlineStateChanged %1"_s.arg(on); });
        connect(format, &CTextFormat::BulletStateChanged, this,
                [&log](bool on) { log << u"BulletStateChanged %1"_s.arg(on); });
        connect(format, &CTextFormat::AllignmentStateChanged, this,
                [&log](int alignment) { log << u"AllignmentStateChanged %1"_s.arg(alignment); });
        connect(format, &CTextFormat::eColorizeProgress, this,
                [&log](int percent) { log << u"eColorizeProgress %1"_s.arg(percent); });
    }

    void cleanup()
    {
        m_format.reset();
        m_box.reset();
        m_home.reset();
    }

    void newObject_knowsNothing()
    {
        const CTextFormat format;
        QCOMPARE(format.RichTextBox(), nullptr);
        QCOMPARE(format.Font(), QString());
        QCOMPARE(format.Size(), 0);
        QCOMPARE(format.Bold(), false);
        QCOMPARE(format.Italic(), false);
        QCOMPARE(format.Underline(), false);
        QCOMPARE(format.Bullets(), false);
        QCOMPARE(format.Color(), 0u);
        QCOMPARE(format.Alignment(), -1);
        QCOMPARE(format.CommentIdentifier(), QString());
    }

    // Properties

    void fontSizeAndColour_areWrittenWithoutAnEvent()
    {
        m_format->SetFont(u"Arial"_s);
        m_format->SetSize(14);
        m_format->SetColor(0x123456);
        QCOMPARE(m_box->Log, (QStringList{u"font Arial"_s, u"size 14"_s, u"color 1193046"_s}));
        QCOMPARE(m_format->Font(), u"Arial"_s);
        QCOMPARE(m_format->Size(), 14);
        QCOMPARE(m_format->Color(), 0x123456u);
    }

    void states_areWrittenAndThenTold_data()
    {
        QTest::addColumn<bool>("on");
        QTest::newRow("on") << true;
        QTest::newRow("off") << false;
    }

    void states_areWrittenAndThenTold()
    {
        QFETCH(bool, on);
        m_format->SetBold(on);
        m_format->SetItalic(on);
        m_format->SetUnderline(on);
        const QString state = QString::number(on);
        QCOMPARE(m_box->Log, (QStringList{u"bold "_s + state, u"eBoldStateChanged "_s + state, u"italic "_s + state,
                                          u"eItalicStateChanged "_s + state, u"underline "_s + state,
                                          u"eUnderlineStateChanged "_s + state}));
        QCOMPARE(m_format->Bold(), on);
        QCOMPARE(m_format->Italic(), on);
        QCOMPARE(m_format->Underline(), on);
    }

    void bullets_setTheirIndent()
    {
        m_format->SetBullets(true);
        QCOMPARE(m_box->Log, (QStringList{u"bullet 1"_s, u"bullet indent 300"_s, u"BulletStateChanged 1"_s}));
        QCOMPARE(m_format->Bullets(), true);
        m_box->Log.clear();
        m_format->SetBullets(false);
        QCOMPARE(m_box->Log, (QStringList{u"bullet 0"_s, u"bullet indent 0"_s, u"BulletStateChanged 0"_s}));
        QCOMPARE(m_format->Bullets(), false);
    }

    void alignment_isWrittenAndThenTold()
    {
        for (const int alignment : {1, 2, 0}) {
            m_box->Log.clear();
            m_format->SetAlignment(alignment);
            QCOMPARE(m_box->Log,
                     (QStringList{u"alignment %1"_s.arg(alignment), u"AllignmentStateChanged %1"_s.arg(alignment)}));
            QCOMPARE(m_format->Alignment(), alignment);
        }
    }

    void event_comesWhenTheValueIsStored()
    {
        bool known = false;
        connect(m_format.get(), &CTextFormat::eBoldStateChanged, this,
                [&] { known = m_format->Bold() && m_box->SelBold() == true; });
        m_format->SetBold(true);
        QVERIFY(known);
    }

    void indent_goesInStepsOf200()
    {
        m_format->IncreaseIndent();
        m_format->IncreaseIndent();
        QCOMPARE(m_box->SelIndent(), std::optional(400));
        m_format->DecreaseIndent();
        QCOMPARE(m_box->SelIndent(), std::optional(200));
        m_format->DecreaseIndent();
        m_format->DecreaseIndent();
        QCOMPARE(m_box->SelIndent(), std::optional(0));
        QCOMPARE(m_box->Log.filter(u"Changed"_s), QStringList());
    }

    // Format

    void format_writesTheStoredLookInItsOrderWithoutEvents()
    {
        m_format->SetFont(u"Arial"_s);
        m_format->SetSize(14);
        m_format->SetBold(true);
        m_format->SetUnderline(true);
        m_format->SetColor(255);
        m_format->SetBullets(true);
        m_format->SetAlignment(2);
        m_box->Log.clear();
        m_box->SetSelStart(6);
        m_box->SetSelLength(4);
        m_format->Format();
        QCOMPARE(m_box->Log, (QStringList{u"font Arial"_s, u"size 14"_s, u"bold 1"_s, u"italic 0"_s, u"underline 1"_s,
                                          u"color 255"_s}));
        QCOMPARE(m_box->SelBullet(), std::optional(false));
        QCOMPARE(m_box->SelAlignment(), std::optional(TextAlignment::Left));
    }

    // ReadValues

    void firstRead_tellsWhatIsNotAsStored()
    {
        m_format->ReadValues();
        QCOMPARE(m_box->Log,
                 (QStringList{u"eFontChanged Courier New"_s, u"eFontSizeChanged 10"_s, u"AllignmentStateChanged 0"_s}));
    }

    void readOfWhatIsKnown_tellsNothing()
    {
        m_format->ReadValues();
        m_box->Log.clear();
        m_format->ReadValues();
        QCOMPARE(m_box->Log, QStringList());
    }

    void readOfAllThatDiffers_tellsItInOrder()
    {
        m_box->SetSelLength(3);
        m_box->SetSelFontName(u"Arial"_s);
        m_box->SetSelFontSize(14);
        m_box->SetSelBold(true);
        m_box->SetSelItalic(true);
        m_box->SetSelUnderline(true);
        m_box->SetSelColor(255);
        m_box->SetSelBullet(true);
        m_box->SetSelAlignment(TextAlignment::Right);
        m_box->Log.clear();
        m_format->ReadValues();
        QCOMPARE(m_box->Log, (QStringList{u"eFontChanged Arial"_s, u"eFontSizeChanged 14"_s, u"eBoldStateChanged 1"_s,
                                          u"eItalicStateChanged 1"_s, u"eUnderlineStateChanged 1"_s,
                                          u"BulletStateChanged 1"_s, u"AllignmentStateChanged 1"_s}));
        QCOMPARE(m_format->Font(), u"Arial"_s);
        QCOMPARE(m_format->Size(), 14);
        QVERIFY(m_format->Bold() && m_format->Italic() && m_format->Underline() && m_format->Bullets());
        QCOMPARE(m_format->Alignment(), 1);
        QCOMPARE(m_format->Color(), 0u); // is not read
    }

    void readOfMixedStates_tellsThemAsOffEachTime()
    {
        m_format->ReadValues();
        m_format->SetBold(true);
        m_box->SetSelLength(2);
        m_box->SetSelBold(true);
        m_box->SetSelItalic(true);
        m_box->SetSelUnderline(true);
        m_box->SetSelBullet(true);
        m_box->SetSelLength(10);
        for (int i = 0; i < 2; ++i) {
            m_box->Log.clear();
            m_format->ReadValues();
            QCOMPARE(m_box->Log, (QStringList{u"eBoldStateChanged 0"_s, u"eItalicStateChanged 0"_s,
                                              u"eUnderlineStateChanged 0"_s, u"BulletStateChanged 0"_s}));
            QCOMPARE(m_format->Bold(), false);
        }
    }

    void readOfMixedFonts_isOfNoFont()
    {
        m_format->ReadValues();
        m_box->SetSelLength(2);
        m_box->SetSelFontName(u"Arial"_s);
        m_box->SetSelFontSize(14);
        m_box->SetSelAlignment(TextAlignment::Right);
        m_box->SetSelLength(10);
        m_box->Log.clear();
        m_format->ReadValues();
        QCOMPARE(m_box->Log, (QStringList{u"eFontChanged "_s, u"eFontSizeChanged 0"_s, u"AllignmentStateChanged 0"_s}));
        QCOMPARE(m_format->Font(), QString());
        QCOMPARE(m_format->Size(), 0);
    }

    void readOfAnotherBox_isOfThatBox()
    {
        m_format->ReadValues();
        m_box->Log.clear();
        RichText other({.Name = u"Arial"_s, .Points = 12});
        m_format->SetRichTextBox(&other);
        QCOMPARE(m_format->RichTextBox(), &other);
        m_format->ReadValues();
        QCOMPARE(m_box->Log, (QStringList{u"eFontChanged Arial"_s, u"eFontSizeChanged 12"_s}));
    }

    // Colours and keywords of a library

    void init_loadsTheLanguageOfTheLibrary()
    {
        const auto library = NewLibrary();
        library->Execute(u"UPDATE Properties SET CommentColour = 1, ColouredKeywordColour = 2, KeywordColour = 3, "
                         "CommentIdentifier = '#', "
                         "CommentIdentifierStart = '(', CommentIdentifierEnd = ')'"_s);
        SetKeywords(*library, {{u"Red"_s, true}, {u"Plain"_s, false}});
        m_format->ColorizeInit(*library);
        QCOMPARE(m_format->CommentIdentifier(), u"#"_s);
        QCOMPARE(Painted(u"red plain (c)x other #"_s), u"Red Plain (c)x other #"_s);
        QCOMPARE(Colours(u"red "_s), u"222-"_s);
        QCOMPARE(Colours(u"plain other "_s), u"33333-33333-"_s);
        QCOMPARE(Colours(u"(red)"_s), u"11111"_s);
        QCOMPARE(Colours(u"#red"_s), u"1111"_s);
    }

    void init_readsNullAsNothing()
    {
        const auto library = NewLibrary();
        library->Execute(
            u"UPDATE Properties SET CommentColour = NULL, ColouredKeywordColour = NULL, KeywordColour = NULL, "
            "CommentIdentifier = NULL, "
            "CommentIdentifierStart = NULL, CommentIdentifierEnd = NULL"_s);
        SetKeywords(*library, {{u"Red"_s, true}});
        m_format->ColorizeInit(*library);
        QCOMPARE(m_format->CommentIdentifier(), QString());
        QCOMPARE(Colours(u"red x 'c"_s), u"000-0-00"_s);
        QCOMPARE(m_format->CommentIdentifier(), u"'"_s);
        m_format->ColorizeInit(*library); // which reads it anew
        QCOMPARE(m_format->CommentIdentifier(), QString());
    }

    void keywordOfNoColouring_isPlain()
    {
        const auto library = NewLibrary();
        library->Execute(u"UPDATE Properties SET ColouredKeywordColour = 2, KeywordColour = 3"_s);
        library->Execute(u"DROP TABLE Keywords"_s); // one that knows no constraints
        library->Execute(u"CREATE TABLE Keywords (Keyword TEXT, Coloured BOOLEAN)"_s);
        SetKeywords(*library, {{u"Null"_s, Value()}, {u"Red"_s, true}});
        m_format->ColorizeInit(*library);
        QCOMPARE(Painted(u"null red "_s), u"Null Red "_s);
        QCOMPARE(Colours(u"null red "_s), u"3333-222-"_s);
    }

    void initWithoutKeywords_keepsThoseThatWere()
    {
        const auto library = NewLibrary();
        SetKeywords(*library, {{u"Red"_s, true}, {u"Plain"_s, false}});
        m_format->ColorizeInit(*library);
        library->Execute(u"DELETE FROM Keywords"_s);
        library->Execute(u"UPDATE Properties SET CommentIdentifier = '#'"_s);
        m_format->ColorizeInit(*library);
        QCOMPARE(m_format->CommentIdentifier(), u"#"_s);
        QCOMPARE(Painted(u"red plain "_s), u"Red Plain "_s);
        m_format = std::make_unique<CTextFormat>(); // which has none
        m_format->ColorizeInit(*library);
        QCOMPARE(Painted(u"red plain "_s), u"red plain "_s);
    }

    void initWithOtherKeywords_replacesBothSets()
    {
        const auto library = NewLibrary();
        SetKeywords(*library, {{u"Red"_s, true}, {u"Plain"_s, false}});
        m_format->ColorizeInit(*library);
        SetKeywords(*library, {{u"Blue"_s, true}});
        QCOMPARE(Painted(u"red blue "_s), u"Red blue "_s); // until it is loaded again
        m_format->ColorizeInit(*library);
        QCOMPARE(Painted(u"red plain blue "_s), u"red plain Blue "_s);
    }

    void populate_writesTheBuiltInWordsOfLanguage1_data()
    {
        QTest::addColumn<int>("language");
        QTest::addColumn<int>("words");
        QTest::newRow("1") << 1 << 250;
        QTest::newRow("2") << 2 << 0;
    }

    void populate_writesTheBuiltInWordsOfLanguage1()
    {
        QFETCH(int, language);
        QFETCH(int, words);
        const auto library = NewLibrary();
        library->Execute(u"UPDATE Properties SET CommentColour = 1, ColouredKeywordColour = 2, KeywordColour = 3, "
                         "CommentIdentifier = '#'"_s);
        SetKeywords(*library, {{u"Own"_s, true}});
        QVERIFY(m_format->PopulateKeywordSet(*library, language));
        QCOMPARE(Texts(*library,
                       u"SELECT ColouredKeywordColour || ' ' || KeywordColour || ' ' || CommentColour || ' ' || "
                       "CommentIdentifier FROM Properties"_s),
                 QStringList{u"8388608 0 32768 #"_s});
        QCOMPARE(CountOf(*library, u"Keywords"_s), words);
        QCOMPARE(Texts(*library, u"SELECT Keyword FROM Keywords WHERE Keyword = 'Own'"_s), QStringList());
        const QString coloured = u"SELECT Coloured FROM Keywords WHERE Keyword = '%1'"_s;
        QCOMPARE(Texts(*library, coloured.arg(u"Dim"_s)), words ? QStringList{u"-1"_s} : QStringList());
        QCOMPARE(Texts(*library, coloured.arg(u"Trim"_s)), words ? QStringList{u"0"_s} : QStringList());
    }

    void populate_hasTheWordsOfANewLibrary()
    {
        const auto library = NewLibrary(LanguageType::Cpp);
        QVERIFY(m_format->PopulateKeywordSet(*library, 1));
        const QString other = m_home->Path(u"vb.qbd"_s);
        const auto vb = MakeLibrary(other, LanguageType::VB);
        const QString words = u"SELECT Keyword || Coloured FROM Keywords ORDER BY Keyword"_s;
        QCOMPARE(Texts(*library, words), Texts(*vb, words));
    }

    // Failures

    void failureOfTheBox_isReportedByProcedure_data()
    {
        QTest::addColumn<QString>("procedure");
        for (const char* procedure :
             {"<<Let>> Font", "<<Let>> Size", "<<Let>> Bold", "<<Let>> Italic", "<<Let>> Underline", "<<Let>> Bullets",
              "<<Let>> Alignment", "<<Let>> Color", "Format", "ReadValues", "ColorizeCode"})
            QTest::newRow(procedure) << QString::fromLatin1(procedure);
    }

    void failureOfTheBox_isReportedByProcedure()
    {
        QFETCH(QString, procedure);
        m_box->Fails = true;
        {
            ScriptedPrompts prompts;
            prompts.ExpectError();
            Do(procedure);
        }
        const QString log = QString::fromUtf8(ReadFile(ErrorLogFile()));
        QVERIFY2(log.contains(u"7, no such thing, CTextFormat, %1, box"_s.arg(procedure)), qPrintable(log));
        QCOMPARE(m_box->Log, QStringList()); // no event either
    }

    void failureOfAnIndent_isIgnored()
    {
        m_box->Fails = true;
        QVERIFY_THROWS_NO_EXCEPTION(m_format->IncreaseIndent());
        QVERIFY_THROWS_NO_EXCEPTION(m_format->DecreaseIndent());
        m_format->SetRichTextBox(nullptr);
        QVERIFY_THROWS_NO_EXCEPTION(m_format->IncreaseIndent());
        QVERIFY_THROWS_NO_EXCEPTION(m_format->DecreaseIndent());
        QVERIFY(!QFile::exists(ErrorLogFile()));
    }

    void failureOfTheScan_keepsWhatWasPainted()
    {
        class FailingBox : public RichText {
        public:
            bool SetSelText(const QString& text) override
            {
                if (text == u"Else"_s)
                    throw RuntimeError(7, u"no such thing"_s, u"box"_s);
                return RichText::SetSelText(text);
            }
        } box;
        box.SetText(u"dim x else dim "_s);
        m_format->SetLanguage(BuiltInLanguage(LanguageType::VB));
        ScriptedPrompts prompts;
        prompts.ExpectError();
        m_format->ColorizeCode(box);
        QCOMPARE(box.Text(), u"Dim x else dim "_s);
        QCOMPARE(box.Document().FormatAt(0).Color, 0x800000u);
    }

    void failureOfTheLibrary_isReported()
    {
        const auto library = NewLibrary();
        library->Execute(u"DROP TABLE Keywords"_s);
        {
            ScriptedPrompts prompts;
            prompts.ExpectError();
            m_format->ColorizeInit(*library);
        }
        QVERIFY(QString::fromUtf8(ReadFile(ErrorLogFile())).contains(u", CTextFormat, ColorizeInit, "_s));
        {
            ScriptedPrompts prompts;
            prompts.ExpectError();
            QVERIFY(!m_format->PopulateKeywordSet(*library, 1));
        }
        QVERIFY(QString::fromUtf8(ReadFile(ErrorLogFile())).contains(u", CTextFormat, PopulateKeywordSet, "_s));
    }

    void failureOfPopulate_leavesTheLibraryAsItWas()
    {
        const auto library = NewLibrary();
        library->Execute(u"UPDATE Properties SET CommentColour = 1"_s);
        SetKeywords(*library, {{u"Own"_s, true}});
        library->Execute(
            u"CREATE TEMP TRIGGER stop BEFORE INSERT ON Keywords BEGIN SELECT raise(ABORT, 'stopped'); END"_s);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!m_format->PopulateKeywordSet(*library, 1));
        QCOMPARE(Texts(*library, u"SELECT CommentColour FROM Properties"_s), QStringList{u"1"_s});
        QCOMPARE(Texts(*library, u"SELECT Keyword FROM Keywords"_s), QStringList{u"Own"_s});
    }

    void operationsWithoutABox_areReported_data() { failureOfTheBox_isReportedByProcedure_data(); }

    void operationsWithoutABox_areReported()
    {
        QFETCH(QString, procedure);
        if (procedure == u"ColorizeCode"_s)
            return; // is given its box
        m_format->SetRichTextBox(nullptr);
        {
            ScriptedPrompts prompts;
            prompts.ExpectError();
            Do(procedure);
        }
        const QString log = QString::fromUtf8(ReadFile(ErrorLogFile()));
        QVERIFY2(log.contains(u", CTextFormat, %1, "_s.arg(procedure)), qPrintable(log));
    }

private:
    struct Word {
        QString Text;
        Value Coloured;
    };

    std::unique_ptr<Library> NewLibrary(LanguageType language = LanguageType::VB)
    {
        return MakeLibrary(m_home->Path(u"library ß.qbd"_s), language);
    }

    static void SetKeywords(Database& library, const QList<Word>& words)
    {
        library.Execute(u"DELETE FROM Keywords"_s);
        for (const Word& word : words)
            library.Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, ?)"_s, {word.Text, word.Coloured});
    }

    QString Painted(const QString& text)
    {
        RichText box;
        box.SetText(text);
        m_format->ColorizeCode(box);
        return box.Text();
    }

    /// The colour of each character; a hyphen for one that was not painted.
    QString Colours(const QString& text)
    {
        RichText box;
        box.SetText(text);
        m_format->ColorizeCode(box);
        QString colours;
        for (qsizetype at = 0; at < text.size(); ++at) {
            const quint32 colour = box.Document().FormatAt(at).Color;
            colours += colour == AutomaticColor ? u"-"_s : QString::number(colour);
        }
        return colours;
    }

    void Do(const QString& procedure)
    {
        if (procedure == u"<<Let>> Font"_s)
            m_format->SetFont(u"Arial"_s);
        else if (procedure == u"<<Let>> Size"_s)
            m_format->SetSize(12);
        else if (procedure == u"<<Let>> Bold"_s)
            m_format->SetBold(true);
        else if (procedure == u"<<Let>> Italic"_s)
            m_format->SetItalic(true);
        else if (procedure == u"<<Let>> Underline"_s)
            m_format->SetUnderline(true);
        else if (procedure == u"<<Let>> Bullets"_s)
            m_format->SetBullets(true);
        else if (procedure == u"<<Let>> Alignment"_s)
            m_format->SetAlignment(1);
        else if (procedure == u"<<Let>> Color"_s)
            m_format->SetColor(1);
        else if (procedure == u"Format"_s)
            m_format->Format();
        else if (procedure == u"ReadValues"_s)
            m_format->ReadValues();
        else
            m_format->ColorizeCode(*m_box);
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<LoggingBox> m_box;
    std::unique_ptr<CTextFormat> m_format;
};

QB_TEST_MAIN(TestCTextFormat)
#include "tst_ctextformat.moc"
