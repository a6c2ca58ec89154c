#include "support/GuiRun.h"
#include "support/RichTextBoxSuite.h"
#include "support/RichTextDescription.h"
#include "support/TestRun.h"
#include "text/CTextFormat.h"
#include "text/ui/CodeBox.h"
#include "text/ui/RichTextBox.h"
#include "text/ui/RichTextMime.h"

#include <QBuffer>
#include <QClipboard>
#include <QDropEvent>
#include <QHelpEvent>
#include <QInputMethodEvent>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>
#include <QToolTip>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<UserTextBox> MakeBox(bool forCode)
{
    if (forCode)
        return std::make_unique<CodeBox>();
    return std::make_unique<RichTextBox>();
}

/// What the window shows, told as the text itself is, or the place where both differ.
QByteArray ShownDifference(UserTextBox& box)
{
    const QTextDocument* document = box.Widget().findChild<QTextDocument*>();
    const RichText content = box.Content();
    const RichTextDocument& text = content.Document();
    QStringList shown;
    QStringList meant;
    qsizetype position = 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        shown << u"paragraph %1 at %2"_s.arg(RichTextLook::NumberOf(block.blockFormat())).arg(position);
        meant << u"paragraph %1 at %2"_s.arg(text.ParagraphNumberAt(position)).arg(position);
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            shown << fragment.text();
            meant << text.Text().mid(position, fragment.length());
            for (int i = 0; i < fragment.length(); ++i, ++position) {
                if (RichTextLook::NumberOf(fragment.charFormat()) != text.Runs().ValueAt(position))
                    return "another look at " + QByteArray::number(position) + ": shown "
                           + DescribeFormat(text, text.Format(RichTextLook::NumberOf(fragment.charFormat()))).toUtf8()
                           + ", meant " + DescribeFormat(text, text.FormatAt(position)).toUtf8();
            }
        }
        if (block.next().isValid()) {
            meant << text.Text().mid(position, 2);
            shown << u"\r\n"_s;
            position += 2;
        }
    }
    if (position != text.Length())
        return "lengths: shown " + QByteArray::number(position) + ", meant " + QByteArray::number(text.Length());
    return FirstDifference(shown, meant);
}

QByteArray Difference(const RichText& actual, const RichText& expected)
{
    return FirstDifference(Describe(actual.Document()), Describe(expected.Document()));
}

/// The two halves of a line end have one look in a window.
QByteArray DifferenceBetweenLineEnds(const RichText& actual, const RichText& expected)
{
    return FirstDifference(DescribeWithoutLineEnds(actual.Document()), DescribeWithoutLineEnds(expected.Document()));
}

/// Any operation on a box.
void Operate(IRichTextBox& box, Dice& dice)
{
    const QString pieces[] = {u"x"_s,           u""_s, u"two words"_s, u"\r\n"_s, u"one\r\ntwo\r\n"_s, QString(u'\n'),
                              u"\u00e9\u4e2d"_s};
    const QString rtfs[] = {
        u"{\\rtf1 plain}"_s,
        u"{\\rtf1{\\colortbl;\\red255\\green0\\blue0;}\\b bold\\b0\\cf1 red\\par\\qc middle\\par}"_s,
        u"{\\rtf1{\\pntext\\'b7\\tab}{\\*\\pn\\pnlvlblt{\\pntxtb\\bullet}}\\fi-300\\li300 item\\par\\pard last}"_s};
    const qsizetype length = box.Text().size();
    box.SetSelStart(dice.Roll(length + 1));
    box.SetSelLength(dice.OneIn(3) ? 0 : dice.Roll(std::min<qsizetype>(length, 12) + 1));
    switch (dice.Roll(12)) {
    case 0:
    case 1:
    case 2:
        box.SetSelText(dice.PickOf(pieces));
        break;
    case 3:
        box.SetSelRTF(dice.PickOf(rtfs));
        break;
    case 4:
        box.SetSelBold(dice.OneIn(2));
        break;
    case 5:
        box.SetSelColor(quint32(dice.Roll(3)) * 0x7f);
        break;
    case 6:
        box.SetSelBullet(dice.OneIn(2));
        break;
    case 7:
        box.SetSelAlignment(TextAlignment(dice.Roll(4)));
        break;
    case 8:
        box.SetSelIndent(dice.Roll(3) * 200);
        break;
    case 9:
        box.SetSelProtected(dice.OneIn(4));
        break;
    case 10:
        box.SetSelFontSize(8 + dice.Roll(4));
        box.SetSelText(u"sized"_s);
        break;
    default:
        box.SetSelItalic(true);
        box.SetSelFontName(dice.OneIn(2) ? u"Arial"_s : u"Courier New"_s);
    }
}

/// A box with "one [two] three", where what stands in brackets is protected.
void FillWithProtected(RichTextBox& box)
{
    box.SetText(u"one [two] three"_s);
    box.SetSelStart(4);
    box.SetSelLength(5);
    box.SetSelProtected(true);
    box.document()->clearUndoRedoStacks();
}

