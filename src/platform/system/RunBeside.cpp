#include "platform/system/RunBeside.h"

#include <chrono>
#include <future>
#include <system_error>

namespace qb {

namespace {

std::future<void> Begun(const std::function<void()>& body)
{
    try {
        return std::async(std::launch::async, body);
    } catch (const std::system_error&) { // there is no thread to be had
        return std::async(std::launch::deferred, body);
    }
}

} // namespace

void RunBeside(const std::function<void()>& body, const std::function<void()>& beat)
{
    constexpr std::chrono::milliseconds Interval{50};
    std::future<void> end = Begun(body);
    do
        beat();
    while (end.wait_for(Interval) == std::future_status::timeout);
    end.get();
}

} // namespace qb
