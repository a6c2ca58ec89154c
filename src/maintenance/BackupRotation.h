#pragma once

#include "maintenance/BackupFile.h"

#include <QDate>
#include <vector>

namespace qb {

/// A backup that lies in a folder.
struct BackupEntry {
    QString Path;    ///< of the first volume, where it has several
    qint64 Size = 0; ///< of all volumes
    QString Base;    ///< the library's name, in a name of the form <base>yymmdd.qbb; empty in others
    QDate Day;       ///< that of the name; none in others
    Date Made;       ///< as it says itself, or its file
    std::optional<BackupSummary> Summary;
    /// What the last check of this file has found: the moment, and whether it was good. None: it was not checked since
    /// it was written.
    Date Checked;
    bool IsGood = false;
};

/// The backups in a folder, the latest first. Raises RuntimeError 75 when there is no such folder.
std::vector<BackupEntry> ListBackups(const QString& folder);

/// Remembers what came of checking a backup, for as long as its file is the same.
void RememberCheck(const QString& file, bool isGood);

/// `<base>yymmdd.qbb` in a folder.
QString RotatingName(const QString& folder, const QString& library, const QDate& day);

/// Which backups of a library are kept: the last ones, one a day of the last days, and one a week of the last weeks.
struct RotationRule {
    int Last = 0;
    int Daily = 0;
    int Weekly = 0;
};

/// Of days, the latest first, those that a rule keeps, as a flag each. Days to come are always kept.
std::vector<bool> KeptBy(const RotationRule& rule, const std::vector<QDate>& days, const QDate& today);

struct RotationResult {
    QStringList Kept;
    QStringList Deleted;
    QStringList Spared; ///< would go, but none of those that would stay is known to be good
};

/// Deletes the backups in a folder that a rule does not keep, each library by itself. What has another form of name is
/// no matter of it. Nothing of a library goes before one of its backups that stay has been found good, which takes a
/// check where that was not done yet. With @p base only that library's. Raises RuntimeError 5 for a rule that keeps
/// none, 18 when it was cancelled.
RotationResult RotateBackups(const QString& folder, const RotationRule& rule, const QDate& today, Work& work = NoWork(),
                             const QString& base = {});

} // namespace qb
