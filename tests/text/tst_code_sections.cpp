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
        box.SetSelStart(GlobalLine.size() + 7); // behind the section's end
        QCOMPARE(sections.TextToCopy(Global), QString());
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
