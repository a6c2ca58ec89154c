#pragma once

#include "platform/richtext/IRichTextBox.h"
#include "support/TestRun.h"

#include <utility>
#include <vector>

namespace qb::test {

/// What every rich text box must do, with or without a window: a list of named checks, each of
/// which gets an empty box in Courier New of 10 points.
class RichTextBoxSuite {
public:
    struct Check {
        const char* Name;
        void (*Run)(IRichTextBox& box);
    };

    static const std::vector<Check>& Checks()
    {
        static const std::vector<Check> checks{
            {"newBox_isEmptyAndPlain", newBox_isEmptyAndPlain},
            {"text_hasCrLfAndTheCaretAtItsBegin", text_hasCrLfAndTheCaretAtItsBegin},
            {"newText_losesTheOldLook", newText_losesTheOldLook},
            {"selection_staysWithinTheText", selection_staysWithinTheText},
            {"crLf_countsAsTwo", crLf_countsAsTwo},
            {"characterProperties_holdForTheSelectionOnly", characterProperties_holdForTheSelectionOnly},
            {"characterProperties_ofMixedState_giveNothing", characterProperties_ofMixedState_giveNothing},
            {"fontSize_isInPointsAndHalves", fontSize_isInPointsAndHalves},
            {"colour_hasRedInTheLowByte", colour_hasRedInTheLowByte},
            {"formatting_keepsSelectionAndText", formatting_keepsSelectionAndText},
            {"insertionPoint_takesTheLookBefore", insertionPoint_takesTheLookBefore},
            {"insertionPoint_atTheBeginOfAParagraph_takesTheLookBehind",
             insertionPoint_atTheBeginOfAParagraph_takesTheLookBehind},
            {"selectedText_isReplacedInTheLookOfItsBegin", selectedText_isReplacedInTheLookOfItsBegin},
            {"pendingLook_isThatOfWhatIsTyped", pendingLook_isThatOfWhatIsTyped},
            {"pendingLook_goesWhenTheCaretMoves", pendingLook_goesWhenTheCaretMoves},
            {"pendingLook_holdsSeveralProperties", pendingLook_holdsSeveralProperties},
            {"pendingLook_inAnEmptyText", pendingLook_inAnEmptyText},
            {"setSelText_putsTheCaretBehind", setSelText_putsTheCaretBehind},
            {"setSelText_withLineEnds_makesThemCrLf", setSelText_withLineEnds_makesThemCrLf},
            {"setSelText_withNothing_deletes", setSelText_withNothing_deletes},
            {"lineEnd_isReplacedAsAWhole", lineEnd_isReplacedAsAWhole},
            {"protectedText_refusesText", protectedText_refusesText},
            {"protectedText_takesTextAtItsEdges", protectedText_takesTextAtItsEdges},
            {"protectedText_withItsLookTakenOff_isNotTypedOn", protectedText_withItsLookTakenOff_isNotTypedOn},
            {"protectedText_takesFormats", protectedText_takesFormats},
            {"protectedText_thatIsLifted_takesText", protectedText_thatIsLifted_takesText},
            {"protectedText_refusesRtf", protectedText_refusesRtf},
            {"protectedText_isReplacedAsAWhole", protectedText_isReplacedAsAWhole},
            {"selRtf_carriesLooksAndParagraphs", selRtf_carriesLooksAndParagraphs},
            {"selRtf_takesPlainText", selRtf_takesPlainText},
            {"selRtf_replacesTheSelection", selRtf_replacesTheSelection},
            {"selRtf_ofAnEmptySelection_isAnEmptyText", selRtf_ofAnEmptySelection_isAnEmptyText},
            {"textRtf_comesBack", textRtf_comesBack},
            {"textRtf_takesPlainText", textRtf_takesPlainText},
            {"upTo_goesToTheNearestMember", upTo_goesToTheNearestMember},
            {"upTo_withoutAMember_goesToTheEnd", upTo_withoutAMember_goesToTheEnd},
            {"upTo_negated_goesToTheNearestOther", upTo_negated_goesToTheNearestOther},
            {"upTo_goesFromTheEdgesOfTheSelection", upTo_goesFromTheEdgesOfTheSelection},
            {"upTo_stopsAtLineEnds", upTo_stopsAtLineEnds},
            {"span_extendsOverMembers", span_extendsOverMembers},
            {"span_negated_extendsUpToAMember", span_negated_extendsUpToAMember},
            {"span_backward_keepsTheEnd", span_backward_keepsTheEnd},
            {"span_atTheEnds_selectsNothing", span_atTheEnds_selectsNothing},
            {"find_selectsWhatItFinds", find_selectsWhatItFinds},
            {"find_minds_caseAndWholeWords", find_minds_caseAndWholeWords},
            {"find_staysWithinItsRange", find_staysWithinItsRange},
            {"findAll_findsEachPlaceOnce", findAll_findsEachPlaceOnce},
            {"find_withoutAResult_changesNothing", find_withoutAResult_changesNothing},
            {"bullet_isOfTheParagraph", bullet_isOfTheParagraph},
            {"bulletIndent_setsTheTextBehindTheBullet", bulletIndent_setsTheTextBehindTheBullet},
            {"alignment_isOfTheParagraph", alignment_isOfTheParagraph},
            {"indent_isOfTheParagraphAndNeverNegative", indent_isOfTheParagraphAndNeverNegative},
            {"paragraphProperties_ofMixedState_giveNothing", paragraphProperties_ofMixedState_giveNothing},
            {"paragraphProperties_endWithTheParagraphOfTheSelection",
             paragraphProperties_endWithTheParagraphOfTheSelection},
            {"paragraphProperties_ofTheLineBefore_spareTheEmptyLast",
             paragraphProperties_ofTheLineBefore_spareTheEmptyLast},
            {"newLine_standsAsItsParagraph", newLine_standsAsItsParagraph},
        };
        return checks;
    }

private:
    using Direction = IRichTextBox::Direction;
    using Members = IRichTextBox::Members;

