#pragma once

#include "platform/system/Date.h"

#include <QString>

namespace qb {

/// Writes a date by a pattern, whatever the user's regional settings are. Runs of letters
/// stand for parts of the date, everything else for itself:
///   d, dd      day of the month         h, hh  hour, 0 to 23
///   m, mm      month; mmm its English   n, nn  minute
///              name in three letters    s, ss  second
///   yy, yyyy   year
QString DateFormatCustom(Date date, const QString& pattern);

/// The patterns in use.
namespace DatePattern {
inline const QString Stored = QStringLiteral("mm/dd/yyyy hh:nn:ss");
inline const QString Log = QStringLiteral("dd/mm/yy hh:nn:ss");
inline const QString Day = QStringLiteral("dd/mmm/yyyy");
} // namespace DatePattern

/// Reads a date in the pattern of the log, "dd/mm/yy hh:nn:ss"; "none" when it is no date. The
/// year lies within 80 years back and 19 ahead of @p today.
Date DateFromLogText(const QString& text, Date today);

} // namespace qb
