#include "base/CsvText.hpp"

namespace tallowen {

std::string csvRecord(const std::vector<std::string>& fields) {
    std::string record;
    for (size_t index = 0; index < fields.size(); ++index) {
        if (index > 0) record += ',';
        const std::string& field = fields[index];
        if (field.find_first_of(",\"\r\n") == std::string::npos) {
            record += field;
            continue;
        }
        record += '"';
        for (const char c : field) {
            if (c == '"') record += '"';
            record += c;
        }
        record += '"';
    }
    return record + "\n";
}

}  // namespace tallowen
