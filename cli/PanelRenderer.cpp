#include "PanelRenderer.hpp"

#include "BigDigits.hpp"
#include "BottleArt.hpp"
#include "QuotaBarArt.hpp"
#include "TextWidth.hpp"
#include "summary/BottleBitmaps.hpp"
#include "ui/MenuFormats.hpp"

#include <algorithm>

namespace tallowen::cli {
namespace {

constexpr int quotaTitleColumns = 4;
constexpr int quotaPercentColumns = 5;
constexpr int quotaResetColumns = 12;
constexpr int quotaBarColumns = panelWidth - quotaTitleColumns - 1 - quotaPercentColumns - 1 - quotaResetColumns;
// The bottle's lines beside which the water texts stand.
constexpr size_t bottleTextFirstLine = 4;
constexpr int bottleColumnWidth = 16;

class Lines {
public:
    explicit Lines(const TerminalStyle& style) : style_(style) {}

    void add(std::string line) { lines_.push_back(std::move(line)); }
    void blank() { lines_.emplace_back(); }
    void paint(StyleRole role, std::string_view text) { add(style_.paint(role, text)); }
    void wrapped(StyleRole role, std::string_view text) {
        for (const std::string& line : wrapText(text, panelWidth)) paint(role, line);
    }
    void separator() {
        std::string rule;
        for (int i = 0; i < panelWidth; ++i) rule += "─";
        paint(StyleRole::secondary, rule);
    }
    const TerminalStyle& style() const { return style_; }

