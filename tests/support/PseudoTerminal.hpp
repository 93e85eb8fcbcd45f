#pragma once

#include <csignal>
#include <poll.h>
#include <pty.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>
#include <vector>

namespace tallowen::testing {

// A command run on a pseudo-terminal of a given size, as a person runs it in
// a terminal window: standard input, output and error all on the terminal.
class PseudoTerminal {
public:
    PseudoTerminal(const std::vector<std::string>& arguments, int columns, int rows,
                   const std::vector<std::string>& environment = {"TZ=Europe/Paris", "LC_ALL=fr_FR.UTF-8"}) {
        winsize size{static_cast<unsigned short>(rows), static_cast<unsigned short>(columns), 0, 0};
        pid_ = ::forkpty(&master_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            for (const std::string& variable : environment) ::putenv(const_cast<char*>(variable.c_str()));
            std::vector<char*> argv;
            for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
            argv.push_back(nullptr);
            ::execv(argv[0], argv.data());
            _exit(127);
        }
    }
    ~PseudoTerminal() {
        if (pid_ > 0 && !ended_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        if (master_ >= 0) ::close(master_);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Reads the terminal until `text` shows in `output()` after `from`, ten seconds at most.
    bool waitFor(std::string_view text, size_t from = 0) {
        for (int wait = 0; wait < 100 && output().find(text, from) == std::string::npos; ++wait) read(100);
        return output().find(text, from) != std::string::npos;
    }
    // The window takes a new size; the kernel tells the command with SIGWINCH.
    void resize(int columns, int rows) const {
        winsize size{static_cast<unsigned short>(rows), static_cast<unsigned short>(columns), 0, 0};
        ::ioctl(master_, TIOCSWINSZ, &size);
    }
    void type(std::string_view keys) const { static_cast<void>(::write(master_, keys.data(), keys.size())); }
    // The exit status once the command has ended, everything it wrote read; -1 when a signal ended it.
    int waitForExit() {
        int status = 0;
        for (int wait = 0; wait < 200 && ::waitpid(pid_, &status, WNOHANG) == 0; ++wait) read(50);
        ended_ = true;
        read(50);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // What the command wrote, with the terminal's line ends turned back into "\n".
    std::string output() const {
        std::string text;
        for (size_t i = 0; i < output_.size(); ++i)
            if (!(output_[i] == '\r' && i + 1 < output_.size() && output_[i + 1] == '\n')) text += output_[i];
        return text;
    }

private:
    void read(int milliseconds) {
        pollfd waiting{master_, POLLIN, 0};
        char buffer[4096];
        while (::poll(&waiting, 1, milliseconds) == 1) {
            const ssize_t count = ::read(master_, buffer, sizeof buffer);
            if (count <= 0) return;
            output_.append(buffer, static_cast<size_t>(count));
        }
    }

    int master_ = -1;
    pid_t pid_ = -1;
    bool ended_ = false;
    std::string output_;
};

}  // namespace tallowen::testing
