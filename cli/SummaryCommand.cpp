#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runSummaryCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: summary: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
