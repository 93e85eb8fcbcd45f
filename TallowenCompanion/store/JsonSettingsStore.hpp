#pragma once

#include "model/SettingsStore.hpp"

#include <filesystem>

namespace tallowen {

// Settings kept in "settings.json" in the support folder: one JSON object,
// booleans as JSON booleans and dates as seconds since 2001. The file is read
// on every look-up, so that another process's writes are seen, and rewritten
// whole and atomically on every change; keys it does not know are kept.
// A missing or unreadable file reads as empty; a failed write is ignored.
class JsonSettingsStore : public SettingsStore {
public:
    static constexpr const char* fileName = "settings.json";

    explicit JsonSettingsStore(std::filesystem::path file);
    static JsonSettingsStore inSupportFolder(const std::filesystem::path& supportFolder);

    bool boolValue(const std::string& key) const override;
    void setBool(const std::string& key, bool value) override;
    std::optional<Date> dateValue(const std::string& key) const override;
    void setDate(const std::string& key, Date value) override;

    const std::filesystem::path& location() const { return file_; }

private:
    std::filesystem::path file_;
};

}  // namespace tallowen
