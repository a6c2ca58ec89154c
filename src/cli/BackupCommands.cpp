// Backups, and what brings a library to another state as a whole.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "cli/ProgressLine.h"
#include "maintenance/BackupItems.h"
#include "maintenance/BackupRotation.h"
#include "maintenance/Compaction.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryRestore.h"
#include "platform/system/Clock.h"

#include <QDir>
#include <QFileInfo>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

/// A number of bytes; K, M and G stand for powers of 1024.
qint64 SizeOf(const QString& text)
{
    if (text.isEmpty())
        return 0;
    const qsizetype unit = u"KMG"_s.indexOf(text.back().toUpper());
    bool ok = false;
    const qint64 number = (unit < 0 ? text : text.chopped(1)).toLongLong(&ok);
    constexpr qint64 Most = qint64(1) << 50;
    const int shift = unit < 0 ? 0 : 10 * int(unit + 1);
    if (!ok || number <= 0 || number > (Most >> shift))
        throw UsageError{u"'%1' is not the size of a volume."_s.arg(text)};
    return number << shift;
}

QJsonArray ToJson(const QStringList& texts)
{
    QJsonArray array;
    for (const QString& text : texts)
        array.append(text);
    return array;
}

QJsonObject ToJson(const BackupSummary& summary)
{
    return {{u"library"_s, summary.Library},
            {u"name"_s, summary.Name},
            {u"made"_s, MomentText(summary.Made, Reader::Program)},
            {u"version"_s, summary.Version},
            {u"items"_s, summary.Rows.value(u"Items"_s)},
            {u"files"_s, summary.Files.Count},
            {u"pages"_s, summary.Pages.Count},
            {u"bytes"_s, summary.Files.Bytes + summary.Pages.Bytes}};
}

QJsonValue CheckedOf(const BackupEntry& entry)
{
    return entry.Checked.IsNone() ? QJsonValue() : QJsonValue(entry.IsGood);
}

QString LineFor(const BackupEntry& entry)
{
    const QString state = entry.Checked.IsNone() ? u"not checked"_s : entry.IsGood ? u"good"_s : u"bad"_s;
    return u"%1  %2  %3  %4\n"_s.arg(MomentText(entry.Made, Reader::Person))
        .arg(entry.Size, 12)
        .arg(state, -11)
        .arg(QFileInfo(entry.Path).fileName());
}

void ComplainOfDamage(const std::vector<LibraryFault>& damage)
{
    for (const LibraryFault& fault : damage)
        Complain(fault.Text);
    if (!damage.empty())
        Complain(u"The backup was made, with these as they are. "_s + HowToBringBack);
}

} // namespace

int Backup(const QStringList& words)
{
    const Arguments arguments(words, {{"volume", "size"}}, 2);
    const BackUpOptions options{.VolumeSize = SizeOf(arguments.Value(u"volume"_s))};
    ProgressLine line(Parts);
    const BackUpResult result = BackUpLibrary(arguments.Positional(0), arguments.Positional(1), options, line);
    RememberCheck(result.Files.first(), result.Damage.empty());
    ComplainOfDamage(result.Damage);
    if (result.MissingFiles > 0)
        Complain(u"%1 stored files are missing in the library, and so in the backup."_s.arg(result.MissingFiles));
    const int status = result.Damage.empty() ? 0 : 1;
    if (!arguments.Json())
        return status;
    QJsonObject object = ToJson(result.Summary);
    object.insert(u"backup"_s, ToJson(result.Files));
    object.insert(u"size"_s, result.Size);
    object.insert(u"missing"_s, result.MissingFiles);
    object.insert(u"damaged"_s, qint64(result.Damage.size()));
    Print(object);
    return status;
}

int RestoreCommand(const QStringList& words)
{
    const Arguments arguments(words, {{"replace", ""}, {"number", ""}}, 2);
    if (arguments.Has(u"replace"_s) && arguments.Has(u"number"_s))
        throw UsageError{u"Give either --replace or --number."_s};
    const RestoreOver over = arguments.Has(u"replace"_s)  ? RestoreOver::Replace
                             : arguments.Has(u"number"_s) ? RestoreOver::Number
                                                          : RestoreOver::Refuse;
    ProgressLine line(Parts);
    const RestoreResult result = RestoreLibrary(arguments.Positional(0), arguments.Positional(1), over, line);
    if (arguments.Json())
        Print(QJsonObject{{u"library"_s, result.Library},
                          {u"items"_s, result.Items},
                          {u"files"_s, result.Files},
                          {u"pages"_s, result.Pages}});
    else
        Print(QDir::toNativeSeparators(result.Library) + u'\n');
    return 0;
}

