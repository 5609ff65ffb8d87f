// A table entity of the headless database.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "headless/db/cellhost.h"
#include "headless/db/entity.h"
#include "host/acdbtable.h"

namespace corvane::headless {

// How a cell shows what it holds. Zero height or alignment leaves it to the table style.
struct CellFormat {
  host::AcValue::DataType dataType = host::AcValue::kGeneral;
  host::AcValueOptions::UnitType unitType = host::AcValueOptions::kUnitless;
  std::wstring format;  // field format codes for numbers ("%lu2%pr2")
  double textHeight = 0.0;
  int alignment = 0;    // 1 top left ... 9 bottom right
  bool operator==(const CellFormat&) const = default;
};

struct TableCell {
  host::AcDb::CellType type = host::AcDb::kTextCell;
  // A value cell's value; a field cell keeps its field's last value here too.
  host::AcValue value;
  // The text shown: the formatted value, or the field's display text (its code until the
  // field is first evaluated).
  std::wstring text;
  host::AcDbObjectId field;
  host::AcDbObjectId block;
  double blockScale = 1.0;
  CellFormat format;
  // Changed since the table was read: what a save has to write back. Every change through
  // the table's calls (and editCell) sets it; reading a table from a file clears it.
  bool edited = false;
};

struct CellRange {
  int minRow = 0;
  int maxRow = 0;
  int minColumn = 0;
  int maxColumn = 0;
  bool contains(int row, int column) const noexcept {
    return row >= minRow && row <= maxRow && column >= minColumn && column <= maxColumn;
  }
  bool operator==(const CellRange&) const = default;
};

class Table : public EntityImpl<host::AcDbTable>, public CellHost {
 public:
  static constexpr double kDefaultRowHeight = 9.0;
  static constexpr double kDefaultColumnWidth = 60.0;

  Table() = default;
  Table(int rows, int columns, double rowHeight = kDefaultRowHeight, double columnWidth = kDefaultColumnWidth);

  std::wstring dxfName() const override { return L"ACAD_TABLE"; }
  std::wstring className() const override { return L"AcDbTable"; }

  int numRows() const override { return static_cast<int>(rows_.size()); }
  int numColumns() const override { return static_cast<int>(columns_.size()); }

  host::AcGePoint3d position() const override { return position_; }
  host::AcGeVector3d direction() const override { return direction_; }
  host::AcGeVector3d normal() const override { return normal_; }
  host::AcDb::FlowDirection flowDirection() const override { return flow_; }
  double rowHeight(int row) const override;
  double columnWidth(int column) const override;
  double height() const override;
  double width() const override;
  host::AcDbObjectId tableStyle() const override { return tableStyle_; }
  bool hitTest(const host::AcGePoint3d& point, const host::AcGeVector3d& viewVector, double xAperture,
               double yAperture, int& row, int& column) const override;
  using host::AcDbTable::hitTest;
  host::Acad::ErrorStatus getGeomExtents(host::AcDbExtents& extents) const override;

  host::AcDb::CellType cellType(int row, int column) const override;
  host::AcDb::CellContentType contentType(int row, int column) const override;
  host::Acad::ErrorStatus getDataType(int row, int column, host::AcValue::DataType& dataType,
                                      host::AcValueOptions::UnitType& unitType) const override;
  host::AcValue value(int row, int column) const override;
  host::Acad::ErrorStatus setValue(int row, int column, const host::AcValue& value) override;
  host::Acad::ErrorStatus setValue(int row, int column, std::wstring_view text, int parseOption) override;
  host::Acad::ErrorStatus textString(int row, int column, int formatOption, std::wstring& text) const override;
  using host::AcDbTable::textString;
  // A text with field codes makes a field cell, as typing it into the cell does.
  host::Acad::ErrorStatus setTextString(int row, int column, std::wstring_view text) override;
  host::AcDbObjectId fieldId(int row, int column) const override;
  host::Acad::ErrorStatus setFieldId(int row, int column, host::AcDbObjectId fieldId) override;
  std::wstring getFormula(int row, int column, int content = 0) const override;
  host::AcDbObjectId blockTableRecordId(int row, int column) const override;
  bool isMergedCell(int row, int column, int* minRow = nullptr, int* maxRow = nullptr, int* minColumn = nullptr,
                    int* maxColumn = nullptr) const override;

  host::Acad::ErrorStatus insertRows(int index, double height, int count = 1) override;
  host::Acad::ErrorStatus insertColumns(int index, double width, int count = 1) override;
  host::Acad::ErrorStatus insertRowsAndInherit(int index, int inheritFrom, int count) override;
  host::Acad::ErrorStatus insertColumnsAndInherit(int index, int inheritFrom, int count) override;

