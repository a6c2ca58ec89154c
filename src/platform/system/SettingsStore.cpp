#include "platform/system/SettingsStore.h"

#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QSettings>

namespace qb {

namespace {

QString StoreFile(const QString& appName)
{
    return ConfigFolder() + appName + QStringLiteral(".ini");
}

QString Path(const QString& section, const QString& key)
{
    return section + u'/' + key;
}

} // namespace

QString GetSetting(const QString& appName, const QString& section, const QString& key, const QString& fallback)
{
    const QSettings store(StoreFile(appName), QSettings::IniFormat);
    return store.value(Path(section, key), fallback).toString();
}

void SaveSetting(const QString& appName, const QString& section, const QString& key, const QString& value)
{
    const QString file = StoreFile(appName);
    QString reason = WhyNotWritable(file);
    if (reason.isEmpty()) {
        QSettings store(file, QSettings::IniFormat);
        store.setValue(Path(section, key), value);
        store.sync();
        if (store.status() != QSettings::AccessError) // a faulty line of the file hinders nobody
            return;
        reason = QStringLiteral("The file can't be written.");
    }
    throw RuntimeError(ErrorNumber::PathAccess,
                       QStringLiteral("The setting '%1' could not be saved in '%2'. %3")
                           .arg(key, QDir::toNativeSeparators(file), reason),
                       QStringLiteral("SaveSetting"));
}

QString BooleanText(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

bool BooleanFromText(const QString& text)
{
    return text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 || text.toInt() != 0;
}

} // namespace qb
