import Foundation
import Testing
@testable import TallowenKit

@Test func standardSupportFolderIsTallowenMac() {
    #expect(EngineFolders.standard().support.lastPathComponent == "TallowenMac")
}
