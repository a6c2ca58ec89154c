#include "session/TreeRowReader.h"

#include "platform/dao/StatementLimit.h"
#include "session/ItemTree.h"

#include <limits>
#include <system_error>

namespace qb {

namespace {

constexpr size_t RowsAtATime = 4096;
constexpr size_t MostReady = 8;

} // namespace

TreeRowReader::TreeRowReader(Database& database, std::chrono::milliseconds atMost)
    : m_database(database), m_atMost(atMost), m_most(MostReady)
{
    try {
        m_thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) { // there is no thread to be had
        m_most = std::numeric_limits<size_t>::max();
        Run();
    }
}

TreeRowReader::~TreeRowReader()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isWanted = false;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

bool TreeRowReader::Next(TreeRows& rows)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_hasEnded || !m_ready.empty(); });
    if (m_ready.empty()) {
        if (m_error)
            std::rethrow_exception(m_error);
        return false;
    }
    rows = std::move(m_ready.front());
    m_ready.pop_front();
    m_changed.notify_all();
    return true;
}

void TreeRowReader::Run()
{
    std::exception_ptr error;
    try {
        Read();
    } catch (...) {
        error = std::current_exception();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_error = error;
        m_hasEnded = true;
    }
    m_changed.notify_all();
}

void TreeRowReader::Read()
{
    const StatementLimit limit(m_database, m_atMost);
    Statement statement = m_database.Query(ItemTree::TreeQuery());
    bool hasMore = true;
    while (hasMore) {
        TreeRows rows;
        rows.Rows.reserve(RowsAtATime);
        while (rows.Rows.size() < RowsAtATime && (hasMore = statement.Step())) {
            const QByteArrayView title = statement.RawText(2);
            rows.Texts.append(title.data(), size_t(title.size()));
            const QByteArrayView description = statement.RawText(3);
            rows.Texts.append(description.data(), size_t(description.size()));
            rows.Rows.push_back({statement.Long(0), statement.Long(1), title.size(), description.size()});
        }
        if (!rows.Rows.empty() && !Hand(std::move(rows)))
            return;
    }
}

/// Waits while there is more than it should hold in memory. False when nobody wants any.
bool TreeRowReader::Hand(TreeRows&& rows)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_isWanted || m_ready.size() < m_most; });
    if (!m_isWanted)
        return false;
    m_ready.push_back(std::move(rows));
    m_changed.notify_all();
    return true;
}

} // namespace qb
