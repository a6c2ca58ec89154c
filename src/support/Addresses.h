#pragma once

#include <QString>

namespace qb {

/// The mailbox for bug reports: the setting `BugReportAddress`, which the maker of a package
/// puts in. Without one the mail opens with an empty address for the user to fill in.
QString BugReportAddress();

/// What becomes of an address in a text or page, which may come from a stranger.
enum class AddressAnswer {
    Open,   ///< a page of the web, or a mail without attachments
    Ask,    ///< only after a look at where it leads
    Refuse, ///< it would run a program, or be taken for an option of one
};
/// An address as it is shown to a user who is to judge it: on one line, not too long, and with characters that would
/// hide or turn around a part of it written as "\u202e".
QString ShownAddress(const QString& address);
/// Judges by the address alone and opens nothing; what names neither a page nor a mail may be a file's path.
AddressAnswer AnswerAddress(const QString& address);

} // namespace qb
