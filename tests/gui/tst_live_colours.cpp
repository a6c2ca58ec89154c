#include "platform/richtext/Rtf.h"
#include "session/ui/SampleBox.h"
#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "store/LibraryLanguage.h"
#include "store/ShippedLanguages.h"
#include "support/EditingWindow.h"
#include "support/ui/Colors.h"
#include "text/CodeSections.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QListWidget>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QString Rtf(const QString& text)
{
    return RtfFromPlainText(text, CodeFont);
}

RichTextDocument Parsed(const QString& rtf)
{
    RichTextDocument document;
    ReadRtf(rtf, document);
    return document;
}

/// Whether any character has a colour; headers of sections do not count.
bool HasColours(const RichTextDocument& document)
{
    for (qsizetype at = 0; at < document.Length(); ++at) {
        const CharFormat& format = document.FormatAt(at);
        if (format.Color != AutomaticColor && format.Color != 0 && !format.Bold)
            return true;
    }
    return false;
}

quint32 Light(TokenKind kind)
{
    return TokenPalette::Default().Light[size_t(kind)];
}

/// The colours that lie over a line: a kind's letter for each character, "." for none, "?" for others.
QString Marks(const QTextBlock& block, const TokenColors& colors = TokenPalette::Default().Light)
{
    QString marks(block.length() - 1, u'.');
    for (const QTextLayout::FormatRange& range : block.layout()->formats()) {
        QChar mark = u'?';
        for (const TokenKindRow& row : TokenKindRows) {
            if (range.format.foreground().color() == ColorOf(colors[size_t(row.Kind)]))
                mark = QLatin1Char(row.Mark);
        }
        // A colour that is left over may reach further than the line.
        const int end = std::min(range.start + range.length, int(marks.size()));
        for (int at = range.start; at < end; ++at)
            marks[at] = mark;
    }
    return marks;
}

} // namespace

