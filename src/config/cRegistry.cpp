#include "config/cRegistry.h"

#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QProcess>
#include <QSaveFile>

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
    bool operator()(const QString& left, const QString& right) const { return left.compare(right, Qt::CaseInsensitive) < 0; }
};
using Entries = std::map<QString, Value, NoCase>; ///< the values of a section, by name
using Hive = std::map<QString, Entries, NoCase>; ///< by path; "" is the hive itself
using Store = std::array<Hive, HiveNames.size()>;

// Paths

/// Separators at the ends and repeated ones mean nothing.
QString PathOf(const QString& section)
{
    return section.split(u'\\', Qt::SkipEmptyParts).join(u'\\');
}

/// The sections below @p path, at any depth: the first one and what follows the last one.
template <class AnyHive>
auto Below(AnyHive& hive, const QString& path)
{
    const QString prefix = path.isEmpty() ? QString() : path + u'\\';
    const auto first = prefix.isEmpty() ? std::next(hive.begin()) : hive.lower_bound(prefix);
    const auto end = std::find_if_not(first, hive.end(), [&](const auto& section) {
        return section.first.startsWith(prefix, Qt::CaseInsensitive);
    });
    return std::pair(first, end);
}

Entries& MadeSection(Hive& hive, const QString& path)
{
    for (qsizetype end = path.indexOf(u'\\'); end >= 0; end = path.indexOf(u'\\', end + 1))
        hive.try_emplace(path.left(end));
    return hive.try_emplace(path).first->second;
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
    const auto bytes = QByteArray::fromBase64Encoding(object[BytesMember].toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
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
            if (!ReadSection(MadeSection(store[size_t(name - HiveNames.begin())], PathOf(section.key())), section.value()))
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
    const QByteArray bytes = QJsonDocument(hives).toJson();
    QSaveFile file(StoreFile());
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

/// Has @p change, a function of the store, change the file; false when it says false or the file
/// can't be read or written. No other process changes the file meanwhile.
template <class Change>
bool ChangeStore(Change&& change)
{
    constexpr int Patience = 5000; // milliseconds
    QLockFile lock(StoreFile() + u".lock"_s);
    if (!lock.tryLock(Patience))
        return false;
    std::optional<Store> store = ReadStore();
    return store && change(*store) && WriteStore(*store);
}

/// The values of a section; nothing when there is no such section or the file can't be read.
std::optional<Entries> StoredSection(RegistryHive hive, const QString& section)
{
    const std::optional<Store> store = ReadStore();
    if (!store)
        return std::nullopt;
    const auto found = (*store)[size_t(hive)].find(PathOf(section));
    return found == (*store)[size_t(hive)].end() ? std::nullopt : std::optional(found->second);
}

/// What @p value becomes when it is written as @p type; nothing when it can't be.
std::optional<Value> AsType(const Value& value, RegistryType type)
{
    bool isNumber = true;
    switch (type) {
    case RegistryType::Binary:
        return Value(value.ToBytes());
    case RegistryType::Number:
        if (const Value number = value.ToText().toLongLong(&isNumber); isNumber)
            return number;
        return std::nullopt;
    case RegistryType::String:
        break;
    }
    return Value(value.ToText());
}

// Associations

QString Or(const QString& caption, const QString& usual)
{
    return caption.isEmpty() ? usual : caption;
}

QString CommandOf(const QString& command)
{
    return u"\\shell\\"_s + command;
}

[[noreturn]] void Refuse(const QString& description)
{
    throw RuntimeError(ErrorNumber::InvalidCall, description, Source);
}

} // namespace

void cRegistry::Fail(const QString& start, const QString& section, const QString& end) const
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       start + u"'"_s + HiveNames[size_t(m_classKey)] + u"',Section: '"_s + section + u'\'' + end, Source);
}

bool cRegistry::KeyExists() const
{
    return StoredSection(m_classKey, m_sectionKey).has_value();
}

bool cRegistry::CreateKey()
{
    const bool isMade = ChangeStore([this](Store& store) {
        MadeSection(store[size_t(m_classKey)], PathOf(m_sectionKey));
        return true;
    });
    if (!isMade)
        Fail(u"Failed to create registry Key: "_s, m_sectionKey);
    return true;
}

