#include "finder/QuickOpen.h"

#include "panels/TreeNodes.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"

#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t MostRows = 100;   ///< more are scrolled through by nobody
constexpr size_t MostChanged = 30; ///< items that were changed last

struct ModeRow {
    QChar Sign;
    QuickOpen::Mode What;
};
constexpr ModeRow Modes[] = {
    {u'>', QuickOpen::Mode::Commands}, {u'#', QuickOpen::Mode::Text}, {u':', QuickOpen::Mode::Line}};

/// The mode, and the text without its sign.
std::pair<QuickOpen::Mode, QString> Understood(const QString& typed)
{
    for (const ModeRow& row : Modes) {
        if (typed.startsWith(row.Sign))
            return {row.What, typed.sliced(1).trimmed()};
    }
    return {QuickOpen::Mode::Titles, typed.trimmed()};
}

/// A line of the text, without the blanks around it.
QString LineOf(const QString& text, int line)
{
    qsizetype begin = 0;
    for (int i = 1; i < line && begin >= 0; ++i)
        begin = text.indexOf(u'\n', begin) + 1;
    const qsizetype end = text.indexOf(u'\n', begin);
    return text.mid(begin, end < 0 ? -1 : end - begin).trimmed();
}

} // namespace

QString TreePathOf(const TreeNodes& nodes, qint64 item)
{
    QStringList titles;
    const TreeNode* node = nodes.Find(item);
    for (node = node ? node->Parent : nullptr; node && !node->IsRoot(); node = node->Parent)
        titles.prepend(node->Text());
    return titles.join(u" › "_s);
}

QuickOpen::QuickOpen(QuickOpenHost& host, FindService& find)
    : m_host(host), m_find(find, std::bind_front(&QuickOpen::PathOf, this))
{
    const auto isOld = [this] { m_titlesOld = true; };
    const TreeNodes* nodes = &host.Nodes();
    connect(nodes, &TreeNodes::modelReset, this, isOld);
    connect(nodes, &TreeNodes::rowsInserted, this, isOld);
    connect(nodes, &TreeNodes::rowsRemoved, this, isOld);
    connect(nodes, &TreeNodes::dataChanged, this,
            [this](const QModelIndex&, const QModelIndex&, const QList<int>& roles) {
                m_titlesOld = m_titlesOld || roles.isEmpty() || roles.contains(Qt::DisplayRole);
            });
    connect(&m_find, &QuickFind::Changed, this, [this] {
        if (m_mode == Mode::Text)
            Q_EMIT RowsChanged();
    });
    connect(&m_find, &QuickFind::StatusChanged, this, &QuickOpen::StatusChanged);
}

void QuickOpen::Begin()
{
    m_commands = m_host.RunnableCommands();
    SetTyped({});
}

void QuickOpen::End()
{
    m_find.Stop();
    m_rows.clear();
    m_commands.clear();
}

void QuickOpen::SetTyped(const QString& typed)
{
    m_typed = typed;
    const auto [mode, text] = Understood(typed);
    m_mode = mode;
    m_rows.clear();
    if (mode != Mode::Text)
        m_find.Stop();
    switch (mode) {
    case Mode::Titles:
        text.isEmpty() ? ShowEmpty() : ShowTitles(text);
        break;
    case Mode::Commands:
        ShowCommands(text);
        break;
    case Mode::Text:
        m_find.Start(text); // tells of its rows itself
        return;
    case Mode::Line:
        ShowLine(text);
        break;
    }
    Q_EMIT RowsChanged();
    Q_EMIT StatusChanged();
}

// Titles

void QuickOpen::ReadTitles()
{
    if (!std::exchange(m_titlesOld, false))
        return;
    std::vector<FuzzyTitles::Title> titles;
    titles.reserve(size_t(m_host.Nodes().Count()));
    for (const TreeNode& node : m_host.Nodes().All()) {
        if (!node.IsRoot() && m_host.Nodes().Find(node.Id) == &node) // those that were removed stand there empty
            titles.push_back({node.Id, node.Text()});
    }
    m_titles = FuzzyTitles(titles);
}

void QuickOpen::AddItem(qint64 id, const std::vector<qsizetype>& letters)
{
    const TreeNode* node = m_host.Nodes().Find(id);
    if (!node || node->IsRoot())
        return;
    QuickRow row;
    row.Item = id;
    row.Icon = ImageKey(node->Image);
    row.Text = node->Text();
    row.Letters = letters;
    row.Beside = PathOf(id);
    m_rows.push_back(std::move(row));
}

/// What was shown last comes first, so that Enter alone leads back to the item before; then what was changed last.
void QuickOpen::ShowEmpty()
{
    std::vector<qint64> items = m_host.RecentItems();
    const std::vector<qint64> changed = LastChanged();
    items.insert(items.end(), changed.begin(), changed.end());
    std::vector<qint64> seen{m_host.CurrentItem()};
    for (const qint64 item : items) {
        if (std::find(seen.begin(), seen.end(), item) != seen.end())
            continue;
        seen.push_back(item);
        AddItem(item, {});
    }
}

std::vector<qint64> QuickOpen::LastChanged() const
{
    Library* library = m_host.OpenLibrary();
    if (!library)
        return {};
    return Guarded(
        u"QuickOpen"_s, u"LastChanged"_s,
        [&] {
            std::vector<qint64> items;
            Statement rows = library->Query(u"SELECT ID FROM Items ORDER BY LastChanged DESC LIMIT ?"_s,
                                            {qint64(MostChanged)});
            while (rows.Step())
                items.push_back(rows.Long(0));
            return items;
        },
        std::vector<qint64>());
}