/// Code in the colours of its language's rules, while it is looked at and edited.
class TestLiveColours : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        SaveSetting(SettingsApplication, u"Settings"_s, u"AutoColorizeWhenItemOpened"_s, u"False"_s);
    }
    void cleanup() { End(); }

    // Display

    void openedItem_isInTheColoursOfItsRules()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x; // no\r\nif (\"a\") return 42;\r\n/* b\r\nc */ else"_s);
        QCOMPARE(Shown(), (QStringList{u"ttt....ccccc"_s, u"kk..sss..kkkkkk.nn."_s, u"cccc"_s, u"cccc.kkkk"_s}));
        QVERIFY(!HasColours(Code()->Content().Document()));
        QVERIFY(Code()->ColoursByRules());
    }

    void libraryOfADefinitionFile_hasItsColours()
    {
        const QString path = m_home->Path(u"data/py.qbd"_s);
        QVERIFY(CDBCreate().CreateNewDB(path, LanguageType::File, ShippedLanguageNamed(u"Python"_s)->Path));
        {
            const auto python = Library::Open(path);
            AddItem(*python, 0, u"a"_s, u"def f(x): # yes\r\n    return 'no'"_s);
        }
        Open();
        m_prompts->ExpectFileName(u"Select a Quillbase Library Database"_s, path);
        m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"py"_s);
        Action(u"mnuOpenDatabase"_s)->trigger();
        ClickOn(0);
        QCOMPARE(Code()->Text(), u"def f(x): # yes\r\n    return 'no'"_s);
        QCOMPARE(Shown(), (QStringList{u"kkk.......ccccc"_s, u"....kkkkkk.ssss"_s}));
    }

    void commentThatIsTyped_recoloursTheLinesBelowAtOnce()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int a;\r\nint b;\r\nint c; */ int d;\r\nint e;"_s);
        const QStringList before = Shown();
        QCOMPARE(before[3], u"ttt..."_s);
        Code()->SetSelStart(0);
        QTest::keyClicks(Code(), u"/"_s);
        QCOMPARE(Colours(), (QStringList{u".ttt..."_s, u"ttt..."_s, u"ttt.......ttt..."_s, u"ttt..."_s}));
        QTest::keyClicks(Code(), u"*"_s);
        QCOMPARE(Colours(), (QStringList{u"cccccccc"_s, u"cccccc"_s, u"ccccccccc.ttt..."_s, u"ttt..."_s}));
        QTest::keyClick(Code(), Qt::Key_Backspace);
        QTest::keyClick(Code(), Qt::Key_Backspace);
        QCOMPARE(Colours(), before);
        QCOMPARE(Shown(), before);
    }

    void linesThatComeAndGo_keepTheColoursRight()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int a;\r\n/* b\r\nc */\r\nint d;"_s);
        Code()->SetSelStart(Code()->Text().indexOf(u"/*"_s));
        QTest::keyClick(Code(), Qt::Key_Return);
        QCOMPARE(Colours(), (QStringList{u"ttt..."_s, QString(), u"cccc"_s, u"cccc"_s, u"ttt..."_s}));
        Code()->SetSelStart(Code()->Text().indexOf(u"/*"_s));
        Code()->SetSelLength(7); // "/* b", the line end and "c"
        QTest::keyClick(Code(), Qt::Key_Delete);
        QCOMPARE(Colours(), (QStringList{u"ttt..."_s, QString(), u"..."_s, u"ttt..."_s}));
        QGuiApplication::clipboard()->setText(u"/*\nx\n"_s);
        Code()->Paste();
        QCOMPARE(Colours(), (QStringList{u"ttt..."_s, QString(), u"cc"_s, u"c"_s, u"ccc"_s, u"ttt..."_s}));
    }

    void linesOutOfSight_areColouredWhenTheyAreScrolledTo()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x; // y\r\n"_s.repeated(3000) + u"int last;"_s);
        Shown();
        const QTextBlock last = Code()->document()->lastBlock();
        QCOMPARE(Marks(Code()->document()->firstBlock()), u"ttt....cccc"_s);
        QVERIFY(last.layout()->formats().isEmpty());
        Code()->verticalScrollBar()->setValue(Code()->verticalScrollBar()->maximum());
        Shown();
        QCOMPARE(Marks(last), u"ttt......"_s);
        QCOMPARE(Marks(Code()->document()->findBlockByNumber(2995)), u"ttt....cccc"_s);
        Code()->verticalScrollBar()->setValue(0);
        Code()->SetSelStart(0);
        QTest::keyClicks(Code(), u"/*"_s);
        Code()->verticalScrollBar()->setValue(Code()->verticalScrollBar()->maximum());
        Shown();
        QCOMPARE(Marks(last), u"ccccccccc"_s);
    }

    void usage_isInColourToo()
    {
        UseLanguage(u"cpp23"_s);
        Write(u"Code"_s, Rtf(u"int x;"_s));
        Write(u"Example"_s, Rtf(u"return; // y"_s));
        Open();
        ClickOn(0);
        Tab(2);
        QCOMPARE(Shown(*Usage()), QStringList{u"kkkkkk..cccc"_s});
    }

    void lineOf300000Characters_isShownAndEdited()
    {
        UseLanguage(u"cpp23"_s);
        const QString line = u"if (x) { y = \"a\"; } "_s.repeated(15'000);
        Write(u"Code"_s, Rtf(u"int before; /*\r\n"_s + line + u"\r\n*/ int after;"_s));
        QElapsedTimer clock;
        clock.start();
        Open();
        ClickOn(0);
        Shown();
        QCOMPARE(Marks(Code()->document()->findBlockByNumber(2)), u"cc.ttt......."_s); // what it leaves open is known
        Code()->SetSelStart(0);
        QTest::keyClicks(Code(), u"//"_s);
        Shown();
        QCOMPARE(Marks(Code()->document()->findBlockByNumber(2)), u"...ttt......."_s);
        ClickOn(1);
        QVERIFY2(clock.elapsed() < 40'000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(PlainTextFromRtf(Read(u"Code"_s)).startsWith(u"//int before; /*\r\nif (x)"_s));
    }

    // Storing

    void lookAtAnItem_changesNothing_data()
    {
        QTest::addColumn<bool>("automatic");
        QTest::addColumn<QString>("stored");
        const QString painted = u"{\\rtf1{\\fonttbl{\\f0 Courier New;}}"
                                "{\\colortbl;\\red1\\green2\\blue3;\\red255\\green0\\blue0;}"
                                "\\f0\\fs20\\cf1 int\\cf2  x; /* \\b a\\b0\\par b */ \\ul if\\par}"_s;
        for (const bool automatic : {false, true}) {
            QTest::addRow("plain, %d", automatic) << automatic << Rtf(u"int x; /* a\r\nb */ if"_s);
            QTest::addRow("painted otherwise, %d", automatic) << automatic << painted;
            QTest::addRow("no rtf, %d", automatic) << automatic << u"int x; // {a}"_s;
            QTest::addRow("with a language, %d", automatic)
                << automatic << WithLanguageInRtf(Rtf(u"def x: # y"_s), u"Python"_s);
        }
    }
    void lookAtAnItem_changesNothing()
    {
        QFETCH(bool, automatic);
        QFETCH(QString, stored);
        UseLanguage(u"cpp23"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"AutoColorizeWhenItemOpened"_s,
                    automatic ? u"True"_s : u"False"_s);
        Write(u"Code"_s, stored);
        Write(u"Example"_s, stored);
        m_database->Execute(u"UPDATE Items SET LastChanged = LastChanged - 1000"_s);
        const QString changed = Read(u"LastChanged"_s);
        Open();
        for (const int tab : {0, 2, 1}) {
            ClickOn(0);
            Tab(tab);
            Shown();
            Shown(*Usage());
            Code()->verticalScrollBar()->setValue(5);
            ClickOn(1);
        }
        ClickOn(0);
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(m_window->close());
        QCOMPARE(Read(u"Code"_s), stored);
        QCOMPARE(Read(u"Example"_s), stored);
        QCOMPARE(Read(u"LastChanged"_s), changed);
    }

    void typedText_isStoredAsItIsAndPainted()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith({});
        QTest::keyClicks(Code(), u"IF (x) RETURN; // Note"_s);
        QTest::keyClick(Code(), Qt::Key_Return);
        QTest::keyClicks(Code(), u"int y;"_s);
        ClickOn(1);
        const RichTextDocument stored = Parsed(Read(u"Code"_s));
        QCOMPARE(stored.Text(), u"IF (x) RETURN; // Note\r\nint y;"_s);
        QVERIFY(HasColours(stored));
        QCOMPARE(stored.FormatAt(stored.Text().indexOf(u"//"_s)).Color, Light(TokenKind::Comment));
        QCOMPARE(stored.FormatAt(stored.Text().indexOf(u"int"_s)).Color, Light(TokenKind::Type));
        ClickOn(0);
        QVERIFY(!HasColours(Code()->Content().Document()));
        QCOMPARE(Shown()[1], u"ttt..."_s);
    }

    void realText_isStoredCharacterByCharacter()
    {
        UseLanguage(u"cpp23"_s);
        const QString source = RealText();
        QVERIFY(source.count(u'\n') > 300);
        OpenWith({});
        QGuiApplication::clipboard()->setText(source);
        QTest::keyClick(Code(), Qt::Key_V, Qt::ControlModifier);
        Shown();
        Action(u"mnuSaveItem"_s)->trigger();
        const QString rtf = Read(u"Code"_s);
        QCOMPARE(PlainTextFromRtf(rtf).replace(u"\r\n"_s, u"\n"_s).toUtf8(), source.toUtf8());
        const RichTextDocument stored = Parsed(rtf);
        QVERIFY(HasColours(stored));
        QCOMPARE(stored.FormatAt(stored.Text().indexOf(u"Copyright"_s)).Color, Light(TokenKind::Comment));
        QCOMPARE(stored.FormatAt(stored.Text().indexOf(u"#define"_s)).Color, Light(TokenKind::Preprocessor));
        ClickOn(1);
        ClickOn(0);
        QCOMPARE(Code()->Text().replace(u"\r\n"_s, u"\n"_s).toUtf8(), source.toUtf8());
    }

    void storedColours_areTheLightOnesInADarkSchemeToo()
    {
        const DarkScheme dark;
        UseLanguage(u"cpp23"_s);
        OpenWith({});
        QTest::keyClicks(Code(), u"int x; // y"_s);
        QCOMPARE(Shown(TokenPalette::Default().Dark), QStringList{u"ttt....cccc"_s});
        Action(u"mnuSaveItem"_s)->trigger();
        const RichTextDocument stored = Parsed(Read(u"Code"_s));
        QCOMPARE(stored.FormatAt(8).Color, Light(TokenKind::Comment));
        QCOMPARE(stored.FormatAt(0).Color, Light(TokenKind::Type));
    }

    // Undo

    void undoAndRedo_workAndKnowNoColours()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int a;\r\nint b; */"_s);
        const QStringList before = Shown();
        QVERIFY(!Code()->CanUndo());
        const int steps = Code()->document()->availableUndoSteps();
        Code()->SetSelStart(0);
        QTest::keyClicks(Code(), u"/*"_s);
        Shown();
        Code()->verticalScrollBar()->setValue(1);
        Shown();
        QCOMPARE(Code()->document()->availableUndoSteps(), steps + 1);
        QTest::keyClick(Code(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(Code()->Text(), u"int a;\r\nint b; */"_s);
        QCOMPARE(Colours(), before);
        QVERIFY(!Code()->CanUndo());
        QVERIFY(Code()->CanRedo());
        Shown();
        QVERIFY(Code()->CanRedo()); // painting has dropped nothing
        QTest::keyClick(Code(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(Code()->Text(), u"/*int a;\r\nint b; */"_s);
        QCOMPARE(Colours(), (QStringList{u"cccccccc"_s, u"ccccccccc"_s}));
        QVERIFY(!Code()->CanRedo());
        QVERIFY(!HasColours(Code()->Content().Document()));
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"/*int a;\r\nint b; */"_s);
    }

    // The command

    void command_isOffWhereRulesColour()
    {
        UseLanguage(u"cpp23"_s);
        Write(u"Code"_s, Rtf(u"int x;"_s));
        Write(u"Example"_s, Rtf(u"int y;"_s));
        Open();
        ClickOn(0);
        for (const int tab : {0, 1, 2}) {
            Tab(tab);
            QCOMPARE(CanColorize(), false);
        }
        Tab(0);
        QTest::keyClicks(Code(), u"if "_s);
        QCOMPARE(CanColorize(), false);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(CanColorize(), false);
        const QString stored = Read(u"Code"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F8);
        ClickOn(1);
        QCOMPARE(Read(u"Code"_s), stored);
    }

    void commandWithoutRules_hasAStateOfEachTab()
    {
        Write(u"Code"_s, Rtf(u"dim x "_s));
        Write(u"Example"_s, Rtf(u"dim y "_s));
        Open();
        QCOMPARE(CanColorize(), false); // nothing is shown
        ClickOn(0);
        QVERIFY(!Code()->ColoursByRules());
        QCOMPARE(CanColorize(), true); // stored, and never coloured
        Action(u"mnuColorize"_s)->trigger();
        QCOMPARE(Code()->Text(), u"Dim x "_s); // it respells, as ever
        QCOMPARE(CanColorize(), false);
        Tab(1);
        QCOMPARE(CanColorize(), false);
        Tab(2);
        QCOMPARE(CanColorize(), true);
        Tab(0);
        QCOMPARE(CanColorize(), false);
        QTest::keyClicks(Code(), u"x"_s);
        QCOMPARE(CanColorize(), true);
        Action(u"COLORIZE"_s)->trigger();
        QCOMPARE(CanColorize(), false);
        Tab(2);
        Action(u"COLORIZE"_s)->trigger();
        QCOMPARE(CanColorize(), false);
        QCOMPARE(Usage()->Text(), u"Dim y "_s);
        ClickOn(1);
        QCOMPARE(CanColorize(), false);
        ClickOn(0);
        for (const int tab : {0, 2}) {
            Tab(tab);
            QCOMPARE(CanColorize(), false); // as it was stored
        }
    }

    // Copying and dragging

    void copiedSelection_carriesColours()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x; /* a\r\nb */ if\r\nint y;"_s);
        const qsizetype begin = Code()->Text().indexOf(u"b */"_s);
        Code()->SetSelStart(begin);
        Code()->SetSelLength(7);
        QTest::keyClick(Code(), Qt::Key_C, Qt::ControlModifier);
        const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
        QCOMPARE(copied->text(), u"b */ if"_s);
        const RichTextDocument text = Parsed(QString::fromLatin1(copied->data(u"text/rtf"_s)));
        QCOMPARE(text.Text(), u"b */ if"_s);
        QCOMPARE(text.FormatAt(0).Color, Light(TokenKind::Comment)); // which began before the selection
        QCOMPARE(text.FormatAt(5).Color, Light(TokenKind::Keyword));
        QVERIFY(!HasColours(Code()->Content().Document()));
        QVERIFY(!Code()->CanUndo());
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(!HasColours(Parsed(Read(u"Code"_s)))); // a copy is no change
    }

    void copiedAndPasted_isPlainInABoxThatColours()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"// note\r\n"_s);
        Code()->SetSelStart(3);
        Code()->SetSelLength(4);
        QTest::keyClick(Code(), Qt::Key_C, Qt::ControlModifier);
        Code()->SetSelStart(Code()->Text().size());
        QTest::keyClick(Code(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(Code()->Text(), u"// note\r\nnote"_s);
        QCOMPARE(Shown(), (QStringList{u"ccccccc"_s, u"...."_s}));
        const QTextCharFormat pasted = Code()->document()->lastBlock().begin().fragment().charFormat();
        QVERIFY(pasted.foreground().color() != ColorOf(Light(TokenKind::Comment))); // it is no comment there
        QVERIFY(!HasColours(Code()->Content().Document()));
    }

    // Headers of sections

    void headers_keepTheirLookAndOpenNothing()
    {
        LanguageDefinition language = *Definition(u"cpp23"_s);
        language.Rules = u"block: //# #// lines\nline: //\nwords keyword: if\n"_s; // which a header would open
        UseLanguage(language);
        OpenWith(u"if a"_s);
        Code()->SetSelStart(4);
        Action(u"mnuEditAddGlobalDeclar"_s)->trigger();
        QVERIFY(Code()->Text().contains(u"//###############"_s));
        Code()->SetSelStart(Code()->Text().size());
        QTest::keyClick(Code(), Qt::Key_Return);
        QTest::keyClicks(Code(), u"if z"_s);
        const auto verify = [this] {
            Shown();
            for (QTextBlock block = Code()->document()->begin(); block.isValid(); block = block.next()) {
                if (block.text().startsWith(u"//#"_s)) {
                    QVERIFY(block.layout()->formats().isEmpty());
                    const QTextCharFormat look = block.begin().fragment().charFormat();
                    QCOMPARE(look.fontWeight(), int(QFont::Bold));
                    QCOMPARE(look.foreground().color(), ColorOf(0x800000));
                } else if (block.text().startsWith(u"if"_s)) {
                    QCOMPARE(Marks(block), u"kk.."_s);
                }
            }
        };
        verify();
        QVERIFY(Code()->document()->lastBlock().text() == u"if z"_s);
        ClickOn(1);
        ClickOn(0);
        verify();
        const RichTextDocument stored = Parsed(Read(u"Code"_s));
        const qsizetype at = stored.Text().indexOf(u"//#"_s);
        QVERIFY(stored.FormatAt(at).Bold && stored.FormatAt(at).Protected);
        QCOMPARE(stored.FormatAt(at).Color, 0x800000u);
        QCOMPARE(stored.FormatAt(stored.Text().lastIndexOf(u"if"_s)).Color, Light(TokenKind::Keyword));
    }

    // The scheme

    void darkScheme_hasItsColoursAndTheLightOnesComeBack()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x; // y\r\n/* b\r\n*/ \"s\""_s);
        const QStringList expected{u"ttt....cccc"_s, u"cccc"_s, u"cc.sss"_s};
        QCOMPARE(Shown(), expected);
        {
            const DarkScheme dark;
            QCOMPARE(Shown(TokenPalette::Default().Dark), expected);
            QTest::keyClicks(Code(), u"if "_s);
            QCOMPARE(Shown(TokenPalette::Default().Dark)[0], u"kk.ttt....cccc"_s);
        }
        QCOMPARE(Shown()[0], u"kk.ttt....cccc"_s);
        QCOMPARE(Shown()[2], expected[2]);
    }

    void usersColours_areShownAndStored()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"RuleColoursLight"_s, u"comment=#112233"_s);
        UseLanguage(u"cpp23"_s);
        OpenWith(u"// y"_s);
        TokenPalette palette = TokenPalette::Default();
        palette.Light[size_t(TokenKind::Comment)] = 0x332211;
        QCOMPARE(Shown(palette.Light), QStringList{u"cccc"_s});
        QCOMPARE(Shown(), QStringList{u"????"_s});
        QTest::keyClicks(Code(), u"//"_s);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(Parsed(Read(u"Code"_s)).FormatAt(0).Color, 0x332211u);
    }

    // The language of an item

    void chosenLanguage_isTheItemsFromNowOn()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"def x: # int"_s);
        QCOMPARE(Shown(), QStringList{u".........ttt"_s});
        QVERIFY(Button()->isVisible() && Button()->isEnabled());
        QVERIFY2(Button()->text().startsWith(u"C++ (current)"_s), qPrintable(Button()->text()));
        m_database->Execute(u"UPDATE Items SET LastChanged = LastChanged - 1000"_s);
        Open();
        ClickOn(0);
        const QString changed = Read(u"LastChanged"_s);
        Choose(u"python"_s);
        QCOMPARE(Shown(), QStringList{u"kkk....ccccc"_s});
        QVERIFY(Button()->text().startsWith(u"Python"_s));
        QCOMPARE(Details()->ItemLanguage(), u"Python"_s);
        ClickOn(1);
        QVERIFY(Button()->text().startsWith(u"C++ (current)"_s));
        QVERIFY(Read(u"LastChanged"_s) != changed);
        const QString stored = Read(u"Code"_s);
        QVERIFY2(stored.contains(u"{\\*\\qblang Python}"_s), qPrintable(stored));
        QCOMPARE(PlainTextFromRtf(stored), u"def x: # int"_s);
        QCOMPARE(Parsed(stored).FormatAt(7).Color, Light(TokenKind::Comment));
        QVERIFY(!Read(u"Example"_s).contains(u"qblang"_s)); // what has no text has no language
        Open();                                             // another run of the program
        ClickOn(0);
        QVERIFY(Button()->text().startsWith(u"Python"_s));
        QCOMPARE(Shown(), QStringList{u"kkk....ccccc"_s});
        ChooseLibrarys();
        QVERIFY(Button()->text().startsWith(u"C++ (current)"_s));
        QCOMPARE(Shown(), QStringList{u".........ttt"_s});
        ClickOn(1);
        QVERIFY(!Read(u"Code"_s).contains(u"qblang"_s));
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"def x: # int"_s);
    }

    void sameLanguageChosen_isNoChange()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x;"_s);
        m_database->Execute(u"UPDATE Items SET LastChanged = LastChanged - 1000"_s);
        const QString changed = Read(u"LastChanged"_s);
        const QString stored = Read(u"Code"_s);
        ChooseLibrarys();
        ClickOn(1);
        QCOMPARE(Read(u"LastChanged"_s), changed);
        QCOMPARE(Read(u"Code"_s), stored);
    }

    void listThatIsLeftByEscape_choosesNothing()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x;"_s);
        QTest::mouseClick(Button(), Qt::LeftButton);
        auto* search = Button()->findChild<QLineEdit*>(u"txtLanguageSearch"_s);
        QVERIFY(search);
        QTest::keyClicks(search, u"rust"_s);
        QTest::keyClick(search, Qt::Key_Escape);
        QTRY_VERIFY(!Button()->findChild<QLineEdit*>(u"txtLanguageSearch"_s));
        QCOMPARE(Details()->ItemLanguage(), QString());
    }

    void languageInALibraryWithoutRules_isPaintedAndTakenBack()
    {
        OpenWith(u"IF x # DIM\r\n"_s);
        QCOMPARE(CanColorize(), true);
        Choose(u"python"_s);
        QCOMPARE(Shown()[0], u".....ccccc"_s);
        QCOMPARE(CanColorize(), false);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"IF x # DIM\r\n"_s);
        ChooseLibrarys();
        QCOMPARE(Shown()[0], u".........."_s);
        QVERIFY(!HasColours(Code()->Content().Document()));
        QCOMPARE(CanColorize(), true);
        ClickOn(1);
        QVERIFY(!Read(u"Code"_s).contains(u"qblang"_s));
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"If x # Dim\r\n"_s);
    }

    void undoBehindASwitch_bringsNoColoursUnderTheOverlay()
    {
        OpenWith(u"DIM x"_s);
        Action(u"mnuColorize"_s)->trigger();
        Action(u"mnuSaveItem"_s)->trigger();
        ClickOn(1);
        ClickOn(0); // the colours are those that are stored
        QVERIFY(HasColours(Code()->Content().Document()));
        Choose(u"python"_s);
        QVERIFY(!HasColours(Code()->Content().Document()));
        while (Code()->CanUndo())
            Code()->Undo();
        QVERIFY(!HasColours(Code()->Content().Document()));
    }

    void languageOfBothTexts_isChosenAtOnce()
    {
        UseLanguage(u"cpp23"_s);
        Write(u"Code"_s, Rtf(u"# a"_s));
        Write(u"Example"_s, Rtf(u"# b"_s));
        Open();
        ClickOn(0);
        Choose(u"python"_s);
        Tab(2);
        QVERIFY(Button()->text().startsWith(u"Python"_s));
        QCOMPARE(Shown(*Usage()), QStringList{u"ccc"_s});
        ClickOn(1);
        QCOMPARE(LanguageInRtf(Read(u"Code"_s)), u"Python"_s);
        QCOMPARE(LanguageInRtf(Read(u"Example"_s)), u"Python"_s);
        QCOMPARE(Parsed(Read(u"Example"_s)).FormatAt(0).Color, Light(TokenKind::Comment));
    }

    void languageOfAnItemThatHasUsageOnly_isShownAndCanBeTakenBack()
    {
        UseLanguage(u"cpp23"_s);
        Write(u"Example"_s, WithLanguageInRtf(Rtf(u"# b"_s), u"Python"_s));
        Open();
        ClickOn(0);
        Tab(2);
        QCOMPARE(Shown(*Usage()), QStringList{u"ccc"_s});
        QVERIFY2(Button()->text().startsWith(u"Python"_s), qPrintable(Button()->text()));
        ChooseLibrarys();
        QCOMPARE(Shown(*Usage()), QStringList{u"ppp"_s}); // a directive
        ClickOn(1);
        QCOMPARE(LanguageInRtf(Read(u"Example"_s)), QString());
    }

    void headers_getTheCommentMarkOfTheNewLanguage()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"if a"_s);
        Action(u"mnuEditAddGlobalDeclar"_s)->trigger();
        const QString before = Code()->Text();
        QVERIFY(before.contains(u"//###############"_s));
        Choose(u"python"_s);
        QCOMPARE(Code()->Text(), QString(before).replace(u"//####"_s, u"#####"_s));
        Shown();
        const QTextBlock header = Code()->document()->find(u"Global Declarations"_s).block();
        QVERIFY(header.layout()->formats().isEmpty());
        QCOMPARE(header.begin().fragment().charFormat().fontWeight(), int(QFont::Bold));
        ClickOn(1);
        ClickOn(0);
        QCOMPARE(Code()->Text(), QString(before).replace(u"//####"_s, u"#####"_s));
        QTest::keyClick(Code(), Qt::Key_A, Qt::ControlModifier);
        QVERIFY(CodeSections(*Code(), u"#"_s).Present() == 1);
        ChooseLibrarys();
        QCOMPARE(Code()->Text(), before);
        QVERIFY(CodeSections(*Code(), u"//"_s).Present() == 1);
    }

    void button_isOnlyThereForCodeAndUsage()
    {
        UseLanguage(u"cpp23"_s);
        Open();
        QVERIFY(!Button()->isVisible()); // the welcome page
        ClickOn(0);
        for (const int tab : {1, 0, 3, 2, 0}) {
            Tab(tab);
            QCOMPARE(Button()->isVisible(), tab == 0 || tab == 2);
        }
    }

    void button_isOffForALockedItem()
    {
        UseLanguage(u"cpp23"_s);
        const qint64 folder = AddItem(*m_database, 0, OrphanedItemsTitle);
        AddItem(*m_database, folder, u"orphan"_s, u"int x;"_s);
        MakeChild(*m_database, m_home->Path(u"mother.qbd"_s), Date());
        Open();
        ClickOn(0);
        QVERIFY(Button()->isEnabled());
        const QModelIndexList found = Tree()->model()->match(Root(), Qt::DisplayRole, u"orphan"_s, 1,
                                                             Qt::MatchExactly | Qt::MatchRecursive);
        QCOMPARE(found.size(), 1);
        Tree()->expandAll();
        const auto clickOnOrphan = [&] {
            QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(found[0]).center());
        };
        clickOnOrphan();
        QVERIFY(Details()->Locked());
        QCOMPARE(Code()->Text(), u"int x;"_s);
        QCOMPARE(Shown(), QStringList{u"ttt..."_s});
        QVERIFY(!Button()->isEnabled());
        Tab(1);
        Tab(0);
        QVERIFY(!Button()->isEnabled());
        ClickOn(0);
        QVERIFY(!Details()->Locked());
        QVERIFY(Button()->isEnabled());
        clickOnOrphan();
        QVERIFY(!Button()->isEnabled());
    }

    // Another library, other rules

    void libraryThatLosesItsRules_leavesNoColoursOverTheText()
    {
        UseLanguage(u"cpp23"_s);
        Write(u"Code"_s, Rtf(u"int x; // y"_s));
        Write(u"Example"_s, Rtf(u"int z;"_s));
        Open();
        ClickOn(0);
        Tab(2);
        QCOMPARE(Shown(*Usage()), QStringList{u"ttt..."_s});
        Tab(0);
        QCOMPARE(Shown(), QStringList{u"ttt....cccc"_s});
        QCOMPARE(CanColorize(), false);
        StoreRulesOfLibrary(*m_database, {});
        Details()->FormatingInitialize(*m_database);
        QVERIFY(!Code()->ColoursByRules());
        QCOMPARE(Shown(), QStringList{u"..........."_s});
        QCOMPARE(Shown(*Usage()), QStringList{u"......"_s});
        StoreRulesOfLibrary(*m_database, u"line: //\n"_s);
        Details()->FormatingInitialize(*m_database);
        QCOMPARE(Shown(), QStringList{u".......cccc"_s});
    }

    void otherLibraryWithoutRules_showsItsTextsAsTheyAreStored()
    {
        UseLanguage(u"cpp23"_s);
        OpenWith(u"int x; // y"_s);
        QCOMPARE(Shown(), QStringList{u"ttt....cccc"_s});
        const QString path = m_home->Path(u"data/plain.qbd"_s);
        {
            QVERIFY(CDBCreate().CreateNewDB(path, LanguageType::VB, {}));
            const auto plain = Library::Open(path);
            AddItem(*plain, 0, u"b"_s, u"int x; // y"_s);
        }
        m_prompts->ExpectFileName(u"Select a Quillbase Library Database"_s, path);
        m_prompts->ExpectInputBox(u"Include to Favourites List"_s, u"plain"_s);
        Action(u"mnuOpenDatabase"_s)->trigger();
        ClickOn(0);
        QCOMPARE(Code()->Text(), u"int x; // y"_s);
        QVERIFY(!Code()->ColoursByRules());
        QCOMPARE(Shown(), QStringList{u"..........."_s});
        QCOMPARE(CanColorize(), true);
    }

    // Pictures for people to look at

    void pictures()
    {
        for (const QString& key : {u"cpp23"_s, u"python"_s, u"html"_s, u"rust"_s, u"sql"_s, u"bash"_s, u"javascript"_s,
                                   u"markdown"_s, u"yaml"_s, u"vbnet"_s}) {
            const std::optional<LanguageDefinition> language = Definition(key);
            QVERIFY2(language && !language->Rules.isEmpty(), qPrintable(key));
            for (const bool dark : {false, true}) {
                const std::optional<DarkScheme> scheme = dark ? std::optional<DarkScheme>(std::in_place) : std::nullopt;
                SampleBox box;
                box.ShowLanguage(*language);
                box.resize(760, 420);
                box.show();
                QVERIFY(QTest::qWaitForWindowExposed(&box));
                TakePicture(box, u"rules-"_s + key + (dark ? u"-dark"_s : QString()));
                bool coloured = false;
                for (QTextBlock block = box.document()->begin(); block.isValid(); block = block.next())
                    coloured = coloured || !block.layout()->formats().isEmpty();
                QVERIFY2(coloured, qPrintable(key));
            }
        }
    }

