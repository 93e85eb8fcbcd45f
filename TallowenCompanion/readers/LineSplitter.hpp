#pragma once

#include <cstring>
#include <string_view>

namespace tallowen {

// Calls `onLine` with every non-empty stretch between line feeds, the last one
// included even without a final line feed. A carriage return stays in the line.
template <typename OnLine>
void forEachLine(std::string_view bytes, OnLine&& onLine) {
    const char* cursor = bytes.data();
    const char* const end = bytes.data() + bytes.size();
    while (cursor < end) {
        const void* found = std::memchr(cursor, '\n', static_cast<size_t>(end - cursor));
        const char* lineEnd = found ? static_cast<const char*>(found) : end;
        if (lineEnd > cursor) onLine(std::string_view(cursor, static_cast<size_t>(lineEnd - cursor)));
        if (found == nullptr) break;
        cursor = lineEnd + 1;
    }
}

}  // namespace tallowen
