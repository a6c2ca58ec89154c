#include "support/EditingWindow.h"
#include "web/ui/LocalPage.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QToolButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray RedPng()
{
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

/// How texts are seen and found in, the welcome page, and what survives the end of the program.
class TestTextView : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    // The welcome page

    void welcomePage_isTheUsersOwn()
    {
        Open();
        auto* page = m_window->findChild<LocalPage*>(u"webWelcome"_s);
        QVERIFY(page->toPlainText().contains(u"Keep something"_s));
        const QString folder = m_home->Path(u"data/QBLib_HTML"_s) + u'/';
        QVERIFY(QFileInfo::exists(folder + u"default2.htm"_s));
        WriteFile(m_home->Path(u"data/secret.png"_s), RedPng());
        WriteFile(folder + u"mine.png"_s, RedPng());
        WriteFile(folder + u"default.htm"_s,
                  "<p>my page</p><img src='mine.png'><img src='../secret.png'><img src='file:///etc/hostname'>"
                  "<a href='https://example.org'>out</a><script>document.write('script')</script>");
        ClickOn(0);
        Tree()->setCurrentIndex(Root());
        QVERIFY(page->toPlainText().startsWith(u"my page"_s));
        QVERIFY(!page->toPlainText().contains(u"script"_s));
        const auto isLoaded = [page](const char* name) {
            const QVariant loaded = page->document()->resource(QTextDocument::ImageResource,
                                                               QUrl(QLatin1StringView(name)));
            return !loaded.toByteArray().isEmpty() || !loaded.value<QPixmap>().isNull()
                   || !loaded.value<QImage>().isNull();
        };
        QVERIFY(isLoaded("mine.png"));
        for (const char* name : {"../secret.png", "file:///etc/hostname", "/etc/hostname", "https://example.org/x.png",
                                 "sub/../../secret.png"})
            QVERIFY2(!isLoaded(name), name);
        disconnect(page, &LocalPage::AddressActivated, nullptr, nullptr); // nothing is to be opened
        QSignalSpy activated(page, &LocalPage::AddressActivated);
        Q_EMIT page->anchorClicked(QUrl(u"https://example.org"_s));
        Q_EMIT page->anchorClicked(QUrl(u"file:///etc/passwd"_s));
        QCOMPARE(activated.count(), 1);
    }

    // Finding and looks

    void findBar_goesFromPlaceToPlace()
    {
        Write(u"Code"_s, RtfFromPlainText(u"one two\r\nOne onetwo\r\n"_s, CodeFont));
        Open();
        ClickOn(0);
        Action(u"mnuFindInText"_s)->trigger();
        auto* line = m_window->findChild<QLineEdit*>(u"txtFindText"_s);
        auto* count = m_window->findChild<QLabel*>(u"lblFound"_s);
        QVERIFY(line->isVisible());
        line->setText(u"one"_s);
        QCOMPARE(count->text(), u"3 places"_s);
        QCOMPARE(Code()->extraSelections().size(), 3);
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(Code()->SelStart(), 0);
        QCOMPARE(count->text(), u"1 of 3"_s);
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(Code()->SelStart(), 9);
        QTest::keyClick(line, Qt::Key_Return, Qt::ShiftModifier);
        Action(u"mnuFindPrevious"_s)->trigger();
        QCOMPARE(Code()->SelStart(), 13); // around the begin
        QCOMPARE(count->text(), u"3 of 3"_s);
        Action(u"mnuFindNext"_s)->trigger();
        QCOMPARE(Code()->SelStart(), 0); // and around the end
        m_window->findChild<QToolButton*>(u"chkMatchCase"_s)->click();
        QCOMPARE(count->text(), u"2 places"_s);
        m_window->findChild<QToolButton*>(u"chkWholeWord"_s)->click();
        QCOMPARE(count->text(), u"1 place"_s);
        TakePicture(*m_window, u"find"_s);
        line->setText(u"nowhere"_s);
        QCOMPARE(count->text(), u"Not found"_s);
        QTest::keyClick(line, Qt::Key_Escape);
        QVERIFY(!line->isVisible());
        QVERIFY(Code()->extraSelections().isEmpty());
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"one two\r\nOne onetwo\r\n"_s); // looking changes nothing
    }

    void line_isGoneToByItsNumber()
    {
        Write(u"Code"_s, RtfFromPlainText(QString(u"x\r\n"_s).repeated(500), CodeFont));
        Open();
        ClickOn(0);
        m_prompts->ExpectInputBox(u"Go to Line"_s, u"300"_s);
        Action(u"mnuGoToLine"_s)->trigger();
        QCOMPARE(Code()->LineOfCaret(), 300);
        QCOMPARE(m_prompts->InputTexts.last(), u"Line (1 to 501):"_s);
        for (const auto& answer : {std::optional(u"9999"_s), std::optional(u"x"_s), std::optional<QString>()}) {
            m_prompts->ExpectInputBox(u"Go to Line"_s, answer);
            Action(u"mnuGoToLine"_s)->trigger();
            QCOMPARE(Code()->LineOfCaret(), 501);
        }
        TakePicture(*m_window, u"line-numbers"_s);
    }

    void looksOfTexts_areKept()
    {
        Write(u"Code"_s, RtfFromPlainText(u"some code"_s, CodeFont));
        Open();
        ClickOn(0);
        QVERIFY(Code()->LineNumbers());
        const int height = Code()->cursorRect().height();
        for (int i = 0; i < 5; ++i)
            Action(u"mnuViewZoomIn"_s)->trigger();
        QVERIFY(Code()->cursorRect().height() > height * 13 / 10);
        QCOMPARE(Code()->SelFontSize(), std::optional(10.0)); // the text has its own size still
        TakePicture(*m_window, u"zoomed"_s);
        Action(u"mnuViewLineNumbers"_s)->trigger();
        Action(u"mnuViewWordWrap"_s)->trigger();
        QVERIFY(!Code()->LineNumbers());
        QVERIFY(m_window->close());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"some code"_s);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"ViewZoom"_s), u"150"_s);
        Open();
        ClickOn(0);
        QVERIFY(!Code()->LineNumbers());
        QCOMPARE(Code()->lineWrapMode(), QPlainTextEdit::WidgetWidth);
        QVERIFY(Code()->cursorRect().height() > height * 13 / 10);
        Action(u"mnuViewZoomReset"_s)->trigger();
        QCOMPARE(Code()->cursorRect().height(), height);
    }

    // Recovery after a crash

    void unsavedText_isOfferedAtTheNextStart_data()
    {
        QTest::addColumn<bool>("wanted");
        QTest::newRow("wanted") << true;
        QTest::newRow("unwanted") << false;
    }

    void unsavedText_isOfferedAtTheNextStart()
    {
        QFETCH(bool, wanted);
        Write(u"Notes"_s, RtfFromPlainText(u"noted"_s, {u"Verdana"_s, 10}));
        TypeAndDie(u"precious"_s);
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, wanted ? MsgBoxResult::Yes : MsgBoxResult::No);
        Open();
        QVERIFY(m_prompts->Messages.last().Text.contains(u"'item'"_s));
        if (wanted) {
            QCOMPARE(Tree()->currentIndex(), Child(0));
            QCOMPARE(Code()->Text(), u"precious"_s);
            QCOMPARE(Notes()->Text(), u"noted"_s);
            ClickOn(1);
        }
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), wanted ? u"precious"_s : QString());
        QVERIFY(UnsavedFiles().isEmpty());
        Open(); // and is not offered again
    }

    void unsavedText_ofAnItemThatWasChangedSince_isOfferedWithAWord()
    {
        TypeAndDie(u"precious"_s);
        m_database->Execute(u"UPDATE Items SET LastChanged = LastChanged + 1 WHERE ID = ?"_s, {m_item});
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
        Open();
        QVERIFY(m_prompts->Messages.last().Text.contains(u"changed by another program since"_s));
        QCOMPARE(Code()->Text(), u"precious"_s);
        ClickOn(1);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"precious"_s);
        QVERIFY(UnsavedFiles().isEmpty());
    }

    void unsavedText_ofAnItemThatIsGone_isKeptInAFile()
    {
        TypeAndDie(u"precious"_s);
        m_database->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_item});
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s);
        Open();
        QCOMPARE(UnsavedFiles().size(), 1);
        QVERIFY(ReadFile(m_home->Path(u"data/"_s + UnsavedFiles().first())).contains("precious"));
        Open(); // and is not spoken of again
    }

    /// Escape is no answer.
    void unsavedText_thatNobodyDeclined_isOfferedAgain()
    {
        TypeAndDie(u"precious"_s);
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Cancel);
        Open();
        QCOMPARE(UnsavedFiles().size(), 1);
        ClickOn(1);
        QTest::keyClicks(Code(), u"other"_s); // has a file of its own
        QTRY_COMPARE(UnsavedFiles().size(), 2);
        ClickOn(0);
        QCOMPARE(UnsavedFiles().size(), 1);
        QVERIFY(m_window->close());
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
        Open();
        QCOMPARE(Code()->Text(), u"precious"_s);
        ClickOn(1);
        QVERIFY(UnsavedFiles().isEmpty());
    }

    /// Notes may come from strangers.
    void linkOfNotes_thatIsNoPageOfTheWeb_isRefusedOrAskedFor()
    {
        Open();
        ClickOn(0);
        m_prompts->ExpectMsgBox(u"KT Quillbase"_s);
        Q_EMIT Notes()->LinkActivated(u"--version"_s);
        QVERIFY(m_prompts->Messages.last().Text.contains(u"is not opened"_s));
        m_prompts->ExpectMsgBox(u"Open Link"_s, MsgBoxResult::No);
        Q_EMIT Notes()->LinkActivated(u"smb://host/share"_s);
        QVERIFY(m_prompts->Messages.last().Text.contains(u"smb://host/share"_s));
    }

    void textAtTermination_isWrittenAtOnce()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"x"_s);
        QVERIFY(UnsavedFiles().isEmpty());
        m_window->KeepUnsavedTexts();
        QCOMPARE(UnsavedFiles().size(), 1);
        Action(u"mnuSaveItem"_s)->trigger();
    }

    void oneLetter_isWrittenWithinHalfASecond()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"x"_s);
        QTRY_COMPARE_WITH_TIMEOUT(UnsavedFiles().size(), 1, 1500);
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QCOMPARE(QFile::permissions(m_home->Path(u"data/"_s + UnsavedFiles().first())) & others, QFile::Permissions());
        Action(u"mnuSaveItem"_s)->trigger();
    }

    void recoveredText_hasItsSections()
    {
        Open();
        ClickOn(0);
        CodeButton(u"BAS_MODULE"_s)->trigger();
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        m_window.reset();
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
        Open();
        QCOMPARE(CodeButton(u"BAS_MODULE"_s)->property("Tag").toString(), u"GOTO"_s);
        ClickOn(1);
        QCOMPARE(Read(u"CodeHeaders"_s), u"4"_s);
    }

    void savedOrDroppedText_leavesNothingToOffer()
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), u"text"_s);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        Action(u"mnuSaveItem"_s)->trigger();
        QVERIFY(UnsavedFiles().isEmpty());
        QTest::keyClicks(Code(), u"more"_s);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        QVERIFY(m_window->close());
        QVERIFY(UnsavedFiles().isEmpty());
    }
};

QB_GUI_TEST_MAIN(TestTextView)
#include "tst_text_view.moc"
