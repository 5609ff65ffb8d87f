// What the plug-in needs of Excel: the object-model operations it calls (application,
// workbooks, workbook, worksheet, range, note), reached by late-bound automation on Windows
// and over .xlsx files elsewhere. Every object is a counted reference, as a dispatch pointer is;
// every call gives its result or the automation failure (code and text), never an exception.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace corvane::host {

// An automation failure: the code Excel or COM returned and its text.
struct ExcelError {
  std::int32_t code = 0;
  std::wstring text;
};

// Codes the plug-in tells apart, with their COM numbers.
enum ExcelErrorCode : std::int32_t {
  kExcelUnavailable = static_cast<std::int32_t>(0x800401E3),  // MK_E_UNAVAILABLE: no running object
  kExcelInvalidArgument = static_cast<std::int32_t>(0x80070057),  // E_INVALIDARG
  kExcelNotFound = static_cast<std::int32_t>(0x8002000B),  // DISP_E_BADINDEX: no such item
  kExcelFailed = static_cast<std::int32_t>(0x800A03EC),  // what the object model raises for a refused call
};

// A result or the failure that stopped it.
template <typename T>
class ExcelResult {
 public:
  ExcelResult(T value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  ExcelResult(ExcelError error) : error_(std::move(error)) {}  // NOLINT(google-explicit-constructor)

  bool ok() const noexcept { return !error_; }
  explicit operator bool() const noexcept { return ok(); }
  const T& value() const& { return *value_; }
  T&& value() && { return std::move(*value_); }
  const T& operator*() const& { return *value_; }
  const T* operator->() const { return &*value_; }
  const ExcelError& error() const { return *error_; }

 private:
  std::optional<T> value_;
  std::optional<ExcelError> error_;
};

// A call that gives nothing back.
using ExcelStatus = ExcelResult<std::monostate>;
inline ExcelStatus excelOk() { return ExcelStatus(std::monostate{}); }

// A cell's or a property's value as automation hands it over (a VARIANT's useful kinds).
struct ExcelDate {
  double serial = 0.0;  // an OLE date: days since 1899-12-30, the time as the fraction
  bool operator==(const ExcelDate&) const = default;
};
struct ExcelCellError {
  std::wstring text;  // "#DIV/0!", "#N/A", ...
  bool operator==(const ExcelCellError&) const = default;
};
using ExcelValue = std::variant<std::monostate, double, std::wstring, bool, ExcelDate, ExcelCellError>;

class ExcelApplication;
class ExcelWorkbook;
class ExcelWorksheet;

// Range: one or more areas of cells of one worksheet.
class ExcelRange {
 public:
  virtual ~ExcelRange() = default;
  // Range.Row / Range.Column of the first cell, and the size of the first area.
  virtual std::int32_t row() const = 0;
  virtual std::int32_t column() const = 0;
  virtual std::int32_t rowCount() const = 0;
  virtual std::int32_t columnCount() const = 0;
  // Range.Address, absolute and A1 style ("$B$2" or "$B$2:$C$4"; areas joined by ",").
  virtual std::wstring address() const = 0;
  // Range.Areas: each area as a range of its own.
  virtual std::vector<std::shared_ptr<ExcelRange>> areas() const = 0;
  virtual std::shared_ptr<ExcelWorksheet> worksheet() const = 0;

  // Range.Text: the first cell as Excel displays it through its number format.
  virtual ExcelResult<std::wstring> text() const = 0;
  // Range.Value of the first cell, and Range.Formula ("" when the cell holds none).
  virtual ExcelResult<ExcelValue> value() const = 0;
  virtual ExcelResult<std::wstring> formula() const = 0;
  // Range.Value put of a two-dimensional array: rows of values, from the range's first cell.
  virtual ExcelStatus setValues(const std::vector<std::vector<ExcelValue>>& rows) = 0;

  // Range.Resize, Range.Offset, Range.Item(row) (1-based, the row of the range as a range)
  // and Range.EntireRow.
  virtual ExcelResult<std::shared_ptr<ExcelRange>> resize(std::int32_t rows, std::int32_t columns) const = 0;
  virtual ExcelResult<std::shared_ptr<ExcelRange>> offset(std::int32_t rows, std::int32_t columns) const = 0;
  virtual ExcelResult<std::shared_ptr<ExcelRange>> item(std::int32_t row) const = 0;
  virtual std::shared_ptr<ExcelRange> entireRow() const = 0;
  // Range.Delete with the shift omitted: whole rows move the rows below up.
  virtual ExcelStatus remove() = 0;
  // Range.Select: the range becomes the selection and its first cell the active cell.
  virtual ExcelStatus select() = 0;
  // Range.Columns.AutoFit.
  virtual ExcelStatus autoFitColumns() = 0;

