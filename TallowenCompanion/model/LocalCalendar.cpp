#include "model/LocalCalendar.hpp"

#include "base/Files.hpp"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>

namespace tallowen {
namespace {

bool localParts(Date date, std::tm& out) {
    const double unix = std::floor(date.unixSeconds());
    if (!std::isfinite(unix) || unix < -6.0e16 || unix > 6.0e16) return false;
    const std::time_t seconds = static_cast<std::time_t>(unix);
    return localtime_r(&seconds, &out) != nullptr;
}

// FNV-1a, 64 bits: enough to tell two zone files apart.
uint64_t digestOf(std::string_view bytes) {
    uint64_t digest = 14695981039346656037ull;
    for (const char byte : bytes) {
        digest ^= static_cast<unsigned char>(byte);
        digest *= 1099511628211ull;
    }
    return digest;
}

// The zone file the C library reads for a TZ value, or for no TZ at all.
std::filesystem::path zoneFileOf(const char* setting) {
    if (setting == nullptr) return "/etc/localtime";
    std::string_view name = setting;
    if (!name.empty() && name.front() == ':') name.remove_prefix(1);
    if (name.empty()) return {};
    if (name.front() == '/') return std::filesystem::path(name);
    const char* folder = std::getenv("TZDIR");
    return std::filesystem::path(folder != nullptr && *folder != '\0' ? folder : "/usr/share/zoneinfo") / name;
}

}  // namespace

std::string LocalCalendar::timeZoneIdentity() const {
    const char* setting = std::getenv("TZ");
    std::string identity = setting != nullptr ? std::string("TZ=") + setting : std::string("local");
    const std::filesystem::path zoneFile = zoneFileOf(setting);
    // A TZ that names no file is a rule written out in full, or UTC.
    const auto rules = zoneFile.empty() ? std::nullopt : readWholeFile(zoneFile);
    char digest[32];
    std::snprintf(digest, sizeof digest, " %016" PRIx64, rules ? digestOf(*rules) : 0);
    return identity + digest;
}

LocalDateParts LocalCalendar::parts(Date date) const {
    std::tm tm{};
    if (!localParts(date, tm)) return {};
    return {tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour};
}

std::optional<Date> LocalCalendar::startOfDay(int year, int month, int day) const {
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&tm);
    // -1 is mktime's error; as a real instant it could never start a day.
    if (seconds == static_cast<std::time_t>(-1)) return std::nullopt;
    // A zone whose day begins with a skipped hour makes mktime land after
    // midnight; that instant is still the first of the day.
    return Date::fromUnixSeconds(static_cast<double>(seconds));
}

Date LocalCalendar::startOfDay(Date date) const {
    const LocalDateParts p = parts(date);
    return startOfDay(p.year, p.month, p.day).value_or(date);
}

std::optional<Date> LocalCalendar::startOfDayAdding(Date date, int days) const {
    const LocalDateParts p = parts(date);
    return startOfDay(p.year, p.month, p.day + days);
}

}  // namespace tallowen
