#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tallowen {

// The twelve measured tools, in their fixed order. The first six are produced
// on the computer; the phone ones are written by the phone and only kept here.
enum class UsageTool {
    claudeCode,
    codex,
    cursor,
    macChatGPT,
    macClaude,
    macPerplexity,
    phoneScreenTime,
    phoneChatGPT,
    phoneClaude,
    phoneGemini,
    phonePerplexity,
    phoneOther,
};

inline constexpr std::array<UsageTool, 12> allUsageTools = {
    UsageTool::claudeCode,      UsageTool::codex,        UsageTool::cursor,      UsageTool::macChatGPT,
    UsageTool::macClaude,       UsageTool::macPerplexity, UsageTool::phoneScreenTime, UsageTool::phoneChatGPT,
    UsageTool::phoneClaude,     UsageTool::phoneGemini,  UsageTool::phonePerplexity, UsageTool::phoneOther,
};

std::string_view rawValue(UsageTool tool);
std::optional<UsageTool> usageToolFromRawValue(std::string_view raw);
// Upper-case label; several tools share one on purpose (CHATGPT, CLAUDE, PERPLEXITY).
std::string_view displayLabel(UsageTool tool);
// Ordering by label text; tools with the same label are equivalent.
bool displayLabelLess(UsageTool a, UsageTool b);
// The tools this computer itself measures (logs and desktop applications).
bool isComputerSide(UsageTool tool);

}  // namespace tallowen
