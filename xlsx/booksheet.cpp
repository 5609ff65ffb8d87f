#include "xlsx/booksheet.h"

#include <algorithm>

#include "core/textutil.h"
#include "core/utf8.h"
#include "xlsx/bookapplication.h"
#include "xlsx/bookrange.h"
#include "xlsx/bookworkbook.h"
#include "xlsx/failure.h"

namespace corvane::xlsx {

namespace {

std::optional<std::uint32_t> wholeNumber(std::string_view text) {
  if (text.empty() || text.size() > 7) return std::nullopt;
  std::uint32_t n = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    n = n * 10 + static_cast<std::uint32_t>(c - '0');
  }
  return n;
}

std::optional<std::uint32_t> columnNumber(std::string_view letters) {
  if (letters.empty() || letters.size() > 3) return std::nullopt;
  std::uint32_t n = 0;
  for (const char c : letters) {
    if (c < 'A' || c > 'Z') return std::nullopt;
    n = n * 26 + static_cast<std::uint32_t>(c - 'A' + 1);
  }
  return n;
}

std::string withoutDollars(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c != '$') out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return out;
}

// "B2", "A1:C3", whole rows "3:5" and whole columns "B:D", with or without "$".
std::optional<CellRange> parseAddress(std::string_view text) {
  const std::string plain = withoutDollars(text);
  const std::size_t colon = plain.find(':');
  if (colon != std::string::npos) {
    const std::string_view a = std::string_view(plain).substr(0, colon), b = std::string_view(plain).substr(colon + 1);
    const auto rowA = wholeNumber(a), rowB = wholeNumber(b);
    if (rowA && rowB && *rowA >= 1 && *rowB >= 1 && *rowA <= kMaxRow && *rowB <= kMaxRow) {
      return CellRange{{std::min(*rowA, *rowB), 1}, {std::max(*rowA, *rowB), kMaxColumn}};
    }
    const auto colA = columnNumber(a), colB = columnNumber(b);
    if (colA && colB && *colA <= kMaxColumn && *colB <= kMaxColumn) {
      return CellRange{{1, std::min(*colA, *colB)}, {kMaxRow, std::max(*colA, *colB)}};
    }
  }
  return parseCellRange(plain);
}

bool sameName(std::string_view a, std::string_view b) {
  return core::equalsNoCase(core::fromUtf8(a), core::fromUtf8(b));
}

}  // namespace

std::wstring BookSheet::name() const {
  auto book = this->book();
  return book ? core::fromUtf8((*book)->sheetName(index_)) : std::wstring();
}

std::shared_ptr<host::ExcelWorkbook> BookSheet::workbook() const { return workbook_.lock(); }

std::shared_ptr<host::ExcelApplication> BookSheet::application() const {
  auto owner = workbook_.lock();
  return owner ? owner->application() : nullptr;
}

host::ExcelResult<Book*> BookSheet::book() const {
  auto owner = workbook_.lock();
  if (!owner) return failure(L"The workbook has been closed.");
  return &owner->book();
}

host::ExcelResult<Worksheet*> BookSheet::cells() const {
  auto book = this->book();
  if (!book) return book.error();
  std::string error;
  Worksheet* cells = (*book)->sheet(index_, error);
  if (!cells) return failure(error);
  return cells;
}

host::ExcelResult<Comments*> BookSheet::notes() const {
  auto book = this->book();
  if (!book) return book.error();
  std::string error;
  Comments* notes = (*book)->notes(index_, error);
  if (!notes) return failure(error);
  return notes;
}

std::optional<CellRange> BookSheet::resolve(std::wstring_view text) const {
  const std::string utf8 = core::toUtf8(core::trimmed(text));
  if (auto range = parseAddress(utf8)) return range;
  auto book = this->book();
  if (!book) return std::nullopt;
  const DefinedName* found = nullptr;
  for (const DefinedName& name : (*book)->names()) {
    if (!sameName(name.name, utf8)) continue;
    // A name of this sheet wins over a name of the workbook.
    if (name.localSheet && static_cast<std::size_t>(*name.localSheet) == index_) {
      found = &name;
      break;
    }
    if (!name.localSheet && !found) found = &name;
  }
  if (!found) return std::nullopt;
  const std::string_view formula = found->formula;
  const std::size_t bang = formula.rfind('!');
  if (bang == std::string_view::npos) return std::nullopt;
  std::string sheet(formula.substr(0, bang));
  if (sheet.size() >= 2 && sheet.front() == '\'' && sheet.back() == '\'') {
    sheet = core::toUtf8(core::replaceAll(core::fromUtf8(sheet.substr(1, sheet.size() - 2)), L"''", L"'"));
  }
  if (!sameName(sheet, (*book)->sheetName(index_))) return std::nullopt;
  return parseAddress(formula.substr(bang + 1));
}

host::ExcelResult<std::shared_ptr<host::ExcelRange>> BookSheet::range(std::wstring_view cell1,
                                                                      std::wstring_view cell2) {
  auto first = resolve(cell1);
  if (!first) return failure(L"Range \"" + std::wstring(cell1) + L"\" names no cells of the sheet " + name() + L".");
  if (!cell2.empty()) {
    const auto second = resolve(cell2);
    if (!second) return failure(L"Range \"" + std::wstring(cell2) + L"\" names no cells of the sheet " + name() + L".");
    first = CellRange{{std::min(first->first.row, second->first.row), std::min(first->first.column, second->first.column)},
                      {std::max(first->last.row, second->last.row), std::max(first->last.column, second->last.column)}};
  }
  return std::shared_ptr<host::ExcelRange>(std::make_shared<BookRange>(shared_from_this(), std::vector<CellRange>{*first}));
}

host::ExcelResult<std::vector<host::ExcelNote>> BookSheet::comments() const {
  auto notes = this->notes();
  if (!notes) return notes.error();
  std::vector<host::ExcelNote> list;
  for (const Note& note : (*notes)->notes()) {
    list.push_back({core::fromUtf8(cellRefText(note.ref, true)), core::fromUtf8(note.text)});
  }
  return list;
}

}  // namespace corvane::xlsx
