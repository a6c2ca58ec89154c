#pragma once

#include <QString>

namespace qb {

class Library;

/// The state of a record object.
enum class RecordState {
    Clean = 0,
    New = 1, ///< no row yet
    Edited = 2,
    MarkedForDelete = 3, ///< the row goes at the next commit
    Deleted = 4,
};

/// The contract of the objects that stand for one row of a library each. A property write
/// persists nothing by itself; Commit writes what is pending.
class IDataObject {
public:
    virtual ~IDataObject() = default;

    /// The record's ID as text; empty for a record that has no row yet.
    virtual QString Key() const = 0;
    /// Attaches to a library, which must outlive the object, and to a record; an empty key means
    /// a new record. Nothing is read.
    virtual void Initialise(Library& library, const QString& key) = 0;
    /// Marks the object for deletion; nothing is written yet.
    virtual void Delete() = 0;
    /// Writes what is pending. An error is reported; false means that the row is as it was.
    virtual bool Commit() = 0;

protected:
    /// What a property write does to a record's state. Raises the errors of a record that is, or
    /// is about to be, deleted, with @p source.
    static RecordState StateForLet(RecordState state, const QString& source);
};

} // namespace qb
