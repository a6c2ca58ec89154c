#pragma once

#include "platform/system/Shell.h"
#include "platform/system/Work.h"
#include "store/Library.h"

#include <QString>

namespace qb {

/// The mailboxes for wishes and for feedback: the settings `WishAddress` and `FeedbackAddress`, which the maker of a
/// package puts in. Without one the mail opens with an empty address.
QString WishAddress();
QString FeedbackAddress();

/// Opens an empty mail to a mailbox of the program's makers. Where there is no mail program the user is told; false
/// then.
bool SendToMakers(const QString& address, const QString& subject);

/// Exports an item with all below it into a private folder and makes a mail of it. The user is told of stored files
/// that are missing. Raises an error when the export fails; nothing is left then.
Mail MailOfItem(Library& library, qint64 item, Work& work = NoWork());

/// Opens the mail of an item in the user's mail program. Where there is none the user is told and the export removed;
/// false then. Raises what MailOfItem raises.
bool MailItem(Library& library, qint64 item, Work& work = NoWork());

/// Removes exports for mails that are a week old. They can't go with their mails: a mail program may read what is
/// attached only when the mail is sent, and says nobody that it has.
void RemoveOldMails();

} // namespace qb
