#pragma once

#include "platform/dao/Database.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qb {

/// Rows of the tree, with their texts in UTF-8 one behind the other.
struct TreeRows {
    struct Row {
        qint64 Id;
        qint64 Parent;
        qsizetype TitleSize; ///< in bytes
        qsizetype DescriptionSize;
    };
    std::vector<Row> Rows;
    std::string Texts; ///< of each row the title, then the description
};

/// Reads the rows of the tree on a thread of its own, while whoever takes them makes nodes of those before. Until it is
/// gone the database is its own.
class TreeRowReader {
public:
    /// Reading ends with 3059 when it takes longer than @p atMost.
    TreeRowReader(Database& database, std::chrono::milliseconds atMost);
    ~TreeRowReader();
    TreeRowReader(const TreeRowReader&) = delete;
    TreeRowReader& operator=(const TreeRowReader&) = delete;

    /// The next ones, in the order of the tree; false when there are no more. Raises what reading raised.
    bool Next(TreeRows& rows);

private:
    void Run();
    void Read();
    bool Hand(TreeRows&& rows);

    Database& m_database;
    std::chrono::milliseconds m_atMost;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<TreeRows> m_ready;
    size_t m_most = 0; ///< of m_ready
    bool m_hasEnded = false;
    bool m_isWanted = true;
    std::exception_ptr m_error;
    std::thread m_thread;
};

} // namespace qb
