#pragma once

#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace qb {

/// The application name under which the program keeps its settings.
inline const QString SettingsApplication = QStringLiteral("KTQuillbase");

/// Reads one text from the user's settings store: a file of sections and keys named after
/// @p appName in the ConfigFolder. A missing key yields @p fallback.
QString GetSetting(const QString& appName, const QString& section, const QString& key, const QString& fallback = {});

/// Writes one text at once. Raises RuntimeError 75 when the store can't be written; the value
/// on disk is then the old one.
void SaveSetting(const QString& appName, const QString& section, const QString& key, const QString& value);

/// A text to be written.
struct StoredSetting {
    QString Section;
    QString Key;
    QString Value;
    /// What it said when it was read: a value that is still the same is written only where the store lacks
    /// it, so that what another program has written to it stays.
    std::optional<QString> Before = {};
    /// Makes the value from what the store says now, empty where it says nothing, in place of Value.
    std::function<QString(const QString& stored)> Merged = {};
};

/// Writes all of them at once. The store is read, merged and replaced whole under a lock that goes with
/// its process; when nothing changes it is not touched. Raises RuntimeError 75 when it can't be read or
/// written, or another program keeps it locked; it is then as it was.
void SaveSettings(const QString& appName, const std::vector<StoredSetting>& settings);

/// "True" or "False", the words in which Booleans are stored.
QString BooleanText(bool value);

/// Reads a Boolean as it may stand in the store: "True" in any case, or a number other than 0.
bool BooleanFromText(const QString& text);

} // namespace qb
