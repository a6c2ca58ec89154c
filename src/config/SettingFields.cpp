#include "config/SettingFields.h"

#include "platform/system/Paths.h"
#include "platform/system/SettingsStore.h"
#include "support/ErrorRoutine.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CSettings"_s;
const QString Section = u"Settings"_s;

QString DefaultText(bool value)
{
    return BooleanText(value);
}

QString DefaultText(int value)
{
    return QString::number(value);
}

QString DefaultText(const char* value)
{
    return QString::fromLatin1(value);
}

} // namespace

template <class T>
constexpr SettingFields::Kind SettingFields::KindOf()
{
    if constexpr (std::is_same_v<T, bool>)
        return Kind::Flag;
    else if constexpr (std::is_same_v<T, int>)
        return Kind::Number;
    else
        return std::is_same_v<T, Date> ? Kind::Moment : Kind::Text;
}

const std::array<SettingFields::UserRow, size_t(SettingFields::UserSetting::Count)>& SettingFields::UserTable()
{
#define QB_ROW(property, key, fallback) {#property, key, DefaultText(fallback), KindOf<decltype(fallback)>()},
    static const std::array<UserRow, size_t(UserSetting::Count)> table{{QB_USER_SETTINGS(QB_ROW, QB_ROW, QB_ROW)}};
#undef QB_ROW
    return table;
}

const std::array<SettingFields::LibraryRow, size_t(SettingFields::LibrarySetting::Count)>& SettingFields::LibraryTable()
{
#define QB_COLUMN(property, type, column) {#property, column, KindOf<type>()},
    static const std::array<LibraryRow, size_t(LibrarySetting::Count)> table{{QB_LIBRARY_SETTINGS(QB_COLUMN)}};
#undef QB_COLUMN
    return table;
}

QString SettingFields::ColumnOf(LibrarySetting setting)
{
    return QString::fromLatin1(LibraryTable()[size_t(setting)].Column);
}

QString SettingFields::WhyNotOfKind(Kind kind, const QString& text)
{
    const QStringList flags{u"True"_s, u"False"_s};
    bool isNumber = false;
    text.toInt(&isNumber);
    if (kind == Kind::Flag && !flags.contains(text, Qt::CaseInsensitive))
        return u"It is True or False."_s;
    if (kind == Kind::Number && !isNumber)
        return u"It is a whole number."_s;
    return kind == Kind::Moment ? u"The program sets it itself."_s : QString();
}

// The user's settings

bool SettingFields::UserFlag(UserSetting setting) const
{
    const bool value = BooleanFromText(UserText(setting));
    if (setting != UserSetting::DBEnableSessionUndo)
        return value;
    // A shared library can't be undone; the preference is kept for the day it is no longer shared.
    return value && !m_library[size_t(LibrarySetting::DBShared)].ToBoolean();
}

void SettingFields::LetUserText(UserSetting setting, const QString& value)
{
    UserField(setting) = value;
    Q_EMIT SettingAwaitingUpdate({});
}

void SettingFields::LetUserFlag(UserSetting setting, bool value)
{
    LetUserText(setting, BooleanText(value));
}

void SettingFields::LoadUser(UserSetting first, UserSetting end)
{
    for (size_t i = size_t(first); i < size_t(end); ++i) {
        const UserRow& row = UserTable()[i];
        m_userRead[i] = GetSetting(SettingsApplication, Section, QString::fromLatin1(row.Key), row.Default);
        // The store is a text that anybody edits: what is no number there counts as not said.
        const bool isSaid = row.Type != Kind::Number || WhyNotOfKind(row.Type, m_userRead[i]).isEmpty();
        m_user[i] = isSaid ? m_userRead[i] : row.Default;
    }
}

/// All at once; what was not changed here may have been changed by another program.
void SettingFields::SaveUser()
{
    std::vector<StoredSetting> all;
    for (size_t i = 0; i < m_user.size(); ++i)
        all.push_back({Section, QString::fromLatin1(UserTable()[i].Key), m_user[i], m_userRead[i]});
    SaveSettings(SettingsApplication, all);
    m_userRead = m_user;
}

