#pragma once

#include "finder/FindResults.h"
#include "finder/FindService.h"

#include <QElapsedTimer>
#include <QTimer>

namespace qb {

/// The search that goes on while a query is typed: its hits, the best first, and what there is to say of it.
class FindSearch : public QObject {
    Q_OBJECT

public:
    /// @p service must outlive this.
    explicit FindSearch(FindService& service, QObject* parent = nullptr);
    ~FindSearch() override;

    /// How long a search may take; what was found by then stays.
    static inline std::chrono::milliseconds Deadline{10'000};

    /// Looks for another query; what was found for the one before goes. An empty text finds nothing.
    void Look(const FindQuery& query);
    /// The same query once more, in the texts as they are by then.
    void Again() { Look(FindQuery(m_query)); }
    /// Nothing is looked for, nothing was found.
    void Stop() { Look({}); }

    const FindQuery& Query() const { return m_query; }
    /// Counts queries: what belongs to another number is of another one.
    quint64 Number() const { return m_number; }
    /// For places in texts; null when there is nothing to look for.
    const FindMatcher* Matcher() const { return m_request ? &m_request->Matcher() : nullptr; }
    /// That the hits are places of; null before the first.
    const std::shared_ptr<const FindSnapshot>& Texts() const { return m_texts; }
    const std::vector<FindHit>& Hits() const { return m_hits; }
    /// All places of all hits.
    qint64 Places() const { return m_places; }
    bool IsRunning() const { return m_request && !m_request->HasEnded(); }
    /// All texts were looked through to their end.
    bool IsComplete() const;
    /// Why nothing can be found: what is wrong with the query, and where, or with the library.
    const QString& Error() const { return m_error; }
    /// What there is to say, as a line.
    QString StatusText() const;

    /// The hits as rows of the list of results.
    std::vector<FindResultRow> Rows() const;

Q_SIGNALS:
    /// Hits, error or status. While many hits come in, now and then.
    void Changed();
    /// It has ended, in whatever way.
    void Ended();

private:
    void Take(const std::vector<FindHit>& hits);
    void Finish();
    void ShowSoon();
    QString OutcomeText() const;

    FindService& m_service;
    FindQuery m_query;
    quint64 m_number = 0;
    std::unique_ptr<FindRequest> m_request;
    std::shared_ptr<const FindSnapshot> m_texts;
    std::vector<FindHit> m_hits;
    qint64 m_places = 0;
    QString m_error;
    QTimer m_show;
    QElapsedTimer m_shown;
};

/// One text of an item out of the texts of a find; empty where it has none.
QString TextOfField(const FindSnapshot& texts, FindSnapshot::Place item, FindField field);

} // namespace qb
