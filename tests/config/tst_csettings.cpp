#include "config/CSettings.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Paths.h"
#include "platform/system/SettingsStore.h"
#include "support/ErrorRoutine.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// One property as the tests see it: its value as a Value, whatever its type.
struct Property {
    std::function<Value(CSettings&)> Get;
    std::function<void(CSettings&, const Value&)> Set; ///< empty for what can only be read
};

template <class Type>
Type As(const Value& value)
{
    if constexpr (std::is_same_v<Type, QString>)
        return value.ToText();
    else if constexpr (std::is_same_v<Type, bool>)
        return value.ToBoolean();
    else
        return Type(value.ToLong());
}

#define QB_READ_ONLY(name)                                                                                             \
    Property                                                                                                           \
    {                                                                                                                  \
        [](CSettings& settings) { return Value(settings.name()); }, {}                                                 \
    }
#define QB_PROPERTY(name)                                                                                              \
    Property                                                                                                           \
    {                                                                                                                  \
        [](CSettings& settings) { return Value(settings.name()); }, [](CSettings& settings, const Value& newValue) {   \
            settings.Set##name(As<decltype(settings.name())>(newValue));                                               \
        }                                                                                                              \
    }

QString SettingText(const QString& key, const QString& fallback = u"(missing)"_s)
{
    return GetSetting(SettingsApplication, u"Settings"_s, key, fallback);
}

const QString LibraryColumns[] = {
    u"SharedDatabase"_s, u"CompactOnExit"_s, u"CompactOnExitEvery"_s, u"CompactOnExitUsedDays"_s,
    u"LastCompacted"_s,  u"BackupOnExit"_s,  u"BackupOnExitEvery"_s,  u"BackupOnExitUsedDays"_s,
    u"LastBackedUp"_s,   u"BackupDir"_s,     u"BackupAutoDelete"_s,   u"BackupAutoDeleteNo"_s,
    u"LastOpened"_s};

} // namespace

Q_DECLARE_METATYPE(Property)
Q_DECLARE_METATYPE(qb::Date)

class TestCSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_clock = std::make_unique<FixedClock>(Today);
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home->Path(u"data/my library ö.qbd"_s));
        // A session of today has been counted, so that an object that goes writes nothing.
        SetColumn(u"LastOpened"_s, Today.DateOnly());
    }
    void cleanup()
    {
        m_library.reset();
        m_prompts.reset();
        m_clock.reset();
        m_home.reset();
    }

    // The user's settings

    void userSetting_data()
    {
        QTest::addColumn<Property>("property");
        QTest::addColumn<QString>("key");
        QTest::addColumn<Value>("fallback");
        QTest::addColumn<Value>("other");
        QTest::addColumn<QString>("stored"); // text of the other value
        const auto flag = [](const char* key, bool fallback, const Property& property) {
            QTest::newRow(key) << property << QString::fromLatin1(key) << Value(fallback) << Value(!fallback)
                               << (fallback ? u"False"_s : u"True"_s);
        };
        const auto text = [](const char* key, const Value& fallback, const Value& other, const Property& property) {
            QTest::newRow(key) << property << QString::fromLatin1(key) << fallback << other << other.ToText();
        };
        flag("SaveFormLayout", true, QB_PROPERTY(SaveFormLayout));
        flag("ShowStatusBar", true, QB_PROPERTY(ShowStatusBar));
        flag("DBEnableSessionUndo", false, QB_PROPERTY(DBEnableSessionUndo));
        flag("DBBackupAutomatic", false, QB_PROPERTY(DBBackupAutomatic));
        flag("ExpandBranches", true, QB_PROPERTY(ExpandBranches));
        flag("AutoSaveFileDescriptions", true, QB_PROPERTY(AutoSaveFileDescriptions));
        flag("AutoSaveFileDescIfAutoSaveOn", true, QB_PROPERTY(AutoSaveFileDescrIfAutoSaveOn));
        flag("DisplaySynchroNotifications", true, QB_PROPERTY(DisplaySynchroNotifications));
        flag("AutoColorizeWhenItemOpened", false, QB_PROPERTY(AutoColorizeWhenItemOpened));
        flag("AutoHideBookmarksWhenBrowsing", false, QB_PROPERTY(AutoHideBookmarksWhenBrowsing));
        flag("AutoHideTreeWhenBrowsing", false, QB_PROPERTY(AutoHideTreeWhenBrowsing));
        text("DefaultFontName", u"Verdana"_s, u"Größe Mono"_s, QB_PROPERTY(DefaultFontName));
        text("DefaultFontSize", 10, 14, QB_PROPERTY(DefaultFontSize));
        text("DefaultColor1", 255, 16777215, QB_PROPERTY(DefaultColor1));
        text("DefaultColor2", 16711680, 0, QB_PROPERTY(DefaultColor2));
        flag("InternetFileAutosaveToItem", true, QB_PROPERTY(InternetFileAutosaveToItem));
        flag("InternetAutoSaveToDir", false, QB_PROPERTY(InternetFileSaveToDir));
        text("InternetFileSavePath", QString(), u"/home/ä b, c;d/"_s, QB_PROPERTY(InternetFileSavePath));
        flag("InternetFileLoadWindowCloseWhenFinished", false, QB_PROPERTY(InternetFileCloseWhenFinished));
        flag("TipsOnStartup", true, QB_PROPERTY(TipsOnStartup));
        flag("ShowImportFileDialog", true, QB_PROPERTY(ShowImportFilesDialog));
        flag("ViewLineNumbers", true, QB_PROPERTY(ViewLineNumbers));
        flag("ViewWordWrap", false, QB_PROPERTY(ViewWordWrap));
        text("ViewZoom", 100, 150, QB_PROPERTY(ViewZoom));
        flag("ViewFilePreview", true, QB_PROPERTY(ViewFilePreview));
        flag("KeepWebOut", false, QB_PROPERTY(KeepWebOut));
    }

    void userSetting()
    {
        QFETCH(Property, property);
        QFETCH(QString, key);
        QFETCH(Value, other);
        CSettings settings(Source());
        QTEST(property.Get(settings), "fallback");

        const QSignalSpy awaiting(&settings, &CSettings::SettingAwaitingUpdate);
        property.Set(settings, other);
        QCOMPARE(property.Get(settings), other);
        QCOMPARE(awaiting.size(), 1);
        QCOMPARE(awaiting[0][0].toString(), QString());
        QCOMPARE(SettingText(key), u"(missing)"_s);

        settings.Apply();
        QTEST(SettingText(key), "stored");
        CSettings second(Source());
        QCOMPARE(property.Get(second), other);
    }

    void applyOfDefaults_writesAllKeys()
    {
        const QMap<QString, QString> expected{{u"SaveFormLayout"_s, u"True"_s},
                                              {u"ShowStatusBar"_s, u"True"_s},
                                              {u"DBEnableSessionUndo"_s, u"False"_s},
                                              {u"DBBackupAutomatic"_s, u"False"_s},
                                              {u"ExpandBranches"_s, u"True"_s},
                                              {u"AutoSaveFileDescriptions"_s, u"True"_s},
                                              {u"AutoSaveFileDescIfAutoSaveOn"_s, u"True"_s},
                                              {u"DisplaySynchroNotifications"_s, u"True"_s},
                                              {u"AutoColorizeWhenItemOpened"_s, u"False"_s},
                                              {u"AutoHideBookmarksWhenBrowsing"_s, u"False"_s},
                                              {u"AutoHideTreeWhenBrowsing"_s, u"False"_s},
                                              {u"DefaultFontName"_s, u"Verdana"_s},
                                              {u"DefaultFontSize"_s, u"10"_s},
                                              {u"DefaultColor1"_s, u"255"_s},
                                              {u"DefaultColor2"_s, u"16711680"_s},
                                              {u"InternetFileAutosaveToItem"_s, u"True"_s},
                                              {u"InternetAutoSaveToDir"_s, u"False"_s},
                                              {u"InternetFileSavePath"_s, QString()},
                                              {u"InternetFileLoadWindowCloseWhenFinished"_s, u"False"_s},
                                              {u"TipsOnStartup"_s, u"True"_s},
                                              {u"ShowImportFileDialog"_s, u"True"_s}};
        CSettings(Source()).Apply();
        QMap<QString, QString> stored;
        for (const QString& key : expected.keys())
            stored.insert(key, SettingText(key));
        QCOMPARE(stored, expected);
    }

    void loadRegistrySettings_dropsEdits()
    {
        CSettings settings(Source());
        settings.SetChangingSettings(true);
        settings.SetTipsOnStartup(false);
        settings.SetDefaultFontSize(33);
        settings.SetDBBackupPeriod(99);
        settings.LoadRegistrySettings();
        QCOMPARE(settings.TipsOnStartup(), true);
        QCOMPARE(settings.DefaultFontSize(), 10);
        QCOMPARE(settings.DBBackupPeriod(), 15);
    }

    void initialise_tellsTheListeners()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"ShowStatusBar"_s, u"False"_s);
        CSettings settings(Source());
        const QStringList events = EventsOf(settings, [&] { settings.Initialise(); });
        QCOMPARE(events, QStringList({u"SettingsUpdated"_s, u"eShowStatusBar false"_s}));
    }

    void apply_tellsTheListenersWhenAllIsWritten()
    {
        CSettings settings(Source());
        settings.SetShowImportFilesDialog(false);
        connect(&settings, &CSettings::SettingsUpdated, this,
                [] { QCOMPARE(SettingText(u"ShowImportFileDialog"_s), u"False"_s); });
        const QStringList events = EventsOf(settings, [&] { settings.Apply(); });
        QCOMPARE(events, QStringList({u"SettingsUpdated"_s, u"eShowStatusBar true"_s}));
    }

    void changingSettingsFlag_raisesNothing()
    {
        CSettings settings(Source());
        QVERIFY(!settings.ChangingSettings());
        QCOMPARE(EventsOf(settings, [&] { settings.SetChangingSettings(true); }), QStringList());
        QVERIFY(settings.ChangingSettings());
    }

    void apply_saysWhetherItWasWritten()
    {
        CSettings settings(Source());
        QVERIFY(settings.Apply());
        settings.SetDBBackupPeriod(3);
        m_library->Execute(
            u"CREATE TEMP TRIGGER stop BEFORE UPDATE ON Properties BEGIN SELECT raise(ABORT, 'stopped'); END"_s);
        m_prompts->ExpectError();
        QVERIFY(!settings.Apply());
        m_library->Execute(u"DROP TRIGGER stop"_s);
        QVERIFY(settings.Apply());
        QVERIFY(CSettings([] { return nullptr; }).Apply()); // there is no library to write to
    }

    void changeThatCantBeWritten_isTakenBack()
    {
        CSettings settings(Source());
        QVERIFY(QDir().mkpath(ConfigFolder() + SettingsApplication + u".ini/inside"_s));
        settings.SetTipsOnStartup(false);
        m_prompts->ExpectError();
        QVERIFY(!settings.ApplyOrTakeBack());
        QVERIFY(settings.TipsOnStartup());
    }

    void numberThatIsNone_countsAsNotSaid_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("size");
        QTest::newRow("a word") << u"big"_s << 10;
        QTest::newRow("empty") << QString() << 10;
        QTest::newRow("a fraction") << u"9.5"_s << 10;
        QTest::newRow("too large") << u"99999999999"_s << 10;
        QTest::newRow("a number") << u"12"_s << 12;
    }
    void numberThatIsNone_countsAsNotSaid()
    {
        QFETCH(QString, text);
        QFETCH(int, size);
        SaveSetting(SettingsApplication, u"Settings"_s, u"DefaultFontSize"_s, text);
        QCOMPARE(CSettings(Source()).DefaultFontSize(), size);
    }

    void apply_storeNotWritable_reportsOnceAndTellsNobody()
    {
        QVERIFY(QDir().mkpath(ConfigFolder() + SettingsApplication + u".ini/inside"_s));
        CSettings settings(Source());
        m_prompts->ExpectError();
        bool written = true;
        QCOMPARE(EventsOf(settings, [&] { written = settings.Apply(); }), QStringList());
        QVERIFY(!written);
        QVERIFY(ReadFile(ErrorLogFile()).contains(", CSettings, Apply, "));
    }

    // The library's settings

    void librarySetting_data()
    {
        QTest::addColumn<Property>("property");
        QTest::addColumn<QString>("column");
        QTest::addColumn<Value>("whenNull"); // after InitializeDatabaseProperties
        QTest::addColumn<Value>("other");
        const auto row = [](const char* column, const Value& whenNull, const Value& other, const Property& property) {
            QTest::newRow(column) << property << QString::fromLatin1(column) << whenNull << other;
        };
        row("SharedDatabase", false, true, QB_PROPERTY(DBShared));
        row("CompactOnExit", false, true, QB_PROPERTY(DBCompactOnExit));
        row("CompactOnExitEvery", 5, 8, QB_PROPERTY(DBCompactOnExitPeriod));
        row("CompactOnExitUsedDays", 0, 3, QB_PROPERTY(DBCompactOnExitUsedDays));
        row("LastCompacted", Date(), Date::FromParts(2026, 1, 2), QB_READ_ONLY(DBLastCompacted));
        row("BackupOnExit", false, true, QB_PROPERTY(DBBackupOnExit));
        row("BackupOnExitEvery", 15, 21, QB_PROPERTY(DBBackupPeriod));
        row("LastBackedUp", Date(), Date::FromParts(2026, 1, 3), QB_READ_ONLY(DBLastBackedUp));
        row("BackupDir", u"(default)"_s, u"/backups ä"_s, QB_PROPERTY(DBBackupDir));
        row("BackupAutoDelete", false, true, QB_PROPERTY(DBBackupAutoDeleteOld));
        row("BackupAutoDeleteNo", 5, 9, QB_PROPERTY(DBBackupAutoDeleteNo));
    }

    void librarySetting()
    {
        QFETCH(Property, property);
        QFETCH(QString, column);
        QFETCH(Value, whenNull);
        QFETCH(Value, other);
        if (column == u"BackupDir"_s)
            whenNull = m_home->Path(u"data/Backups"_s);
        const Value nothing = NothingIn(column);
        SetColumn(column, nothing);
        CSettings settings(Source());
        settings.SetChangingSettings(true);
        QCOMPARE(property.Get(settings), whenNull);

        // The library is the truth, except while settings are being changed.
        SetColumn(column, other);
        QCOMPARE(property.Get(settings), whenNull);
        settings.SetChangingSettings(false);
        QCOMPARE(property.Get(settings), other);
        settings.SetChangingSettings(true);
        QCOMPARE(property.Get(settings), other);
        SetColumn(column, nothing);
        settings.SetChangingSettings(false);
        QCOMPARE(property.Get(settings).ToText(), other.ToText() == u"/backups ä"_s ? QString() : u"0"_s);
        if (!property.Set)
            return;

        const QSignalSpy awaiting(&settings, &CSettings::SettingAwaitingUpdate);
        property.Set(settings, other);
        QCOMPARE(awaiting.size(), 1);
        QCOMPARE(GetColumn(column), nothing);
        settings.Apply();
        QCOMPARE(GetColumn(column), other);
        CSettings second(Source());
        QCOMPARE(property.Get(second), other);
    }

    void setValue_survivesOnlyUntilTheNextGetter()
    {
        CSettings settings(Source());
        settings.SetDBBackupPeriod(99);
        QCOMPARE(settings.DBBackupPeriod(), 15);
        settings.Apply();
        QCOMPARE(GetColumn(u"BackupOnExitEvery"_s), Value(15));
    }

    void editedPeriod_isGoneOnceTheFlagIs()
    {
        CSettings settings(Source());
        settings.SetChangingSettings(true);
        settings.SetDBBackupPeriod(99);
        QCOMPARE(settings.DBBackupPeriod(), 99);
        settings.SetChangingSettings(false);
        QCOMPARE(settings.DBBackupPeriod(), 15);
    }

    void apply_writesEveryColumn()
    {
        for (const QString& column : LibraryColumns)
            SetColumn(column, NothingIn(column));
        CSettings settings(Source());
        settings.Apply();
        QStringList empty;
        for (const QString& column : LibraryColumns) {
            if (GetColumn(column).IsNull())
                empty << column;
        }
        QCOMPARE(empty.join(u' '), QString());
        QCOMPARE(GetColumn(u"CompactOnExitEvery"_s), Value(5));
        QCOMPARE(GetColumn(u"BackupOnExitEvery"_s), Value(15));
        QCOMPARE(GetColumn(u"BackupAutoDeleteNo"_s), Value(5));
        QCOMPARE(GetColumn(u"BackupDir"_s), Value(m_home->Path(u"data/Backups"_s)));
        QCOMPARE(GetColumn(u"LastOpened"_s), Value(Date()));
    }

    void apply_whilePropertiesAreOpen_writesTheLibrary()
    {
        CSettings settings(Source());
        QVERIFY(settings.OpenPropertiesRS());
        settings.SetDBBackupPeriod(99);
        settings.Apply();
        settings.ClosePropertiesRS();
        QCOMPARE(GetColumn(u"BackupOnExitEvery"_s), Value(99));
    }

    void apply_leavesOtherColumnsAlone()
    {
        const Value id = GetColumn(u"dbid"_s);
        const Value words = GetColumn(u"LanguageUsed"_s);
        CSettings(Source()).Apply();
        QCOMPARE(GetColumn(u"dbid"_s), id);
        QCOMPARE(GetColumn(u"LanguageUsed"_s), words);
    }

    void backupDir_losesOneSeparatorAtItsEnd_data()
    {
        QTest::addColumn<QString>("set");
        QTest::addColumn<QString>("read");
        QTest::newRow("none") << u"C:\\Data"_s << u"C:\\Data"_s;
        QTest::newRow("one") << u"C:\\Data\\"_s << u"C:\\Data"_s;
        QTest::newRow("two") << u"C:\\Data\\\\"_s << u"C:\\Data\\"_s;
        QTest::newRow("slash") << u"/backups ä/"_s << u"/backups ä"_s;
    }

    void backupDir_losesOneSeparatorAtItsEnd()
    {
        QFETCH(QString, set);
        CSettings settings(Source());
        settings.SetDBBackupDir(set);
        settings.Apply();
        QTEST(settings.DBBackupDir(), "read");
    }

    void emptyBackupDir_isTheDefaultAfterTheNextLoad()
    {
        SetColumn(u"BackupDir"_s, u"/somewhere"_s);
        CSettings settings(Source());
        settings.SetDBBackupDir({});
        settings.Apply();
        settings.InitializeDatabaseProperties();
        settings.SetChangingSettings(true);
        QCOMPARE(settings.DBBackupDir(), m_home->Path(u"data/Backups"_s));
    }

    void sessionUndo_isOffForASharedLibraryButStaysStored()
    {
        SetColumn(u"SharedDatabase"_s, true);
        CSettings settings(Source());
        settings.SetDBEnableSessionUndo(true);
        QCOMPARE(settings.DBEnableSessionUndo(), false);
        settings.Apply();
        QCOMPARE(SettingText(u"DBEnableSessionUndo"_s), u"True"_s);
        settings.SetDBShared(false);
        QCOMPARE(settings.DBEnableSessionUndo(), true);
    }

    void backupUsedDays_readsAs0AndMovesItsCountToTheCompaction()
    {
        SetColumn(u"BackupOnExitUsedDays"_s, 20);
        CSettings settings(Source());
        const QSignalSpy awaiting(&settings, &CSettings::SettingAwaitingUpdate);
        QCOMPARE(settings.DBBackupUsedDays(), 0);
        QCOMPARE(awaiting.size(), 1);
        settings.SetChangingSettings(true);
        QCOMPARE(settings.DBCompactOnExitUsedDays(), 20);
        settings.SetDBBackupUsedDays(4);
        QCOMPARE(settings.DBBackupUsedDays(), 0);
        QCOMPARE(settings.DBCompactOnExitUsedDays(), 4);
    }

    void backupIsDue_onlyWithoutAPeriod_data()
    {
        QTest::addColumn<int>("period");
        QTest::addColumn<int>("used");
        QTest::addColumn<bool>("due");
        QTest::newRow("reached") << 15 << 15 << false;
        QTest::newRow("long passed") << 1 << 99 << false;
        QTest::newRow("no period") << 0 << 0 << true;
        QTest::newRow("negative period") << -1 << 0 << true;
    }

    void backupIsDue_onlyWithoutAPeriod()
    {
        QFETCH(int, period);
        QFETCH(int, used);
        SetColumn(u"BackupOnExitEvery"_s, period);
        SetColumn(u"BackupOnExitUsedDays"_s, used);
        QTEST(CSettings(Source()).DBBackupOnExitExecute(), "due");
    }

    void compactionIsDue_whenThePeriodIsReached_data()
    {
        QTest::addColumn<int>("used");
        QTest::addColumn<bool>("due");
        QTest::newRow("not yet") << 4 << false;
        QTest::newRow("reached") << 5 << true;
        QTest::newRow("passed") << 6 << true;
    }

    void compactionIsDue_whenThePeriodIsReached()
    {
        QFETCH(int, used);
        SetColumn(u"CompactOnExit"_s, false); // is not asked
        SetColumn(u"CompactOnExitEvery"_s, 5);
        SetColumn(u"CompactOnExitUsedDays"_s, used);
        QTEST(CSettings(Source()).DBCompactOnExitExecute(), "due");
    }

    void compacted_setsTheDayAndTheCounterOfTheObject()
    {
        SetColumn(u"CompactOnExitUsedDays"_s, 7);
        CSettings settings(Source());
        QCOMPARE(EventsOf(settings, [&] { settings.DBCompacted(); }),
                 QStringList({u"SettingAwaitingUpdate"_s, u"SettingAwaitingUpdate"_s}));
        QVERIFY(GetColumn(u"LastCompacted"_s).IsNull());
        QCOMPARE(GetColumn(u"CompactOnExitUsedDays"_s), Value(7));
        settings.Apply();
        QCOMPARE(GetColumn(u"LastCompacted"_s), Value(Today.DateOnly()));
        QCOMPARE(GetColumn(u"CompactOnExitUsedDays"_s), Value(0));
    }

    void backedUp_setsTheDayAndTheCounterOfTheObject()
    {
        SetColumn(u"BackupOnExitUsedDays"_s, 7);
        CSettings settings(Source());
        QCOMPARE(EventsOf(settings, [&] { settings.DBBackedUp(); }),
                 QStringList({u"SettingAwaitingUpdate"_s, u"SettingAwaitingUpdate"_s}));
        QVERIFY(GetColumn(u"LastBackedUp"_s).IsNull());
        QCOMPARE(GetColumn(u"BackupOnExitUsedDays"_s), Value(7));
        settings.Apply();
        QCOMPARE(GetColumn(u"LastBackedUp"_s), Value(Today.DateOnly()));
        QCOMPARE(GetColumn(u"BackupOnExitUsedDays"_s), Value(0));
    }

    // Counting days

    void day_isCountedByTheTextOfTheDate_data()
    {
        QTest::addColumn<Value>("lastOpened");
        QTest::addColumn<Date>("today");
        QTest::addColumn<bool>("counted");
        const auto row = [](const char* name, const Value& lastOpened, Date today, bool counted) {
            QTest::newRow(name) << lastOpened << today << counted;
        };
        row("next day", Date::FromParts(2026, 3, 1), Date::FromParts(2026, 3, 2, 9), true);
        row("same day", Date::FromParts(2026, 3, 2), Date::FromParts(2026, 3, 2, 23, 59, 59), false);
        row("28 February, 1 March", Date::FromParts(2026, 2, 28), Date::FromParts(2026, 3, 1, 9), false);
        row("31 December, 1 January", Date::FromParts(2025, 12, 31), Date::FromParts(2026, 1, 1, 9), false);
        row("same day number, later name", Date::FromParts(2026, 2, 5), Date::FromParts(2026, 3, 5, 9), true);
        row("same day number, earlier name", Date::FromParts(2026, 3, 5), Date::FromParts(2026, 4, 5, 9), false);
        row("a year later", Date::FromParts(2025, 3, 5), Date::FromParts(2026, 3, 5, 9), true);
        row("the clock was set back", Date::FromParts(2026, 3, 5), Date::FromParts(2026, 2, 6, 9), true);
        row("never, the 2nd", {}, Date::FromParts(2026, 3, 2, 9), false);
        row("never, the 31st", {}, Date::FromParts(2026, 3, 31, 9), true);
        row("never, the 30th of January", {}, Date::FromParts(2026, 1, 30, 9), true);
        row("never, the 30th of April", {}, Date::FromParts(2026, 4, 30, 9), false);
    }

    void day_isCountedByTheTextOfTheDate()
    {
        QFETCH(Value, lastOpened);
        QFETCH(Date, today);
        QFETCH(bool, counted);
        SetColumn(u"LastOpened"_s, lastOpened);
        SetColumn(u"CompactOnExitUsedDays"_s, 3);
        SetColumn(u"BackupOnExitUsedDays"_s, 20);
        m_clock->Set(today);
        CSettings(Source()).CountDay();
        // The backup's count goes to the compaction, and the backup begins anew.
        QCOMPARE(GetColumn(u"LastOpened"_s), counted ? Value(today.DateOnly()) : lastOpened);
        QCOMPARE(GetColumn(u"CompactOnExitUsedDays"_s), Value(counted ? 21 : 3));
        QCOMPARE(GetColumn(u"BackupOnExitUsedDays"_s), Value(counted ? 1 : 20));
    }

    void endOfTheObject_countsTheDay()
    {
        SetColumn(u"LastOpened"_s, Date::FromParts(2026, 3, 1));
        {
            CSettings settings(Source());
            QCOMPARE(GetColumn(u"BackupOnExitUsedDays"_s), Value(0));
        }
        QCOMPARE(GetColumn(u"BackupOnExitUsedDays"_s), Value(1));
        QCOMPARE(GetColumn(u"LastOpened"_s), Value(Today.DateOnly()));
    }

    void day_isCountedOnceAnObject()
    {
        SetColumn(u"LastOpened"_s, Date::FromParts(2026, 3, 1));
        {
            CSettings settings(Source());
            settings.CountDay();
            SetColumn(u"LastOpened"_s, Date::FromParts(2026, 3, 1));
            settings.InitializeDatabaseProperties();
        }
        QCOMPARE(GetColumn(u"LastOpened"_s), Value(Date::FromParts(2026, 3, 1)));
        QCOMPARE(GetColumn(u"BackupOnExitUsedDays"_s), Value(1));
    }

    // No library

    void withoutALibrary_valuesAreEmptyAndNothingIsSaid()
    {
        CSettings settings([] { return nullptr; });
        settings.InitializeDatabaseProperties();
        QVERIFY(!settings.OpenPropertiesRS());
        QCOMPARE(settings.DBShared(), false);
        QCOMPARE(settings.DBBackupPeriod(), 0);
        QCOMPARE(settings.DBBackupDir(), QString());
        QVERIFY(settings.DBLastCompacted().IsNone());
        settings.SetTipsOnStartup(false);
        settings.Apply();
        QCOMPARE(SettingText(u"TipsOnStartup"_s), u"False"_s);
        settings.CountDay();
        QVERIFY(!QFile::exists(ErrorLogFile()));
    }

    void closedLibrary_leavesTheValuesRead()
    {
        Database* current = m_library.get();
        CSettings settings([&current] { return current; });
        SetColumn(u"BackupOnExitEvery"_s, 30);
        QCOMPARE(settings.DBBackupPeriod(), 30);
        current = nullptr;
        QCOMPARE(settings.DBBackupPeriod(), 30);
        settings.InitializeDatabaseProperties();
        QCOMPARE(settings.DBBackupPeriod(), 30);
    }

    void libraryWithoutARow_leavesTheValuesAndIsNotWritten()
    {
        CSettings settings(Source());
        QCOMPARE(settings.DBBackupPeriod(), 15);
        m_library->Execute(u"DELETE FROM Properties"_s);
        QVERIFY(settings.OpenPropertiesRS());
        settings.ClosePropertiesRS();
        QCOMPARE(settings.DBBackupPeriod(), 15);
        settings.InitializeDatabaseProperties();
        settings.Apply();
        QVERIFY(m_library->OpenRecordset(u"Properties"_s).IsEmpty());
        QVERIFY(!QFile::exists(ErrorLogFile()));
    }

    void otherLibrary_isReadAfterInitializeDatabaseProperties()
    {
        const auto other = MakeLibrary(m_home->Path(u"config/second.qbd"_s));
        QVERIFY(other);
        Database* current = m_library.get();
        CSettings settings([&current] { return current; });
        current = other.get();
        other->Execute(u"UPDATE Properties SET BackupOnExitEvery = 40, LastOpened = ?"_s, {Today.DateOnly()});
        settings.InitializeDatabaseProperties();
        settings.SetChangingSettings(true);
        QCOMPARE(settings.DBBackupPeriod(), 40);
        QCOMPARE(settings.DBBackupDir(), m_home->Path(u"config/Backups"_s));
        settings.Apply();
        QCOMPARE(GetColumn(u"BackupOnExitEvery"_s), Value(15));
    }

    void openPropertiesRS_openAlready_isFalse()
    {
        CSettings settings(Source());
        QVERIFY(settings.OpenPropertiesRS());
        QVERIFY(!settings.OpenPropertiesRS());
        settings.ClosePropertiesRS();
        QVERIFY(settings.OpenPropertiesRS());
        settings.ClosePropertiesRS();
    }

    void readOnlyLibrary_isNotWritten()
    {
        const QString path = m_library->Name();
        m_library = qb::Library::Open(path, DBEngine::Access::ReadOnly);
        CSettings settings(Source());
        settings.SetDBBackupPeriod(99);
        settings.SetTipsOnStartup(false);
        settings.Apply();
        QCOMPARE(GetColumn(u"BackupOnExitEvery"_s), Value(15));
        QCOMPARE(SettingText(u"TipsOnStartup"_s), u"False"_s);
        QVERIFY(!QFile::exists(ErrorLogFile()));
    }

