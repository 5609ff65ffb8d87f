#include "headless/db/table.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "core/crt.h"
#include "core/textutil.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldcode.h"
#include "headless/db/fieldlist.h"
#include "headless/db/fieldvaluetext.h"
#include "headless/db/mtext.h"
#include "headless/format/valueformatter.h"

namespace corvane::headless {

using host::Acad;
using host::AcGePoint3d;
using host::AcGeVector3d;

namespace {

double dot(const AcGeVector3d& a, const AcGeVector3d& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
AcGeVector3d cross(const AcGeVector3d& a, const AcGeVector3d& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
AcGeVector3d scaled(const AcGeVector3d& v, double f) { return {v.x * f, v.y * f, v.z * f}; }
AcGeVector3d unit(const AcGeVector3d& v) {
  const double length = v.length();
  return length > 0.0 ? scaled(v, 1.0 / length) : v;
}
AcGeVector3d between(const AcGePoint3d& from, const AcGePoint3d& to) {
  return {to.x - from.x, to.y - from.y, to.z - from.z};
}
AcGePoint3d moved(const AcGePoint3d& p, const AcGeVector3d& v) { return {p.x + v.x, p.y + v.y, p.z + v.z}; }

// The index of the band that holds `offset`, bands laid end to end from 0 (an offset at the
// far end belongs to the last band).
template <typename Lines>
int bandAt(const Lines& lines, double offset) {
  double end = 0.0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    end += lines[i].size;
    if (offset < end) return static_cast<int>(i);
  }
  return static_cast<int>(lines.size()) - 1;
}

// A whole text that is one number, as a number value: integral values that fit a long stay
// integers unless written with a point or an exponent.
std::optional<host::AcValue> numberFromText(std::wstring_view text) {
  const std::wstring trimmed = core::trim(text);
  if (trimmed.empty()) return std::nullopt;
  std::size_t used = 0;
  const double number = core::wcstod(trimmed, &used);
  if (used != trimmed.size() || !std::isfinite(number)) return std::nullopt;
  const bool integral = trimmed.find_first_of(L".eE") == std::wstring::npos;
  if (integral && number >= std::numeric_limits<std::int32_t>::min() &&
      number <= std::numeric_limits<std::int32_t>::max()) {
    return host::AcValue(static_cast<std::int32_t>(number));
  }
  return host::AcValue(number);
}

// Erases a field the table owned and its children, and takes them off the field list.
void eraseField(Database& db, host::AcDbObjectId id) {
  auto* field = db.get<Field>(id);
  if (!field) return;
  for (const auto child : field->children()) eraseField(db, child);
  db.get<FieldList>(db.fieldListId())->remove(id);
  field->record().erased = true;
  field->record().modified = true;
}

}  // namespace

Table::Table(int rows, int columns, double rowHeight, double columnWidth) {
  if (rows < 0 || columns < 0) throw std::invalid_argument("a table cannot have a negative number of rows or columns");
  for (int r = 0; r < rows; ++r) rows_.push_back({rowHeight, r});
  for (int c = 0; c < columns; ++c) columns_.push_back({columnWidth, c});
  cells_.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
}

// ---- geometry --------------------------------------------------------------------------------

double Table::rowHeight(int row) const {
  return row >= 0 && row < numRows() ? rows_[static_cast<std::size_t>(row)].size : 0.0;
}

double Table::columnWidth(int column) const {
  return column >= 0 && column < numColumns() ? columns_[static_cast<std::size_t>(column)].size : 0.0;
}

double Table::height() const {
  double sum = 0.0;
  for (const auto& row : rows_) sum += row.size;
  return sum;
}

double Table::width() const {
  double sum = 0.0;
  for (const auto& column : columns_) sum += column.size;
  return sum;
}

std::pair<double, double> Table::localPoint(const AcGePoint3d& point) const {
  const AcGeVector3d d = between(position_, point);
  return {dot(d, direction_), dot(d, cross(normal_, direction_))};
}

bool Table::hitTest(const AcGePoint3d& point, const AcGeVector3d& viewVector, double xAperture, double yAperture,
                    int& row, int& column) const {
  if (rows_.empty() || columns_.empty()) return false;
  // The point seen along the view direction meets the table's plane here; a view along the
  // plane sees no cell.
  const AcGeVector3d view = viewVector.length() > 0.0 ? viewVector : normal_;
  const double across = dot(view, normal_);
  if (std::fabs(across) < 1e-12 * view.length()) return false;
  const double t = dot(between(point, position_), normal_) / across;
  const auto [x, y] = localPoint(moved(point, scaled(view, t)));
  // Rows run down the page from the insertion point, or up it when the table grows upward.
  const double down = flow_ == host::AcDb::kTtoB ? -y : y;
  const double w = width();
  const double h = height();
  xAperture = std::fabs(xAperture);
  yAperture = std::fabs(yAperture);
  if (x < -xAperture || x > w + xAperture || down < -yAperture || down > h + yAperture) return false;
  int r = bandAt(rows_, std::clamp(down, 0.0, h));
  int c = bandAt(columns_, std::clamp(x, 0.0, w));
  for (const auto& range : merges_) {
    if (range.contains(r, c)) {
      r = range.minRow;
      c = range.minColumn;
      break;
    }
  }
  row = r;
  column = c;
  return true;
}

Acad::ErrorStatus Table::getGeomExtents(host::AcDbExtents& extents) const {
  if (rows_.empty() || columns_.empty()) return Acad::eInvalidExtents;
  const AcGeVector3d across = scaled(direction_, width());
  const AcGeVector3d up = cross(normal_, direction_);
  const AcGeVector3d down = scaled(up, flow_ == host::AcDb::kTtoB ? -height() : height());
  extents = host::AcDbExtents();
  extents.addPoint(position_);
  extents.addPoint(moved(position_, across));
  extents.addPoint(moved(position_, down));
  extents.addPoint(moved(moved(position_, across), down));
  return Acad::eOk;
}

// ---- cells -----------------------------------------------------------------------------------

const TableCell& Table::cell(int row, int column) const {
  if (!isCell(row, column)) throw std::out_of_range("no such table cell");
  return cells_[at(row, column)];
}

TableCell& Table::editCell(int row, int column) {
  if (!isCell(row, column)) throw std::out_of_range("no such table cell");
  record_.modified = true;
  TableCell& c = cells_[at(row, column)];
  c.edited = true;
  return c;
}

host::AcDb::CellType Table::cellType(int row, int column) const {
  return isCell(row, column) ? cells_[at(row, column)].type : host::AcDb::kUnknownCell;
}

host::AcDb::CellContentType Table::contentType(int row, int column) const {
  if (!isCell(row, column)) return host::AcDb::kCellContentTypeUnknown;
  const TableCell& c = cells_[at(row, column)];
  if (c.type == host::AcDb::kBlockCell) {
    return c.block.isNull() ? host::AcDb::kCellContentTypeUnknown : host::AcDb::kCellContentTypeBlock;
  }
  if (!c.field.isNull()) return host::AcDb::kCellContentTypeField;
  return c.value.isEmpty() ? host::AcDb::kCellContentTypeUnknown : host::AcDb::kCellContentTypeValue;
}

Acad::ErrorStatus Table::getDataType(int row, int column, host::AcValue::DataType& dataType,
                                     host::AcValueOptions::UnitType& unitType) const {
  if (!isCell(row, column)) return Acad::eInvalidIndex;
  const TableCell& c = cells_[at(row, column)];
  unitType = c.format.unitType;
  if (!c.field.isNull()) {
    dataType = value(row, column).dataType();
  } else {
    dataType = c.format.dataType == host::AcValue::kUnknown ? c.value.dataType() : c.format.dataType;
  }
  return Acad::eOk;
}

host::AcValue Table::value(int row, int column) const {
  if (!isCell(row, column)) return {};
  const TableCell& c = cells_[at(row, column)];
  host::AcValue result = c.value;
  if (!c.field.isNull() && record_.database) {
    const auto* field = record_.database->get<Field>(c.field);
    if (field && (field->state() & host::AcDbField::kHasCache)) field->getValue(result);
  }
  if (result.getFormat().empty() && !c.format.format.empty() && !result.isEmpty()) result.setFormat(c.format.format);
  return result;
}

std::wstring Table::shownText(const TableCell& c) const {
  if (c.value.isEmpty()) return {};
  std::wstring text;
  if (c.value.get(text)) return text;
  const std::wstring& format = c.value.getFormat().empty() ? c.format.format : c.value.getFormat();
  if (record_.database) return displayFieldValue(c.value, format, *record_.database);
  return formatValue(c.value, format, DrawingUnits{});
}

Acad::ErrorStatus Table::checkWrite(int row, int column) const {
  if (!record_.writeOpen) return Acad::eNotOpenForWrite;
  if (!isCell(row, column)) return Acad::eInvalidIndex;
  return Acad::eOk;
}

void Table::releaseField(TableCell& c) {
  if (c.field.isNull()) return;
  if (record_.database) {
    const auto* field = record_.database->get<Field>(c.field);
    if (field && field->ownerId() == record_.id) eraseField(*record_.database, c.field);
  }
  c.field = {};
  c.edited = true;
  record_.modified = true;
}

void Table::assignValue(TableCell& c, const host::AcValue& value) {
  releaseField(c);
  c.type = host::AcDb::kTextCell;
  c.block = {};
  c.value = value;
  // A cell that takes any value keeps doing so for texts; a number, date or point gives the
  // cell its type.
  const bool textInGeneralCell = c.format.dataType == host::AcValue::kGeneral && value.dataType() == host::AcValue::kString;
  if (!value.isEmpty() && !textInGeneralCell) c.format.dataType = value.dataType();
  c.text = shownText(c);
  c.edited = true;
  record_.modified = true;
}

bool Table::holdsFieldCode(std::wstring_view text) const { return findFieldCode(text).has_value(); }

Acad::ErrorStatus Table::assignFieldCode(int row, int column, std::wstring_view code) {
  Database* db = record_.database;
  if (!db) return Acad::eNoDatabase;
  // A cell keeps its field as a text field, as a text does: the whole text, fields inside.
  const host::AcDbObjectId id = Field::create(*db, code, record_.id, true);
  return placeField(row, column, id);
}

Acad::ErrorStatus Table::putValue(int row, int column, const host::AcValue& value) {
  if (!isCell(row, column)) return Acad::eInvalidIndex;
  assignValue(cells_[at(row, column)], value);
  return Acad::eOk;
}

Acad::ErrorStatus Table::putTextString(int row, int column, std::wstring_view text) {
  if (!isCell(row, column)) return Acad::eInvalidIndex;
  if (holdsFieldCode(text)) return assignFieldCode(row, column, text);
  assignValue(cells_[at(row, column)], host::AcValue(std::wstring(text)));
  return Acad::eOk;
}

Acad::ErrorStatus Table::placeField(int row, int column, host::AcDbObjectId id) {
  if (!isCell(row, column)) return Acad::eInvalidIndex;
  Database* db = record_.database;
  if (!db) return Acad::eNoDatabase;
  auto* field = db->get<Field>(id);
  if (!field) return host::AcDbObjectId() == id ? Acad::eNullObjectId : Acad::eWrongObjectType;
  if (field->isErased()) return Acad::eWasErased;
  TableCell& c = cells_[at(row, column)];
  if (c.field != id) releaseField(c);
  c.type = host::AcDb::kTextCell;
  c.block = {};
  c.field = id;
  field->record().owner = record_.id;
  field->record().modified = true;
  const bool evaluated = field->evaluationStatus() != host::AcDbField::kNotYetEvaluated;
  c.text = evaluated ? field->getDisplayText() : field->getFieldCode(host::AcDbField::kFieldCode);
  host::AcValue fieldValue;
  if (evaluated && field->getValue(fieldValue) == Acad::eOk) c.value = fieldValue;
  c.edited = true;
  record_.modified = true;
  return Acad::eOk;
}

bool Table::findField(host::AcDbObjectId field, int& row, int& column) const {
  if (field.isNull()) return false;
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    if (cells_[i].field != field) continue;
    row = static_cast<int>(i / columns_.size());
    column = static_cast<int>(i % columns_.size());
    return true;
  }
  return false;
}

Acad::ErrorStatus Table::setValue(int row, int column, const host::AcValue& value) {
  if (const auto es = checkWrite(row, column); es != Acad::eOk) return es;
  return putValue(row, column, value);
}

Acad::ErrorStatus Table::setValue(int row, int column, std::wstring_view text, int parseOption) {
  if (const auto es = checkWrite(row, column); es != Acad::eOk) return es;
  if ((parseOption & host::AcValueOptions::kParseTextForFieldCode) && holdsFieldCode(text)) {
    return assignFieldCode(row, column, text);
  }
  TableCell& c = cells_[at(row, column)];
  if ((parseOption & host::AcValueOptions::kConvertTextToValue) && c.format.dataType != host::AcValue::kString) {
    if (const auto number = numberFromText(text)) {
      assignValue(c, *number);
      return Acad::eOk;
    }
  }
  assignValue(c, host::AcValue(std::wstring(text)));
  return Acad::eOk;
}

Acad::ErrorStatus Table::setTextString(int row, int column, std::wstring_view text) {
  if (const auto es = checkWrite(row, column); es != Acad::eOk) return es;
  return putTextString(row, column, text);
}

Acad::ErrorStatus Table::textString(int row, int column, int formatOption, std::wstring& text) const {
  if (!isCell(row, column)) return Acad::eInvalidIndex;
  const TableCell& c = cells_[at(row, column)];
  text = c.type == host::AcDb::kBlockCell ? std::wstring() : c.text;
  if (formatOption & host::AcValueOptions::kIgnoreMtextFormat) text = MText::plainText(text);
  return Acad::eOk;
}

host::AcDbObjectId Table::fieldId(int row, int column) const {
  return isCell(row, column) ? cells_[at(row, column)].field : host::AcDbObjectId();
}

Acad::ErrorStatus Table::setFieldId(int row, int column, host::AcDbObjectId id) {
  if (const auto es = checkWrite(row, column); es != Acad::eOk) return es;
  if (!id.isNull()) return placeField(row, column, id);
  TableCell& c = cells_[at(row, column)];
  const std::wstring last = c.text;
  assignValue(c, last.empty() ? host::AcValue() : host::AcValue(last));
  return Acad::eOk;
}

std::wstring Table::getFormula(int row, int column, int /*content*/) const {
  const host::AcDbObjectId id = fieldId(row, column);
  if (id.isNull() || !record_.database) return {};
  const auto* field = record_.database->get<Field>(id);
  return field ? field->getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers) : std::wstring();
}

