#include "xlsx/bookrange.h"

#include <algorithm>
#include <cmath>

#include "core/crt.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "xlsx/bookapplication.h"
#include "xlsx/booksheet.h"
#include "xlsx/bookworkbook.h"
#include "xlsx/failure.h"

namespace corvane::xlsx {

namespace {

constexpr double kDays1904 = 1462.0;  // from 1900-01-01 to 1904-01-01 in the 1900 serials
constexpr std::string_view kNoteAuthor = "Corvane";

// A serial of the workbook's date system as an OLE date, and back. The 1900 serials count a
// 29 February 1900 that never was, so they meet the OLE dates from 1 March 1900 on.
double oleDateOf(double serial, bool date1904) noexcept {
  if (date1904) return serial + kDays1904;
  return serial < 61 ? serial + 1 : serial;
}
double serialOf(double ole, bool date1904) noexcept {
  if (date1904) return ole - kDays1904;
  return ole < 61 ? ole - 1 : ole;
}

// What Excel makes of a text put into a cell: a number or TRUE/FALSE when it reads as one
// whole, else the text.
CellValue typedValue(std::wstring_view text) {
  const std::wstring_view trimmed = core::trimmed(text);
  if (core::equalsNoCase(trimmed, L"TRUE")) return CellValue(true);
  if (core::equalsNoCase(trimmed, L"FALSE")) return CellValue(false);
  const bool numeric = !trimmed.empty() && std::all_of(trimmed.begin(), trimmed.end(), [](wchar_t c) {
    return (c >= L'0' && c <= L'9') || c == L'.' || c == L'-' || c == L'+' || c == L'e' || c == L'E';
  });
  if (numeric) {
    std::size_t used = 0;
    const double number = core::wcstod(trimmed, &used);
    if (used == trimmed.size() && std::isfinite(number)) return CellValue(number);
  }
  return CellValue(core::toUtf8(text));
}

bool wholeRows(const CellRange& area) noexcept { return area.first.column == 1 && area.last.column == kMaxColumn; }

std::wstring areaAddress(const CellRange& area) {
  std::wstring text = core::fromUtf8(cellRefText(area.first, true));
  if (!(area.first == area.last)) text += L":" + core::fromUtf8(cellRefText(area.last, true));
  return text;
}

}  // namespace

std::int32_t BookRange::rowCount() const {
  return static_cast<std::int32_t>(areas_.front().last.row - areas_.front().first.row + 1);
}

std::int32_t BookRange::columnCount() const {
  return static_cast<std::int32_t>(areas_.front().last.column - areas_.front().first.column + 1);
}

std::wstring BookRange::address() const {
  std::wstring text;
  for (const CellRange& area : areas_) {
    if (!text.empty()) text += L",";
    text += areaAddress(area);
  }
  return text;
}

std::vector<std::shared_ptr<host::ExcelRange>> BookRange::areas() const {
  std::vector<std::shared_ptr<host::ExcelRange>> list;
  for (const CellRange& area : areas_) list.push_back(std::make_shared<BookRange>(sheet_, std::vector<CellRange>{area}));
  return list;
}

std::shared_ptr<host::ExcelWorksheet> BookRange::worksheet() const { return sheet_; }

host::ExcelResult<std::wstring> BookRange::text() const {
  auto cells = sheet_->cells();
  if (!cells) return cells.error();
  auto book = sheet_->book();
  const auto cell = (*cells)->find(first());
  if (!cell) return std::wstring();
  return core::fromUtf8((*book)->displayText(**cells, *cell));
}

host::ExcelResult<host::ExcelValue> BookRange::value() const {
  auto cells = sheet_->cells();
  if (!cells) return cells.error();
  auto book = sheet_->book();
  const auto cell = (*cells)->find(first());
  if (!cell) return host::ExcelValue();
  const CellValue value = (*cells)->value(cell->position, (*book)->strings());
  if (const auto* number = std::get_if<double>(&value.value)) {
    if (cell->kind == CellKind::kNumber && (*book)->isDateStyle(cell->style)) {
      return host::ExcelValue(host::ExcelDate{oleDateOf(*number, (*book)->date1904())});
    }
    return host::ExcelValue(*number);
  }
  if (const auto* text = std::get_if<std::string>(&value.value)) return host::ExcelValue(core::fromUtf8(*text));
  if (const auto* flag = std::get_if<bool>(&value.value)) return host::ExcelValue(*flag);
  if (const auto* error = std::get_if<ErrorText>(&value.value)) {
    return host::ExcelValue(host::ExcelCellError{core::fromUtf8(error->text)});
  }
  return host::ExcelValue();
}

host::ExcelResult<std::wstring> BookRange::formula() const {
  auto cells = sheet_->cells();
  if (!cells) return cells.error();
  const auto cell = (*cells)->find(first());
  if (!cell || !cell->hasFormula) return std::wstring();
  return L"=" + core::fromUtf8((*cells)->formula(cell->position));
}

host::ExcelStatus BookRange::setValues(const std::vector<std::vector<host::ExcelValue>>& rows) {
  auto cells = sheet_->cells();
  if (!cells) return cells.error();
  auto book = sheet_->book();
  const bool date1904 = (*book)->date1904();
  const CellRef start = first();
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < rows[r].size(); ++c) {
      const CellRef at{start.row + static_cast<std::uint32_t>(r), start.column + static_cast<std::uint32_t>(c)};
      CellValue cell;
      const host::ExcelValue& value = rows[r][c];
      if (const auto* number = std::get_if<double>(&value)) cell = CellValue(*number);
      else if (const auto* text = std::get_if<std::wstring>(&value)) cell = typedValue(*text);
      else if (const auto* flag = std::get_if<bool>(&value)) cell = CellValue(*flag);
      else if (const auto* date = std::get_if<host::ExcelDate>(&value)) cell = CellValue(serialOf(date->serial, date1904));
      else if (const auto* error = std::get_if<host::ExcelCellError>(&value)) {
        cell = CellValue(ErrorText{core::toUtf8(error->text)});
      }
      if (!(*cells)->setValue(at, cell)) {
        return failure(L"The cell " + core::fromUtf8(cellRefText(at)) + L" lies outside the sheet.");
      }
    }
  }
  (*book)->touch();
  return host::excelOk();
}