  bool hasSubSelection() const override { return subSelection_.has_value(); }
  bool getSubSelection(int& minRow, int& maxRow, int& minColumn, int& maxColumn) const override;
  host::Acad::ErrorStatus setSubSelection(int minRow, int maxRow, int minColumn, int maxColumn) override;
  host::Acad::ErrorStatus clearSubSelection() override;

  void fieldEvaluated(host::AcDbObjectId field, const std::wstring& displayText) override;
  std::optional<host::AcValue> property(std::wstring_view name) const override;

  // ---- the headless host's own access: no open needed (the file layer and the builders)
  bool isCell(int row, int column) const noexcept {
    return row >= 0 && column >= 0 && row < numRows() && column < numColumns();
  }
  // The cell; the position must be inside the table.
  const TableCell& cell(int row, int column) const;
  TableCell& editCell(int row, int column);  // marks the table changed
  void setPosition(const host::AcGePoint3d& position);
  // Any non-zero vector in the table's plane; kept as a unit vector.
  void setDirection(const host::AcGeVector3d& direction);
  void setNormal(const host::AcGeVector3d& normal);
  void setFlowDirection(host::AcDb::FlowDirection flow);
  void setTableStyle(host::AcDbObjectId style);
  // Replaces the grid by one of empty cells with these row heights and column widths; merges
  // and the sub-selection go, and each row and column is its own origin.
  void setGrid(const std::vector<double>& rowHeights, const std::vector<double>& columnWidths);
  void setRowHeight(int row, double height);
  void setColumnWidth(int column, double width);
  // A merged range: its top-left cell shows the content, the others are covered and lose
  // theirs. Ranges that overlap it are dropped.
  void mergeCells(const CellRange& range);
  const std::vector<CellRange>& mergedRanges() const noexcept { return merges_; }
  // The port's setters without the open: for the file layer and the builders. They return
  // eInvalidIndex for a cell outside the table and, where a field is made, eNoDatabase for
  // a table outside a database.
  host::Acad::ErrorStatus putValue(int row, int column, const host::AcValue& value);
  host::Acad::ErrorStatus putTextString(int row, int column, std::wstring_view text);
  // Puts a field of the table's database into a cell: the field's owner becomes the table.
  host::Acad::ErrorStatus placeField(int row, int column, host::AcDbObjectId field);
  // The cell that holds the field; false when no cell does.
  bool findField(host::AcDbObjectId field, int& row, int& column) const;

  // Where each row and column came from: its index when the table was read or made, the
  // index of the row or column it inherited from for an inherited one, -1 for one inserted
  // without a model. The file layer writes new rows and columns after these.
  int rowOrigin(int row) const { return rows_.at(static_cast<std::size_t>(row)).origin; }
  int columnOrigin(int column) const { return columns_.at(static_cast<std::size_t>(column)).origin; }

 private:
  struct Line {
    double size = 0.0;
    int origin = -1;
  };

  host::Acad::ErrorStatus checkWrite(int row, int column) const;
  // Puts a value into the cell, dropping a field it held.
  void assignValue(TableCell& cell, const host::AcValue& value);
  // Makes a field of the code owned by the table and puts it into the cell.
  host::Acad::ErrorStatus assignFieldCode(int row, int column, std::wstring_view code);
  bool holdsFieldCode(std::wstring_view text) const;
  void releaseField(TableCell& cell);
  std::wstring shownText(const TableCell& cell) const;
  host::Acad::ErrorStatus insertLines(bool rows, int index, int count, double size, int inheritFrom);
  // The cell's point in the table's own frame: x along the rows, y up the page from the
  // insertion point.
  std::pair<double, double> localPoint(const host::AcGePoint3d& point) const;
  std::size_t at(int row, int column) const {
    return static_cast<std::size_t>(row) * columns_.size() + static_cast<std::size_t>(column);
  }

  std::vector<Line> rows_;
  std::vector<Line> columns_;
  std::vector<TableCell> cells_;  // row by row
  std::vector<CellRange> merges_;
  std::optional<CellRange> subSelection_;
  host::AcGePoint3d position_;
  host::AcGeVector3d direction_{1.0, 0.0, 0.0};
  host::AcGeVector3d normal_{0.0, 0.0, 1.0};
  host::AcDb::FlowDirection flow_ = host::AcDb::kTtoB;
  host::AcDbObjectId tableStyle_;
  // Which cell holds which field, for fieldEvaluated; checked on every use.
  std::unordered_map<std::uint64_t, std::size_t> fieldCells_;
};

}  // namespace corvane::headless
