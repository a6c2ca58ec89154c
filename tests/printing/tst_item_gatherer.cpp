#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/RuntimeError.h"
#include "printing/ItemGatherer.h"
#include "printing/PrintInk.h"
#include "printing/PrintOrder.h"
#include "printing/PrintRequest.h"
#include "store/CCodeItem.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What is gathered of items to be printed.
class TestItemGatherer : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;

    PrintedItem Gathered(PrintParts parts = AllPrintParts) { return ItemGatherer(*m_library, parts).Gather(m_item); }

    void Write(const QString& column, const QString& text)
    {
        m_library->Execute(u"UPDATE Items SET "_s + column + u" = ? WHERE ID = ?"_s, {text, m_item});
    }

    static QStringList TextsOf(const PrintedCode& code)
    {
        QStringList texts;
        for (const PrintedLine& line : code)
            texts << line.Text;
        return texts;
    }

    static QString CodeNaming(const QString& language, const QString& text)
    {
        return WithLanguageInRtf(RtfFromPlainText(text, CodeFont), language);
    }

    static const PrintedSpan* SpanOver(const PrintedLine& line, const QString& word)
    {
        for (const PrintedSpan& span : line.Spans) {
            if (line.Text.mid(span.Begin, span.Length) == word)
                return &span;
        }
        return nullptr;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"Bü cher.qbd"_s));
        m_item = AddItem(*m_library, AddItem(*m_library, AddItem(*m_library, 0, u"top"_s), u"middle"_s), u"item"_s);
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void item_isGatheredWhole()
    {
        Write(u"Description"_s, u"about it"_s);
        Write(u"Info"_s, u"two\r\nlines"_s);
        Write(u"Code"_s, RtfFromPlainText(u"int a;\nint b;\n"_s, CodeFont));
        Write(u"Example"_s, RtfFromPlainText(u"use(a)"_s, CodeFont));
        Write(u"Notes"_s, RtfFromPlainText(u"noted"_s, CodeFont));
        const qint64 file = AddStoredFile(*m_library, m_item, u"a.txt"_s, "12345"_ba, m_clock->Now());
        m_library->Execute(u"UPDATE Files SET fileSize = 4096, Description = ? WHERE ID = ?"_s,
                           {RtfFromPlainText(u"a file"_s, CodeFont), file});
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, 'see')"_s, {m_item, other});
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_item});
        WriteFile(m_library->HTMLFolder() + QString::number(m_item) + u".htm"_s,
                  "<h1>Page</h1><script>no</script><p>text");

        const PrintedItem item = Gathered();
        QCOMPARE(item.Id, m_item);
        QCOMPARE(item.Title, u"item"_s);
        QCOMPARE(item.Path, (QStringList{u"top"_s, u"middle"_s}));
        QCOMPARE(item.Description, u"about it"_s);
        QCOMPARE(item.Info, u"two\r\nlines"_s);
        QCOMPARE(TextsOf(item.Code), (QStringList{u"int a;"_s, u"int b;"_s})); // no line behind the last line end
        QCOMPARE(TextsOf(item.Usage), QStringList{u"use(a)"_s});
        QCOMPARE(item.Notes.Text(), u"noted"_s);
        QCOMPARE(item.Files.size(), size_t(1));
        QCOMPARE(item.Files[0].Title, u"a.txt"_s);
        QCOMPARE(item.Files[0].Size, u"4,096"_s);
        QCOMPARE(item.Files[0].Description, u"a file"_s);
        QCOMPARE(item.Files[0].DateAdded, m_clock->Now());
        QCOMPARE(item.Links.size(), size_t(1));
        QCOMPARE(item.Links[0].Title, u"other"_s);
        QCOMPARE(item.Links[0].Note, u"see"_s);
        QVERIFY(item.Links[0].Direction == PrintedLink::Leads::There);
        QCOMPARE(item.PageText.simplified(), u"Page text"_s);
        QVERIFY(item.Facts.contains(u"Created 2 Mar 2026"_s));
        QVERIFY(item.Characters > 20);
    }

    void partLeftOut_isNotRead()
    {
        Write(u"Code"_s, u"int a;"_s);
        Write(u"Notes"_s, u"noted"_s);
        Write(u"Info"_s, u"info"_s);
        AddStoredFile(*m_library, m_item, u"a.txt"_s, "1"_ba, m_clock->Now());
        const PrintedItem notes = Gathered(PrintPart::Notes);
        QVERIFY(notes.Code.empty() && notes.Files.empty() && notes.Info.isEmpty() && notes.Facts.isEmpty());
        QCOMPARE(notes.Notes.Text(), u"noted"_s);
        const PrintedItem rest = Gathered(AllPrintParts & ~PrintParts(PrintPart::Notes));
        QCOMPARE(rest.Notes.Length(), 0);
        QVERIFY(!rest.Code.empty() && !rest.Files.empty() && !rest.Info.isEmpty());
    }

    void notesThatTakeTooLongToLayOut_arePrintedAsPlainText()
    {
        const QString notes = u"{\\rtf1 "_s + u"{\\b b}{\\i i}"_s.repeated(200'000) + u" end\\par}"_s;
        Write(u"Notes"_s, notes);
        const PrintedItem item = Gathered();
        QCOMPARE(item.Notes.Length(), 0);
        QCOMPARE(item.PlainNotes.trimmed(), u"bi"_s.repeated(200'000) + u" end"_s);
    }

    void emptyItem_hasATitleOnly()
    {
        const PrintedItem item = Gathered();
        QVERIFY(item.Code.empty() && item.Usage.empty() && item.Files.empty() && item.Links.empty());
        QVERIFY(item.PageText.isEmpty() && item.PlainNotes.isEmpty() && item.Notes.Length() == 0);
    }

    void rules_giveInksWhateverTheScreenHas()
    {
        Write(u"Code"_s, CodeNaming(u"Python"_s, u"def f(): # why\n\treturn 'x'"_s));
        const PrintedItem item = Gathered();
        const PrintedSpan* keyword = SpanOver(item.Code[0], u"def"_s);
        QVERIFY(keyword && keyword->Bold);
        QCOMPARE(keyword->Color, InkColors()[size_t(TokenKind::Keyword)]);
        const PrintedSpan* comment = SpanOver(item.Code[0], u"# why"_s);
        QVERIFY(comment && comment->Italic);
        QCOMPARE(comment->Color, InkColors()[size_t(TokenKind::Comment)]);
        QCOMPARE(item.Code[1].Text, u"    return 'x'"_s); // the tab is blanks, and the colours moved along
        QVERIFY(SpanOver(item.Code[1], u"return"_s) && SpanOver(item.Code[1], u"'x'"_s));
        QVERIFY(item.Facts.contains(u"Language Python"_s));
    }

    void tabs_goToTheNextStop()
    {
        Write(u"Code"_s, RtfFromPlainText(u"a\tb\n\t\tc"_s, CodeFont));
        QCOMPARE(TextsOf(Gathered().Code), (QStringList{u"a   b"_s, u"        c"_s}));
    }

    void controlCharacters_areShownAsPictures()
    {
        ItemGatherer gatherer(*m_library, AllPrintParts);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        const UnsavedTexts typed{
            .Item = m_item, .LastChanged = {}, .Code = u"a\u0007b\u2028c"_s, .Notes = {}, .Usage = {}};
        QCOMPARE(TextsOf(gatherer.Gather(item, {}, typed).Code), QStringList{u"a\u2407b\u2424c"_s});
    }

    void spelling_isPrintedAsItIsStored()
    {
        const auto vb = MakeLibrary(m_home->Path(u"vb.qbd"_s), LanguageType::VB);
        const qint64 item = AddItem(*vb, 0, u"item"_s);
        vb->Execute(u"UPDATE Items SET Code = ? WHERE ID = ?"_s, {RtfFromPlainText(u"dIm a ' why"_s, CodeFont), item});
        const PrintedItem printed = ItemGatherer(*vb, AllPrintParts).Gather(item);
        QCOMPARE(printed.Code[0].Text, u"dIm a ' why"_s);
        QVERIFY(!printed.Code[0].Spans.empty()); // but in colour
    }

    void typedTexts_standInThePlaceOfThoseStored()
    {
        Write(u"Code"_s, u"stored"_s);
        Write(u"Notes"_s, u"stored notes"_s);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        ItemGatherer gatherer(*m_library, AllPrintParts);
        const UnsavedTexts typed{.Item = m_item,
                                 .LastChanged = {},
                                 .Code = RtfFromPlainText(u"typed"_s, CodeFont),
                                 .Notes = {},
                                 .Usage = {}};
        const PrintedItem printed = gatherer.Gather(item, {}, typed);
        QCOMPARE(TextsOf(printed.Code), QStringList{u"typed"_s});
        QCOMPARE(printed.Notes.Text(), u"stored notes"_s);
        QVERIFY(!item.Unsaved());
    }

    void pageThatIsALink_isNotFollowed()
    {
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_item});
        WriteFile(m_home->Path(u"secret"_s), "secret");
        QVERIFY(QDir().mkpath(m_library->HTMLFolder()));
        QVERIFY(QFile::link(m_home->Path(u"secret"_s), m_library->HTMLFolder() + QString::number(m_item) + u".htm"_s));
        QCOMPARE(Gathered().PageText, QString());
    }

    void missingItem_isAnError() { QVERIFY_THROWS_EXCEPTION(RuntimeError, ItemGatherer(*m_library, {}).Gather(4711)); }

    void itemThatCantBeRead_isNamed()
    {
        ScriptedPrompts prompts;
        prompts.ExpectError();
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        QCOMPARE(item.Title(), u"item"_s); // the texts are read later
        m_library->Execute(u"ALTER TABLE Items RENAME COLUMN Notes TO Gone"_s);
        ItemGatherer gatherer(*m_library, PrintPart::Notes);
        QString reason;
        try {
            gatherer.Gather(item, {});
        } catch (const RuntimeError& error) {
            reason = error.Description();
        }
        QVERIFY2(reason.contains(u"'item' (%1) can't be read"_s.arg(m_item)), qPrintable(reason));
    }

    void circleOfParents_endsThePath()
    {
        m_library->Execute(u"UPDATE Items SET ParentID = ? WHERE Title = 'top'"_s, {m_item});
        QCOMPARE(Gathered().Path.size(), 3);
        QCOMPARE(PrintOrder(*m_library, m_item).size(), size_t(3));
        QCOMPARE(PrintOrder(*m_library, 0).size(), size_t(3));
    }

    void branch_isPrintedInTheOrderOfTheTree()
    {
        const qint64 b = AddItem(*m_library, m_item, u"b"_s);
        const qint64 a = AddItem(*m_library, m_item, u"\u00c4"_s); // sorts as a
        const qint64 below = AddItem(*m_library, b, u"below"_s);
        const qint64 c = AddItem(*m_library, m_item, u"C"_s);
        QCOMPARE(PrintOrder(*m_library, m_item), (std::vector<qint64>{m_item, a, b, below, c}));
        const std::vector<OutlinedForPrint> outline = PrintOutline(*m_library, m_item);
        QCOMPARE(outline[3].Id, below);
        QCOMPARE(outline[3].Depth, 2);
        QCOMPARE(outline[3].Title, u"below"_s);
        m_library->Execute(u"UPDATE Items SET ParentID = 9999 WHERE ID = ?"_s, {c});
        const std::vector<qint64> all = PrintOrder(*m_library, 0);
        QCOMPARE(all.size(), size_t(7));
        QCOMPARE(all.back(), c); // it has lost its place
    }

    void request_printsTheGivenItemAndThoseBelow()
    {
        AddItem(*m_library, m_item, u"child"_s);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        const PrintRequest request{
            .Database = *m_library,
            .Item = item,
            .PagePath = {},
            .LibraryName = u"lib"_s,
            .Typed = {.Item = m_item, .LastChanged = {}, .Code = u"typed"_s, .Notes = {}, .Usage = {}}};
        RequestSource alone(request, {m_item}, AllPrintParts);
        QCOMPARE(alone.Count(), size_t(1));
        RequestSource branch(request, PrintOrder(*m_library, m_item), AllPrintParts);
        QCOMPARE(branch.Count(), size_t(2));
        QCOMPARE(TextsOf(branch.Item(0).Code), QStringList{u"typed"_s});
        QCOMPARE(branch.Item(1).Title, u"child"_s);
        QVERIFY(branch.Item(1).Code.empty());
    }
};

QB_TEST_MAIN(TestItemGatherer)
#include "tst_item_gatherer.moc"
