#include "finder/FindResults.h"

#include "platform/system/Prompts.h"
#include "text/ItemDetailsView.h"

#include <algorithm>
#include <array>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int CodePage = int(DetailsTab::Code);
constexpr int NotesPage = int(DetailsTab::Notes);
constexpr int UsagePage = int(DetailsTab::Usage);
constexpr int FilesPage = int(DetailsTab::Files);
constexpr int WebPage = int(DetailsTab::Links);

/// The columns of the report behind the title. A letter stands for a counter; that of the rating has none.
constexpr char16_t ColumnLetters[] = u"TDCNUFROLW";
constexpr char16_t RatingLetter = u'R';
constexpr int LetterColumns = int(std::size(ColumnLetters)) - 1;
constexpr int TitleColumn = 0;
constexpr int DescriptionColumn = LetterColumns + 1;

std::optional<FindField> FieldOfLetter(char16_t letter)
{
    for (size_t field = 0; field < FindFields; ++field) {
        if (LetterOf(FindField(field)) == QChar(letter))
            return FindField(field);
    }
    return std::nullopt;
}

/// Stars as a number: "3½".
QString StarsText(int halves)
{
    constexpr int Most = 10;
    if (halves < 1 || halves > Most)
        return {};
    const QString whole = halves > 1 ? QString::number(halves / 2) : QString();
    return halves % 2 == 1 ? whole + u'½' : whole;
}

/// What the letters stand for.
QString NameOfLetter(char16_t letter)
{
    struct Name {
        char16_t Letter;
        const char* Text;
    };
    static constexpr Name names[] = {{u'T', "Title"},
                                     {u'D', "Description"},
                                     {u'C', "Code"},
                                     {u'N', "Notes"},
                                     {u'U', "Usage"},
                                     {u'F', "Names and descriptions of stored files"},
                                     {u'R', "Rating in stars"},
                                     {u'O', "Texts of stored files"},
                                     {u'L', "Descriptions of links, and the info"},
                                     {u'W', "Web page"}};
    const auto* name = std::find_if(std::begin(names), std::end(names),
                                    [letter](const Name& one) { return one.Letter == letter; });
    return name == std::end(names) ? QString() : QString::fromLatin1(name->Text);
}

bool Has(const FindResultRow& row, FindField field)
{
    return row.Counters[size_t(field)] > 0;
}

/// Whether a page of the details panel has hits.
bool PageHasHits(const FindResultRow& row, int page)
{
    switch (page) {
    case CodePage:
        return Has(row, FindField::Code);
    case NotesPage:
        return Has(row, FindField::Notes);
    case UsagePage:
        return Has(row, FindField::Usage);
    case FilesPage:
        return Has(row, FindField::FileNames) || Has(row, FindField::FileTexts);
    case WebPage:
        return Has(row, FindField::Links) || Has(row, FindField::WebPage);
    default:
        return false;
    }
}

} // namespace

FindResults::FindResults(FindHost& host, QObject* parent) : QAbstractTableModel(parent), m_host(host) {}

// The list

void FindResults::DisplayFindResults(std::vector<FindResultRow> rows, bool selectFirst)
{
    beginResetModel();
    m_rows = std::move(rows);
    m_selected = -1;
    endResetModel();
    if (m_rows.empty())
        return ShowMarks();
    Q_EMIT ResultsShown();
    if (selectFirst)
        Select(0);
    ShowMarks();
}

void FindResults::ClearFindResults()
{
    beginResetModel();
    m_rows.clear();
    m_selected = -1;
    endResetModel();
    SetQuery({});
    m_host.MarkPlaces(nullptr);
}

void FindResults::SetSearchResultViewType(ViewType type)
{
    if (type == m_viewType)
        return;
    beginResetModel();
    m_viewType = type;
    endResetModel();
    Q_EMIT ViewTypeChanged();
    Q_EMIT RowSelected(m_selected);
}

void FindResults::Select(int row)
{
    if (row < 0 || row >= int(m_rows.size()))
        return;
    m_selected = row;
    Q_EMIT RowSelected(row);
}

void FindResults::RowClicked(int row, bool isDouble)
{
    if (isDouble != m_singleClick)
        OpenRow(row);
}

/// Any of the words will do, so nobody is asked for one.
void FindResults::OpenRow(int row)
{
    if (row < 0 || row >= int(m_rows.size()))
        return;
    Select(row);
    if (m_host.OpenItem(m_rows[size_t(row)].Item) && !SearchKeyword().isEmpty())
        StepInItem(0, true, FindHost::From::Edge, SearchKeyword());
    ShowMarks();
}

