#pragma once

#include "cli/Arguments.h"

namespace qb::cli {

/// Writes an item with all below it to a PDF file: the arguments are a library, an ID (0: everything) and the file.
int ExportPdf(const Arguments& arguments);

} // namespace qb::cli
