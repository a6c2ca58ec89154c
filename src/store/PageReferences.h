#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>

namespace qb {

// The addresses in a web page, which may be of any encoding.

/// Whether any of these words stands in a page. Raises RuntimeError 75 when the file can't be read.
bool PageMentions(const QString& pageFile, const QStringList& words);

/// Lets what a page loads or leads to in the folder of @p oldKey lie in that of @p newKey, which is of ASCII. Raises
/// RuntimeError 75 when the file can't be read or written.
void RenameReferences(const QString& pageFile, const QString& oldKey, const QString& newKey);

/// What stands for the number of an item in an address that leads to it; the same number where it stays. One that
/// leads nowhere is not of digits alone.
using NewItemNumber = std::function<QString(const QString& number)>;
/// A page in which the addresses of items, "local://Item17", are those of their new numbers. A number may
/// have "0-" before it, as often as a page went on without the item.
QByteArray WithItemNumbers(const QByteArray& page, const NewItemNumber& newNumber);
/// The same in a file. Raises RuntimeError 75 as above.
void RenumberItems(const QString& pageFile, const NewItemNumber& newNumber);

} // namespace qb
