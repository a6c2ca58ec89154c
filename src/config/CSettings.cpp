#include "config/CSettings.h"

#include "platform/system/Clock.h"
#include "platform/system/SettingsStore.h"
#include "support/DateFormatCustom.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CSettings"_s;

} // namespace

CSettings::CSettings(DatabaseSource currentDatabase) : SettingFields(std::move(currentDatabase))
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
    for (size_t i = 0; i < size_t(UserSetting::Count); ++i)
        all.append({QString::fromLatin1(UserTable()[i].Name), UserValue(i), false});
    if (!CurrentDatabase())
        return all;
    for (size_t i = 0; i < size_t(LibrarySetting::Count); ++i) {
        const LibraryRow& row = LibraryTable()[i];
        QString value = HeldValue(i).ToText();
        if (row.Type == Kind::Flag)
            value = BooleanText(HeldValue(i).ToBoolean());
        else if (row.Type == Kind::Number)
            value = QString::number(HeldValue(i).ToLong());
        else if (row.Type == Kind::Moment)
            value = HeldValue(i).ToDate().IsNone() ? QString()
                                                   : DateFormatCustom(HeldValue(i).ToDate(), u"yyyy-mm-dd hh:nn:ss"_s);
        all.append({QString::fromLatin1(row.Name), value, true});
    }
    return all;
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
    if (!CurrentDatabase())
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
