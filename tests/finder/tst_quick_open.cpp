#include "finder/QuickOpen.h"
#include "finder/QuickPreview.h"
#include "panels/TreeNodes.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A session that quick open works for, which writes down what was chosen.
class FakeHost : public QuickOpenHost {
public:
    Library* OpenLibrary() override { return Open; }
    TreeNodes& Nodes() override { return Tree; }
    qint64 CurrentItem() override { return Current; }
    std::vector<qint64> RecentItems() override { return Recent; }
    std::vector<QuickCommand> RunnableCommands() override { return Offered; }
    std::optional<ShownCode> CurrentCode() override { return Code; }
    std::optional<RichText> UnsavedCode(qint64 item) override
    {
        return item == Current && !Unsaved.isEmpty() ? std::optional(Of(Unsaved)) : std::nullopt;
    }
    void OpenItem(qint64 item, bool inTree) override
    {
        Done << u"%1 %2"_s.arg(inTree ? u"tree"_s : u"open"_s).arg(item);
    }
    void OpenPlace(qint64 item, const FindPlace& place) override
    {
        Done << u"place %1 %2 %3"_s.arg(item).arg(LetterOf(place.Field)).arg(place.Line);
    }
    void GoToLine(int line) override { Done << u"line %1"_s.arg(line); }
    void RunCommand(const QString& name) override { Done << u"run "_s + name; }

    static RichText Of(const QString& text)
    {
        RichText rich;
        rich.SetText(text);
        return rich;
    }

    Library* Open = nullptr;
    TreeNodes Tree;
    qint64 Current = 0;
    std::vector<qint64> Recent;
    std::vector<QuickCommand> Offered;
    std::optional<ShownCode> Code;
    QString Unsaved;
    QStringList Done;
};

