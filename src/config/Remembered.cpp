#include "config/Remembered.h"

#include "platform/system/SettingsStore.h"
#include "support/ErrorRoutine.h"

#include <array>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct Row {
    QString Section;
    QString Key;
    QString Before;
};

const Row& RowOf(Memory what)
{
#define QB_ROW(name, section, key, before) {QStringLiteral(section), QStringLiteral(key), QStringLiteral(before)},
    static const std::array<Row, size_t(Memory::Count)> rows{{QB_MEMORIES(QB_ROW)}};
#undef QB_ROW
    return rows[size_t(what)];
}

} // namespace

QString Remembered(Memory what)
{
    const Row& row = RowOf(what);
    return GetSetting(SettingsApplication, row.Section, row.Key, row.Before);
}

bool Remember(Memory what, const QString& value)
{
    const Row& row = RowOf(what);
    return Guarded(u"SettingsStore"_s, u"SaveSetting"_s,
                   [&] { SaveSetting(SettingsApplication, row.Section, row.Key, value); });
}

bool RememberMerged(Memory what, const std::function<QString(const QString& stored)>& merged)
{
    const Row& row = RowOf(what);
    return Guarded(u"SettingsStore"_s, u"SaveSetting"_s, [&] {
        SaveSettings(SettingsApplication,
                     {{.Section = row.Section, .Key = row.Key, .Value = {}, .Before = {}, .Merged = merged}});
    });
}

} // namespace qb
