#pragma once

#include <QString>

namespace qb {

/// The mailbox for bug reports: the setting `BugReportAddress`, which the maker of a package
/// puts in. Without one the mail opens with an empty address for the user to fill in.
QString BugReportAddress();

} // namespace qb
