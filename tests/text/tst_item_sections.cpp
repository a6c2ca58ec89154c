#include "platform/richtext/RtfPlainText.h"
#include "support/ErrorRoutine.h"
#include "support/FakeViews.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "text/CodeKeys.h"
#include "text/LineIndent.h"
#include "text/SectionBits.h"

#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString CodeLine = u"'###############      Code Module Code      ###############\r\n"_s;
constexpr quint8 Global = 1, Code = 4, Form = 16;

} // namespace

/// The sections of the shown text with the bits of their item, and what keys mean in its boxes.
class TestItemSections : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"Bäume.qbd"_s), LanguageType::VB);
        const qint64 id = AddItem(*m_database, 0, u"item"_s);
        m_panel = std::make_unique<FakeDetailsView>();
        m_panel->FormatingInitialize(*m_database);
        m_sections = std::make_unique<ItemSections>(m_panel->Editor);
        m_keys = std::make_unique<CodeKeys>(m_panel->Editor, *m_sections);
        m_item = std::make_unique<CCodeItem>();
        m_item->Initialise(*m_database, QString::number(id));
        m_panel->Initialise(m_database.get(), m_item.get());
        Show(DetailsTab::Code);
    }
    void cleanup()
    {
        m_keys.reset();
        m_sections.reset();
        m_panel.reset();
        m_item.reset();
        m_database.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // Sections

    void section_isAddedOnceAndGoneToThen_data() { TextRows(); }
    void section_isAddedOnceAndGoneToThen()
    {
        QFETCH(DetailsTab, tab);
        Show(tab);
        for (int i = 0; i < 3; ++i) {
            Box().SetSelStart(0);
            m_sections->CreateCodeSection(*m_item, Code, 0);
            QCOMPARE(Box().Text().count(CodeLine), 1);
            QCOMPARE(Bits(), std::pair(quint8(tab == DetailsTab::Code ? Code : 0),
                                       quint8(tab == DetailsTab::Usage ? Code : 0)));
        }
        QCOMPARE(Box().SelStart(), Box().Text().indexOf(u"Code Module"_s));
        QVERIFY(m_item->ItemChanged() && Box().Focused);
        m_sections->CreateCodeSection(*m_item, Form, 0);
        QCOMPARE(SectionBits(*m_item, tab == DetailsTab::Code).All(), quint8(Code | Form));
    }

    void bit_isClearedAsAChangeOfTheItem_data() { TextRows(); }
    void bit_isClearedAsAChangeOfTheItem()
    {
        QFETCH(DetailsTab, tab);
        SectionBits bits(*m_item, tab == DetailsTab::Code);
        bits.SetAll(Global | Code);
        bits.Remove(Form);
        QVERIFY(!m_item->ItemChanged());
        bits.Remove(Code);
        QCOMPARE(bits.All(), Global);
        QVERIFY(m_item->ItemChanged());
        QCOMPARE(SectionBits(*m_item, tab != DetailsTab::Code).All(), quint8(0));
    }

    void sectionWhoseLineIsGone_isToldOf_data() { TextRows(); }
    void sectionWhoseLineIsGone_isToldOf()
    {
        QFETCH(DetailsTab, tab);
        Show(tab);
        QSignalSpy missing(m_sections.get(), &ItemSections::HeaderMissing);
        QVERIFY(!m_sections->GoToCodeSection(Code, false));
        QCOMPARE(missing.size(), 1);
        QCOMPARE(missing[0][0].value<quint8>(), Code);
        QCOMPARE(missing[0][1].toBool(), tab == DetailsTab::Code);
        m_panel->SetLocked(true); // nothing can be taken off a locked item
        QVERIFY(!m_sections->GoToCodeSection(Code, false));
        QCOMPARE(missing.size(), 1);
    }

    void otherTabs_haveNoSections()
    {
        Show(DetailsTab::Notes);
        m_sections->CreateCodeSection(*m_item, Code, 0);
        QCOMPARE(m_item->CodeHeaders(), quint8(0));
        QCOMPARE(m_sections->CurrentSection(), quint8(0));
        QCOMPARE(m_sections->TextToCopy(0), QString());
        QCOMPARE(m_sections->PlaceOfNewSection(Code), QString());
        m_prompts->ExpectMsgBox(ApplicationTitle);
        QVERIFY(!m_sections->GoToCodeSection(Code, false));
        QCOMPARE(m_prompts->Messages[0].Text, u"Error. No appropriate tab selected."_s);
        m_prompts->ExpectMsgBox(u"Error"_s);
        m_sections->DeleteCodeSection(Code);
    }

    void sectionInAProtectedPlace_leavesTheBitsAsTheyWere()
    {
        m_sections->CreateCodeSection(*m_item, Code, 0);
        const QString text = u"a\r\n"_s + CodeLine;
        Box().SetText(text);
        Box().SetSelLength(text.size());
        Box().SetSelProtected(true);
        Box().SetSelStart(8); // where the user types
        m_sections->CreateCodeSection(*m_item, Form, 0);
        QCOMPARE(m_item->CodeHeaders(), Code);
        QCOMPARE(Box().Text(), text);
    }

    void lockedItem_keepsItsSections()
    {
        m_sections->CreateCodeSection(*m_item, Code, 0);
        const QString before = Box().Text();
        m_panel->SetLocked(true);
        m_sections->CreateCodeSection(*m_item, Form, 0);
        m_sections->DeleteCodeSection(Code);
        QCOMPARE(Box().Text(), before);
        QCOMPARE(m_item->CodeHeaders(), Code);
    }

    void undoneText_takesTheBitsAlong()
    {
        m_sections->CreateCodeSection(*m_item, Code, 0);
        QSignalSpy told(m_sections.get(), &ItemSections::SectionsTakenBack);
        m_sections->TextTakenBack(ItemText::Code);
        QCOMPARE(told.size(), 0);
        Box().SetText({});
        m_sections->TextTakenBack(ItemText::Code);
        QCOMPARE(m_item->CodeHeaders(), quint8(0));
        QCOMPARE(told.size(), 1);
    }

    void placeOfASection_isTheCaretsLineWhereTheUserTypes()
    {
        Box().SetText(u"one\r\ntwo\r\nthree"_s);
        Box().SetSelStart(6);
        QCOMPARE(m_sections->PlaceOfNewSection(Code), u"at the end of the text"_s);
        Box().Focused = true;
        QCOMPARE(m_sections->PlaceOfNewSection(Code), u"before line 2"_s);
        Box().SetSelStart(Box().Text().size());
        QCOMPARE(m_sections->PlaceOfNewSection(Code), u"before line 3"_s);
    }

    // Keys

    void deleteOnAHeader_asks_data()
    {
        QTest::addColumn<MsgBoxResult>("answer");
        QTest::addColumn<QString>("rest");
        QTest::newRow("yes") << MsgBoxResult::Yes << u"a"_s;
        QTest::newRow("no") << MsgBoxResult::No << u"ab"_s;
        QTest::newRow("cancel") << MsgBoxResult::Cancel << u"a\r\n"_s + CodeLine + u"b"_s;
    }
    void deleteOnAHeader_asks()
    {
        QFETCH(MsgBoxResult, answer);
        FillWithHeader();
        QSignalSpy deleted(m_sections.get(), &ItemSections::SectionDeleted);
        Box().SetSelStart(3 + 30); // half of it
        Box().SetSelLength(10);
        m_prompts->ExpectMsgBox(u"Section Delete"_s, answer);
        QVERIFY(Press(Qt::Key_Delete));
        QTEST(Box().Text(), "rest");
        QCOMPARE(deleted.size(), answer == MsgBoxResult::Cancel ? 0 : 1);
    }

    void otherKeysOnAHeader_doNothing()
    {
        FillWithHeader();
        Box().SetSelStart(3);
        Box().SetSelLength(59);
        QVERIFY(Press(Qt::Key_Z, u"z"_s));
        QVERIFY(Press(Qt::Key_Tab, u"\t"_s));
        for (const int key : {Qt::Key_Left, Qt::Key_PageUp, Qt::Key_Home, Qt::Key_End, Qt::Key_Shift})
            QVERIFY(!Press(key));
        QVERIFY(!Press(Qt::Key_C, {}, Qt::ControlModifier));
    }

    void tabAndBackspace_moveByIndents()
    {
        QVERIFY(Press(Qt::Key_Tab, u"\t"_s));
        QCOMPARE(Box().Text(), LineIndent());
        QVERIFY(Press(Qt::Key_Backspace));
        QCOMPARE(Box().Text(), QString());
        QVERIFY(!Press(Qt::Key_Backspace)); // is the box's own
        Box().SetText(u"one\r\ntwo"_s);
        Box().SetSelLength(6);
        QVERIFY(Press(Qt::Key_Tab, u"\t"_s));
        QCOMPARE(Box().Text(), LineIndent() + u"one\r\n"_s + LineIndent() + u"two"_s);
        QVERIFY(Press(Qt::Key_Backtab, {}, Qt::ShiftModifier));
        QCOMPARE(Box().Text(), u"one\r\ntwo"_s);
        QCOMPARE(Box().Steps, 2); // each undone as one
    }

    void newLine_isIndentedAsTheOneBefore()
    {
        Box().SetText(u"  if x"_s);
        Box().SetSelStart(Box().Text().size());
        QVERIFY(Press(Qt::Key_Return, u"\r"_s));
        QCOMPARE(Box().Text(), u"  if x\r\n  "_s);
        QVERIFY(!Press(Qt::Key_Return, u"\r"_s, Qt::ShiftModifier));
    }

    void keysInALockedBox_areTheBoxs()
    {
        Box().SetText(u"one"_s);
        m_panel->SetLocked(true);
        QVERIFY(!Press(Qt::Key_Tab, u"\t"_s));
        QCOMPARE(Box().Text(), u"one"_s);
    }

    void textBehindAHeader_isOrdinary()
    {
        FillWithHeader();
        Box().SetSelStart(3 + CodeLine.size());
        Box().SetSelBold(true);
        QVERIFY(!Press(Qt::Key_X, u"x"_s));
        QCOMPARE(Box().SelBold(), std::optional(false));
        QCOMPARE(Box().SelProtected(), std::optional(false));
    }

    void tabInNotes_indentsSelectedParagraphs()
    {
        WindowlessBox& notes = m_panel->Boxes[size_t(ItemText::Notes)];
        m_panel->Formatter.SetRichTextBox(&notes);
        notes.SetText(u"one"_s);
        QVERIFY(!m_keys->KeyDown(ItemText::Notes, {.Key = Qt::Key_Tab, .Text = u"\t"_s}));
        notes.SetSelLength(2);
        QVERIFY(m_keys->KeyDown(ItemText::Notes, {.Key = Qt::Key_Tab, .Text = u"\t"_s}));
        QCOMPARE(notes.SelIndent(), std::optional(200));
        QVERIFY(m_keys->KeyDown(ItemText::Notes, {.Key = Qt::Key_Backtab, .Modifiers = Qt::ShiftModifier, .Text = {}}));
        QCOMPARE(notes.SelIndent(), std::optional(0));
        QCOMPARE(notes.Text(), u"one"_s);
    }

private:
    static void TextRows()
    {
        QTest::addColumn<DetailsTab>("tab");
        QTest::newRow("code") << DetailsTab::Code;
        QTest::newRow("usage") << DetailsTab::Usage;
    }
    void Show(DetailsTab tab) { m_panel->View = tab; }
    WindowlessBox& Box()
    {
        return m_panel->Boxes[size_t(m_panel->View == DetailsTab::Usage ? ItemText::Usage : ItemText::Code)];
    }
    std::pair<quint8, quint8> Bits() { return {m_item->CodeHeaders(), m_item->UsageHeaders()}; }
    bool Press(int key, const QString& text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        return m_keys->KeyDown(ItemText::Code, {.Key = key, .Modifiers = modifiers, .Text = text});
    }
    /// "a", the header of a section, and "b" in it.
    void FillWithHeader()
    {
        Box().SetText(u"a\r\n"_s + CodeLine + u"b"_s);
        Box().SetSelStart(3);
        Box().SetSelLength(CodeLine.size());
        Box().SetSelBold(true);
        Box().SetSelProtected(true);
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    std::unique_ptr<FakeDetailsView> m_panel;
    std::unique_ptr<ItemSections> m_sections;
    std::unique_ptr<CodeKeys> m_keys;
    std::unique_ptr<CCodeItem> m_item;
};

QB_TEST_MAIN(TestItemSections)
#include "tst_item_sections.moc"
