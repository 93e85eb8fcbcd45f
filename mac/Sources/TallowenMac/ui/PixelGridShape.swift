import SwiftUI

/// A bitmap of "1" and "0" rows drawn as square cells, as large as the rectangle
/// allows and centred in it.
struct PixelGridShape: Shape {
    let rows: [String]

    func path(in rect: CGRect) -> Path {
        var path = Path()
        guard let firstRow = rows.first, !firstRow.isEmpty else { return path }
        let columns = CGFloat(firstRow.count)
        let rowCount = CGFloat(rows.count)
        let cell = min(rect.width / columns, rect.height / rowCount)
        let left = rect.minX + (rect.width - cell * columns) / 2
        let top = rect.minY + (rect.height - cell * rowCount) * 0.5
        for (rowIndex, row) in rows.enumerated() {
            for (columnIndex, character) in row.enumerated() where character == "1" {
                path.addRect(CGRect(
                    x: left + CGFloat(columnIndex) * cell,
                    y: top + CGFloat(rowIndex) * cell,
                    width: cell,
                    height: cell
                ))
            }
        }
        return path
    }
}
