#pragma once

#include <string>
#include <vector>

namespace tallowen::cli {

// Draws a bitmap of "1" (filled) and "0" cells with Unicode quadrant
// characters. Each character stands for 2 columns × 4 rows of cells, each of
// its four quadrants for 1 column × 2 rows, set when either cell is: the
// bottle's one-cell walls stay one quadrant thin while its 44 rows fit 11
// lines. A 24 × 44 bitmap gives 11 lines of 12 characters.
std::vector<std::string> bottleArtLines(const std::vector<std::string>& bitmapRows);

}  // namespace tallowen::cli
