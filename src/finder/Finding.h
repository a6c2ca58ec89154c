#pragma once

#include "finder/FindSearch.h"

namespace qb {

/// What the find command does with a query, once the user has accepted it, and with a place that is chosen from its
/// hits: the results become those of the list, through which the next and the previous occurrence lead.
class Finding : public QObject {
    Q_OBJECT

public:
    /// All must outlive this.
    Finding(FindSearch& search, FindResults& results, FindHost& host, QObject* parent = nullptr);

    /// The user wants the results of a query, which are shown once they are there. Says what is wrong with a query
    /// that can't be looked for.
    void Accept(const FindQuery& query);
    /// Shows a place of an item that was found: number @p place, from 0, among those of a text, or the stored file
    /// @p file that it is in.
    void OpenPlace(qint64 item, FindField field, qsizetype place, qint64 file = 0);

Q_SIGNALS:
    /// The results of an accepted query are shown.
    void Shown();

private:
    void Show();
    void ShowOnce();

    FindSearch& m_search;
    FindResults& m_results;
    FindHost& m_host;
    bool m_wanted = false;     ///< the results are to be shown when they are all there
    quint64 m_shownNumber = 0; ///< of the search that the list has all hits of; 0: of none
};

/// The page of the details panel that shows a text; 0 for those that none shows.
int PageOf(FindField field);

/// Whether places of a field are in stored files: in their names, descriptions or texts.
bool IsOfStoredFile(FindField field);

/// Whether two queries look for the same.
bool IsSame(const FindQuery& a, const FindQuery& b);

} // namespace qb
