import Foundation
import TallowenEngine

/// The settings as the engine's callback table.
final class SettingsBridge {
    let storage: any SettingsStorage

    private init(_ storage: any SettingsStorage) {
        self.storage = storage
    }

    /// A new engine settings handle; free it with tw_settings_free.
    static func makeHandle(_ storage: any SettingsStorage) -> OpaquePointer {
        var table = tw_settings_callbacks()
        table.context = retainedContext(SettingsBridge(storage))
        table.bool_value = { context, key in
            contextObject(context, as: SettingsBridge.self).storage.bool(forKey: String(cString: key!))
        }
        table.set_bool = { context, key, value in
            contextObject(context, as: SettingsBridge.self).storage.set(value, forKey: String(cString: key!))
        }
        table.date_value = { context, key, date in
            guard let value = contextObject(context, as: SettingsBridge.self).storage.date(forKey: String(cString: key!))
            else { return false }
            date?.pointee = value.timeIntervalSinceReferenceDate
            return true
        }
        table.set_date = { context, key, date in
            contextObject(context, as: SettingsBridge.self).storage.set(
                Date(timeIntervalSinceReferenceDate: date), forKey: String(cString: key!))
        }
        table.release = releaseContext
        return tw_settings_create(table)!
    }
}
