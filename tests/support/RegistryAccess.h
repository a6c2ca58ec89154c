#pragma once

#include "config/cRegistry.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

#include <QFileInfo>
#include <functional>
#include <optional>

namespace qb::test {

using namespace Qt::StringLiterals;

inline const QString Section = u"Software\\Quill Base"_s;
inline const QString Classes = u"SOFTWARE\\Classes\\"_s;
inline const QString FileCode = u"%f"_s;
/// What has a meaning in XML, in a desktop entry, in a shell or in QString::arg.
inline const QString Hostile = u"ä <b>&amp; \"q\" 'a' `c` $HOME \\n %f %% %1 ; # ]]> = ~ * ? ( ) | > 😀"_s;

/// An environment variable that has another value for as long as the object lives.
class Variable {
public:
    Variable(const char* name, const QString& value) : m_name(name), m_before(qgetenv(name))
    {
        qputenv(name, QFile::encodeName(value));
    }
    ~Variable() { m_before.isNull() ? qunsetenv(m_name) : qputenv(m_name, m_before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
    QByteArray m_before;
};

inline QString StoreFile()
{
    return ConfigFolder() + u"Registry.json"_s;
}

inline QByteArray StoreBytes()
{
    return QFileInfo(StoreFile()).isFile() ? ReadFile(StoreFile()) : QByteArray();
}

inline cRegistry At(const QString& section, const QString& value = {}, RegistryHive hive = RegistryHive::CurrentUser)
{
    cRegistry registry;
    registry.SetClassKey(hive);
    registry.SetSectionKey(section);
    registry.SetValueKey(value);
    return registry;
}

inline void Let(const QString& section, const QString& name, const Value& value,
                RegistryType type = RegistryType::String)
{
    cRegistry registry = At(section, name);
    registry.SetValueType(type);
    registry.SetValue(value);
}

inline QString Text(const QString& section, const QString& name = {}, RegistryHive hive = RegistryHive::CurrentUser)
{
    cRegistry registry = At(section, name, hive);
    registry.SetDefault(u"(missing)"_s);
    return registry.Value().ToText();
}

inline bool Exists(const QString& section)
{
    return At(section).KeyExists();
}

/// Names of values or sections; "(failed)" when the operation says false.
inline QStringList Names(const QString& section, bool (cRegistry::*enumerate)(QStringList&, int&) const)
{
    QStringList names{u"from before"_s};
    int count = 17;
    const bool isDone = (At(section).*enumerate)(names, count);
    return count == names.size() && (isDone || names.isEmpty()) ? (isDone ? names : QStringList{u"(failed)"_s})
                                                                : QStringList{u"(inconsistent)"_s};
}
inline QStringList ValuesOf(const QString& section)
{
    return Names(section, &cRegistry::EnumerateValues);
}
inline QStringList SectionsOf(const QString& section)
{
    return Names(section, &cRegistry::EnumerateSections);
}

/// The error that @p action raises: number, source, text; "(none)" when it raises none.
inline QString ErrorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const RuntimeError& error) {
        return QString::number(error.Number()) + u' ' + error.Source() + u": "_s + error.Description();
    }
    return u"(none)"_s;
}

inline const QString StoreError = u"75 KTQuillbase.cRegistry: "_s;
inline const QString CallError = u"5 KTQuillbase.cRegistry: "_s;

/// An operation that changes the store, on section `a\b` and its value `v`.
struct Change {
    const char* Name;
    std::function<void(cRegistry&)> Run;
    QString Error;
};

inline QList<Change> AllChanges()
{
    const QString place = u"'HKEY_CURRENT_USER',Section: 'a\\b'"_s;
    return {
        {"CreateKey", [](cRegistry& registry) { registry.CreateKey(); }, u"Failed to create registry Key: "_s + place},
        {"DeleteKey", [](cRegistry& registry) { registry.DeleteKey(); }, u"Failed to delete registry Key: "_s + place},
        {"DeleteValue", [](cRegistry& registry) { registry.DeleteValue(); },
         u"Failed to open key "_s + place + u" for delete access"_s},
        {"Value", [](cRegistry& registry) { registry.SetValue(u"text"_s); },
         u"Failed to set registry value Key: "_s + place + u",Key: 'v' to value: 'text'"_s}};
}

/// Settings, data and programs of a test's own; none of the desktop's programs is there.
struct RegistryHome {
    TemporaryHome Home;
    Variable DataHome{"XDG_DATA_HOME", Home.Path(u"shared data"_s)};
    std::optional<Variable> Programs{std::in_place, "PATH", Home.Path(u"programs"_s)};
};

} // namespace qb::test
