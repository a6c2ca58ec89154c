#pragma once

#include <QString>
#include <functional>

namespace qb {

/// Opens what a link in a text leads to: a page of the library by @p navigate, a web page or a mail in the
/// program for it. Anything else is asked about, or refused where it would start a program.
void OpenAddress(const QString& address, const std::function<void(const QString& page)>& navigate);

} // namespace qb
