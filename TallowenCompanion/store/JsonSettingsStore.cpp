#include "store/JsonSettingsStore.hpp"

#include "base/Files.hpp"
#include "base/JsonRead.hpp"
#include "base/JsonWriter.hpp"

#include <map>
#include <variant>

namespace tallowen {
namespace {

// A value of a type the settings do not use is carried through as its JSON text.
struct RawJson {
    std::string text;
};
using SettingValue = std::variant<bool, double, RawJson>;
using Settings = std::map<std::string, SettingValue>;

Settings readSettings(const std::filesystem::path& file) {
    const auto text = readWholeFile(file);
    if (!text) return {};
    simdjson::dom::parser parser;
    json::Element root;
    if (parser.parse(text->data(), text->size(), true).get(root) != simdjson::SUCCESS || !root.is_object()) return {};
    Settings settings;
    // Held by value: ranging over value_unsafe() of a temporary result would dangle.
    const simdjson::dom::object entries = root.get_object().value_unsafe();
    for (auto [key, value] : entries) {
        double number = 0;
        if (value.is_bool()) settings[std::string(key)] = value.get_bool().value_unsafe();
        else if (value.is_number() && value.get_double().get(number) == simdjson::SUCCESS)
            settings[std::string(key)] = number;
        else settings[std::string(key)] = RawJson{simdjson::minify(value)};
    }
    return settings;
}

void writeSettings(const std::filesystem::path& file, const Settings& settings) {
    std::string text = "{";
    for (const auto& [key, value] : settings) {
        if (text.size() > 1) text += ',';
        appendJsonEscaped(text, key);
        text += ':';
        if (const bool* flag = std::get_if<bool>(&value)) text += *flag ? "true" : "false";
        else if (const double* number = std::get_if<double>(&value)) text += JsonWriter().number(*number).text();
        else text += std::get<RawJson>(value).text;
    }
    text += '}';
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    writeFileAtomically(file, text);
}

}  // namespace

JsonSettingsStore::JsonSettingsStore(std::filesystem::path file) : file_(std::move(file)) {}

JsonSettingsStore JsonSettingsStore::inSupportFolder(const std::filesystem::path& supportFolder) {
    return JsonSettingsStore(supportFolder / fileName);
}

bool JsonSettingsStore::boolValue(const std::string& key) const {
    const Settings settings = readSettings(file_);
    const auto found = settings.find(key);
    return found != settings.end() && std::holds_alternative<bool>(found->second) && std::get<bool>(found->second);
}

void JsonSettingsStore::setBool(const std::string& key, bool value) {
    Settings settings = readSettings(file_);
    settings[key] = value;
    writeSettings(file_, settings);
}

std::optional<Date> JsonSettingsStore::dateValue(const std::string& key) const {
    const Settings settings = readSettings(file_);
    const auto found = settings.find(key);
    if (found == settings.end() || !std::holds_alternative<double>(found->second)) return std::nullopt;
    const Date date{std::get<double>(found->second)};
    if (!date.isUsable()) return std::nullopt;
    return date;
}

void JsonSettingsStore::setDate(const std::string& key, Date value) {
    Settings settings = readSettings(file_);
    settings[key] = value.secondsSinceReferenceDate;
    writeSettings(file_, settings);
}

}  // namespace tallowen
