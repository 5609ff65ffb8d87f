// The second copy of a table's cells that drawings from R2010 on keep beside the table entity:
// a TABLECONTENT record, reached through the table's extension dictionary
// ("ACAD_XREC_ROUNDTRIP" -> XRECORD -> 360), with columns, rows, cells and the contents of
// each cell, every part bracketed by "1 NAME_BEGIN" ... "309 NAME_END" markers; and its
// TABLEGEOMETRY record (361 of the same XRECORD), one entry per cell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dxf/model/values/valueblock.h"
#include "dxf/tags/document.h"
#include "dxf/tags/recordheader.h"
#include "headless/db/table.h"

namespace corvane::headless {
class Database;
}

namespace corvane::dxf {

// One content of a cell: "302 CONTENT" up to the end of its formatted part.
struct ContentItem {
  std::size_t begin = 0;
  std::size_t end = 0;
  int type = 0;  // 1 value, 2 field, 4 block
  std::optional<ValueBlock> value;
  std::uint64_t handle = 0;  // the field or block
  // The content's format, when it has one: data type, unit type and format text.
  bool hasFormat = false;
  int dataType = 0;
  int unitType = 0;
  std::wstring format;
  double textHeight = 0.0;
};

struct ContentCell {
  std::size_t begin = 0;  // "300 CELL"
  std::size_t end = 0;    // one past "309 TABLECELL_END"
  std::size_t countIndex = kNoIndex;      // "95", the number of contents
  std::size_t checksumIndex = kNoIndex;   // the 140 of the cell's text check sum, when kept
  std::size_t itemsEnd = kNoIndex;        // one past the last content
  std::vector<ContentItem> items;
};

struct ContentRow {
  std::size_t begin = 0;  // "301 ROW"
  std::size_t end = 0;    // one past "309 TABLEROW_END"
  std::size_t cellCountIndex = kNoIndex;
  std::size_t heightIndex = kNoIndex;
  double height = 0.0;
  std::vector<ContentCell> cells;
};

struct ContentColumn {
  std::size_t begin = 0;  // "300 COLUMN"
  std::size_t end = 0;    // one past "309 TABLECOLUMN_END"
  std::size_t widthIndex = kNoIndex;
  double width = 0.0;
};

struct TableContent {
  RecordId record = kNoRecord;
  std::size_t columnCountIndex = 0;  // "90" after "100 AcDbLinkedTableData"
  std::vector<ContentColumn> columns;
  std::size_t rowCountIndex = 0;     // "91"
  std::vector<ContentRow> rows;
  std::size_t mergeCountIndex = 0;   // "90" after the table format of "AcDbFormattedTableData"
  std::size_t mergesEnd = 0;
  std::vector<headless::CellRange> merges;

  const ContentCell* cell(int row, int column) const;
};

// The TABLECONTENT and TABLEGEOMETRY records of a table record, when the drawing keeps them.
struct TableCompanions {
  RecordId content = kNoRecord;
  RecordId geometry = kNoRecord;
};
TableCompanions findTableCompanions(const Document& doc, const RecordHeader& tableHeader);

// nullopt, with `error` set, for a record whose layout this reader does not follow.
std::optional<TableContent> scanTableContent(const Document& doc, RecordId record, const headless::Database& db,
                                             std::string& error);

// Makes the record hold the table as it is now. Rows, columns and cells whose content did not
// change keep their tags; new rows and columns are copies of the ones they came from
// (Table::rowOrigin, columnOrigin), or of the last ones. Returns whether anything changed.
bool writeTableContent(Document& doc, const TableContent& content, const headless::Table& table,
                       const headless::Database& db);

// The geometry record's per-cell entries, laid out anew when rows or columns were added.
bool writeTableGeometry(Document& doc, RecordId record, const headless::Table& table);

// A cell's value as a file keeps it: with the format the cell shows it with.
host::AcValue storedValue(const headless::TableCell& cell);

// The handle of an object of the table's database, 0 for none or one that is erased.
std::uint64_t liveHandle(const headless::Database& db, host::AcDbObjectId id);

}  // namespace corvane::dxf
