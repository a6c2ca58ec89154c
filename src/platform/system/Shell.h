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

/// Hands @p mail to the user's mail program, which shows it for the user to send. False when
/// there is none.
bool OpenMail(const Mail& mail);

} // namespace qb
