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

}  // namespace tallowen
