#pragma once

#include <QString>

class QWidget;

namespace qb {

class Database;

/// What the details panel needs of the page that lists an item's stored files.
class FileDetailsView {
public:
    virtual ~FileDetailsView() = default;

    virtual QWidget* Page() = 0;
    /// Lists the files of the item of this key.
    virtual void Initialise(Database& database, const QString& key) = 0;
    /// No item is shown any more.
    virtual void Terminate() = 0;
    virtual bool Locked() const = 0;
    virtual void SetLocked(bool locked) = 0;
};

} // namespace qb
