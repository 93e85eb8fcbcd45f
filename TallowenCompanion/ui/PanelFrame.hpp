#pragma once

#include "model/UsageTool.hpp"
#include "summary/BottleLevel.hpp"
#include "ui/MenuModel.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowen {

// The colour a text takes; each shell maps the roles to its own palette.
// `dimmed` is a text that says nothing is there yet, `disabled` a command
// that cannot be used now.
enum class TextRole { primary, secondary, accent, warning, dimmed, disabled };

std::string_view textRoleName(TextRole role);

struct RoledText {
    std::string text;
    TextRole role = TextRole::primary;
};

// What replaces the whole panel, title bar excepted, while the purge runs.
struct PanelCleaning {
    std::string title;
    double progress = 0;
    std::string percentText;  // "37 %"
    double barFraction = 0;
    std::string note;
};

// The climbing token counter as it stands in one frame.
struct PanelCounter {
    std::string text;
    // The text split for two sizes, the unit drawn smaller; no unit: one size.
    std::string number;
    std::optional<std::string> unit;
    // Whether the change to this text is animated: not on the counter's first
    // appearance, nor when it jumps from 0 (the day's first data).
    bool animates = false;
    // The animation to this text: a tick's numeric transition, or the longer
    // move to a new value brought by an import.
    double transitionSeconds = 0;
    // How often the shown number changes.
    double tickSeconds = 60;
};

struct PanelToday {
    std::string title;
    std::string requestsText;
    std::string requestsLabel;
    std::string tokensLabel;
    PanelCounter counter;
    std::string costText;
    std::string waterTitle;
    std::string waterText;
    std::string equivalentText;
    std::string comparisonLine;
    BottleLevel level = BottleLevel::empty;
    // The level's bitmap: rows from the top, "1" for a filled cell.
    std::vector<std::string> bottleRows;
};

struct PanelToolRow {
    UsageTool tool = UsageTool::claudeCode;
    std::string label;
    std::string figuresText;
};

struct PanelWeek {
    std::string title;
    std::string line;
};

struct PanelQuotaBar {
    std::string title;
    // Percent used as reported, for shells that draw the bar in whole cells.
    double percent = 0;
    double fillFraction = 0;
    std::string percentText;
    TextRole role = TextRole::primary;
    std::optional<std::string> resetText;
};

struct PanelQuotaBlock {
    UsageTool tool = UsageTool::claudeCode;
    std::string label;
    std::optional<std::string> plan;
    std::vector<PanelQuotaBar> bars;
};

struct PanelQuotas {
    std::string title;
    std::vector<PanelQuotaBlock> blocks;
};

struct PanelDetectedTools {
    std::string title;
    std::string text;
    TextRole role = TextRole::primary;
};

struct PanelCloudWarning {
    CloudWarningKind kind = CloudWarningKind::never;
    std::string text;
    bool showsRelaunch = false;
    std::string relaunchLabel;
    TextRole role = TextRole::warning;
};

struct PanelLoginItem {
    std::string label;
    bool isOn = false;
};

struct PanelUpdateButton {
    std::string label;
};

struct PanelFooter {
    std::string importLabel;
    bool importEnabled = true;
    TextRole importRole = TextRole::primary;
    std::string syncLabel;
    std::string quitLabel;
    std::optional<std::string> lastImportText;
    // Absent when the shell shows no cloud lines.
    std::optional<std::string> syncStatusLine;
    std::optional<std::string> developmentBadge;
    std::string developmentBadgeHelp;
};

// Everything a shell draws at one instant, texts ready and roles chosen. While
// `cleaning` is present the shell shows only the title bar and that card.
struct PanelFrame {
    std::optional<PanelCleaning> cleaning;
    RoledText title;
    bool showsImportIndicator = false;
    PanelToday today;
    // Empty: the section is absent.
    std::vector<PanelToolRow> toolRows;
    PanelWeek week;
    std::optional<PanelQuotas> quotas;
    PanelDetectedTools detectedTools;
    // The importer's last failure, or the store's, shown as it stands in the
    // warning role.
    std::optional<std::string> errorLine;
    std::optional<PanelCloudWarning> cloudWarning;
    std::optional<PanelLoginItem> loginItem;
    std::optional<PanelUpdateButton> updateButton;
    PanelFooter footer;
    double nextFrameSeconds = 0;
};

}  // namespace tallowen
