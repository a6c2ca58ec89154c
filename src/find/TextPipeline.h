#pragma once

#include "find/FindSegment.h"
#include "find/LibraryTexts.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace qb {

/// Makes texts of items on as many threads as the machine runs at a time, while whoever feeds it reads on.
class TextPipeline {
public:
    /// Chunks go to @p take, from one thread at a time, in no order.
    using Taker = std::function<void(ChunkBuilder&& chunk)>;

    TextPipeline(LibraryFolders folders, Taker take);
    /// Drops what is not done, unless Finish was called.
    ~TextPipeline();

    /// Waits while there is more to do than it should hold in memory.
    void Add(std::vector<LibraryItem>&& items);
    /// Until all is done. Raises what went wrong on a thread.
    void Finish();

private:
    void Run();
    void Convert(const std::vector<LibraryItem>& items, ChunkBuilder& chunk);
    void Hand(ChunkBuilder& chunk);

    LibraryFolders m_folders;
    Taker m_take;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::vector<LibraryItem>> m_waiting;
    bool m_ended = false;
    std::exception_ptr m_error;
    std::mutex m_taking;
    std::vector<std::jthread> m_threads;
};

} // namespace qb
