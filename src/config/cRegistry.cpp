#include "config/cRegistry.h"

#include "platform/system/FileLock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>
#include <map>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Source = u"KTQuillbase.cRegistry"_s;
const QString Classes = u"SOFTWARE\\Classes\\"_s;
const QString BytesMember = u"base64"_s;

/// By RegistryHive: the names of the hives, in texts and in the file.
const std::array HiveNames{u"HKEY_CLASSES_ROOT"_s, u"HKEY_CURRENT_USER"_s, u"HKEY_LOCAL_MACHINE"_s, u"HKEY_USERS"_s};

struct NoCase {
    bool operator()(const QString& left, const QString& right) const
    {
        return left.compare(right, Qt::CaseInsensitive) < 0;
    }
};
using Entries = std::map<QString, Value, NoCase>; ///< the values of a section, by name
using Hive = std::map<QString, Entries, NoCase>;  ///< by path; "" is the hive itself
using Store = std::array<Hive, HiveNames.size()>;

// Paths

/// Separators at the ends and repeated ones mean nothing.
QString PathOf(const QString& section)
{
    return section.split(u'\\', Qt::SkipEmptyParts).join(u'\\');
}

/// The sections below @p path, at any depth: the first one and what follows the last one.
auto Below(const Hive& hive, const QString& path)
{
    const QString prefix = path.isEmpty() ? QString() : path + u'\\';
    const auto first = prefix.isEmpty() ? std::next(hive.begin()) : hive.lower_bound(prefix);
    const auto isBelow = [&](const auto& section) { return section.first.startsWith(prefix, Qt::CaseInsensitive); };
    return std::pair(first, std::find_if_not(first, hive.end(), isBelow));
}

/// The section, made if need be; what is above it is made too, or lends its spelling.
Entries& MadeSection(Hive& hive, const QString& path)
{
    qsizetype end = path.size();
    auto section = hive.find(path);
    while (section == hive.end()) {
        end = qMax(path.lastIndexOf(u'\\', end - 1), qsizetype(0));
        section = hive.find(path.left(end)); // the hive itself is there
    }
    while (end < path.size()) {
        const qsizetype next = path.indexOf(u'\\', end + 1);
        const qsizetype length = (next < 0 ? path.size() : next) - end;
        section = hive.try_emplace(section->first + path.mid(end, length)).first;
        end += length;
    }
    return section->second;
}

// The file

QString StoreFile()
{
    return ConfigFolder() + u"Registry.json"_s;
}

QJsonValue ToJson(const Value& value)
{
    if (const auto* number = std::get_if<qint64>(&value.Content()))
        return *number;
    if (const auto* bytes = std::get_if<QByteArray>(&value.Content()))
        return QJsonObject{{BytesMember, QString::fromLatin1(bytes->toBase64())}};
    return value.ToText();
}

std::optional<Value> FromJson(const QJsonValue& json)
{
    if (json.isString())
        return Value(json.toString());
    if (json.toVariant().typeId() == QMetaType::LongLong)
        return Value(json.toInteger());
    const QJsonObject object = json.toObject();
    const auto bytes = QByteArray::fromBase64Encoding(object[BytesMember].toString().toLatin1(),
                                                      QByteArray::AbortOnBase64DecodingErrors);
    if (object.size() == 1 && object[BytesMember].isString() && bytes)
        return Value(bytes.decoded);
    return std::nullopt;
}

/// Adds what the file says of a section; false for what this class does not write.
bool ReadSection(Entries& entries, const QJsonValue& json)
{
    const QJsonObject values = json.toObject();
    for (auto value = values.begin(); value != values.end(); ++value) {
        const std::optional<Value> read = FromJson(value.value());
        if (!read || !entries.emplace(value.key(), *read).second)
            return false;
    }
    return json.isObject();
}

/// Nothing when the file can't be read or holds what this class does not write.
std::optional<Store> ReadStore()
{
    Store store;
    for (Hive& hive : store)
        hive.try_emplace(QString());
    QFile file(StoreFile());
    if (!file.exists())
        return store;
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject hives = document.object();
    for (auto hive = hives.begin(); hive != hives.end(); ++hive) {
        const auto name = std::find(HiveNames.begin(), HiveNames.end(), hive.key());
        if (name == HiveNames.end() || !hive.value().isObject())
            return std::nullopt;
        const QJsonObject sections = hive.value().toObject();
        for (auto section = sections.begin(); section != sections.end(); ++section) {
            if (!ReadSection(MadeSection(store[size_t(name - HiveNames.begin())], PathOf(section.key())),
                             section.value()))
                return std::nullopt;
        }
    }
    return store;
}

