#pragma once

#include <QString>
#include <memory>
#include <zip.h>

namespace qb {

/// An open archive of libzip, which is closed unchanged.
using ZipHandle = std::unique_ptr<zip_t, decltype(&zip_discard)>;

/// Opens an archive; @p flags are those of zip_open. Null with the reason in @p why when it can't be.
ZipHandle OpenZip(const QString& path, int flags, QString& why);

} // namespace qb