  // Range.Name.Name: the defined name that refers to exactly this range; an error when none does.
  virtual ExcelResult<std::wstring> name() const = 0;
  // Range.Comment: the note of the first cell (nullopt when it has none), Range.AddComment
  // and Comment.Delete.
  virtual ExcelResult<std::optional<std::wstring>> comment() const = 0;
  virtual ExcelStatus addComment(std::wstring_view text) = 0;
  virtual ExcelStatus deleteComment() = 0;
};

// A note of a worksheet as Worksheet.Comments lists it: Comment.Parent.Address and Comment.Text.
struct ExcelNote {
  std::wstring address;  // absolute, "$C$4"
  std::wstring text;
};

class ExcelWorksheet {
 public:
  virtual ~ExcelWorksheet() = default;
  virtual std::wstring name() const = 0;
  virtual std::shared_ptr<ExcelWorkbook> workbook() const = 0;
  // Worksheet.Application.
  virtual std::shared_ptr<ExcelApplication> application() const = 0;
  // Worksheet.Range(Cell1[, Cell2]): an address ("B2", "$B$2", "A1:C3") or a defined name.
  virtual ExcelResult<std::shared_ptr<ExcelRange>> range(std::wstring_view cell1, std::wstring_view cell2 = {}) = 0;
  // Worksheet.Comments, in the sheet's order.
  virtual ExcelResult<std::vector<ExcelNote>> comments() const = 0;
};

class ExcelWorkbook {
 public:
  virtual ~ExcelWorkbook() = default;
  // Workbook.FullName, Workbook.Name and Workbook.Path ("" until the workbook is saved).
  virtual std::wstring fullName() const = 0;
  virtual std::wstring name() const = 0;
  virtual std::wstring path() const = 0;
  // Workbook.BuiltinDocumentProperties(name).Value; "Last Save Time" is the one the plug-in reads.
  virtual ExcelResult<ExcelValue> builtinDocumentProperty(std::wstring_view name) const = 0;
  // Workbook.Worksheets: the count, and an item by 1-based index or by name.
  virtual std::int32_t worksheetCount() const = 0;
  virtual ExcelResult<std::shared_ptr<ExcelWorksheet>> worksheet(std::int32_t index) = 0;
  virtual ExcelResult<std::shared_ptr<ExcelWorksheet>> worksheet(std::wstring_view name) = 0;
  virtual std::shared_ptr<ExcelWorksheet> activeSheet() = 0;
  // Workbook.Save, and Workbook.SaveAs for a workbook that was never saved.
  virtual ExcelStatus save() = 0;
  virtual ExcelStatus saveAs(std::wstring_view path) = 0;
  // Whether it has changes not yet saved (the inverse of Workbook.Saved).
  virtual bool dirty() const = 0;
};

class ExcelApplication {
 public:
  virtual ~ExcelApplication() = default;
  virtual bool visible() const = 0;
  virtual ExcelStatus setVisible(bool visible) = 0;
  virtual std::wstring version() const = 0;
  virtual std::wstring caption() const = 0;
  virtual ExcelStatus setCaption(std::wstring_view caption) = 0;

  // Application.Workbooks: Count, Item(index, 1-based), Item(name), Add and
  // Open(Filename, UpdateLinks, ReadOnly) with every later argument omitted.
  virtual std::int32_t workbookCount() const = 0;
  virtual ExcelResult<std::shared_ptr<ExcelWorkbook>> workbook(std::int32_t index) = 0;
  virtual ExcelResult<std::shared_ptr<ExcelWorkbook>> workbook(std::wstring_view name) = 0;
  virtual ExcelResult<std::shared_ptr<ExcelWorkbook>> addWorkbook() = 0;
  virtual ExcelResult<std::shared_ptr<ExcelWorkbook>> openWorkbook(std::wstring_view path, std::int32_t updateLinks,
                                                                   std::int32_t readOnly) = 0;

  // Application.ActiveWorkbook, ActiveSheet, ActiveCell and Selection: null when there is none.
  virtual std::shared_ptr<ExcelWorkbook> activeWorkbook() = 0;
  virtual std::shared_ptr<ExcelWorksheet> activeSheet() = 0;
  virtual std::shared_ptr<ExcelRange> activeCell() = 0;
  virtual std::shared_ptr<ExcelRange> selection() = 0;
};

// How the plug-in reaches an Excel at all, and what the system tells about automation.
class ExcelAutomation {
 public:
  virtual ~ExcelAutomation() = default;
  // GetActiveObject("Excel.Application"): the Excel the user runs; kExcelUnavailable when none.
  virtual ExcelResult<std::shared_ptr<ExcelApplication>> activeObject() = 0;
  // A new automation server of "Excel.Application", the program's own.
  virtual ExcelResult<std::shared_ptr<ExcelApplication>> createObject() = 0;
  // FindWindowW: a top-level window by class and title; 0 when none.
  virtual std::intptr_t findWindow(std::wstring_view className, std::wstring_view title) = 0;
  // FormatMessageW for a code; empty when the system has no text for it.
  virtual std::wstring errorText(std::int32_t code) = 0;
};

}  // namespace corvane::host