host::AcDbObjectId Table::blockTableRecordId(int row, int column) const {
  if (!isCell(row, column)) return {};
  const TableCell& c = cells_[at(row, column)];
  return c.type == host::AcDb::kBlockCell ? c.block : host::AcDbObjectId();
}

bool Table::isMergedCell(int row, int column, int* minRow, int* maxRow, int* minColumn, int* maxColumn) const {
  for (const auto& range : merges_) {
    if (!range.contains(row, column)) continue;
    if (minRow) *minRow = range.minRow;
    if (maxRow) *maxRow = range.maxRow;
    if (minColumn) *minColumn = range.minColumn;
    if (maxColumn) *maxColumn = range.maxColumn;
    return true;
  }
  return false;
}

// ---- structure -------------------------------------------------------------------------------

Acad::ErrorStatus Table::insertLines(bool rows, int index, int count, double size, int inheritFrom) {
  if (!record_.writeOpen) return Acad::eNotOpenForWrite;
  std::vector<Line>& lines = rows ? rows_ : columns_;
  const int existing = static_cast<int>(lines.size());
  if (index < 0 || index > existing || count < 1) return Acad::eInvalidIndex;
  if (inheritFrom >= existing || inheritFrom < -1) return Acad::eInvalidIndex;
  if (inheritFrom < 0 && !(size > 0.0)) return Acad::eInvalidInput;

  const Line model = inheritFrom >= 0 ? lines[static_cast<std::size_t>(inheritFrom)] : Line{size, -1};
  const int oldColumns = numColumns();
  lines.insert(lines.begin() + index, static_cast<std::size_t>(count), model);

  // Cells of the new lines are empty and take the formats and types of the model line.
  std::vector<TableCell> cells(static_cast<std::size_t>(numRows()) * static_cast<std::size_t>(numColumns()));
  for (int r = 0; r < numRows(); ++r) {
    for (int c = 0; c < numColumns(); ++c) {
      const int line = rows ? r : c;
      const bool added = line >= index && line < index + count;
      const int oldLine = added ? inheritFrom : (line >= index + count ? line - count : line);
      TableCell& target = cells[at(r, c)];
      target.edited = added;
      if (added && inheritFrom < 0) continue;
      const int oldR = rows ? oldLine : r;
      const int oldC = rows ? c : oldLine;
      const TableCell& source =
          cells_[static_cast<std::size_t>(oldR) * static_cast<std::size_t>(oldColumns) + static_cast<std::size_t>(oldC)];
      if (added) {
        target.edited = true;
        target.type = source.type;
        target.format = source.format;
        target.blockScale = source.blockScale;
      } else {
        target = source;
      }
    }
  }
  cells_ = std::move(cells);

  // Ranges below or right of the insertion move along; ranges it cuts through grow, and so
  // does a merged range that the new lines continue from its last line.
  auto shift = [&](CellRange& range, bool merged) {
    int& low = rows ? range.minRow : range.minColumn;
    int& high = rows ? range.maxRow : range.maxColumn;
    if (low >= index) {
      low += count;
      high += count;
    } else if (high >= index || (merged && index == high + 1 && inheritFrom >= low && inheritFrom <= high)) {
      high += count;
    }
  };
  for (auto& range : merges_) shift(range, true);
  if (subSelection_) shift(*subSelection_, false);
  record_.modified = true;
  return Acad::eOk;
}

