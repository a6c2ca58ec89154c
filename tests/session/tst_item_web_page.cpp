#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Paths.h"
#include "session/ItemWebPage.h"
#include "store/PageChanges.h"
#include "support/FolderContents.h"
#include "support/TestSession.h"
#include "web/WebPages.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray Gif()
{
    return QByteArray::fromHex(
        "47494638396101000100800000ffffff00000021f90401000000002c00000000010001000002024401003b");
}

/// The window's components, as the test has them answer.
class FakeComponents : public PageComponents {
public:
    PageOutcome Edit(const QString& path) override
    {
        Edited << path;
        return WhileEdited ? WhileEdited(path) : PageOutcome();
    }
    std::optional<ChosenPicture> ChoosePicture(const PicturePlace& place) override
    {
        if (!Chooses)
            return std::nullopt;
        Kept = KeepPictureBytes(place, u"tree.gif"_s, Gif());
        return ChosenPicture{Kept, 30, 20};
    }
    std::optional<PageLink> ChooseLink(const QString& address) override
    {
        Preset = address;
        return Link;
    }

    QStringList Edited;
    std::function<PageOutcome(const QString& path)> WhileEdited;
    bool Chooses = true;
    KeptPicture Kept;
    QString Preset;
    std::optional<PageLink> Link;
};

} // namespace