void QuickOpen::ShowTitles(const QString& text)
{
    if (!m_host.OpenLibrary())
        return;
    ReadTitles();
    for (const FuzzyTitles::Match& match : m_titles.Find(text, MostRows))
        AddItem(match.Id, match.Places);
    if (!m_rows.empty())
        return;
    QuickRow row;
    row.What = QuickRow::Kind::Search;
    row.Icon = u"edit-find"_s;
    row.Text = u"Look for “%1” in all texts"_s.arg(text);
    row.Beside = u"no title has these letters"_s;
    m_rows.push_back(row);
}

QString QuickOpen::PathOf(qint64 item) const
{
    return TreePathOf(m_host.Nodes(), item);
}

// Commands

void QuickOpen::ShowCommands(const QString& text)
{
    std::vector<FuzzyTitles::Title> captions;
    for (size_t i = 0; i < m_commands.size(); ++i)
        captions.push_back({qint64(i), m_commands[i].Caption});
    std::vector<FuzzyTitles::Match> matches;
    if (!text.isEmpty())
        matches = FuzzyTitles(captions).Find(text, m_commands.size());
    for (size_t i = 0; text.isEmpty() && i < m_commands.size(); ++i)
        matches.push_back({qint64(i), qsizetype(i), 0, {}});
    if (text.isEmpty()) { // those that were run last come first
        const auto rank = [this](const FuzzyTitles::Match& match) {
            const qsizetype at = m_ran.indexOf(m_commands[size_t(match.Id)].Name);
            return at < 0 ? m_ran.size() : at;
        };
        std::stable_sort(matches.begin(), matches.end(),
                         [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
    }
    for (const FuzzyTitles::Match& match : matches) {
        const QuickCommand& command = m_commands[size_t(match.Id)];
        QuickRow row;
        row.What = QuickRow::Kind::Command;
        row.Command = command.Name;
        row.Icon = command.Icon;
        row.Text = command.Caption;
        row.Letters = match.Places;
        row.Beside = command.Tip;
        row.Mark = command.Key;
        m_rows.push_back(std::move(row));
    }
}

// A line

void QuickOpen::ShowLine(const QString& text)
{
    const std::optional<ShownCode> code = m_host.CurrentCode();
    bool isNumber = false;
    const int typed = text.toInt(&isNumber);
    if (!code || !isNumber || typed < 1)
        return;
    const QString content = code->Content.Text();
    const int lines = int(content.count(u'\n')) + 1;
    QuickRow row;
    row.What = QuickRow::Kind::Line;
    row.Item = code->Item;
    row.Line = std::min(typed, lines);
    row.Icon = u"CODE"_s;
    row.Text = u"Line %1 of %2"_s.arg(row.Line).arg(lines);
    row.Beside = LineOf(content, row.Line);
    m_rows.push_back(row);
}

// What there is to say

QString QuickOpen::Notice() const
{
    switch (m_mode) {
    case Mode::Titles:
        return m_host.OpenLibrary() ? u"The library has no other items yet."_s : u"No library is open."_s;
    case Mode::Commands:
        return u"No command that can run now has these letters."_s;
    case Mode::Text:
        return m_host.OpenLibrary() ? m_find.Notice() : u"No library is open."_s;
    case Mode::Line:
        break;
    }
    const std::optional<ShownCode> code = m_host.CurrentCode();
    if (!code)
        return u"No item is shown that has lines to go to."_s;
    const int lines = int(code->Content.Text().count(u'\n')) + 1;
    return u"Type the number of a line of “%1”, 1 to %2. The caret is in line %3."_s.arg(code->Title)
        .arg(lines)
        .arg(code->LineOfCaret);
}

QString QuickOpen::Status() const
{
    return m_mode == Mode::Text ? m_find.Status() : QString();
}

// Choosing

bool QuickOpen::CheckItem(size_t row)
{
    if (row >= Rows().size() || Rows()[row].Item == 0)
        return true;
    const qint64 item = Rows()[row].Item;
    Library* library = m_host.OpenLibrary();
    const bool isThere = Guarded(
        u"QuickOpen"_s, u"CheckItem"_s,
        [&] { return library && !library->QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {item}).IsNull(); }, true);
    if (!isThere)
        MarkGone(item);
    return isThere;
}

void QuickOpen::MarkGone(qint64 item)
{
    for (QuickRow& row : m_rows)
        row.IsGone = row.IsGone || row.Item == item;
    m_find.MarkGone(item);
    Q_EMIT RowsMarked();
}

void QuickOpen::Choose(size_t number, bool inTree)
{
    if (number >= Rows().size())
        return;
    const QuickRow row = Rows()[number]; // what is done about it changes the rows
    if (!CheckItem(number))
        return Q_EMIT Told(u"“%1” is not in the library any more: it was deleted since."_s.arg(
            row.Place ? m_find.TitleOf(row.Item) : row.Text));
    if (row.What == QuickRow::Kind::Search)
        return Q_EMIT Retyped(u'#' + m_typed.trimmed());
    if (row.What == QuickRow::Kind::Command) {
        m_ran.removeAll(row.Command);
        m_ran.prepend(row.Command);
    }
    Q_EMIT Chosen();
    switch (row.What) {
    case QuickRow::Kind::Item:
        return m_host.OpenItem(row.Item, inTree);
    case QuickRow::Kind::Hit:
        return inTree ? m_host.OpenItem(row.Item, true) : m_host.OpenPlace(row.Item, *row.Place);
    case QuickRow::Kind::Line:
        return m_host.GoToLine(row.Line);
    case QuickRow::Kind::Command:
        return m_host.RunCommand(row.Command);
    case QuickRow::Kind::Search:
        break;
    }
}

} // namespace qb
