#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runDefaultCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: default: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
