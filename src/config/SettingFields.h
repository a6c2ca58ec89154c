#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Date.h"

#include <QObject>
#include <QString>
#include <array>
#include <functional>
#include <optional>

/// The user's settings in the order in which they are read and written: property, key in the
/// store, default.
#define QB_USER_SETTINGS(FLAG, NUMBER, TEXT)                                                                           \
    FLAG(SaveFormLayout, "SaveFormLayout", true)                                                                       \
    FLAG(ShowStatusBar, "ShowStatusBar", true)                                                                         \
    FLAG(DBEnableSessionUndo, "DBEnableSessionUndo", false)                                                            \
    FLAG(DBBackupAutomatic, "DBBackupAutomatic", false)                                                                \
    FLAG(ExpandBranches, "ExpandBranches", true)                                                                       \
    FLAG(AutoSaveFileDescriptions, "AutoSaveFileDescriptions", true)                                                   \
    FLAG(AutoSaveFileDescrIfAutoSaveOn, "AutoSaveFileDescIfAutoSaveOn", true)                                          \
    FLAG(DisplaySynchroNotifications, "DisplaySynchroNotifications", true)                                             \
    FLAG(AutoColorizeWhenItemOpened, "AutoColorizeWhenItemOpened", false)                                              \
    FLAG(AutoHideBookmarksWhenBrowsing, "AutoHideBookmarksWhenBrowsing", false)                                        \
    FLAG(AutoHideTreeWhenBrowsing, "AutoHideTreeWhenBrowsing", false)                                                  \
    TEXT(DefaultFontName, "DefaultFontName", "Verdana")                                                                \
    NUMBER(DefaultFontSize, "DefaultFontSize", 10)                                                                     \
    NUMBER(DefaultColor1, "DefaultColor1", 255)                                                                        \
    NUMBER(DefaultColor2, "DefaultColor2", 16711680)                                                                   \
    FLAG(InternetFileAutosaveToItem, "InternetFileAutosaveToItem", true)                                               \
    FLAG(InternetFileSaveToDir, "InternetAutoSaveToDir", false)                                                        \
    TEXT(InternetFileSavePath, "InternetFileSavePath", "")                                                             \
    FLAG(InternetFileCloseWhenFinished, "InternetFileLoadWindowCloseWhenFinished", false)                              \
    FLAG(TipsOnStartup, "TipsOnStartup", true)                                                                         \
    FLAG(ShowImportFilesDialog, "ShowImportFileDialog", true)                                                          \
    TEXT(ColourScheme, "ColourScheme", "System")                                                                       \
    TEXT(RuleColoursLight, "RuleColoursLight", "")                                                                     \
    TEXT(RuleColoursDark, "RuleColoursDark", "")                                                                       \
    TEXT(InterfaceFontName, "InterfaceFontName", "")                                                                   \
    NUMBER(InterfaceFontSize, "InterfaceFontSize", 0)                                                                  \
    FLAG(ViewLineNumbers, "ViewLineNumbers", true)                                                                     \
    FLAG(ViewWordWrap, "ViewWordWrap", false)                                                                          \
    NUMBER(ViewZoom, "ViewZoom", 100)                                                                                  \
    FLAG(ViewFilePreview, "ViewFilePreview", true)                                                                     \
    FLAG(KeepWebOut, "KeepWebOut", false)                                                                              \
    FLAG(BackupRotation, "BackupRotation", false)                                                                      \
    NUMBER(BackupRotationEvery, "BackupRotationEvery", 1)                                                              \
    NUMBER(BackupRotationLast, "BackupRotationLast", 3)                                                                \
    NUMBER(BackupRotationDaily, "BackupRotationDaily", 7)                                                              \
    NUMBER(BackupRotationWeekly, "BackupRotationWeekly", 8)                                                            \
    FLAG(PreviewSynchronization, "PreviewSynchronization", true)                                                       \
    NUMBER(RemovedDays, "RemovedDays", 365)                                                                            \
    NUMBER(RemovedMegabytes, "RemovedMegabytes", 1024)                                                                 \
    FLAG(UndoSynchronization, "UndoSynchronization", true)

