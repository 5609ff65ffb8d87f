#include <filesystem>
#include <memory>
#include <string>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "excelbatch.h"
#include "headless/db/database.h"
#include "headless/editor/osservices.h"
#include "headless/hostapplication.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/updatefieldsinexcel.h"

namespace corvane::cli {

namespace {

struct UpdateExcelOptions {
  std::string workbook;
  std::string sheet;
  bool json = false;
};

std::wstring jsonList(const std::vector<std::wstring>& items) {
  std::wstring text;
  for (const std::wstring& item : items) text += (text.empty() ? L"" : L", ") + jsonString(item);
  return L"[" + text + L"]";
}

std::wstring report(const UpdateFieldsInExcel::Summary& summary, const std::wstring& target, bool saved, bool json) {
  if (json) {
    return core::format(
        L"{\"workbook\": %s, \"notes\": %d, \"cells\": %d, \"failed\": %d, \"brokenNotes\": %s, "
        L"\"unreadableDrawings\": %s, \"saved\": %s}\n",
        jsonString(target), summary.notes, summary.cellsWritten, summary.fieldsFailed, jsonList(summary.brokenNotes),
        jsonList(summary.unreadableDrawings), saved ? L"true" : L"false");
  }
  std::wstring text = core::format(L"Updated %d cell(s) of %s from %d note(s); %d field(s) could not be evaluated",
                                   summary.cellsWritten, target, summary.notes, summary.fieldsFailed);
  text += saved ? L"; saved\n" : L"; nothing to save\n";
  for (const std::wstring& drawing : summary.unreadableDrawings) {
    text += L"Drawing missing or broken, its cells show ####: " + drawing + L"\n";
  }
  for (const std::wstring& cell : summary.brokenNotes) text += L"Note skipped, it names no field: " + cell + L"\n";
  return text;
}

int updateExcel(const UpdateExcelOptions& options) {
  headless::HostApplication host;
  host.setOutput(writeErr);
  LinkedFiles linked(host);
  const BatchWorkbook workbook = openBatchWorkbook("update-excel", linked.excel, options.workbook, options.sheet);
  if (!workbook.book) return 1;

  // No drawing is the current one: every note's drawing is read from its file.
  headless::Database idle(host);
  host.setWorkingDatabase(&idle);
  // Each field is evaluated against its own drawing; that drawing is also the working one while
  // its fields are done, as a formula reads variables and units from the working drawing.
  readOtherDrawingsAsDxf(host, &idle);
  CCorvaneApp app(host, linked.system, &linked.excel);
  app.onInitialize();
  BatchTerminal terminal;
  UpdateFieldsInExcel update(
      app.linkedSources(), nullptr, &terminal.ui(),
      {UpdateFieldsInExcel::OtherDrawings::kAll, UpdateFieldsInExcel::UnreadableDrawing::kMarkCells});
  const bool updated = update.Update(*workbook.book, *workbook.sheet);
  app.onUnload();
  host.endLine();
  if (!updated) return 1;

  const UpdateFieldsInExcel::Summary& summary = update.summary();
  const bool saving = summary.cellsWritten > 0;
  if (saving && !saveBatchWorkbook("update-excel", *workbook.book)) return 1;
  const std::wstring target = core::format(L"%s[%s]", workbook.book->name(), workbook.sheet->name());
  writeOut(report(summary, target, saving, options.json));
  return 0;
}

}  // namespace

void addUpdateExcelCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<UpdateExcelOptions>();
  auto* cmd = app.add_subcommand(
      "update-excel",
      "Refresh every cell of a worksheet whose note names a drawing and a field (as export-fields writes them): "
      "each field is evaluated in its drawing and the workbook is saved, the previous file kept as .bak");
  cmd->add_option("WORKBOOK", options->workbook, "The workbook (.xlsx)")->required()->check(CLI::ExistingFile);
  cmd->add_option("--sheet", options->sheet, "The worksheet (default: the active one)");
  cmd->add_flag("--json", options->json, "Print the summary as one JSON object");
  cmd->footer(
      "Cells of a drawing that is missing or cannot be read, and of fields that cannot be evaluated, show ####. "
      "Exit status: 0 done, 1 failed (the workbook left as it was), 2 a usage mistake");
  cmd->callback([&action, options] { action = [options] { return updateExcel(*options); }; });
}

}  // namespace corvane::cli