    std::vector<std::string> take() {
        for (std::string& line : lines_)
            while (!line.empty() && line.back() == ' ') line.pop_back();
        return std::move(lines_);
    }

private:
    const TerminalStyle& style_;
    std::vector<std::string> lines_;
};

void titleBar(Lines& out, const PanelFrame& frame, bool importing) {
    const std::string left = out.style().paint(StyleRole::accent, "■") + " " + out.style().paint(StyleRole::primary, frame.title);
    if (importing) {
        out.add(spread(left, out.style().paint(StyleRole::secondary, "import…"), panelWidth));
    } else {
        out.add(left);
    }
    out.blank();
}

void todayBlock(Lines& out, const MenuModel& model, const PanelFrame& frame) {
    const TerminalStyle& style = out.style();
    out.paint(StyleRole::secondary, menu_text::todayTitle);

    const std::string counter = frame.tokenCounter.empty() ? model.todayTokensText : frame.tokenCounter;
    const std::string besideCount[bigDigitLineCount] = {
        style.paint(StyleRole::secondary, menu_text::requestsLabel),
        style.paint(StyleRole::primary, counter) + " " + style.paint(StyleRole::secondary, menu_text::tokensLabel),
        "",
    };
    std::vector<std::string> big = bigDigitLines(model.todayRequestsText);
    const int bigWidth = big.empty() ? 0 : displayWidth(big.front());
    if (big.empty() || bigWidth + 2 + displayWidth(besideCount[1]) > panelWidth) {
        // Too many digits for the pixel figures: the plain number.
        big = {model.todayRequestsText, "", ""};
    }
    const int countColumns = std::max(displayWidth(big.front()), 2) + 2;
    for (int line = 0; line < bigDigitLineCount; ++line)
        out.add(padRight(style.paint(StyleRole::primary, big[line]), countColumns) + besideCount[line]);
    out.paint(StyleRole::primary, model.todayCostText);
    out.blank();
}

void waterBlock(Lines& out, const MenuModel& model) {
    const TerminalStyle& style = out.style();
    out.paint(StyleRole::secondary, menu_text::waterTitle);
    const BottleBitmap& bitmap = bottleBitmap(model.level);
    const std::vector<std::string> bottle = bottleArtLines(std::vector<std::string>(bitmap.begin(), bitmap.end()));
    const std::string texts[] = {
        style.paint(StyleRole::primary, model.todayWaterText),
        style.paint(StyleRole::secondary, model.waterEquivalentText),
        style.paint(StyleRole::secondary, model.comparisonLine),
    };
    for (size_t line = 0; line < bottle.size(); ++line) {
        std::string row = padRight(" " + style.paint(StyleRole::accent, bottle[line]), bottleColumnWidth);
        if (line >= bottleTextFirstLine && line - bottleTextFirstLine < std::size(texts))
            row += texts[line - bottleTextFirstLine];
        out.add(std::move(row));
    }
}

void toolRows(Lines& out, const MenuModel& model) {
    if (model.toolRows.empty()) return;
    out.blank();
    for (const MenuToolRow& row : model.toolRows)
        out.add(spread(out.style().paint(StyleRole::primary, row.label),
                       out.style().paint(StyleRole::secondary, row.figuresText), panelWidth));
}

void weekBlock(Lines& out, const MenuModel& model) {
    out.separator();
    out.paint(StyleRole::secondary, menu_text::weekTitle);
    out.wrapped(StyleRole::primary, model.weekLine);
}

void quotaSection(Lines& out, const MenuModel& model) {
    if (model.quotaBlocks.empty()) return;
    const TerminalStyle& style = out.style();
    out.separator();
    out.paint(StyleRole::secondary, menu_text::quotasTitle);
    for (const MenuQuotaBlock& block : model.quotaBlocks) {
        std::string header = style.paint(StyleRole::primary, block.label);
        if (block.plan) {
            // A plan name of any length keeps the header on one line.
            const int planColumns = panelWidth - displayWidth(block.label) - 1;
            header += " " + style.paint(StyleRole::secondary, truncatedToWidth(*block.plan, planColumns));
        }
        out.add(std::move(header));
        for (const MenuQuotaBar& bar : block.bars) {
            const StyleRole role = bar.warning ? StyleRole::warning : StyleRole::primary;
            out.add(padRight(style.paint(StyleRole::secondary, bar.title), quotaTitleColumns) +
                    style.paint(role, quotaBarArt(bar.percent, quotaBarColumns)) + " " +
                    padLeft(style.paint(role, bar.percentText), quotaPercentColumns) + " " +
                    padLeft(style.paint(StyleRole::secondary, bar.resetText.value_or("")), quotaResetColumns));
        }
    }
}

void detectedTools(Lines& out, const MenuModel& model) {
    out.separator();
    out.paint(StyleRole::secondary, menu_text::detectedToolsTitle);
    out.wrapped(model.hasDetectedTools ? StyleRole::primary : StyleRole::secondary, model.detectedToolsText);
    if (model.errorLine) out.wrapped(StyleRole::warning, *model.errorLine);
}

void footer(Lines& out, const MenuModel& model, const PanelFrame& frame) {
    const TerminalStyle& style = out.style();
    const std::string importTime = style.paint(StyleRole::secondary, model.lastImportText.value_or(""));
    if (!frame.showsKeyHints) {
        if (model.lastImportText) {
            out.blank();
            out.add(padLeft(importTime, panelWidth));
        }
        return;
    }
    out.separator();
    const std::string importKey = style.paint(StyleRole::accent, "[i]") + " " +
                                  style.paint(model.importButtonEnabled ? StyleRole::primary : StyleRole::secondary,
                                              model.importButtonLabel);
    const std::string quitKey = style.paint(StyleRole::accent, "[q]") + " " + style.paint(StyleRole::primary, menu_text::quitButton);
    // The import time sits centred between the two keys.
    const int sides = displayWidth(importKey) + displayWidth(quitKey);
    const int room = panelWidth - sides;
    const int timeWidth = displayWidth(importTime);
    if (timeWidth + 2 > room) {
        out.add(spread(importKey, quitKey, panelWidth));
        return;
    }
    const int before = (room - timeWidth) / 2;
    out.add(padRight(importKey, displayWidth(importKey) + before) + padRight(importTime, room - before) + quitKey);
}

}  // namespace

CountingText menuTokenCounter(const MenuModel& model, const LocaleFormatter& locale) {
    return CountingText{model.todayTokens, [&locale](int64_t n) { return tokenText(n, locale); },
                        model.tokenRatePerSecond};
}

std::vector<std::string> renderPanel(const MenuModel& model, const PanelFrame& frame, const TerminalStyle& style) {
    if (model.cleaning) return renderCleaningView(*model.cleaning, frame, style);
    Lines out(style);
    titleBar(out, frame, model.showsImportIndicator);
    todayBlock(out, model, frame);
    waterBlock(out, model);
    toolRows(out, model);
    weekBlock(out, model);
    quotaSection(out, model);
    detectedTools(out, model);
    footer(out, model, frame);
    return out.take();
}

std::vector<std::string> renderCleaningView(const MenuCleaningView& cleaning, const PanelFrame& frame,
                                            const TerminalStyle& style) {
    Lines out(style);
    titleBar(out, frame, false);
    out.paint(StyleRole::secondary, menu_text::cleaningTitle);
    std::vector<std::string> big = bigDigitLines(cleaning.percentText);
    if (big.empty()) big = {cleaning.percentText};
    for (const std::string& line : big) out.paint(StyleRole::primary, line);
    out.paint(StyleRole::primary, quotaBarArt(cleaning.barFraction * 100.0, panelWidth));
    out.wrapped(StyleRole::secondary, menu_text::cleaningNote);
    return out.take();
}

std::string joinedLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line;
        text += '\n';
    }
    return text;
}

}  // namespace tallowen::cli
