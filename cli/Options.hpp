#pragma once

#include "base/Result.hpp"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tallowen::cli {

struct ParsedOptions {
    std::map<std::string, std::string> values;
    std::set<std::string> flags;

    bool has(const std::string& flag) const { return flags.count(flag) != 0; }
    std::optional<std::string> value(const std::string& name) const {
        auto found = values.find(name);
        if (found == values.end()) return std::nullopt;
        return found->second;
    }
};

// Accepts "--name VALUE", "--name=VALUE" for the value options and "--flag" for
// the flags; anything else fails with a one-line message.
Result<ParsedOptions> parseOptions(const std::vector<std::string>& arguments, const std::set<std::string>& valueOptions,
                                   const std::set<std::string>& flagOptions);

}  // namespace tallowen::cli
