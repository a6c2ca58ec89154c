#pragma once

#include <QDeadlineTimer>
#include <QString>
#include <chrono>
#include <functional>
#include <optional>

namespace qb {

class Database;

/// While it lives, statements of a database that go on for too long are ended: they raise 3059, and a statement
/// that changes rows takes its transaction back. Limits nest; each of them can end a statement. A question is
/// asked after every thousand steps of the engine, so that it may also show progress. The count of all rows of
/// a table is one step.
class StatementLimit {
public:
    /// Ends what runs when @p isEnough says so.
    StatementLimit(Database& database, std::function<bool()> isEnough);
    /// Ends what still runs after @p atMost from the first thousand steps on: waiting for a lock and taking
    /// back what a crash left don't count.
    StatementLimit(Database& database, std::chrono::milliseconds atMost);
    ~StatementLimit();
    StatementLimit(const StatementLimit&) = delete;
    StatementLimit& operator=(const StatementLimit&) = delete;

    /// Ends what a database runs in another thread, also in the middle of a check of its structure.
    static void Interrupt(Database& database);

private:
    static int Ask(void* limit);
    void Install() const;
    bool IsReached();

    Database* m_database;
    StatementLimit* m_outer;
    std::function<bool()> m_isEnough;
    std::chrono::milliseconds m_atMost{0};
    std::optional<QDeadlineTimer> m_deadline; ///< set by the first question
};

} // namespace qb
