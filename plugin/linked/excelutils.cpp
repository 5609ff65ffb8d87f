#include "plugin/linked/excelutils.h"

#include "core/crt.h"
#include "core/oledate.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/hostservices.h"
#include "host/hostsession.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"

namespace corvane {

namespace {

constexpr const wchar_t* kSourceName = L"excelutils";
constexpr int kReportLine = 484;

}  // namespace

ExcelUtils::ExcelUtils(host::HostSession& session, host::AcDbHostApplicationServices& services)
    : session_(&session), excel_(nullptr), ui_(nullptr), services_(services) {}

ExcelUtils::ExcelUtils(host::ExcelAutomation* excel, host::HostUi* ui, host::AcDbHostApplicationServices& services)
    : excel_(excel), ui_(ui), services_(services) {}

host::ExcelAutomation* ExcelUtils::excel() const { return session_ ? session_->excel() : excel_; }

host::HostUi* ExcelUtils::ui() const { return session_ ? &session_->ui() : ui_; }

void ExcelUtils::ResetExcel() {
  worksheet_.reset();
  workbook_.reset();
  application_.reset();
  excelVersion_ = 0;
  foundThroughWindow_ = false;
}

bool ExcelUtils::AttachRunningExcel(bool makeVisible, std::optional<std::wstring_view> workbookPath, int updateLinks,
                                    int readOnly) {
  ResetExcel();
  host::ExcelAutomation* excel = this->excel();
  if (!excel) return false;
  auto running = excel->activeObject();
  if (!running || !*running) return false;
  application_ = std::move(running).value();
  if (makeVisible && !application_->visible()) {
    if (auto shown = application_->setVisible(true); !shown) return fail(shown.error());
  }
  excelVersion_ = core::leadingInteger(application_->version());
  if (workbookPath) return OpenWorkbook(*workbookPath, updateLinks, readOnly);
  if (application_->workbookCount() > 0) {
    workbook_ = application_->activeWorkbook();
    worksheet_ = application_->activeSheet();
  }
  return true;
}

bool ExcelUtils::EnsureWorkbook() {
  if (!application_) {
    message(L"Failed to get an instance of Excel!", host::MB_OK | host::MB_ICONERROR);
    return false;
  }
  if (application_->workbookCount() < 1) {
    if (auto added = application_->addWorkbook(); !added) return fail(added.error());
  }
  if (!workbook_) workbook_ = application_->activeWorkbook();
  worksheet_ = application_->activeSheet();
  return true;
}

bool ExcelUtils::OpenWorkbook(std::wstring_view path, int updateLinks, int readOnly) {
  if (path.empty() || !application_) return false;
  const std::wstring_view nameWithExtension = core::fileNameOf(path);
  const std::int32_t count = application_->workbookCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    auto item = application_->workbook(i);
    if (!item) return fail(item.error());
    const std::shared_ptr<host::ExcelWorkbook>& open = *item;
    if (core::equalsNoCase(open->fullName(), path)) {
      workbook_ = open;
      return true;
    }
    if (core::equalsNoCase(open->name(), nameWithExtension)) {
      message(core::format(L"A document with the name '%s' is already open. You cannot open two documents with the "
                           L"same name, even if the documents are in different folders.\nTo open the second "
                           L"document, either close the document that's currently open, or rename one of the "
                           L"documents.",
                           nameWithExtension),
              host::MB_OK | host::MB_ICONINFORMATION);
      return false;
    }
  }
  auto opened = application_->openWorkbook(path, updateLinks, readOnly);
  if (!opened) return fail(opened.error());
  workbook_ = std::move(opened).value();
  return true;
}

std::intptr_t ExcelUtils::FindExcelWindow() {
  host::ExcelAutomation* excel = this->excel();
  if (!application_ || !excel) return 0;
  std::intptr_t window = 0;
  if (application_->setCaption(kWindowMarker)) window = excel->findWindow(L"XLMAIN", application_->caption());
  application_->setCaption(L"");  // taken back whatever happened
  return window;
}

std::wstring ExcelUtils::ColumnLetters(int column) {
  if (column < 1) return L"A";
  if (column <= 26) return std::wstring(1, static_cast<wchar_t>(L'A' + column - 1));
  // Two letters only: the columns the program's commands reach.
  return {static_cast<wchar_t>(64 + (column - 1) / 26), static_cast<wchar_t>(L'A' + (column - 1) % 26)};
}

