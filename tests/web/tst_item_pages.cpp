#include "exchange/BranchStream.h"
#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "store/CCodeItem.h"
#include "store/PageChanges.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "web/DefaultPages.h"
#include "web/ItemPages.h"
#include "web/WebPages.h"

#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A picture of one dot.
QByteArray Gif()
{
    return QByteArray::fromHex(
        "47494638396101000100800000ffffff00000021f90401000000002c00000000010001000002024401003b");
}

PageLink LinkTo(const QString& address, const QString& text = {})
{
    return {address, text, {}, {}};
}

} // namespace

/// The pages of items: each change whole, with its row, or not at all.
class TestItemPages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_clock = std::make_unique<FixedClock>();
        m_library = MakeLibrary(m_home->Path(u"Bücher ei.qbd"_s));
        m_item = AddItem(*m_library, 0, u"item"_s);
        WriteFile(m_home->Path(u"in/ein Bild.gif"_s), Gif());
        m_clock->AddSeconds(60);
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_prompts.reset();
        m_home.reset();
    }

    void itemWithoutPage_getsTheTemplateAndAFolder()
    {
        QVERIFY(EnsureHTMLFileExists(*m_library, m_item));
        QCOMPARE(QString::fromUtf8(ReadFile(Page())), BuiltInPage(PageTemplate));
        QVERIFY(QFileInfo(PageFolderOf(*m_library, m_item)).isDir());
        QCOMPARE(Row(), u"1 now now"_s);
        m_clock->AddSeconds(60);
        QVERIFY(!EnsureHTMLFileExists(*m_library, m_item)); // and is left as it is from then on
        QCOMPARE(Row(), u"1 then then"_s);
        QVERIFY(QDir().rmdir(PageFolderOf(*m_library, m_item)));
        QVERIFY(!EnsureHTMLFileExists(*m_library, m_item));
        QVERIFY(QFileInfo(PageFolderOf(*m_library, m_item)).isDir());
    }

    void change_movesBothDates()
    {
        struct Way {
            const char* Name;
            std::function<void()> Run;
        };
        const Way ways[] = {{"write", [&] { WritePage(*m_library, m_item, "<p>x</p>"); }},
                            {"set", [&] { SetPage(*m_library, m_item, PageOf("<p>y</p>")); }},
                            {"picture", [&] { AddPicture(*m_library, m_item, Picture(), {}); }},
                            {"link", [&] { InsertLink(*m_library, m_item, LinkTo(u"example.org"_s)); }}};
        WritePage(*m_library, m_item, BuiltInPage(PageTemplate).toUtf8());
        for (const Way& way : ways) {
            if (QByteArray(way.Name) == "picture")
                WritePage(*m_library, m_item, BuiltInPage(PageTemplate).toUtf8());
            m_clock->AddSeconds(60);
            way.Run();
            QVERIFY2(Row() == u"1 now now"_s, way.Name);
        }
        m_clock->AddSeconds(60);
        DeletePage(*m_library, m_item);
        QCOMPARE(Row(), u"0 now now"_s);
        QCOMPARE(ContentsOf(m_library->HTMLFolder()).keys().filter(QRegularExpression(u"^1"_s)), QStringList());
    }

    void picture_standsInTheLastParagraph()
    {
        PagePicture named;
        AddPicture(*m_library, m_item, Picture(), {30, 0}, [&named](const PagePicture& picture) { named = picture; });
        QCOMPARE(named.Source, u"1/ein-Bild.gif"_s);
        QCOMPARE(ReadFile(m_library->HTMLFolder() + named.Source), Gif());
        const QString page = QString::fromUtf8(ReadFile(Page()));
        QVERIFY2(
            page.contains(u"<img border=\"0\" src=\"1/ein-Bild.gif\" width=\"30\" height=\"30\"> </p>\r\n<!--End-->"_s),
            qPrintable(page));
        AddPicture(*m_library, m_item, Picture(), {}, [&named](const PagePicture& picture) { named = picture; });
        QCOMPARE(named.Source, u"1/ein-Bild(1).gif"_s); // the name is taken
        QCOMPARE(FilesOfPage(*m_library, m_item), (QStringList{u"ein-Bild(1).gif"_s, u"ein-Bild.gif"_s}));
    }

    void pictureWithATakenName_getsAnother()
    {
        AddPicture(*m_library, m_item, Picture(), {});
        WriteFile(m_home->Path(u"in/EIN BILD.gif"_s), Gif());
        PagePicture named;
        AddPicture(*m_library, m_item, m_home->Path(u"in/EIN BILD.gif"_s), {},
                   [&named](const PagePicture& picture) { named = picture; });
        QVERIFY(named.Source.compare(u"1/ein-Bild.gif"_s, Qt::CaseInsensitive) != 0);
        QCOMPARE(FilesOfPage(*m_library, m_item).size(), 2);
        QVERIFY(ReadPage(*m_library, m_item).contains(named.Source.toUtf8()));
    }

    void pageWithoutMarks_takesNothing()
    {
        WritePage(*m_library, m_item, "<p>by hand</p>");
        const State before = Look();
        QB_VERIFY_RAISES(AddPicture(*m_library, m_item, Picture(), {}), WrongPageFormatError);
        QB_VERIFY_RAISES(InsertLink(*m_library, m_item, LinkTo(u"x"_s)), WrongPageFormatError);
        QCOMPARE(Look(), before);
    }

    void pictureThatIsNone_isRefused()
    {
        WriteFile(m_home->Path(u"in/none.png"_s), "no picture");
        const State before = Look();
        QB_VERIFY_RAISES(AddPicture(*m_library, m_item, m_home->Path(u"in/none.png"_s), {}), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(AddPicture(*m_library, m_item, m_home->Path(u"in/nowhere.png"_s), {}),
                         ErrorNumber::PathAccess);
        QCOMPARE(Look().Row, before.Row);
        QVERIFY(!QFile::exists(Page()));
    }

    void rowThatCantBeWritten_takesThePageBack()
    {
        WritePage(*m_library, m_item, BuiltInPage(PageTemplate).toUtf8());
        WriteFile(PageFolderOf(*m_library, m_item) + u"pic.png"_s, "p");
        m_clock->AddSeconds(60);
        const QByteArray now = QByteArray::number(Clock::Now().Seconds());
        m_library->Execute(u"CREATE INDEX refuse ON Items (abs(CASE WHEN HTMLLastUpdated = %1 THEN "
                           "-9223372036854775807 - 1 ELSE 0 END))"_s.arg(QString::fromLatin1(now)));
        const State before = Look();
        const std::function<void()> changes[] = {
            [&] { WritePage(*m_library, m_item, "new"); },
            [&] { SetPage(*m_library, m_item, PageOf("<p>z</p>"), m_home->Path(u"in"_s)); },
            [&] { AddPicture(*m_library, m_item, Picture(), {}); },
            [&] { InsertLink(*m_library, m_item, LinkTo(u"x"_s)); },
            [&] { DeletePage(*m_library, m_item); },
        };
        for (const std::function<void()>& change : changes) {
            m_prompts->ExpectError();
            QB_VERIFY_RAISES(change(), ErrorNumber::Engine);
            QCOMPARE(Look(), before);
        }
    }

    void editedPageWhoseRowCantBeWritten_isKeptAside()
    {
        WritePage(*m_library, m_item, "old");
        m_clock->AddSeconds(60);
        m_library->Execute(u"CREATE INDEX refuse ON Items (abs(CASE WHEN HTMLLastUpdated = %1 THEN "
                           "-9223372036854775807 - 1 ELSE 0 END))"_s.arg(Clock::Now().Seconds()));
        WriteFile(Page(), "an afternoon's work"); // by the editor
        m_prompts->ExpectError();
        const QString raised = Raised([&] { NotePageChanged(*m_library, m_item, "old"); });
        QVERIFY2(raised.contains(u"1 not stored.htm"_s), qPrintable(raised));
        QCOMPARE(ReadFile(Page()), "old");
        QCOMPARE(ReadFile(m_library->HTMLFolder() + u"1 not stored.htm"_s), "an afternoon's work");
        m_library->Execute(u"DROP INDEX refuse"_s);
        WriteFile(Page(), "new");
        NotePageChanged(*m_library, m_item, "old");
        QCOMPARE(ReadFile(Page()), "new");
        QCOMPARE(Row(), u"1 now now"_s);
    }

    void fullDisk_changesNothing()
    {
        WritePage(*m_library, m_item, "old");
        const QByteArray large(3'000'000, 'x');
        const State before = Look();
        {
            const FileSizeLimit full(2'000'000);
            QB_VERIFY_RAISES(WritePage(*m_library, m_item, large), ErrorNumber::PathAccess);
        }
        QCOMPARE(Look(), before);
    }

    void libraryThatCanOnlyBeRead_isLeftAlone()
    {
        WritePage(*m_library, m_item, "old");
        const QString path = m_library->Name();
        m_library.reset();
        m_library = Library::Open(path, DBEngine::Access::ReadOnly);
        const State before = Look();
        QB_VERIFY_RAISES(WritePage(*m_library, m_item, "new"), ErrorNumber::ValueNotAllowed);
        QB_VERIFY_RAISES(DeletePage(*m_library, m_item), ErrorNumber::ValueNotAllowed);
        QCOMPARE(Look(), before);
    }

    void barredChange_makesNothingOnTheDisk_data()
    {
        QTest::addColumn<QString>("state");
        QTest::newRow("read-only") << QString();
        QTest::newRow("deleted by a child") << u"UPDATE Items SET LastChanged = 0"_s;
    }
    void barredChange_makesNothingOnTheDisk()
    {
        QFETCH(QString, state);
        const QString folder = m_library->HTMLFolder();
        MakeMother(*m_library, Date());
        if (!state.isEmpty())
            m_library->Execute(state);
        const QString path = m_library->Name();
        m_library.reset();
        m_library = Library::Open(path, state.isEmpty() ? DBEngine::Access::ReadOnly : DBEngine::Access::ReadWrite);
        DeleteFolder(folder);
        QB_VERIFY_RAISES(WritePage(*m_library, m_item, "new"), ErrorNumber::ValueNotAllowed);
        QB_VERIFY_RAISES(EnsureHTMLFileExists(*m_library, m_item), ErrorNumber::ValueNotAllowed);
        QVERIFY(!QFile::exists(folder));
        WriteFile(folder + u"1.htm"_s, "a page");
        QB_VERIFY_RAISES(EnsureHTMLFileExists(*m_library, m_item), ErrorNumber::ValueNotAllowed);
        QCOMPARE(ContentsOf(folder), (QMap<QString, QByteArray>{{u"1.htm"_s, "a page"}}));
        WriteFile(folder + u"1.htm"_s, "an edited page");
        QB_VERIFY_RAISES(NotePageChanged(*m_library, m_item, "a page"), ErrorNumber::ValueNotAllowed);
        QCOMPARE(ReadFile(folder + u"1.htm"_s), "a page");
        QCOMPARE(ReadFile(folder + u"1 not stored.htm"_s), "an edited page");
    }

    void pageThatIsALinkOrNoFile_isNeitherReadNorChanged()
    {
        const QString secret = m_home->Path(u"secret.txt"_s);
        WriteFile(secret, "<!--Start--></td>");
        QVERIFY(QDir().mkpath(m_library->HTMLFolder()));
        QVERIFY(QFile::link(secret, Page()));
        QB_VERIFY_RAISES(ReadPage(*m_library, m_item), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(InsertLink(*m_library, m_item, LinkTo(u"x"_s)), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(ExportPage(*m_library, m_item, m_home->Path(u"out"_s)), ErrorNumber::PathAccess);
        QCOMPARE(ReadFile(secret), "<!--Start--></td>");
        QFile::remove(Page());
        QCOMPARE(::mkfifo(QFile::encodeName(Page()).constData(), 0600), 0);
        QB_VERIFY_RAISES(ReadPage(*m_library, m_item), ErrorNumber::PathAccess); // which nobody waits for
        DeletePage(*m_library, m_item);
        QVERIFY(!QFileInfo::exists(Page()));
    }

    void pageInAnyEncoding_keepsItsBytes_data()
    {
        QTest::addColumn<QByteArray>("begin");
        QTest::addColumn<QByteArray>("end");
        const auto wide = [](const QString& text) {
            return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
        };
        QTest::newRow("windows-1252") << QByteArray("<meta charset=windows-1252><p>\xe4\x80\x99 ")
                                      << QByteArray("</p>\r\n<!--End-->\xfc");
        QTest::newRow("UTF-16") << QByteArray("\xff\xfe" + wide(u"<p>Äpfel "_s)) << wide(u"</p>\r\n<!--End-->ü"_s);
        QTest::newRow("no html element") << QByteArray("text ") << QByteArray("</p>\r\n<!--End-->");
        QTest::newRow("50 MB") << QByteArray(50'000'000, 'x') << QByteArray("</p>\r\n<!--End-->");
    }
    void pageInAnyEncoding_keepsItsBytes()
    {
        QFETCH(QByteArray, begin);
        QFETCH(QByteArray, end);
        WritePage(*m_library, m_item, begin + end);
        InsertLink(*m_library, m_item, LinkTo(u"example.org"_s, u"Überall"_s));
        const QByteArray page = ReadPage(*m_library, m_item);
        QVERIFY(page.startsWith(begin));
        QVERIFY(page.endsWith(end));
        QVERIFY(page.size() > begin.size() + end.size());
    }

    void pageThatIsSet_bringsItsFolderAlong()
    {
        WritePage(*m_library, m_item, "old");
        WriteFile(PageFolderOf(*m_library, m_item) + u"old.png"_s, "o");
        WriteFile(m_home->Path(u"pics ä/a/b.gif"_s), Gif());
        QVERIFY(QFile::link(u"/etc/passwd"_s, m_home->Path(u"pics ä/link"_s)));
        const QString file = PageOf("<img src=\"pics/a/b.gif\"><img src='other/a/b.gif'>");
        SetPage(*m_library, m_item, file); // without a folder the files stay
        QCOMPARE(FilesOfPage(*m_library, m_item), QStringList{u"old.png"_s});
        QVERIFY(QDir().rename(m_home->Path(u"pics ä"_s), m_home->Path(u"pics"_s)));
        SetPage(*m_library, m_item, file, m_home->Path(u"pics"_s) + u'/');
        QCOMPARE(FilesOfPage(*m_library, m_item), QStringList{u"a/b.gif"_s});
        QCOMPARE(ReadPage(*m_library, m_item), "<img src=\"1/a/b.gif\"><img src='other/a/b.gif'>");
    }

    void fileThatIsNoText_isNoPage()
    {
        QB_VERIFY_RAISES(SetPage(*m_library, m_item, PageOf(QByteArray("a\0b", 3))), ErrorNumber::ValueNotAllowed);
        QB_VERIFY_RAISES(SetPage(*m_library, m_item, m_home->Path(u"in"_s)), ErrorNumber::PathAccess);
        QVERIFY(!QFile::exists(Page()));
    }

    void pageThatHasGone_isForgottenUnlessItIsOnItsWay()
    {
        WritePage(*m_library, m_item, "page");
        QVERIFY(!ForgetMissingPage(*m_library, m_item));
        QFile::remove(Page());
        m_clock->AddSeconds(60);
        QVERIFY(ForgetMissingPage(*m_library, m_item));
        QCOMPARE(Row(), u"0 then then"_s);
        QVERIFY(!ForgetMissingPage(*m_library, m_item));
        PageChanges change(*m_library);
        Transaction transaction(*m_library);
        WriteFile(change.PageFile(m_item), "page");
        change.Bind(m_item, PageChanges::Kind::Add);
        m_library->Execute(u"UPDATE Items SET HTMLPage = ? WHERE ID = ?"_s, {true, m_item});
        transaction.Commit(); // the page comes when the library is opened next, or now
        QVERIFY(!QFile::exists(Page()));
        QVERIFY(!ForgetMissingPage(*m_library, m_item));
        QCOMPARE(Row().left(1), u"1"_s);
    }

    void export_bringsThePicturesOfTheTemplate_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<bool>("refers");
        QTest::newRow("slash") << "<img src='default2/in/logo.png'>"_ba << true;
        QTest::newRow("backslash") << "<img src=default2\\in\\logo.png>"_ba << true;
        QTest::newRow("UTF-16") << QByteArray("\xfe\xff\0d\0e\0f\0a\0u\0l\0t\0002\0/", 20) << true;
        QTest::newRow("another page") << "<img src='1/logo.png'> default2 "_ba << false;
    }
    void export_bringsThePicturesOfTheTemplate()
    {
        QFETCH(QByteArray, page);
        QFETCH(bool, refers);
        WriteFile(m_library->HTMLFolder() + u"default2/in/logo.png"_s, Gif());
        WriteFile(m_library->HTMLFolder() + u"default/other.png"_s, Gif());
        WritePage(*m_library, m_item, page);
        QMap<QString, QByteArray> wanted{{u"1.htm"_s, page}};
        if (refers)
            wanted.insert(u"default2/in/logo.png"_s, Gif());
        const QString out = m_home->Path(u"out"_s);
        QCOMPARE(ExportPage(*m_library, m_item, out), int(wanted.size()));
        QMap<QString, QByteArray> made = ContentsOf(out);
        made.removeIf([](const auto& entry) { return entry.key().endsWith(u'/'); });
        QCOMPARE(made, wanted);
    }

    void export_wantsAFolderOfItsOwn()
    {
        const QString out = m_home->Path(u"out"_s);
        AddPicture(*m_library, m_item, Picture(), {});
        QCOMPARE(ExportPage(*m_library, m_item, out), 2);
        QCOMPARE(ReadFile(out + u"/1/ein-Bild.gif"_s), Gif());
        QCOMPARE(ReadFile(out + u"/1.htm"_s), ReadFile(Page()));
        QVERIFY(QFile::remove(out + u"/1.htm"_s));
        const QMap<QString, QByteArray> before = ContentsOf(out);
        QB_VERIFY_RAISES(ExportPage(*m_library, m_item, out), ErrorNumber::PathAccess);
        QCOMPARE(ContentsOf(out), before);
    }

    // The file of default pages

    void defaultPages_travelByTheirFile()
    {
        CreateDefaultHTMLItems(m_library->HTMLFolder());
        WriteFile(m_library->HTMLFolder() + u"default2.htm"_s, "mine");
        WriteFile(m_library->HTMLFolder() + u"default2/sub/bild ä.gif"_s, Gif());
        WriteFile(m_library->HTMLFolder() + u"default/logo.gif"_s, Gif());
        WriteDefaultPages(m_library->HTMLFolder(), DefaultsFile());
        QVERIFY(ReadFile(DefaultsFile()).contains("sub\\bild"));
        const QString other = m_home->Path(u"other_HTML/"_s);
        CreateDefaultHTMLItems(other);
        QCOMPARE(ReadFile(other + u"default2.htm"_s), "mine");
        QCOMPARE(ReadFile(other + u"default2/sub/bild ä.gif"_s), Gif());
        QCOMPARE(QString::fromUtf8(ReadFile(other + u"default.htm"_s)), BuiltInPage(WelcomePage));
        QFile::remove(other + u"default2.htm"_s);
        WriteFile(other + u"default.htm"_s, "stays");
        QVERIFY(QDir(other + u"default"_s).removeRecursively());
        CreateDefaultHTMLItems(other);
        QVERIFY(!QFile::exists(other + u"default/logo.gif"_s)); // which is the other page's
        QCOMPARE(ReadFile(other + u"default2.htm"_s), "mine");
        QCOMPARE(ReadFile(other + u"default.htm"_s), "stays");
    }

    void fileOfDefaultPagesThatIsCut_isToldAndNotUsed_data()
    {
        QTest::addColumn<int>("left"); // bytes of it; -1: something else
        for (const int left : {0, 2, 4, 9, 40, 400})
            QTest::addRow("%d bytes", left) << left;
        QTest::newRow("foreign") << -1;
    }
    void fileOfDefaultPagesThatIsCut_isToldAndNotUsed()
    {
        QFETCH(int, left);
        CreateDefaultHTMLItems(m_library->HTMLFolder());
        WriteDefaultPages(m_library->HTMLFolder(), DefaultsFile());
        WriteFile(DefaultsFile(), left < 0 ? QByteArray("\x7f"
                                                        "ELF and so on")
                                                 .repeated(100)
                                           : ReadFile(DefaultsFile()).left(left));
        const QString other = m_home->Path(u"other_HTML/"_s);
        m_prompts->ExpectError();
        CreateDefaultHTMLItems(other);
        QVERIFY2(m_prompts->Errors.last().contains(u"is no file of default pages, or is damaged"_s),
                 qPrintable(m_prompts->Errors.last()));
        QCOMPARE(QString::fromUtf8(ReadFile(other + u"default2.htm"_s)), BuiltInPage(PageTemplate));
        QCOMPARE(QDir(other).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
                 (QStringList{u"default.htm"_s, u"default2.htm"_s}));
    }

    void fileOfDefaultPagesThatIsAnother_isToldAndNotUsed_data()
    {
        QTest::addColumn<qint32>("pages");
        QTest::addColumn<QStringList>("files"); // of each
        QTest::newRow("as it is to be") << 2 << QStringList{u"default.htm sub\\a.gif"_s, u"default2.htm"_s};
        QTest::newRow("one page") << 1 << QStringList{u"default.htm"_s};
        QTest::newRow("three pages") << 3 << QStringList{u"default.htm"_s, u"default2.htm"_s, u"default3.htm"_s};
        QTest::newRow("a page without a file") << 2 << QStringList{u"default.htm"_s, u""_s};
        QTest::newRow("a file ahead of its page") << 2 << QStringList{u"a.gif default.htm"_s, u"default2.htm"_s};
        QTest::newRow("in another order") << 2 << QStringList{u"default2.htm"_s, u"default.htm"_s};
    }
    void fileOfDefaultPagesThatIsAnother_isToldAndNotUsed()
    {
        QFETCH(qint32, pages);
        QFETCH(QStringList, files);
        QDir().mkpath(ApplicationFolder());
        {
            BranchWriter stream(DefaultsFile(), pages);
            for (const QString& page : files) {
                const QStringList names = page.split(u' ', Qt::SkipEmptyParts);
                stream.WriteCount(qint32(names.size()));
                for (const QString& name : names) {
                    QFile content(PageOf("mine"));
                    QVERIFY(content.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
                    stream.Write(BranchPage{.Name = name, .Modified = Clock::Now(), .Number = 0, .Size = 4});
                    stream.WriteContents(content, 4, NoWork());
                }
            }
            stream.Close();
        }
        const bool isRight = QLatin1StringView(QTest::currentDataTag()) == "as it is to be"_L1;
        if (!isRight)
            m_prompts->ExpectError();
        const QString other = m_home->Path(u"other_HTML/"_s);
        CreateDefaultHTMLItems(other);
        QCOMPARE(ReadFile(other + u"default2.htm"_s), isRight ? "mine" : BuiltInPage(PageTemplate).toUtf8());
        QCOMPARE(QFile::exists(other + u"default/sub/a.gif"_s), isRight);
    }

    void fileOfDefaultPages_namesNothingElsewhere()
    {
        CreateDefaultHTMLItems(m_library->HTMLFolder());
        WriteFile(m_library->HTMLFolder() + u"default2/xxxxxxxx"_s, "evil");
        WriteDefaultPages(m_library->HTMLFolder(), DefaultsFile());
        QByteArray bytes = ReadFile(DefaultsFile());
        QCOMPARE(bytes.count("xxxxxxxx"), 1);
        for (const QByteArray& name : {"..\\..\\ev"_ba, "/tmp/evi"_ba}) {
            WriteFile(DefaultsFile(), QByteArray(bytes).replace("xxxxxxxx", name));
            const QString other = m_home->Path(u"deep/er/other_HTML/"_s);
            m_prompts->ExpectError();
            CreateDefaultHTMLItems(other);
            QVERIFY(!ContentsOf(m_home->Path()).keys().join(u' ').contains(u"/ev"_s));
            QDir(other).removeRecursively();
        }
    }

private:
    struct State {
        QString Row;
        QMap<QString, QByteArray> Files;
        bool operator==(const State& other) const = default;
    };
    State Look()
    {
        return {
            Texts(*m_library, u"SELECT quote(HTMLPage) || quote(HTMLLastUpdated) || quote(LastChanged) FROM Items"_s)
                .join(u' '),
            ContentsOf(m_library->HTMLFolder())};
    }
    QString Page() const { return PageFileOf(*m_library, m_item); }
    QString Picture() const { return m_home->Path(u"in/ein Bild.gif"_s); }
    static QString DefaultsFile() { return ApplicationFolder() + DefaultPagesFile; }
    QString PageOf(const QByteArray& bytes) const
    {
        WriteFile(m_home->Path(u"in/page.htm"_s), bytes);
        return m_home->Path(u"in/page.htm"_s);
    }
    /// Whether the row has a page, and when page and item were changed.
    QString Row()
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        const auto moment = [](Date date) { return date == Clock::Now() ? u" now"_s : u" then"_s; };
        return QString::number(item.HTMLPage()) + moment(item.HTMLLastUpdated()) + moment(item.LastChanged());
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;
};

QB_TEST_MAIN(TestItemPages)
#include "tst_item_pages.moc"
