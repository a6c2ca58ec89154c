#include "platform/dao/StatementLimit.h"

#include "platform/dao/Database.h"

#include <sqlite3.h>
#include <utility>

namespace qb {

namespace {
constexpr int StepsPerQuestion = 1000;
} // namespace

StatementLimit::StatementLimit(Database& database, std::function<bool()> isEnough)
    : m_database(&database), m_outer(std::exchange(database.m_limit, this)), m_isEnough(std::move(isEnough))
{
    Install();
}

StatementLimit::StatementLimit(Database& database, std::chrono::milliseconds atMost)
    : m_database(&database), m_outer(std::exchange(database.m_limit, this)), m_atMost(atMost)
{
    Install();
}

StatementLimit::~StatementLimit()
{
    m_database->m_limit = m_outer;
    Install();
}

void StatementLimit::Interrupt(Database& database)
{
    sqlite3_interrupt(database.m_connection);
}

void StatementLimit::Install() const
{
    StatementLimit* limit = m_database->m_limit;
    sqlite3_progress_handler(m_database->m_connection, limit ? StepsPerQuestion : 0, limit ? &Ask : nullptr, limit);
}

bool StatementLimit::IsReached()
{
    if (m_isEnough)
        return m_isEnough();
    if (!m_deadline)
        m_deadline.emplace(m_atMost);
    return m_deadline->hasExpired();
}

int StatementLimit::Ask(void* limit)
{
    for (auto* at = static_cast<StatementLimit*>(limit); at; at = at->m_outer) {
        if (at->IsReached())
            return 1;
    }
    return 0;
}

} // namespace qb
