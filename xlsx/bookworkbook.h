// A workbook of the application: an .xlsx file open in the session, or a new one not yet saved.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/excel.h"
#include "xlsx/book.h"

namespace corvane::xlsx {

class BookApplication;
class BookSheet;

class BookWorkbook : public host::ExcelWorkbook, public std::enable_shared_from_this<BookWorkbook> {
 public:
  BookWorkbook(std::weak_ptr<BookApplication> application, std::unique_ptr<Book> book, std::wstring newName,
               bool readOnly);

  std::wstring fullName() const override;
  std::wstring name() const override;
  std::wstring path() const override;
  host::ExcelResult<host::ExcelValue> builtinDocumentProperty(std::wstring_view name) const override;
  std::int32_t worksheetCount() const override { return static_cast<std::int32_t>(book_->sheetCount()); }
  host::ExcelResult<std::shared_ptr<host::ExcelWorksheet>> worksheet(std::int32_t index) override;
  host::ExcelResult<std::shared_ptr<host::ExcelWorksheet>> worksheet(std::wstring_view name) override;
  std::shared_ptr<host::ExcelWorksheet> activeSheet() override;
  host::ExcelStatus save() override;
  host::ExcelStatus saveAs(std::wstring_view path) override;
  bool dirty() const override { return book_->dirty(); }

  Book& book() noexcept { return *book_; }
  std::shared_ptr<BookApplication> application() const { return application_.lock(); }
  std::shared_ptr<BookSheet> sheet(std::size_t index);

 private:
  std::weak_ptr<BookApplication> application_;
  std::unique_ptr<Book> book_;
  std::wstring newName_;  // "Book1" until the workbook is saved
  bool readOnly_ = false;
  std::vector<std::shared_ptr<BookSheet>> sheets_;
};

}  // namespace corvane::xlsx