/// Opens what only the toolkit calls.
class Opened : public RichTextBox {
public:
    using RichTextBox::insertFromMimeData;
};

void Select(RichTextBox& box, qsizetype start, qsizetype length)
{
    box.SetSelStart(start);
    box.SetSelLength(length);
}

void Drop(RichTextBox& box, const QMimeData& data, const QPointF& place)
{
    QDragEnterEvent enter(place.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(box.viewport(), &enter);
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(box.viewport(), &event);
}

QImage RedImage()
{
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

QByteArray RedPng()
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    RedImage().save(&buffer, "PNG");
    return bytes;
}

QMimeData* Mime(const char* type, const QByteArray& bytes)
{
    auto* mime = new QMimeData;
    mime->setData(QLatin1StringView(type), bytes);
    return mime;
}

} // namespace

class TestRichTextBox : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        QGuiApplication::clipboard()->clear();
    }

    void box_doesWhatEveryBoxDoes_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<bool>("forCode");
        for (const bool forCode : {false, true}) {
            int number = 0;
            for (const RichTextBoxSuite::Check& check : RichTextBoxSuite::Checks())
                QTest::addRow("%s, %s", check.Name, forCode ? "code" : "rich") << number++ << forCode;
        }
    }

    void box_doesWhatEveryBoxDoes()
    {
        QFETCH(int, number);
        QFETCH(bool, forCode);
        const std::unique_ptr<UserTextBox> box = MakeBox(forCode);
        RichTextBoxSuite::Checks()[size_t(number)].Run(*box);
        QCOMPARE(ShownDifference(*box), QByteArray());
    }

    void addresses_areUnderlinedAndClickedWhereTheyAreDetected()
    {
        RichTextBox box;
        box.resize(400, 100);
        box.SetText(u"see http://example.org/ here"_s);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QTextCursor cursor(box.document());
        cursor.setPosition(10);
        const QPoint place = box.cursorRect(cursor).center() + QPoint(2, 0);
        const QSignalSpy clicked(&box, &RichTextBox::AddressClicked);
        const auto look = [&box] { return box.viewport()->grab().toImage(); };
        box.setCursorWidth(0); // which comes and goes
        const QImage plain = look();
        box.SetAutoURLDetect(true);
        QVERIFY(look() != plain);
        box.SetAutoURLDetect(false);
        QCOMPARE(look(), plain);
        QTest::mouseClick(box.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(clicked.size(), 0);
        box.SetAutoURLDetect(true);
        QTest::mouseClick(box.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(clicked.size(), 1);
        QTest::mouseClick(box.viewport(), Qt::LeftButton, Qt::ShiftModifier, place); // which selects
        QCOMPARE(clicked.size(), 1);
        box.SetAutoURLDetect(false);
        cursor.setPosition(0);
        box.setTextCursor(cursor);
        QTest::mouseClick(box.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(clicked.size(), 1);
    }

    void anyOperations_areShownAndCanBeUndone()
    {
        for (quint32 seed = 0; seed < 300; ++seed) {
            const QByteArray where = "seed " + QByteArray::number(seed) + '\n';
            Dice dice(seed);
            const std::unique_ptr<UserTextBox> made = MakeBox(seed % 2 == 1);
            UserTextBox& box = *made;
            RichText model;
            for (IRichTextBox* one : std::initializer_list<IRichTextBox*>{&box, &model})
                one->SetText(u"one two\r\nthree\r\n\r\nfour five\r\n"_s);
            const RichText start = box.Content();
            for (int i = 0; i < 25; ++i) {
                Dice same = dice;
                const QByteArray text = box.Text().toUtf8() + ' ' + QByteArray::number(box.SelStart());
                Operate(box, dice);
                Operate(model, same);
                QVERIFY2(Difference(box.Content(), model).isEmpty(),
                         where + "step " + QByteArray::number(i) + ": " + Difference(box.Content(), model));
                QVERIFY2(ShownDifference(box).isEmpty(),
                         where + "step " + QByteArray::number(i) + ": " + ShownDifference(box) + "\nbefore: " + text
                             + "\nnow: " + box.Text().toUtf8() + ' ' + QByteArray::number(box.SelStart()));
            }
            while (box.CanUndo())
                box.Undo();
            QCOMPARE(where + ShownDifference(box), where);
            QCOMPARE(where + DifferenceBetweenLineEnds(box.Content(), start), where);
            while (box.CanRedo())
                box.Redo();
            QCOMPARE(where + ShownDifference(box), where);
            QCOMPARE(where + DifferenceBetweenLineEnds(box.Content(), model), where);
        }
    }

    void keys_typeAndDelete()
    {
        RichTextBox box;
        QTest::keyClicks(&box, u"abc def"_s);
        QTest::keyClick(&box, Qt::Key_Return);
        QTest::keyClicks(&box, u"\tx"_s);
        QCOMPARE(box.Text(), u"abc def\r\n\tx"_s);
        QTest::keyClick(&box, Qt::Key_Backspace);
        QTest::keyClick(&box, Qt::Key_Backspace, Qt::ShiftModifier);
        QTest::keyClick(&box, Qt::Key_Backspace); // joins the lines
        QCOMPARE(box.Text(), u"abc def"_s);
        QTest::keyClick(&box, Qt::Key_Backspace, Qt::ControlModifier);
        QCOMPARE(box.Text(), u"abc "_s);
        QTest::keyClick(&box, Qt::Key_Home);
        QTest::keyClick(&box, Qt::Key_Delete);
        QCOMPARE(box.Text(), u"bc "_s);
        QTest::keyClick(&box, Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(box.SelText(), u"b"_s);
        QTest::keyClicks(&box, u"Z"_s);
        QCOMPARE(box.Text(), u"Zc "_s);
        QCOMPARE(box.SelStart(), 1);
        QTest::keyClick(&box, Qt::Key_K, Qt::ControlModifier); // a command is no text
        QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&box, Qt::Key_Delete);
        QCOMPARE(box.Text(), QString());
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void typedText_isUndoneByTheStretch()
    {
        RichTextBox box;
        box.SetText(u"abc"_s);
        QCOMPARE(box.CanUndo(), false);
        QTest::keyClicks(&box, u"xyz"_s);
        QCOMPARE(box.UndoName(), UndoType::Typing);
        QTest::keyClick(&box, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(box.Text(), u"abc"_s);
        QCOMPARE(box.CanUndo(), false);
        QCOMPARE(box.UndoName(), UndoType::Unknown);
        QCOMPARE(box.RedoName(), UndoType::Typing);
        QTest::keyClick(&box, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(box.Text(), u"xyzabc"_s);
    }

    void undoOfWhatTheCaretStandsBehind_leavesASoundBox()
    {
        RichTextBox box;
        QTest::keyClicks(&box, u"hello"_s);
        box.Undo();
        QCOMPARE(box.SelStart(), 0);
        QTest::keyClicks(&box, u"x"_s);
        QCOMPARE(box.Text(), u"x"_s);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void backspaceAtTheBegin_deletesNothing()
    {
        RichTextBox box;
        box.SetText(u"abc"_s);
        QTest::keyClick(&box, Qt::Key_Backspace);
        QTest::keyClick(&box, Qt::Key_Backspace, Qt::ControlModifier);
        QCOMPARE(box.Text(), u"abc"_s);
        box.SetSelStart(3);
        QTest::keyClick(&box, Qt::Key_Delete);
        QTest::keyClick(&box, Qt::Key_Delete, Qt::ControlModifier);
        QCOMPARE(box.Text(), u"abc"_s);
    }

    void combinedCharacters_goAsTheyAreSelected()
    {
        RichTextBox box;
        box.SetText(u"e\u0301xyz"_s);
        Select(box, 0, 1);
        QTest::keyClick(&box, Qt::Key_Delete);
        QCOMPARE(box.Text(), u"\u0301xyz"_s);
        QCOMPARE(ShownDifference(box), QByteArray());
        box.SetText(u"e\u0301xyz"_s);
        QTest::keyClick(&box, Qt::Key_Delete); // a whole one
        QCOMPARE(box.Text(), u"xyz"_s);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void keysThatAreNoText_changeNothing()
    {
        for (const bool isProtected : {false, true}) {
            RichTextBox box;
            box.SetText(u"abcdef"_s);
            Select(box, 0, 6);
            box.SetSelProtected(isProtected);
            Select(box, 3, 0);
            const std::pair<int, Qt::KeyboardModifiers> keys[] = {
                {Qt::Key_X, Qt::AltModifier},
                {Qt::Key_X, Qt::MetaModifier},
                {Qt::Key_1, Qt::ControlModifier | Qt::KeypadModifier}};
            for (const auto& [key, modifiers] : keys) {
                QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(QChar(key)).toLower());
                QCoreApplication::sendEvent(&box, &event);
                QCOMPARE(box.Text(), u"abcdef"_s);
                QVERIFY(!event.isAccepted()); // for who has a use for it
            }
            QKeyEvent direction(QEvent::KeyPress, Qt::Key_Direction_R, Qt::NoModifier);
            int changes = 0;
            connect(&box, &RichTextBox::textChanged, this, [&] { ++changes; });
            QCoreApplication::sendEvent(&box, &direction);
            QCOMPARE(changes, 0);
        }
    }

    void middleClick_pastesWhereItPoints()
    {
        RichTextBox box;
        box.SetText(u"one two"_s);
        Select(box, 0, 3);
        // As the toolkit does it: the caret is moved without a word.
        const QSignalBlocker silence(&box);
        QTextCursor end(box.document());
        end.movePosition(QTextCursor::End);
        box.setTextCursor(end);
        QMimeData data;
        data.setText(u"!"_s);
        QMetaObject::invokeMethod(&box, [&] { static_cast<Opened&>(box).insertFromMimeData(&data); });
        QCOMPARE(box.Text(), u"one two!"_s);
    }

    void rightClick_keepsAProtectedSelection()
    {
        RichTextBox box;
        box.resize(400, 100);
        box.show();
        FillWithProtected(box);
        box.selectAll();
        const QPointF place = box.cursorRect().center();
        QMouseEvent press(QEvent::MouseButtonPress, place, box.viewport()->mapToGlobal(place), Qt::RightButton,
                          Qt::RightButton, Qt::NoModifier);
        QCoreApplication::sendEvent(box.viewport(), &press);
        QCOMPARE(box.SelLength(), 15);
    }

    void lookTypedBesideProtectedText_isNotProtected()
    {
        RichTextBox box;
        FillWithProtected(box);
        box.SetSelStart(9);
        box.SetSelBold(true);
        QTest::keyClicks(&box, u"x"_s);
        Select(box, 9, 1);
        QCOMPARE(box.SelBold(), std::optional(true));
        QCOMPARE(box.SelProtected(), std::optional(false));
    }

    void changesInOneStep_areUndoneAtOnce()
    {
        RichTextBox box;
        box.SetText(u"one two"_s);
        const RichText before = box.Content();
        box.InOneStep([&] {
            Select(box, 0, 3);
            box.SetSelBold(true);
            Select(box, 7, 0);
            box.SetSelText(u"\r\nthree"_s);
            Select(box, 9, 5);
            box.SetSelProtected(true);
        });
        QCOMPARE(ShownDifference(box), QByteArray());
        QCOMPARE(box.UndoName(), UndoType::Unknown);
        box.Undo();
        QCOMPARE(Difference(box.Content(), before), QByteArray());
        QVERIFY(!box.CanUndo());
        box.Redo();
        QCOMPARE(box.Text(), u"one two\r\nthree"_s);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void looks_areNoChangeOfTheText()
    {
        RichTextBox box;
        box.SetText(u"text"_s);
        int changes = 0;
        connect(&box, &RichTextBox::textChanged, this, [&] { ++changes; });
        box.SetZoom(2);
        box.MarkPlaces({0}, 2);
        box.SetLocked(true);
        QPalette dark = box.palette();
        dark.setColor(QPalette::Base, Qt::black);
        box.setPalette(dark);
        box.show();
        QCOMPARE(changes, 0);
    }

    void steps_haveTheirNames()
    {
        RichTextBox box;
        QTest::keyClicks(&box, u"words to work on"_s);
        box.selectAll();
        box.SetSelLength(5);
        box.Copy();
        QTest::keyClick(&box, Qt::Key_End);
        box.Paste();
        QCOMPARE(box.Text(), u"words to work onwords"_s);
        QCOMPARE(box.UndoName(), UndoType::Paste);
        Select(box, 0, 6);
        box.Cut();
        QCOMPARE(box.UndoName(), UndoType::Cut);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"words "_s);
        QTest::keyClick(&box, Qt::Key_Delete);
        QCOMPARE(box.UndoName(), UndoType::Delete);
        QMimeData data;
        data.setText(u"dropped"_s);
        Drop(box, data, QPointF(1, 1));
        QCOMPARE(box.Text(), u"droppedo work onwords"_s);
        QCOMPARE(box.UndoName(), UndoType::DragDrop);
        box.SetSelStart(0);
        box.SetSelLength(3);
        box.SetSelBold(true);
        QCOMPARE(box.UndoName(), UndoType::Unknown);
        const UndoType names[] = {UndoType::DragDrop, UndoType::Delete, UndoType::Cut, UndoType::Paste,
                                  UndoType::Typing};
        for (const UndoType name : names) {
            box.Undo();
            QCOMPARE(box.UndoName(), name);
        }
        QCOMPARE(box.RedoName(), UndoType::Paste);
        box.Undo();
        QCOMPARE(box.Text(), QString());
        box.Redo();
        QTest::keyClicks(&box, u"!"_s); // nothing is left to be redone
        QCOMPARE(box.RedoName(), UndoType::Unknown);
        QCOMPARE(box.CanRedo(), false);
    }

    void protectedText_refusesTheUser_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("key");
        QTest::newRow("typing within") << 6 << 0 << int(Qt::Key_X);
        QTest::newRow("typing over") << 2 << 4 << int(Qt::Key_X);
        QTest::newRow("Enter within") << 6 << 0 << int(Qt::Key_Return);
        QTest::newRow("Tab within") << 6 << 0 << int(Qt::Key_Tab);
        QTest::newRow("Delete before") << 4 << 0 << int(Qt::Key_Delete);
        QTest::newRow("Delete within") << 5 << 0 << int(Qt::Key_Delete);
        QTest::newRow("Backspace behind") << 9 << 0 << int(Qt::Key_Backspace);
        QTest::newRow("Backspace on a part") << 8 << 3 << int(Qt::Key_Backspace);
        QTest::newRow("all deleted") << 0 << 15 << int(Qt::Key_Delete);
    }

    void protectedText_refusesTheUser()
    {
        QFETCH(int, start);
        QFETCH(int, length);
        QFETCH(int, key);
        RichTextBox box;
        FillWithProtected(box);
        Select(box, start, length);
        QTest::keyClick(&box, Qt::Key(key));
        QCOMPARE(box.Text(), u"one [two] three"_s);
        QCOMPARE(box.CanUndo(), false);
        QCOMPARE(box.SelStart(), start);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void protectedText_refusesWhatDeletesByWordOrLine()
    {
        RichTextBox box;
        FillWithProtected(box);
        box.SetSelStart(4);
        QTest::keyClick(&box, Qt::Key_Delete, Qt::ControlModifier);
        box.SetSelStart(9);
        QTest::keyClick(&box, Qt::Key_Backspace, Qt::ControlModifier);
        QCOMPARE(box.Text(), u"one [two] three"_s);
        box.SetSelStart(10);
        QTest::keyClick(&box, Qt::Key_Delete, Qt::ControlModifier);
        QCOMPARE(box.Text(), u"one [two] "_s);
    }

    void protectedText_refusesClipboardDropAndInputMethod()
    {
        RichTextBox box;
        box.resize(400, 100);
        box.show();
        FillWithProtected(box);
        QGuiApplication::clipboard()->setText(u"pasted"_s);
        box.SetSelStart(6);
        box.Paste();
        box.PastePlainText();
        QInputMethodEvent commit;
        commit.setCommitString(u"typed"_s);
        QCoreApplication::sendEvent(&box, &commit);
        QCoreApplication::sendEvent(
            &box, std::make_unique<QInputMethodEvent>(u"pre"_s, QList<QInputMethodEvent::Attribute>()).get());
        QMimeData data;
        data.setText(u"dropped"_s);
        Drop(box, data, box.cursorRect().center());
        Select(box, 2, 5);
        box.Cut();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"pasted"_s); // nothing was cut, so nothing copied
        box.Clear();
        QCOMPARE(box.Text(), u"one [two] three"_s);
        QCOMPARE(box.toPlainText(), u"one [two] three"_s);
        QCOMPARE(box.CanUndo(), false);
        box.SetSelProtected(false); // lifted
        box.Clear();
        QCOMPARE(box.Text(), u"ono] three"_s);
    }

    void typingBesideProtectedText_isFree()
    {
        RichTextBox box;
        FillWithProtected(box);
        box.SetSelStart(9);
        QTest::keyClicks(&box, u"xy"_s);
        box.SetSelStart(4);
        QTest::keyClicks(&box, u"ab"_s);
        QCOMPARE(box.Text(), u"one ab[two]xy three"_s);
        Select(box, 11, 2);
        QCOMPARE(box.SelProtected(), std::optional(false));
        Select(box, 4, 2);
        QCOMPARE(box.SelProtected(), std::optional(false));
    }

    void inputMethod_composesAndCommits()
    {
        RichTextBox box;
        box.SetText(u"one two"_s);
        Select(box, 4, 3);
        QInputMethodEvent composing(u"nih"_s, {});
        QCoreApplication::sendEvent(&box, &composing);
        QCOMPARE(box.Text(), u"one "_s);
        QInputMethodEvent commit;
        commit.setCommitString(u"\u4f60"_s);
        QCoreApplication::sendEvent(&box, &commit);
        QCOMPARE(box.Text(), u"one \u4f60"_s);
        QInputMethodEvent replacing;
        replacing.setCommitString(u"b"_s, -1, 1);
        QCoreApplication::sendEvent(&box, &replacing);
        QCOMPARE(box.Text(), u"one b"_s);
        QCOMPARE(box.UndoName(), UndoType::Typing);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void lockedBox_isReadOnlyForTheUser()
    {
        RichTextBox box;
        box.SetLocked(true);
        box.SetText(u"abc"_s);
        QGuiApplication::clipboard()->setText(u"pasted"_s);
        QTest::keyClicks(&box, u"x"_s);
        QTest::keyClick(&box, Qt::Key_Delete);
        box.Paste();
        box.selectAll();
        box.Cut();
        box.Clear();
        QInputMethodEvent commit;
        commit.setCommitString(u"typed"_s);
        QCoreApplication::sendEvent(&box, &commit);
        QCOMPARE(box.Text(), u"abc"_s);
        QTest::keyClick(&box, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"abc"_s);
        QVERIFY(box.SetSelText(u"by code"_s));
        QCOMPARE(box.CanUndo(), false); // not by the user
        box.SetLocked(false);
        QTest::keyClicks(&box, u"!"_s);
        QCOMPARE(box.Text(), u"by code!"_s);
    }

    void copy_offersRtfHtmlAndText()
    {
        RichTextBox box;
        box.SetText(u"one\r\nbold"_s);
        Select(box, 5, 4);
        box.SetSelBold(true);
        box.selectAll();
        box.Copy();
        const QMimeData* mime = QGuiApplication::clipboard()->mimeData();
        QCOMPARE(mime->text(), u"one\nbold"_s);
        QVERIFY(mime->html().contains(u"bold"_s));
        RichTextBox other;
        other.Paste();
        QCOMPARE(other.Text(), box.Text());
        Select(other, 5, 4);
        QCOMPARE(other.SelBold(), std::optional(true));
        QCOMPARE(ShownDifference(other), QByteArray());
    }

    void paste_takesTheBestThatIsOffered()
    {
        RichTextBox box;
        auto* rtf = Mime("text/rtf", "{\\rtf1\\b bold}");
        rtf->setText(u"plain"_s);
        rtf->setHtml(u"<i>html</i>"_s);
        QGuiApplication::clipboard()->setMimeData(rtf);
        box.Paste();
        QCOMPARE(box.Text(), u"bold"_s);
        box.PastePlainText();
        QCOMPARE(box.Text(), u"boldplain"_s);
        auto* html = new QMimeData;
        html->setHtml(u"<p>a <b>b</b> <span style='color:#ff0000'>c</span></p><ul><li>item</li></ul>"_s);
        html->setText(u"text"_s);
        QGuiApplication::clipboard()->setMimeData(html);
        box.SetText({});
        box.Paste();
        QCOMPARE(box.Text(), u"a b c\r\nitem\r\n"_s);
        Select(box, 2, 1);
        QCOMPARE(box.SelBold(), std::optional(true));
        Select(box, 4, 1);
        QCOMPARE(box.SelColor(), std::optional(quint32(0x0000ff)));
        box.SetText({});
        box.SetTakesForeignLooks(false); // as a box for code
        box.Paste();
        QCOMPARE(box.Text(), u"text"_s);
    }

    void html_isReadWithItsLooks()
    {
        const RichTextDocument text = RichTextFromHtml(
            u"<h3 align=center>Title</h3><p>a<br>b</p><p>see <a href='https://example.org/x'>there</a>, <u>under</u> "
            "<s>out</s> "
            "<span style='font-family:Arial; font-size:14pt; background-color:#ffff00'>marked</span></p>"
            "<ol><li>first</li><li>second</li></ol><p><img src='file:///etc/hostname'>"
            "<img src='data:image/png;base64,"_s
            + QString::fromLatin1(RedPng().toBase64()) + u"'>"_s);
        QCOMPARE(text.Text(), u"Title\r\na\r\nb\r\nsee there, under out marked\r\nfirst\r\nsecond\r\n\ufffc"_s);
        QCOMPARE(text.ParagraphAt(0).Alignment, TextAlignment::Center);
        QCOMPARE(text.FormatAt(0).Bold, 1);
        QCOMPARE(text.Link(text.FormatAt(17).Link), u"https://example.org/x"_s);
        QCOMPARE(text.FormatAt(25).Underline, 1);
        QCOMPARE(text.FormatAt(30).Strike, 1);
        const CharFormat marked = text.FormatAt(35);
        QCOMPARE(text.Font(marked.Font).Name, u"Arial"_s);
        QCOMPARE(marked.HalfPoints, 28);
        QCOMPARE(marked.BackColor, 0x00ffffu);
        QCOMPARE(text.ParagraphAt(text.Text().indexOf(u"first"_s)).List, ListKind::Decimal);
        QVERIFY(text.FormatAt(text.Length() - 1).Picture != 0);
    }

    void picture_isPastedAndShown()
    {
        RichTextBox box;
        QGuiApplication::clipboard()->setImage(RedImage());
        QCOMPARE(box.CanPaste(), true);
        box.Paste();
        QCOMPARE(box.Text(), QString(QChar(RichTextDocument::PictureCharacter)));
        QVERIFY(box.TextRTF().contains(u"pngblip"_s));
        box.SetTextRTF(box.TextRTF());
        box.resize(200, 100);
        QCOMPARE(box.grab().toImage().pixelColor(15, 14), QColor(Qt::red));
    }

    void list_isContinuedAndEndedByEnter()
    {
        RichTextBox box;
        box.SetBulletIndent(300);
        box.SetSelBullet(true);
        QTest::keyClicks(&box, u"one"_s);
        QTest::keyClick(&box, Qt::Key_Return);
        QCOMPARE(box.SelBullet(), std::optional(true));
        QTest::keyClick(&box, Qt::Key_Return); // on the empty item
        QCOMPARE(box.Text(), u"one\r\n"_s);
        QCOMPARE(box.SelBullet(), std::optional(false));
        QCOMPARE(box.SelIndent(), std::optional(0));
        box.SetSelStart(0);
        QTest::keyClick(&box, Qt::Key_Backspace);
        QCOMPARE(box.SelBullet(), std::optional(false));
        QCOMPARE(box.Text(), u"one\r\n"_s);
        box.Undo();
        box.SetSelStart(0);
        QCOMPARE(box.SelBullet(), std::optional(true));
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void drop_comesInWithItsLook()
    {
        RichTextBox box;
        box.resize(400, 100);
        box.show();
        box.SetText(u"one two three"_s);
        Select(box, 0, 4);
        box.SetSelBold(true);
        Select(box, 13, 0);
        const QPointF end = box.cursorRect().center();
        Select(box, 0, 4);
        std::unique_ptr<QMimeData> data = MimeOfRichText(box.Content().Document().Part(0, 4));
        Drop(box, *data, end);
        QCOMPARE(box.Text(), u"one two threeone "_s);
        Select(box, 13, 3);
        QCOMPARE(box.SelBold(), std::optional(true));
        box.Undo();
        QCOMPARE(box.Text(), u"one two three"_s);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void repainting_keepsCaretAndCanBeUndone()
    {
        RichTextBox box;
        box.SetText(u"dim x\r\nrem y\r\nend"_s);
        QTest::keyClicks(&box, u" "_s);
        Select(box, 8, 2);
        RichText painted = box.Content();
        painted.SetSelStart(1);
        painted.SetSelLength(3);
        painted.SetSelText(u"Dim"_s);
        painted.SetSelStart(8);
        painted.SetSelLength(5);
        painted.SetSelColor(0x8000);
        const RichText before = box.Content();
        box.SetRepainted(painted);
        QCOMPARE(box.SelStart(), 8);
        QCOMPARE(box.SelLength(), 2);
        QCOMPARE(Difference(box.Content(), painted), QByteArray());
        QCOMPARE(ShownDifference(box), QByteArray());
        box.Undo();
        QCOMPARE(Difference(box.Content(), before), QByteArray());
        QCOMPARE(ShownDifference(box), QByteArray());
        QCOMPARE(box.UndoName(), UndoType::Typing);
    }

    void boxThatIsNotSeen_isLoadedWhenItIs()
    {
        QWidget window;
        auto* box = new CodeBox(CodeFont, &window);
        int changes = 0;
        connect(box, &CodeBox::textChanged, this, [&] { ++changes; });
        box->SetTextRTF(u"{\\rtf1\\b bold}"_s);
        QCOMPARE(changes, 1);
        QVERIFY(box->document()->isEmpty());
        QCOMPARE(box->Text(), u"bold"_s);
        QVERIFY(!box->CanUndo());
        RichText painted = box->Content();
        painted.SetSelLength(2);
        painted.SetSelColor(0xff);
        box->SetRepainted(painted);
        QVERIFY(box->document()->isEmpty());
        window.show();
        QCOMPARE(box->toPlainText(), u"bold"_s);
        QCOMPARE(ShownDifference(*box), QByteArray());
        window.hide();
        box->SetText(u"other"_s);
        box->SetSelStart(2); // whoever works on it sees it whole
        QCOMPARE(box->toPlainText(), u"other"_s);
        box->SetText(u"third"_s);
        QVERIFY(box->SetSelText(u"x"_s));
        QCOMPARE(box->toPlainText(), u"xthird"_s);
    }

    void colouring_isShownToTheEndOfEachLine()
    {
        CTextFormat format;
        format.SetLanguage(BuiltInLanguage(LanguageType::VB));
        RichTextBox box;
        const QString text =
            u"' a comment\r\nprivate function f(byval x as long) as double\r\n\r\n    dim y as string\r\nrem "
            "Z\r\nend function"_s;
        box.SetText(text);
        RichText painted = box.Content();
        format.ColorizeCode(painted);
        box.SetRepainted(painted);
        QCOMPARE(ShownDifference(box), QByteArray());
        QCOMPARE(Difference(box.Content(), painted), QByteArray());
        box.Undo();
        QCOMPARE(box.Text(), text);
        QCOMPARE(ShownDifference(box), QByteArray());
    }

    void undoAfterCode_bringsProtectedTextBack()
    {
        RichTextBox box;
        FillWithProtected(box);
        const RichText before = box.Content();
        Select(box, 4, 5);
        box.SetSelProtected(false);
        box.SetSelText({});
        box.Undo();
        box.Undo();
        QCOMPARE(Difference(box.Content(), before), QByteArray());
        Select(box, 4, 5);
        QCOMPARE(box.SelProtected(), std::optional(true));
    }

    void characters_thatEndBlocks_keepTheTextTogether()
    {
        RichTextBox box;
        const QString text = u"a\u2029b\ufdd0c\u2028d"_s + QChar(u'\0') + u"e"_s;
        box.SetText(text);
        QCOMPARE(box.document()->blockCount(), 1);
        QCOMPARE(box.Text(), text);
        box.SetSelStart(1);
        QTest::keyClicks(&box, u"x"_s);
        QCOMPARE(box.Text(), QString(text).insert(1, u'x'));
        box.SetText(text);
        Select(box, 1, text.size() - 1);
        box.SetSelBold(true);
        box.Clear();
        QCOMPARE(box.Text(), u"a"_s);
        box.Undo();
        QCOMPARE(box.Text(), text); // each is what it was
        box.SetSelText(text);
        box.Undo();
        box.Redo();
        QVERIFY(box.Text().contains(text));
    }

    void colours_areReadableOnAnyBackground()
    {
        const QColor white(Qt::white);
        const QColor dark(0x20, 0x22, 0x24);
        QCOMPARE(RichTextLook::ColorOn(white, 0x800000), QColor(0, 0, 0x80)); // as it is
        QCOMPARE(RichTextLook::ColorOn(dark, 0x00ffff), QColor(0xff, 0xff, 0));
        QCOMPARE(RichTextLook::ColorOn(dark, 0), white);
        for (const quint32 color : {0x800000u, 0x008000u, 0x0000ffu, 0xff0000u, 0x808080u, 0x202020u})
            QVERIFY(RichTextLook::ColorOn(dark, color).lightness() > 126);
        QCOMPARE(RichTextLook::ColorOn(white, 0x00ffff), QColor(0xff, 0xff, 0)); // chosen by someone
    }

    void palette_changesTheLookAndNotTheText()
    {
        RichTextBox box;
        box.SetTextRTF(u"{\\rtf1{\\colortbl;\\red0\\green0\\blue128;}\\cf1 navy}"_s);
        const QString rtf = box.TextRTF();
        QPalette dark = box.palette();
        dark.setColor(QPalette::Base, QColor(0x20, 0x22, 0x24));
        dark.setColor(QPalette::Text, Qt::white);
        box.setPalette(dark);
        QCOMPARE(box.TextRTF(), rtf);
        const QColor shown = box.document()->begin().begin().fragment().charFormat().foreground().color();
        QVERIFY(shown.lightness() > 100);
    }

    void link_isActivatedWithControl()
    {
        RichTextBox box;
        box.resize(400, 100);
        box.show();
        box.SetTextRTF(u"{\\rtf1 {\\field{\\*\\fldinst{HYPERLINK \"https://example.org\"}}{\\fldrslt link}}}"_s);
        QSignalSpy activated(&box, &RichTextBox::LinkActivated);
        box.SetSelStart(2);
        const QPoint place = box.cursorRect().center();
        QTest::mouseClick(box.viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(activated.count(), 0);
        QTest::mouseClick(box.viewport(), Qt::LeftButton, Qt::ControlModifier, place);
        QCOMPARE(activated.count(), 1);
        QCOMPARE(activated.front().front().toString(), u"https://example.org"_s);
    }

    void link_showsWhereItLeadsBeforeItIsOpened()
    {
        RichTextBox box;
        box.resize(400, 100);
        box.show();
        box.SetTextRTF(u"{\\rtf1 {\\field{\\*\\fldinst{HYPERLINK \"https://evil.example/<b>\"}}"
                       "{\\fldrslt https://bank.example}} text}"_s);
        const auto hover = [&box](int position) {
            box.SetSelStart(position);
            const QPoint place = box.cursorRect().center();
            QHelpEvent help(QEvent::ToolTip, place, box.viewport()->mapToGlobal(place));
            QCoreApplication::sendEvent(box.viewport(), &help);
            return QToolTip::isVisible() ? QToolTip::text() : QString();
        };
        QCOMPARE(hover(2), u"<span>https://evil.example/&lt;b&gt;</span>"_s);
        hover(int(box.Text().size()) - 1);
        QTRY_VERIFY(!QToolTip::isVisible());
    }

    void contextMenu_offersWhatCanBeDone()
    {
        RichTextBox box;
        box.SetText(u"abc"_s);
        box.selectAll();
        QTimer::singleShot(0, &box, [] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            QVERIFY(menu);
            QCOMPARE(menu->findChild<QAction*>(u"mnuUndo"_s)->isEnabled(), false);
            QCOMPARE(menu->findChild<QAction*>(u"mnuPaste"_s)->isEnabled(), false);
            menu->findChild<QAction*>(u"mnuCut"_s)->trigger();
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(5, 5));
        QCoreApplication::sendEvent(box.viewport(), &event);
        QCOMPARE(box.Text(), QString());
        QCOMPARE(box.UndoName(), UndoType::Cut);
    }
};

QB_GUI_TEST_MAIN(TestRichTextBox)
#include "tst_richtextbox.moc"
