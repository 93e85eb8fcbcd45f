#pragma once

#include "import/ImporterState.hpp"
#include "model/Date.hpp"
#include "model/LocalCalendar.hpp"
#include "model/UsageSample.hpp"
#include "model/UsageTool.hpp"
#include "summary/BottleLevel.hpp"
#include "summary/ConsumptionSummary.hpp"
#include "ui/LocaleFormatter.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// The cloud synchronisation's observed state, and the store's CloudKit
// environment as the running application reports it (absent when it cannot
// tell, as outside the Mac application).
struct CloudSyncState {
    bool isSyncing = false;
    std::optional<Date> lastSuccessfulSync;
    std::optional<std::string> cloudEnvironment;
};

namespace menu_text {
inline constexpr std::string_view todayTitle = "AUJOURD'HUI · RECOURS RÉELS";
inline constexpr std::string_view requestsLabel = "RECOURS";
inline constexpr std::string_view tokensLabel = "TOKENS";
inline constexpr std::string_view costSuffix = " au tarif API";
inline constexpr std::string_view waterTitle = "EAU · AUJOURD'HUI";
inline constexpr std::string_view weekTitle = "CETTE SEMAINE";
inline constexpr std::string_view quotasTitle = "QUOTAS";
inline constexpr std::string_view detectedToolsTitle = "OUTILS DÉTECTÉS";
inline constexpr std::string_view noDetectedTools =
    "Aucun pour l'instant. Claude Code, Codex et Cursor sont lus automatiquement. Règle des 2 heures : voir "
    "METHODOLOGY.md.";
inline constexpr std::string_view importButton = "IMPORTER";
inline constexpr std::string_view importButtonImporting = "IMPORT…";
inline constexpr std::string_view syncButton = "SYNCHRO";
inline constexpr std::string_view relaunchButton = "RELANCER";
inline constexpr std::string_view quitButton = "QUITTER";
inline constexpr std::string_view developmentBadgeHelp =
    "Base CloudKit de développement : l'iPhone ne verra pas ces mesures.";
inline constexpr std::string_view cleaningTitle = "NETTOYAGE DES MESURES";
inline constexpr std::string_view cleaningNote = "Une seule fois. Les doublons partent, tes chiffres restent.";
inline constexpr std::string_view loginItemLabel = "Lancer au démarrage";
inline constexpr std::string_view updateButton = "VÉRIFIER LES MISES À JOUR";
}  // namespace menu_text

// One tool measured today: "CLAUDE CODE", then "12 · 340 k".
struct MenuToolRow {
    UsageTool tool = UsageTool::claudeCode;
    std::string label;
    int64_t requests = 0;
    int64_t tokens = 0;
    // The requests in decimal, " · ", the tokens in the token format.
    std::string figuresText;
};

struct MenuQuotaBar {
    std::string title;  // "5H", "7J"
    double percent = 0;
    double fillFraction = 0;
    std::string percentText;  // "80 %"
    bool warning = false;
    std::optional<std::string> resetText;  // "reset 3 h"
};

struct MenuQuotaBlock {
    UsageTool tool = UsageTool::claudeCode;
    std::string label;
    std::optional<std::string> plan;
    std::vector<MenuQuotaBar> bars;
};

enum class CloudWarningKind { none, syncing, never, stale };

// Every text, figure and visibility rule of the panel, computed afresh from
// the samples and the observed state; the shells only lay it out.
struct MenuModel {
    ConsumptionSummary summary;

    // Title bar.
    bool showsImportIndicator = false;

    // Today block.
    int64_t todayRequests = 0;
    std::string todayRequestsText;  // "%02d": "00", "07"
    int64_t todayTokens = 0;
    std::string todayTokensText;  // the token format, for a counter that does not run
    // The counter's pace: the usual tokens of a measured day spread over 16 hours.
    double tokenRatePerSecond = 0;
    int64_t todayCostCents = 0;
    std::string todayCostText;  // the money format followed by " au tarif API"
    int64_t todayWaterMilliliters = 0;
    std::string todayWaterText;  // "0,4 L"
    std::string waterEquivalentText;  // "≈ 1 bouteilles"
    BottleLevel level = BottleLevel::empty;
    std::string comparisonLine;

    // Empty when today has no samples.
    std::vector<MenuToolRow> toolRows;

    // The seven days ending today.
    int64_t weekRequests = 0;
    int64_t weekTokens = 0;
    int64_t weekCostCents = 0;
    std::string weekLine;  // "120 recours · 2,4 M · 45 $US"

    // Empty: the section and its separator are not shown.
    std::vector<MenuQuotaBlock> quotaBlocks;

    // The importer's tools, or the store's when no run found them, in the
    // importer's order.
    std::vector<UsageTool> detectedTools;
    bool hasDetectedTools = false;
    std::string detectedToolsText;

    // The importer's last failure, shown as it stands.
    std::optional<std::string> errorLine;

    CloudWarningKind cloudWarning = CloudWarningKind::none;
    std::string cloudWarningText;
    bool showsRelaunch = false;

    // Footer.
    std::string importButtonLabel;
    bool importButtonEnabled = true;
    std::optional<std::string> lastImportText;  // "Import 14:05"
    std::string syncStatusLine;  // "iCloud · connecté 14:05"
    std::optional<std::string> developmentBadge;
};

inline constexpr int menuSummaryWindowDays = 30;
// The counter spreads a usual day's tokens over sixteen waking hours.
inline constexpr double tokenCounterSecondsPerDay = 57600.0;

struct MenuInputs {
    const std::vector<UsageSample>& samples;
    ImporterState importer;
    CloudSyncState sync;
    Date now;
    const LocalCalendar& calendar;
    const LocaleFormatter& locale;
};

MenuModel computeMenuModel(const MenuInputs& inputs);

// Average tokens per measured day (integer division; 0 without a measured day) ÷ 57600.
double tokenCounterRatePerSecond(const ConsumptionSummary& summary);

// The day keys of today and the six days before it, today first.
std::vector<std::string> weekDayKeys(Date now, const LocalCalendar& calendar);

// The badge shown when the store is not the production CloudKit database: the
// environment in upper case ("DEVELOPMENT" when its value is empty); nothing
// when the environment is unknown or "production" in any case.
std::optional<std::string> developmentBadge(const std::optional<std::string>& cloudEnvironment);

}  // namespace tallowen
