#include "finder/FindResults.h"
#include "support/FakeFindHost.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestFindResults : public QObject {
    Q_OBJECT

private:
    static FindResultRow Row(qint64 item, const QString& title, const QString& letters = {})
    {
        FindResultRow row;
        row.Item = item;
        row.Title = title;
        for (size_t field = 0; field < FindFields; ++field)
            row.Counters[field] = letters.contains(LetterOf(FindField(field))) ? 2 : 0;
        return row;
    }
    void Expect(const QString& caption, MsgBoxResult answer = MsgBoxResult::Ok)
    {
        m_prompts->ExpectMsgBox(caption, answer);
    }
    void Show(std::vector<FindResultRow> rows, const QString& keyword, int mode = 1)
    {
        m_results->SetSearchKeyword(keyword);
        m_results->SetFindMode(mode);
        m_results->DisplayFindResults(std::move(rows), true);
    }
    QString Cell(int row, int column, int role = Qt::DisplayRole)
    {
        return m_results->data(m_results->index(row, column), role).toString();
    }

    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<FakeFindHost> m_host;
    std::unique_ptr<FindResults> m_results;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_host = std::make_unique<FakeFindHost>();
        m_results = std::make_unique<FindResults>(*m_host);
        new QAbstractItemModelTester(m_results.get(), m_results.get());
    }
    void cleanup()
    {
        m_results.reset();
        m_host.reset();
        m_prompts.reset();
    }

    // The list

    void quickText_namesWhatHasHits_data()
    {
        QTest::addColumn<QString>("letters");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << QString() << u"title"_s;
        QTest::newRow("one") << u"C"_s << u"title  (C)"_s;
        QTest::newRow("two") << u"TW"_s << u"title  (T/W)"_s;
        QTest::newRow("all, in their order") << u"WLOFUNCDT"_s << u"title  (T/D/C/N/U/F/O/L/W)"_s;
    }
    void quickText_namesWhatHasHits()
    {
        QFETCH(const QString, letters);
        QFETCH(const QString, text);
        QCOMPARE(FindResults::QuickText(Row(1, u"title"_s, letters)), text);
        Show({Row(7, u"title"_s, letters)}, u"x"_s);
        QCOMPARE(Cell(0, 0), text);
        QCOMPARE(Cell(0, 0, FindResults::KeyRole), u"7C"_s);
        QCOMPARE(Cell(0, 0, FindResults::ImageRole), u"FOUND_ITEM"_s);
        QCOMPARE(m_results->columnCount(), 1);
    }

    void titleThatEndsInASlash_isNoLetter()
    {
        QCOMPARE(FindResults::QuickText(Row(1, u"a/"_s)), u"a/"_s);
        QCOMPARE(FindResults::QuickText(Row(1, u" b "_s)), u"b"_s);
    }

    void detailView_hasAColumnForEachLetter()
    {
        FindResultRow row = Row(3, u"title"_s, u"TCL"_s);
        row.Description = u"of two\r\nlines"_s;
        row.Rating = 7;
        Show({row}, u"x"_s);
        QSignalSpy changed(m_results.get(), &FindResults::ViewTypeChanged);
        m_results->SetSearchResultViewType(FindResults::DetailList);
        QCOMPARE(changed.size(), 1);
        QStringList headers;
        for (int column = 0; column < m_results->columnCount(); ++column)
            headers << m_results->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        QCOMPARE(headers.join(u'|'), u"Title|T|D|C|N|U|F|R|O|L|W|Description"_s);
        QString images;
        for (int column = 1; column <= 10; ++column) {
            const QString image = Cell(0, column, FindResults::ImageRole);
            images += image == u"CHECKED" ? u'+' : image == u"UNCHECKED" ? u'-' : u' ';
        }
        QCOMPARE(images, u"+-+--- -+-"_s);
        QCOMPARE(Cell(0, 0), u"title"_s);
        QCOMPARE(Cell(0, 7), u"3½"_s);
        QCOMPARE(Cell(0, 11), u"of two lines"_s);
        QCOMPARE(Cell(0, 1, Qt::ToolTipRole), u"Title: 2"_s);
        QCOMPARE(Cell(0, 5, FindResults::KeyRole), u"3C"_s);
    }

    void results_selectTheFirstWhenWanted()
    {
        QSignalSpy shown(m_results.get(), &FindResults::ResultsShown);
        m_results->DisplayFindResults({Row(1, u"a"_s), Row(2, u"b"_s)}, true);
        QCOMPARE(m_results->SelectedRow(), 0);
        QCOMPARE(shown.size(), 1);
        m_results->DisplayFindResults({Row(1, u"a"_s)}, false);
        QCOMPARE(m_results->SelectedRow(), -1);
        QCOMPARE(shown.size(), 2);
    }

    void emptyResults_leaveTheTabThatIsShown()
    {
        QSignalSpy shown(m_results.get(), &FindResults::ResultsShown);
        m_results->DisplayFindResults({}, true);
        QCOMPARE(shown.size(), 0);
        QCOMPARE(m_results->SelectedRow(), -1);
        m_results->SetSearchKeyword(u"x"_s);
        m_results->FindNextOccurance(); // nothing to go to
        m_results->FindPreviousOccurance();
    }

    void cleared_forgetsRowsKeywordAndWords()
    {
        Show({Row(1, u"a"_s, u"C"_s)}, u"two words"_s, 2);
        m_results->FillSearchWordCombo();
        QCOMPARE(m_host->Marked, u"two words"_s);
        QSignalSpy keyword(m_results.get(), &FindResults::KeywordChanged);
        m_results->ClearFindResults();
        QCOMPARE(m_results->rowCount(), 0);
        QCOMPARE(m_results->SearchKeyword(), QString());
        QCOMPARE(m_results->Words(), QStringList());
        QCOMPARE(keyword.size(), 1);
        QCOMPARE(m_host->Marked, QString());
    }

    void clicks_openByTheSetting()
    {
        Show({Row(5, u"a"_s, u"T"_s)}, u"x"_s);
        m_results->RowClicked(0, false);
        QCOMPARE(m_host->Took(), QStringList());
        m_results->RowClicked(0, true);
        QCOMPARE(m_host->Took(), QStringList{u"open 5"_s});
        m_results->SetSearchResultSingleClick(true);
        m_results->RowClicked(0, true);
        QCOMPARE(m_host->Took(), QStringList());
        m_results->RowClicked(0, false);
        QCOMPARE(m_host->Took(), QStringList{u"open 5"_s});
    }

    void openedRow_isShownAtItsFirstOccurrence()
    {
        m_host->Texts.Map = {{{5, 3}, u"one x two"_s}};
        Show({Row(5, u"a"_s, u"U"_s)}, u"x"_s);
        m_results->OpenRow(0);
        QCOMPARE(m_host->Took(), (QStringList{u"open 5"_s, u"tab 3"_s, u"x at 4"_s}));
        m_results->OpenRow(9);
        QCOMPARE(m_host->Took(), QStringList());
    }

    void renamedItem_hasItsTitleInTheList()
    {
        Show({Row(5, u"a"_s, u"T"_s)}, u"x"_s);
        m_results->SetTitle(5, u"b"_s);
        QCOMPARE(Cell(0, 0), u"b  (T)"_s);
    }

    // What is looked for

    void exactPhrase_isTheKeyword()
    {
        m_results->SetSearchKeyword(u"two words"_s);
        m_results->SetFindMode(1);
        QCOMPARE(m_results->GetKeyword(), u"two words"_s);
        QCOMPARE(m_results->Words(), QStringList());
        m_results->SetFindMode(3);
        QCOMPARE(m_results->GetKeyword(), u"two words"_s);
    }

    void oneWordOfAll_isUsedDirectly()
    {
        m_results->SetSearchKeyword(u" word "_s);
        m_results->SetFindMode(2);
        QCOMPARE(m_results->GetKeyword(), u" word "_s);
        QCOMPARE(m_results->Words(), QStringList());
    }

    void severalWords_haveToBeChosenFrom()
    {
        m_results->SetSearchKeyword(u"two  words two"_s);
        m_results->SetFindMode(2);
        QSignalSpy asked(m_results.get(), &FindResults::WordAsked);
        Expect(u"Find what?"_s);
        QCOMPARE(m_results->GetKeyword(), QString());
        QCOMPARE(m_prompts->Messages.last().Text, u"Please first select the word to search for."_s);
        QCOMPARE(m_results->Words(), (QStringList{u"two"_s, u"words"_s}));
        QCOMPARE(asked.size(), 1);
        Expect(u"Find what?"_s);
        QCOMPARE(m_results->GetKeyword(), QString());
        m_results->SelectWord(1);
        QCOMPARE(m_results->GetKeyword(), u"words"_s);
        m_results->SetSearchKeyword(u"other"_s);
        QCOMPARE(m_results->GetKeyword(), u"other"_s);
    }

    void wordOfAQueryWithACapital_countsCase()
    {
        m_host->Texts.Map = {{{5, 1}, u"TWO two Words words"_s}};
        Show({Row(5, u"a"_s, u"C"_s)}, u"Words two"_s, 2);
        m_results->FillSearchWordCombo();
        m_results->SelectWord(1);
        m_results->FindNextOccurance();
        QCOMPARE(m_host->Took().last(), u"two at 4"_s);
    }

    // Pages

    void nextTabWithHits_goesForward_data()
    {
        QTest::addColumn<QString>("letters");
        QTest::addColumn<int>("tab");
        QTest::addColumn<int>("next");
        QTest::newRow("code") << u"CNU"_s << 0 << 1;
        QTest::newRow("behind code") << u"CNU"_s << 1 << 2;
        QTest::newRow("behind notes") << u"CNU"_s << 2 << 3;
        QTest::newRow("behind usage") << u"CNU"_s << 3 << 0;
        QTest::newRow("files by names") << u"F"_s << 0 << 4;
        QTest::newRow("files by texts") << u"O"_s << 2 << 4;
        QTest::newRow("from the files") << u"CNUF"_s << 4 << 4;
        QTest::newRow("web page") << u"W"_s << 0 << 5;
        QTest::newRow("links") << u"L"_s << 4 << 5;
        QTest::newRow("behind the last") << u"CW"_s << 5 << 0;
        QTest::newRow("title alone") << u"TD"_s << 0 << 0;
    }
    void nextTabWithHits_goesForward()
    {
        QFETCH(const QString, letters);
        QFETCH(const int, tab);
        QFETCH(const int, next);
        Show({Row(5, u"a"_s, letters)}, u"x"_s);
        QCOMPARE(m_results->NextTabWithHits(tab, 5), next);
        QCOMPARE(m_results->NextTabWithHits(tab, 6), 0);
    }

    void previousTabWithHits_goesBack()
    {
        Show({Row(5, u"a"_s, u"CUFW"_s)}, u"x"_s);
        QList<int> tabs;
        for (int tab = m_results->PreviousTabWithHits(0, 5); tab != 0; tab = m_results->PreviousTabWithHits(tab, 5))
            tabs << tab;
        QCOMPARE(tabs, (QList<int>{5, 4, 3, 1}));
        QCOMPARE(m_results->PreviousTabWithHits(0, 6), 0);
    }

    // Occurrences

    void next_goesThroughPagesAndRows()
    {
        m_host->Texts.Map = {{{5, 1}, u"x.x"_s}, {{5, 2}, u"-x"_s}, {{6, 3}, u"x"_s}};
        Show({Row(5, u"a"_s, u"CN"_s), Row(6, u"b"_s, u"U"_s), Row(7, u"c"_s, u"T"_s)}, u"x"_s);
        const auto next = [this] {
            m_results->FindNextOccurance();
            return m_host->Took().join(u", "_s);
        };
        QCOMPARE(next(), u"open 5, tab 1, x at 0"_s);
        QCOMPARE(next(), u"x at 2"_s);
        QCOMPARE(next(), u"tab 2, x at 1"_s);
        QCOMPARE(next(), u"open 6, tab 3, x at 0"_s);
        QCOMPARE(m_results->SelectedRow(), 1);
        QCOMPARE(next(), u"open 7"_s);
        QCOMPARE(m_results->SelectedRow(), 2);
        Expect(u"Start Over?"_s, MsgBoxResult::No);
        QCOMPARE(next(), QString());
        QCOMPARE(m_results->SelectedRow(), 2);
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"This is the last occurance of the word. Do you want to begin the search again starting from the "
                 "first occurence?"_s);
        QCOMPARE(m_prompts->Messages.last().Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(m_prompts->Messages.last().Icon, MsgBoxIcon::Question);
        Expect(u"Start Over?"_s, MsgBoxResult::Yes);
        QCOMPARE(next(), u"open 5, tab 1, x at 0"_s);
        QCOMPARE(m_results->SelectedRow(), 0);
    }

    void previous_isTheMirror()
    {
        m_host->Texts.Map = {{{5, 1}, u"x.x"_s}, {{5, 2}, u"-x"_s}, {{6, 3}, u"x"_s}};
        Show({Row(5, u"a"_s, u"CN"_s), Row(6, u"b"_s, u"U"_s)}, u"x"_s);
        m_results->Select(1);
        const auto previous = [this] {
            m_results->FindPreviousOccurance();
            return m_host->Took().join(u", "_s);
        };
        QCOMPARE(previous(), u"open 6, tab 3, x at 0"_s);
        QCOMPARE(previous(), u"open 5, tab 2, x at 1"_s);
        QCOMPARE(previous(), u"tab 1, x at 2"_s);
        QCOMPARE(previous(), u"x at 0"_s);
        Expect(u"Start Over?"_s, MsgBoxResult::No);
        QCOMPARE(previous(), QString());
        QCOMPARE(m_results->SelectedRow(), 0);
        QCOMPARE(m_prompts->Messages.last().Text,
                 u"This is the first occurance of the word. Do you want to begin the search again starting from the "
                 "last occurence?"_s);
        Expect(u"Start Over?"_s, MsgBoxResult::Yes);
        QCOMPARE(previous(), u"open 6, tab 3, x at 0"_s);
        QCOMPARE(m_results->SelectedRow(), 1);
    }

    void pageOfTheFiles_isLeftOnceItHasBeenGoneThrough()
    {
        m_host->Texts.Map = {{{5, 4}, u"x"_s}, {{5, 5}, u"x x"_s}};
        Show({Row(5, u"a"_s, u"FW"_s), Row(6, u"b"_s, u"O"_s)}, u"x"_s);
        m_results->FindNextOccurance();
        QCOMPARE(m_host->Took(), (QStringList{u"open 5"_s, u"tab 4"_s, u"x at 0"_s}));
        m_results->FindNextOccurance(); // the web page is shown, and not looked through
        QCOMPARE(m_host->Took(), QStringList{u"tab 5"_s});
        m_results->FindNextOccurance(); // contents of files are shown by their page
        QCOMPARE(m_host->Took(), (QStringList{u"open 6"_s, u"tab 4"_s}));
        Expect(u"Start Over?"_s, MsgBoxResult::No);
        m_results->FindNextOccurance();
    }

    void nothingSelected_startsWithTheFirstRow()
    {
        m_results->SetSearchKeyword(u"x"_s);
        m_results->DisplayFindResults({Row(5, u"a"_s, u"T"_s), Row(6, u"b"_s, u"T"_s)}, false);
        m_results->FindNextOccurance();
        QCOMPARE(m_results->SelectedRow(), 0);
        QCOMPARE(m_host->Took(), QStringList{u"open 5"_s});
    }

    void itemThatCannotBeOpened_endsTheStep()
    {
        m_host->Refuses = true;
        Show({Row(5, u"a"_s, u"C"_s)}, u"x"_s);
        m_results->FindNextOccurance();
        QCOMPARE(m_host->Took(), QStringList{u"open 5"_s});
    }

    void textThatHasChangedSince_isPassedOver()
    {
        m_host->Texts.Map = {{{5, 2}, u"x"_s}};
        Show({Row(5, u"a"_s, u"CN"_s)}, u"x"_s);
        m_results->FindNextOccurance();
        QCOMPARE(m_host->Took(), (QStringList{u"open 5"_s, u"tab 1"_s, u"tab 2"_s, u"x at 0"_s}));
    }

    void withoutAKeyword_nothingIsOpened()
    {
        m_results->DisplayFindResults({Row(5, u"a"_s, u"C"_s)}, true);
        m_results->FindNextOccurance();
        QCOMPARE(m_host->Took(), QStringList());
    }
};

QB_TEST_MAIN(TestFindResults)
#include "tst_find_results.moc"
