#pragma once

#include "import/ImportState.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tallowen {

// The "import-state.json" text: compact JSON, dates as seconds since 2001 with
// full round-trip precision, optional keys omitted when absent.
std::string encodeImportState(const ImportState& state);

// Nothing when the text is not a complete, well-typed state of the current version.
std::optional<ImportState> decodeImportState(std::string_view text);

}  // namespace tallowen