/// The settings of the open library, columns of `Properties`, in the order in which they are
/// read: property, type, column.
#define QB_LIBRARY_SETTINGS(ROW)                                                                                       \
    ROW(DBShared, bool, "SharedDatabase")                                                                              \
    ROW(DBCompactOnExit, bool, "CompactOnExit")                                                                        \
    ROW(DBCompactOnExitPeriod, int, "CompactOnExitEvery")                                                              \
    ROW(DBCompactOnExitUsedDays, int, "CompactOnExitUsedDays")                                                         \
    ROW(DBLastCompacted, qb::Date, "LastCompacted")                                                                    \
    ROW(DBBackupOnExit, bool, "BackupOnExit")                                                                          \
    ROW(DBBackupPeriod, int, "BackupOnExitEvery")                                                                      \
    ROW(DBBackupUsedDays, int, "BackupOnExitUsedDays")                                                                 \
    ROW(DBLastBackedUp, qb::Date, "LastBackedUp")                                                                      \
    ROW(DBBackupDir, QString, "BackupDir")                                                                             \
    ROW(DBBackupAutoDeleteOld, bool, "BackupAutoDelete")                                                               \
    ROW(DBBackupAutoDeleteNo, int, "BackupAutoDeleteNo")                                                               \
    ROW(LastOpened, qb::Date, "LastOpened")

namespace qb {

/// The fields of all settings: those of the user with their keys in the settings store, those of the open library with
/// their columns in `Properties`, and how they are read and written. What each means is said by CSettings.
class SettingFields : public QObject {
    Q_OBJECT

public:
    using DatabaseSource = std::function<Database*()>;

    bool ChangingSettings() const { return m_changingSettings; }
    void SetChangingSettings(bool value) { m_changingSettings = value; }

    /// Reads the settings of the open library; without a library they stay as they are.
    void InitializeDatabaseProperties();
    /// Opens the library's row for several reads; false when it is open already or there is none.
    bool OpenPropertiesRS();
    void ClosePropertiesRS() { m_properties.reset(); }

Q_SIGNALS:
    /// A value was changed and not yet applied; the description is always empty.
    void SettingAwaitingUpdate(const QString& description);

protected:
#define QB_NAME(property, ...) property,
    enum class UserSetting { QB_USER_SETTINGS(QB_NAME, QB_NAME, QB_NAME) Count };
    enum class LibrarySetting { QB_LIBRARY_SETTINGS(QB_NAME) Count };
#undef QB_NAME

    enum class Kind { Flag, Number, Text, Moment };
    struct UserRow {
        const char* Name;
        const char* Key;
        QString Default;
        Kind Type;
    };
    struct LibraryRow {
        const char* Name;
        const char* Column;
        Kind Type;
    };
    template <class T>
    static constexpr Kind KindOf();
    static const std::array<UserRow, size_t(UserSetting::Count)>& UserTable();
    static const std::array<LibraryRow, size_t(LibrarySetting::Count)>& LibraryTable();
    static QString ColumnOf(LibrarySetting setting);
    static QString WhyNotOfKind(Kind kind, const QString& text);

    /// @p currentDatabase gives the open library, or null.
    explicit SettingFields(DatabaseSource currentDatabase) : m_currentDatabase(std::move(currentDatabase)) {}

    Database* CurrentDatabase() const
    {
        return m_currentDatabase ? m_currentDatabase() : nullptr;
    }
    const QString& UserValue(size_t setting) const
    {
        return m_user[setting];
    }
    const Value& HeldValue(size_t setting) const
    {
        return m_library[setting];
    }

    QString& UserField(UserSetting setting)
    {
        return m_user[size_t(setting)];
    }
    const QString& UserText(UserSetting setting) const
    {
        return m_user[size_t(setting)];
    }
    bool UserFlag(UserSetting setting) const;
    void LetUserText(UserSetting setting, const QString& value);
    void LetUserFlag(UserSetting setting, bool value);
    void LoadUser(UserSetting first, UserSetting end);
    void SaveUser();

    Value& LibraryField(LibrarySetting setting)
    {
        return m_library[size_t(setting)];
    }
    const Value& LibraryValue(LibrarySetting setting);
    void LetLibraryValue(LibrarySetting setting, const Value& value);
    void ReadDatabaseProperty(LibrarySetting setting);
    std::optional<Value> GetDatabaseProperty(const QString& column);
    Value DefaultWhenNull(LibrarySetting setting) const;
    bool SaveDatabaseProperties();

private:
    DatabaseSource m_currentDatabase;
    bool m_changingSettings = false;
    std::array<QString, size_t(UserSetting::Count)> m_user;
    std::array<QString, size_t(UserSetting::Count)> m_userRead; ///< as they were read, or written last
    std::array<Value, size_t(LibrarySetting::Count)> m_library;
    std::array<Value, size_t(LibrarySetting::Count)> m_libraryRead;
    std::optional<Recordset> m_properties;
};

} // namespace qb
