// The status line on a store of ten years of samples (five tools a day, Codex
// with its quotas): what `tallowen statusline` does once the process has
// started, against reading every record as the panel does.

#include "IcuLocaleFormatter.hpp"
#include "model/DayKey.hpp"
#include "store/SqliteSampleStore.hpp"
#include "ui/StatusLine.hpp"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace tallowen {
namespace {

constexpr int storedDays = 3650;

struct TenYearStore {
    std::filesystem::path file;
    Date now = Date::fromUnixSeconds(
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count());
    LocalCalendar calendar;

    TenYearStore() {
        const auto folder =
            std::filesystem::temp_directory_path() / ("tallowen-statusline-bench-" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder);
        file = folder / SqliteSampleStore::fileName;
        SqliteSampleStore store(file);
        for (int day = 0; day < storedDays; ++day) {
            const Date at = now.addingSeconds(-86400.0 * day);
            for (const char* tool : {"claude-code", "codex", "cursor", "mac-chatgpt", "mac-claude"}) {
                UsageSample sample = UsageSample::created(at);
                sample.dayKey = dayKey(at, calendar);
                sample.tool = tool;
                sample.requests = 40;
                sample.inputTokens = 100000;
                sample.outputTokens = 20000;
                sample.estimatedWaterMilliliters = 4000;
                if (std::string(tool) == "codex") sample.quotaPrimaryPercent = sample.quotaSecondaryPercent = 50.0;
                store.insert(sample);
            }
        }
        store.save();
    }
    ~TenYearStore() { std::filesystem::remove_all(file.parent_path()); }
};

const TenYearStore& tenYears() {
    static const TenYearStore store;
    return store;
}

void StatusLineOnTenYears(benchmark::State& state) {
    const TenYearStore& store = tenYears();
    const IcuLocaleFormatter locale("fr_FR");
    for (auto _ : state) {
        const auto samples = readStoredSamples(store.file, [&](SqliteSampleStore& opened) {
            return opened.fetchFromDayOrQuotaSince(dayKey(store.now, store.calendar),
                                                   statusLineOldestQuotaUpdate(store.now));
        });
        const StatusLineFigures figures = statusLineFigures(*samples, store.now, store.calendar);
        benchmark::DoNotOptimize(statusLineText(figures, store.now, locale));
    }
}
BENCHMARK(StatusLineOnTenYears)->Unit(benchmark::kMillisecond);

void EveryRecordOfTenYears(benchmark::State& state) {
    const TenYearStore& store = tenYears();
    for (auto _ : state) benchmark::DoNotOptimize(readStoredSamples(store.file)->size());
}
BENCHMARK(EveryRecordOfTenYears)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tallowen