bool WriteStore(const Store& store)
{
    QJsonObject hives;
    for (size_t i = 0; i < store.size(); ++i) {
        QJsonObject sections;
        for (const auto& [path, entries] : store[i]) {
            QJsonObject values;
            for (const auto& [name, value] : entries)
                values.insert(name, ToJson(value));
            if (!path.isEmpty() || !values.isEmpty())
                sections.insert(path, values);
        }
        if (!sections.isEmpty())
            hives.insert(HiveNames[i], sections);
    }
    return ReplaceContents(StoreFile(), QJsonDocument(hives).toJson()).isEmpty();
}

/// Has @p change, a function of the hive, change the file; false when it says false or the file
/// can't be read or written. No other process changes the file meanwhile.
template <class Change>
bool ChangeHive(RegistryHive hive, Change&& change)
{
    constexpr auto Patience = std::chrono::seconds(5);
    const FileLock lock(StoreFile() + u".lock"_s, FileLock::Target::Own, Patience);
    if (lock.IsBusy())
        return false;
    std::optional<Store> store = ReadStore();
    return store && change((*store)[size_t(hive)]) && WriteStore(*store);
}

/// The hive as it is in the file; without even itself when that can't be read.
Hive StoredHive(RegistryHive hive)
{
    const std::optional<Store> store = ReadStore();
    return store ? (*store)[size_t(hive)] : Hive();
}

/// The values of a section; nothing when there is no such section or the file can't be read.
std::optional<Entries> StoredSection(RegistryHive key, const QString& section)
{
    const Hive hive = StoredHive(key);
    const auto found = hive.find(PathOf(section));
    return found == hive.end() ? std::nullopt : std::optional(found->second);
}

/// What @p value becomes when it is written as @p type; nothing when it can't be.
std::optional<Value> AsType(const Value& value, RegistryType type)
{
    bool isPossible = true;
    const qint64 number = type == RegistryType::Number ? value.ToText().toLongLong(&isPossible) : 0;
    if (!isPossible)
        return std::nullopt;
    if (type == RegistryType::Number)
        return Value(number);
    return type == RegistryType::Binary ? Value(value.ToBytes()) : Value(value.ToText());
}

[[noreturn]] void Refuse(const QString& description)
{
    throw RuntimeError(ErrorNumber::InvalidCall, description, Source);
}

} // namespace

void cRegistry::Fail(const QString& start, const QString& section, const QString& end) const
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       start + u"'"_s + HiveNames[size_t(m_classKey)] + u"',Section: '"_s + section + u'\'' + end,
                       Source);
}

void cRegistry::FailToSet(const QString& section, const QString& name, const QString& text) const
{
    Fail(u"Failed to set registry value Key: "_s, section, u",Key: '"_s + name + u"' to value: '"_s + text + u'\'');
}

bool cRegistry::KeyExists() const
{
    return StoredSection(m_classKey, m_sectionKey).has_value();
}

bool cRegistry::CreateKey()
{
    const bool isMade = ChangeHive(m_classKey, [this](Hive& hive) {
        MadeSection(hive, PathOf(m_sectionKey));
        return true;
    });
    if (!isMade)
        Fail(u"Failed to create registry Key: "_s, m_sectionKey);
    return true;
}

bool cRegistry::DeleteKey()
{
    const QString path = PathOf(m_sectionKey);
    const bool isDeleted = !path.isEmpty() && ChangeHive(m_classKey, [&](Hive& hive) {
        const auto [first, end] = Below(hive, path);
        hive.erase(first, end);
        return hive.erase(path) > 0;
    });
    if (!isDeleted)
        Fail(u"Failed to delete registry Key: "_s, m_sectionKey);
    return true;
}

bool cRegistry::DeleteValue()
{
    bool isOpen = false;
    const bool isDeleted = ChangeHive(m_classKey, [&](Hive& hive) {
        const auto section = hive.find(PathOf(m_sectionKey));
        isOpen = section != hive.end();
        return isOpen && section->second.erase(m_valueKey) > 0;
    });
    if (!isOpen)
        Fail(u"Failed to open key "_s, m_sectionKey, u" for delete access"_s);
    if (!isDeleted)
        Fail(u"Failed to delete registry Key: "_s, m_sectionKey, u",Key: '"_s + m_valueKey + u'\'');
    return true;
}

