#pragma once

#include "store/Library.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace qb {

/// The folder with the pictures of the template of new pages, below the folder of web pages. A page that was made of
/// the template refers to them there.
inline const QString TemplateFolder = QStringLiteral("default2");

/// The files of an item's web page, as paths below the folder of web pages with "/" between their parts: the page, the
/// other files of its folder, then those of the folders in that.
QStringList PageFilesOf(const Library& library, qint64 item);
/// Those of the template that the item's page refers to, as such paths; all or none of them. Raises RuntimeError 75
/// when the page can't be read.
QStringList TemplateFilesOf(const Library& library, qint64 item);
/// The name that an export has for one of them: the page's own, or the path below the page's folder with "\\".
QString PageNameOf(const QString& path, qint64 item);

/// Where a file of an item's web page belongs, from the name that an export has for it: empty for the page itself,
/// which only the first can be; else the path below the folder of the page, with "/" between its parts. Nothing for
/// what is no name, or would leave that folder.
std::optional<QString> PlaceOfPage(const QString& name, const QString& key, bool isFirst);

/// Lets what a page loads or leads to in the folder of @p oldKey lie in that of @p newKey, which is of ASCII; in a page
/// of any encoding. Raises RuntimeError 75 when the file can't be read or written.
void RenameReferences(const QString& pageFile, const QString& oldKey, const QString& newKey);

/// What stands for the number of an item in an address that leads to it; the same number where it stays. One that
/// leads nowhere is not of digits alone.
using NewItemNumber = std::function<QString(const QString& number)>;
/// A page, of any encoding, in which the addresses of items, "local://Item17", are those of their new numbers. A number
/// may have "0-" before it, as often as a page went on without the item.
QByteArray WithItemNumbers(const QByteArray& page, const NewItemNumber& newNumber);
/// The same in a file. Raises RuntimeError 75 as above.
void RenumberItems(const QString& pageFile, const NewItemNumber& newNumber);

} // namespace qb
