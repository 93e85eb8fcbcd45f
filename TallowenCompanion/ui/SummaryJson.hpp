#pragma once

#include "model/Date.hpp"
#include "ui/MenuModel.hpp"

#include <optional>
#include <string>

namespace tallowen {

// What the summary reports beside the model's own figures.
struct SummaryContext {
    Date now;
    std::string dayKey;
    // The formatter's locale name, as the texts were written for it.
    std::string localeName;
    // The token counter as it stands at `now`.
    std::string tokenCounterText;
    std::optional<Date> lastImport;
};

// The panel's figures and texts as one JSON object: now, dayKey, locale,
// windowDays, the consumption summary (its quota samples in full), the
// bottle's level by name and raw value, its comparison line, and the menu's
// figures with their texts.
std::string summaryJson(const MenuModel& model, const SummaryContext& context);

}  // namespace tallowen
