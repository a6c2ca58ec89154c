#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Date.h"

#include <QObject>
#include <QString>
#include <array>
#include <functional>
#include <memory>

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

// The accessors that the macros write hide the rest of the class from the formatter.
// clang-format off

/// All settings behind one interface: those of the user, in the settings store, and those of
/// the open library, in its `Properties` row. A setter changes only the object and raises
/// SettingAwaitingUpdate; Apply writes everything. While ChangingSettings is false, a getter of
/// a library setting reads its column anew, so that the library is the truth; while it is true
/// (the options dialog is open) the object's own value is given.
class CSettings : public QObject {
    Q_OBJECT

public:
    using DatabaseSource = std::function<Database*()>;

    /// @p currentDatabase gives the open library, or null.
    explicit CSettings(DatabaseSource currentDatabase);
    /// Counts the day, if that has not been done.
    ~CSettings() override;

    /// Loads everything and tells the listeners.
    void Initialise();

    bool ChangingSettings() const { return m_changingSettings; }
    void SetChangingSettings(bool value) { m_changingSettings = value; }

#define QB_FLAG(property, key, fallback)                                                                               \
    bool property() const { return UserFlag(UserSetting::property); }                                                  \
    void Set##property(bool value) { LetUserFlag(UserSetting::property, value); }
#define QB_NUMBER(property, key, fallback)                                                                             \
    int property() const { return UserText(UserSetting::property).toInt(); }                                           \
    void Set##property(int value) { LetUserText(UserSetting::property, QString::number(value)); }
#define QB_TEXT(property, key, fallback)                                                                               \
    QString property() const { return UserText(UserSetting::property); }                                               \
    void Set##property(const QString& value) { LetUserText(UserSetting::property, value); }
    QB_USER_SETTINGS(QB_FLAG, QB_NUMBER, QB_TEXT)
#undef QB_FLAG
#undef QB_NUMBER
#undef QB_TEXT

    bool DBShared() { return LibraryValue(LibrarySetting::DBShared).ToBoolean(); }
    void SetDBShared(bool value) { LetLibraryValue(LibrarySetting::DBShared, value); }
    bool DBCompactOnExit() { return LibraryValue(LibrarySetting::DBCompactOnExit).ToBoolean(); }
    void SetDBCompactOnExit(bool value) { LetLibraryValue(LibrarySetting::DBCompactOnExit, value); }
    int DBCompactOnExitPeriod() { return int(LibraryValue(LibrarySetting::DBCompactOnExitPeriod).ToLong()); }
    void SetDBCompactOnExitPeriod(int days) { LetLibraryValue(LibrarySetting::DBCompactOnExitPeriod, days); }
    int DBCompactOnExitUsedDays() { return int(LibraryValue(LibrarySetting::DBCompactOnExitUsedDays).ToLong()); }
    void SetDBCompactOnExitUsedDays(int days) { LetLibraryValue(LibrarySetting::DBCompactOnExitUsedDays, days); }
    Date DBLastCompacted() { return LibraryValue(LibrarySetting::DBLastCompacted).ToDate(); }
    bool DBBackupOnExit() { return LibraryValue(LibrarySetting::DBBackupOnExit).ToBoolean(); }
    void SetDBBackupOnExit(bool value) { LetLibraryValue(LibrarySetting::DBBackupOnExit, value); }
    int DBBackupPeriod() { return int(LibraryValue(LibrarySetting::DBBackupPeriod).ToLong()); }
    void SetDBBackupPeriod(int days) { LetLibraryValue(LibrarySetting::DBBackupPeriod, days); }
    /// Deliberately odd: always 0, and what the library counts goes to the compaction's counter.
    int DBBackupUsedDays();
    void SetDBBackupUsedDays(int days) { LetLibraryValue(LibrarySetting::DBBackupUsedDays, days); }
    Date DBLastBackedUp() { return LibraryValue(LibrarySetting::DBLastBackedUp).ToDate(); }
    QString DBBackupDir() { return LibraryValue(LibrarySetting::DBBackupDir).ToText(); }
    /// One separator at the end is taken off.
    void SetDBBackupDir(const QString& folder);
    bool DBBackupAutoDeleteOld() { return LibraryValue(LibrarySetting::DBBackupAutoDeleteOld).ToBoolean(); }
    void SetDBBackupAutoDeleteOld(bool value) { LetLibraryValue(LibrarySetting::DBBackupAutoDeleteOld, value); }
    int DBBackupAutoDeleteNo() { return int(LibraryValue(LibrarySetting::DBBackupAutoDeleteNo).ToLong()); }
    void SetDBBackupAutoDeleteNo(int files) { LetLibraryValue(LibrarySetting::DBBackupAutoDeleteNo, files); }

