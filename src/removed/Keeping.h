#pragma once

#include "removed/RemovedEvent.h"
#include "store/ItemBranch.h"

#include <functional>
#include <vector>

namespace qb {

/// Keeps what a change by the user takes away, or nothing, where that is to go for good.
class Keeping : public DeletionKeeper {
public:
    /// @p event must outlive it; null: nothing is kept.
    explicit Keeping(RemovedEvent* event) : m_event(event) {}

    /// Inside the transaction, before anything goes; raises what the event raises.
    void Add(const std::function<void(RemovedEvent& event)>& add);
    // DeletionKeeper
    void Take(Library& library, const std::vector<qint64>& items) override;
    void Note() override;
    void Place() override;

    /// It was the keeping that failed, and with it the change.
    bool HasFailed() const { return m_hasFailed; }

private:
    RemovedEvent* m_event;
    bool m_hasFailed = false;
};

/// Makes a change whose victims are kept. Where the keeping fails, as on a full disk, the user is asked, with nothing
/// changed yet, whether it is to be made all the same; where nobody answers it is not, and the error raised.
void Kept(Library& library, RemovalKind kind, const QString& what, const std::function<void(Keeping& keeping)>& change);

/// Deletes stored files, all or none, and keeps them so. Raises the first error, with the library as it was.
void DeleteStoredFiles(Library& library, const std::vector<qint64>& files);

} // namespace qb
