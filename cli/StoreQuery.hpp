#pragma once

#include "model/EngineEnvironment.hpp"
#include "store/SqliteSampleStore.hpp"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tallowen::cli {

// Some of the data folder's stored samples, as `fetch` reads them from the
// store opened read-only; none when nothing was imported yet (no empty store
// is created by looking). Sets `error` ("Store illisible : …") and gives
// nothing when the store cannot be read.
std::optional<std::vector<UsageSample>> queryStore(
    const EngineEnvironment& environment, const std::function<std::vector<UsageSample>(SqliteSampleStore&)>& fetch,
    std::string& error);

}  // namespace tallowen::cli
