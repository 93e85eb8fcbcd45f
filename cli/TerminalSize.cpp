#include "TerminalSize.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

namespace tallowen::cli {

std::optional<TerminalExtent> terminalSize(int fd) {
    winsize size{};
    if (::isatty(fd) != 1 || ::ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
    return TerminalExtent{size.ws_col, size.ws_row};
}

}  // namespace tallowen::cli
