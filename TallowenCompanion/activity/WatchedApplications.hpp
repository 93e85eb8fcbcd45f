#pragma once

#include "model/UsageTool.hpp"

#include <array>
#include <optional>
#include <string_view>

namespace tallowen {

// The desktop chat applications whose activations are measured.
struct WatchedApplication {
    std::string_view bundleId;
    UsageTool tool;
};

inline constexpr std::array<WatchedApplication, 3> watchedApplications = {{
    {"com.openai.chat", UsageTool::macChatGPT},
    {"com.anthropic.claudefordesktop", UsageTool::macClaude},
    {"ai.perplexity.mac", UsageTool::macPerplexity},
}};

// The tool of a watched application; nothing for any other bundle identifier.
std::optional<UsageTool> watchedTool(std::string_view bundleId);

}  // namespace tallowen
