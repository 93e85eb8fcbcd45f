#include "store/SqliteSampleStore.hpp"
#include "support/TempDir.hpp"
#include "support/UsageHome.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

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

TEST(WatchCommandTest, ShowsTheLastErrorInThePanel) {
    TempDir scratch;
    testing::writeUsageHome(scratch, "home");
    scratch.write("data/store.sqlite", std::string(3000, 'z'));
    WatchProcess watch(scratch.path() / "home", scratch.path() / "data");
    ASSERT_TRUE(watch.started());
    const std::string panel = watch.readPanel();
    EXPECT_NE(panel.find("\nStore illisible : "), std::string::npos) << panel;
    EXPECT_EQ(watch.stopWith(SIGINT), 0);
}

}  // namespace
}  // namespace tallowen
