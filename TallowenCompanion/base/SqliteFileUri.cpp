#include "base/SqliteFileUri.hpp"

namespace tallowen {

std::string sqliteFileUri(const std::filesystem::path& path, std::string_view parameters) {
    std::string uri = "file:";
    const std::string text = path.string();
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        // A path that begins with two slashes (the same folder as one) would
        // read as a host name after "file:": its second slash is escaped too.
        if (i == 1 && c == '/' && text[0] == '/') {
            uri += "%2f";
            continue;
        }
        switch (c) {
            case '%': uri += "%25"; break;
            case '?': uri += "%3f"; break;
            case '#': uri += "%23"; break;
            default: uri.push_back(c);
        }
    }
    uri += '?';
    uri += parameters;
    return uri;
}

}  // namespace tallowen
