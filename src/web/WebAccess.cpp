#include "web/WebAccess.h"

#include "platform/system/Clock.h"

#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

bool IsUnwanted = false;

WebSurroundings OfThisProcess()
{
    // Looked at once: later the program itself tells the browser's engine to do without, for pages of the library.
    static const bool isSwitchedOff = qEnvironmentVariableIntValue("QTWEBENGINE_DISABLE_SANDBOX") != 0
                                      || qEnvironmentVariable("QTWEBENGINE_CHROMIUM_FLAGS").contains(u"--no-sandbox");
    const QString noWeb = qEnvironmentVariable("QUILLBASE_NO_WEB");
    return {.IsUnwanted = IsUnwanted,
            .IsBarred = !noWeb.isEmpty() && noWeb != u"0"_s,
            .IsRoot = geteuid() == 0,
            .IsSandboxSwitchedOff = isSwitchedOff};
}

WebAccess::Source& TheSource()
{
    static WebAccess::Source source = OfThisProcess;
    return source;
}

} // namespace

QString WhyWebIsKeptOut(const WebSurroundings& surroundings)
{
    if (surroundings.IsBarred)
        return u"QUILLBASE_NO_WEB is set"_s;
    if (surroundings.IsUnwanted)
        return u"the options keep them out"_s;
    if (surroundings.IsRoot)
        return u"the program runs as root, for whom the browser has no sandbox"_s;
    if (surroundings.IsSandboxSwitchedOff)
        return u"the browser's sandbox is switched off"_s;
    return {};
}

QString WebAccess::WhyKeptOut()
{
    return WhyWebIsKeptOut(TheSource()());
}

void WebAccess::SetUnwanted(bool unwanted)
{
    IsUnwanted = unwanted;
}

WebAccess::Source WebAccess::SetSource(Source source)
{
    return std::exchange(TheSource(), std::move(source));
}

void GestureRule::Gesture()
{
    m_at = Clock::Now().Seconds();
}

bool GestureRule::Take()
{
    constexpr qint64 Lasting = 10; // seconds, for a server that takes its time
    const std::optional<qint64> at = std::exchange(m_at, std::nullopt);
    return at && Clock::Now().Seconds() - *at <= Lasting;
}

} // namespace qb
