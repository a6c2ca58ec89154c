#pragma once

#include <QString>

namespace qb {

/// A mail for the user's mail program.
struct Mail {
    QString To;
    QString Subject;
    QString Body;
    QString Attachment; ///< path of a file, or empty
};

/// Opens a file, folder or address with the application that the desktop has for it. False
/// when there is none.
bool OpenTarget(const QString& target);

/// The application that the desktop has for files of a name like this: the name of its desktop entry.
/// Empty when it has none.
QString FindAssociatedProgram(const QString& fileName);

/// Whether opening a file of this name may run it, instead of showing it: programs, scripts of a shell,
/// installers, starters.
bool IsProgram(const QString& fileName);

/// Hands @p mail to the user's mail program, which shows it for the user to send. False when
/// there is none.
bool OpenMail(const Mail& mail);

} // namespace qb
