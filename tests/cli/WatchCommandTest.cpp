#include "TallowenRun.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/Samples.hpp"
#include "support/UsageHome.hpp"

#include <sqlite3.h>

#include <csignal>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace tallowen::testing {
namespace {


// `tallowen watch` on a pseudo-terminal as a shell runs a foreground job: a
// stand-in shell leads the terminal's session and `watch` runs in its own
// process group in the foreground, so that Ctrl-Z really stops it. The
// terminal's settings read through its master side are those of the job's side.
class WatchOnTerminal {
public:
    explicit WatchOnTerminal(std::vector<std::string> arguments) {
        int jobPid[2];
        if (::pipe(jobPid) != 0) return;
        shell_ = ::forkpty(&master_, nullptr, nullptr, nullptr);
        if (shell_ == 0) {
            ::setenv("TZ", "Europe/Paris", 1);
            const pid_t job = ::fork();
            if (job == 0) {
                ::setpgid(0, 0);
                ::signal(SIGTTOU, SIG_IGN);
                ::tcsetpgrp(STDIN_FILENO, ::getpid());
                ::signal(SIGTTOU, SIG_DFL);
                std::vector<char*> argv;
                for (std::string& argument : arguments) argv.push_back(argument.data());
                argv.push_back(nullptr);
                ::execv(argv[0], argv.data());
                _exit(127);
            }
            ::setpgid(job, job);
            static_cast<void>(::write(jobPid[1], &job, sizeof job));
            int status = 0;
            ::waitpid(job, &status, 0);
            _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
        }
        if (::read(jobPid[0], &job_, sizeof job_) != sizeof job_) job_ = -1;
        ::close(jobPid[0]);
        ::close(jobPid[1]);
    }
    ~WatchOnTerminal() {
        if (!ended_ && shell_ > 0) {
            ::kill(job_, SIGKILL);
            ::kill(shell_, SIGKILL);
            ::waitpid(shell_, nullptr, 0);
        }
        ::close(master_);
    }

    const std::string& output() const { return output_; }
    void signal(int number) const { ::kill(job_, number); }
    // Reads until `text` shows after the first `from` bytes, ten seconds at most.
    bool waitFor(std::string_view text, size_t from = 0) {
        for (int wait = 0; wait < 100 && output_.find(text, from) == npos; ++wait) read(100);
        return output_.find(text, from) != npos;
    }
    bool waitForStop() {
        for (int wait = 0; wait < 50; ++wait) {
            read(100);  // what it wrote before stopping is still on its way
            std::ifstream stat("/proc/" + std::to_string(job_) + "/stat");
            std::string pid, name, state;
            if (stat >> pid >> name >> state && state == "T") return true;
        }
        return false;
    }
    // The exit status of `watch`, or 128 and the signal that ended it; `repeated`
    // is sent every tenth of a second until then.
    int waitForEnd(int repeated = 0) {
        int status = 0;
        for (int wait = 0; wait < 100 && !ended_; ++wait) {
            if (repeated != 0) signal(repeated);
            read(100);
            ended_ = ::waitpid(shell_, &status, WNOHANG) == shell_;
        }
        if (!ended_) ended_ = ::waitpid(shell_, &status, 0) == shell_;
        read(100);
        return WEXITSTATUS(status);
    }
    // Whether the keyboard is in line mode with echo (a person's shell) or reads single keys unechoed (the panel).
    tcflag_t lineModes() const {
        termios settings{};
        return ::tcgetattr(master_, &settings) == 0 ? settings.c_lflag & (ICANON | ECHO) : ~tcflag_t{};
    }
    // The keyboard back in line mode with echo, and the user's screen shown again.
    void expectTerminalHandedBack() const {
        EXPECT_EQ(lineModes(), static_cast<tcflag_t>(ICANON | ECHO));
        ASSERT_NE(output_.rfind("\x1b[?1049l"), npos);
        EXPECT_GT(output_.rfind("\x1b[?1049l"), output_.rfind("\x1b[?1049h"));
    }

private:
    void read(int milliseconds) {
        pollfd waiting{master_, POLLIN, 0};
        char buffer[4096];
        for (ssize_t count; ::poll(&waiting, 1, milliseconds) == 1 && (count = ::read(master_, buffer, sizeof buffer)) > 0;)
            output_.append(buffer, static_cast<size_t>(count));
    }