Acad::ErrorStatus Table::insertRows(int index, double height, int count) {
  return insertLines(true, index, count, height, -1);
}

Acad::ErrorStatus Table::insertColumns(int index, double width, int count) {
  return insertLines(false, index, count, width, -1);
}

Acad::ErrorStatus Table::insertRowsAndInherit(int index, int inheritFrom, int count) {
  if (inheritFrom < 0) return Acad::eInvalidIndex;
  return insertLines(true, index, count, 0.0, inheritFrom);
}

Acad::ErrorStatus Table::insertColumnsAndInherit(int index, int inheritFrom, int count) {
  if (inheritFrom < 0) return Acad::eInvalidIndex;
  return insertLines(false, index, count, 0.0, inheritFrom);
}

// ---- sub-selection ---------------------------------------------------------------------------

bool Table::getSubSelection(int& minRow, int& maxRow, int& minColumn, int& maxColumn) const {
  if (!subSelection_) return false;
  minRow = subSelection_->minRow;
  maxRow = subSelection_->maxRow;
  minColumn = subSelection_->minColumn;
  maxColumn = subSelection_->maxColumn;
  return true;
}

Acad::ErrorStatus Table::setSubSelection(int minRow, int maxRow, int minColumn, int maxColumn) {
  if (!record_.writeOpen) return Acad::eNotOpenForWrite;
  if (minRow > maxRow || minColumn > maxColumn || !isCell(minRow, minColumn) || !isCell(maxRow, maxColumn)) {
    return Acad::eInvalidIndex;
  }
  subSelection_ = CellRange{minRow, maxRow, minColumn, maxColumn};
  return Acad::eOk;
}

