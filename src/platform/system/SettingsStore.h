#pragma once

#include <QString>

namespace qb {

/// The application name under which the program keeps its settings.
inline const QString SettingsApplication = QStringLiteral("KTQuillbase");

/// Reads one text from the user's settings store: a file of sections and keys named after
/// @p appName in the ConfigFolder. A missing key yields @p fallback.
QString GetSetting(const QString& appName, const QString& section, const QString& key,
                   const QString& fallback = {});

/// Writes one text at once. Raises RuntimeError 75 when the store can't be written; the value
/// on disk is then the old one.
void SaveSetting(const QString& appName, const QString& section, const QString& key, const QString& value);

/// "True" or "False", the words in which Booleans are stored.
QString BooleanText(bool value);

/// Reads a Boolean as it may stand in the store: "True" in any case, or a number other than 0.
bool BooleanFromText(const QString& text);

} // namespace qb
