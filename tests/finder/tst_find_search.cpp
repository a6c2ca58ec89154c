#include "finder/ContextColours.h"
#include "finder/FindHitList.h"
#include "finder/FindMemory.h"
#include "finder/Finding.h"
#include "store/CCodeItem.h"
#include "support/FakeFindHost.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The search while a query is typed, its list, and what becomes of it when it is accepted.
class TestFindSearch : public QObject {
    Q_OBJECT

private:
    static FindQuery QueryFor(const QString& text, FindMode mode = FindMode::Phrase)
    {
        FindQuery query;
        query.Text = text;
        query.Mode = mode;
        return query;
    }
    void Look(const FindQuery& query)
    {
        m_search->Look(query);
        QTRY_VERIFY(!m_search->IsRunning());
    }
    QStringList Listed()
    {
        QStringList rows;
        for (int row = 0; row < m_list->rowCount(); ++row)
            rows << m_list->data(m_list->index(row), Qt::DisplayRole).toString();
        return rows;
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    std::unique_ptr<FindService> m_service;
    std::unique_ptr<FindSearch> m_search;
    std::unique_ptr<FindHitList> m_list;
    std::unique_ptr<FakeFindHost> m_host;
    std::unique_ptr<FindResults> m_results;
    std::unique_ptr<Finding> m_finding;
    qint64 m_a = 0, m_b = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home->Path(u"search ä.qbd"_s), LanguageType::VB);
        m_a = AddItem(*m_library, 0, u"alpha"_s, u"first\r\nsecond needle\r\nthird\r\nfourth"_s);
        m_b = AddItem(*m_library, m_a, u"needle"_s, u"a needle, a needle"_s);
        m_library->Execute(u"UPDATE Items SET Description = 'told', ItemRating = 7 WHERE ID = ?"_s, {m_b});
        m_service = std::make_unique<FindService>();
        m_service->Open(m_library->Name());
        m_search = std::make_unique<FindSearch>(*m_service);
        m_list = std::make_unique<FindHitList>(*m_search);
        m_host = std::make_unique<FakeFindHost>();
        m_results = std::make_unique<FindResults>(*m_host);
        m_finding = std::make_unique<Finding>(*m_search, *m_results, *m_host);
        QTRY_VERIFY(!m_service->IsBusy());
    }
    void cleanup()
    {
        m_finding.reset();
        m_results.reset();
        m_host.reset();
        m_list.reset();
        m_search.reset();
        m_service.reset();
        m_library.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // The search

    void query_givesHitsTheBestFirst()
    {
        Look(QueryFor(u"needle"_s));
        QCOMPARE(m_search->Hits().size(), size_t(2));
        QCOMPARE(m_search->Hits()[0].Id, m_b);
        QCOMPARE(m_search->Places(), 4);
        QVERIFY(m_search->IsComplete());
        QCOMPARE(m_search->StatusText(), u"4 places in 2 items"_s);
        const std::vector<FindResultRow> rows = m_search->Rows();
        QCOMPARE(rows[0].Title, u"needle"_s);
        QCOMPARE(rows[0].Description, u"told"_s);
        QCOMPARE(rows[0].Rating, 7);
        QCOMPARE(FindResults::QuickText(rows[0]), u"needle  (T/C)"_s);
    }

    void nothingFound_isSaid()
    {
        Look(QueryFor(u"haystack"_s));
        QCOMPARE(m_search->StatusText(), u"Nothing was found"_s);
        Look(QueryFor(u"fourth"_s));
        QCOMPARE(m_search->StatusText(), u"1 place in 1 item"_s);
        m_search->Stop();
        QCOMPARE(m_search->StatusText(), QString());
        QVERIFY(m_search->Hits().empty());
        QVERIFY(!m_search->Matcher());
    }

    void invalidExpression_isSaidWithItsPlace()
    {
        Look(QueryFor(u"ab(c"_s, FindMode::Expression));
        QVERIFY2(m_search->StatusText().contains(u"at character 5"_s), qPrintable(m_search->StatusText()));
        QVERIFY(!m_search->IsComplete());
        Look(QueryFor(u"ab"_s, FindMode::Expression));
        QCOMPARE(m_search->Error(), QString());
    }

    void searchThatWasNotDone_saysWhatIsMissing()
    {
        AddItem(*m_library, 0, u"long"_s, QString(300, u'x') + u" y"_s);
        Look(QueryFor(u"(x+x+)+y"_s, FindMode::Expression));
        QVERIFY(!m_search->IsComplete());
        QCOMPARE(m_search->StatusText(),
                 u"Nothing was found. 1 text would have taken the expression too long: there may be more in them"_s);
    }

    void filesThatAreTooLarge_areSaid()
    {
        const qint64 item = AddItem(*m_library, 0, u"logs"_s);
        const QByteArray large(qsizetype(LargestSearchedFile) + 1, 'x');
        AddStoredFile(*m_library, item, u"a.log"_s, large, {});
        Look(QueryFor(u"nowhere"_s));
        QCOMPARE(m_search->StatusText(), u"Nothing was found. 1 file of more than 16 MB was not looked through"_s);
        QVERIFY(m_search->IsComplete());
        AddStoredFile(*m_library, item, u"b.log"_s, large, {});
        Look(QueryFor(u"logs"_s));
        QCOMPARE(m_search->StatusText(), u"1 place in 1 item. 2 files of more than 16 MB were not looked through"_s);
    }

    void timeThatIsUp_isSaid()
    {
        const auto before = std::exchange(FindSearch::Deadline, std::chrono::milliseconds(1));
        const auto back = qScopeGuard([before] { FindSearch::Deadline = before; });
        {
            Transaction transaction(*m_library);
            for (int i = 0; i < 200; ++i)
                AddItem(*m_library, 0, u"long"_s, QString(300, u'x') + u" y"_s);
            transaction.Commit();
        }
        Look(QueryFor(u"(x+x+)+y"_s, FindMode::Expression));
        QVERIFY2(m_search->StatusText().contains(u"The time was up before all texts were looked at"_s),
                 qPrintable(m_search->StatusText()));
        QVERIFY(!m_search->IsComplete());
    }

    void withoutALibrary_thatIsSaid()
    {
        m_service->Close();
        QCOMPARE(m_search->StatusText(), u"No library is open."_s);
        Look(QueryFor(u"x"_s));
        QCOMPARE(m_search->StatusText(), u"No library is open."_s);
    }

    void again_findsWhatHasChanged()
    {
        Look(QueryFor(u"haystack"_s));
        m_library->Execute(u"UPDATE Items SET Code = 'haystack' WHERE ID = ?"_s, {m_a});
        m_search->Again();
        QTRY_VERIFY(!m_search->IsRunning());
        QCOMPARE(m_search->Hits().size(), size_t(1));
    }

    // The list

    void list_groupsPlacesByItem()
    {
        const QAbstractItemModelTester tester(m_list.get());
        Look(QueryFor(u"needle"_s));
        QCOMPARE(Listed(), (QStringList{u"needle  (T/C)"_s, u"T 1: needle"_s, u"C 1: a needle, a needle"_s,
                                        u"C 1: a needle, a needle"_s, u"alpha  (C)"_s, u"C 2: second needle"_s}));
        const FindHitList::Row& place = m_list->At(m_list->index(5));
        QCOMPARE(place.Found.Context, (QStringList{u"first"_s, u"second needle"_s, u"third"_s, u"fourth"_s}));
        QCOMPARE(place.Found.ContextLine, 1);
        QCOMPARE(m_list->PathOf(m_list->At(m_list->index(0))), u"alpha"_s);
        QCOMPARE(m_list->PathOf(place), QString());
        QCOMPARE(m_list->LanguageOf(place), std::optional(QString()));
        QCOMPARE(m_list->LanguageOf(m_list->At(m_list->index(1))), std::nullopt);
        QCOMPARE(m_list->At(m_list->index(3)).Place, 1);
        QCOMPARE(m_list->RowOfItem(m_a), 4);
        QCOMPARE(m_list->RowOfItem(99), -1);
    }

    void manyPlaces_areCountedBehindTheFirst()
    {
        const QString many = u"pin "_s.repeated(30);
        AddItem(*m_library, 0, u"cushion"_s, many);
        Look(QueryFor(u"pin"_s));
        QCOMPARE(m_list->rowCount(), 22);
        QCOMPARE(Listed().last(), u"10 more"_s);
    }

    void manyItems_areListedAsTheyAreAskedFor()
    {
        {
            Transaction transaction(*m_library);
            for (int i = 0; i < 120; ++i)
                AddItem(*m_library, 0, u"pin %1"_s.arg(i));
            transaction.Commit();
        }
        FindHitList list(*m_search); // that nobody else asks for more
        Look(QueryFor(u"pin"_s));
        QCOMPARE(list.rowCount(), 100);
        QVERIFY(list.canFetchMore({}));
        list.fetchMore({});
        list.fetchMore({});
        QCOMPARE(list.rowCount(), 240);
        QVERIFY(!list.canFetchMore({}));
    }

    // Accepting

    void noKeyword_isSaidAndNothingElseHappens()
    {
        Look(QueryFor(u"needle"_s));
        m_finding->Accept(QueryFor(u"needle"_s));
        m_prompts->ExpectMsgBox(u"Missing search phrase"_s);
        m_finding->Accept(QueryFor({}));
        QCOMPARE(m_prompts->Messages.last().Text, u"No keyword entered."_s);
        QCOMPARE(m_prompts->Messages.last().Icon, MsgBoxIcon::Information);
        QCOMPARE(m_results->SearchKeyword(), u"needle"_s);
        QCOMPARE(m_results->rowCount(), 2);
    }

    void acceptedQuery_becomesThatOfTheList()
    {
        QSignalSpy shown(m_finding.get(), &Finding::Shown);
        m_finding->Accept(QueryFor(u"second needle"_s, FindMode::AllWords)); // nobody has looked for it yet
        QCOMPARE(m_results->rowCount(), 0);
        QTRY_COMPARE(shown.size(), 1);
        QCOMPARE(m_results->SearchKeyword(), u"second needle"_s);
        QCOMPARE(m_results->FindMode(), 2);
        QCOMPARE(m_results->rowCount(), 1);
        QCOMPARE(m_results->SelectedRow(), 0);
        QCOMPARE(FindMemory::History(), QStringList{u"second needle"_s});
    }

    void acceptedQueryThatIsWrong_isSaid()
    {
        m_prompts->ExpectMsgBox(u"Find"_s);
        m_finding->Accept(QueryFor(u"("_s, FindMode::Expression));
        QVERIFY(m_prompts->Messages.last().Text.contains(u"not valid"_s));
        QCOMPARE(m_results->SearchKeyword(), QString());
    }

    void openedPlace_isShownAndItsResultsAreThoseOfTheList()
    {
        Look(QueryFor(u"needle"_s));
        m_finding->OpenPlace(m_b, FindField::Code, 1);
        QCOMPARE(m_host->Took(), (QStringList{u"open %1"_s.arg(m_b), u"tab 1"_s, u"place 1 of needle"_s}));
        QCOMPARE(m_results->SelectedRow(), 0);
        QCOMPARE(m_results->SearchKeyword(), u"needle"_s);
        QCOMPARE(m_host->Marked, u"needle"_s);
        m_finding->OpenPlace(m_a, FindField::Title, 0);
        QCOMPARE(m_host->Took(), QStringList{u"open %1"_s.arg(m_a)});
        QCOMPARE(m_results->SelectedRow(), 1);
        m_finding->OpenPlace(99, FindField::Title, 0);
        QCOMPARE(m_host->Took(), QStringList());
        m_finding->OpenPlace(m_b, FindField::FileTexts, 3, 17);
        QCOMPARE(m_host->Took(), (QStringList{u"open %1"_s.arg(m_b), u"tab 4"_s, u"file 17"_s}));
        Look(QueryFor(u"first"_s));
        m_finding->OpenPlace(m_a, FindField::Code, 0);
        QCOMPARE(m_results->rowCount(), 1);
    }

    // What is remembered

    void history_holdsEachTextOnceTheLastFirst()
    {
        for (const QString& text : {u"a"_s, u"b \"x\"\nü"_s, u"a"_s})
            FindMemory::AddToHistory(text);
        FindMemory::AddToHistory({});
        FindMemory::AddToHistory(QString(1001, u'x'));
        QCOMPARE(FindMemory::History(), (QStringList{u"a"_s, u"b \"x\"\nü"_s}));
        for (int i = 0; i < 60; ++i)
            FindMemory::AddToHistory(QString::number(i));
        QCOMPARE(FindMemory::History().size(), 50);
        QCOMPARE(FindMemory::History().first(), u"59"_s);
    }

    void savedSearch_comesBackWithAllOfIt()
    {
        FindQuery query = QueryFor(u"a|b \"c\""_s, FindMode::Expression);
        query.Case = FindCase::Exact;
        query.WholeWord = query.FoldAccents = true;
        query.Fields = BitOf(FindField::Code) | BitOf(FindField::WebPage);
        query.ChangedSince = Date::FromParts(2026, 2, 3);
        query.Status = 4;
        query.Rating = 10;
        query.Language = u"Python"_s;
        query.Branch = 5; // of this library only
        QVERIFY(FindMemory::Save(u"b"_s, query));
        QVERIFY(FindMemory::Save(u"a"_s, {}));
        QVERIFY(FindMemory::Save(u"b"_s, query));
        const std::vector<FindMemory::Saved> saved = FindMemory::SavedFinds();
        QCOMPARE(saved.size(), size_t(2));
        QCOMPARE(saved[0].Name, u"a"_s);
        QCOMPARE(TextOfQuery(saved[1].Query), TextOfQuery(query));
        QCOMPARE(saved[1].Query.Branch, 0);
        QCOMPARE(saved[1].Query.Rating, std::optional<qint32>(10));
        FindMemory::Remove(u"b"_s);
        QCOMPARE(FindMemory::SavedFinds().size(), size_t(1));
    }

    void textThatIsNoQuery_isANewOne()
    {
        for (const QString& text : {u""_s, u"[]"_s, u"{\"mode\": 9, \"case\": -1, \"fields\": 70000}"_s})
            QCOMPARE(TextOfQuery(QueryOfText(text)), TextOfQuery({}));
    }

    // Colours

    void contextOfALibraryWithWords_isColouredByThem()
    {
        ContextColours colours;
        colours.SetLibrary(*m_library);
        const auto lines = colours.ColoursOf({u"dim x ' told"_s, u"y"_s}, {});
        QCOMPARE(lines.size(), size_t(2));
        QCOMPARE(lines[0].size(), size_t(2));
        QCOMPARE(lines[0][0].Begin, 0);
        QCOMPARE(lines[0][0].Length, 3);
        QCOMPARE(lines[0][1].Begin, 6);
        QVERIFY(!lines[0][0].Dark);
        QVERIFY(lines[1].empty());
    }

    void contextOfAnItemsOwnLanguage_isColouredByItsRules()
    {
        ContextColours colours;
        colours.SetLibrary(*m_library);
        const auto lines = colours.ColoursOf({u"def f():"_s, u"    return 1 # told"_s}, u"Python"_s);
        QCOMPARE(lines.size(), size_t(2));
        QVERIFY(!lines[0].empty());
        QCOMPARE(lines[0][0].Begin, 0);
        QCOMPARE(lines[0][0].Length, 3);
        QVERIFY(lines[0][0].Dark);
        QCOMPARE(lines[1].back().Begin, 13);
    }
};

QB_TEST_MAIN(TestFindSearch)
#include "tst_find_search.moc"
