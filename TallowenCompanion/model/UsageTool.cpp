#include "model/UsageTool.hpp"

namespace tallowen {
namespace {

struct ToolNames {
    std::string_view raw;
    std::string_view label;
};

constexpr std::array<ToolNames, 12> toolNames = {{
    {"claude-code", "CLAUDE CODE"},
    {"codex", "CODEX"},
    {"cursor", "CURSOR"},
    {"mac-chatgpt", "CHATGPT"},
    {"mac-claude", "CLAUDE"},
    {"mac-perplexity", "PERPLEXITY"},
    {"phone-screentime", "APPS IA"},
    {"phone-chatgpt", "CHATGPT"},
    {"phone-claude", "CLAUDE"},
    {"phone-gemini", "GEMINI"},
    {"phone-perplexity", "PERPLEXITY"},
    {"phone-other", "RACCOURCIS"},
}};

}  // namespace

std::string_view rawValue(UsageTool tool) { return toolNames[static_cast<size_t>(tool)].raw; }

std::string_view displayLabel(UsageTool tool) { return toolNames[static_cast<size_t>(tool)].label; }

std::optional<UsageTool> usageToolFromRawValue(std::string_view raw) {
    for (const UsageTool tool : allUsageTools)
        if (rawValue(tool) == raw) return tool;
    return std::nullopt;
}

bool displayLabelLess(UsageTool a, UsageTool b) { return displayLabel(a) < displayLabel(b); }

bool isComputerSide(UsageTool tool) { return static_cast<int>(tool) <= static_cast<int>(UsageTool::macPerplexity); }

}  // namespace tallowen