private:
    inline static const Date Today = Date::FromParts(2026, 3, 2, 14, 30, 5);

    CSettings::DatabaseSource Source()
    {
        return [this] { return m_library.get(); };
    }
    /// What a column holds that was never set: Null, but a Boolean is false.
    static Value NothingIn(const QString& column)
    {
        static const QStringList booleans{u"SharedDatabase"_s, u"CompactOnExit"_s, u"BackupOnExit"_s,
                                          u"BackupAutoDelete"_s};
        return booleans.contains(column) ? Value(false) : Value();
    }

    void SetColumn(const QString& column, const Value& value)
    {
        m_library->Execute(u"UPDATE Properties SET %1 = ?"_s.arg(Quoted(column)), {value});
    }
    Value GetColumn(const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Properties"_s.arg(Quoted(column)));
    }

    /// The events that @p action raises, by name, in their order.
    static QStringList EventsOf(CSettings& settings, const std::function<void()>& action)
    {
        QStringList events;
        QObject listener;
        connect(&settings, &CSettings::SettingsUpdated, &listener, [&] { events << u"SettingsUpdated"_s; });
        connect(&settings, &CSettings::SettingAwaitingUpdate, &listener, [&] { events << u"SettingAwaitingUpdate"_s; });
        connect(&settings, &CSettings::eShowStatusBar, &listener,
                [&](bool show) { events << (show ? u"eShowStatusBar true"_s : u"eShowStatusBar false"_s); });
        action();
        return events;
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_clock;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
};

QB_TEST_MAIN(TestCSettings)
#include "tst_csettings.moc"
