#include "finder/QuickFind.h"

#include "platform/system/RuntimeError.h"

#include <QLocale>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t MostItems = 60;
constexpr size_t MostRows = 100;
constexpr size_t MostPlaces = 20; ///< of an item that are looked at
constexpr size_t MostLines = 3;   ///< of an item that are listed

struct FieldRow {
    FindField Field;
    const char* Caption;
    bool HasLines;
};
constexpr FieldRow FieldRows[FindFields] = {
    {FindField::Title, "Title", false},
    {FindField::Description, "Description", false},
    {FindField::Code, "Code", true},
    {FindField::Notes, "Notes", true},
    {FindField::Usage, "Usage", true},
    {FindField::FileNames, "File", false},
    {FindField::FileTexts, "Text of file", true},
    {FindField::Links, "Info and links", false},
    {FindField::WebPage, "Web page", true},
};

QString MarkOf(const FindPlace& place)
{
    const FieldRow& row = FieldRows[size_t(place.Field)];
    const QString caption = QString::fromLatin1(row.Caption);
    return row.HasLines ? u"%1 %2"_s.arg(caption).arg(place.Line) : caption;
}

bool IsSameLine(const FindPlace& a, const FindPlace& b)
{
    return a.Field == b.Field && a.Piece == b.Piece && a.Source == b.Source && a.Line == b.Line;
}

/// The line of a place as a row shows it: without the blanks before, and begun so that the place is in sight. Places in
/// the line of the source become those in the row's.
struct ShownLine {
    explicit ShownLine(const FindPlace& place)
    {
        constexpr qsizetype Sight = 40; // characters before the place that may be shown
        constexpr qsizetype Lead = 24;  // those that are, when there are more
        const QString line = place.Context.value(0);
        while (Begin < line.size() && Begin < place.ContextColumn && line[Begin].isSpace())
            ++Begin;
        if (place.ContextColumn - Begin > Sight) {
            Begin = place.ContextColumn - Lead;
            if (line[Begin].isLowSurrogate())
                ++Begin;
            Text = u"…"_s;
        }
        Shift = Text.size() - Begin;
        Text += line.sliced(Begin);
        Text.replace(u'\t', u' ');
    }

    qsizetype Begin = 0;
    qsizetype Shift = 0;
    QString Text;
};

} // namespace

QuickFind::QuickFind(FindService& find, std::function<QString(qint64)> pathOf)
    : m_service(find), m_pathOf(std::move(pathOf))
{
    constexpr int Pause = 40; // milliseconds
    m_show.setSingleShot(true);
    m_show.setInterval(Pause);
    connect(&m_show, &QTimer::timeout, this, &QuickFind::ShowRows);
    connect(&find, &FindService::StateChanged, this, [this] {
        if (m_text.isEmpty())
            return;
        Q_EMIT StatusChanged();
        if (m_rows.empty())
            Q_EMIT Changed();
    });
}

void QuickFind::Start(const QString& text)
{
    m_text = text;
    m_request.reset();
    m_show.stop();
    m_rows.clear(); // nobody is told: what is shown stays until there is something else, but it can't be chosen
    m_best.clear();
    m_made.clear();
    m_items = 0;
    m_failure.clear();
    if (text.isEmpty() || !m_service.IsOpen())
        return ShowRows();
    FindQuery query;
    query.Text = text;
    try {
        m_request = m_service.Start(query);
    } catch (const RuntimeError& error) {
        m_failure = error.Description();
        return ShowRows();
    }
    connect(m_request.get(), &FindRequest::Started, this, [this] { // a second time: nothing of the first counts
        m_best.clear();
        m_made.clear();
        m_items = 0;
    });
    connect(m_request.get(), &FindRequest::Found, this, &QuickFind::Take);
    connect(m_request.get(), &FindRequest::Ended, this, &QuickFind::ShowRows);
    connect(m_request.get(), &FindRequest::Failed, this, [this](const QString& reason) {
        m_failure = reason;
        m_best.clear();
        ShowRows();
    });
    Q_EMIT StatusChanged();
}