int Verify(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const QString file = arguments.Positional(0);
    if (!QFileInfo(file).isFile())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"The file '%1' was not found."_s.arg(QDir::toNativeSeparators(file)), u"verify"_s);
    const QFileInfo folder(QFileInfo(file).absolutePath());
    ProgressLine line(Parts);
    const BackupCheck check = CheckBackup(file, folder.isWritable() ? folder.filePath() : QDir::tempPath(), line);
    RememberCheck(file, check.Faults.isEmpty());
    if (arguments.Json()) {
        QJsonObject object = check.Summary ? ToJson(*check.Summary) : QJsonObject();
        object.insert(u"faults"_s, ToJson(check.Faults));
        Print(object);
    } else if (check.Faults.isEmpty()) {
        Print(check.Summary ? u"The backup is good.\n"_s
                            : u"The backup can be unpacked; it does not say what should be in it.\n"_s);
    } else {
        Print(check.Faults.join(u'\n') + u'\n');
    }
    return check.Faults.isEmpty() ? 0 : 1;
}

int Compact(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    ProgressLine line(u"bytes"_s);
    const qint64 freed = CompactLibrary(arguments.Positional(0), line);
    if (arguments.Json())
        Print(QJsonObject{{u"freed"_s, freed}});
    return 0;
}

int UndoSessionCommand(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    ProgressLine line(u"bytes"_s);
    UndoSession(arguments.Positional(0), line);
    if (arguments.Json())
        Print(QJsonObject{{u"undone"_s, true}});
    return 0;
}

int Backups(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    QJsonArray list;
    for (const BackupEntry& entry : ListBackups(arguments.Positional(0))) {
        QJsonObject object = entry.Summary ? ToJson(*entry.Summary) : QJsonObject();
        object.insert(u"path"_s, entry.Path);
        object.insert(u"size"_s, entry.Size);
        object.insert(u"made"_s, MomentText(entry.Made, Reader::Program));
        object.insert(u"good"_s, CheckedOf(entry));
        list.append(object);
        if (!arguments.Json())
            Print(LineFor(entry));
    }
    if (arguments.Json())
        Print(list);
    return 0;
}

int Rotate(const QStringList& words)
{
    const Arguments arguments(words, {{"last", "n"}, {"daily", "d"}, {"weekly", "w"}}, 1);
    const RotationRule rule{.Last = arguments.NumberOption(u"last"_s, 0),
                            .Daily = arguments.NumberOption(u"daily"_s, 0),
                            .Weekly = arguments.NumberOption(u"weekly"_s, 0)};
    if (rule.Last <= 0 && rule.Daily <= 0 && rule.Weekly <= 0)
        throw UsageError{u"Say what is kept: --last, --daily or --weekly."_s};
    ProgressLine line(Parts);
    const RotationResult result = RotateBackups(arguments.Positional(0), rule, Clock::Today().Day(), line);
    for (const QString& file : result.Spared)
        Complain(u"'%1' is kept: none of those that would stay is good."_s.arg(QDir::toNativeSeparators(file)));
    if (arguments.Json())
        Print(QJsonObject{{u"kept"_s, ToJson(result.Kept)},
                          {u"deleted"_s, ToJson(result.Deleted)},
                          {u"spared"_s, ToJson(result.Spared)}});
    else
        for (const QString& file : result.Deleted)
            Print(u"deleted: %1\n"_s.arg(QDir::toNativeSeparators(file)));
    return result.Spared.isEmpty() ? 0 : 1;
}

int RestoreItem(const QStringList& words)
{
    const Arguments arguments(words, {{"parent", "id"}}, 3);
    const auto library = OpenLibrary(arguments.Positional(2), DBEngine::Access::ReadWrite);
    const qint64 parent = arguments.Has(u"parent"_s) ? arguments.IdOption(u"parent"_s) : -1;
    ProgressLine line(u"bytes"_s);
    BackupItems backup(arguments.Positional(0), QFileInfo(library->Name()).absolutePath(), line);
    const qint64 id = backup.BringBack(arguments.Id(1), *library, parent, line);
    if (arguments.Json())
        Print(QJsonObject{{u"id"_s, id}});
    else
        Print(u"%1\n"_s.arg(id));
    return 0;
}

} // namespace qb::cli
