#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runWatchCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: watch: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