    static QString S(const char16_t* text) { return QString::fromUtf16(text); }

    static void Select(IRichTextBox& box, qsizetype start, qsizetype length = 0)
    {
        box.SetSelStart(start);
        box.SetSelLength(length);
    }

    /// "start+length" of the selection.
    static QString Selection(const IRichTextBox& box)
    {
        return QStringLiteral("%1+%2").arg(box.SelStart()).arg(box.SelLength());
    }

    static void Bold(IRichTextBox& box, qsizetype start, qsizetype length)
    {
        Select(box, start, length);
        box.SetSelBold(true);
    }

    /// One mark a character: B where it is bold.
    static QString Bolds(IRichTextBox& box)
    {
        QString marks;
        for (qsizetype at = 0; at < box.Text().size(); ++at) {
            Select(box, at, 1);
            marks += box.SelBold() == true ? QLatin1Char('B') : QLatin1Char('-');
        }
        return marks;
    }

    static void Protect(IRichTextBox& box, qsizetype start, qsizetype length)
    {
        Select(box, start, length);
        box.SetSelProtected(true);
    }

    // Text and selection

    static void newBox_isEmptyAndPlain(IRichTextBox& box)
    {
        QCOMPARE(box.Text(), QString());
        QCOMPARE(Selection(box), S(u"0+0"));
        QCOMPARE(box.SelText(), QString());
        QCOMPARE(box.SelBold(), std::optional(false));
        QCOMPARE(box.SelItalic(), std::optional(false));
        QCOMPARE(box.SelUnderline(), std::optional(false));
        QCOMPARE(box.SelProtected(), std::optional(false));
        QCOMPARE(box.SelColor(), std::optional(quint32(0)));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Courier New")));
        QCOMPARE(box.SelFontSize(), std::optional(10.0));
        QCOMPARE(box.SelBullet(), std::optional(false));
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
        QCOMPARE(box.SelIndent(), std::optional(0));
        QCOMPARE(box.BulletIndent(), 0);
    }

    static void text_hasCrLfAndTheCaretAtItsBegin(IRichTextBox& box)
    {
        box.SetText(S(u"a\nb\rc\r\nd\n"));
        QCOMPARE(box.Text(), S(u"a\r\nb\r\nc\r\nd\r\n"));
        QCOMPARE(Selection(box), S(u"0+0"));
        Select(box, 3, 2);
        box.SetText(S(u"xyz"));
        QCOMPARE(Selection(box), S(u"0+0"));
        QCOMPARE(box.Text(), S(u"xyz"));
    }

    static void newText_losesTheOldLook(IRichTextBox& box)
    {
        box.SetText(S(u"abc"));
        Select(box, 0, 3);
        box.SetSelBold(true);
        box.SetSelFontName(S(u"Arial"));
        box.SetSelAlignment(TextAlignment::Right);
        box.SetText(S(u"def"));
        Select(box, 0, 3);
        QCOMPARE(box.SelBold(), std::optional(false));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Courier New")));
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
    }

    static void selection_staysWithinTheText(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Select(box, 2, 3);
        QCOMPARE(Selection(box), S(u"2+3"));
        QCOMPARE(box.SelText(), S(u"cde"));
        box.SetSelStart(4);
        QCOMPARE(Selection(box), S(u"4+0"));
        box.SetSelLength(100);
        QCOMPARE(Selection(box), S(u"4+2"));
        box.SetSelStart(100);
        QCOMPARE(Selection(box), S(u"6+0"));
        box.SetSelLength(1);
        QCOMPARE(Selection(box), S(u"6+0"));
        box.SetSelStart(-5);
        QCOMPARE(Selection(box), S(u"0+0"));
        box.SetSelLength(-5);
        QCOMPARE(Selection(box), S(u"0+0"));
    }

    static void crLf_countsAsTwo(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\nb\r\n\r\nc"));
        QCOMPARE(box.Text().size(), 9);
        Select(box, 3, 1);
        QCOMPARE(box.SelText(), S(u"b"));
        Select(box, 1, 5);
        QCOMPARE(box.SelText(), S(u"\r\nb\r\n"));
        Select(box, 8, 1);
        QCOMPARE(box.SelText(), S(u"c"));
        QCOMPARE(Selection(box), S(u"8+1"));
    }