void FindResults::SetTitle(qint64 item, const QString& title)
{
    for (size_t row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row].Item == item && m_rows[row].Title != title) {
            m_rows[row].Title = title;
            Q_EMIT dataChanged(index(int(row), 0), index(int(row), 0));
        }
    }
}

QString FindResults::QuickText(const FindResultRow& row)
{
    QString letters;
    for (size_t field = 0; field < FindFields; ++field) {
        if (row.Counters[field] > 0)
            letters += QString(LetterOf(FindField(field))) + u'/';
    }
    if (letters.isEmpty())
        return row.Title.trimmed();
    letters.back() = u')';
    return row.Title + u"  ("_s + letters;
}

const FindResultRow* FindResults::RowOf(qint64 item) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [item](const FindResultRow& one) { return one.Item == item; });
    return row == m_rows.end() ? nullptr : &*row;
}

// What is looked for

void FindResults::SetSearchKeyword(const QString& keyword)
{
    FindQuery query = m_query;
    query.Text = keyword;
    SetQuery(query);
}

void FindResults::SetFindMode(int mode)
{
    FindQuery query = m_query;
    query.Mode = qb::FindMode(mode);
    SetQuery(query);
}

void FindResults::SetQuery(const FindQuery& query)
{
    m_query = query;
    m_words.clear();
    m_word = -1;
    Q_EMIT WordsChanged();
    Q_EMIT KeywordChanged();
}

void FindResults::SelectWord(int word)
{
    if (word == m_word || word >= int(m_words.size()))
        return;
    m_word = std::max(word, -1);
    Q_EMIT WordsChanged();
}

void FindResults::FillSearchWordCombo()
{
    FindQuery words = m_query;
    words.Mode = qb::FindMode::AllWords;
    m_words = NeedlesOf(words);
    m_word = -1;
    Q_EMIT WordsChanged();
}

/// An expression is one, whatever blanks are in it.
QString FindResults::GetKeyword()
{
    const bool isWords = m_query.Mode != qb::FindMode::Phrase && m_query.Mode != qb::FindMode::Expression;
    if (!isWords)
        return SearchKeyword();
    if (m_words.isEmpty()) {
        if (!SearchKeyword().trimmed().contains(u' '))
            return SearchKeyword();
        FillSearchWordCombo();
    }
    if (m_word >= 0)
        return m_words[m_word];
    Prompts::Current().MsgBox({.Text = u"Please first select the word to search for."_s,
                               .Caption = u"Find what?"_s,
                               .Icon = MsgBoxIcon::Information});
    Q_EMIT WordAsked();
    return {};
}

/// One word of the query counts capitals as the whole of it does.
FindMatcher FindResults::MatcherFor(const QString& keyword) const
{
    FindQuery query = m_query;
    if (keyword != m_query.Text) {
        query.Case = CountsCase(m_query) ? FindCase::Exact : FindCase::Folds;
        query.Mode = qb::FindMode::Phrase;
        query.Text = keyword;
    }
    return FindMatcher(query);
}

/// An item that is shown has its places marked when it was found.
void FindResults::ShowMarks()
{
    if (m_rows.empty() || SearchKeyword().isEmpty())
        return m_host.MarkPlaces(nullptr);
    const FindMatcher matcher = MatcherFor(SearchKeyword());
    m_host.MarkPlaces(&matcher);
}

// Occurrences

int FindResults::NextTabWithHits(int tab, qint64 key) const
{
    const FindResultRow* row = RowOf(key);
    if (!row)
        return 0;
    const int first = tab == FilesPage ? FilesPage : tab + 1;
    for (int page = std::max(first, CodePage); page <= WebPage; ++page) {
        if (PageHasHits(*row, page))
            return page;
    }
    return 0;
}

int FindResults::PreviousTabWithHits(int tab, qint64 key) const
{
    const FindResultRow* row = RowOf(key);
    if (!row)
        return 0;
    for (int page = tab == 0 ? WebPage : tab - 1; page >= CodePage; --page) {
        if (PageHasHits(*row, page))
            return page;
    }
    return 0;
}

/// The next page to look at when @p tab has been: that of the files has gone through all of its texts by itself.
int FindResults::NextPage(int tab, qint64 item, bool forward) const
{
    const int next = forward ? NextTabWithHits(tab, item) : PreviousTabWithHits(tab, item);
    if (next == 0 || next != tab)
        return next;
    return PageHasHits(*RowOf(item), WebPage) ? WebPage : 0;
}

