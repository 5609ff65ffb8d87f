// A worksheet of an open workbook.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/excel.h"
#include "xlsx/sheet/cellref.h"

namespace corvane::xlsx {

class Book;
class BookWorkbook;
class Comments;
class Worksheet;

class BookSheet : public host::ExcelWorksheet, public std::enable_shared_from_this<BookSheet> {
 public:
  BookSheet(std::weak_ptr<BookWorkbook> workbook, std::size_t index) : workbook_(std::move(workbook)), index_(index) {}

  std::wstring name() const override;
  std::shared_ptr<host::ExcelWorkbook> workbook() const override;
  std::shared_ptr<host::ExcelApplication> application() const override;
  host::ExcelResult<std::shared_ptr<host::ExcelRange>> range(std::wstring_view cell1, std::wstring_view cell2) override;
  host::ExcelResult<std::vector<host::ExcelNote>> comments() const override;

  std::size_t index() const noexcept { return index_; }
  std::shared_ptr<BookWorkbook> owner() const { return workbook_.lock(); }
  // The book, its cells and its notes; a failure names what could not be read.
  host::ExcelResult<Book*> book() const;
  host::ExcelResult<Worksheet*> cells() const;
  host::ExcelResult<Comments*> notes() const;
  // An address ("B2", "$B$2:C4", "3:5", "B:D") or a defined name that refers to this sheet.
  std::optional<CellRange> resolve(std::wstring_view text) const;

 private:
  std::weak_ptr<BookWorkbook> workbook_;
  std::size_t index_;
};

}  // namespace corvane::xlsx