    // Characters

    static void characterProperties_holdForTheSelectionOnly(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Select(box, 2, 2);
        box.SetSelBold(true);
        box.SetSelItalic(true);
        box.SetSelUnderline(true);
        box.SetSelProtected(true);
        box.SetSelColor(0x123456);
        box.SetSelFontName(S(u"Arial"));
        box.SetSelFontSize(14);
        for (const qsizetype at : {1, 4}) {
            Select(box, at, 1);
            QCOMPARE(box.SelBold(), std::optional(false));
            QCOMPARE(box.SelItalic(), std::optional(false));
            QCOMPARE(box.SelUnderline(), std::optional(false));
            QCOMPARE(box.SelProtected(), std::optional(false));
            QCOMPARE(box.SelColor(), std::optional(quint32(0)));
            QCOMPARE(box.SelFontName(), std::optional(S(u"Courier New")));
            QCOMPARE(box.SelFontSize(), std::optional(10.0));
        }
        Select(box, 2, 2);
        QCOMPARE(box.SelBold(), std::optional(true));
        QCOMPARE(box.SelItalic(), std::optional(true));
        QCOMPARE(box.SelUnderline(), std::optional(true));
        QCOMPARE(box.SelProtected(), std::optional(true));
        QCOMPARE(box.SelColor(), std::optional(quint32(0x123456)));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Arial")));
        QCOMPARE(box.SelFontSize(), std::optional(14.0));
        box.SetSelBold(false);
        box.SetSelItalic(false);
        box.SetSelUnderline(false);
        box.SetSelProtected(false);
        QCOMPARE(box.SelBold(), std::optional(false));
        QCOMPARE(box.SelItalic(), std::optional(false));
        QCOMPARE(box.SelUnderline(), std::optional(false));
        QCOMPARE(box.SelProtected(), std::optional(false));
        QCOMPARE(box.SelColor(), std::optional(quint32(0x123456)));
    }

    static void characterProperties_ofMixedState_giveNothing(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Select(box, 2, 2);
        box.SetSelBold(true);
        box.SetSelItalic(true);
        box.SetSelUnderline(true);
        box.SetSelProtected(true);
        box.SetSelColor(0x123456);
        box.SetSelFontName(S(u"Arial"));
        box.SetSelFontSize(14);
        for (const auto& [start, length] : {std::pair(0, 6), std::pair(1, 2), std::pair(3, 2)}) {
            Select(box, start, length);
            QCOMPARE(box.SelBold(), std::nullopt);
            QCOMPARE(box.SelItalic(), std::nullopt);
            QCOMPARE(box.SelUnderline(), std::nullopt);
            QCOMPARE(box.SelProtected(), std::nullopt);
            QCOMPARE(box.SelColor(), std::nullopt);
            QCOMPARE(box.SelFontName(), std::nullopt);
            QCOMPARE(box.SelFontSize(), std::nullopt);
        }
        // Of one property mixed, the others are what they are.
        box.SetText(S(u"abcdef"));
        Bold(box, 0, 3);
        Select(box, 0, 6);
        box.SetSelItalic(true);
        QCOMPARE(box.SelBold(), std::nullopt);
        QCOMPARE(box.SelItalic(), std::optional(true));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Courier New")));
    }

    static void fontSize_isInPointsAndHalves(IRichTextBox& box)
    {
        box.SetText(S(u"abc"));
        Select(box, 0, 3);
        for (const double points : {8.5, 1.0, 72.0, 400.0}) {
            box.SetSelFontSize(points);
            QCOMPARE(box.SelFontSize(), std::optional(points));
        }
    }

    static void colour_hasRedInTheLowByte(IRichTextBox& box)
    {
        box.SetText(S(u"abc"));
        Select(box, 0, 3);
        box.SetSelColor(0x0000ff);
        QVERIFY2(box.TextRTF().contains(S(u"\\red255\\green0\\blue0;")), qPrintable(box.TextRTF()));
        box.SetSelColor(0);
        QCOMPARE(box.SelColor(), std::optional(quint32(0)));
    }

    static void formatting_keepsSelectionAndText(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\ncd"));
        Select(box, 1, 4);
        box.SetSelBold(true);
        box.SetSelColor(0xff);
        box.SetSelFontName(S(u"Arial"));
        box.SetSelFontSize(20);
        box.SetSelProtected(true);
        box.SetSelBullet(true);
        box.SetSelAlignment(TextAlignment::Center);
        box.SetSelIndent(200);
        QCOMPARE(Selection(box), S(u"1+4"));
        QCOMPARE(box.Text(), S(u"ab\r\ncd"));
    }

    // The insertion point

