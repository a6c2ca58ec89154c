#include "platform/system/SettingsStore.h"

#include "platform/system/FileLock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/IniText.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/stat.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString StoreFile(const QString& appName)
{
    return ConfigFolder() + appName + QStringLiteral(".ini");
}

/// What the store says; one that is not there says nothing. Returns why it can't be read.
QString ReadStore(const QString& path, IniText& text)
{
    QFile file(path);
    if (!file.exists()) {
        text = IniText();
        return {};
    }
    QByteArray bytes;
    const QString reason = file.open(QIODevice::ReadOnly) ? ReadAll(file, bytes) : file.errorString();
    if (reason.isEmpty())
        text = IniText(std::move(bytes));
    return reason;
}

/// The store as it was read last, while its file is the same one.
struct RememberedStore {
    QString Path;
    struct stat State {};
    IniText Text = IniText();

    bool IsOf(const QString& path, const struct stat& state) const
    {
        return Path == path && State.st_ino == state.st_ino && State.st_dev == state.st_dev
               && State.st_size == state.st_size && State.st_mtim.tv_sec == state.st_mtim.tv_sec
               && State.st_mtim.tv_nsec == state.st_mtim.tv_nsec && State.st_ctim.tv_nsec == state.st_ctim.tv_nsec;
    }
};

RememberedStore& Remembered()
{
    static RememberedStore store;
    return store;
}

/// Merges the settings into what the store says now. Returns why that could not be done.
QString Merge(const QString& path, const std::vector<StoredSetting>& settings)
{
    if (const QString reason = WhyNotWritable(path); !reason.isEmpty())
        return reason;
    constexpr auto Patience = std::chrono::seconds(5); // another program is waited for, but not for ever
    const FileLock lock(QFileInfo(path).absolutePath(), FileLock::Target::Existing, Patience);
    if (lock.IsBusy())
        return u"Another program keeps it locked."_s;
    IniText text;
    if (const QString reason = ReadStore(path, text); !reason.isEmpty())
        return reason + u'.';
    const QByteArray before = text.Bytes();
    for (const StoredSetting& setting : settings) {
        const std::optional<QString> stored = text.Value(setting.Section, setting.Key);
        const QString value = setting.Merged ? setting.Merged(stored.value_or(QString())) : setting.Value;
        if (stored != value && (!stored || setting.Before != value))
            text.Set(setting.Section, setting.Key, value);
    }
    if (text.Bytes() == before)
        return {};
    Remembered() = {};
    const QString reason = ReplaceContents(path, text.Bytes());
    return reason.isEmpty() ? QString() : u"The file can't be written: %1."_s.arg(reason);
}

} // namespace

QString GetSetting(const QString& appName, const QString& section, const QString& key, const QString& fallback)
{
    const QString path = StoreFile(appName);
    struct stat state {};
    if (::stat(QFile::encodeName(path).constData(), &state) != 0)
        return fallback;
    RememberedStore& store = Remembered();
    if (!store.IsOf(path, state)) {
        store = {};
        if (!S_ISREG(state.st_mode) || !ReadStore(path, store.Text).isEmpty())
            return fallback;
        store.Path = path;
        store.State = state;
    }
    return store.Text.Value(section, key).value_or(fallback);
}

void SaveSettings(const QString& appName, const std::vector<StoredSetting>& settings)
{
    const QString file = StoreFile(appName);
    const QString reason = settings.empty() ? QString() : Merge(file, settings);
    if (!reason.isEmpty())
        throw RuntimeError(ErrorNumber::PathAccess,
                           QStringLiteral("The setting '%1' could not be saved in '%2'. %3")
                               .arg(settings.front().Key, QDir::toNativeSeparators(file), reason),
                           QStringLiteral("SaveSetting"));
}

void SaveSetting(const QString& appName, const QString& section, const QString& key, const QString& value)
{
    SaveSettings(appName, {{.Section = section, .Key = key, .Value = value}});
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
