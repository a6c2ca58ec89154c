#pragma once

class QLabel;
class QString;

namespace qb {

/// A label for plain text of any length that can be selected; @p scale is of the usual size.
QLabel* MakePlainLabel(const QString& name, double scale, bool bold);

} // namespace qb