/// Which page the Links tab shows of an item.
class TestItemWebPage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        Library& database = s->OpenLibrary();
        m_item = AddItem(database, 0, u"item"_s);
        AddItem(database, 0, u"other"_s);
        s->State.oCodeItem = std::make_unique<CCodeItem>();
        s->Tree.FillTree();
        m_page = std::make_unique<ItemWebPage>(s->State, s->Details, s->CommandStates);
        auto components = std::make_unique<FakeComponents>();
        m_components = components.get();
        m_page->SetComponents(std::move(components));
        m_page->Address = [this] { return m_address; };
        m_page->Reload = [this] { ++m_reloads; };
        m_address = u"local://Item1"_s;
        m_reloads = 0;
    }
    void cleanup()
    {
        m_page.reset();
        s.reset();
    }

    void itemWithoutPage_showsTheTemplate()
    {
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses, QStringList{u"quillbase-page://library/default2.htm"_s});
        QVERIFY(QFile::exists(s->State.CurrentHTMLFolder() + u"default2.htm"_s)); // made because it was missing
        QVERIFY(QFile::exists(s->State.CurrentHTMLFolder() + u"default.htm"_s));
    }

    void itemWithPage_showsIt()
    {
        GivePage();
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses, QStringList{u"quillbase-page://library/%1.htm"_s.arg(m_item)});
    }

    void tabShownAgain_keepsWhereTheUserWent()
    {
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses.size(), 1);
        s->Click(u"other"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses.size(), 2);
        m_page->DisplayDefaultHTMLPage(); // home
        QCOMPARE(s->Details.Addresses.size(), 3);
    }

    void pageWhoseFileIsGone_isForgotten()
    {
        GivePage();
        QFile::remove(PageFile());
        const Date changed =
            s->State.CurrentDatabase->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_item}).ToDate();
        s->Time.AddSeconds(60);
        s->Click(u"item"_s);
        QVERIFY(s->Details.Links);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses, QStringList{u"quillbase-page://library/default2.htm"_s});
        QVERIFY(!s->Details.Links);
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), false);
        QCOMPARE(Read(u"LastChanged"_s).ToDate(), changed);
    }

    void pageWhoseFileIsGone_ofALibraryThatCanOnlyBeRead_staysNoted()
    {
        GivePage();
        QFile::remove(PageFile());
        OpenForReading();
        const QByteArray before = ReadFile(s->State.CurrentDatabase->Name());
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses.last(), u"quillbase-page://library/default2.htm"_s);
        QVERIFY(s->State.oCodeItem->HTMLPage());
        QCOMPARE(ReadFile(s->State.CurrentDatabase->Name()), before);
    }

    void libraryThatCanOnlyBeRead_getsNoFiles()
    {
        LeavePageOnItsWay();
        OpenForReading();
        const QString folder = s->State.CurrentDatabase->HTMLFolder();
        QFile::remove(folder + PageTemplate);
        QFile::remove(folder + WelcomePage);
        const QMap<QString, QByteArray> before = ContentsOf(folder);
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(ContentsOf(folder), before);
        QCOMPARE(s->Details.Addresses.last(), u"quillbase-page://library/default2.htm"_s);
    }

    void pageThatIsOnItsWay_isPutInPlaceAndShown()
    {
        LeavePageOnItsWay();
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(ReadFile(PageFile()), "page");
        QCOMPARE(s->Details.Addresses.last(), u"quillbase-page://library/%1.htm"_s.arg(m_item));
        QVERIFY(Read(u"HTMLPage"_s).ToBoolean());
    }

    void pageWhoseFileIsGone_ofAChangedItem_isForgottenWhenItIsSaved()
    {
        GivePage();
        QFile::remove(PageFile());
        s->Click(u"item"_s);
        s->Details.Type(u"typed"_s);
        m_page->LinksTabShown();
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), true);
        QVERIFY(s->State.oCodeItem->ItemChanged());
        QVERIFY(s->Details.SaveItem());
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), false);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s).ToText()), u"typed"_s);
    }

    // Editing

    void itemWithoutPage_getsOneToBeEdited()
    {
        s->Click(u"item"_s);
        s->Time.AddSeconds(60);
        QStringList shown;
        m_page->RowChanged = [&] { shown << QString::number(s->State.oCodeItem->HTMLPage()); };
        Run(u"mnuWebEditPage"_s);
        QCOMPARE(m_components->Edited, QStringList{PageFile()});
        QCOMPARE(QString::fromUtf8(ReadFile(PageFile())), BuiltInPage(PageTemplate));
        QVERIFY(s->Details.Links);
        QCOMPARE(shown, QStringList{u"1"_s});
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), true);
        QCOMPARE(Read(u"HTMLLastUpdated"_s).ToDate(), Clock::Now());
        QCOMPARE(Read(u"LastChanged"_s).ToDate(), Clock::Now());
        QCOMPARE(m_reloads, 0); // nothing was edited
    }

    void editedPage_movesTheDatesAndIsLoadedAnew_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<int>("reloads");
        QTest::newRow("page of the library") << u"local://Item1"_s << 1;
        QTest::newRow("page of the web") << u"http://example.org/"_s << 0;
    }
    void editedPage_movesTheDatesAndIsLoadedAnew()
    {
        QFETCH(QString, address);
        GivePage();
        s->Click(u"item"_s);
        m_address = address;
        s->Time.AddSeconds(60);
        m_components->WhileEdited = [](const QString& path) {
            WriteFile(path, "edited");
            return PageOutcome{false, true};
        };
        Run(u"mnuWebEditPage"_s);
        QCOMPARE(Read(u"HTMLLastUpdated"_s).ToDate(), Clock::Now());
        QCOMPARE(s->State.oCodeItem->HTMLLastUpdated(), Clock::Now());
        QTEST(m_reloads, "reloads");
    }

    void unchangedPage_movesNoDate()
    {
        GivePage();
        s->Click(u"item"_s);
        const Date before = Read(u"LastChanged"_s).ToDate();
        s->Time.AddSeconds(60);
        Run(u"mnuWebEditPage"_s);
        QCOMPARE(Read(u"LastChanged"_s).ToDate(), before);
        QCOMPARE(m_reloads, 0);
    }

    void textsThatAreNotSaved_stayAsTheyAre()
    {
        GivePage();
        s->Click(u"item"_s);
        s->Details.Type(u"typed"_s);
        m_components->WhileEdited = [](const QString& path) {
            WriteFile(path, "edited");
            return PageOutcome{false, true};
        };
        Run(u"mnuWebEditPage"_s);
        QCOMPARE(s->Details.Typed(), u"typed"_s);
        QVERIFY(s->State.oCodeItem->ItemChanged());
        QVERIFY(s->Details.SaveItem());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s).ToText()), u"typed"_s);
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), true);
    }

    void emptiedPage_goesAfterAQuestion_data()
    {
        QTest::addColumn<MsgBoxResult>("answer");
        QTest::newRow("yes") << MsgBoxResult::Yes;
        QTest::newRow("no") << MsgBoxResult::No;
    }
    void emptiedPage_goesAfterAQuestion()
    {
        QFETCH(MsgBoxResult, answer);
        GivePage();
        s->Click(u"item"_s);
        s->Time.AddSeconds(60);
        m_components->WhileEdited = [](const QString& path) {
            WriteFile(path, "");
            return PageOutcome{true, true};
        };
        s->Script.ExpectMsgBox(u"Delete Web Page"_s, answer);
        Run(u"mnuWebEditPage"_s);
        QCOMPARE(QFile::exists(PageFile()), answer == MsgBoxResult::No);
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), answer == MsgBoxResult::No);
        QCOMPARE(Read(u"HTMLLastUpdated"_s).ToDate(), Clock::Now());
    }

    void deletedPage_isAskedAbout()
    {
        GivePage();
        WriteFile(s->State.CurrentHTMLFolder() + QString::number(m_item) + u"/own.png"_s, "p");
        s->Click(u"item"_s);
        m_page->ShowCommands();
        s->Script.ExpectMsgBox(u"Delete Web Page"_s, MsgBoxResult::No);
        Run(u"mnuWebDeletePage"_s);
        QVERIFY(QFile::exists(PageFile()));
        s->Time.AddSeconds(60);
        s->Script.ExpectMsgBox(u"Delete Web Page"_s, MsgBoxResult::Yes);
        Run(u"mnuWebDeletePage"_s);
        QVERIFY(!QFile::exists(PageFile()));
        QVERIFY(!QFileInfo::exists(s->State.CurrentHTMLFolder() + QString::number(m_item)));
        QVERIFY(!s->Details.Links);
        QCOMPARE(Read(u"HTMLLastUpdated"_s).ToDate(), Clock::Now());
        QCOMPARE(s->Details.Addresses.last(), u"quillbase-page://library/default2.htm"_s);
        QVERIFY(!s->Enabled(u"mnuWebDeletePage"_s)); // there is none any more
    }

    // Insertions

    void firstPicture_makesThePage()
    {
        s->Click(u"item"_s);
        Run(u"mnuWebInsertPicture"_s);
        const QString page = QString::fromUtf8(ReadFile(PageFile()));
        QVERIFY2(page.contains(u"src=\"%1/tree.gif\" width=\"30\" height=\"20\"> </p>\r\n<!--End-->"_s.arg(m_item)),
                 qPrintable(page));
        QCOMPARE(s->Details.Addresses.last(), u"quillbase-page://library/%1.htm"_s.arg(m_item));
        QVERIFY(s->Details.Links);
    }

    void pictureThatIsNotWanted_leavesThePage()
    {
        GivePage();
        s->Click(u"item"_s);
        m_components->Chooses = false;
        Run(u"mnuWebInsertPicture"_s);
        QCOMPARE(ReadFile(PageFile()), "<p>page</p>");
        QVERIFY(s->Details.Addresses.isEmpty());
    }

    void pageOfAnotherFormat_isToldAndTakesNothing()
    {
        WriteFile(ApplicationFolder() + u"KTQBLinks.txt"_s, "Quillbase BugReport=http://bugs.example.org/\n");
        GivePage();
        s->Click(u"item"_s);
        s->Script.ExpectMsgBox(WrongPageFormat);
        Run(u"mnuWebInsertPicture"_s);
        QCOMPARE(ReadFile(PageFile()), "<p>page</p>");
        QVERIFY(!QFile::exists(m_components->Kept.Path)); // the picture is gone again
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Critical);
        QCOMPARE(s->Script.Messages.last().Text,
                 u"The link could not be created. Please contact Brindleton Software on http://bugs.example.org/"_s);
        m_components->Link = PageLink{u"example.org"_s, {}, {}, {}};
        s->Script.ExpectMsgBox(WrongPageFormat);
        Run(u"mnuWebInsertLink"_s);
        QCOMPARE(ReadFile(PageFile()), "<p>page</p>");
    }

    void link_beginsWithWhatIsShownOfTheWeb()
    {
        s->Click(u"item"_s);
        Run(u"mnuWebInsertLink"_s);
        QCOMPARE(m_components->Preset, QString()); // a page of the library is shown
        m_address = u"http://example.org/a"_s;
        m_components->Link = PageLink{m_address, u"there"_s, u"see"_s, {}};
        const qsizetype shown = s->Details.Addresses.size();
        Run(u"mnuWebInsertLink"_s);
        QCOMPARE(m_components->Preset, m_address);
        QVERIFY(ReadFile(PageFile()).contains("see <a href=\"http://example.org/a\">there</a>"));
        QCOMPARE(s->Details.Addresses.size(), shown); // the page of the web stays
    }

    void pictureThatCantBeStored_isTakenBack()
    {
        s->Click(u"item"_s);
        Run(u"mnuWebEditPage"_s); // which makes the page
        s->Time.AddSeconds(60);
        s->State.CurrentDatabase->Execute(u"CREATE INDEX refuse ON Items (abs(CASE WHEN HTMLLastUpdated = %1 THEN "
                                          "-9223372036854775807 - 1 ELSE 0 END))"_s.arg(Clock::Now().Seconds()));
        const QByteArray before = ReadFile(PageFile());
        s->Script.ExpectError();
        s->Script.ExpectError();
        Run(u"mnuWebInsertPicture"_s);
        QCOMPARE(ReadFile(PageFile()), before);
        QVERIFY(!QFile::exists(m_components->Kept.Path));
    }

    void commands_areBarredAsTheItemStands_data()
    {
        QTest::addColumn<ItemStanding>("standing");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("plain") << ItemStanding{} << true;
        QTest::newRow("read-only") << ItemStanding{.ReadOnly = true} << false;
        QTest::newRow("no library") << ItemStanding{.NoLibrary = true} << false;
        QTest::newRow("file gone") << ItemStanding{.FileGone = true} << false;
        QTest::newRow("root") << ItemStanding{.Root = true} << false;
        QTest::newRow("orphan in a child") << ItemStanding{.IsChild = true, .Orphan = true} << false;
        QTest::newRow("orphan in a mother") << ItemStanding{.IsMother = true, .Orphan = true} << true;
        QTest::newRow("deleted by a child") << ItemStanding{.IsMother = true, .Deleted = true} << false;
        QTest::newRow("waiting") << ItemStanding{.IsChild = true, .Waiting = true} << false;
        QTest::newRow("exported child") << ItemStanding{.IsChild = true, .Exported = true} << true; // as its texts
    }
    void commands_areBarredAsTheItemStands()
    {
        QFETCH(ItemStanding, standing);
        GivePage();
        s->Click(u"item"_s);
        m_page->ShowCommands();
        s->CommandStates.SetStanding(standing);
        for (const QString& command :
             {u"mnuWebEditPage"_s, u"mnuWebInsertPicture"_s, u"mnuWebInsertLink"_s, u"mnuWebDeletePage"_s})
            QTEST(s->Enabled(command), "allowed");
    }

    // The file of default pages

    void defaultFile_isWrittenFromTheLibrary()
    {
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        WriteFile(s->State.CurrentHTMLFolder() + u"default2.htm"_s, "mine");
        const QString file = s->Home.Path(u"d.qhd"_s);
        WriteFile(file, "what stood there");
        s->Script.ExpectFileName(u"Enter file name"_s, file);
        m_page->ShowCommands();
        Run(u"mnuHTMLDefaultItem"_s);
        QCOMPARE(s->Script.Questions.last().Filter, u"Quillbase HTML Defaults|*.qhd"_s);
        QVERIFY(ReadFile(file).contains("mine"));
        QVERIFY(QFile::remove(s->State.CurrentHTMLFolder() + u"default.htm"_s)); // which is made first
        s->Script.ExpectFileName(u"Enter file name"_s, file);
        Run(u"mnuHTMLDefaultItem"_s);
        QVERIFY(ReadFile(file).contains("mine"));
        QVERIFY(ReadFile(file).contains(BuiltInPage(WelcomePage).toUtf8()));
        s->Script.ExpectFileName(u"Enter file name"_s, {});
        Run(u"mnuHTMLDefaultItem"_s);
    }

    void typedAddress_isNavigatedTo()
    {
        m_page->NavigateFromCombo(u" example.org "_s);
        QCOMPARE(s->Details.Addresses, QStringList{u"example.org"_s});
    }

    void noLibrary_showsNothing()
    {
        s->State.CurrentDatabase.reset();
        m_page->LinksTabShown();
        QVERIFY(s->Details.Addresses.isEmpty());
    }