    /// The used days have reached the period. Whether compaction is wanted is not asked here.
    bool DBCompactOnExitExecute();
    bool DBBackupOnExitExecute();
    /// Sets the date of the last compaction to today and its used days to 0; writes nothing.
    void DBCompacted();
    void DBBackedUp();

    /// Writes all settings to both stores. False when that can't be, which is reported; the listeners are told
    /// as far as something was written.
    bool Apply();
    /// The same for a change that is made outside of the dialog: what can't be written is taken back.
    bool ApplyOrTakeBack();
    /// Reads all settings from both stores; edits that were not applied are dropped.
    void LoadRegistrySettings();
    /// Reads the settings of the open library; without a library they stay as they are.
    void InitializeDatabaseProperties();
    // By name, for scripts

    struct NamedSetting {
        QString Name; ///< of the property
        QString Value; ///< flags as "True" or "False", dates as "yyyy-MM-dd HH:mm:ss" or empty
        bool OfLibrary;
    };
    /// All settings, those of the library only when one is open.
    QList<NamedSetting> All() const;
    /// Sets one by its name, in any case, without applying it. Returns why it can't be set; empty
    /// when it is.
    QString SetByName(const QString& name, const QString& text);

    /// Opens the library's row for several reads; false when it is open already or there is none.
    bool OpenPropertiesRS();
    void ClosePropertiesRS() { m_properties.reset(); }

    /// Counts a day of use for compaction and backup, if the library was not opened today. Runs
    /// once an object: at the end of the session, while the library is still open.
    void CountDay();
    /// For what is no session of use: no day is counted.
    void SkipDayCount() { m_dayCounted = true; }

Q_SIGNALS:
    /// What the setting ShowStatusBar says, told by Initialise and Apply, whether it has changed or not.
    void eShowStatusBar(bool show);
    /// A value was changed and not yet applied; the description is always empty.
    void SettingAwaitingUpdate(const QString& description);
    void SettingsUpdated();

private:
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

    QString& UserField(UserSetting setting) { return m_user[size_t(setting)]; }
    const QString& UserText(UserSetting setting) const { return m_user[size_t(setting)]; }
    bool UserFlag(UserSetting setting) const;
    void LetUserText(UserSetting setting, const QString& value);
    void LetUserFlag(UserSetting setting, bool value);
    void LoadUser(UserSetting first, UserSetting end);
    void SaveUser();

    Value& LibraryField(LibrarySetting setting) { return m_library[size_t(setting)]; }
    const Value& LibraryValue(LibrarySetting setting);
    void LetLibraryValue(LibrarySetting setting, const Value& value);
    void ReadDatabaseProperty(LibrarySetting setting);
    std::optional<Value> GetDatabaseProperty(const QString& column);
    Value DefaultWhenNull(LibrarySetting setting) const;
    bool SaveDatabaseProperties();

    DatabaseSource m_currentDatabase;
    bool m_changingSettings = false;
    bool m_dayCounted = false;
    std::array<QString, size_t(UserSetting::Count)> m_user;
    std::array<QString, size_t(UserSetting::Count)> m_userRead; ///< as they were read, or written last
    std::array<Value, size_t(LibrarySetting::Count)> m_library;
    std::array<Value, size_t(LibrarySetting::Count)> m_libraryRead;
    std::optional<Recordset> m_properties;
};

// clang-format on

} // namespace qb
