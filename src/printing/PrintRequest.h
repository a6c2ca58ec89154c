#pragma once

#include "printing/PrintSource.h"

#include <QString>
#include <vector>

namespace qb {

class CCodeItem;
class Library;

/// An item that is to be printed, as it stands on the screen.
struct PrintRequest {
    Library& Database;
    CCodeItem& Item;      ///< its list of stored files has been read
    QString PagePath;     ///< where its web page would be
    QString LibraryName;  ///< as users know it
    UnsavedTexts Typed{}; ///< texts that were typed and are not saved yet
};

/// What prints: it asks how and where to, and returns when that is done.
class PrintComponent {
public:
    virtual ~PrintComponent() = default;

    virtual void Print(const PrintRequest& request) = 0;
};

/// Items by their IDs, the one of a request as it stands on the screen.
class RequestSource : public PrintSource {
public:
    /// The request must outlive it.
    RequestSource(const PrintRequest& request, std::vector<qint64> ids, PrintParts parts);

    size_t Count() const override { return m_ids.size(); }
    PrintedItem Item(size_t index) override;

private:
    const PrintRequest& m_request;
    ItemGatherer m_gatherer;
    std::vector<qint64> m_ids;
};

} // namespace qb
