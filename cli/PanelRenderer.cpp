#include "PanelRenderer.hpp"

#include "BigDigits.hpp"
#include "BottleArt.hpp"
#include "QuotaBarArt.hpp"
#include "TextWidth.hpp"
#include "summary/BottleBitmaps.hpp"
#include "ui/MenuFormats.hpp"
#include "ui/PanelLayout.hpp"

#include <algorithm>

namespace tallowen::cli {
namespace {

constexpr int quotaTitleColumns = 4;
constexpr int quotaPercentColumns = 5;
constexpr int quotaResetColumns = 12;
// The bottle's lines beside which the water texts stand.
constexpr size_t bottleTextFirstLine = 4;
constexpr int bottleColumnWidth = 16;

// Lines of at most `width` columns. A compact panel has no room for blank
// lines and separators: they are left out.
class Lines {
public:
    Lines(const TerminalStyle& style, int width, bool roomy) : style_(style), width_(width), roomy_(roomy) {}

    void add(std::string line) { lines_.push_back(std::move(line)); }
    void blank() {
        if (roomy_) lines_.emplace_back();
    }
    void paint(StyleRole role, std::string_view text) { add(style_.paint(role, text)); }
    void wrapped(StyleRole role, std::string_view text) {
        for (const std::string& line : wrapText(text, width_)) paint(role, line);
    }
    // A title and its text on one line when they fit, else the title above the wrapped text.
    void titled(std::string_view title, StyleRole role, std::string_view text) {
        if (displayWidth(title) + 1 + displayWidth(text) <= width_) {
            add(style_.paint(StyleRole::secondary, title) + " " + style_.paint(role, text));
            return;
        }
        paint(StyleRole::secondary, title);
        wrapped(role, text);
    }
    void separator() {
        if (!roomy_) return;
        std::string rule;
        for (int i = 0; i < width_; ++i) rule += "─";
        paint(StyleRole::secondary, rule);
    }
    const TerminalStyle& style() const { return style_; }
    int width() const { return width_; }

    std::vector<std::string> take() {
        for (std::string& line : lines_)
            while (!line.empty() && line.back() == ' ') line.pop_back();
        return std::move(lines_);
    }

private:
    const TerminalStyle& style_;
    int width_;
    bool roomy_;
    std::vector<std::string> lines_;
};

void titleBar(Lines& out, const PanelFrame& frame, bool importing) {
    const std::string left = out.style().paint(StyleRole::accent, "■") + " " + out.style().paint(StyleRole::primary, frame.title);
    if (importing) {
        out.add(spread(left, out.style().paint(StyleRole::secondary, "import…"), out.width()));
    } else {
        out.add(left);
    }
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
                       out.style().paint(StyleRole::secondary, row.figuresText), out.width()));
}

void weekBlock(Lines& out, const MenuModel& model) {
    out.separator();
    out.paint(StyleRole::secondary, menu_text::weekTitle);
    out.wrapped(StyleRole::primary, model.weekLine);
}

void quotaBlocks(Lines& out, const MenuModel& model) {
    const TerminalStyle& style = out.style();
    const int barColumns = out.width() - quotaTitleColumns - 1 - quotaPercentColumns - 1 - quotaResetColumns;
    for (const MenuQuotaBlock& block : model.quotaBlocks) {
        std::string header = style.paint(StyleRole::primary, block.label);
        if (block.plan) {
            // A plan name of any length keeps the header on one line.
            const int planColumns = out.width() - displayWidth(block.label) - 1;
            header += " " + style.paint(StyleRole::secondary, truncatedToWidth(*block.plan, planColumns));
        }
        out.add(std::move(header));
        for (const MenuQuotaBar& bar : block.bars) {
            const StyleRole role = bar.warning ? StyleRole::warning : StyleRole::primary;
            out.add(padRight(style.paint(StyleRole::secondary, bar.title), quotaTitleColumns) +
                    style.paint(role, quotaBarArt(bar.percent, barColumns)) + " " +
                    padLeft(style.paint(role, bar.percentText), quotaPercentColumns) + " " +
                    padLeft(style.paint(StyleRole::secondary, bar.resetText.value_or("")), quotaResetColumns));
        }
    }
}

void quotaSection(Lines& out, const MenuModel& model) {
    if (model.quotaBlocks.empty()) return;
    out.separator();
    out.paint(StyleRole::secondary, menu_text::quotasTitle);
    quotaBlocks(out, model);
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
            out.add(padLeft(importTime, out.width()));
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
    const int room = out.width() - sides;
    const int timeWidth = displayWidth(importTime);
    if (timeWidth + 2 > room) {
        out.add(spread(importKey, quitKey, out.width()));
        return;
    }
    const int before = (room - timeWidth) / 2;
    out.add(padRight(importKey, displayWidth(importKey) + before) + padRight(importTime, room - before) + quitKey);
}

