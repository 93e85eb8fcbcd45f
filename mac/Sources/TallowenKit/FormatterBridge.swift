import Foundation
import TallowenEngine

/// A formatter as the engine's callback table, owned for the handle's life.
final class FormatterBridge {
    let formatter: any LocaleFormatting
    /// The engine's formatter handle; freed with the bridge.
    private(set) var handle: OpaquePointer!

    init(_ formatter: any LocaleFormatting) {
        self.formatter = formatter
        var table = tw_formatter_callbacks()
        // The table's context does not own the bridge: the bridge owns the handle.
        table.context = Unmanaged.passUnretained(self).toOpaque()
        table.decimal_separator = { c, r in replyText(r, contextObject(c, as: FormatterBridge.self).formatter.decimalSeparator) }
        table.decimal = { c, value, digits, r in
            replyText(r, contextObject(c, as: FormatterBridge.self).formatter.decimal(value, fractionDigits: Int(digits)))
        }
        table.grouped_integer = { c, value, r in
            replyText(r, contextObject(c, as: FormatterBridge.self).formatter.groupedInteger(value))
        }
        table.us_dollars = { c, dollars, digits, r in
            replyText(r, contextObject(c, as: FormatterBridge.self).formatter.usDollars(dollars, fractionDigits: Int(digits)))
        }
        table.time_ago = { c, count, unit, r in
            let unit = RelativeTimeUnit(rawValue: Int(unit.rawValue)) ?? .second
            replyText(r, contextObject(c, as: FormatterBridge.self).formatter.timeAgo(count: count, unit: unit))
        }
        table.short_time = { c, date, r in
            replyText(r, contextObject(c, as: FormatterBridge.self).formatter.shortTime(
                Date(timeIntervalSinceReferenceDate: date)))
        }
        table.upper_cased = { c, text, r in
            replyText(r, contextObject(c, as: FormatterBridge.self).formatter.upperCased(String(cString: text!)))
        }
        handle = tw_formatter_create(table)
    }

    deinit {
        tw_formatter_free(handle)
    }

    /// The menu's token, money and water texts as the engine writes them with this formatter.
    func menuTexts(tokens: Int64, costCents: Int64, waterMilliliters: Int64) -> [String: String] {
        let json = takeEngineText(tw_formatter_menu_texts(handle, tokens, costCents, waterMilliliters)) ?? "{}"
        return (try? JSONDecoder().decode([String: String].self, from: Data(json.utf8))) ?? [:]
    }
}
