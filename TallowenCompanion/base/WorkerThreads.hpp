#pragma once

#include <cstddef>
#include <functional>

namespace tallowen {

// How many threads independent work is spread over by default: the machine's
// cores, at most four, since the work is reading files and more threads
// would only contend for the same page cache.
unsigned defaultWorkerThreads();

// Calls `work(item, thread)` once for every item below `itemCount`, on at most
// `threadCount` threads, the calling one among them; `thread` (below
// `threadCount`) names the thread, so each may keep state of its own. Items
// are claimed in ascending order, one at a time, by whichever thread is free:
// the caller decides nothing by which thread ran what. Returns when every item
// is done; the first exception a thread met is thrown again here, after the
// others have stopped claiming items.
void forEachItemOnThreads(size_t itemCount, unsigned threadCount,
                          const std::function<void(size_t item, unsigned thread)>& work);

}  // namespace tallowen
