#pragma once

#include "config/SettingFields.h"

#include <QList>
#include <QString>

namespace qb {

// The accessors that the macros write hide the rest of the class from the formatter.
// clang-format off

/// All settings behind one interface: those of the user, in the settings store, and those of
/// the open library, in its `Properties` row. A setter changes only the object and raises
/// SettingAwaitingUpdate; Apply writes everything. While ChangingSettings is false, a getter of
/// a library setting reads its column anew, so that the library is the truth; while it is true
/// (the options dialog is open) the object's own value is given.
class CSettings : public SettingFields {
    Q_OBJECT

public:
    /// @p currentDatabase gives the open library, or null.
    explicit CSettings(DatabaseSource currentDatabase);
    /// Counts the day, if that has not been done.
    ~CSettings() override;

    /// Loads everything and tells the listeners.
    void Initialise();

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

    /// Counts a day of use for compaction and backup, if the library was not opened today. Runs
    /// once an object: at the end of the session, while the library is still open.
    void CountDay();
    /// For what is no session of use: no day is counted.
    void SkipDayCount() { m_dayCounted = true; }

Q_SIGNALS:
    /// What the setting ShowStatusBar says, told by Initialise and Apply, whether it has changed or not.
    void eShowStatusBar(bool show);
    void SettingsUpdated();

private:
    bool m_dayCounted = false;
};

// clang-format on

} // namespace qb
