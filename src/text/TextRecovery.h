#pragma once

#include "text/RecoveryFile.h"

#include <QTimer>
#include <functional>
#include <optional>

namespace qb {

class Database;

/// The net below what is typed: keeps the unsaved texts of the open library in its file while there is typing.
class TextRecovery {
public:
    /// @p unsaved gives the texts that are to be kept; nothing when there are none.
    explicit TextRecovery(std::function<std::optional<UnsavedTexts>()> unsaved);

    /// The library that the texts are of.
    void SetLibrary(const QString& library) { m_file.emplace(library); }
    /// Something was typed: it is kept soon.
    void Typed();
    /// Writes the texts at once; the program may end any moment.
    void Keep();
    /// There is nothing unsaved any more.
    void Forget();

private:
    std::function<std::optional<UnsavedTexts>()> m_unsaved;
    std::optional<RecoveryFile> m_file;
    QTimer m_timer;
};

/// Shows unsaved texts of the item that was gone to. False when they can't be shown now.
using ShowUnsavedTexts = std::function<bool(const UnsavedTexts& texts)>;

/// Offers the texts that were typed into this library's items and never saved, and has the first ones shown
/// that the user wants. @p goTo selects an item. What is neither shown nor declined is kept: of an item that
/// is gone in a file, else for the next start.
void OfferUnsavedTexts(Database& database, const std::function<void(qint64 item)>& goTo, const ShowUnsavedTexts& show);

} // namespace qb
