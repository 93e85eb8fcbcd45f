#include "store/StoreQuery.hpp"

namespace tallowen {

std::optional<std::vector<UsageSample>> queryStoreFile(
    const std::filesystem::path& storeFile, const std::function<std::vector<UsageSample>(SqliteSampleStore&)>& fetch,
    std::string& error) {
    std::error_code ignored;
    if (!std::filesystem::exists(storeFile, ignored)) return std::vector<UsageSample>{};
    try {
        SqliteSampleStore store(storeFile, SqliteSampleStore::Access::readOnly);
        return fetch(store);
    } catch (const StoreError& failure) {
        error = unreadableStoreText(failure);
        return std::nullopt;
    }
}

}  // namespace tallowen
