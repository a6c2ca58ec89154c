#include "config/CSettings.h"

#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "platform/system/SettingsStore.h"
#include "support/DateFormatCustom.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

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
constexpr CSettings::Kind CSettings::KindOf()
{
    if constexpr (std::is_same_v<T, bool>)
        return Kind::Flag;
    else if constexpr (std::is_same_v<T, int>)
        return Kind::Number;
    else
        return std::is_same_v<T, Date> ? Kind::Moment : Kind::Text;
}

const std::array<CSettings::UserRow, size_t(CSettings::UserSetting::Count)>& CSettings::UserTable()
{
#define QB_ROW(property, key, fallback) {#property, key, DefaultText(fallback), KindOf<decltype(fallback)>()},
    static const std::array<UserRow, size_t(UserSetting::Count)> table{{QB_USER_SETTINGS(QB_ROW, QB_ROW, QB_ROW)}};
#undef QB_ROW
    return table;
}

const std::array<CSettings::LibraryRow, size_t(CSettings::LibrarySetting::Count)>& CSettings::LibraryTable()
{
#define QB_COLUMN(property, type, column) {#property, column, KindOf<type>()},
    static const std::array<LibraryRow, size_t(LibrarySetting::Count)> table{{QB_LIBRARY_SETTINGS(QB_COLUMN)}};
#undef QB_COLUMN
    return table;
}

QString CSettings::ColumnOf(LibrarySetting setting)
{
    return QString::fromLatin1(LibraryTable()[size_t(setting)].Column);
}

CSettings::CSettings(DatabaseSource currentDatabase) : m_currentDatabase(std::move(currentDatabase))
{
    LoadRegistrySettings();
}

CSettings::~CSettings()
{
    CountDay();
}

void CSettings::Initialise()
{
    LoadRegistrySettings();
    Q_EMIT SettingsUpdated();
    Q_EMIT eShowStatusBar(ShowStatusBar());
}

// The user's settings

bool CSettings::UserFlag(UserSetting setting) const
{
    const bool value = BooleanFromText(UserText(setting));
    if (setting != UserSetting::DBEnableSessionUndo)
        return value;
    // A shared library can't be undone; the preference is kept for the day it is no longer shared.
    return value && !m_library[size_t(LibrarySetting::DBShared)].ToBoolean();
}

void CSettings::LetUserText(UserSetting setting, const QString& value)
{
    UserField(setting) = value;
    Q_EMIT SettingAwaitingUpdate({});
}

void CSettings::LetUserFlag(UserSetting setting, bool value)
{
    LetUserText(setting, BooleanText(value));
}

void CSettings::LoadUser(UserSetting first, UserSetting end)
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
void CSettings::SaveUser()
{
    std::vector<StoredSetting> all;
    for (size_t i = 0; i < m_user.size(); ++i)
        all.push_back({Section, QString::fromLatin1(UserTable()[i].Key), m_user[i], m_userRead[i]});
    SaveSettings(SettingsApplication, all);
    m_userRead = m_user;
}

// The settings of the library