/// What quick open lists for what is typed, what comes of a choice, and what it shows of a row.
class TestQuickOpen : public QObject {
    Q_OBJECT

private:
    qint64 Add(qint64 parent, const QString& title, const QString& code = {})
    {
        const qint64 id = AddItem(*m_library, parent, title, code);
        m_host->Tree.Insert(id, title, TreeImage::CHILD, m_host->Tree[parent]);
        return id;
    }
    /// Texts of the rows; the letters that match in brackets.
    QStringList Rows() const
    {
        QStringList texts;
        for (const QuickRow& row : m_quick->Rows()) {
            QString text;
            for (qsizetype i = 0; i < row.Text.size(); ++i) {
                const bool matches = std::find(row.Letters.begin(), row.Letters.end(), i) != row.Letters.end();
                const bool before = i > 0
                                    && std::find(row.Letters.begin(), row.Letters.end(), i - 1) != row.Letters.end();
                if (matches != before)
                    text += matches ? u'[' : u']';
                text += row.Text[i];
            }
            if (!row.Letters.empty() && row.Letters.back() == row.Text.size() - 1)
                text += u']';
            texts << text;
        }
        return texts;
    }
    QStringList Typed(const QString& text)
    {
        m_quick->SetTyped(text);
        return Rows();
    }
    /// The rows of a text once the search has ended.
    QStringList Searched(const QString& text)
    {
        m_quick->SetTyped(u'#' + text);
        [this] { QTRY_VERIFY(m_quick->Request() && m_quick->Request()->HasEnded()); }();
        return Rows();
    }
    void Delete(qint64 id) { m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {id}); }
    void Set(qint64 id, const QString& column, const QString& text)
    {
        m_library->Execute(u"UPDATE Items SET "_s + column + u" = ? WHERE ID = ?"_s, {text, id});
    }

    FixedClock m_clock; ///< hits of items that were changed at the same time come in the order of their IDs
    std::optional<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    std::unique_ptr<FakeHost> m_host;
    std::unique_ptr<FindService> m_find;
    std::unique_ptr<QuickOpen> m_quick;
    std::unique_ptr<QuickPreviews> m_previews;
    qint64 m_folder = 0, m_read = 0, m_write = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home->Path(u"Bücher und Äste.qbd"_s));
        m_host = std::make_unique<FakeHost>();
        m_host->Open = m_library.get();
        m_host->Tree.Add(0, u"root"_s, TreeImage::OBJECTS);
        m_folder = Add(0, u"Files"_s);
        m_read = Add(m_folder, u"Read a text file"_s, u"int Read();\r\nvoid Close(); // the file"_s);
        m_write = Add(m_folder, u"Write a text file"_s, u"void Write();"_s);
        m_find = std::make_unique<FindService>(m_home->Path(u"cache"_s));
        m_quick = std::make_unique<QuickOpen>(*m_host, *m_find);
        m_previews = std::make_unique<QuickPreviews>(*m_host);
        m_quick->Begin();
    }
    void cleanup()
    {
        m_previews.reset();
        m_quick.reset();
        m_find.reset();
        m_host.reset();
        m_library.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // Titles

    void lettersOfWordsInAnyOrder_findTheTitle()
    {
        QCOMPARE(Typed(u"file read"_s), QStringList{u"[Read] a text [file]"_s});
        QCOMPARE(m_quick->Rows()[0].Item, m_read);
        QCOMPARE(m_quick->Rows()[0].Beside, u"Files"_s);
        QCOMPARE(Typed(u"  wtf "_s), QStringList{u"[W]rite a [t]ext [f]ile"_s});
    }

    void path_isThatOfTheTree()
    {
        const qint64 sub = Add(m_folder, u"Sub"_s);
        Add(sub, u"deep"_s);
        Typed(u"deep"_s);
        QCOMPARE(m_quick->Rows()[0].Beside, u"Files › Sub"_s);
        Typed(u"files"_s);
        QCOMPARE(m_quick->Rows()[0].Beside, QString()); // it stands at the top
    }

    void titles_followTheTree()
    {
        QCOMPARE(Typed(u"fresh"_s).size(), 1); // the offer to look in the texts
        QCOMPARE(m_quick->Rows()[0].What, QuickRow::Kind::Search);
        const qint64 item = Add(0, u"fresh"_s);
        QCOMPARE(Typed(u"fresh"_s), QStringList{u"[fresh]"_s});
        m_host->Tree.SetText(m_host->Tree[item], u"stale"_s);
        QCOMPARE(Typed(u"stale"_s), QStringList{u"[stale]"_s});
        m_host->Tree.Remove(m_host->Tree[item]);
        QCOMPARE(m_quick->Rows().size(), 1u);
        Typed(u"stale"_s);
        QCOMPARE(m_quick->Rows()[0].What, QuickRow::Kind::Search);
    }

    void emptyField_offersWhatWasShownLast_withoutTheItemThatIsShown()
    {
        const qint64 other = Add(0, u"other"_s);
        for (const qint64 item : {m_folder, m_read, m_write, other})
            m_library->Execute(u"UPDATE Items SET LastChanged = ? WHERE ID = ?"_s, {item, item});
        m_host->Current = m_write;
        m_host->Recent = {m_write, m_read, m_folder};
        m_quick->Begin();
        QCOMPARE(Rows(), (QStringList{u"Read a text file"_s, u"Files"_s, u"other"_s})); // then the last changed
    }

    void noTitle_offersToLookInTheTexts()
    {
        QSignalSpy retyped(m_quick.get(), &QuickOpen::Retyped);
        QCOMPARE(Typed(u"zebra"_s), QStringList{u"Look for “zebra” in all texts"_s});
        m_quick->Choose(0, false);
        QCOMPARE(retyped.size(), 1);
        QCOMPARE(retyped[0][0].toString(), u"#zebra"_s);
        QCOMPARE(m_host->Done, QStringList());
    }

    void noLibrary_saysSo()
    {
        m_host->Open = nullptr;
        for (const QString& typed : {QString(), u"read"_s, u"#read"_s}) {
            QCOMPARE(Typed(typed), QStringList());
            QCOMPARE(m_quick->Notice(), u"No library is open."_s);
        }
    }

    void item_isOpened_orShownInTheTree()
    {
        QSignalSpy chosen(m_quick.get(), &QuickOpen::Chosen);
        Typed(u"read"_s);
        m_quick->Choose(0, false);
        m_quick->Choose(0, true);
        m_quick->Choose(7, true); // there is none
        QCOMPARE(m_host->Done, (QStringList{u"open %1"_s.arg(m_read), u"tree %1"_s.arg(m_read)}));
        QCOMPARE(chosen.size(), 2);
    }

    void itemDeletedSince_saysSo_andIsNotOpened()
    {
        QSignalSpy chosen(m_quick.get(), &QuickOpen::Chosen);
        QSignalSpy told(m_quick.get(), &QuickOpen::Told);
        Typed(u"text file"_s);
        QCOMPARE(m_quick->Rows().size(), 2u);
        Delete(m_quick->Rows()[1].Item);
        QVERIFY(!m_quick->Rows()[1].IsGone);
        m_quick->Choose(1, false);
        QVERIFY(m_quick->Rows()[1].IsGone);
        QVERIFY(!m_quick->Rows()[0].IsGone);
        QCOMPARE(m_host->Done, QStringList());
        QCOMPARE(chosen.size(), 0);
        QVERIFY(told.value(0).value(0).toString().contains(u"deleted"_s));
    }

    // Commands

    void commands_areFoundByTheirLetters_thoseRunLastFirst()
    {
        m_host->Offered = {{.Name = u"a"_s, .Caption = u"File: New Library..."_s, .Key = u"Ctrl+N"_s},
                           {.Name = u"b"_s, .Caption = u"Edit: Undo"_s},
                           {.Name = u"c"_s, .Caption = u"View: Zoom In"_s}};
        m_quick->Begin();
        QCOMPARE(Typed(u">"_s), (QStringList{u"File: New Library..."_s, u"Edit: Undo"_s, u"View: Zoom In"_s}));
        QCOMPARE(m_quick->Rows()[0].Mark, u"Ctrl+N"_s);
        QCOMPARE(Typed(u"> lib new"_s), QStringList{u"File: [New] [Lib]rary..."_s});
        m_quick->Choose(0, false);
        Typed(u">zoom"_s);
        m_quick->Choose(0, false);
        QCOMPARE(m_host->Done, (QStringList{u"run a"_s, u"run c"_s}));
        m_quick->Begin();
        QCOMPARE(Typed(u">"_s), (QStringList{u"View: Zoom In"_s, u"File: New Library..."_s, u"Edit: Undo"_s}));
        QCOMPARE(Typed(u">qqq"_s), QStringList());
        QVERIFY(m_quick->Notice().contains(u"No command"_s));
    }

    // A line

    void line_isOneOfTheCodeThatIsShown()
    {
        QVERIFY(m_quick->Notice() != QString());
        QCOMPARE(Typed(u":2"_s), QStringList());
        QVERIFY(m_quick->Notice().contains(u"No item"_s));
        m_host->Code = ShownCode{
            .Item = m_read, .Title = u"Read"_s, .Content = FakeHost::Of(u"one\r\n  two\r\nthree"_s), .LineOfCaret = 3};
        QCOMPARE(Typed(u":"_s), QStringList());
        QVERIFY(m_quick->Notice().contains(u"1 to 3. The caret is in line 3."_s));
        QCOMPARE(Typed(u": 2"_s), QStringList{u"Line 2 of 3"_s});
        QCOMPARE(m_quick->Rows()[0].Beside, u"two"_s);
        m_quick->Choose(0, false);
        Typed(u":99"_s); // as far as there are lines
        m_quick->Choose(0, false);
        QCOMPARE(m_host->Done, (QStringList{u"line 2"_s, u"line 3"_s}));
        for (const QString& typed : {u":0"_s, u":-1"_s, u":x"_s, u":99999999999"_s})
            QCOMPARE(Typed(typed), QStringList());
    }

    // A text

    void text_isFoundInAllTexts_withItsLine()
    {
        Set(m_write, u"Notes"_s, RtfFromPlainText(u"first\r\n\tClose it!"_s, CodeFont));
        m_find->Open(m_library->Name());
        QCOMPARE(Searched(u"close"_s), (QStringList{u"void [Close](); // the file"_s, u"[Close] it!"_s}));
        const QuickRow& code = m_quick->Rows()[0];
        QCOMPARE(code.Item, m_read);
        QCOMPARE(code.Mark, u"Code 2"_s);
        QCOMPARE(code.Beside, u"Files › Read a text file"_s);
        QCOMPARE(m_quick->Status(), u"2 items"_s);
        QCOMPARE(m_quick->Rows()[1].Mark, u"Notes 2"_s);
        m_quick->Choose(0, false);
        m_quick->Choose(1, false);
        m_quick->Choose(1, true);
        QCOMPARE(m_host->Done, (QStringList{u"place %1 C 2"_s.arg(m_read), u"place %1 N 2"_s.arg(m_write),
                                            u"tree %1"_s.arg(m_write)}));
    }

    void textInATitle_comesFirst()
    {
        Set(m_read, u"Description"_s, u"to write"_s);
        m_find->Open(m_library->Name());
        QCOMPARE(Searched(u"write"_s).value(0), u"[Write] a text file"_s);
        QCOMPARE(m_quick->Rows()[0].Mark, u"Title"_s);
        QCOMPARE(m_quick->Rows()[0].Beside, u"Files"_s);
    }

    void placesOfOneLine_areOneRow_andALongLineBeginsNearIt()
    {
        const qint64 item = Add(0, u"long"_s, QString(100, u'x') + u" needle and needle\r\n needle"_s);
        m_find->Open(m_library->Name());
        QCOMPARE(Searched(u"needle"_s),
                 (QStringList{u"…"_s + QString(23, u'x') + u" [needle] and [needle]"_s, u"[needle]"_s}));
        QCOMPARE(m_quick->Rows()[1].Item, item);
    }

    void text_thatIsNowhere_saysSo()
    {
        m_find->Open(m_library->Name());
        QCOMPARE(Searched(u"zebra"_s), QStringList());
        QCOMPARE(m_quick->Notice(), u"“zebra” is in none of the texts."_s);
        m_quick->SetTyped(u"#"_s);
        QVERIFY(m_quick->Notice().contains(u"Type a text"_s));
        QVERIFY(!m_quick->Request());
        m_quick->SetTyped(u"#"_s + QString(20'000, u'x') + u'\0');
        QVERIFY(!m_quick->Notice().isEmpty());
    }

    void textTypedOn_forgetsTheRowsOfTheTextBefore()
    {
        m_find->Open(m_library->Name());
        QVERIFY(!Searched(u"file"_s).isEmpty());
        m_quick->SetTyped(u"#files"_s);
        m_quick->Choose(0, false); // what the rows were for was another text
        QCOMPARE(m_host->Done, QStringList());
    }

    void hitDeletedSince_saysSo()
    {
        m_find->Open(m_library->Name());
        QCOMPARE(Searched(u"Close"_s).size(), 1);
        Delete(m_read);
        QSignalSpy told(m_quick.get(), &QuickOpen::Told);
        m_quick->Choose(0, false);
        QVERIFY(m_quick->Rows()[0].IsGone);
        QVERIFY(told.value(0).value(0).toString().contains(u"“Read a text file” is not in the library"_s));
        QCOMPARE(m_host->Done, QStringList());
    }

    // Previews

    void preview_isTheCode_asItWasTypedLast()
    {
        Typed(u"read"_s);
        const QuickRow row = m_quick->Rows()[0];
        QuickPreview preview = m_previews->Of(row, nullptr);
        QCOMPARE(preview.Title, u"Read a text file"_s);
        QCOMPARE(preview.Caption, u"Code"_s);
        QCOMPARE(preview.Content.Text(), u"int Read();\r\nvoid Close(); // the file"_s);
        QCOMPARE(m_previews->CodeOf(row).Text(), preview.Content.Text());
        m_host->Current = m_read;
        m_host->Unsaved = u"typed"_s;
        QCOMPARE(m_previews->Of(row, nullptr).Content.Text(), u"typed"_s);
        QCOMPARE(m_previews->CodeOf(row).Text(), u"typed"_s);
    }

    void preview_takesTheTextThatTellsMost()
    {
        const qint64 item = Add(0, u"item"_s);
        Typed(u"item"_s);
        const QuickRow row = m_quick->Rows()[0];
        QVERIFY(m_previews->Of(row, nullptr).Notice.contains(u"no texts"_s));
        QCOMPARE(m_previews->CodeOf(row).Text(), QString());
        Add(item, u"child"_s);
        const auto shown = [&] {
            const QuickPreview preview = m_previews->Of(row, nullptr);
            return preview.Caption + u": "_s + preview.Content.Text();
        };
        QCOMPARE(shown(), u"Items below: child"_s);
        const std::pair<QString, QString> texts[] = {{u"Description"_s, u"Description: described"_s},
                                                     {u"Notes"_s, u"Notes: noted"_s},
                                                     {u"Example"_s, u"Usage: used"_s},
                                                     {u"Code"_s, u"Code: coded"_s}};
        for (const auto& [column, expected] : texts) {
            const QString text = expected.section(u": "_s, 1);
            Set(item, column, column == u"Description"_s ? text : RtfFromPlainText(text, CodeFont));
            QCOMPARE(shown(), expected);
        }
    }

    void preview_hasTheRulesOfTheItemsLanguage()
    {
        const qint64 item = Add(0, u"snake"_s, u"def f(): pass"_s);
        RichText code = FakeHost::Of(u"def f(): pass"_s);
        code.Document().SetLanguage(u"Python"_s);
        Set(item, u"Code"_s, code.TextRTF());
        Typed(u"snake"_s);
        QVERIFY(m_previews->Of(m_quick->Rows()[0], nullptr).Rules);
        const RichText copy = m_previews->CodeOf(m_quick->Rows()[0]);
        RichText painted = copy;
        painted.SetSelStart(0);
        painted.SetSelLength(3);
        QVERIFY(painted.SelColor() != std::optional<quint32>(copy.Document().Format(0).Color)
                || painted.SelColor().has_value());
        Typed(u"read"_s);
        QVERIFY(!m_previews->Of(m_quick->Rows()[0], nullptr).Rules); // of the library's language, which has none
    }

    void previewOfAHit_isTheTextWithItsPlacesMarked()
    {
        Set(m_write, u"Notes"_s, RtfFromPlainText(u"first\r\nClose it, close it!"_s, CodeFont));
        m_find->Open(m_library->Name());
        Searched(u"close"_s);
        QuickPreview preview = m_previews->Of(m_quick->Rows()[0], m_quick->Request());
        QCOMPARE(preview.Caption, u"Code"_s);
        QCOMPARE(preview.Line, 2);
        QCOMPARE(preview.Marks, (std::vector<TextRange>{{18, 5}}));
        preview = m_previews->Of(m_quick->Rows()[1], m_quick->Request());
        QCOMPARE(preview.Content.Text(), u"first\r\nClose it, close it!"_s);
        QCOMPARE(preview.Marks, (std::vector<TextRange>{{7, 5}, {17, 5}}));
    }

    void previewOfAnItemThatHasGone_saysSo()
    {
        Typed(u"read"_s);
        Delete(m_read);
        QVERIFY(m_previews->Of(m_quick->Rows()[0], nullptr).Notice.contains(u"not in the library any more"_s));
        QCOMPARE(m_previews->CodeOf(m_quick->Rows()[0]).Text(), QString());
        QVERIFY(!m_quick->CheckItem(0));
        QVERIFY(m_quick->Rows()[0].IsGone);
    }

    void previewOfATextThatIsTooLarge_isItsBegin_andTheCopyIsWhole()
    {
        const QString text = u"begin "_s + QString(5'000'000, u'x');
        const qint64 item = Add(0, u"huge"_s);
        Set(item, u"Code"_s, text);
        Typed(u"huge"_s);
        const QuickPreview preview = m_previews->Of(m_quick->Rows()[0], nullptr);
        QVERIFY(preview.Content.Text().size() < text.size());
        QVERIFY(preview.Content.Text().contains(u"begin"_s));
        QCOMPARE(m_previews->CodeOf(m_quick->Rows()[0]).Text().size(), text.size());
    }
};

QB_TEST_MAIN(TestQuickOpen)
#include "tst_quick_open.moc"
