#pragma once

#include <functional>
#include <string_view>

namespace tallowen {

// The bytes of one log file, handed out in file order as runs of whole lines:
// a line is never cut between two runs, so each run splits into lines on its
// own, and a reader need never hold the whole file.
class LineRuns {
public:
    virtual void forEachRun(const std::function<void(std::string_view run)>& onRun) = 0;

protected:
    ~LineRuns() = default;
};

// Bytes already in memory, handed out as one run.
class LineRunsInMemory final : public LineRuns {
public:
    explicit LineRunsInMemory(std::string_view bytes) : bytes_(bytes) {}
    void forEachRun(const std::function<void(std::string_view run)>& onRun) override {
        if (!bytes_.empty()) onRun(bytes_);
    }

private:
    std::string_view bytes_;
};

}  // namespace tallowen
