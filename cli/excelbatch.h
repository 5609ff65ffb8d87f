// What export-fields and update-excel share: the workbook opened with the worksheet asked for,
// a terminal in place of the host's message boxes and progress meter, and the workbook saved
// whole, the previous file kept as "<name>.bak", or left exactly as it was.
#pragma once

#include <memory>
#include <string>

#include "headless/editor/script.h"
#include "headless/editor/terminalui.h"
#include "host/excel.h"
#include "xlsx/bookautomation.h"

namespace corvane::cli {

struct BatchWorkbook {
  std::shared_ptr<host::ExcelWorkbook> book;
  std::shared_ptr<host::ExcelWorksheet> sheet;
};

// The workbook open in `excel`, and its worksheet named `sheet` (the active one when empty);
// says on stderr why not and gives an empty result.
BatchWorkbook openBatchWorkbook(const std::string& command, xlsx::BookAutomation& excel, const std::string& path,
                                const std::string& sheet);

// Writes the workbook over its file; false, said on stderr, when the file was left as it was.
bool saveBatchWorkbook(const std::string& command, host::ExcelWorkbook& book);

// Boxes and messages on stderr, the progress meter there too while it is a terminal.
class BatchTerminal {
 public:
  BatchTerminal();
  host::HostUi& ui() noexcept { return ui_; }

 private:
  headless::Script noAnswers_;
  headless::TerminalUi ui_;
};

}  // namespace corvane::cli
