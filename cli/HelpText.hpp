#pragma once

#include <optional>
#include <string_view>

namespace tallowen::cli {

// The help of a command ("days", "history", ...) or of "tallowen" itself, as
// written in cli/help/<topic>.txt and built into the command; nothing for an
// unknown topic.
std::optional<std::string_view> helpText(std::string_view topic);

}  // namespace tallowen::cli
