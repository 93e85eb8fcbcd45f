#pragma once

#include <optional>

namespace tallowen::cli {

struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

// The size of the terminal open on `fd`; nothing when `fd` is no terminal or
// the terminal does not tell.
std::optional<TerminalSize> terminalSize(int fd);

}  // namespace tallowen::cli
