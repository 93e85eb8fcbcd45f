#include "Options.hpp"

namespace tallowen::cli {

Result<ParsedOptions> parseOptions(const std::vector<std::string>& arguments, const std::set<std::string>& valueOptions,
                                   const std::set<std::string>& flagOptions) {
    ParsedOptions parsed;
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string name = arguments[i];
        std::optional<std::string> inlineValue;
        if (const auto equals = name.find('='); name.rfind("--", 0) == 0 && equals != std::string::npos) {
            inlineValue = name.substr(equals + 1);
            name.resize(equals);
        }
        if (valueOptions.count(name)) {
            if (inlineValue) {
                parsed.values[name] = *inlineValue;
            } else if (i + 1 < arguments.size()) {
                parsed.values[name] = arguments[++i];
            } else {
                return failure("option " + name + " needs a value");
            }
        } else if (flagOptions.count(name) && !inlineValue) {
            parsed.flags.insert(name);
        } else {
            return failure("unknown option: " + arguments[i]);
        }
    }
    return parsed;
}

}  // namespace tallowen::cli