    static void insertionPoint_takesTheLookBefore(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Bold(box, 1, 2);
        const bool expected[] = {false, false, true, true, false};
        for (qsizetype at = 0; at <= 4; ++at) {
            Select(box, at);
            QCOMPARE(box.SelBold(), std::optional(expected[at]));
        }
        Select(box, 3);
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(Bolds(box), S(u"-BBB-"));
        Select(box, 1);
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(Bolds(box), S(u"--BBB-"));
    }

    static void insertionPoint_atTheBeginOfAParagraph_takesTheLookBehind(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\ncd"));
        Bold(box, 0, 1);
        Bold(box, 4, 1);
        Select(box, 0);
        QCOMPARE(box.SelBold(), std::optional(true));
        Select(box, 4);
        QCOMPARE(box.SelBold(), std::optional(true));
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(Bolds(box), S(u"B---BB-"));
    }

    static void selectedText_isReplacedInTheLookOfItsBegin(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Bold(box, 1, 1);
        Select(box, 1, 2);
        QVERIFY(box.SetSelText(S(u"xyz")));
        QCOMPARE(box.Text(), S(u"axyzd"));
        QCOMPARE(Bolds(box), S(u"-BBB-"));
    }

    static void pendingLook_isThatOfWhatIsTyped(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Select(box, 2);
        box.SetSelBold(true);
        QCOMPARE(box.SelBold(), std::optional(true));
        QCOMPARE(Bolds(box), S(u"----"));
        Select(box, 2);
        box.SetSelBold(true);
        QVERIFY(box.SetSelText(S(u"x")));
        QVERIFY(box.SetSelText(S(u"y")));
        QCOMPARE(box.Text(), S(u"abxycd"));
        QCOMPARE(Bolds(box), S(u"--BB--"));
    }

    static void pendingLook_goesWhenTheCaretMoves(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Select(box, 2);
        box.SetSelBold(true);
        box.SetSelStart(3);
        box.SetSelStart(2);
        QCOMPARE(box.SelBold(), std::optional(false));
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(Bolds(box), S(u"-----"));
    }

    static void pendingLook_holdsSeveralProperties(IRichTextBox& box)
    {
        box.SetText(S(u"ab"));
        Select(box, 1);
        box.SetSelItalic(true);
        box.SetSelUnderline(true);
        box.SetSelColor(0x112233);
        box.SetSelFontName(S(u"Arial"));
        box.SetSelFontSize(7);
        QVERIFY(box.SetSelText(S(u"x")));
        Select(box, 1, 1);
        QCOMPARE(box.SelItalic(), std::optional(true));
        QCOMPARE(box.SelUnderline(), std::optional(true));
        QCOMPARE(box.SelColor(), std::optional(quint32(0x112233)));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Arial")));
        QCOMPARE(box.SelFontSize(), std::optional(7.0));
    }

    static void pendingLook_inAnEmptyText(IRichTextBox& box)
    {
        box.SetSelBold(true);
        box.SetSelFontName(S(u"Arial"));
        QVERIFY(box.SetSelText(S(u"x")));
        Select(box, 0, 1);
        QCOMPARE(box.SelBold(), std::optional(true));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Arial")));
    }

    // Writing

    static void setSelText_putsTheCaretBehind(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Select(box, 1, 3);
        QVERIFY(box.SetSelText(S(u"wxyz")));
        QCOMPARE(box.Text(), S(u"awxyzef"));
        QCOMPARE(Selection(box), S(u"5+0"));
        QVERIFY(box.SetSelText(S(u"!")));
        QCOMPARE(box.Text(), S(u"awxyz!ef"));
        QCOMPARE(Selection(box), S(u"6+0"));
    }

    static void setSelText_withLineEnds_makesThemCrLf(IRichTextBox& box)
    {
        box.SetText(S(u"ab"));
        Select(box, 1);
        QVERIFY(box.SetSelText(S(u"x\ny\rz")));
        QCOMPARE(box.Text(), S(u"ax\r\ny\r\nzb"));
        QCOMPARE(Selection(box), S(u"8+0"));
        Select(box, 2, 2);
        QVERIFY(box.SetSelText(S(u" ")));
        QCOMPARE(box.Text(), S(u"ax y\r\nzb"));
    }

    static void lineEnd_isReplacedAsAWhole(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\ncd"));
        Select(box, 3, 0); // within the line end
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(box.Text(), S(u"abx\r\ncd"));
        QCOMPARE(Selection(box), S(u"3+0"));
        Select(box, 4, 1);
        QVERIFY(box.SetSelRTF(S(u"{\\rtf1 y\\b z}")));
        QCOMPARE(box.Text(), S(u"abxyzcd"));
        QCOMPARE(Selection(box), S(u"5+0"));
        QCOMPARE(Bolds(box), S(u"----B--"));
    }

    static void setSelText_withNothing_deletes(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\ncd"));
        Select(box, 1, 4);
        QVERIFY(box.SetSelText({}));
        QCOMPARE(box.Text(), S(u"ad"));
        QCOMPARE(Selection(box), S(u"1+0"));
        QVERIFY(box.SetSelText({}));
        QCOMPARE(box.Text(), S(u"ad"));
    }

