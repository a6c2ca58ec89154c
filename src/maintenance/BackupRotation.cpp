#include "maintenance/BackupRotation.h"

#include "platform/system/Clock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <map>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString ChecksFile()
{
    return ConfigFolder() + u"CheckedBackups.json"_s;
}

QJsonObject ReadChecks()
{
    QFile file(ChecksFile());
    QByteArray bytes;
    return file.open(QIODevice::ReadOnly) && ReadAll(file, bytes).isEmpty() ? QJsonDocument::fromJson(bytes).object()
                                                                            : QJsonObject();
}

/// What tells one state of a backup's files from another.
QString StampOf(const QStringList& files)
{
    QStringList stamps;
    for (const QString& file : files) {
        const QFileInfo info(file);
        stamps << u"%1@%2"_s.arg(info.size()).arg(info.lastModified().toMSecsSinceEpoch());
    }
    return stamps.join(u' ');
}

/// What can't be listed counts as the file alone.
QStringList PiecesOf(const QString& file)
{
    try {
        return FilesOfBackup(file);
    } catch (const RuntimeError&) {
        return {file};
    }
}

/// All volumes that are there, even where one is missing, the last first: while the first is there, so is its entry.
QStringList PiecesToDelete(const QString& file)
{
    if (!file.endsWith(u".001"_s))
        return {file};
    QStringList pieces;
    for (int number = 999; number >= 1; --number) {
        const QString piece = file.chopped(3) + u"%1"_s.arg(number, 3, 10, QLatin1Char('0'));
        if (QFileInfo::exists(piece))
            pieces << piece;
    }
    return pieces;
}

BackupEntry EntryOf(const QFileInfo& info, const QJsonObject& checks)
{
    static const QRegularExpression form(u"^(.*)(\\d{6})\\.qbb(?:\\.001)?$"_s,
                                         QRegularExpression::DotMatchesEverythingOption
                                             | QRegularExpression::CaseInsensitiveOption);
    const QStringList pieces = PiecesOf(info.filePath());
    BackupEntry entry;
    entry.Path = info.absoluteFilePath();
    entry.Made = Date::FromDateTime(info.lastModified());
    for (const QString& piece : pieces)
        entry.Size += QFileInfo(piece).size();
    if (const QRegularExpressionMatch match = form.match(info.fileName()); match.hasMatch()) {
        entry.Day = QDate::fromString(u"20"_s + match.captured(2), u"yyyyMMdd"_s);
        entry.Base = entry.Day.isValid() ? match.captured(1) : QString();
    }
    entry.Summary = ReadBackupSummary(info.filePath());
    if (entry.Summary)
        entry.Made = entry.Summary->Made;
    const QJsonObject check = checks.value(entry.Path).toObject();
    if (!check.isEmpty() && check.value(u"stamp"_s).toString() == StampOf(pieces)) {
        entry.Checked = Date::FromWallSeconds(check.value(u"checked"_s).toInteger());
        entry.IsGood = check.value(u"good"_s).toBool();
    }
    return entry;
}

/// Whether one of these is good, the latest asked first.
bool HasGoodOne(const std::vector<const BackupEntry*>& entries, Work& work)
{
    for (const BackupEntry* entry : entries) {
        if (entry->IsGood)
            return true;
    }
    for (const BackupEntry* entry : entries) {
        if (!entry->Checked.IsNone())
            continue; // and found bad
        const bool isGood = CheckBackup(entry->Path, QFileInfo(entry->Path).absolutePath(), work).Faults.isEmpty();
        RememberCheck(entry->Path, isGood);
        if (isGood)
            return true;
    }
    return false;
}

/// Those of one library, the latest first.
void Rotate(const std::vector<const BackupEntry*>& entries, const RotationRule& rule, const QDate& today,
            RotationResult& result, Work& work)
{
    std::vector<QDate> days;
    for (const BackupEntry* entry : entries)
        days.push_back(entry->Day);
    const std::vector<bool> isKept = KeptBy(rule, days, today);
    std::vector<const BackupEntry*> kept;
    QStringList going;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (isKept[i]) {
            kept.push_back(entries[i]);
            result.Kept << entries[i]->Path;
        } else {
            going << entries[i]->Path;
        }
    }
    if (going.isEmpty())
        return;
    if (!HasGoodOne(kept, work)) {
        result.Spared << going;
        return;
    }
    for (const QString& file : std::as_const(going)) {
        for (const QString& piece : PiecesToDelete(file)) {
            if (!QFile::remove(piece))
                throw RuntimeError(ErrorNumber::PathAccess,
                                   u"The backup '%1' can't be deleted."_s.arg(QDir::toNativeSeparators(piece)),
                                   u"RotateBackups"_s);
        }
        result.Deleted << file;
    }
}

} // namespace

