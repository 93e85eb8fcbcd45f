#include "base/WorkerThreads.hpp"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace tallowen {

unsigned defaultWorkerThreads() { return std::clamp(std::thread::hardware_concurrency(), 1u, 4u); }

void forEachItemOnThreads(size_t itemCount, unsigned threadCount,
                          const std::function<void(size_t item, unsigned thread)>& work) {
    const auto threads = static_cast<unsigned>(std::clamp<size_t>(threadCount, 1, std::max<size_t>(itemCount, 1)));
    std::atomic<size_t> nextItem{0};
    std::atomic<bool> stopped{false};
    // One slot per thread, each written by its own thread only and read after the joins.
    std::vector<std::exception_ptr> failures(threads);
    const auto claimItems = [&](unsigned thread) {
        try {
            while (!stopped.load(std::memory_order_relaxed)) {
                const size_t item = nextItem.fetch_add(1, std::memory_order_relaxed);
                if (item >= itemCount) return;
                work(item, thread);
            }
        } catch (...) {
            failures[thread] = std::current_exception();
            stopped.store(true, std::memory_order_relaxed);
        }
    };
    std::vector<std::thread> helpers;
    helpers.reserve(threads - 1);
    for (unsigned thread = 1; thread < threads; ++thread) {
        // A thread the system will not start leaves its share to the others.
        try {
            helpers.emplace_back(claimItems, thread);
        } catch (const std::system_error&) {
            break;
        }
    }
    claimItems(0);
    for (std::thread& helper : helpers) helper.join();
    for (const std::exception_ptr& failure : failures)
        if (failure) std::rethrow_exception(failure);
}

}  // namespace tallowen
