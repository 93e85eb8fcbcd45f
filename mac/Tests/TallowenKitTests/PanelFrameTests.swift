import Foundation
import Testing
import TallowenKit

struct PanelFrameTests {
    @Test func decodesAFrameWithEverySectionPresentOrAbsent() throws {
        let json = #"""
            {"cleaning":null,"title":{"text":"TALLOW_","role":"primary"},"showsImportIndicator":false,
             "today":{"title":"AUJOURD'HUI · RECOURS RÉELS","requestsText":"07","requestsLabel":"RECOURS",
              "tokensLabel":"TOKENS","counter":{"text":"206 k","number":"206","unit":"k","animates":true,
              "transitionSeconds":0.28,"tickSeconds":0.2},"costText":"? au tarif API","waterTitle":"EAU · AUJOURD'HUI",
              "waterText":"4 L","equivalentText":"≈ 3 bouteilles","comparisonLine":"SOUS TA MOYENNE","level":1,
              "bottleRows":["000000000000000000000000"]},
             "toolRows":[{"tool":"cursor","label":"CURSOR","figuresText":"8 · 206 k"}],
             "week":{"title":"CETTE SEMAINE","line":"702 recours · 26,1 M · 50 $US"},
             "quotas":{"title":"QUOTAS","blocks":[{"tool":"codex","label":"CODEX","plan":null,"bars":[{"title":"5H",
              "fillFraction":1.0,"percentText":"100 %","role":"warning","resetText":"reset 1 h"}]}]},
             "detectedTools":{"title":"OUTILS DÉTECTÉS","text":"CLAUDE CODE · CODEX","role":"primary"},
             "errorLine":null,"cloudWarning":{"kind":"stale","text":"…","showsRelaunch":true,"relaunchLabel":"RELANCER",
              "role":"warning"},"loginItem":{"label":"Lancer au démarrage","isOn":false},"updateButton":null,
             "footer":{"importLabel":"IMPORTER","importEnabled":true,"importRole":"primary","syncLabel":"SYNCHRO",
              "quitLabel":"QUITTER","lastImportText":"Import 11:38","syncStatusLine":null,"developmentBadge":null,
              "developmentBadgeHelp":"Base CloudKit de développement : l'iPhone ne verra pas ces mesures."},
             "nextFrameSeconds":0.09}
            """#
        let frame = try JSONDecoder().decode(PanelFrame.self, from: Data(json.utf8))
        #expect(frame.cleaning == nil)
        #expect(frame.today.counter.unit == "k")
        #expect(frame.quotas?.blocks.first?.bars.first?.role == .warning)
        #expect(frame.quotas?.blocks.first?.plan == nil)
        #expect(frame.cloudWarning?.showsRelaunch == true)
        #expect(frame.updateButton == nil)
        #expect(frame.footer.lastImportText == "Import 11:38")
    }
}