Acad::ErrorStatus Table::clearSubSelection() {
  if (!record_.writeOpen) return Acad::eNotOpenForWrite;
  subSelection_.reset();
  return Acad::eOk;
}

// ---- the headless side -----------------------------------------------------------------------

void Table::fieldEvaluated(host::AcDbObjectId id, const std::wstring& displayText) {
  // Every field of a big table reports here once per batch: find its cell through an index,
  // rebuilt only when cells have moved or changed fields since.
  auto hit = fieldCells_.find(id.asOldId());
  if (hit == fieldCells_.end() || hit->second >= cells_.size() || cells_[hit->second].field != id) {
    fieldCells_.clear();
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      if (!cells_[i].field.isNull()) fieldCells_.emplace(cells_[i].field.asOldId(), i);
    }
    hit = fieldCells_.find(id.asOldId());
    if (hit == fieldCells_.end()) return;
  }
  const Field* field = record_.database ? Field::of(record_.database->lookup(id)) : nullptr;
  {
    auto& c = cells_[hit->second];
    static const host::AcValue kNoValue;
    const host::AcValue& fieldValue = field ? field->value() : kNoValue;
    if (c.text != displayText || !(c.value == fieldValue)) {
      c.edited = true;
      record_.modified = true;
    }
    c.text = displayText;
    c.value = fieldValue;
  }
}