// Today, merged: the count and the tokens on one line, the cost beside them when it fits.
void compactToday(Lines& out, const MenuModel& model, const PanelFrame& frame) {
    const TerminalStyle& style = out.style();
    out.paint(StyleRole::secondary, menu_text::todayTitle);
    const std::string counter = frame.tokenCounter.empty() ? model.todayTokensText : frame.tokenCounter;
    const std::string figures = style.paint(StyleRole::primary, model.todayRequestsText) + " " +
                                style.paint(StyleRole::secondary, menu_text::requestsLabel) + " · " +
                                style.paint(StyleRole::primary, counter) + " " +
                                style.paint(StyleRole::secondary, menu_text::tokensLabel);
    const std::string cost = style.paint(StyleRole::primary, model.todayCostText);
    if (displayWidth(figures) + 2 + displayWidth(cost) <= out.width()) {
        out.add(spread(figures, cost, out.width()));
    } else {
        out.add(figures);
        out.add(cost);
    }
}

// The water texts, beside the bottle at half its size or on two lines without it.
void compactWater(Lines& out, const MenuModel& model, bool withBottle) {
    const TerminalStyle& style = out.style();
    const std::string texts[] = {
        style.paint(StyleRole::secondary, menu_text::waterTitle) + " " +
            style.paint(StyleRole::primary, model.todayWaterText),
        style.paint(StyleRole::secondary, model.waterEquivalentText),
        style.paint(StyleRole::secondary, model.comparisonLine),
    };
    if (!withBottle) {
        out.add(texts[0] + " " + texts[1]);
        out.add(texts[2]);
        return;
    }
    const BottleBitmap& bitmap = bottleBitmap(model.level);
    const auto bottle = bottleArtLines(halvedPixelRows(std::vector<std::string>(bitmap.begin(), bitmap.end())));
    for (size_t line = 0; line < bottle.size(); ++line)
        out.add(style.paint(StyleRole::accent, bottle[line]) + "  " + (line < std::size(texts) ? texts[line] : ""));
}

std::vector<std::string> compactPanel(const MenuModel& model, const PanelFrame& frame, const TerminalStyle& style) {
    Lines out(style, frame.columns, false);
    titleBar(out, frame, model.showsImportIndicator);
    compactToday(out, model, frame);
    compactWater(out, model, frame.layout == PanelLayout::compactWithBottle);
    toolRows(out, model);
    out.titled(menu_text::weekTitle, StyleRole::primary, model.weekLine);
    quotaBlocks(out, model);
    out.titled(menu_text::detectedToolsTitle, model.hasDetectedTools ? StyleRole::primary : StyleRole::secondary,
               model.detectedToolsText);
    if (model.errorLine) out.wrapped(StyleRole::warning, *model.errorLine);
    footer(out, model, frame);
    return out.take();
}

}  // namespace

CountingText menuTokenCounter(const MenuModel& model, const LocaleFormatter& locale) {
    return CountingText{model.todayTokens, [locale](int64_t n) { return tokenText(n, locale); },
                        model.tokenRatePerSecond};
}

std::vector<std::string> renderPanel(const MenuModel& model, const PanelFrame& frame, const TerminalStyle& style) {
    if (frame.layout == PanelLayout::tooNarrow) return {terminalTooNarrowText(frame.columns)};
    if (model.cleaning) return renderCleaningView(*model.cleaning, frame, style);
    if (frame.layout != PanelLayout::full) return compactPanel(model, frame, style);
    Lines out(style, panelWidth, true);
    titleBar(out, frame, model.showsImportIndicator);
    out.blank();
    todayBlock(out, model, frame);
    waterBlock(out, model);
    toolRows(out, model);
    weekBlock(out, model);
    quotaSection(out, model);
    detectedTools(out, model);
    footer(out, model, frame);
    return out.take();
}

std::vector<std::string> fittedPanel(const MenuModel& model, PanelFrame frame, const TerminalStyle& style,
                                     const std::optional<TerminalExtent>& terminal, bool cutToRows) {
    const auto drawnIn = [&](PanelLayout layout) {
        frame.layout = layout;
        frame.columns = panelColumns(layout, terminal);
        return renderPanel(model, frame, style);
    };
    const auto lines = drawnIn(choosePanelLayout(
        terminal, [&](PanelLayout candidate) { return static_cast<int>(drawnIn(candidate).size()); }));
    return terminal && cutToRows ? linesWithinRows(lines, terminal->rows, frame.showsKeyHints) : lines;
}

std::vector<std::string> renderCleaningView(const MenuCleaningView& cleaning, const PanelFrame& frame,
                                            const TerminalStyle& style) {
    Lines out(style, frame.columns, true);
    titleBar(out, frame, false);
    out.blank();
    out.paint(StyleRole::secondary, menu_text::cleaningTitle);
    std::vector<std::string> big = bigDigitLines(cleaning.percentText);
    if (big.empty()) big = {cleaning.percentText};
    for (const std::string& line : big) out.paint(StyleRole::primary, line);
    out.paint(StyleRole::primary, quotaBarArt(cleaning.barFraction * 100.0, out.width()));
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