// The settings of the library

bool SettingFields::OpenPropertiesRS()
{
    if (m_properties)
        return false;
    Database* database = CurrentDatabase();
    if (!database)
        return false;
    return Guarded(ModuleName, u"OpenPropertiesRS"_s, [&] {
        m_properties = database->OpenRecordset(u"Properties"_s);
        if (m_properties->IsEmpty())
            m_properties.reset();
        else
            m_properties->MoveFirst();
    });
}

/// The value of a column of the library's row; nothing when there is no such row.
std::optional<Value> SettingFields::GetDatabaseProperty(const QString& column)
{
    const bool wasOpen = m_properties.has_value();
    if (!wasOpen && !OpenPropertiesRS())
        return std::nullopt;
    const auto value = Guarded(
        ModuleName, u"GetDatabaseProperty"_s,
        [&]() -> std::optional<Value> {
            if (!m_properties)
                return std::nullopt;
            return (*m_properties)[column]; // Null reads as 0, "" or False by the reader's type
        },
        std::optional<Value>());
    if (!wasOpen)
        ClosePropertiesRS();
    return value;
}

void SettingFields::ReadDatabaseProperty(LibrarySetting setting)
{
    if (const auto value = GetDatabaseProperty(ColumnOf(setting)))
        LibraryField(setting) = m_libraryRead[size_t(setting)] = *value;
}

const Value& SettingFields::LibraryValue(LibrarySetting setting)
{
    if (!m_changingSettings)
        ReadDatabaseProperty(setting);
    return LibraryField(setting);
}

void SettingFields::LetLibraryValue(LibrarySetting setting, const Value& value)
{
    LibraryField(setting) = value;
    Q_EMIT SettingAwaitingUpdate({});
}

Value SettingFields::DefaultWhenNull(LibrarySetting setting) const
{
    switch (setting) {
    case LibrarySetting::DBCompactOnExitPeriod:
    case LibrarySetting::DBBackupAutoDeleteNo:
        return 5;
    case LibrarySetting::DBBackupPeriod:
        return 15;
    case LibrarySetting::DBBackupDir:
        return fnExtractPathOrFileName(m_currentDatabase()->Name(), PathPart::Folder) + u"Backups"_s;
    default:
        return 0; // also False, and the date that means none
    }
}

void SettingFields::InitializeDatabaseProperties()
{
    const bool wasOpen = m_properties.has_value();
    if (!wasOpen && !OpenPropertiesRS())
        return;
    Guarded(ModuleName, u"InitializeDatabaseProperties"_s, [this] {
        for (size_t i = 0; m_properties && i < m_library.size(); ++i) {
            const auto setting = LibrarySetting(i);
            const Value value = (*m_properties)[ColumnOf(LibrarySetting(i))];
            m_libraryRead[i] = value;
            const bool missing = value.IsNull() || (setting == LibrarySetting::DBBackupDir && value.ToText().isEmpty());
            m_library[i] = missing ? DefaultWhenNull(setting) : value;
        }
    });
    if (!wasOpen)
        ClosePropertiesRS();
}

/// True also where there is nothing to write to.
bool SettingFields::SaveDatabaseProperties()
{
    Database* database = CurrentDatabase();
    if (!database || database->IsReadOnly() || (!m_properties && !OpenPropertiesRS()) || !m_properties)
        return true;
    const bool written = Guarded(ModuleName, u"SaveDatabaseProperties"_s, [this] {
        m_properties->Edit();
        for (size_t i = 0; i < m_library.size(); ++i) {
            if (m_library[i] == m_libraryRead[i])
                continue; // another program may have written it
            // The column of the backup folder refuses an empty text.
            const bool empty = LibrarySetting(i) == LibrarySetting::DBBackupDir && m_library[i].ToText().isEmpty();
            m_properties->Set(ColumnOf(LibrarySetting(i)), empty ? Value() : m_library[i]);
        }
        m_properties->Update();
        m_libraryRead = m_library;
    });
    ClosePropertiesRS();
    return written;
}

} // namespace qb
