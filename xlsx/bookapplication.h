// Excel's application object over .xlsx files: the workbooks open in it, the one in use, and
// the selection that commands read and move.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/excel.h"

namespace corvane::xlsx {

class BookRange;
class BookWorkbook;

class BookApplication : public host::ExcelApplication, public std::enable_shared_from_this<BookApplication> {
 public:
  bool visible() const override { return visible_; }
  host::ExcelStatus setVisible(bool visible) override;
  std::wstring version() const override { return L"16.0"; }
  std::wstring caption() const override { return caption_; }
  host::ExcelStatus setCaption(std::wstring_view caption) override;

  std::int32_t workbookCount() const override { return static_cast<std::int32_t>(books_.size()); }
  host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> workbook(std::int32_t index) override;
  host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> workbook(std::wstring_view name) override;
  host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> addWorkbook() override;
  host::ExcelResult<std::shared_ptr<host::ExcelWorkbook>> openWorkbook(std::wstring_view path, std::int32_t updateLinks,
                                                                       std::int32_t readOnly) override;

  std::shared_ptr<host::ExcelWorkbook> activeWorkbook() override;
  std::shared_ptr<host::ExcelWorksheet> activeSheet() override;
  std::shared_ptr<host::ExcelRange> activeCell() override;
  std::shared_ptr<host::ExcelRange> selection() override;

  // The workbooks, for the program that saves what its commands changed.
  const std::vector<std::shared_ptr<BookWorkbook>>& books() const noexcept { return books_; }
  // Range.Select: the range and its first cell become the selection and the active cell.
  void select(std::shared_ptr<BookRange> range);

 private:
  std::shared_ptr<BookWorkbook> add(std::shared_ptr<BookWorkbook> book);

  std::vector<std::shared_ptr<BookWorkbook>> books_;
  std::shared_ptr<BookWorkbook> active_;
  std::shared_ptr<BookRange> selection_;
  std::wstring caption_ = L"Excel";
  int newBooks_ = 0;
  bool visible_ = false;
};

}  // namespace corvane::xlsx
