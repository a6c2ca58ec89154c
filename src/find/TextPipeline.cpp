#include "find/TextPipeline.h"

#include <algorithm>

namespace qb {

namespace {
constexpr size_t MostWaiting = 4;
constexpr unsigned MostThreads = 8;
} // namespace

TextPipeline::TextPipeline(LibraryFolders folders, Taker take) : m_folders(std::move(folders)), m_take(std::move(take))
{
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, MostThreads);
    for (unsigned i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { Run(); });
}

TextPipeline::~TextPipeline()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_waiting.clear();
        m_ended = true;
    }
    m_changed.notify_all();
}

void TextPipeline::Add(std::vector<LibraryItem>&& items)
{
    if (items.empty())
        return;
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.size() < MostWaiting || m_error; });
    if (m_error)
        std::rethrow_exception(m_error);
    m_waiting.push_back(std::move(items));
    m_changed.notify_all();
}

void TextPipeline::Finish()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_ended = true;
    }
    m_changed.notify_all();
    m_threads.clear(); // which waits for them
    if (m_error)
        std::rethrow_exception(m_error);
}

void TextPipeline::Convert(const std::vector<LibraryItem>& items, ChunkBuilder& chunk)
{
    for (const LibraryItem& item : items) {
        chunk.Add(TextsOf(item, m_folders));
        if (chunk.IsFull())
            Hand(chunk);
    }
}

void TextPipeline::Hand(ChunkBuilder& chunk)
{
    if (chunk.IsEmpty())
        return;
    const std::scoped_lock lock(m_taking);
    m_take(std::move(chunk));
    chunk = ChunkBuilder();
}

void TextPipeline::Run()
{
    ChunkBuilder chunk;
    try {
        for (;;) {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return !m_waiting.empty() || m_ended; });
            if (m_waiting.empty())
                break;
            const std::vector<LibraryItem> items = std::move(m_waiting.front());
            m_waiting.pop_front();
            lock.unlock();
            m_changed.notify_all();
            Convert(items, chunk);
        }
        Hand(chunk);
    } catch (...) {
        const std::scoped_lock lock(m_mutex);
        m_error = std::current_exception();
        m_changed.notify_all();
    }
}

} // namespace qb
