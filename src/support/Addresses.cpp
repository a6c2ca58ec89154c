#include "support/Addresses.h"

#include "platform/system/SettingsStore.h"

namespace qb {

QString BugReportAddress()
{
    return GetSetting(SettingsApplication, QStringLiteral("Settings"), QStringLiteral("BugReportAddress"));
}

} // namespace qb
