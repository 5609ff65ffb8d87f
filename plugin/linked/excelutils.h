// The one way the commands and option dialogs reach Excel: the connection to the Excel the user
// runs (its application, the workbook and the worksheet in use), workbooks opened by path, the
// column letters and absolute addresses of cells, a workbook's last save time, row deletion,
// and the message every automation failure ends in. The Excel cell evaluator's own hidden
// instance is started here too, so that both connections keep one set of rules.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/excel.h"

namespace corvane {

namespace host {
class AcDbHostApplicationServices;
class HostSession;
class HostUi;
}  // namespace host

class ExcelUtils {
 public:
  // The marker captions that tell the program's windows from the user's.
  static constexpr const wchar_t* kWindowMarker = L"{165C7FE3-BDF8-4145-A6F1-A070B5ABD129}";
  static constexpr const wchar_t* kPrivateMarker = L"D076A9C0-F37C-4cf3-84E0-FD1D9566DEFC";

  ExcelUtils(host::HostSession& session, host::AcDbHostApplicationServices& services);
  // Outside an editor: Excel (or none) as given, and messages on the command line when there
  // is no UI to show them.
  ExcelUtils(host::ExcelAutomation* excel, host::HostUi* ui, host::AcDbHostApplicationServices& services);

  // Lets go of the worksheet, the workbook and the application, in that order; Excel stays open.
  void ResetExcel();
  // Connects to the Excel the user runs; never starts one. False, without a message, when none runs.
  bool AttachRunningExcel(bool makeVisible, std::optional<std::wstring_view> workbookPath, int updateLinks,
                          int readOnly);
  // Makes sure a workbook and a worksheet are in use once attached.
  bool EnsureWorkbook();
  // The workbook at `path` becomes the one in use, an open one reused; the worksheet is not changed.
  bool OpenWorkbook(std::wstring_view path, int updateLinks, int readOnly);
  // The top-level window of the attached Excel, found by a marker caption that is always taken
  // back; 0 when none.
  std::intptr_t FindExcelWindow();

  // "A" to "ZZ" (columns 1 to 702; below 1 gives "A").
  static std::wstring ColumnLetters(int column);
  // "$AB$12"; a row or column below 1 is refused with a message and gives "".
  std::wstring AbsoluteCellAddress(int row, int column);

  struct SaveTime {
    double date = 0.0;  // an OLE date, local time
    bool valid = false;
  };
  // "Last Save Time" of a saved workbook; now for one never saved.
  SaveTime WorkbookLastSaveTime(host::ExcelWorkbook& workbook);
  // Deletes each listed row in turn (rows below move up after each), reporting each.
  void DeleteRows(host::ExcelWorksheet& worksheet, const std::vector<long>& rows);
  // Fills rows x columns from `cell` of the worksheet in use with "r<row>c<column>" texts.
  void FillTest(std::wstring_view cell, int rows, int columns);

  // The message of a failed automation call: the failure's own text, else the system's text
  // for its code, else the code itself.
  void ReportOleException(const host::ExcelError& error);
  void ReportOleException(std::int32_t code);

  // The evaluator's hidden Excel, made by the program and marked by its caption.
  bool StartPrivateExcel();
  const std::shared_ptr<host::ExcelApplication>& privateExcel() const noexcept { return private_; }
  // Lets go of the hidden Excel and every workbook it holds open; the next evaluation that
  // needs it starts a new one, which reads the workbooks as they are then.
  void ReleasePrivateExcel() noexcept { private_.reset(); }

  const std::shared_ptr<host::ExcelApplication>& application() const noexcept { return application_; }
  const std::shared_ptr<host::ExcelWorkbook>& workbook() const noexcept { return workbook_; }
  const std::shared_ptr<host::ExcelWorksheet>& worksheet() const noexcept { return worksheet_; }
  int excelVersion() const noexcept { return excelVersion_; }
  bool foundThroughWindow() const noexcept { return foundThroughWindow_; }

 private:
  // Reports a failure and gives false, so that a step reads `if (!x) return fail(x.error());`.
  bool fail(const host::ExcelError& error);
  void message(std::wstring_view text, unsigned flags);

  // The session's Excel and UI as they are at each call, or those given outside an editor.
  host::ExcelAutomation* excel() const;
  host::HostUi* ui() const;

  host::HostSession* session_ = nullptr;
  host::ExcelAutomation* excel_;
  host::HostUi* ui_;
  host::AcDbHostApplicationServices& services_;
  std::shared_ptr<host::ExcelApplication> application_;
  std::shared_ptr<host::ExcelWorkbook> workbook_;
  std::shared_ptr<host::ExcelWorksheet> worksheet_;
  std::shared_ptr<host::ExcelApplication> private_;
  int excelVersion_ = 0;
  bool foundThroughWindow_ = false;
};

}  // namespace corvane