std::wstring ExcelUtils::AbsoluteCellAddress(int row, int column) {
  if (row < 1 || column < 1) {
    message(L"The row index and column index should be a positive number.", host::MB_OK | host::MB_ICONINFORMATION);
    return {};
  }
  return L"$" + ColumnLetters(column) + L"$" + std::to_wstring(row);
}

ExcelUtils::SaveTime ExcelUtils::WorkbookLastSaveTime(host::ExcelWorkbook& workbook) {
  SaveTime result;
  const core::DateTimeParts now = core::localNow();
  if (const auto date = core::toOleDate(now)) {
    result.date = *date;
    result.valid = core::fromOleDate(*date) == now;
  }
  if (workbook.path().empty()) return result;
  auto property = workbook.builtinDocumentProperty(L"Last Save Time");
  result.valid = false;
  if (!property) return result;
  if (const auto* date = std::get_if<host::ExcelDate>(&*property)) {
    result = {date->serial, true};
  } else if (const auto* number = std::get_if<double>(&*property)) {
    result = {*number, true};  // a number converts to a date as it is
  } else if (const auto* text = std::get_if<std::wstring>(&*property)) {
    std::size_t used = 0;
    const double serial = core::wcstod(*text, &used);
    if (used > 0 && used == text->size()) result = {serial, true};
  }
  return result;
}

void ExcelUtils::DeleteRows(host::ExcelWorksheet& worksheet, const std::vector<long>& rows) {
  for (const long row : rows) {
    const std::wstring number = std::to_wstring(row);
    auto range = worksheet.range(number + L":" + number);
    if (!range) {
      ReportOleException(range.error());
      return;
    }
    if (auto removed = (*range)->remove(); !removed) {
      ReportOleException(removed.error());
      return;
    }
    services_.print(core::format(L"\nDelete the row %ld successfully.", row));
  }
}

void ExcelUtils::FillTest(std::wstring_view cell, int rows, int columns) {
  if (!worksheet_) {
    message(L"Please specific a worksheet.", host::MB_OK | host::MB_ICONINFORMATION);
    return;
  }
  auto start = worksheet_->range(cell, cell);
  if (!start) return (void)fail(start.error());
  auto block = (*start)->resize(rows, columns);
  if (!block) return (void)fail(block.error());
  std::vector<std::vector<host::ExcelValue>> values(static_cast<std::size_t>(std::max(rows, 0)));
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) values[r].emplace_back(core::format(L"r%dc%d", r, c));
  }
  if (auto put = (*block)->setValues(values); !put) fail(put.error());
}

void ExcelUtils::ReportOleException(const host::ExcelError& error) {
  if (!error.text.empty()) {
    message(error.text, host::MB_OK | host::MB_ICONINFORMATION);
    return;
  }
  ReportOleException(error.code);
}

void ExcelUtils::ReportOleException(std::int32_t code) {
  host::ExcelAutomation* excel = this->excel();
  const std::wstring text = excel ? excel->errorText(code) : std::wstring();
  if (!text.empty()) {
    message(text, host::MB_OK | host::MB_ICONINFORMATION);
    return;
  }
  message(core::format(L"\n%s(%d): OLE Execption caught: SCODE = %x", kSourceName, kReportLine,
                       static_cast<std::uint32_t>(code)),
          host::MB_OK | host::MB_ICONINFORMATION);
}

bool ExcelUtils::StartPrivateExcel() {
  host::ExcelAutomation* excel = this->excel();
  auto made = excel ? excel->createObject()
                    : host::ExcelResult<std::shared_ptr<host::ExcelApplication>>(
                          host::ExcelError{host::kExcelUnavailable, L"Excel is not available on this system."});
  if (!made || !*made) {
    private_.reset();
    std::wstring text = made ? std::wstring(L"Excel could not be started.") : made.error().text;
    if (text.size() > 1023) text.resize(1023);
    services_.print(core::format(L"\n%s:%d:%s", L"asdkexcelcellevaluator", __LINE__, text));
    return false;
  }
  private_ = std::move(made).value();
  private_->setCaption(kPrivateMarker);
  return true;
}

bool ExcelUtils::fail(const host::ExcelError& error) {
  ReportOleException(error);
  return false;
}

void ExcelUtils::message(std::wstring_view text, unsigned flags) {
  if (host::HostUi* shown = ui()) {
    shown->messageBox(text, kMessageCaption, flags);
  } else {
    services_.print(L"\n" + std::wstring(text));
  }
}

}  // namespace corvane
