#include "removed/RemovedRetention.h"

#include "platform/system/SettingsStore.h"
#include "store/PendingRemoved.h"
#include "store/StoredFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMap>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

int NumberOf(const QString& key, int fallback)
{
    bool isNumber = false;
    const int number = GetSetting(SettingsApplication, u"Settings"_s, key, {}).toInt(&isNumber);
    return isNumber && number >= 0 ? number : fallback;
}

/// The names of events and the sizes of their files.
QMap<QString, qint64> SizesOf(const QDir& folder)
{
    QMap<QString, qint64> sizes;
    for (const QFileInfo& file : folder.entryInfoList(QDir::Files | QDir::NoSymLinks, QDir::Unsorted)) {
        for (const QString& extension : {RemovedItemsExtension, RemovedIndexExtension}) {
            const QString name = file.fileName().chopped(qMin(file.fileName().size(), extension.size()));
            if (file.fileName().endsWith(extension) && IsRemovedName(name))
                sizes[name] += file.size();
        }
    }
    return sizes;
}

/// The index goes last: what is half gone is still found, and goes another time.
bool Remove(const QDir& folder, const QString& name)
{
    bool isGone = true;
    for (const QString& extension : {RemovedItemsExtension, RemovedIndexExtension}) {
        const QString file = folder.filePath(name + extension);
        isGone = isGone && (!IsPlainFile(file) || QFile::remove(file));
    }
    return isGone;
}

} // namespace

RetentionRule ReadRetention()
{
    const RetentionRule fallback;
    return {NumberOf(u"RemovedDays"_s, fallback.Days), NumberOf(u"RemovedMegabytes"_s, fallback.Megabytes)};
}

QStringList PruneRemoved(const QString& libraryPath, const RetentionRule& rule, Date now)
{
    constexpr qint64 Megabyte = 1 << 20;
    const QDir folder(RemovedFolderOf(libraryPath));
    const QMap<QString, qint64> sizes = SizesOf(folder);
    qint64 left = 0;
    for (const qint64 size : sizes)
        left += size;
    // Names begin with their moments, which texts tell apart as well.
    const QString oldest = QDateTime(now.Day(), now.Time()).addDays(-rule.Days).toString(u"yyyy-MM-dd HHmmss"_s);
    QStringList removed;
    for (auto event = sizes.begin(); event != sizes.end() && std::next(event) != sizes.end(); ++event) {
        const bool isOld = rule.Days > 0 && event.key().left(oldest.size()) < oldest;
        const bool isTooMuch = rule.Megabytes > 0 && left > rule.Megabytes * Megabyte;
        if ((!isOld && !isTooMuch) || !Remove(folder, event.key()))
            continue;
        left -= event.value();
        removed << event.key();
    }
    return removed;
}

} // namespace qb
