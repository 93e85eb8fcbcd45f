import Foundation
import TallowenEngine

/// The caller's store as the engine's callback tables: an opener, and for each
/// open adapter a table whose answers are JSON.
final class StoreBridge {
    private let adapter: any SampleStoreAdapter
    private let encoder = JSONEncoder()
    private let decoder = JSONDecoder()

    private init(_ adapter: any SampleStoreAdapter) {
        self.adapter = adapter
    }

    private final class Opener {
        let opening: SampleStoreOpening
        init(_ opening: @escaping SampleStoreOpening) { self.opening = opening }
    }

    /// The opener table; the engine releases its context when done with it.
    static func opener(_ opening: @escaping SampleStoreOpening) -> tw_store_opener {
        var opener = tw_store_opener()
        opener.context = retainedContext(Opener(opening))
        opener.open = { context, store, reply in
            do {
                let adapter = try contextObject(context, as: Opener.self).opening()
                store!.pointee = StoreBridge(adapter).table()
                return true
            } catch {
                replyFailure(reply, error)
                return false
            }
        }
        opener.release = releaseContext
        return opener
    }

    private static func answer(
        _ context: UnsafeMutableRawPointer?, _ reply: OpaquePointer?, _ body: (StoreBridge) throws -> Void
    ) {
        do {
            try body(contextObject(context, as: StoreBridge.self))
        } catch {
            replyFailure(reply, error)
        }
    }

    private func json<Value: Encodable>(_ value: Value) throws -> String {
        String(decoding: try encoder.encode(value), as: UTF8.self)
    }

    private func record(_ json: UnsafePointer<CChar>?) throws -> SampleRecord {
        try decoder.decode(SampleRecord.self, from: Data(String(cString: json!).utf8))
    }

    private static func slot(_ dayKey: UnsafePointer<CChar>?, _ tool: UnsafePointer<CChar>?) -> SampleSlot {
        SampleSlot(dayKey: String(cString: dayKey!), tool: String(cString: tool!))
    }

    private func table() -> tw_store_callbacks {
        var table = tw_store_callbacks()
        table.context = retainedContext(self)
        table.fetch_all = { c, r in
            StoreBridge.answer(c, r) { replyText(r, try $0.json($0.adapter.fetchAll())) }
        }
        table.fetch_day = { c, day, r in
            StoreBridge.answer(c, r) { replyText(r, try $0.json($0.adapter.fetch(dayKey: String(cString: day!)))) }
        }
        table.insert = { c, json, r in
            StoreBridge.answer(c, r) { replyText(r, try $0.adapter.insert(try $0.record(json))) }
        }
        table.update = { c, json, r in
            StoreBridge.answer(c, r) { try $0.adapter.update(try $0.record(json)) }
        }
        table.remove = { c, id, r in
            StoreBridge.answer(c, r) { try $0.adapter.delete(id: String(cString: id!)) }
        }
        table.save = { c, r in StoreBridge.answer(c, r) { try $0.adapter.save() } }
        table.count = { c, r in StoreBridge.answer(c, r) { tw_reply_integer(r, try $0.adapter.count()) } }
        table.count_slot = { c, day, tool, r in
            StoreBridge.answer(c, r) { tw_reply_integer(r, try $0.adapter.count(slot: StoreBridge.slot(day, tool))) }
        }
        table.newest_in_slot = { c, day, tool, r in
            StoreBridge.answer(c, r) {
                if let newest = try $0.adapter.newest(in: StoreBridge.slot(day, tool)) {
                    replyText(r, try $0.json(newest))
                }
            }
        }
        table.delete_slot_except = { c, day, tool, keeper, r in
            StoreBridge.answer(c, r) {
                let deleted = try $0.adapter.deleteAll(in: StoreBridge.slot(day, tool), except: String(cString: keeper!))
                tw_reply_integer(r, deleted)
            }
        }
        table.slot_page = { c, offset, limit, r in
            StoreBridge.answer(c, r) { replyText(r, try $0.json($0.adapter.slots(offset: offset, limit: limit))) }
        }
        table.release = releaseContext
        return table
    }
}
