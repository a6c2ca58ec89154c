#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "publishing/BranchPublisher.h"
#include "publishing/MarkdownText.h"
#include "store/CCodeItem.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A branch as a folder of Markdown.
class TestMarkdownFolder : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;

    QString Target() const { return m_home->Path(u"für leser"_s); }
    QMap<QString, QByteArray> Publish(qint64 item)
    {
        PublishBranch(*m_library, item, ReaderForm::Markdown, Target());
        return ContentsOf(Target());
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(m_home->Path(u"bücher.qbd"_s));
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void item_isOneText()
    {
        const qint64 top = AddItem(*m_library, 0, u"Top \"<b>\""_s, {});
        const qint64 inner = AddItem(*m_library, top, u"in [ner]"_s);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(top));
        item.SetCode(WithLanguageInRtf(RtfFromPlainText(u"print('````')\n"_s, CodeFont), u"Python"_s));
        item.SetDescription(u"what *it* is"_s);
        item.SetInfo(u"1. one\n- two\n\n    three"_s);
        item.SetUser(u"me: \\you"_s);
        item.SetItemStatus(4);
        item.SetItemRating(7);
        item.SetNotes(
            u"{\\rtf1 a {\\b bold }{\\i it}\\par \\pard{\\*\\pn\\pnlvlblt}x\\par y\\par \\pard "
            "{\\pict\\pngblip 89504e47}{\\field{\\*\\fldinst HYPERLINK \"https://a.b/<c>\"}{\\fldrslt t}}\\par}"_s);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        AddStoredFile(*m_library, top, u"-a <b>.txt"_s, "file", {});
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, 'why')"_s, {top, inner});
        const QMap<QString, QByteArray> made = Publish(top);
        const QString base = u"Top __b__"_s;
        QCOMPARE(made.keys(),
                 (QStringList{base + u".files/"_s, base + u".files/a _b_.txt"_s, base + u".files/picture.png"_s,
                              base + u".md"_s, base + u"/"_s, base + u"/in [ner].md"_s}));
        QCOMPARE(made[base + u".files/a _b_.txt"_s], "file");
        QCOMPARE(made[base + u".files/picture.png"_s], QByteArray::fromHex("89504e47"));
        QCOMPARE(QString::fromUtf8(made[base + u".md"_s]),
                 u"---\n"
                 "title: \"Top \\\"<b>\\\"\"\n"
                 "id: 1\n"
                 "description: \"what *it* is\"\n"
                 "language: \"Python\"\n"
                 "status: \"tested\"\n"
                 "rating: 3.5\n"
                 "user: \"me: \\\\you\"\n"
                 "created: \"2026-03-02 14:30:05\"\n"
                 "changed: \"2026-03-02 14:30:05\"\n"
                 "---\n"
                 "\n"
                 "# Top \"\\<b\\>\"\n"
                 "\n"
                 "what \\*it\\* is\n"
                 "\n"
                 "1\\. one\\\n\\- two\n\n&nbsp;&nbsp;&nbsp;&nbsp;three\n"
                 "\n"
                 "## Code\n"
                 "\n"
                 "`````python\nprint('````')\n`````\n"
                 "\n"
                 "## Notes\n"
                 "\n"
                 "a **bold** *it*\n\n- x\n- y\n\n![](%1.files/picture.png)[t](<https://a.b/%3Cc%3E>)\n"
                 "\n"
                 "## Stored files\n"
                 "\n"
                 "- [\\-a \\<b\\>.txt](%1.files/a%20_b_.txt), 4 bytes\n"
                 "\n"
                 "## Links\n"
                 "\n"
                 "- [in \\[ner\\]](%1/in%20%5Bner%5D.md): why\n"
                 "\n"
                 "## Items below\n"
                 "\n"
                 "- [in \\[ner\\]](%1/in%20%5Bner%5D.md)\n"_s.replace(u"%1"_s, u"Top%20__b__"_s));
    }

    void links_findTheirWay()
    {
        const qint64 a = AddItem(*m_library, 0, u"a"_s);
        const qint64 b = AddItem(*m_library, AddItem(*m_library, 0, u"b"_s), u"b2"_s);
        const qint64 a2 = AddItem(*m_library, a, u"a2"_s);
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (?, ?), (?, ?)"_s, {a2, b, a2, a});
        const QMap<QString, QByteArray> made = Publish(0);
        QVERIFY(made[u"a/a2.md"_s].endsWith("## Links\n\n- [b2](../b/b2.md)\n- [a](../a.md)\n"));
    }

    void names_areUniqueWithoutRegardToCase()
    {
        for (const QString& title : {u"a"_s, u"A"_s, u"a/"_s, u"a_"_s, u"a.md"_s, u".."_s, u"more"_s})
            AddItem(*m_library, 0, title);
        QSet<QString> folded;
        const QStringList names = Publish(0).keys();
        QCOMPARE(names.size(), 7);
        for (const QString& name : names) {
            QVERIFY(!name.contains(u'/') && name.endsWith(".md"_L1));
            folded.insert(name.toLower());
        }
        QCOMPARE(folded.size(), 7);
    }

    void itemsThatStandTooDeep_areLaidAside()
    {
        qint64 item = AddItem(*m_library, 0, u"top"_s);
        constexpr int depth = 60;
        for (int level = 0; level < depth; ++level)
            item = AddItem(*m_library, item, QString(90, u'd') + QString::number(level));
        const QStringList names = Publish(0).keys();
        QCOMPARE(std::count_if(names.begin(), names.end(), [](const QString& name) { return name.endsWith(".md"_L1); }),
                 depth + 1);
        for (const QString& name : names)
            QVERIFY(name.toUtf8().size() < 2000);
        QVERIFY(names.contains(u"more/"_s));
    }

    void missingFile_isNamed()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        const qint64 id = AddStoredFile(*m_library, item, u"lost.bin"_s, "x", {});
        QVERIFY(QFile::remove(m_library->FilesFolder() + u"%1 - lost.bin"_s.arg(id)));
        const PublishResult result = PublishBranch(*m_library, item, ReaderForm::Markdown, Target());
        QCOMPARE(result.Missing, QStringList{u"lost.bin"_s});
        QVERIFY(ReadFile(Target() + u"/one.md"_s).contains("- lost.bin (missing in the library)"));
    }

    void webPage_comesWithItsFolderAndRunsNothing()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1"_s);
        const QString pages = m_library->HTMLFolder();
        const QByteArray page = "<script>steal()</script><img src=\"1/bild ü.png\"><img src=\"default2/logo.png\">";
        WriteFile(pages + u"1.htm"_s, "<!doctype html>" + page);
        WriteFile(pages + u"default2/logo.png"_s, "of the template");
        WriteFile(pages + u"1/bild ü.png"_s, "picture");
        WriteFile(pages + u"1/sub/inner.HTML"_s, "<b>inner</b>");
        WriteFile(m_home->Path(u"secret"_s), "secret");
        QVERIFY(QFile::link(m_home->Path(u"secret"_s), pages + u"1/link.txt"_s));
        AddStoredFile(*m_library, item, u"web page"_s, "a stored file of that name", {});
        const QMap<QString, QByteArray> made = Publish(item);
        const QString folder = u"one.files/web page(1)/"_s;
        QCOMPARE(made.keys(),
                 (QStringList{u"one.files/"_s, u"one.files/web page"_s, folder, folder + u"1.htm"_s, folder + u"1/"_s,
                              folder + u"1/bild ü.png"_s, folder + u"1/sub/"_s, folder + u"1/sub/inner.HTML"_s,
                              folder + u"default2/"_s, folder + u"default2/logo.png"_s, u"one.md"_s}));
        QCOMPARE(made[folder + u"default2/logo.png"_s], "of the template");
        QCOMPARE(made[folder + u"1/bild ü.png"_s], "picture");
        QVERIFY(made[u"one.md"_s].contains("## Web page\n\n- [1\\.htm](one.files/web%20page%281%29/1.htm)\n"));
        const QByteArray policy = "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src "
                                  "file: data:; ";
        QVERIFY(made[folder + u"1.htm"_s].startsWith("<!doctype html>" + policy));
        QVERIFY(made[folder + u"1.htm"_s].endsWith(page));
        QVERIFY(made[folder + u"1/sub/inner.HTML"_s].startsWith(policy));
    }

    void itemOfTheNameOfTheFolderAside_leavesItThatName()
    {
        AddItem(*m_library, 0, u"More"_s);
        QCOMPARE(Publish(1).keys(), QStringList{u"More(1).md"_s});
    }

    void itemThatIsSaidToHaveNoPage_bringsNone()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        WriteFile(m_library->HTMLFolder() + u"1.htm"_s, "left over");
        QCOMPARE(Publish(item).keys(), QStringList{u"one.md"_s});
    }

    void largeFile_showsThatItGoesOnAndCanBeCancelled()
    {
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        AddStoredFile(*m_library, item, u"file.bin"_s, "contents", {});
        RecordedWork work;
        work.Ends = [&work](qint64) { return work.Pulses >= 1; };
        QB_VERIFY_RAISES(PublishBranch(*m_library, item, ReaderForm::Markdown, Target(), work), 18);
        QCOMPARE(work.Done, QList<qint64>()); // it counts items, not bytes
        QVERIFY(!QFileInfo::exists(Target()));
    }

    void flush_isWatchedAndCanBeStopped_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::newRow("new folder") << false;
        QTest::newRow("empty folder") << true;
    }
    void flush_isWatchedAndCanBeStopped()
    {
        QFETCH(bool, isThere);
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        RecordedWork work;
        if (isThere)
            QDir().mkpath(Target());
        work.Ends = [&work](qint64) { return work.Pulses >= 1; };
        QB_VERIFY_RAISES(PublishBranch(*m_library, item, ReaderForm::Markdown, Target(), work), ErrorNumber::Cancelled);
        QCOMPARE(work.Done, QList<qint64>{1}); // all was made
        QCOMPARE(QFileInfo::exists(Target()), isThere);
        QVERIFY(ContentsOf(Target()).isEmpty());
        work.Forget();
        PublishBranch(*m_library, item, ReaderForm::Markdown, Target(), work);
        QVERIFY(work.Pulses >= 3); // what was made; again before it is put in place, for all who do that; the place
    }

    // Texts

    void texts_areEscaped_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("markdown");
        QTest::newRow("plain") << u"Nothing special: a, b!"_s << u"Nothing special: a, b!"_s;
        QTest::newRow("markup") << u"\\`*_{}[]<>#|~&$"_s << u"\\\\\\`\\*\\_\\{\\}\\[\\]\\<\\>\\#\\|\\~\\&\\$"_s;
        QTest::newRow("a script") << u"<script>alert(1)</script>"_s << u"\\<script\\>alert(1)\\</script\\>"_s;
        QTest::newRow("lists") << u"- a\n+ b\n12) c\n3. d"_s << u"\\- a\\\n\\+ b\\\n12\\) c\\\n3\\. d"_s;
        QTest::newRow("headings") << u"a\n==="_s << u"a\\\n\\==="_s;
        QTest::newRow("paragraphs") << u"a\r\n\r\nb"_s << u"a\n\nb"_s;
        QTest::newRow("controls") << u"a\x01z"_s << u"a\u2401z"_s;
    }
    void texts_areEscaped()
    {
        QFETCH(QString, text);
        QTEST(MarkdownText(text), "markdown");
    }

    void code_standsBehindAFenceThatItCantClose_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("markdown");
        QTest::newRow("usual") << u"a\r\nb\r\n"_s << u"Rust"_s << u"```rust\na\nb\n```\n"_s;
        QTest::newRow("no end of its last line") << u"a"_s << QString() << u"```\na\n```\n"_s;
        QTest::newRow("a fence inside") << u"```\nx\n```\n"_s << QString() << u"````\n```\nx\n```\n````\n"_s;
        QTest::newRow("a longer one") << u"x ``````"_s << QString() << u"```````\nx ``````\n```````\n"_s;
        QTest::newRow("a name that lies") << u"x"_s << u"a`\nb c"_s << u"```ab-c\nx\n```\n"_s;
    }
    void code_standsBehindAFenceThatItCantClose()
    {
        QFETCH(QString, code);
        QFETCH(QString, language);
        QTEST(MarkdownCode(code, language), "markdown");
    }

    void frontMatter_holdsAnyText()
    {
        QCOMPARE(YamlText(u"a\"b\\c\n---\td\u0085\u2028é"_s), u"\"a\\\"b\\\\c\\u000a---\\u0009d\\u0085\\u2028é\""_s);
    }
};

QB_TEST_MAIN(TestMarkdownFolder)
#include "tst_markdown_folder.moc"