std::optional<host::AcValue> Table::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Rows")) return host::AcValue(static_cast<std::int32_t>(numRows()));
  if (core::equalsNoCase(name, L"Columns")) return host::AcValue(static_cast<std::int32_t>(numColumns()));
  if (core::equalsNoCase(name, L"Width")) return host::AcValue(width());
  if (core::equalsNoCase(name, L"Height")) return host::AcValue(height());
  if (core::equalsNoCase(name, L"InsertionPoint") || core::equalsNoCase(name, L"Position")) {
    return host::AcValue(position_.asArray());
  }
  if (core::equalsNoCase(name, L"Direction")) return host::AcValue(host::AcValue::Point3d{direction_.x, direction_.y, direction_.z});
  if (core::equalsNoCase(name, L"Rotation")) {
    double angle = std::atan2(direction_.y, direction_.x);
    if (angle < 0.0) angle += 2.0 * 3.14159265358979323846;
    return host::AcValue(angle);
  }
  if (core::equalsNoCase(name, L"FlowDirection")) return host::AcValue(static_cast<std::int32_t>(flow_));
  return EntityImpl::property(name);
}

void Table::setPosition(const AcGePoint3d& position) {
  position_ = position;
  record_.modified = true;
}

void Table::setDirection(const AcGeVector3d& direction) {
  if (!(direction.length() > 0.0)) throw std::invalid_argument("a table's direction cannot be a zero vector");
  direction_ = unit(direction);
  record_.modified = true;
}

