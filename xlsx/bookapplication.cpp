#include "xlsx/bookapplication.h"

#include <ctime>

#include "core/textutil.h"
#include "core/utf8.h"
#include "xlsx/bookrange.h"
#include "xlsx/booksheet.h"
#include "xlsx/bookworkbook.h"
#include "xlsx/failure.h"

namespace corvane::xlsx {

host::ExcelStatus BookApplication::setVisible(bool visible) {
  visible_ = visible;
  return host::excelOk();
}

host::ExcelStatus BookApplication::setCaption(std::wstring_view caption) {
  caption_ = caption;
  return host::excelOk();
}

host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> BookApplication::workbook(std::int32_t index) {
  if (index < 1 || static_cast<std::size_t>(index) > books_.size()) {
    return host::ExcelError{host::kExcelNotFound, L"Invalid index."};
  }
  return std::shared_ptr<host::ExcelWorkbook>(books_[static_cast<std::size_t>(index) - 1]);
}

host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> BookApplication::workbook(std::wstring_view name) {
  for (const auto& book : books_) {
    if (core::equalsNoCase(book->name(), name)) return std::shared_ptr<host::ExcelWorkbook>(book);
  }
  return host::ExcelError{host::kExcelNotFound, L"Invalid index."};
}

host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> BookApplication::addWorkbook() {
  auto book = Book::create(static_cast<std::int64_t>(std::time(nullptr)));
  return std::shared_ptr<host::ExcelWorkbook>(add(std::make_shared<BookWorkbook>(
      weak_from_this(), std::move(book), L"Book" + std::to_wstring(++newBooks_), false)));
}

host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> BookApplication::openWorkbook(std::wstring_view path,
                                                                                      std::int32_t /*updateLinks*/,
                                                                                      std::int32_t readOnly) {
  std::string error;
  auto book = Book::open(std::filesystem::path(core::toUtf8(path)), error);
  if (!book) return failure(error);
  return std::shared_ptr<host::ExcelWorkbook>(
      add(std::make_shared<BookWorkbook>(weak_from_this(), std::move(book), std::wstring(), readOnly != 0)));
}

std::shared_ptr<BookWorkbook> BookApplication::add(std::shared_ptr<BookWorkbook> book) {
  books_.push_back(book);
  active_ = book;
  selection_.reset();
  return book;
}

std::shared_ptr<host::ExcelWorkbook> BookApplication::activeWorkbook() { return active_; }

std::shared_ptr<host::ExcelWorksheet> BookApplication::activeSheet() {
  return active_ ? active_->activeSheet() : nullptr;
}

std::shared_ptr<host::ExcelRange> BookApplication::activeCell() {
  if (selection_) {
    const CellRef first = selection_->cellAreas().front().first;
    return std::make_shared<BookRange>(std::static_pointer_cast<BookSheet>(selection_->worksheet()),
                                       std::vector<CellRange>{{first, first}});
  }
  auto sheet = std::static_pointer_cast<BookSheet>(activeSheet());
  if (!sheet) return nullptr;
  return std::make_shared<BookRange>(sheet, std::vector<CellRange>{{{1, 1}, {1, 1}}});
}

std::shared_ptr<host::ExcelRange> BookApplication::selection() {
  if (selection_) return selection_;
  return activeCell();
}

void BookApplication::select(std::shared_ptr<BookRange> range) {
  if (auto sheet = std::static_pointer_cast<BookSheet>(range->worksheet())) {
    if (auto owner = sheet->owner()) active_ = owner;
  }
  selection_ = std::move(range);
}

}  // namespace corvane::xlsx
