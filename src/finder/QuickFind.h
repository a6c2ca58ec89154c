#pragma once

#include "finder/FindService.h"
#include "finder/QuickRow.h"

#include <QHash>
#include <QTimer>
#include <functional>

namespace qb {

/// The search of quick open: the lines in which a text stands, of all items, the best items first, while they come in.
class QuickFind : public QObject {
    Q_OBJECT

public:
    /// @p find outlives it; @p pathOf tells where in the tree an item stands.
    QuickFind(FindService& find, std::function<QString(qint64 item)> pathOf);

    /// Looks for another text; what was found of the one before is gone, of which is told only once there is something
    /// new. An empty text finds nothing.
    void Start(const QString& text);
    void Stop();

    const std::vector<QuickRow>& Rows() const { return m_rows; }
    /// What to tell where there are no rows.
    QString Notice() const;
    /// What goes on, or how much was found.
    QString Status() const;
    /// Null while none goes on or has ended.
    const FindRequest* Request() const { return m_request.get(); }
    /// The title of an item that was found.
    QString TitleOf(qint64 item) const;
    /// The item was deleted since.
    void MarkGone(qint64 item);

Q_SIGNALS:
    /// Rows, or Notice.
    void Changed();
    void StatusChanged();

private:
    void Take(const std::vector<FindHit>& hits);
    void ShowRows();
    std::vector<QuickRow> RowsOf(const FindHit& hit) const;
    QuickRow RowOf(const FindHit& hit, const FindPlace& place) const;
    bool IsSearching() const { return m_request && !m_request->HasEnded(); }

    FindService& m_service;
    std::function<QString(qint64 item)> m_pathOf;
    QString m_text;
    std::unique_ptr<FindRequest> m_request;
    std::vector<FindHit> m_best;                 ///< in order
    QHash<qint64, std::vector<QuickRow>> m_made; ///< rows by item, for as long as the request lasts
    size_t m_items = 0;                          ///< in which it was found
    QString m_failure;
    QTimer m_show; ///< rows are made once for what comes in short order
    std::vector<QuickRow> m_rows;
};

} // namespace qb
