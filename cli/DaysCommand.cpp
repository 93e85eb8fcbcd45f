#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runDaysCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: days: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