/// Looks at the page @p tab from the caret on, then at those behind it, each from its edge. True when something was
/// found, or a page with hits is shown that has them in what can't be gone through: a web page, or names and contents
/// of files.
bool FindResults::StepInItem(int tab, bool forward, FindHost::From from, const QString& keyword)
{
    const FindMatcher matcher = MatcherFor(keyword);
    const qint64 item = m_host.CurrentItem();
    if (from == FindHost::From::Caret && tab != 0 && tab != WebPage
        && m_host.FindOnPage(keyword, matcher, forward, from))
        return true;
    for (int page = NextPage(tab, item, forward); page != 0; page = NextPage(page, item, forward)) {
        m_host.ShowTab(page);
        if (page == WebPage || m_host.FindOnPage(keyword, matcher, forward, FindHost::From::Edge) || page == FilesPage)
            return true;
    }
    return false;
}

/// A row without hits in its pages, as one by its title, is a step too: its item is shown.
bool FindResults::OpenAndStep(int row, bool forward, const QString& keyword)
{
    Select(row);
    if (!m_host.OpenItem(m_rows[size_t(row)].Item))
        return false;
    StepInItem(0, forward, FindHost::From::Edge, keyword);
    return true;
}

bool FindResults::AskToStartOver(bool forward) const
{
    const QString text =
        forward
            ? u"This is the last occurance of the word. Do you want to begin the search again starting from the first "
              "occurence?"_s
            : u"This is the first occurance of the word. Do you want to begin the search again starting from the last "
              "occurence?"_s;
    return Prompts::Current().MsgBox({.Text = text,
                                      .Caption = u"Start Over?"_s,
                                      .Buttons = MsgBoxButtons::YesNo,
                                      .Icon = MsgBoxIcon::Question})
           == MsgBoxResult::Yes;
}

void FindResults::Step(bool forward)
{
    const QString keyword = GetKeyword();
    if (keyword.isEmpty() || m_rows.empty())
        return;
    const int last = int(m_rows.size()) - 1;
    if (m_selected < 0)
        Select(0);
    if (m_rows[size_t(m_selected)].Item != m_host.CurrentItem()) {
        OpenAndStep(m_selected, forward, keyword);
        return ShowMarks();
    }
    if (StepInItem(m_host.CurrentTab(), forward, FindHost::From::Caret, keyword))
        return ShowMarks();
    if (m_selected != (forward ? last : 0))
        OpenAndStep(m_selected + (forward ? 1 : -1), forward, keyword);
    else if (AskToStartOver(forward))
        OpenAndStep(forward ? 0 : last, forward, keyword);
    ShowMarks();
}

// The model

int FindResults::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int FindResults::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_viewType == QuickList ? 1 : DescriptionColumn + 1;
}

QVariant FindResults::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || size_t(index.row()) >= m_rows.size())
        return {};
    const FindResultRow& row = m_rows[size_t(index.row())];
    if (role == KeyRole)
        return QString::number(row.Item) + u'C';
    if (index.column() == TitleColumn) {
        if (role == Qt::DisplayRole)
            return m_viewType == QuickList ? QuickText(row) : row.Title;
        return role == ImageRole ? u"FOUND_ITEM"_s : QVariant();
    }
    return DetailData(row, index.column(), role);
}

QVariant FindResults::DetailData(const FindResultRow& row, int column, int role) const
{
    if (column == DescriptionColumn)
        return role == Qt::DisplayRole ? QString(row.Description).replace("\r\n"_L1, " "_L1).replace(u'\n', u' ')
                                       : QVariant();
    const char16_t letter = ColumnLetters[column - 1];
    const std::optional<FindField> field = FieldOfLetter(letter);
    if (!field)
        return role == Qt::DisplayRole ? StarsText(row.Rating) : QVariant();
    const auto count = row.Counters[size_t(*field)];
    if (role == ImageRole)
        return count > 0 ? u"CHECKED"_s : u"UNCHECKED"_s;
    if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole)
        return count > 0 ? u"%1: %2"_s.arg(NameOfLetter(letter)).arg(count) : QVariant();
    return {};
}

QVariant FindResults::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    const bool isLetter = section > TitleColumn && section < DescriptionColumn;
    if (role == Qt::ToolTipRole && isLetter)
        return NameOfLetter(ColumnLetters[section - 1]);
    if (role != Qt::DisplayRole)
        return {};
    return isLetter                 ? QString(QChar(ColumnLetters[section - 1]))
           : section == TitleColumn ? u"Title"_s
                                    : u"Description"_s;
}

} // namespace qb