host::ExcelResult<std::shared_ptr<host::ExcelRange>> BookRange::resize(std::int32_t rows, std::int32_t columns) const {
  const CellRef start = first();
  if (rows < 1 || columns < 1 || start.row + static_cast<std::uint32_t>(rows) - 1 > kMaxRow ||
      start.column + static_cast<std::uint32_t>(columns) - 1 > kMaxColumn) {
    return host::ExcelError{host::kExcelInvalidArgument, L"The new size does not fit the sheet."};
  }
  const CellRef end{start.row + static_cast<std::uint32_t>(rows) - 1, start.column + static_cast<std::uint32_t>(columns) - 1};
  return std::shared_ptr<host::ExcelRange>(std::make_shared<BookRange>(sheet_, std::vector<CellRange>{{start, end}}));
}

host::ExcelResult<std::shared_ptr<host::ExcelRange>> BookRange::offset(std::int32_t rows, std::int32_t columns) const {
  std::vector<CellRange> moved;
  for (const CellRange& area : areas_) {
    const std::int64_t r0 = area.first.row + std::int64_t{rows}, r1 = area.last.row + std::int64_t{rows};
    const std::int64_t c0 = area.first.column + std::int64_t{columns}, c1 = area.last.column + std::int64_t{columns};
    if (r0 < 1 || c0 < 1 || r1 > kMaxRow || c1 > kMaxColumn) {
      return host::ExcelError{host::kExcelInvalidArgument, L"The offset leaves the sheet."};
    }
    moved.push_back({{static_cast<std::uint32_t>(r0), static_cast<std::uint32_t>(c0)},
                     {static_cast<std::uint32_t>(r1), static_cast<std::uint32_t>(c1)}});
  }
  return std::shared_ptr<host::ExcelRange>(std::make_shared<BookRange>(sheet_, std::move(moved)));
}

host::ExcelResult<std::shared_ptr<host::ExcelRange>> BookRange::item(std::int32_t row) const {
  const CellRange& area = areas_.front();
  const std::int64_t at = area.first.row + std::int64_t{row} - 1;
  if (row < 1 || at > kMaxRow) return host::ExcelError{host::kExcelInvalidArgument, L"The row lies outside the sheet."};
  const auto r = static_cast<std::uint32_t>(at);
  return std::shared_ptr<host::ExcelRange>(
      std::make_shared<BookRange>(sheet_, std::vector<CellRange>{{{r, area.first.column}, {r, area.last.column}}}));
}

