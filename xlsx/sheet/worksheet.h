// One worksheet part (xl/worksheets/sheetN.xml): its cells, read from a stream of chunks and
// kept compactly (24 bytes a cell; texts in one pool owned by the sheet, shared strings by
// index), and the part written back with only what changed rewritten.
//
// The sheet keeps no copy of the XML outside <sheetData>: only where its pieces were. To
// write the part back, hand serialize() the same bytes parse() read.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "xlsx/sheet/cellref.h"
#include "xlsx/sheet/sharedstrings.h"
#include "xlsx/sheet/xmlstream.h"

namespace corvane::xlsx {

// What a cell's value is. A formula is not a kind: a formula cell has the kind of its cached
// result (kFormulaString when that is text), or kBlank when it has none.
enum class CellKind : std::uint8_t {
  kNumber,
  kSharedString,   // text from the shared string table
  kInlineString,   // text written in the cell itself
  kFormulaString,  // text result of a formula
  kBoolean,
  kError,    // "#DIV/0!", "#N/A", ...
  kIsoDate,  // an ISO 8601 date-time as text; read and kept, never written for a new value
  kBlank,    // no value: a formatted empty cell, or a formula never calculated
};

// An error value as a cell shows it, "#DIV/0!" say.
struct ErrorText {
  std::string text;
  friend bool operator==(const ErrorText&, const ErrorText&) = default;
};

// What a cell holds, for reading and for writing: nothing, a number, a text, TRUE/FALSE or an
// error. Dates are numbers (their format makes them dates); a t="d" cell reads as its text.
struct CellValue {
  std::variant<std::monostate, double, std::string, bool, ErrorText> value;

  CellValue() = default;
  CellValue(double number) : value(number) {}
  CellValue(std::string text) : value(std::move(text)) {}
  CellValue(const char* text) : value(std::string(text)) {}
  CellValue(bool flag) : value(flag) {}
  CellValue(ErrorText error) : value(std::move(error)) {}
  bool empty() const noexcept { return std::holds_alternative<std::monostate>(value); }
  friend bool operator==(const CellValue&, const CellValue&) = default;
};

// A cell as the sheet holds it. `position` is its place in row-major order, valid until the
// sheet is next changed; the accessors below take it.
struct CellView {
  std::uint32_t row = 0, column = 0;
  CellKind kind = CellKind::kBlank;
  std::uint32_t style = 0;  // index into the styles' cell formats; 0 when the cell has none
  bool hasFormula = false;
  std::size_t position = 0;
};

class Worksheet {
 public:
  // nullopt, with what is wrong and where in `error`, for XML that is not a well-formed sheet
  // or whose rows or cells cannot be placed (bad or repeated references, rows past 1048576).
  static std::optional<Worksheet> parse(const ChunkSource& source, std::string& error);

  std::size_t cellCount() const noexcept { return cells_.size(); }
  CellView cell(std::size_t position) const;
  // Every cell in row-major order.
  void visit(const std::function<void(const CellView&)>& visitor) const;
  std::optional<CellView> find(CellRef at) const;

  // The number of a kNumber cell, 1 or 0 for a kBoolean one, 0 for any other.
  double number(std::size_t position) const;
  // The text of the string kinds (kSharedString through `strings`), of an error and of an ISO
  // date; empty for the others and for a shared string index the table does not have.
  std::string_view text(std::size_t position, const SharedStrings& strings) const;
  // The formula without "=", empty when none. A follower of a shared formula has none of its
  // own text; its formula is its group's first cell's, moved.
  std::string_view formula(std::size_t position) const;
  CellValue value(std::size_t position, const SharedStrings& strings) const;

  // Texts are written as inline strings; a non-finite number as #NUM!. The cell's formula is
  // dropped and its style kept; an empty value with no style removes the cell. When the cell
  // started a shared formula, the cells sharing it keep their last values as constants.
  // False, with nothing changed, for a reference outside the sheet.
  bool setValue(CellRef at, const CellValue& value);
  // Removes a row; the rows below move up one: cells, row attributes, the dimension, merged
  // cells and the ranges of shared and array formulas. Formula texts are not rewritten, so a
  // formula that refers to a moved row refers to the old place afterwards (a formula
  // tokenizer is needed for that). Nor are hyperlinks, validations, conditional formats and
  // selections. False for a row outside the sheet.
  bool deleteRow(std::uint32_t row);
  bool changed() const noexcept { return changed_; }

  bool hasLegacyDrawing() const noexcept { return layout_.hasLegacyDrawing; }
  // The smallest range holding every cell; nullopt for a sheet without cells.
  std::optional<CellRange> usedRange() const;
  std::vector<CellRange> mergedCells() const;

  // The part written back: everything outside <sheetData> as `original` has it, except the
  // dimension and merged cells once rows were deleted, and a <legacyDrawing r:id=...> put at
  // its place in the element order when `legacyDrawingId` is given and the sheet has none.
  // Rows keep their attributes and cells their other attributes, formulas and extensions.
  // `original` must be the bytes parse() read; for any other bytes the result is empty.
  std::string serialize(std::string_view original, std::string_view legacyDrawingId = {}) const;

 private:
  friend class WorksheetReader;

  struct Span {
    std::uint32_t offset = 0, length = 0;
  };
  struct Cell {
    std::uint64_t payload = 0;  // the number's bits, a shared string index or a pool Span
    std::uint32_t row = 0;
    std::uint16_t column = 0;
    CellKind kind = CellKind::kBlank;
    std::uint8_t flags = 0;
    std::uint32_t style = 0;
    std::uint32_t extra = kNoExtra;
  };
  // What few cells have, in pool text: other attributes, the formula element and children.
  struct Extra {
    Span attributes, formulaAttributes, formula, children, inlineXml;
  };
  struct Row {
    std::uint32_t row = 0;
    std::uint8_t flags = 0;
    Span attributes, spans, children;
  };
  struct Layout {
    std::uint64_t size = 0;
    std::uint64_t sheetDataBegin = 0, sheetDataEnd = 0;
    std::uint64_t dimensionBegin = 0, dimensionEnd = 0;
    std::uint64_t mergeBegin = 0, mergeEnd = 0;
    std::uint64_t legacyDrawingAt = 0;
    bool hasDimension = false, hasMerge = false, hasLegacyDrawing = false, declaresR = false;
    std::string prefix;  // of the sheet's elements: "x:" when they are written so
  };
  static constexpr std::uint32_t kNoExtra = 0xFFFFFFFF;

  std::string_view pooled(Span span) const { return std::string_view(pool_).substr(span.offset, span.length); }
  Span pool(std::string_view text);
  Extra& extraOf(Cell& cell);
  void dropSharedFollowers(const Cell& master);
  void writeSheetData(std::string& out) const;
  void writeCell(std::string& out, const Cell& cell) const;

  std::vector<Cell> cells_;
  std::vector<Extra> extras_;
  std::vector<Row> rows_;
  std::string pool_;
  std::vector<std::string> merged_;
  Layout layout_;
  bool changed_ = false;
  bool rowsDeleted_ = false;
};

}  // namespace corvane::xlsx
