#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runImportCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: import: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
