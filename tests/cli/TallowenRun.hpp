#pragma once

#include "support/RunCommand.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace tallowen::testing {

inline constexpr auto npos = std::string::npos;

// The built `tallowen` run in Paris on the home and data folders of a scratch folder.
class TallowenRun : public ::testing::Test {
protected:
    TempDir scratch;

    std::filesystem::path home() const { return scratch.path() / "home"; }
    std::filesystem::path data() const { return scratch.path() / "data"; }
    std::string commandLine(const std::string& arguments, const std::string& locale = "C.UTF-8") const {
        return "env TZ=Europe/Paris LC_ALL=" + locale + " " + shellQuoted(TALLOWEN_EXE) + " " + arguments +
               " --home " + shellQuoted(home().string()) + " --data " + shellQuoted(data().string());
    }
    CommandResult tallowen(const std::string& arguments, const std::string& locale = "C.UTF-8") const {
        return runCommand(commandLine(arguments, locale), scratch.path());
    }
    // The same command as an argument list, for a pseudo-terminal.
    std::vector<std::string> argv(std::vector<std::string> command) const {
        command.insert(command.begin(), TALLOWEN_EXE);
        command.insert(command.end(), {"--home", home().string(), "--data", data().string()});
        return command;
    }
};

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

}  // namespace tallowen::testing
