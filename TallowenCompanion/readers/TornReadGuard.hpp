#pragma once

#include <cstddef>

namespace tallowen {

// A mapped file that its writer shortens while it is being read turns every
// read past its new end into a bus error, which would stop the process. While
// a guard is alive on this thread, such a fault inside the guarded range is
// absorbed instead: zero pages are mapped over the lost part and the read is
// marked torn, so the caller can drop what it read and try the file again later.
class TornReadGuard {
public:
    TornReadGuard(const void* start, size_t length);
    ~TornReadGuard();
    TornReadGuard(const TornReadGuard&) = delete;
    TornReadGuard& operator=(const TornReadGuard&) = delete;

    bool torn() const;
};

}  // namespace tallowen
