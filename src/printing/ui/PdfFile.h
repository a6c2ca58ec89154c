#pragma once

#include "printing/ui/PagedPrint.h"

#include <QString>

class QPrinter;

namespace qb {

/// Writes all pages to a PDF file, which appears when it is complete, over a file that is there. Returns their number.
/// @p library is the path of the library that is printed: the PDF never takes its place, and is as private as it is.
/// @p work counts pages. Raises an error with @p file as it was; 3059 when it was cancelled.
int WritePdf(PagedPrint& print, const QString& file, const QString& library, Work& work = NoWork());

/// Prints pages on a printer: those that the printer was told, counted from 1, or all. Returns their number. Nothing is
/// printed when an error is raised.
int PrintOn(PagedPrint& print, QPrinter& printer, Work& work = NoWork());

/// A printer with the paper of a setup.
void ApplyTo(QPrinter& printer, const PrintSetup& setup);

} // namespace qb
