#pragma once

#include "find/FindQuery.h"
#include "find/FindRun.h"
#include "finder/FindHost.h"

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

namespace qb {

/// An item in which something was found, as the list shows it.
struct FindResultRow {
    qint64 Item = 0;
    QString Title;
    QString Description;
    FindCounters Counters{};
    int Rating = 0; ///< in half stars; 0: none
};

/// The results of the last find: the rows of the list, which word is looked for, and the way from one occurrence to
/// the next, through the pages of an item and from row to row.
class FindResults : public QAbstractTableModel {
    Q_OBJECT

public:
    /// By the numbers that the settings have.
    enum ViewType { QuickList = 0, DetailList = 1 };
    enum Role { ImageRole = Qt::UserRole, KeyRole };

    /// @p host must outlive this.
    explicit FindResults(FindHost& host, QObject* parent = nullptr);

    // The list

    /// Shows other results. With @p selectFirst the first one is selected.
    void DisplayFindResults(std::vector<FindResultRow> rows, bool selectFirst);
    /// No results, no keyword.
    void ClearFindResults();
    ViewType SearchResultViewType() const { return m_viewType; }
    void SetSearchResultViewType(ViewType type);
    bool SearchResultSingleClick() const { return m_singleClick; }
    void SetSearchResultSingleClick(bool single) { m_singleClick = single; }
    const std::vector<FindResultRow>& Rows() const { return m_rows; }
    /// -1: none.
    int SelectedRow() const { return m_selected; }
    void Select(int row);
    /// A row was clicked; which clicks open it, the single click says.
    void RowClicked(int row, bool isDouble);
    /// Shows the item of a row, at its first occurrence.
    void OpenRow(int row);
    /// The item of that ID has another title.
    void SetTitle(qint64 item, const QString& title);

    /// The title with the letters of what has hits: "Title  (T/W)".
    static QString QuickText(const FindResultRow& row);

    // What is looked for

    const QString& SearchKeyword() const { return m_query.Text; }
    void SetSearchKeyword(const QString& keyword);
    /// 1 exact phrase, 2 all the words, 3 a regular expression.
    int FindMode() const { return int(m_query.Mode); }
    void SetFindMode(int mode);
    /// Both, with the options by which places are found again.
    void SetQuery(const FindQuery& query);
    /// The words of the combo box; empty unless there is something to choose.
    const QStringList& Words() const { return m_words; }
    int SelectedWord() const { return m_word; }
    void SelectWord(int word);
    /// Offers the words of the keyword, none of them selected.
    void FillSearchWordCombo();
    /// What to go to the next occurrence of; asks for a word where there are several, and is empty then.
    QString GetKeyword();

    // Occurrences

    void FindNextOccurance() { Step(true); }
    void FindPreviousOccurance() { Step(false); }
    /// The next page of the details panel with hits of an item behind page @p tab; 0: none. Behind 4 comes 4 again, as
    /// it holds more than one text.
    int NextTabWithHits(int tab, qint64 key) const;
    /// The same, backwards; 0 stands behind the last page.
    int PreviousTabWithHits(int tab, qint64 key) const;

    // QAbstractTableModel
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    /// There are results: their tab is to be shown.
    void ResultsShown();
    /// The row is to be selected and brought into view; -1: none is.
    void RowSelected(int row);
    void ViewTypeChanged();
    /// Keyword or mode, of which the panel's caption tells.
    void KeywordChanged();
    /// Words, or which of them is selected.
    void WordsChanged();
    /// The user has to choose a word.
    void WordAsked();

private:
    const FindResultRow* RowOf(qint64 item) const;
    void Step(bool forward);
    bool StepInItem(int tab, bool forward, FindHost::From from, const QString& keyword);
    int NextPage(int tab, qint64 item, bool forward) const;
    bool OpenAndStep(int row, bool forward, const QString& keyword);
    bool AskToStartOver(bool forward) const;
    FindMatcher MatcherFor(const QString& keyword) const;
    void ShowMarks();
    QVariant DetailData(const FindResultRow& row, int column, int role) const;

    FindHost& m_host;
    std::vector<FindResultRow> m_rows;
    ViewType m_viewType = QuickList;
    bool m_singleClick = false;
    int m_selected = -1;
    FindQuery m_query;
    QStringList m_words;
    int m_word = -1;
};

} // namespace qb
