#include "platform/richtext/RichText.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"
#include "text/CodeSections.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString GlobalLine = u"'###############     Global Declarations     ###############\r\n"_s;
const QString ModuleLine = u"'###############     Module Declarations     ###############\r\n"_s;
const QString CodeLine = u"'###############      Code Module Code      ###############\r\n"_s;
const QString ClassLine = u"'###############      Class Module Code      ###############\r\n"_s;
const QString FormLine = u"'###############       Form Module Code      ###############\r\n"_s;

constexpr quint8 Global = 1, Module = 2, Code = 4, Class = 8, Form = 16;

} // namespace

class TestCodeSections : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void headerLine_centresItsTitle_data()
    {
        QTest::addColumn<int>("bit");
        QTest::addColumn<QString>("line");
        QTest::newRow("global") << int(Global) << GlobalLine;
        QTest::newRow("module") << int(Module) << ModuleLine;
        QTest::newRow("standard") << int(Code) << CodeLine;
        QTest::newRow("class") << int(Class) << ClassLine;
        QTest::newRow("form") << int(Form) << FormLine;
    }

    void headerLine_centresItsTitle()
    {
        QFETCH(int, bit);
        QFETCH(QString, line);
        RichText box;
        QCOMPARE(CodeSections(box, u"'"_s).HeaderLine(quint8(bit)), line);
        QCOMPARE(CodeSections(box, u"//"_s).HeaderLine(quint8(bit)), u"//"_s + line.mid(1));
    }

    void table_holdsWhatTheToolbarAndTheMenuSay()
    {
        const SectionRow* form = SectionOf(Form);
        QCOMPARE(QLatin1StringView(form->Title), u" Form Module Code"_s); // deliberately
        QCOMPARE(QLatin1StringView(form->Key), u"FORM_MODULE"_s);
        QCOMPARE(QLatin1StringView(SectionOf(Code)->CopyTip), u"Copy Code Module's Code to Clipboard"_s);
        QCOMPARE(QLatin1StringView(SectionOf(Module)->Menu), u"mnuEditAddModulDeclar"_s);
        QVERIFY(!SectionOf(3));
        QCOMPARE(SectionTable().size(), 5u);
    }

    void header_isBoldColouredAndProtected()
    {
        RichText box;
        box.SetText(u"x = 1\r\n"_s);
        CodeSections(box, u"'"_s).Create(Code, 0, true);
        const qsizetype begin = box.Text().indexOf(CodeLine);
        QVERIFY(begin > 0);
        box.SetSelStart(begin);
        box.SetSelLength(CodeLine.size());
        QCOMPARE(box.SelBold(), std::optional(true));
        QCOMPARE(box.SelProtected(), std::optional(true));
        QCOMPARE(box.SelColor(), std::optional(quint32(0x800000)));
        box.SetSelStart(0);
        box.SetSelLength(begin);
        QCOMPARE(box.SelBold(), std::optional(false));
        QCOMPARE(box.SelProtected(), std::optional(false));
    }

    void header_hasTheColourGiven()
    {
        RichText box;
        CodeSections(box, u"'"_s).Create(Code, 0x0000ff, true);
        box.SetSelStart(box.Text().indexOf(CodeLine));
        box.SetSelLength(5);
        QCOMPARE(box.SelColor(), std::optional(quint32(0x0000ff)));
    }

    void place_isChosenByTheHeader_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("bit");
        QTest::addColumn<QString>("result"); // with a bar where the caret stands
        const auto add = [](const char* name, const QString& text, quint8 bit, const QString& result) {
            QTest::newRow(name) << text << int(bit) << result;
        };
        add("global, at the top", u"x = 1"_s, Global, GlobalLine + u"|\r\nx = 1\r\n"_s);
        add("module without global, at the top", u"x = 1"_s, Module, ModuleLine + u"|\r\nx = 1\r\n"_s);
        add("module behind global", GlobalLine + u"\r\nDim x\r\n\r\n"_s + CodeLine + u"y = 2"_s, Module,
            GlobalLine + u"\r\nDim x\r\n\r\n\r\n"_s + ModuleLine + u"|\r\n"_s + CodeLine + u"y = 2\r\n"_s);
        add("module at the end of a text with global only", GlobalLine + u"\r\nDim x"_s, Module,
            GlobalLine + u"\r\nDim x\r\n\r\n\r\n"_s + ModuleLine + u"|"_s);
        add("others, at the end", u"x = 1"_s, Code, u"x = 1\r\n\r\n\r\n"_s + CodeLine + u"|"_s);
        add("others, behind an empty line", u"x = 1\r\n"_s, Form, u"x = 1\r\n\r\n\r\n"_s + FormLine + u"|"_s);
    }

    void place_isChosenByTheHeader()
    {
        QFETCH(QString, text);
        QFETCH(int, bit);
        QFETCH(QString, result);
        RichText box;
        box.SetText(text);
        CodeSections(box, u"'"_s).Create(quint8(bit), 0, true);
        QCOMPARE(box.Text().insert(box.SelStart(), u'|'), result);
    }

    void activeBox_takesTheSectionAtItsCaret()
    {
        RichText box;
        box.SetText(u"one\r\ntwo\r\nthree"_s);
        box.SetSelStart(6); // in "two"
        CodeSections(box, u"'"_s).Create(Global, 0, false);
        QCOMPARE(box.Text().insert(box.SelStart(), u'|'), u"one\r\n\r\n\r\n"_s + GlobalLine + u"|two\r\nthree"_s);
        box.SetText(u"one\r\n   \r\n"_s);
        box.SetSelStart(10);
        CodeSections(box, u"'"_s).Create(Code, 0, false);
        QCOMPARE(box.Text(), u"one\r\n   \r\n\r\n"_s + CodeLine); // behind an empty line one is enough
    }

    void goTo_findsTheFirstTitleBetweenBlanks()
    {
        RichText box;
        box.SetText(u"see   Code Module Code   here\r\n"_s + CodeLine);
        CodeSections sections(box, u"'"_s);
        QVERIFY(sections.GoTo(Code, true));
        QCOMPARE(box.SelStart(), 3);
        QVERIFY(sections.GoTo(Code, false));
        QCOMPARE(box.SelStart(), 6);
        QList<quint8> missing;
        sections.HeaderMissing = [&](quint8 bit) { missing << bit; };
        QVERIFY(!sections.GoTo(Form, false));
        QCOMPARE(missing, QList<quint8>{Form});
        QCOMPARE(box.SelStart(), 6);
        box.SetText(u"   code module code   "_s); // another case is another text
        QVERIFY(!sections.GoTo(Code, false));
    }

    void copy_reachesFromTheCaretToTheNextMarker()
    {
        RichText box;
        box.SetText(GlobalLine + u"Dim x\r\n"_s + CodeLine + u"y = 2\r\nlast"_s);
        const CodeSections sections(box, u"'"_s);
        box.SetSelStart(GlobalLine.size() + 1);
        QCOMPARE(sections.TextToCopy(Global), u"Dim x"_s);
        box.SetSelStart(box.Text().size() - 3);
        QCOMPARE(sections.TextToCopy(Code), u"last"_s); // the last one ends with the text
        QCOMPARE(sections.TextToCopy(0), box.Text());
        box.SetSelStart(GlobalLine.size() + 4); // within its only line
        QCOMPARE(sections.TextToCopy(Global), u"Dim x"_s);
    }

    void copyBehindAGo_isOfWholeLines_data()
    {
        QTest::addColumn<int>("bit");
        QTest::addColumn<QString>("copied");
        QTest::newRow("first") << int(Global) << GlobalLine + u"Dim x\r\nDim y"_s;
        QTest::newRow("middle") << int(Module) << ModuleLine.trimmed();
        QTest::newRow("last") << int(Code) << CodeLine + u"z = 3\r\n"_s;
    }

    void copyBehindAGo_isOfWholeLines()
    {
        QFETCH(int, bit);
        QFETCH(QString, copied);
        RichText box;
        box.SetText(GlobalLine + u"Dim x\r\nDim y\r\n"_s + ModuleLine + CodeLine + u"z = 3\r\n"_s);
        CodeSections sections(box, u"'"_s);
        for (const bool stayOnHeader : {false, true}) {
            QVERIFY(sections.GoTo(quint8(bit), stayOnHeader));
            QCOMPARE(sections.TextToCopy(quint8(bit)), copied);
        }
    }

    void delete_takesHeaderAndBody_data()
    {
        QTest::addColumn<int>("bit");
        QTest::addColumn<QString>("rest");
        QTest::newRow("first") << int(Global) << u"\r\n"_s + ModuleLine + u"Dim y\r\n"_s + CodeLine + u"z = 3"_s;
        QTest::newRow("middle") << int(Module) << GlobalLine + u"Dim x\r\n"_s + CodeLine + u"z = 3"_s;
        QTest::newRow("last") << int(Code) << GlobalLine + u"Dim x\r\n"_s + ModuleLine + u"Dim y"_s;
    }

    void delete_takesHeaderAndBody()
    {
        QFETCH(int, bit);
        QFETCH(QString, rest);
        RichText box;
        box.SetText(GlobalLine + u"Dim x\r\n"_s + ModuleLine + u"Dim y\r\n"_s + CodeLine + u"z = 3"_s);
        for (const QString& line : {GlobalLine, ModuleLine, CodeLine}) {
            box.SetSelStart(box.Text().indexOf(line));
            box.SetSelLength(line.size());
            box.SetSelProtected(true);
        }
        CodeSections sections(box, u"'"_s);
        QVERIFY(sections.GoTo(quint8(bit), true));
        sections.Delete();
        QCOMPARE(box.Text(), rest);
    }

    void moduleBetweenHeadersThatTouch_isPutBetweenThem()
    {
        RichText box;
        CodeSections sections(box, u"'"_s);
        box.SetText(GlobalLine + CodeLine);
        for (const QString& line : {GlobalLine, CodeLine}) {
            box.SetSelStart(box.Text().indexOf(line));
            box.SetSelLength(line.size());
            box.SetSelProtected(true);
        }
        QVERIFY(sections.Create(Module, 0, true));
        const QString text = box.Text();
        QVERIFY(text.indexOf(GlobalLine.trimmed()) < text.indexOf(ModuleLine)
                && text.indexOf(ModuleLine) < text.indexOf(CodeLine));
        QCOMPARE(sections.Present(), quint8(Global | Module | Code));
    }

    void header_isDeletedAlone()
    {
        RichText box;
        box.SetText(u"a\r\n"_s + CodeLine + u"b"_s);
        box.SetSelStart(3);
        box.SetSelLength(CodeLine.size());
        box.SetSelBold(true);
        box.SetSelProtected(true);
        CodeSections sections(box, u"'"_s);
        QVERIFY(sections.IsOnHeader());
        sections.DeleteSelectedHeader();
        QCOMPARE(box.Text(), u"ab"_s); // with the line end before it
        box.SetText(CodeLine + u"b"_s);
        box.SetSelLength(CodeLine.size() - 2);
        box.SetSelBold(true);
        sections.DeleteSelectedHeader();
        QCOMPARE(box.Text(), u"b"_s);
    }

    void current_isTheSectionOfTheCaret()
    {
        for (const QString& comment : {u"'"_s, u"//"_s, u"rem "_s}) {
            RichText box;
            const CodeSections sections(box, comment);
            QString text = u"before\r\n"_s;
            QList<std::pair<qsizetype, quint8>> places{{3, quint8(0)}};
            for (const SectionRow& row : SectionTable()) {
                places << std::pair(text.size() + 30, row.Bit); // on the header
                text += sections.HeaderLine(row.Bit) + u"body # of it\r\n"_s;
                places << std::pair(text.size() - 3, row.Bit);
            }
            box.SetText(text);
            for (const auto& [place, bit] : places) {
                box.SetSelStart(place);
                QCOMPARE(sections.Current(), bit);
            }
        }
    }

    void selectedHeader_isTheSection_data()
    {
        QTest::addColumn<int>("start"); // of the selection, within the second of two headers that touch, or before
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("bold");
        QTest::addColumn<int>("bit");
        QTest::newRow("header") << 0 << 59 << true << int(Code);
        QTest::newRow("header with its line end") << 0 << 61 << true << int(Code);
        QTest::newRow("from the end of the one before") << -10 << 60 << true << int(Code);
        QTest::newRow("longest, from the one before") << -10 << 62 << true << int(Code);
        QTest::newRow("too short, from the one before") << -10 << 58 << true << int(Global);
        QTest::newRow("too long, from the one before") << -10 << 63 << true << int(Global);
        QTest::newRow("not bold, from the one before") << -10 << 60 << false << int(Global);
        QTest::newRow("bold text that is no header") << int(CodeLine.size()) << 60 << true << 0;
    }

    void selectedHeader_isTheSection()
    {
        QFETCH(int, start);
        QFETCH(int, length);
        QFETCH(bool, bold);
        QFETCH(int, bit);
        RichText box;
        box.SetText(GlobalLine + CodeLine + QString(80, u'x'));
        box.SetSelLength(box.Text().size());
        box.SetSelBold(bold);
        box.SetSelStart(GlobalLine.size() + start);
        box.SetSelLength(length);
        QCOMPARE(CodeSections(box, u"'"_s).Current(), quint8(bit));
    }

    void partOfAHeader_isDeletedWhole_data()
    {
        QTest::addColumn<int>("start"); // within the header
        QTest::addColumn<int>("length");
        QTest::newRow("first half") << 0 << 30;
        QTest::newRow("second half") << 30 << 31;
        QTest::newRow("middle") << 20 << 5;
        QTest::newRow("line end") << 59 << 2;
        QTest::newRow("all") << 0 << 61;
    }

    void partOfAHeader_isDeletedWhole()
    {
        QFETCH(int, start);
        QFETCH(int, length);
        RichText box;
        box.SetText(u"a\r\n"_s);
        CodeSections sections(box, u"'"_s);
        for (const quint8 bit : {Global, Code}) { // two that touch
            box.SetSelStart(box.Text().size());
            box.SetSelText(sections.HeaderLine(bit));
            box.SetSelStart(box.Text().size() - sections.HeaderLine(bit).size());
            box.SetSelLength(sections.HeaderLine(bit).size());
            box.SetSelBold(true);
            box.SetSelProtected(true);
        }
        box.SetSelStart(3 + GlobalLine.size() + start);
        box.SetSelLength(length);
        QCOMPARE(sections.WidenToHeader(), CodeSections::Touched::Header);
        QCOMPARE(box.SelText(), CodeLine);
        sections.DeleteSelectedHeader();
        QVERIFY(!box.Text().contains(u"Code Module"_s));
        QVERIFY(box.Text().contains(u"Global Declarations     ###############"_s));
    }

    void restOfAHeader_isDeletedWithoutTheTextBesideIt()
    {
        RichText box;
        box.SetText(u"x = 1dule Code      ###############\r\ny = 2"_s); // what an older program has left
        box.SetSelStart(5);
        box.SetSelLength(32);
        box.SetSelBold(true);
        box.SetSelProtected(true);
        CodeSections sections(box, u"'"_s);
        box.SetSelStart(12);
        box.SetSelLength(3);
        QCOMPARE(sections.WidenToHeader(), CodeSections::Touched::RestOfHeader);
        sections.DeleteRestOfHeader();
        QCOMPARE(box.Text(), u"x = 1y = 2"_s);
    }

    void selectionThatHoldsOtherTextToo_isNotWidened()
    {
        RichText box;
        box.SetText(u"a\r\n"_s);
        CodeSections sections(box, u"'"_s);
        QVERIFY(sections.Create(Code, 0, true));
        box.SetSelStart(0);
        box.SetSelLength(20);
        QCOMPARE(sections.WidenToHeader(), CodeSections::Touched::Nothing);
        QCOMPARE(box.SelStart(), 0);
        QCOMPARE(box.SelLength(), 20);
        QVERIFY(!box.SetSelText({})); // the header is protected as before
        box.SetSelStart(0);
        QCOMPARE(sections.WidenToHeader(), CodeSections::Touched::Nothing);
    }

    void lineThatOnlyLooksLikeAHeader_endsASectionToo()
    {
        RichText box;
        box.SetText(CodeLine + u"a\r\n'###############   mine\r\nb"_s);
        const CodeSections sections(box, u"'"_s);
        box.SetSelStart(CodeLine.size() + 1);
        QCOMPARE(sections.TextToCopy(Code), u"a"_s);
        box.SetSelStart(box.Text().size());
        QCOMPARE(sections.Current(), quint8(0));
    }

    void headers_surviveColouring()
    {
        RichText box;
        box.SetText(u"dim x\r\n"_s);
        CodeSections(box, u"'"_s).Create(Code, 0, true);
        CTextFormat format;
        format.SetLanguage(BuiltInLanguage(LanguageType::VB));
        format.ColorizeCode(box);
        box.SetSelStart(box.Text().indexOf(CodeLine));
        box.SetSelLength(CodeLine.size() - 2);
        QCOMPARE(box.SelBold(), std::optional(true));
        QCOMPARE(box.SelProtected(), std::optional(true));
        QCOMPARE(box.SelColor(), std::optional(quint32(0x800000)));
    }

    void emptyCommentIdentifier_isAnApostrophe()
    {
        RichText box;
        QCOMPARE(CodeSections(box, {}).StartMarker(), u"'###############   "_s);
    }
};

QB_TEST_MAIN(TestCodeSections)
#include "tst_code_sections.moc"
