#pragma once

#include "conflicts/CConflict.h"

namespace qb {

/// A row of the list of a conflict's stored files.
struct ConflictFileRow {
    qint64 File = 0;
    QChar Mark; ///< N: in both, Z: in both with different descriptions, X: in the own version, Y: in the other one
    QString Icon;
    QString ToolTip;
    QStringList Columns; ///< title, size, and the dates of its creation, its adding and its last change

    QString Tag() const { return QString::number(File) + Mark; }
};

/// The files of both versions, each once.
std::vector<ConflictFileRow> FileRowsOf(CConflict& conflict);

/// The command that a row's menu offers.
enum class FileMove { None, ToOlder, ToNewer };
inline const QString MoveToNewerCaption = QStringLiteral("Move To Newer Version");
inline const QString MoveToOlderCaption = QStringLiteral("Move To Older Version");
/// By the row's letter; of one that is marked, by the opposite one.
FileMove MoveOffered(const ConflictFileRow& row);
/// Sets the mark of a row's file, or takes it away, with the row's words and icon. Those of a mark that was taken away
/// are those of the opposite version, deliberately.
void ToggleMove(CConflict& conflict, ConflictFileRow& row, FileMove move);

} // namespace qb
