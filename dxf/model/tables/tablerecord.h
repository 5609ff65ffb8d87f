// Tables in DXF: an ACAD_TABLE record read into a headless table, and a changed table written
// back into its record in place.
//
// The record keeps a grid (rows 91, columns 92, row heights 141, column widths 142) and one
// group of tags per cell, row by row, each starting with 171: the cell's type, its merge,
// the field of a field cell (344), the block of a block cell (340) and, from R2007 on, the
// value block "301 CELL_VALUE" ... "304 ACVALUE_END" with the value and its shown text
// (earlier drawings keep the text in 1 and 2). From R2010 on a TABLECONTENT record holds the
// same cells a second time (dxf/tablecontent.h); a write keeps both copies in step.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dxf/tags/document.h"
#include "dxf/tags/status.h"

namespace corvane::headless {
class Database;
class Table;
}

namespace corvane::dxf {

// What a table record names by handle: left for the caller to resolve once every record of
// the drawing is read (resolveTableLinks).
struct TableLinks {
  struct Cell {
    int row = 0;
    int column = 0;
    std::uint64_t handle = 0;
    bool operator==(const Cell&) const = default;
  };
  std::vector<Cell> fields;        // the field of each field cell
  std::vector<Cell> blocks;        // the block (its BLOCK_RECORD) of each block cell
  std::uint64_t tableStyle = 0;    // 342
  std::uint64_t graphics = 0;      // 343: the anonymous block that draws the table
  std::uint64_t content = 0;       // the TABLECONTENT record, 0 when there is none
};

// Fills `table`, which should be new, from the ACAD_TABLE record `record`: grid, geometry,
// flow direction, merges, and each cell's type, value, text and format. Where the drawing
// keeps a TABLECONTENT record, cell formats and fields come from it too. Values that hold
// object ids are looked up in `db`. Fails, leaving the table as it was, for a record that is
// not a table or whose cells do not fill its grid.
Status readTable(const Document& doc, RecordId record, const headless::Database& db, headless::Table& table,
                 TableLinks& links);

// Puts what the links name into the table, once the objects are in `db`: fields into their
// cells (owned by the table), blocks, the table style. Leaves the table's and its cells'
// changed marks as they were. Returns the handles `db` does not know.
std::vector<std::uint64_t> resolveTableLinks(const headless::Database& db, headless::Table& table,
                                             const TableLinks& links);

// Writes the table as it is now into its ACAD_TABLE record and, when there is one, its
// TABLECONTENT and TABLEGEOMETRY records: cells whose content changed get their new value,
// text and field in both copies; new rows and columns are written as copies of the ones they
// came from; what did not change keeps its tags. The table must be in a database (its
// fields' handles come from there). The table's graphics block follows: where the grid
// stayed, the texts of changed cells are replaced where they can be found in it; where rows
// or columns were added, it is drawn anew.
Status writeTable(Document& doc, RecordId record, const headless::Table& table);

// Why the table cannot go into a drawing as it is (a size, a coordinate or a cell's number
// that is not finite, a layer name or format with a line break); nullopt when it can.
std::optional<std::string> unwritable(const headless::Table& table);

// The group of one cell written from nothing, as the host spells it for the drawing's
// version (the value block from R2007 on, the text in 1 and 2 before). The table must be in
// a database.
void appendTableCell(std::vector<NewTag>& out, const Document& doc, const headless::Table& table, int row,
                     int column);

}  // namespace corvane::dxf
