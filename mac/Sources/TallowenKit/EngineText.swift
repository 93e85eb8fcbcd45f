import Foundation
import TallowenEngine

/// Text handed over by the engine, freed once read.
func takeEngineText(_ text: UnsafeMutablePointer<CChar>?) -> String? {
    guard let text else { return nil }
    defer { tw_string_free(text) }
    return String(cString: text)
}

/// Answers a callback of the engine with text.
func replyText(_ reply: OpaquePointer?, _ text: String) {
    text.withCString { tw_reply_text(reply, $0, strlen($0)) }
}

/// Answers a callback of the engine with the failure's description, which the
/// user may be shown.
func replyFailure(_ reply: OpaquePointer?, _ error: any Error) {
    error.localizedDescription.withCString { tw_reply_failure(reply, $0) }
}

/// The Swift object behind a context pointer the engine holds.
func contextObject<Object: AnyObject>(_ context: UnsafeMutableRawPointer?, as type: Object.Type) -> Object {
    Unmanaged<Object>.fromOpaque(context!).takeUnretainedValue()
}

/// A context pointer that keeps `object` alive until the engine releases it.
func retainedContext(_ object: AnyObject) -> UnsafeMutableRawPointer {
    Unmanaged.passRetained(object).toOpaque()
}

/// The engine's release callback for contexts made by `retainedContext`.
let releaseContext: @convention(c) (UnsafeMutableRawPointer?) -> Void = { context in
    if let context { Unmanaged<AnyObject>.fromOpaque(context).release() }
}

/// An engine pointer handed to another task: the engine's values own what they
/// touch and are used by one task at a time, which the importer's awaits ensure.
struct EnginePointer: @unchecked Sendable {
    let pointer: OpaquePointer
}
