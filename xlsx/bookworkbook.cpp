#include "xlsx/bookworkbook.h"

#include "core/oledate.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "xlsx/bookapplication.h"
#include "xlsx/booksheet.h"
#include "xlsx/failure.h"

namespace corvane::xlsx {

BookWorkbook::BookWorkbook(std::weak_ptr<BookApplication> application, std::unique_ptr<Book> book,
                           std::wstring newName, bool readOnly)
    : application_(std::move(application)), book_(std::move(book)), newName_(std::move(newName)),
      readOnly_(readOnly) {}

std::wstring BookWorkbook::fullName() const {
  if (book_->path().empty()) return newName_;
  return core::fromUtf8(std::filesystem::absolute(book_->path()).lexically_normal().string());
}

std::wstring BookWorkbook::name() const {
  return book_->path().empty() ? newName_ : core::fromUtf8(book_->path().filename().string());
}

std::wstring BookWorkbook::path() const {
  if (book_->path().empty()) return {};
  return core::fromUtf8(std::filesystem::absolute(book_->path()).lexically_normal().parent_path().string());
}

host::ExcelResult<host::ExcelValue> BookWorkbook::builtinDocumentProperty(std::wstring_view name) const {
  if (!core::equalsNoCase(name, L"Last Save Time")) return failure(L"The document property is not available.");
  const auto saved = book_->lastSaveTime();
  if (!saved) return failure(L"The workbook does not record when it was last saved.");
  // The property is stored in universal time and read in local time, as Excel shows it.
  const auto date = core::toOleDate(core::localParts(*saved));
  if (!date) return failure(L"The workbook's last save time is not a date.");
  return host::ExcelValue(host::ExcelDate{*date});
}

std::shared_ptr<BookSheet> BookWorkbook::sheet(std::size_t index) {
  if (sheets_.size() < book_->sheetCount()) sheets_.resize(book_->sheetCount());
  if (index >= sheets_.size()) return nullptr;
  if (!sheets_[index]) sheets_[index] = std::make_shared<BookSheet>(weak_from_this(), index);
  return sheets_[index];
}

host::ExcelResult<std::shared_ptr<host::ExcelWorksheet>> BookWorkbook::worksheet(std::int32_t index) {
  if (index < 1 || static_cast<std::size_t>(index) > book_->sheetCount()) {
    return host::ExcelError{host::kExcelNotFound, L"Invalid index."};
  }
  return std::shared_ptr<host::ExcelWorksheet>(sheet(static_cast<std::size_t>(index) - 1));
}

host::ExcelResult<std::shared_ptr<host::ExcelWorksheet>> BookWorkbook::worksheet(std::wstring_view name) {
  const auto index = book_->sheetIndex(core::toUtf8(name));
  if (!index) return host::ExcelError{host::kExcelNotFound, L"Invalid index."};
  return std::shared_ptr<host::ExcelWorksheet>(sheet(*index));
}

std::shared_ptr<host::ExcelWorksheet> BookWorkbook::activeSheet() {
  if (book_->sheetCount() == 0) return nullptr;
  return sheet(static_cast<std::size_t>(book_->activeSheet()));
}

host::ExcelStatus BookWorkbook::save() {
  if (book_->path().empty()) return failure(L"The workbook has never been saved; it needs a file name.");
  if (readOnly_) return failure(name() + L" is read-only; save it under another name.");
  std::string error;
  if (!book_->save(error)) return failure(error);
  return host::excelOk();
}

host::ExcelStatus BookWorkbook::saveAs(std::wstring_view path) {
  std::string error;
  if (!book_->saveAs(std::filesystem::path(core::toUtf8(path)), error)) return failure(error);
  readOnly_ = false;
  return host::excelOk();
}

}  // namespace corvane::xlsx
