#include "Commands.hpp"

#include <cstdio>

namespace tallowen::cli {

int runPanelCommand(const std::vector<std::string>&) {
    std::fputs("tallowen: panel: not built yet\n", stderr);
    return 2;
}

}  // namespace tallowen::cli
