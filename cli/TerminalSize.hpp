#pragma once

#include "ui/PanelLayout.hpp"

#include <optional>

namespace tallowen::cli {

// The size of the terminal open on `fd`; nothing when `fd` is no terminal or
// the terminal does not tell.
std::optional<TerminalExtent> terminalSize(int fd);

}  // namespace tallowen::cli