qb::Value cRegistry::Value() const
{
    const std::optional<Entries> section = StoredSection(m_classKey, m_sectionKey);
    if (!section || !section->contains(m_valueKey))
        return m_default;
    return section->at(m_valueKey);
}

void cRegistry::SetValue(const qb::Value& value)
{
    const std::optional<qb::Value> written = AsType(value, m_valueType);
    const bool isSet = written && ChangeHive(m_classKey, [&](Hive& hive) {
                           MadeSection(hive, PathOf(m_sectionKey))[m_valueKey] = *written;
                           return true;
                       });
    if (!isSet)
        FailToSet(m_sectionKey, m_valueKey, value.ToText());
}

bool cRegistry::EnumerateValues(QStringList& names, int& count) const
{
    names.clear();
    const std::optional<Entries> section = StoredSection(m_classKey, m_sectionKey);
    for (const auto& [name, value] : section.value_or(Entries()))
        names << name;
    count = int(names.size());
    return section.has_value();
}

bool cRegistry::EnumerateSections(QStringList& names, int& count) const
{
    names.clear();
    count = 0;
    const QString path = PathOf(m_sectionKey);
    const Hive hive = StoredHive(m_classKey);
    if (!hive.contains(path))
        return false;
    const qsizetype start = path.isEmpty() ? 0 : path.size() + 1;
    const auto [first, end] = Below(hive, path);
    for (auto section = first; section != end; ++section) {
        if (section->first.indexOf(u'\\', start) < 0)
            names << section->first.mid(start);
    }
    count = int(names.size());
    return true;
}

/// Writes the texts as the defaults of their sections, all or none, and tells the desktop of the type.
void cRegistry::Register(const FileType& type, const Texts& texts)
{
    FileAssociation desktop(type, Source);
    const bool isWritten = ChangeHive(m_classKey, [&](Hive& hive) {
        for (const auto& [section, text] : texts)
            MadeSection(hive, PathOf(Classes + section))[QString()] = text;
        return true;
    });
    if (!isWritten)
        FailToSet(Classes + texts.constFirst().first, QString(), texts.constFirst().second);
    desktop.PutInPlace();
    m_fileType = type;
}

cRegistry::Texts cRegistry::TextsOf(const QString& className, const QList<FileCommand>& commands)
{
    Texts texts;
    for (const FileCommand& command : commands) {
        const QString section = className + u"\\shell\\"_s + command.Name;
        texts << std::pair(section, command.Caption) << std::pair(section + u"\\command"_s, command.Line);
    }
    return texts;
}

void cRegistry::CreateEXEAssociation(const EXEAssociation& association)
{
    const FileType type = FileTypeOf(association);
    const QString& icon = association.IconFile.isEmpty() ? association.Program : association.IconFile;
    Texts texts{{u'.' + type.Extension, type.ClassName}, {type.ClassName, type.Description}};
    texts << TextsOf(type.ClassName, type.Commands)
          << std::pair(type.ClassName + u"\\DefaultIcon"_s, icon + u',' + QString::number(association.IconIndex));
    Register(type, texts);
}

void cRegistry::CreateAdditionalEXEAssociations(const QStringList& nameTextCommand)
{
    constexpr qsizetype Group = 3;
    if (nameTextCommand.size() % Group != 0)
        Refuse(u"Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command"_s);
    if (m_fileType.ClassName.isEmpty())
        Refuse(u"Error - attempt to create additional associations before class defined."_s);
    FileType type = m_fileType;
    QList<FileCommand> added;
    for (qsizetype i = 0; i < nameTextCommand.size(); i += Group) {
        const QString& name = nameTextCommand[i];
        if (name.isEmpty() || name.contains(u'\\'))
            Refuse(u"'%1' can't be the name of a command."_s.arg(name));
        added << FileCommandOf(name, nameTextCommand[i + 1], nameTextCommand[i + 2]);
        type.SetCommand(added.constLast());
    }
    if (!added.isEmpty())
        Register(type, TextsOf(type.ClassName, added));
}

} // namespace qb
