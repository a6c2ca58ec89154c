#pragma once

#include <QByteArray>
#include <ctime>

namespace qb::test {

/// The zone of the system, as the environment variable TZ names it, for as long as the object lives. Its rule stands
/// in the name, so that no table of zones need be installed.
class InZone {
public:
    explicit InZone(const QByteArray& zone) : m_before(qgetenv("TZ")), m_hadAny(qEnvironmentVariableIsSet("TZ"))
    {
        Set(zone);
    }
    ~InZone()
    {
        if (m_hadAny)
            qputenv("TZ", m_before);
        else
            qunsetenv("TZ");
        ::tzset();
    }
    InZone(const InZone&) = delete;
    InZone& operator=(const InZone&) = delete;

    static void Set(const QByteArray& zone)
    {
        qputenv("TZ", zone);
        ::tzset();
    }

private:
    QByteArray m_before;
    bool m_hadAny;
};

/// One hour ahead of UTC, in summer two; the clocks change on 2026-03-29 at 02:00 and on 2026-10-25 at 03:00.
inline constexpr const char* MiddleEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
inline constexpr const char* Zones[] = {MiddleEurope,
                                        "UTC0",
                                        "JST-9",
                                        "IST-5:30",
                                        "NST3:30NDT,M3.2.0,M11.1.0",
                                        "AEST-10AEDT,M10.1.0,M4.1.0/3",
                                        "<-03>3<-02>,M3.5.0/0,M10.5.0/0"}; // changes at midnight

} // namespace qb::test
