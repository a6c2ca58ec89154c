#pragma once

#include "store/Library.h"

#include <QString>
#include <QStringList>
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

} // namespace qb
