#pragma once

#include <QString>
#include <optional>
#include <span>

namespace qb {

/// What `Items.ItemStatus` says of an item. Any other number says nothing; rows that were made without a status
/// have 0.
enum class ItemStatus : qint32 {
    None = 0,
    Own = 2, ///< as every item that is added by hand
    Downloaded = 3,
    TestedOK = 4,
    NotWorking = 5,
};

/// A status with the word by which commands and lists name it.
struct ItemStatusName {
    ItemStatus Status;
    const char* Name;
};

/// All of them, in the order in which they are offered; None is the last.
std::span<const ItemStatusName> ItemStatusNames();
/// The word of a stored number; empty for one that says nothing.
QString NameOfStatus(qint32 status);
/// The status of a word, "none" included; nothing when it is none.
std::optional<ItemStatus> StatusNamed(const QString& name);

/// `Items.ItemRating` counts half stars, from 1 to this; any other number is no rating.
constexpr qint32 BestRating = 10;

} // namespace qb
