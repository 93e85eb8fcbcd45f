#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runScanCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: scan: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
