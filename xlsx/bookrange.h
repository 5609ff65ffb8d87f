// A range of cells of one worksheet, in one or more areas.
#pragma once

#include <memory>
#include <vector>

#include "host/excel.h"
#include "xlsx/sheet/cellref.h"

namespace corvane::xlsx {

class BookSheet;

class BookRange : public host::ExcelRange, public std::enable_shared_from_this<BookRange> {
 public:
  BookRange(std::shared_ptr<BookSheet> sheet, std::vector<CellRange> areas)
      : sheet_(std::move(sheet)), areas_(std::move(areas)) {}

  std::int32_t row() const override { return static_cast<std::int32_t>(areas_.front().first.row); }
  std::int32_t column() const override { return static_cast<std::int32_t>(areas_.front().first.column); }
  std::int32_t rowCount() const override;
  std::int32_t columnCount() const override;
  std::wstring address() const override;
  std::vector<std::shared_ptr<host::ExcelRange>> areas() const override;
  std::shared_ptr<host::ExcelWorksheet> worksheet() const override;

  host::ExcelResult<std::wstring> text() const override;
  host::ExcelResult<host::ExcelValue> value() const override;
  host::ExcelResult<std::wstring> formula() const override;
  host::ExcelStatus setValues(const std::vector<std::vector<host::ExcelValue>>& rows) override;

  host::ExcelResult<std::shared_ptr<host::ExcelRange>> resize(std::int32_t rows, std::int32_t columns) const override;
  host::ExcelResult<std::shared_ptr<host::ExcelRange>> offset(std::int32_t rows, std::int32_t columns) const override;
  host::ExcelResult<std::shared_ptr<host::ExcelRange>> item(std::int32_t row) const override;
  std::shared_ptr<host::ExcelRange> entireRow() const override;
  host::ExcelStatus remove() override;
  host::ExcelStatus select() override;
  host::ExcelStatus autoFitColumns() override;

  host::ExcelResult<std::wstring> name() const override;
  host::ExcelResult<std::optional<std::wstring>> comment() const override;
  host::ExcelStatus addComment(std::wstring_view text) override;
  host::ExcelStatus deleteComment() override;

  const std::vector<CellRange>& cellAreas() const noexcept { return areas_; }

 private:
  CellRef first() const noexcept { return areas_.front().first; }

  std::shared_ptr<BookSheet> sheet_;
  std::vector<CellRange> areas_;  // never empty
};

}  // namespace corvane::xlsx
