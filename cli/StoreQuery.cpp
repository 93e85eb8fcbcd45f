#include "StoreQuery.hpp"

#include "TerminalImporter.hpp"

namespace tallowen::cli {

std::optional<std::vector<UsageSample>> queryStore(
    const EngineEnvironment& environment, const std::function<std::vector<UsageSample>(SqliteSampleStore&)>& fetch,
    std::string& error) {
    const auto location = storeLocation(environment);
    std::error_code ignored;
    if (!std::filesystem::exists(location, ignored)) return std::vector<UsageSample>{};
    try {
        SqliteSampleStore store(location, SqliteSampleStore::Access::readOnly);
        return fetch(store);
    } catch (const StoreError& failure) {
        error = unreadableStoreText(failure);
        return std::nullopt;
    }
}

}  // namespace tallowen::cli