    int master_ = -1;
    pid_t shell_ = -1, job_ = -1;
    bool ended_ = false;
    std::string output_;
};

class WatchCommandTest : public TallowenRun {
protected:
    void SetUp() override { writeUsageHome(scratch, "home"); }
    int64_t storedCount() const { return SqliteSampleStore(data() / SqliteSampleStore::fileName).count(); }
};

TEST_F(WatchCommandTest, PipedItImportsAtOnceDrawsThePanelAndStopsCleanlyOnASignal) {
    for (const char* signal : {"INT", "TERM"}) {
        SCOPED_TRACE(signal);
        std::filesystem::remove_all(data());
        const std::string panel = shellQuoted((scratch.path() / "panel").string());
        const CommandResult run = runCommand(commandLine("watch") + " >" + panel + " & for i in $(seq 100); do grep -q "
                                             "'Import ' " + panel + " 2>/dev/null && break; sleep 0.1; done; kill -" + signal +
                                             " $!; wait $!; status=$?; cat " + panel + "; exit $status", scratch.path());
        EXPECT_EQ(run.exitStatus, 0);
        EXPECT_EQ(run.standardOutput.rfind("■ TALLOWEN_\n", 0), 0u) << run.standardOutput;
        EXPECT_NE(run.standardOutput.find("OUTILS DÉTECTÉS\nCLAUDE CODE · CODEX · CURSOR\n"), npos);
        EXPECT_EQ(run.standardOutput.find("Store illisible"), npos);
        // The run reached the store whole, and the store was closed (its log folded back in).
        EXPECT_EQ(storedCount(), 5);
        EXPECT_FALSE(std::filesystem::exists(data() / "store.sqlite-wal"));
    }
}

TEST_F(WatchCommandTest, TheCleaningViewAnimatesWhileThePurgeRunsThenThePanelReturns) {
    std::filesystem::create_directories(data());
    SqliteSampleStore store(data() / SqliteSampleStore::fileName);
    for (int day = 0; day < 20000; ++day)
        for (int copy = 0; copy < 2; ++copy)
            store.insert(slotSample("1900-" + std::to_string(100000 + day), "phone-gemini", Date{1.0 * copy}));
    store.save();

    WatchOnTerminal watch(argv({"watch"}));
    ASSERT_TRUE(watch.waitFor("NETTOYAGE DES MESURES")) << watch.output();
    const size_t cleaningStarted = watch.output().find("NETTOYAGE DES MESURES");
    // The cleaning view has no keys: the next ones are the panel's, back after the purge.
    ASSERT_TRUE(watch.waitFor("QUITTER", cleaningStarted)) << watch.output().substr(cleaningStarted);
    // Redrawn only when it changes: the view moved while the purge ran.
    EXPECT_NE(watch.output().find("NETTOYAGE DES MESURES", cleaningStarted + 1), npos);
    EXPECT_GT(watch.output().rfind("QUITTER"), watch.output().rfind("NETTOYAGE DES MESURES"));
    watch.signal(SIGINT);
    EXPECT_EQ(watch.waitForEnd(), 0);
    EXPECT_EQ(storedCount(), 20000 + 5);
}

TEST_F(WatchCommandTest, CtrlZHandsTheTerminalBackAndTheForegroundTakesItAgain) {
    WatchOnTerminal watch(argv({"watch"}));
    ASSERT_TRUE(watch.waitFor("QUITTER")) << watch.output();
    ASSERT_EQ(watch.lineModes(), 0u);
    watch.signal(SIGTSTP);
    ASSERT_TRUE(watch.waitForStop());
    watch.expectTerminalHandedBack();

    const size_t beforeResuming = watch.output().size();
    watch.signal(SIGCONT);
    EXPECT_TRUE(watch.waitFor("QUITTER", beforeResuming)) << watch.output().substr(beforeResuming);
    EXPECT_NE(watch.output().find("\x1b[?1049h", beforeResuming), npos);
    EXPECT_EQ(watch.lineModes(), 0u);

    watch.signal(SIGINT);
    EXPECT_EQ(watch.waitForEnd(), 0);
    watch.expectTerminalHandedBack();
    // The panel left on the user's screen no longer offers keys that work.
    const std::string finalPanel = watch.output().substr(watch.output().rfind("\x1b[?1049l"));
    EXPECT_NE(finalPanel.find("OUTILS D"), npos) << finalPanel;
    EXPECT_EQ(finalPanel.find("QUITTER"), npos) << finalPanel;
}

// While a run cannot end (another writer holds the store), Ctrl-C twice, a
// closed output (`watch | head`) or the quit key (Ctrl-\) end the process at
// once, yet leave the terminal as it was found.
TEST_F(WatchCommandTest, AnEndingSignalDuringARunStillHandsTheTerminalBack) {
    std::filesystem::create_directories(data());
    storedCount();
    sqlite3* blocker = nullptr;
    ASSERT_EQ(sqlite3_open((data() / SqliteSampleStore::fileName).c_str(), &blocker), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(blocker, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    for (const int signal : {SIGINT, SIGPIPE, SIGQUIT}) {
        SCOPED_TRACE(signal);
        WatchOnTerminal watch(argv({"watch"}));
        ASSERT_TRUE(watch.waitFor("IMPORT…")) << watch.output();
        // Interrupts come until it ends: two too close together count as one.
        if (signal != SIGINT) watch.signal(signal);
        EXPECT_EQ(watch.waitForEnd(signal == SIGINT ? SIGINT : 0), 128 + signal);
        watch.expectTerminalHandedBack();
    }
    sqlite3_close(blocker);
}

}  // namespace
}  // namespace tallowen::testing
