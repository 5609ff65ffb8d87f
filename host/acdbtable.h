// A table entity (ACAD_TABLE): a grid of cells drawn from an insertion point along a
// horizontal direction, rows stacked down (or up) the page. Each cell holds a value, a field
// or a block; the enumerations carry the host's numbers.
//
// Rows and columns are 0-based. Calls that name a cell outside the table answer as the host
// does for an empty cell (an empty value, a null id, content type unknown) or fail with
// eInvalidIndex; changes need the table open for write.
#pragma once

#include <string>
#include <string_view>

#include "host/acdbobject.h"
#include "host/acgepoint.h"
#include "host/acvalue.h"

namespace corvane::host {

namespace AcDb {
enum CellType : int { kUnknownCell = 0, kTextCell = 1, kBlockCell = 2, kMultipleContentCell = 3 };
enum CellContentType : int {
  kCellContentTypeUnknown = 0,
  kCellContentTypeValue = 0x1,
  kCellContentTypeField = 0x2,
  kCellContentTypeBlock = 0x4,
};
// Top to bottom: the insertion point is the table's top-left corner; bottom to top: its
// bottom-left corner, and the first row is the lowest.
enum FlowDirection : int { kTtoB = 0, kBtoT = 1 };
}  // namespace AcDb

// Options the host's value class defines and only table calls take here.
namespace AcValueOptions {
// How a value becomes text. kIgnoreMtextFormat gives plain text: multiline-text formatting
// codes dropped.
enum FormatOption : int {
  kFormatOptionNone = 0,
  kForEditing = 1,
  kForExpression = 2,
  kUseMaximumPrecision = 4,
  kIgnoreMtextFormat = 8,
};
// The kind of quantity a number is.
enum UnitType : int {
  kUnitless = 0,
  kDistance = 1,
  kAngle = 2,
  kArea = 4,
  kVolume = 8,
  kCurrency = 0x10,
  kPercentage = 0x20,
};
// How a text set into a cell is read. kConvertTextToValue reads a number as a number;
// kParseTextForFieldCode makes a field of a text that holds field codes.
enum ParseOption : int {
  kParseOptionNone = 0,
  kSetDefaultFormat = 1,
  kPreserveMtextFormat = 2,
  kConvertTextToValue = 4,
  kChangeDataType = 8,
  kParseTextForFieldCode = 0x10,
};
}  // namespace AcValueOptions

// A rectangle of cells, as the host's table sub-selection holds one: 0-based rows and columns,
// top-left to bottom-right, both ends included.
struct AcCellRange {
  int topRow = 0;
  int leftColumn = 0;
  int bottomRow = 0;
  int rightColumn = 0;
  bool operator==(const AcCellRange&) const = default;
};

class AcDbTable : public AcDbEntity {
 public:
  virtual int numRows() const = 0;
  virtual int numColumns() const = 0;

  // ---- geometry
  virtual AcGePoint3d position() const = 0;
  virtual AcGeVector3d direction() const = 0;  // unit vector along the rows
  virtual AcGeVector3d normal() const = 0;
  virtual AcDb::FlowDirection flowDirection() const = 0;
  virtual double rowHeight(int row) const = 0;
  virtual double columnWidth(int column) const = 0;
  virtual double height() const = 0;  // all rows
  virtual double width() const = 0;   // all columns
  virtual AcDbObjectId tableStyle() const = 0;

  // The cell under a point seen along the view direction; the apertures widen the table's
  // edges by that much. A point in a merged range gives the range's top-left cell.
  virtual bool hitTest(const AcGePoint3d& point, const AcGeVector3d& viewVector, double xAperture,
                       double yAperture, int& row, int& column) const = 0;
  bool hitTest(const AcGePoint3d& point, const AcGeVector3d& viewVector, int& row, int& column) const {
    return hitTest(point, viewVector, 0.0, 0.0, row, column);
  }

  // ---- cells
  virtual AcDb::CellType cellType(int row, int column) const = 0;
  virtual AcDb::CellContentType contentType(int row, int column) const = 0;
  // The cell's data type as its format declares it (kGeneral for a cell that takes any
  // value) and the unit type of its numbers.
  virtual Acad::ErrorStatus getDataType(int row, int column, AcValue::DataType& dataType,
                                        AcValueOptions::UnitType& unitType) const = 0;
  // The cell's value, carrying the format the cell shows it with; a field cell gives its
  // field's value.
  virtual AcValue value(int row, int column) const = 0;
  virtual Acad::ErrorStatus setValue(int row, int column, const AcValue& value) = 0;
  // A text read as the parse option says (AcValueOptions::ParseOption bits).
  virtual Acad::ErrorStatus setValue(int row, int column, std::wstring_view text, int parseOption) = 0;
  // The cell's text as shown; the format option (AcValueOptions::FormatOption bits) 8 drops
  // multiline-text codes.
  virtual Acad::ErrorStatus textString(int row, int column, int formatOption, std::wstring& text) const = 0;
  std::wstring textString(int row, int column) const {
    std::wstring text;
    textString(row, column, AcValueOptions::kFormatOptionNone, text);
    return text;
  }
  virtual Acad::ErrorStatus setTextString(int row, int column, std::wstring_view text) = 0;

  // The field of a field cell, or null. Setting a field makes the table its owner; a null
  // id takes the field out of the cell, which keeps the field's last text as its value.
  virtual AcDbObjectId fieldId(int row, int column) const = 0;
  virtual Acad::ErrorStatus setFieldId(int row, int column, AcDbObjectId fieldId) = 0;
  // The code of the cell's field, with its markers; empty for a cell without a field.
  virtual std::wstring getFormula(int row, int column, int content = 0) const = 0;

  // The block of a block cell, or null.
  virtual AcDbObjectId blockTableRecordId(int row, int column) const = 0;
  // Whether the cell lies in a merged range, and the range.
  virtual bool isMergedCell(int row, int column, int* minRow = nullptr, int* maxRow = nullptr, int* minColumn = nullptr,
                            int* maxColumn = nullptr) const = 0;

  // ---- structure: new rows or columns before `index` (numRows() or numColumns() appends)
  virtual Acad::ErrorStatus insertRows(int index, double height, int count = 1) = 0;
  virtual Acad::ErrorStatus insertColumns(int index, double width, int count = 1) = 0;
  // The new rows or columns take height or width, cell formats and cell types of the row or
  // column `inheritFrom` (counted before the insertion); their cells are empty.
  virtual Acad::ErrorStatus insertRowsAndInherit(int index, int inheritFrom, int count) = 0;
  virtual Acad::ErrorStatus insertColumnsAndInherit(int index, int inheritFrom, int count) = 0;

  // ---- the range of cells selected for editing
  virtual bool hasSubSelection() const = 0;
  virtual bool getSubSelection(int& minRow, int& maxRow, int& minColumn, int& maxColumn) const = 0;
  virtual Acad::ErrorStatus setSubSelection(int minRow, int maxRow, int minColumn, int maxColumn) = 0;
  virtual Acad::ErrorStatus clearSubSelection() = 0;
};

}  // namespace corvane::host
