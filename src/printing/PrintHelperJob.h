#pragma once

#include <QByteArray>
#include <QString>

namespace qb {

/// What the command line asks the window's program to print, which alone has fonts. It goes there as a line on standard
/// input.
struct PrintHelperJob {
    QString Library; ///< path
    qint64 Item = 0; ///< 0: all of the library
    bool Branch = false;
    QString File;    ///< PDF; empty: to a printer
    QString Printer; ///< empty: the one that prints when none is named

    QByteArray ToLine() const;
    /// Raises RuntimeError 5 for what is no job.
    static PrintHelperJob FromLine(const QByteArray& line);
    friend bool operator==(const PrintHelperJob&, const PrintHelperJob&) = default;
};

/// What the helper answers, a line each, on standard output: how far it is, and in the end how many pages there are or
/// why there are none.
struct PrintHelperAnswer {
    enum Kind { Progress, Done, Failed, Nothing } What = Nothing;
    qint64 Pages = 0; ///< that are done
    qint64 Of = 0;
    QString Printer; ///< that was printed on
    long Error = 0;
    QString Reason;

    QByteArray ToLine() const;
    /// A line that is no answer is Nothing.
    static PrintHelperAnswer FromLine(const QByteArray& line);
    friend bool operator==(const PrintHelperAnswer&, const PrintHelperAnswer&) = default;
};

/// The only argument by which the window's program is told to be the helper.
inline constexpr const char* PrintHelperOption = "--print-helper";

} // namespace qb
