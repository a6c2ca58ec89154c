#pragma once

#include <QString>

namespace qb {

/// The file that names the pages on the web: the user's own beside the program's own files, or the one that comes with
/// the program.
QString LinksFile();

/// The address that the file of links has for a name, as "Quillbase Home"; empty where it has none.
QString GetLink(const QString& name);

/// Opens an address by the desktop. Where that can't be, or the address would start a program, the user is told why;
/// false then.
bool OpenLink(const QString& target);

/// Opens what the file of links has for a name, and says so where it has nothing.
bool OpenNamedLink(const QString& name);

} // namespace qb
