// swift-tools-version: 6.0
// The engine (C++) as a target, the Mac app's platform-free Swift core
// (TallowenKit) over its C interface, and their tests. Everything here builds
// and tests on Linux as well as on a Mac; Mac-only targets are declared below,
// inside `#if os(macOS)`.
import PackageDescription

// Warnings are errors, as in the CMake build. GCC 12's standard library calls
// std::get_temporary_buffer from std::stable_sort, which newer clang reports
// as deprecated in our code.
let engineWarnings: [CXXSetting] = [
    .unsafeFlags([
        "-Wall", "-Wextra", "-Werror", "-Wshadow", "-Wnon-virtual-dtor", "-Wno-deprecated-declarations",
    ]),
]

var products: [Product] = [
    .library(name: "TallowenKit", targets: ["TallowenKit"]),
]
var dependencies: [Package.Dependency] = []

var targets: [Target] = [
    // System libraries, found by pkg-config: Debian's -dev packages, Homebrew on a Mac.
    .systemLibrary(
        name: "CSQLite", path: "mac/Sources/CSQLite", pkgConfig: "sqlite3",
        providers: [.apt(["libsqlite3-dev"]), .brew(["sqlite"])]),
    .systemLibrary(
        name: "CSimdjson", path: "mac/Sources/CSimdjson", pkgConfig: "simdjson",
        providers: [.apt(["libsimdjson-dev"]), .brew(["simdjson"])]),
    // Every engine folder; the terminal (cli/) and the ICU formatter (icu/) stay out.
    .target(
        name: "TallowenEngine",
        dependencies: ["CSQLite", "CSimdjson"],
        path: "TallowenCompanion",
        exclude: ["resources"],
        publicHeadersPath: "capi",
        cxxSettings: [
            .headerSearchPath("."),
            // The distributions build simdjson with threads, which changes its
            // parser's layout; pkg-config says so but SwiftPM takes only -I
            // and -L from it.
            .define("SIMDJSON_THREADS_ENABLED", to: "1"),
        ] + engineWarnings),
    .target(
        name: "TallowenKit",
        dependencies: ["TallowenEngine"],
        path: "mac/Sources/TallowenKit"),
    .testTarget(
        name: "TallowenKitTests",
        dependencies: ["TallowenKit", "TallowenEngine", "CSQLite"],
        path: "mac/Tests/TallowenKitTests"),
]

#if os(macOS)
// The menu-bar app (SwiftUI, SwiftData, AppKit, Sparkle) on top of TallowenKit;
// mac/build-app.sh bundles it as Tallowen.app.
dependencies.append(.package(url: "https://github.com/sparkle-project/Sparkle", from: "2.6.0"))
products.append(.executable(name: "TallowenMac", targets: ["TallowenMac"]))
targets.append(
    .executableTarget(
        name: "TallowenMac",
        dependencies: [
            "TallowenKit",
            .product(name: "Sparkle", package: "Sparkle"),
        ],
        path: "mac/Sources/TallowenMac"))
#endif

let package = Package(
    name: "Tallowen",
    platforms: [.macOS(.v14)],
    products: products,
    dependencies: dependencies,
    targets: targets,
    cxxLanguageStandard: .cxx20
)
