#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>

namespace tallowen::testing {

// The text in single quotes, safe to paste into a shell command line.
inline std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') quoted += "'\\''";
        else quoted.push_back(c);
    }
    quoted += "'";
    return quoted;
}

struct CommandResult {
    int exitStatus = -1;
    std::string standardOutput;
    std::string standardError;
};

// Runs a shell command line, its error output kept in `scratchFolder`.
inline CommandResult runCommand(const std::string& commandLine, const std::filesystem::path& scratchFolder) {
    const auto errorFile = scratchFolder / "stderr.txt";
    CommandResult result;
    FILE* pipe = ::popen((commandLine + " 2>" + shellQuoted(errorFile.string())).c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.standardOutput.append(buffer, count);
    const int status = ::pclose(pipe);
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream errors(errorFile, std::ios::binary);
    std::ostringstream text;
    text << errors.rdbuf();
    result.standardError = text.str();
    return result;
}

}  // namespace tallowen::testing