std::shared_ptr<host::ExcelRange> BookRange::entireRow() const {
  std::vector<CellRange> rows;
  for (const CellRange& area : areas_) rows.push_back({{area.first.row, 1}, {area.last.row, kMaxColumn}});
  return std::make_shared<BookRange>(sheet_, std::move(rows));
}

host::ExcelStatus BookRange::remove() {
  if (!std::all_of(areas_.begin(), areas_.end(), wholeRows)) {
    return failure(L"Only whole rows can be deleted from a workbook file; take the range's entire rows.");
  }
  auto cells = sheet_->cells();
  if (!cells) return cells.error();
  auto notes = sheet_->notes();
  if (!notes) return notes.error();
  auto book = sheet_->book();
  // Lowest rows first, so that the rows still to go keep their numbers.
  std::vector<std::uint32_t> rows;
  for (const CellRange& area : areas_) {
    for (std::uint32_t r = area.first.row; r <= area.last.row; ++r) rows.push_back(r);
  }
  std::sort(rows.begin(), rows.end(), std::greater<>());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  const bool hadNotes = !(*notes)->notes().empty();
  for (const std::uint32_t r : rows) {
    (*cells)->deleteRow(r);
    if (hadNotes) (*notes)->deleteRow(r);
  }
  if (hadNotes) (*book)->notesChanged(sheet_->index());
  (*book)->touch();
  return host::excelOk();
}

host::ExcelStatus BookRange::select() {
  auto owner = sheet_->owner();
  auto application = owner ? owner->application() : nullptr;
  if (!application) return failure(L"The workbook has been closed.");
  application->select(std::static_pointer_cast<BookRange>(shared_from_this()));
  return host::excelOk();
}

host::ExcelStatus BookRange::autoFitColumns() {
  // Widths need the fonts' measures, which a workbook file does not carry: the columns keep
  // their widths and Excel fits them when the user asks.
  return host::excelOk();
}

host::ExcelResult<std::wstring> BookRange::name() const {
  auto book = sheet_->book();
  if (!book) return book.error();
  const std::string sheetName = (*book)->sheetName(sheet_->index());
  for (const DefinedName& defined : (*book)->names()) {
    if (defined.name.rfind("_xlnm.", 0) == 0) continue;  // Excel's own names, print areas and filters
    if (defined.localSheet && static_cast<std::size_t>(*defined.localSheet) != sheet_->index()) continue;
    const auto range = sheet_->resolve(core::fromUtf8(defined.name));
    if (!range || !(*range == areas_.front()) || areas_.size() != 1) continue;
    const std::wstring name = core::fromUtf8(defined.name);
    return defined.localSheet ? core::fromUtf8(sheetName) + L"!" + name : name;
  }
  return failure(L"No name refers to " + address() + L".");
}

host::ExcelResult<std::optional<std::wstring>> BookRange::comment() const {
  auto notes = sheet_->notes();
  if (!notes) return notes.error();
  const Note* note = (*notes)->find(first());
  if (!note) return std::optional<std::wstring>();
  return std::optional<std::wstring>(core::fromUtf8(note->text));
}

host::ExcelStatus BookRange::addComment(std::wstring_view text) {
  auto notes = sheet_->notes();
  if (!notes) return notes.error();
  if ((*notes)->find(first())) return failure(L"The cell " + areaAddress({first(), first()}) + L" already has a note.");
  (*notes)->add(first(), core::toUtf8(text), std::string(kNoteAuthor));
  (*sheet_->book())->notesChanged(sheet_->index());
  return host::excelOk();
}

host::ExcelStatus BookRange::deleteComment() {
  auto notes = sheet_->notes();
  if (!notes) return notes.error();
  if (!(*notes)->remove(first())) return failure(L"The cell " + areaAddress({first(), first()}) + L" has no note.");
  (*sheet_->book())->notesChanged(sheet_->index());
  return host::excelOk();
}

}  // namespace corvane::xlsx