    // Protection

    static void protectedText_refusesText(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Protect(box, 2, 2);
        for (const auto& [start, length] :
             {std::pair(3, 0), std::pair(2, 1), std::pair(1, 2), std::pair(3, 2), std::pair(0, 6), std::pair(2, 2)}) {
            Select(box, start, length);
            QVERIFY(!box.SetSelText(S(u"x")));
            QVERIFY(!box.SetSelText({}));
            QCOMPARE(box.Text(), S(u"abcdef"));
            QCOMPARE(Selection(box), QStringLiteral("%1+%2").arg(start).arg(length));
        }
    }

    static void protectedText_takesTextAtItsEdges(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Protect(box, 2, 2);
        Select(box, 4);
        QVERIFY(box.SetSelText(S(u"y")));
        Select(box, 2);
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(box.Text(), S(u"abxcdyef"));
        Select(box, 1, 2);
        QVERIFY(box.SetSelText(S(u"-")));
        QCOMPARE(box.Text(), S(u"a-cdyef"));
        Select(box, 4, 1); // what was typed behind is not part of it
        QCOMPARE(box.SelProtected(), std::optional(false));
    }

    static void protectedText_withItsLookTakenOff_isNotTypedOn(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Protect(box, 1, 2);
        Select(box, 3);
        box.SetSelProtected(false);
        QVERIFY(box.SetSelText(S(u"x")));
        Select(box, 3, 1);
        QCOMPARE(box.SelProtected(), std::optional(false));
        QVERIFY(box.SetSelText(S(u"y")));
        QCOMPARE(box.Text(), S(u"abcyd"));
        Select(box, 1, 2);
        QCOMPARE(box.SelProtected(), std::optional(true));
    }

    static void protectedText_takesFormats(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Protect(box, 1, 2);
        Bold(box, 0, 4);
        QCOMPARE(Bolds(box), S(u"BBBB"));
        Select(box, 1, 2);
        QCOMPARE(box.SelProtected(), std::optional(true));
    }

    static void protectedText_thatIsLifted_takesText(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Protect(box, 1, 2);
        Select(box, 1, 2);
        box.SetSelProtected(false);
        QVERIFY(box.SetSelText(S(u"x")));
        QCOMPARE(box.Text(), S(u"axd"));
    }

    static void protectedText_refusesRtf(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Protect(box, 1, 2);
        Select(box, 2);
        QVERIFY(!box.SetSelRTF(S(u"{\\rtf1 x}")));
        Select(box, 0, 4);
        QVERIFY(!box.SetSelRTF(S(u"{\\rtf1 x}")));
        QCOMPARE(box.Text(), S(u"abcd"));
        QCOMPARE(Selection(box), S(u"0+4"));
        Select(box, 1);
        QVERIFY(box.SetSelRTF(S(u"{\\rtf1 x}")));
        QCOMPARE(box.Text(), S(u"axbcd"));
    }

    static void protectedText_isReplacedAsAWhole(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Protect(box, 0, 4);
        box.SetText(S(u"new"));
        QCOMPARE(box.Text(), S(u"new"));
        Select(box, 0, 3);
        QCOMPARE(box.SelProtected(), std::optional(false));
    }

    // RTF

