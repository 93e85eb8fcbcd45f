#pragma once

#include "store/SqliteSampleStore.hpp"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tallowen {

// Samples of the store file as `fetch` reads them, the store opened read-only
// and left unchanged; none when the file does not exist yet (looking creates
// no empty store). Sets `error` ("Store illisible : …") and gives nothing
// when the store cannot be read.
std::optional<std::vector<UsageSample>> queryStoreFile(
    const std::filesystem::path& storeFile, const std::function<std::vector<UsageSample>(SqliteSampleStore&)>& fetch,
    std::string& error);

}  // namespace tallowen