private:
    /// A dark desktop for as long as it lives.
    class DarkScheme {
    public:
        DarkScheme() { QApplication::setPalette(DarkPalette()); }
        ~DarkScheme() { QApplication::setPalette(m_before); }
        Q_DISABLE_COPY_MOVE(DarkScheme)

    private:
        QPalette m_before = QApplication::palette();
    };

    static std::optional<LanguageDefinition> Definition(const QString& key)
    {
        const ShippedLanguage* shipped = ShippedLanguageNamed(key);
        return shipped ? std::optional(ReadLanguageFile(shipped->Path)) : std::nullopt;
    }
    void UseLanguage(const QString& key)
    {
        const std::optional<LanguageDefinition> language = Definition(key);
        QVERIFY2(language, qPrintable(key));
        UseLanguage(*language);
    }
    /// The library is of another language from now on.
    void UseLanguage(const LanguageDefinition& language)
    {
        m_database->Execute(u"UPDATE Properties SET LanguageUsed = ?, CommentIdentifier = ?, "
                            "CommentIdentifierStart = ?, CommentIdentifierEnd = ?"_s,
                            {language.Language, language.Comment, language.CommentStart, language.CommentEnd});
        m_database->Execute(u"DELETE FROM Keywords"_s);
        for (const QString& word : language.ColouredWords)
            m_database->Execute(u"INSERT INTO Keywords (Keyword, Coloured) VALUES (?, ?)"_s, {word, true});
        StoreRulesOfLibrary(*m_database, language.Rules);
    }
    /// The program with the first item open, whose code is @p code.
    void OpenWith(const QString& code)
    {
        Write(u"Code"_s, Rtf(code));
        Open();
        ClickOn(0);
        Tab(0);
        Code()->setFocus();
    }
    CodeBox* Usage() { return m_window->findChild<CodeBox*>(u"rtbUsage"_s); }
    QToolButton* Button() { return m_window->findChild<QToolButton*>(u"cboItemLanguage"_s); }
    bool CanColorize()
    {
        const bool menu = Action(u"mnuColorize"_s)->isEnabled();
        return menu == Action(u"COLORIZE"_s)->isEnabled() ? menu : throw std::logic_error("menu and toolbar differ");
    }

    /// The colours that lie over the lines as they are now.
    static QStringList Colours(CodeBox& box, const TokenColors& colors)
    {
        QStringList lines;
        for (QTextBlock block = box.document()->begin(); block.isValid(); block = block.next())
            lines << Marks(block, colors);
        return lines;
    }
    QStringList Colours() { return Colours(*Code(), TokenPalette::Default().Light); }
    /// The same when the box has been painted.
    static QStringList Shown(CodeBox& box, const TokenColors& colors = TokenPalette::Default().Light)
    {
        QCoreApplication::processEvents();
        box.viewport()->repaint();
        return Colours(box, colors);
    }
    QStringList Shown() { return Shown(*Code()); }
    QStringList Shown(const TokenColors& colors) { return Shown(*Code(), colors); }

    /// Takes a language from the list that the button opens.
    void Choose(const QString& search)
    {
        QTest::mouseClick(Button(), Qt::LeftButton);
        auto* line = Button()->findChild<QLineEdit*>(u"txtLanguageSearch"_s);
        QVERIFY(line && line->isVisible());
        QTest::keyClicks(line, search);
        QTest::keyClick(line, Qt::Key_Return);
        QTRY_VERIFY(!Button()->findChild<QLineEdit*>(u"txtLanguageSearch"_s));
    }
    void ChooseLibrarys()
    {
        QTest::mouseClick(Button(), Qt::LeftButton);
        auto* list = Button()->findChild<QListWidget*>(u"lstLanguages"_s);
        QVERIFY(list && list->isVisible());
        QVERIFY(list->item(0)->text().startsWith(u"Language of the library ("_s));
        list->scrollToTop();
        const QPoint first = list->visualItemRect(list->item(0)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, first);
        QCOMPARE(list->currentRow(), 0);
        QTest::keyClick(list, Qt::Key_Return);
        QTRY_VERIFY(!Button()->findChild<QListWidget*>(u"lstLanguages"_s));
    }

    /// A header of the compiler's library, of some hundred lines.
    static QString RealText()
    {
        for (const QString& version : QDir(u"/usr/include/c++"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(u"/usr/include/c++/%1/bits/stl_stack.h"_s.arg(version));
            if (file.open(QIODevice::ReadOnly))
                return QString::fromUtf8(file.readAll());
        }
        return {};
    }
};

QB_GUI_TEST_MAIN(TestLiveColours)
#include "tst_live_colours.moc"