    static void selRtf_carriesLooksAndParagraphs(IRichTextBox& box)
    {
        box.SetText(S(u"abc\r\ndef\r\nghi"));
        Bold(box, 1, 3);
        Select(box, 5);
        box.SetSelAlignment(TextAlignment::Right);
        Select(box, 1, 10);
        const QString rtf = box.SelRTF();
        QVERIFY(rtf.startsWith(S(u"{\\rtf1")));
        box.SetText(S(u"12"));
        Select(box, 1);
        QVERIFY(box.SetSelRTF(rtf));
        QCOMPARE(box.Text(), S(u"1bc\r\ndef\r\ng2"));
        QCOMPARE(Selection(box), S(u"11+0"));
        const QString bolds = Bolds(box);
        QCOMPARE(bolds.left(3), S(u"-BB"));
        QCOMPARE(bolds.mid(5), S(u"-------"));
        Select(box, 6);
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Right));
        Select(box, 11);
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
    }

    static void selRtf_takesPlainText(IRichTextBox& box)
    {
        box.SetText(S(u"ab"));
        Select(box, 1);
        QVERIFY(box.SetSelRTF(S(u"x\ny{\\b z}")));
        QCOMPARE(box.Text(), S(u"ax\r\ny{\\b z}b"));
    }

    static void selRtf_replacesTheSelection(IRichTextBox& box)
    {
        box.SetText(S(u"abcdef"));
        Select(box, 1, 4);
        QVERIFY(box.SetSelRTF(S(u"{\\rtf1{\\fonttbl{\\f0 Arial;}}\\f0\\fs30\\b x\\b0 y\\par}")));
        QCOMPARE(box.Text(), S(u"axyf"));
        QCOMPARE(Selection(box), S(u"3+0"));
        QCOMPARE(Bolds(box), S(u"-B--"));
        Select(box, 1, 2);
        QCOMPARE(box.SelFontName(), std::optional(S(u"Arial")));
        QCOMPARE(box.SelFontSize(), std::optional(15.0));
    }

    static void selRtf_ofAnEmptySelection_isAnEmptyText(IRichTextBox& box)
    {
        box.SetText(S(u"abc"));
        Select(box, 1);
        const QString rtf = box.SelRTF();
        QVERIFY(box.SetSelRTF(rtf));
        QCOMPARE(box.Text(), S(u"abc"));
        QCOMPARE(Selection(box), S(u"1+0"));
    }

    static void textRtf_comesBack(IRichTextBox& box)
    {
        box.SetText(S(u"abc\r\n\r\näö\t{x}"));
        Bold(box, 1, 1);
        Select(box, 7, 2);
        box.SetSelColor(0x2040ff);
        box.SetSelFontName(S(u"Arial"));
        box.SetSelFontSize(12.5);
        box.SetSelUnderline(true);
        box.SetSelAlignment(TextAlignment::Center);
        Protect(box, 0, 1);
        Select(box, 0);
        box.SetSelBullet(true);
        box.SetBulletIndent(300);
        const QString rtf = box.TextRTF();
        box.SetText(S(u"other"));
        box.SetTextRTF(rtf);
        QCOMPARE(box.TextRTF(), rtf);
        QCOMPARE(box.Text(), S(u"abc\r\n\r\näö\t{x}"));
        QCOMPARE(Selection(box), S(u"0+0"));
        QCOMPARE(box.SelBullet(), std::optional(true));
        QCOMPARE(Bolds(box), S(u"-B-----------"));
        Select(box, 0, 1);
        QCOMPARE(box.SelProtected(), std::optional(true));
        Select(box, 7, 2);
        QCOMPARE(box.SelColor(), std::optional(quint32(0x2040ff)));
        QCOMPARE(box.SelFontName(), std::optional(S(u"Arial")));
        QCOMPARE(box.SelFontSize(), std::optional(12.5));
        QCOMPARE(box.SelUnderline(), std::optional(true));
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Center));
    }

    static void textRtf_takesPlainText(IRichTextBox& box)
    {
        box.SetTextRTF(S(u"a\nb"));
        QCOMPARE(box.Text(), S(u"a\r\nb"));
        box.SetTextRTF({});
        QCOMPARE(box.Text(), QString());
        QCOMPARE(Selection(box), S(u"0+0"));
    }

    // UpTo and Span

    static void upTo_goesToTheNearestMember(IRichTextBox& box)
    {
        box.SetText(S(u"ab;cd,ef;gh"));
        Select(box, 3);
        box.UpTo(u";,", Direction::Forward);
        QCOMPARE(Selection(box), S(u"5+0"));
        box.UpTo(u";,", Direction::Forward); // it stands before one
        QCOMPARE(Selection(box), S(u"5+0"));
        Select(box, 8);
        box.UpTo(u";,", Direction::Backward);
        QCOMPARE(Selection(box), S(u"6+0"));
        box.UpTo(u";,", Direction::Backward); // it stands behind one
        QCOMPARE(Selection(box), S(u"6+0"));
    }

    static void upTo_withoutAMember_goesToTheEnd(IRichTextBox& box)
    {
        box.SetText(S(u"abcd"));
        Select(box, 2);
        box.UpTo(u"xyz", Direction::Forward);
        QCOMPARE(Selection(box), S(u"4+0"));
        box.UpTo(u"xyz", Direction::Backward);
        QCOMPARE(Selection(box), S(u"0+0"));
        box.UpTo(u"", Direction::Forward);
        QCOMPARE(Selection(box), S(u"4+0"));
    }

    static void upTo_negated_goesToTheNearestOther(IRichTextBox& box)
    {
        box.SetText(S(u"ab  \tcd  "));
        Select(box, 2);
        box.UpTo(u" \t", Direction::Forward, Members::NotOf);
        QCOMPARE(Selection(box), S(u"5+0"));
        Select(box, 5);
        box.UpTo(u" \t", Direction::Backward, Members::NotOf);
        QCOMPARE(Selection(box), S(u"2+0"));
        Select(box, 7);
        box.UpTo(u" \t", Direction::Forward, Members::NotOf);
        QCOMPARE(Selection(box), S(u"9+0"));
    }

    static void upTo_goesFromTheEdgesOfTheSelection(IRichTextBox& box)
    {
        box.SetText(S(u"a.b.c.d"));
        Select(box, 2, 3);
        box.UpTo(u".", Direction::Forward);
        QCOMPARE(Selection(box), S(u"5+0"));
        Select(box, 2, 3);
        box.UpTo(u".", Direction::Backward);
        QCOMPARE(Selection(box), S(u"2+0"));
    }

    static void upTo_stopsAtLineEnds(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\ncd\r\nef"));
        Select(box, 5);
        box.UpTo(u"\n", Direction::Backward);
        QCOMPARE(Selection(box), S(u"4+0"));
        box.UpTo(u"\r", Direction::Forward);
        QCOMPARE(Selection(box), S(u"6+0"));
        Select(box, 1);
        box.UpTo(u"\n", Direction::Backward);
        QCOMPARE(Selection(box), S(u"0+0"));
        Select(box, 8);
        box.UpTo(u"\r", Direction::Forward);
        QCOMPARE(Selection(box), S(u"10+0"));
    }

    static void span_extendsOverMembers(IRichTextBox& box)
    {
        box.SetText(S(u"aabbcabc"));
        Select(box, 1);
        box.Span(u"ab", Direction::Forward);
        QCOMPARE(Selection(box), S(u"1+3"));
        QCOMPARE(box.SelText(), S(u"abb"));
        Select(box, 4);
        box.Span(u"ab", Direction::Forward);
        QCOMPARE(Selection(box), S(u"4+0"));
    }

    static void span_negated_extendsUpToAMember(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\ncd\r\nef"));
        Select(box, 4);
        box.Span(u"\r", Direction::Forward, Members::NotOf);
        QCOMPARE(box.SelText(), S(u"cd"));
        Select(box, 8);
        box.Span(u"\r", Direction::Forward, Members::NotOf);
        QCOMPARE(box.SelText(), S(u"ef"));
        Select(box, 4);
        box.Span(u",f\r", Direction::Forward, Members::NotOf);
        QCOMPARE(box.SelText(), S(u"cd"));
    }

    static void span_backward_keepsTheEnd(IRichTextBox& box)
    {
        box.SetText(S(u"ab cd ef"));
        Select(box, 5);
        box.Span(u" ", Direction::Backward, Members::NotOf);
        QCOMPARE(Selection(box), S(u"3+2"));
        Select(box, 4, 3);
        box.Span(u"abcd", Direction::Backward);
        QCOMPARE(Selection(box), S(u"3+4"));
    }

    static void span_atTheEnds_selectsNothing(IRichTextBox& box)
    {
        box.SetText(S(u"aaa"));
        Select(box, 3);
        box.Span(u"a", Direction::Forward);
        QCOMPARE(Selection(box), S(u"3+0"));
        Select(box, 0);
        box.Span(u"a", Direction::Backward);
        QCOMPARE(Selection(box), S(u"0+0"));
        box.Span(u"a", Direction::Forward);
        QCOMPARE(Selection(box), S(u"0+3"));
        Select(box, 3);
        box.Span(u"a", Direction::Backward);
        QCOMPARE(Selection(box), S(u"0+3"));
    }

    // Find

    static void find_selectsWhatItFinds(IRichTextBox& box)
    {
        box.SetText(S(u"one Two\r\ntwo twoo two"));
        QCOMPARE(box.Find(S(u"two")), 4);
        QCOMPARE(Selection(box), S(u"4+3"));
        QCOMPARE(box.Find(S(u"TWO"), 5), 9);
        QCOMPARE(Selection(box), S(u"9+3"));
        QCOMPARE(box.Find(S(u"o\r\nt")), 6);
        QCOMPARE(Selection(box), S(u"6+4"));
        QCOMPARE(box.Find(S(u"one Two\r\ntwo twoo two")), 0);
    }

    static void find_minds_caseAndWholeWords(IRichTextBox& box)
    {
        box.SetText(S(u"Two twoo _two two2 ätwo two"));
        QCOMPARE(box.Find(S(u"two"), 0, -1, true), 4);
        QCOMPARE(box.Find(S(u"two"), 0, -1, false, true), 0);
        QCOMPARE(box.Find(S(u"two"), 0, -1, true, true), 24);
        QCOMPARE(Selection(box), S(u"24+3"));
        box.SetText(S(u"(two)"));
        QCOMPARE(box.Find(S(u"two"), 0, -1, true, true), 1);
    }

    static void findAll_findsEachPlaceOnce(IRichTextBox& box)
    {
        box.SetText(S(u"aaaa Aa\r\nxaa aa_"));
        QCOMPARE(box.FindAll(S(u"aa")), (QList<qsizetype>{0, 2, 5, 10, 13}));
        QCOMPARE(box.FindAll(S(u"aa"), true), (QList<qsizetype>{0, 2, 10, 13}));
        QCOMPARE(box.FindAll(S(u"aa"), false, true), (QList<qsizetype>{5}));
        QCOMPARE(box.FindAll(QString()), QList<qsizetype>());
        QCOMPARE(Selection(box), S(u"0+0"));
    }

    static void find_staysWithinItsRange(IRichTextBox& box)
    {
        box.SetText(S(u"two two two"));
        QCOMPARE(box.Find(S(u"two"), 1, 7), 4);
        QCOMPARE(box.Find(S(u"two"), 1, 6), -1);
        QCOMPARE(box.Find(S(u"two"), 8, 100), 8);
        QCOMPARE(box.Find(S(u"two"), 9), -1);
        QCOMPARE(box.Find(S(u"two"), 100), -1);
    }

    static void find_withoutAResult_changesNothing(IRichTextBox& box)
    {
        box.SetText(S(u"abc"));
        Select(box, 1, 2);
        QCOMPARE(box.Find(S(u"x")), -1);
        QCOMPARE(box.Find(S(u"abcd")), -1);
        QCOMPARE(box.Find({}), -1);
        QCOMPARE(box.Find(S(u"B"), 0, -1, true), -1);
        QCOMPARE(Selection(box), S(u"1+2"));
        box.SetText({});
        QCOMPARE(box.Find(S(u"x")), -1);
    }

    // Paragraphs

    static void bullet_isOfTheParagraph(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\nb\r\nc"));
        Select(box, 3);
        box.SetSelBullet(true);
        QCOMPARE(box.SelBullet(), std::optional(true));
        Select(box, 0);
        QCOMPARE(box.SelBullet(), std::optional(false));
        Select(box, 6);
        QCOMPARE(box.SelBullet(), std::optional(false));
        Select(box, 0, 7);
        box.SetSelBullet(true);
        QCOMPARE(box.SelBullet(), std::optional(true));
        box.SetSelBullet(false);
        for (const qsizetype at : {0, 3, 6}) {
            Select(box, at);
            QCOMPARE(box.SelBullet(), std::optional(false));
            QCOMPARE(box.SelIndent(), std::optional(0));
        }
        QCOMPARE(box.Text(), S(u"a\r\nb\r\nc"));
    }

    static void bulletIndent_setsTheTextBehindTheBullet(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\nb"));
        box.SetSelIndent(200);
        box.SetSelBullet(true);
        box.SetBulletIndent(300);
        QCOMPARE(box.BulletIndent(), 300);
        QCOMPARE(box.SelIndent(), std::optional(200)); // of the bullet
        const QString with = box.TextRTF();
        QVERIFY2(with.contains(S(u"\\fi-300\\li500")), qPrintable(with));
        box.SetSelBullet(false);
        box.SetBulletIndent(0);
        QCOMPARE(box.BulletIndent(), 0);
        QCOMPARE(box.SelIndent(), std::optional(200));
        QVERIFY2(!box.TextRTF().contains(S(u"\\fi")), qPrintable(box.TextRTF()));
    }

    static void alignment_isOfTheParagraph(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\n\r\nc"));
        for (const TextAlignment alignment :
             {TextAlignment::Right, TextAlignment::Center, TextAlignment::Justified, TextAlignment::Left}) {
            Select(box, 3);
            box.SetSelAlignment(alignment);
            QCOMPARE(box.SelAlignment(), std::optional(alignment));
            Select(box, 0);
            QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
            Select(box, 5);
            QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
        }
    }

    static void indent_isOfTheParagraphAndNeverNegative(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\nb"));
        Select(box, 3);
        box.SetSelIndent(400);
        QCOMPARE(box.SelIndent(), std::optional(400));
        Select(box, 0);
        QCOMPARE(box.SelIndent(), std::optional(0));
        box.SetSelIndent(-200);
        QCOMPARE(box.SelIndent(), std::optional(0));
    }

    static void paragraphProperties_ofMixedState_giveNothing(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\nb\r\nc"));
        Select(box, 3);
        box.SetSelBullet(true);
        box.SetSelAlignment(TextAlignment::Right);
        box.SetSelIndent(100);
        for (const auto& [start, length] : {std::pair(0, 7), std::pair(0, 4), std::pair(4, 3)}) {
            Select(box, start, length);
            QCOMPARE(box.SelBullet(), std::nullopt);
            QCOMPARE(box.SelAlignment(), std::nullopt);
            QCOMPARE(box.SelIndent(), std::nullopt);
        }
        Select(box, 3, 2);
        QCOMPARE(box.SelBullet(), std::optional(true));
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Right));
    }

    static void paragraphProperties_endWithTheParagraphOfTheSelection(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\nb\r\nc"));
        Select(box, 0, 3); // with its line end
        box.SetSelAlignment(TextAlignment::Right);
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Right));
        Select(box, 3);
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
    }

    static void paragraphProperties_ofTheLineBefore_spareTheEmptyLast(IRichTextBox& box)
    {
        box.SetText(S(u"a\r\n"));
        Select(box, 0);
        box.SetSelAlignment(TextAlignment::Right);
        Select(box, 3);
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
        box.SetSelBullet(true);
        Select(box, 0);
        QCOMPARE(box.SelBullet(), std::optional(false));
    }

    static void newLine_standsAsItsParagraph(IRichTextBox& box)
    {
        box.SetText(S(u"ab\r\nc"));
        Select(box, 1);
        box.SetSelAlignment(TextAlignment::Center);
        box.SetSelBullet(true);
        QVERIFY(box.SetSelText(S(u"\r\n")));
        for (const qsizetype at : {0, 3}) {
            Select(box, at);
            QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Center));
            QCOMPARE(box.SelBullet(), std::optional(true));
        }
        Select(box, 6);
        QCOMPARE(box.SelAlignment(), std::optional(TextAlignment::Left));
    }
};

} // namespace qb::test
