#pragma once

#include "capi/tallowen.h"
#include "ui/LocaleFormatter.hpp"

namespace tallowen::capi {

// The caller's formatter (on the Mac, Foundation's) through its table of
// callbacks. A callback that is missing or fails gives a plain fallback text,
// never a failure: a text on screen is better than none.
class CallbackLocaleFormatter final : public LocaleFormatter {
public:
    explicit CallbackLocaleFormatter(tw_formatter_callbacks callbacks) : callbacks_(callbacks) {}
    ~CallbackLocaleFormatter() override;
    CallbackLocaleFormatter(const CallbackLocaleFormatter&) = delete;
    CallbackLocaleFormatter& operator=(const CallbackLocaleFormatter&) = delete;

    std::string decimalSeparator() const override;
    std::string decimal(double value, int fractionDigits) const override;
    std::string groupedInteger(int64_t value) const override;
    std::string usDollars(double dollars, int fractionDigits) const override;
    using LocaleFormatter::timeAgo;
    std::string timeAgo(RelativeTime elapsed) const override;
    std::string shortTime(Date date) const override;
    std::string upperCased(const std::string& text) const override;

private:
    tw_formatter_callbacks callbacks_;
};

}  // namespace tallowen::capi
