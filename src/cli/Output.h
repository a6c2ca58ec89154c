#pragma once

#include "platform/system/Date.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace qb::cli {

/// Writes to standard output as UTF-8; raises RuntimeError 75 when that fails.
void Print(const QString& text);
/// Bytes as they are, into a file; on a terminal as a text, as if they were one.
void Print(const QByteArray& bytes);
void Print(const QJsonObject& object);
void Print(const QJsonArray& array);

/// A moment as a clock on the wall reads it, "2026-03-02 14:30:05", or in UTC for programs, "2026-03-02T13:30:05Z";
/// empty when it is none.
enum class Reader { Person, Program };
QString MomentText(Date moment, Reader reader);

/// @p text without what a terminal would take for a command: control characters but tabs and line ends are
/// shown as pictures. Titles may come from a stranger.
QString ForTerminal(QString text);

/// Writes a line to standard error, which may be shown in a terminal later: as ForTerminal().
void Complain(const QString& text);

/// What to do about a damaged item.
inline const QString HowToBringBack = QStringLiteral(
    "What is damaged comes back from an earlier backup: quillbase-cli restore-item BACKUP.qbb ID LIBRARY.");

/// True when standard output, or standard error, is a terminal.
bool OutputIsTerminal();
bool ErrorIsTerminal();

} // namespace qb::cli
