#include "store/SqliteSampleStore.hpp"
#include "support/Samples.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>

#include <sqlite3.h>

#include <chrono>
#include <fstream>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

namespace tallowen {
namespace {

using testing::TempDir;

// `tallowen watch` as a child process whose standard output is a pipe.
class WatchProcess {
public:
    WatchProcess(const std::filesystem::path& home, const std::filesystem::path& data) {
        int fds[2];
        if (::pipe(fds) != 0) return;
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(fds[1], STDOUT_FILENO);
            ::close(fds[0]);
            ::close(fds[1]);
            ::setenv("TZ", "Europe/Paris", 1);
            ::execl(TALLOWEN_EXE, TALLOWEN_EXE, "watch", "--home", home.c_str(), "--data", data.c_str(),
                    static_cast<char*>(nullptr));
            _exit(127);
        }
        ::close(fds[1]);
        output_ = fds[0];
    }
    ~WatchProcess() {
        if (output_ >= 0) ::close(output_);
        if (pid_ > 0 && !waited_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }

    bool started() const { return pid_ > 0 && output_ >= 0; }

    // The next line of output, or what was left at the end of it.
    std::string readLine() {
        std::string line;
        char c = 0;
        while (::read(output_, &c, 1) == 1) {
            if (c == '\n') break;
            line.push_back(c);
        }
        return line;
    }

    // The panel printed after an import, up to its last line, the time of the import.
    std::string readPanel() {
        std::string panel;
        for (int line = 0; line < 200; ++line) {
            const std::string text = readLine();
            panel += text + "\n";
            if (text.find("Import ") != std::string::npos) break;
        }
        return panel;
    }

    // Sends `signal` and returns the exit status, or -1 when the process did not exit by itself.
    int stopWith(int signal) {
        ::kill(pid_, signal);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        waited_ = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t pid_ = -1;
    int output_ = -1;
    bool waited_ = false;
};

TEST(WatchCommandTest, ImportsAtOnceDrawsThePanelAndStopsCleanlyOnASignal) {
    for (const int signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        TempDir scratch;
        testing::writeUsageHome(scratch, "home");
        WatchProcess watch(scratch.path() / "home", scratch.path() / "data");
        ASSERT_TRUE(watch.started());

        const std::string panel = watch.readPanel();
        EXPECT_EQ(panel.rfind("■ TALLOWEN_\n", 0), 0u) << panel;
        EXPECT_NE(panel.find("OUTILS DÉTECTÉS\nCLAUDE CODE · CODEX · CURSOR\n"), std::string::npos) << panel;
        EXPECT_EQ(panel.find("Store illisible"), std::string::npos) << panel;
        EXPECT_EQ(watch.stopWith(signal), 0);

        // The run reached the store whole, and the store was closed (its log folded back in).
        EXPECT_EQ(SqliteSampleStore(scratch.path() / "data" / "store.sqlite").count(), 5);
        EXPECT_FALSE(std::filesystem::exists(scratch.path() / "data" / "store.sqlite-wal"));
    }
}

// `tallowen watch` on a pseudo-terminal, as a person runs it: keys and panel
// on the same terminal, whose settings the test can read once it has ended.
class WatchOnTerminal {
public:
    // As a foreground job, `watch` runs under a stand-in shell of the terminal's
    // session, so that Ctrl-Z really stops it; otherwise it leads the session itself.
    WatchOnTerminal(const std::filesystem::path& home, const std::filesystem::path& data, bool asForegroundJob = false) {
        if (::openpty(&master_, &terminal_, nullptr, nullptr, nullptr) != 0) return;
        int jobPid[2];
        if (::pipe(jobPid) != 0) return;
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(master_);
            ::close(jobPid[0]);
            ::login_tty(::dup(terminal_));
            ::setenv("TZ", "Europe/Paris", 1);
            const pid_t job = asForegroundJob ? ::fork() : 0;
            if (job == 0) {
                if (asForegroundJob) {
                    ::setpgid(0, 0);
                    ::signal(SIGTTOU, SIG_IGN);
                    ::tcsetpgrp(STDIN_FILENO, ::getpid());
                    ::signal(SIGTTOU, SIG_DFL);
                }
                ::execl(TALLOWEN_EXE, TALLOWEN_EXE, "watch", "--home", home.c_str(), "--data", data.c_str(),
                        static_cast<char*>(nullptr));
                _exit(127);
            }
            ::setpgid(job, job);
            const ssize_t written = ::write(jobPid[1], &job, sizeof job);
            static_cast<void>(written);
            int status = 0;
            while (::waitpid(job, &status, 0) == job && !WIFEXITED(status) && !WIFSIGNALED(status)) {
            }
            _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
        }
        ::close(jobPid[1]);
        job_ = pid_;
        if (asForegroundJob && ::read(jobPid[0], &job_, sizeof job_) != sizeof job_) job_ = -1;
        ::close(jobPid[0]);
    }
    ~WatchOnTerminal() {
        if (pid_ > 0 && !ended_) {
            if (job_ > 0 && job_ != pid_) ::kill(job_, SIGKILL);
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        if (master_ >= 0) ::close(master_);
        if (terminal_ >= 0) ::close(terminal_);
    }

    bool started() const { return pid_ > 0; }
    const std::string& output() const { return output_; }

    // Reads the screen's output until `text` shows, for a few seconds at most.
    bool waitFor(std::string_view text) {
        for (int wait = 0; wait < 100 && output_.find(text) == std::string::npos; ++wait) readAvailable(100);
        return output_.find(text) != std::string::npos;
    }
    void signal(int number) const { ::kill(job_, number); }
    // Whether `watch` has stopped (job control), waiting for it a few seconds at most.
    bool waitForStop() {
        for (int wait = 0; wait < 50; ++wait) {
            std::ifstream stat("/proc/" + std::to_string(job_) + "/stat");
            std::string pid, name, state;
            if (stat >> pid >> name >> state && state == "T") {
                // What it wrote before stopping is still on its way.
                readAvailable(100);
                return true;
            }
            readAvailable(100);
        }
        return false;
    }
    // Reads until `text` shows after the first `offset` bytes of output.
    bool waitForAfter(size_t offset, std::string_view text) {
        for (int wait = 0; wait < 100 && output_.find(text, offset) == std::string::npos; ++wait) readAvailable(100);
        return output_.find(text, offset) != std::string::npos;
    }
    bool readsSingleKeys() const {
        termios settings{};
        return ::tcgetattr(terminal_, &settings) == 0 && (settings.c_lflag & (ICANON | ECHO)) == 0;
    }
    // Sends SIGINT every tenth of a second until the process ends; its wait status.
    int interruptUntilEnded() {
        int status = 0;
        for (int attempt = 0; attempt < 50; ++attempt) {
            signal(SIGINT);
            readAvailable(100);
            if (::waitpid(pid_, &status, WNOHANG) == pid_) {
                ended_ = true;
                readAvailable(100);
                return status;
            }
        }
        return waitForEnd();
    }
    // The wait status once the process has ended.
    int waitForEnd() {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        ended_ = true;
        readAvailable(100);
        return status;
    }
    // Whether the keyboard is back in line mode with echo, and the user's screen shown again.
    void expectTerminalHandedBack() const {
        termios settings{};
        ASSERT_EQ(::tcgetattr(terminal_, &settings), 0);
        EXPECT_NE(settings.c_lflag & ICANON, 0u);
        EXPECT_NE(settings.c_lflag & ECHO, 0u);
        const size_t leftAlternateScreen = output_.rfind("\x1b[?1049l");
        ASSERT_NE(leftAlternateScreen, std::string::npos);
        EXPECT_GT(leftAlternateScreen, output_.rfind("\x1b[?1049h"));
    }

private:
    void readAvailable(int milliseconds) {
        pollfd waiting{master_, POLLIN, 0};
        char buffer[4096];
        while (::poll(&waiting, 1, milliseconds) == 1) {
            const ssize_t count = ::read(master_, buffer, sizeof buffer);
            if (count <= 0) return;
            output_.append(buffer, static_cast<size_t>(count));
        }
    }

    int master_ = -1;
    int terminal_ = -1;
    pid_t pid_ = -1;
    pid_t job_ = -1;
    bool ended_ = false;
    std::string output_;
};

TEST(WatchCommandTest, TheCleaningViewAnimatesWhileThePurgeRunsThenThePanelReturns) {
    TempDir scratch;
    testing::writeUsageHome(scratch, "home");
    std::filesystem::create_directories(scratch.path() / "data");
    SqliteSampleStore store(scratch.path() / "data" / "store.sqlite");
    for (int day = 0; day < 20000; ++day)
        for (int copy = 0; copy < 2; ++copy)
            store.insert(testing::slotSample("1900-" + std::to_string(100000 + day), "phone-gemini", Date{1.0 * copy}));
    store.save();

    WatchOnTerminal watch(scratch.path() / "home", scratch.path() / "data");
    ASSERT_TRUE(watch.started());
    ASSERT_TRUE(watch.waitFor("NETTOYAGE DES MESURES")) << watch.output();
    const std::string& output = watch.output();
    const size_t cleaningStarted = output.find("NETTOYAGE DES MESURES");
    // The cleaning view has no keys: the next ones are the panel's, back after the purge.
    ASSERT_TRUE(watch.waitForAfter(cleaningStarted, "QUITTER")) << output.substr(cleaningStarted);
    // Redrawn only when it changes: the view moved while the purge ran.
    size_t cleaningFrames = 0;
    for (size_t at = cleaningStarted; at != std::string::npos; at = output.find("NETTOYAGE DES MESURES", at + 1))
        ++cleaningFrames;
    EXPECT_GE(cleaningFrames, 2u);
    EXPECT_GT(output.rfind("QUITTER"), output.rfind("NETTOYAGE DES MESURES"));
    watch.signal(SIGINT);
    EXPECT_EQ(watch.waitForEnd(), 0);
    EXPECT_EQ(SqliteSampleStore(scratch.path() / "data" / "store.sqlite").count(), 20000 + 5);
}

TEST(WatchCommandTest, ASecondInterruptWhileARunEndsStillHandsTheTerminalBack) {
    TempDir scratch;
    testing::writeUsageHome(scratch, "home");
    const auto storePath = scratch.path() / "data" / "store.sqlite";
    std::filesystem::create_directories(storePath.parent_path());
    SqliteSampleStore(storePath).count();
    // Another writer holds the store, so the run cannot end while the keys come.
    sqlite3* blocker = nullptr;
    ASSERT_EQ(sqlite3_open(storePath.c_str(), &blocker), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(blocker, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);

    WatchOnTerminal watch(scratch.path() / "home", scratch.path() / "data");
    ASSERT_TRUE(watch.started());
    ASSERT_TRUE(watch.waitFor("IMPORT…")) << watch.output();
    // Interrupts until it ends: two that come too close together count as one.
    const int status = watch.interruptUntilEnded();
    sqlite3_exec(blocker, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(blocker);

    // The process ends at once, as asked, yet leaves the terminal as it found it.
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    watch.expectTerminalHandedBack();
}

TEST(WatchCommandTest, CtrlZHandsTheTerminalBackAndTheForegroundTakesItAgain) {
    TempDir scratch;
    testing::writeUsageHome(scratch, "home");
    WatchOnTerminal watch(scratch.path() / "home", scratch.path() / "data", true);
    ASSERT_TRUE(watch.started());
    ASSERT_TRUE(watch.waitFor("QUITTER")) << watch.output();
    ASSERT_TRUE(watch.readsSingleKeys());

    watch.signal(SIGTSTP);
    ASSERT_TRUE(watch.waitForStop());
    watch.expectTerminalHandedBack();

    const size_t beforeResuming = watch.output().size();
    watch.signal(SIGCONT);
    EXPECT_TRUE(watch.waitForAfter(beforeResuming, "QUITTER")) << watch.output().substr(beforeResuming);
    EXPECT_NE(watch.output().find("\x1b[?1049h", beforeResuming), std::string::npos);
    EXPECT_TRUE(watch.readsSingleKeys());

    watch.signal(SIGINT);
    const int status = watch.waitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    watch.expectTerminalHandedBack();
    // The panel left on the user's screen no longer offers keys that work.
    const std::string finalPanel = watch.output().substr(watch.output().rfind("\x1b[?1049l"));
    EXPECT_NE(finalPanel.find("OUTILS D"), std::string::npos) << finalPanel;
    EXPECT_EQ(finalPanel.find("QUITTER"), std::string::npos) << finalPanel;
}

TEST(WatchCommandTest, AClosedOutputOrAQuitKeyEndsAtOnceAndHandsTheTerminalBack) {
    // SIGPIPE comes when the reader of `watch | head` is gone, SIGQUIT from the quit key (Ctrl-\).
    for (const int signal : {SIGPIPE, SIGQUIT}) {
        SCOPED_TRACE(signal);
        TempDir scratch;
        testing::writeUsageHome(scratch, "home");
        WatchOnTerminal watch(scratch.path() / "home", scratch.path() / "data");
        ASSERT_TRUE(watch.started());
        ASSERT_TRUE(watch.waitFor("QUITTER")) << watch.output();
        watch.signal(signal);
        const int status = watch.waitForEnd();
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        watch.expectTerminalHandedBack();
    }
}

}  // namespace
}  // namespace tallowen