void Table::setNormal(const AcGeVector3d& normal) {
  if (!(normal.length() > 0.0)) throw std::invalid_argument("a table's normal cannot be a zero vector");
  normal_ = unit(normal);
  record_.modified = true;
}

void Table::setFlowDirection(host::AcDb::FlowDirection flow) {
  flow_ = flow;
  record_.modified = true;
}

void Table::setTableStyle(host::AcDbObjectId style) {
  tableStyle_ = style;
  record_.modified = true;
}

void Table::setGrid(const std::vector<double>& rowHeights, const std::vector<double>& columnWidths) {
  rows_.clear();
  columns_.clear();
  for (std::size_t r = 0; r < rowHeights.size(); ++r) rows_.push_back({rowHeights[r], static_cast<int>(r)});
  for (std::size_t c = 0; c < columnWidths.size(); ++c) columns_.push_back({columnWidths[c], static_cast<int>(c)});
  cells_.assign(rowHeights.size() * columnWidths.size(), TableCell{});
  merges_.clear();
  subSelection_.reset();
  record_.modified = true;
}

void Table::setRowHeight(int row, double height) {
  rows_.at(static_cast<std::size_t>(row)).size = height;
  record_.modified = true;
}

void Table::setColumnWidth(int column, double width) {
  columns_.at(static_cast<std::size_t>(column)).size = width;
  record_.modified = true;
}

void Table::mergeCells(const CellRange& range) {
  if (range.minRow > range.maxRow || range.minColumn > range.maxColumn || !isCell(range.minRow, range.minColumn) ||
      !isCell(range.maxRow, range.maxColumn)) {
    throw std::out_of_range("merged range outside the table");
  }
  std::erase_if(merges_, [&](const CellRange& other) {
    return other.minRow <= range.maxRow && range.minRow <= other.maxRow && other.minColumn <= range.maxColumn &&
           range.minColumn <= other.maxColumn;
  });
  if (range.minRow != range.maxRow || range.minColumn != range.maxColumn) merges_.push_back(range);
  // Only the range's first cell shows anything; what the others held goes.
  for (int r = range.minRow; r <= range.maxRow; ++r) {
    for (int c = range.minColumn; c <= range.maxColumn; ++c) {
      if (r == range.minRow && c == range.minColumn) continue;
      TableCell& covered = cells_[at(r, c)];
      releaseField(covered);
      covered.value = {};
      covered.text.clear();
      covered.block = {};
      covered.edited = true;
    }
  }
  record_.modified = true;
}

}  // namespace corvane::headless
