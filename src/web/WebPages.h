#pragma once

#include <QString>

namespace qb {

/// The welcome page, and the template of a new item's page, by their names in the folder of web
/// pages.
inline const QString WelcomePage = QStringLiteral("default.htm");
inline const QString PageTemplate = QStringLiteral("default2.htm");

/// Whether a folder of web pages lacks one of the two default pages.
bool DefaultPagesMissing(const QString& folder);

/// Makes those default pages that are missing, and the folder, from the file of default pages in the program's folder,
/// or the program's own where there is no such file. One that can't be read is reported, and the program's own are made
/// instead. What is there is left alone. Raises an error when they can't be written.
void CreateDefaultHTMLItems(const QString& folder);

/// The program's own form of a default page.
QString BuiltInPage(const QString& name);

} // namespace qb
