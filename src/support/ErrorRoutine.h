#pragma once

#include "platform/system/RuntimeError.h"

#include <QString>
#include <type_traits>
#include <utility>

namespace qb {

/// The one error routine: writes the error to the log beside the program (`ErrorLog.txt`,
/// entries of 90 days) and, with @p showDialog, shows it and offers to report it by mail. By
/// convention @p module is `MainForm`, `CodeModule` or the class's name, and @p procedure the
/// procedure's name, a property being `<<Get>> Name`, `<<Let>> Name` or `<<Set>> Name`. Never
/// fails; the program goes on. That a library is read-only, or a file has gone, is said in a plain message.
void HandleError(long number, const QString& description, const QString& module, const QString& procedure,
                 const QString& source, bool showDialog);

/// Removes the log and returns those of its lines that are not older than @p days days, each
/// with its line end. A log that is not there gives an empty text.
QString CleanUpErrorLog(int days);

/// The path of the log.
QString ErrorLogFile();

/// How many errors HandleError has been given since the process started.
int HandledErrorCount();

/// Runs @p body; an exception that leaves it goes to HandleError under the names given, and
/// @p onFailure is returned.
template <class Body, class Result>
auto Guarded(const QString& module, const QString& procedure, Body&& body, Result onFailure)
    -> std::invoke_result_t<Body>
{
    try {
        return std::forward<Body>(body)();
    } catch (const RuntimeError& error) {
        HandleError(error.Number(), error.Description(), module, procedure, error.Source(), true);
    } catch (const std::exception& error) {
        HandleError(ErrorNumber::Internal, QString::fromLocal8Bit(error.what()), module, procedure, module, true);
    }
    return onFailure;
}

/// The same for a body without a result; says whether it ran to its end.
template <class Body>
requires std::is_void_v<std::invoke_result_t<Body>>
bool Guarded(const QString& module, const QString& procedure, Body&& body)
{
    return Guarded(
        module, procedure,
        [&body] {
            std::forward<Body>(body)();
            return true;
        },
        false);
}

} // namespace qb