bool CSettings::OpenPropertiesRS()
{
    if (m_properties)
        return false;
    Database* database = m_currentDatabase ? m_currentDatabase() : nullptr;
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
std::optional<Value> CSettings::GetDatabaseProperty(const QString& column)
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

void CSettings::ReadDatabaseProperty(LibrarySetting setting)
{
    if (const auto value = GetDatabaseProperty(ColumnOf(setting)))
        LibraryField(setting) = m_libraryRead[size_t(setting)] = *value;
}

const Value& CSettings::LibraryValue(LibrarySetting setting)
{
    if (!m_changingSettings)
        ReadDatabaseProperty(setting);
    return LibraryField(setting);
}

void CSettings::LetLibraryValue(LibrarySetting setting, const Value& value)
{
    LibraryField(setting) = value;
    Q_EMIT SettingAwaitingUpdate({});
}

int CSettings::DBBackupUsedDays()
{
    SetDBCompactOnExitUsedDays(int(LibraryValue(LibrarySetting::DBBackupUsedDays).ToLong()));
    return 0;
}

void CSettings::SetDBBackupDir(const QString& folder)
{
    const bool separated = folder.endsWith(u'\\') || folder.endsWith(u'/');
    LetLibraryValue(LibrarySetting::DBBackupDir, separated ? folder.chopped(1) : folder);
}

bool CSettings::DBCompactOnExitExecute()
{
    return DBCompactOnExitUsedDays() >= DBCompactOnExitPeriod();
}

bool CSettings::DBBackupOnExitExecute()
{
    return DBBackupUsedDays() >= DBBackupPeriod();
}

void CSettings::DBCompacted()
{
    LibraryField(LibrarySetting::DBLastCompacted) = Clock::Today();
    SetDBCompactOnExitUsedDays(0);
    Q_EMIT SettingAwaitingUpdate({});
}

void CSettings::DBBackedUp()
{
    LibraryField(LibrarySetting::DBLastBackedUp) = Clock::Today();
    SetDBBackupUsedDays(0);
    Q_EMIT SettingAwaitingUpdate({});
}

Value CSettings::DefaultWhenNull(LibrarySetting setting) const
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

void CSettings::InitializeDatabaseProperties()
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
bool CSettings::SaveDatabaseProperties()
{
    Database* database = m_currentDatabase ? m_currentDatabase() : nullptr;
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

// User and library settings together

bool CSettings::Apply()
{
    return Guarded(
        ModuleName, u"Apply"_s,
        [this] {
            SaveUser();
            const bool written = SaveDatabaseProperties();
            Q_EMIT SettingsUpdated();
            Q_EMIT eShowStatusBar(ShowStatusBar());
            return written;
        },
        false);
}

bool CSettings::ApplyOrTakeBack()
{
    if (Apply())
        return true;
    LoadRegistrySettings();
    return false;
}

void CSettings::LoadRegistrySettings()
{
    Guarded(ModuleName, u"LoadRegistrySettings"_s, [this] {
        LoadUser(UserSetting(0), UserSetting::DBBackupAutomatic);
        InitializeDatabaseProperties();
        LoadUser(UserSetting::DBBackupAutomatic, UserSetting::Count);
    });
}

// Access by name

QList<CSettings::NamedSetting> CSettings::All() const
{
    QList<NamedSetting> all;
    for (size_t i = 0; i < m_user.size(); ++i)
        all.append({QString::fromLatin1(UserTable()[i].Name), m_user[i], false});
    if (!m_currentDatabase || !m_currentDatabase())
        return all;
    for (size_t i = 0; i < m_library.size(); ++i) {
        const LibraryRow& row = LibraryTable()[i];
        QString value = m_library[i].ToText();
        if (row.Type == Kind::Flag)
            value = BooleanText(m_library[i].ToBoolean());
        else if (row.Type == Kind::Number)
            value = QString::number(m_library[i].ToLong());
        else if (row.Type == Kind::Moment)
            value = m_library[i].ToDate().IsNone() ? QString()
                                                   : DateFormatCustom(m_library[i].ToDate(), u"yyyy-mm-dd hh:nn:ss"_s);
        all.append({QString::fromLatin1(row.Name), value, true});
    }
    return all;
}

QString CSettings::WhyNotOfKind(Kind kind, const QString& text)
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

QString CSettings::SetByName(const QString& name, const QString& text)
{
    const auto isNamed = [&name](const auto& row) {
        return name.compare(QLatin1StringView(row.Name), Qt::CaseInsensitive) == 0;
    };
    const auto user = std::find_if(UserTable().begin(), UserTable().end(), isNamed);
    if (user != UserTable().end()) {
        const QString reason = WhyNotOfKind(user->Type, text);
        if (reason.isEmpty())
            LetUserText(UserSetting(user - UserTable().begin()),
                        user->Type == Kind::Flag ? BooleanText(BooleanFromText(text)) : text);
        return reason;
    }
    const auto row = std::find_if(LibraryTable().begin(), LibraryTable().end(), isNamed);
    if (row == LibraryTable().end())
        return u"There is no setting of that name."_s;
    if (!m_currentDatabase || !m_currentDatabase())
        return u"It belongs to a library; name one with --library."_s;
    const QString reason = WhyNotOfKind(row->Type, text);
    if (!reason.isEmpty())
        return reason;
    const auto setting = LibrarySetting(row - LibraryTable().begin());
    if (setting == LibrarySetting::DBBackupDir)
        SetDBBackupDir(text);
    else if (row->Type == Kind::Text)
        LetLibraryValue(setting, text);
    else
        LetLibraryValue(setting, row->Type == Kind::Flag ? Value(BooleanFromText(text)) : Value(text.toInt()));
    return {};
}

void CSettings::CountDay()
{
    if (m_dayCounted)
        return;
    m_dayCounted = true;
    LibraryField(LibrarySetting::DBCompactOnExitUsedDays) = DBCompactOnExitUsedDays();
    LibraryField(LibrarySetting::DBBackupUsedDays) = DBBackupUsedDays();
    const Date lastOpened = LibraryField(LibrarySetting::LastOpened).ToDate();
    const Date today = Clock::Today();
    // The texts are compared, not the dates, so that the day of the month decides first.
    if (DateFormatCustom(lastOpened, DatePattern::Day) >= DateFormatCustom(today, DatePattern::Day))
        return;
    LibraryField(LibrarySetting::LastOpened) = today;
    for (const LibrarySetting counter : {LibrarySetting::DBCompactOnExitUsedDays, LibrarySetting::DBBackupUsedDays})
        LibraryField(counter) = LibraryField(counter).ToLong() + 1;
    SaveDatabaseProperties();
}

} // namespace qb
