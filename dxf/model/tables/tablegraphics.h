// What a table's anonymous "*T" block draws: a multiline text for each cell that shows one
// and a line for each cell edge, edges inside merged ranges left out. The block's origin is
// the table's insertion point and its axes are the drawing's, so the drawing is turned with
// the table's direction.
#pragma once

#include <cstdint>
#include <vector>

#include "dxf/model/tables/newtable.h"
#include "dxf/tags/document.h"

namespace corvane::headless {
class Table;
}

namespace corvane::dxf {

// The records of the drawing, owned by the block record `block`. Texts take the cell's own
// height, else `textHeight`, never more than their row holds.
std::vector<std::vector<NewTag>> tableGraphics(const Document& doc, const headless::Table& table, double textHeight,
                                               std::uint64_t block, const HandleSource& newHandle);

// The multiline text that shows one cell (the first cell of its merged range), owned by
// `block`; empty when the cell shows no text.
std::vector<NewTag> cellGraphics(const Document& doc, const headless::Table& table, int row, int column,
                                 double textHeight, std::uint64_t block, const HandleSource& newHandle);

// Replaces what the block draws by the table as it is now; false when the drawing has no
// such block.
bool redrawTable(Document& doc, std::uint64_t block, const headless::Table& table, double textHeight,
                 const HandleSource& newHandle);

// The text height of a table style's data rows; 0 when the style is not there.
double styleTextHeight(const Document& doc, std::uint64_t style);

}  // namespace corvane::dxf