std::vector<BackupEntry> ListBackups(const QString& folder)
{
    if (!QFileInfo(folder).isDir())
        throw RuntimeError(ErrorNumber::PathAccess, u"There is no folder '%1'."_s.arg(QDir::toNativeSeparators(folder)),
                           u"ListBackups"_s);
    std::vector<BackupEntry> entries;
    const QJsonObject checks = ReadChecks();
    for (const QFileInfo& info : QDir(folder).entryInfoList({u"*.qbb"_s, u"*.qbb.001"_s}, QDir::Files, QDir::Name))
        entries.push_back(EntryOf(info, checks));
    std::stable_sort(entries.begin(), entries.end(),
                     [](const BackupEntry& left, const BackupEntry& right) { return left.Made > right.Made; });
    return entries;
}

void RememberCheck(const QString& file, bool isGood)
{
    QJsonObject checks = ReadChecks();
    for (const QString& known : checks.keys()) {
        if (!QFileInfo::exists(known))
            checks.remove(known);
    }
    checks.insert(QFileInfo(file).absoluteFilePath(), QJsonObject{{u"stamp"_s, StampOf(PiecesOf(file))},
                                                                  {u"checked"_s, Clock::Now().WallSeconds()},
                                                                  {u"good"_s, isGood}});
    ReplaceContents(ChecksFile(), QJsonDocument(checks).toJson()); // what is forgotten is checked once more
}

QString RotatingName(const QString& folder, const QString& library, const QDate& day)
{
    return QDir(folder).filePath(fnExtractPathOrFileName(library, PathPart::BaseName) + day.toString(u"yyMMdd"_s)
                                 + u".qbb"_s);
}

std::vector<bool> KeptBy(const RotationRule& rule, const std::vector<QDate>& days, const QDate& today)
{
    constexpr int DaysOfWeek = 7;
    std::vector<bool> kept(days.size());
    QSet<qint64> seenDays, seenWeeks;
    int place = 0;
    for (size_t i = 0; i < days.size(); ++i) {
        const qint64 age = days[i].daysTo(today);
        kept[i] = age < 0;
        if (kept[i])
            continue; // a clock was ahead: it must take no other one's place
        const qint64 day = days[i].toJulianDay();
        const qint64 week = day / DaysOfWeek; // Julian day 0 was a Monday
        const bool isFirstOfDay = !seenDays.contains(day);
        const bool isFirstOfWeek = !seenWeeks.contains(week);
        seenDays << day;
        seenWeeks << week;
        kept[i] = place++ < rule.Last || (isFirstOfDay && age < rule.Daily)
                  || (isFirstOfWeek && today.toJulianDay() / DaysOfWeek - week < rule.Weekly);
    }
    return kept;
}

RotationResult RotateBackups(const QString& folder, const RotationRule& rule, const QDate& today, Work& work,
                             const QString& base)
{
    if (rule.Last <= 0 && rule.Daily <= 0 && rule.Weekly <= 0)
        throw RuntimeError(ErrorNumber::InvalidCall, u"A rule that keeps no backup is refused. Nothing was changed."_s,
                           u"RotateBackups"_s);
    std::vector<BackupEntry> entries = ListBackups(folder);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const BackupEntry& left, const BackupEntry& right) { return left.Day > right.Day; });
    // Libraries of one name may lie in different folders.
    std::map<std::pair<QString, QString>, std::vector<const BackupEntry*>> libraries;
    for (const BackupEntry& entry : entries) {
        if (!entry.Base.isEmpty() && (base.isEmpty() || entry.Base == base))
            libraries[{entry.Base, entry.Summary ? entry.Summary->Library : QString()}].push_back(&entry);
    }
    RotationResult result;
    for (const auto& [library, own] : libraries)
        Rotate(own, rule, today, result, work);
    return result;
}

} // namespace qb
