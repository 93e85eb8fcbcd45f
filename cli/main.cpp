#include "Commands.hpp"
#include "HelpText.hpp"

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

using Command = int (*)(const std::vector<std::string>&);

const std::map<std::string, Command, std::less<>> commands = {
    {"scan", tallowen::cli::runScanCommand},       {"import", tallowen::cli::runImportCommand},
    {"days", tallowen::cli::runDaysCommand},       {"history", tallowen::cli::runHistoryCommand},
    {"statusline", tallowen::cli::runStatusLineCommand}, {"watch", tallowen::cli::runWatchCommand},
    {"panel", tallowen::cli::runPanelCommand},     {"summary", tallowen::cli::runSummaryCommand},
};

int printHelp(const std::string& topic) {
    const auto text = tallowen::cli::helpText(topic);
    if (!text) {
        std::fprintf(stderr, "tallowen: help: no command named %s (see tallowen --help)\n", topic.c_str());
        return 2;
    }
    std::fwrite(text->data(), 1, text->size(), stdout);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto has = [&](const char* flag) {
        return std::find(arguments.begin(), arguments.end(), flag) != arguments.end();
    };
    if (arguments.empty() || arguments.front().rfind("-", 0) == 0) {
        if (has("--version")) {
            std::puts("tallowen " TALLOWEN_VERSION);
            return 0;
        }
        if (has("--help") || has("-h")) return printHelp("tallowen");
        return tallowen::cli::runDefaultCommand(arguments);
    }
    const std::string command = arguments.front();
    arguments.erase(arguments.begin());
    if (command == "help") return printHelp(arguments.empty() ? "tallowen" : arguments.front());
    if (const auto found = commands.find(command); found != commands.end())
        return has("--help") ? printHelp(command) : found->second(arguments);
    std::fprintf(stderr, "tallowen: unknown command: %s (see tallowen --help)\n", command.c_str());
    return 2;
}