private:
    void Run(const QString& command)
    {
        QVERIFY2(s->Enabled(command), qPrintable(command));
        s->CommandStates.Run(command);
    }
    QString PageFile() const { return s->State.CurrentHTMLFolder() + QString::number(m_item) + u".htm"_s; }
    /// As somebody leaves it whose process ends behind the commit.
    void LeavePageOnItsWay()
    {
        const QString kept = s->Home.Path(u"kept"_s);
        QString folder;
        {
            PageChanges change(*s->State.CurrentDatabase);
            Transaction transaction(*s->State.CurrentDatabase);
            WriteFile(change.PageFile(m_item), "page");
            change.Bind(m_item, PageChanges::Kind::Add);
            s->State.CurrentDatabase->Execute(u"UPDATE Items SET HTMLPage = ? WHERE ID = ?"_s, {true, m_item});
            transaction.Commit();
            folder = QDir::cleanPath(change.Folder() + u".."_s);
            QVERIFY(QDir().rename(folder, kept));
        }
        QVERIFY(QDir().rename(kept, folder));
        QVERIFY(!QFile::exists(PageFile()));
    }
    void OpenForReading()
    {
        const QString path = s->State.CurrentDatabase->Name();
        s->State.oCodeItem = std::make_unique<CCodeItem>();
        s->State.CurrentDatabase.reset();
        s->State.CurrentDatabase = Library::Open(path, DBEngine::Access::ReadOnly);
        s->Tree.FillTree();
    }
    void GivePage()
    {
        WriteFile(PageFile(), "<p>page</p>");
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET HTMLPage = ? WHERE ID = ?"_s, {true, m_item});
    }
    Value Read(const QString& column)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE ID = ?"_s, {m_item});
    }

    std::unique_ptr<TestSession> s;
    std::unique_ptr<ItemWebPage> m_page;
    FakeComponents* m_components = nullptr;
    QString m_address;
    int m_reloads = 0;
    qint64 m_item = 0;
};

QTEST_GUILESS_MAIN(TestItemWebPage)
#include "tst_item_web_page.moc"
