#include "finder/Finding.h"

#include "finder/FindMemory.h"
#include "platform/system/Prompts.h"
#include "text/ItemDetailsView.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

int PageOf(FindField field)
{
    switch (field) {
    case FindField::Code:
        return int(DetailsTab::Code);
    case FindField::Notes:
        return int(DetailsTab::Notes);
    case FindField::Usage:
        return int(DetailsTab::Usage);
    case FindField::FileNames:
    case FindField::FileTexts:
        return int(DetailsTab::Files);
    case FindField::WebPage:
        return int(DetailsTab::Links);
    case FindField::Title:
    case FindField::Description:
    case FindField::Links:
        break;
    }
    return 0;
}

bool IsOfStoredFile(FindField field)
{
    return field == FindField::FileNames || field == FindField::FileTexts;
}

bool IsSame(const FindQuery& a, const FindQuery& b)
{
    return a.Branch == b.Branch && TextOfQuery(a) == TextOfQuery(b);
}

Finding::Finding(FindSearch& search, FindResults& results, FindHost& host, QObject* parent)
    : QObject(parent), m_search(search), m_results(results), m_host(host)
{
    connect(&search, &FindSearch::Ended, this, [this] {
        if (m_wanted)
            Show();
    });
}

void Finding::Accept(const FindQuery& query)
{
    if (query.Text.isEmpty()) {
        Prompts::Current().MsgBox(
            {.Text = u"No keyword entered."_s, .Caption = u"Missing search phrase"_s, .Icon = MsgBoxIcon::Information});
        return;
    }
    FindMemory::AddToHistory(query.Text);
    m_wanted = true;
    if (!IsSame(query, m_search.Query()) || (!m_search.IsRunning() && !m_search.IsComplete()))
        m_search.Look(query);
    else if (!m_search.IsRunning())
        Show();
}

void Finding::Show()
{
    m_wanted = false;
    if (!m_search.Error().isEmpty()) {
        Prompts::Current().MsgBox({.Text = m_search.Error(), .Caption = u"Find"_s, .Icon = MsgBoxIcon::Information});
        return;
    }
    m_shownNumber = 0;
    ShowOnce();
    if (!m_results.Rows().empty())
        m_results.Select(0);
    Q_EMIT Shown();
}

/// Selects nothing: what is selected is what is opened next.
void Finding::ShowOnce()
{
    if (m_shownNumber == m_search.Number())
        return;
    m_shownNumber = m_search.IsRunning() ? 0 : m_search.Number();
    m_results.SetQuery(m_search.Query());
    m_results.DisplayFindResults(m_search.Rows(), false);
}

void Finding::OpenPlace(qint64 item, FindField field, qsizetype place, qint64 file)
{
    const std::vector<FindHit>& hits = m_search.Hits();
    const auto hit = std::find_if(hits.begin(), hits.end(), [item](const FindHit& one) { return one.Id == item; });
    if (hit == hits.end() || !m_search.Matcher())
        return;
    const FindMatcher matcher(m_search.Query());
    FindMemory::AddToHistory(m_search.Query().Text);
    ShowOnce();
    m_results.Select(int(hit - hits.begin()));
    if (!m_host.OpenItem(item))
        return;
    m_host.MarkPlaces(&matcher);
    const int page = PageOf(field);
    if (page == 0)
        return;
    m_host.ShowTab(page);
    if (file != 0)
        m_host.ShowFile(file);
    else
        m_host.GoToPlace(matcher, place);
}

} // namespace qb
