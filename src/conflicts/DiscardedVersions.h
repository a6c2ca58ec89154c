#pragma once

#include "store/Library.h"

#include <QString>
#include <functional>
#include <memory>

namespace qb {

/// Where versions go that a decision discards: one object for each decision, made before its transaction, which must
/// be over before the object goes. Whatever it can't do it raises an error for; then nothing is discarded.
class DiscardedVersions {
public:
    virtual ~DiscardedVersions() = default;

    /// Takes versions of the temporary tables, whole, inside the transaction. @p where is a condition on rows r of
    /// `TempItems`.
    virtual void AddTemporary(const QString& where, const Values& parameters, const QString& reason) = 0;
    /// Takes the version that an item of the library has now.
    virtual void AddOwn(qint64 item, const QString& reason) = 0;
    /// The last thing before the commit.
    virtual void Note() = 0;
    /// After the commit. Raises nothing.
    virtual void Place() = 0;
};

/// What discards versions.
enum class DiscardKind { Decided, AllDiscarded };

/// Makes the object for one decision.
using DiscardInto = std::function<std::unique_ptr<DiscardedVersions>(Library& library, DiscardKind kind)>;

/// The place where the library keeps what is removed in it; nothing is ever discarded into another one but by tests.
DiscardInto IntoRemovedItems();

} // namespace qb
