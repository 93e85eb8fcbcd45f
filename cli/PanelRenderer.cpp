#include "PanelRenderer.hpp"

#include "BigDigits.hpp"
#include "BottleArt.hpp"
#include "QuotaBarArt.hpp"
#include "TextWidth.hpp"

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
    void paint(TextRole role, std::string_view text) { add(style_.paint(role, text)); }
    void wrapped(TextRole role, std::string_view text) {
        for (const std::string& line : wrapText(text, panelWidth)) paint(role, line);
    }
    void separator() {
        std::string rule;
        for (int i = 0; i < panelWidth; ++i) rule += "─";
        paint(TextRole::secondary, rule);
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

void titleBar(Lines& out, const PanelFrame& frame) {
    const std::string left =
        out.style().paint(TextRole::accent, "■") + " " + out.style().paint(frame.title.role, frame.title.text);
    if (frame.showsImportIndicator) {
        out.add(spread(left, out.style().paint(TextRole::secondary, "import…"), panelWidth));
    } else {
        out.add(left);
    }
    out.blank();
}

void todayBlock(Lines& out, const PanelToday& today) {
    const TerminalStyle& style = out.style();
    out.paint(TextRole::secondary, today.title);

    const std::string besideCount[bigDigitLineCount] = {
        style.paint(TextRole::secondary, today.requestsLabel),
        style.paint(TextRole::primary, today.counter.text) + " " + style.paint(TextRole::secondary, today.tokensLabel),
        "",
    };
    std::vector<std::string> big = bigDigitLines(today.requestsText);
    const int bigWidth = big.empty() ? 0 : displayWidth(big.front());
    if (big.empty() || bigWidth + 2 + displayWidth(besideCount[1]) > panelWidth) {
        // Too many digits for the pixel figures: the plain number.
        big = {today.requestsText, "", ""};
    }
    const int countColumns = std::max(displayWidth(big.front()), 2) + 2;
    for (int line = 0; line < bigDigitLineCount; ++line)
        out.add(padRight(style.paint(TextRole::primary, big[line]), countColumns) + besideCount[line]);
    out.paint(TextRole::primary, today.costText);
    out.blank();
}

void waterBlock(Lines& out, const PanelToday& today) {
    const TerminalStyle& style = out.style();
    out.paint(TextRole::secondary, today.waterTitle);
    const std::vector<std::string> bottle = bottleArtLines(today.bottleRows);
    const std::string texts[] = {
        style.paint(TextRole::primary, today.waterText),
        style.paint(TextRole::secondary, today.equivalentText),
        style.paint(TextRole::secondary, today.comparisonLine),
    };
    for (size_t line = 0; line < bottle.size(); ++line) {
        std::string row = padRight(" " + style.paint(TextRole::accent, bottle[line]), bottleColumnWidth);
        if (line >= bottleTextFirstLine && line - bottleTextFirstLine < std::size(texts))
            row += texts[line - bottleTextFirstLine];
        out.add(std::move(row));
    }
}

void toolRows(Lines& out, const PanelFrame& frame) {
    if (frame.toolRows.empty()) return;
    out.blank();
    for (const PanelToolRow& row : frame.toolRows)
        out.add(spread(out.style().paint(TextRole::primary, row.label),
                       out.style().paint(TextRole::secondary, row.figuresText), panelWidth));
}

void weekBlock(Lines& out, const PanelWeek& week) {
    out.separator();
    out.paint(TextRole::secondary, week.title);
    out.wrapped(TextRole::primary, week.line);
}

void quotaSection(Lines& out, const std::optional<PanelQuotas>& quotas) {
    if (!quotas) return;
    const TerminalStyle& style = out.style();
    out.separator();
    out.paint(TextRole::secondary, quotas->title);
    for (const PanelQuotaBlock& block : quotas->blocks) {
        std::string header = style.paint(TextRole::primary, block.label);
        if (block.plan) {
            // A plan name of any length keeps the header on one line.
            const int planColumns = panelWidth - displayWidth(block.label) - 1;
            header += " " + style.paint(TextRole::secondary, truncatedToWidth(*block.plan, planColumns));
        }
        out.add(std::move(header));
        for (const PanelQuotaBar& bar : block.bars) {
            out.add(padRight(style.paint(TextRole::secondary, bar.title), quotaTitleColumns) +
                    style.paint(bar.role, quotaBarArt(bar.percent, quotaBarColumns)) + " " +
                    padLeft(style.paint(bar.role, bar.percentText), quotaPercentColumns) + " " +
                    padLeft(style.paint(TextRole::secondary, bar.resetText.value_or("")), quotaResetColumns));
        }
    }
}

void detectedTools(Lines& out, const PanelFrame& frame) {
    out.separator();
    out.paint(TextRole::secondary, frame.detectedTools.title);
    out.wrapped(frame.detectedTools.role, frame.detectedTools.text);
    if (frame.errorLine) out.wrapped(TextRole::warning, *frame.errorLine);
}

void footer(Lines& out, const PanelFooter& footer, bool showsKeyHints) {
    const TerminalStyle& style = out.style();
    const std::string importTime = style.paint(TextRole::secondary, footer.lastImportText.value_or(""));
    if (!showsKeyHints) {
        if (footer.lastImportText) {
            out.blank();
            out.add(padLeft(importTime, panelWidth));
        }
        return;
    }
    out.separator();
    const std::string importKey =
        style.paint(TextRole::accent, "[i]") + " " + style.paint(footer.importRole, footer.importLabel);
    const std::string quitKey =
        style.paint(TextRole::accent, "[q]") + " " + style.paint(TextRole::primary, footer.quitLabel);
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

std::vector<std::string> renderPanel(const PanelFrame& frame, bool showsKeyHints, const TerminalStyle& style) {
    Lines out(style);
    titleBar(out, frame);
    if (const auto& cleaning = frame.cleaning) {
        out.paint(TextRole::secondary, cleaning->title);
        std::vector<std::string> big = bigDigitLines(cleaning->percentText);
        if (big.empty()) big = {cleaning->percentText};
        for (const std::string& line : big) out.paint(TextRole::primary, line);
        out.paint(TextRole::primary, quotaBarArt(cleaning->barFraction * 100.0, panelWidth));
        out.wrapped(TextRole::secondary, cleaning->note);
        return out.take();
    }
    todayBlock(out, frame.today);
    waterBlock(out, frame.today);
    toolRows(out, frame);
    weekBlock(out, frame.week);
    quotaSection(out, frame.quotas);
    detectedTools(out, frame);
    footer(out, frame.footer, showsKeyHints);
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