bool cRegistry::DeleteKey()
{
    const QString path = PathOf(m_sectionKey);
    const bool isDeleted = !path.isEmpty() && ChangeStore([&](Store& store) {
        Hive& hive = store[size_t(m_classKey)];
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
    const bool isDeleted = ChangeStore([&](Store& store) {
        Hive& hive = store[size_t(m_classKey)];
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
    const bool isSet = written && ChangeStore([&](Store& store) {
        MadeSection(store[size_t(m_classKey)], PathOf(m_sectionKey))[m_valueKey] = *written;
        return true;
    });
    if (!isSet)
        Fail(u"Failed to set registry value Key: "_s, m_sectionKey, u",Key: '"_s + m_valueKey + u"' to value: '"_s + value.ToText() + u'\'');
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
    const std::optional<Store> store = ReadStore();
    const QString path = PathOf(m_sectionKey);
    const Hive hive = store ? (*store)[size_t(m_classKey)] : Hive();
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
    const bool isWritten = ChangeStore([&](Store& store) {
        for (const auto& [section, text] : texts)
            MadeSection(store[size_t(m_classKey)], PathOf(Classes + section))[QString()] = text;
        return true;
    });
    if (!isWritten) {
        const auto& [section, text] = texts.constFirst();
        Fail(u"Failed to set registry value Key: "_s, Classes + section, u",Key: '' to value: '"_s + text + u'\'');
    }
    desktop.PutInPlace();
    m_fileType = type;
}

void cRegistry::CreateEXEAssociation(const EXEAssociation& association)
{
    const QString& program = association.Program;
    const struct {
        bool IsWanted;
        QString Name;
        QString Caption;
        QString Option;
    } commands[] = {
        {true, u"open"_s, Or(association.OpenCaption, u"&Open"_s), {}},
        {association.Print, u"print"_s, Or(association.PrintCaption, u"&Print"_s), u"/p"_s},
        {association.New, u"new"_s, Or(association.NewCaption, u"&New"_s), u"/n"_s},
        {association.Install, u"add"_s, Or(association.InstallCaption, u"&Install "_s + association.Description), u"/a"_s},
    };
    const QString& name = association.ClassName;
    FileType type{name, association.Description, association.Extension, association.IconFile, {}};
    Texts texts{{u'.' + association.Extension, name}, {name, association.Description}};
    for (const auto& command : commands) {
        if (!command.IsWanted)
            continue;
        const bool isOpen = command.Option.isEmpty();
        // Only the command that opens has the program in quotes.
        const QString line = isOpen ? u'"' + program + u'"' : program + u' ' + command.Option;
        texts << std::pair(name + CommandOf(command.Name), command.Caption)
              << std::pair(name + CommandOf(command.Name) + u"\\command"_s, line + u" \"%1\""_s);
        const QStringList arguments = isOpen ? QStringList{u"%1"_s} : QStringList{command.Option, u"%1"_s};
        type.Commands << FileCommand{command.Name, command.Caption, program, arguments};
    }
    texts << std::pair(name + u"\\DefaultIcon"_s, Or(association.IconFile, program) + u',' + QString::number(association.IconIndex));
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
    Texts texts;
    for (qsizetype i = 0; i < nameTextCommand.size(); i += Group) {
        const QString& name = nameTextCommand[i];
        if (name.isEmpty() || name.contains(u'\\'))
            Refuse(u"'%1' can't be the name of a command."_s.arg(name));
        const QString section = type.ClassName + CommandOf(name);
        texts << std::pair(section, nameTextCommand[i + 1]) << std::pair(section + u"\\command"_s, nameTextCommand[i + 2]);
        const QStringList words = QProcess::splitCommand(nameTextCommand[i + 2]);
        const FileCommand command{name, nameTextCommand[i + 1], words.value(0), words.mid(1)};
        const auto isNamed = [&](const FileCommand& other) { return other.Name.compare(name, Qt::CaseInsensitive) == 0; };
        const auto taken = std::find_if(type.Commands.begin(), type.Commands.end(), isNamed);
        if (taken != type.Commands.end())
            *taken = command;
        else
            type.Commands << command;
    }
    if (!texts.isEmpty())
        Register(type, texts);
}

} // namespace qb