void QuickFind::Stop()
{
    if (m_text.isEmpty() && !m_request)
        return;
    m_text.clear();
    m_request.reset();
    m_show.stop();
    m_best.clear();
    m_made.clear();
    m_rows.clear();
}

/// Only the best are kept: any search may find all items.
void QuickFind::Take(const std::vector<FindHit>& hits)
{
    const FindSnapshot& texts = *m_request->Texts();
    const bool isFirst = m_items == 0;
    m_items += hits.size();
    m_best.insert(m_best.end(), hits.begin(), hits.end());
    const size_t count = std::min(MostItems, m_best.size());
    std::partial_sort(m_best.begin(), m_best.begin() + qsizetype(count), m_best.end(),
                      [&texts](const FindHit& a, const FindHit& b) { return IsBetter(texts, a, b); });
    m_best.resize(count);
    if (isFirst)
        ShowRows();
    else if (!m_show.isActive())
        m_show.start();
}

void QuickFind::ShowRows()
{
    m_show.stop();
    m_rows.clear();
    for (const FindHit& hit : m_best) {
        if (m_rows.size() >= MostRows)
            break;
        auto made = m_made.find(hit.Id);
        if (made == m_made.end())
            made = m_made.insert(hit.Id, RowsOf(hit));
        m_rows.insert(m_rows.end(), made->begin(), made->end());
    }
    Q_EMIT Changed();
    Q_EMIT StatusChanged();
}

/// A row for each line, with all places in it.
std::vector<QuickRow> QuickFind::RowsOf(const FindHit& hit) const
{
    std::vector<QuickRow> rows;
    for (const FindPlace& place : PlacesIn(*m_request->Texts(), hit.Place, m_request->Matcher(), MostPlaces)) {
        if (rows.empty() || !IsSameLine(*rows.back().Place, place)) {
            if (rows.size() == MostLines)
                break;
            rows.push_back(RowOf(hit, place));
        }
        QuickRow& row = rows.back();
        const FindPlace& first = *row.Place;
        const ShownLine line(first);
        const qsizetype begin = place.Column - first.Column + first.ContextColumn + line.Shift;
        for (qsizetype at = begin; at < std::min(begin + place.Length, row.Text.size()); ++at)
            row.Letters.push_back(at);
    }
    return rows;
}

QuickRow QuickFind::RowOf(const FindHit& hit, const FindPlace& place) const
{
    QuickRow row;
    row.What = QuickRow::Kind::Hit;
    row.Item = hit.Id;
    row.Place = place;
    row.Icon = u"CHILD"_s;
    row.Text = ShownLine(place).Text;
    row.Mark = MarkOf(place);
    const QString path = m_pathOf(hit.Id);
    if (place.Field == FindField::Title)
        row.Beside = path;
    else
        row.Beside = path.isEmpty() ? TitleOf(hit.Id) : path + u" › "_s + TitleOf(hit.Id);
    return row;
}

QString QuickFind::TitleOf(qint64 item) const
{
    if (!m_request || !m_request->Texts())
        return {};
    const FindSnapshot& texts = *m_request->Texts();
    const std::optional<FindSnapshot::Place> place = texts.Find(item);
    return place ? texts.Title(*place) : QString();
}

void QuickFind::MarkGone(qint64 item)
{
    for (QuickRow& row : m_rows)
        row.IsGone = row.IsGone || row.Item == item;
    if (const auto made = m_made.find(item); made != m_made.end()) {
        for (QuickRow& row : *made)
            row.IsGone = true;
    }
}

QString QuickFind::Notice() const
{
    if (m_text.isEmpty())
        return u"Type a text: it is looked for in all texts of all items."_s;
    if (!m_failure.isEmpty())
        return m_failure;
    if (const QString state = m_service.StateText(); !state.isEmpty() && IsSearching())
        return state;
    return IsSearching() ? u"Looking for “%1”..."_s.arg(m_text) : u"“%1” is in none of the texts."_s.arg(m_text);
}

QString QuickFind::Status() const
{
    if (!m_request || m_items == 0)
        return {};
    const QString count = QLocale().toString(qulonglong(m_items)) + (m_items == 1 ? u" item"_s : u" items"_s);
    return IsSearching() ? count + u" so far"_s : count;
}

} // namespace qb
