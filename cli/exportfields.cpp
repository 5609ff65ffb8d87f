#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "excelbatch.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "host/hostui.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/cexportfieldbuttondialog.h"
#include "plugin/workflows/exportfieldowners.h"

namespace corvane::cli {

namespace {

struct ExportFieldsOptions {
  std::string drawing;
  std::string workbook;
  std::string sheet;
  std::string cell = "A1";
  bool right = false;
  bool relative = false;
  bool json = false;
};

int exportFields(const ExportFieldsOptions& options) {
  headless::HostApplication host;
  host.setOutput(writeErr);
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane export-fields: %s\n", loaded.error.c_str());
    return 1;
  }
  host.setWorkingDatabase(&loaded.drawing->database());
  LinkedFiles linked(host);
  const BatchWorkbook workbook = openBatchWorkbook("export-fields", linked.excel, options.workbook, options.sheet);
  if (!workbook.book) return 1;
  auto start = workbook.sheet->range(core::fromUtf8(options.cell));
  if (!start || (*start)->rowCount() != 1 || (*start)->columnCount() != 1) {
    std::fprintf(stderr, "corvane export-fields: --cell %s names no single cell\n", options.cell.c_str());
    return 1;
  }
  (*start)->select();
  const std::wstring first = (*start)->address();

  CCorvaneApp app(host, linked.system, &linked.excel);
  app.onInitialize();
  const std::vector<ExportableField> fields = FieldsOfDrawing(host, loaded.drawing->database());
  CExportFieldButtonDialog button(app.linkedSources(), app.registry());
  BatchTerminal terminal;
  terminal.ui().setStatusBarProgressMeter(L"Exporting the fields ...", 0, static_cast<int>(fields.size()));
  int exported = 0, position = 0;
  std::wstring last;
  for (const ExportableField& field : fields) {
    // A field that cannot be evaluated is told and skipped: the next one takes its cell.
    if (button.Export(field.code, options.relative ? kRelativePathType : kFullPathType,
                      options.right ? kMoveRight : kMoveDown)) {
      ++exported;
      last = button.target();
    }
    terminal.ui().setStatusBarProgressMeterPos(++position);
  }
  terminal.ui().restoreStatusBar();
  app.onUnload();
  host.endLine();

  if (exported > 0 && !saveBatchWorkbook("export-fields", *workbook.book)) return 1;
  const int missing = static_cast<int>(fields.size()) - exported;
  const std::wstring lastCell = last.substr(last.rfind(L':') + 1);
  if (options.json) {
    writeOut(core::format(
        L"{\"drawing\": %s, \"workbook\": %s, \"sheet\": %s, \"fields\": %d, \"exported\": %d, "
        L"\"failed\": %d, \"first\": %s, \"last\": %s, \"saved\": %s}\n",
        jsonString(loaded.drawing->database().getFilename()), jsonString(workbook.book->name()),
        jsonString(workbook.sheet->name()), static_cast<int>(fields.size()), exported, missing,
        jsonString(exported ? first : L""), jsonString(exported ? lastCell : L""), exported ? L"true" : L"false"));
  } else if (exported > 0) {
    writeOut(core::format(L"Exported %d of %d field(s) to %s[%s]:%s..%s; %d could not be evaluated; saved\n", exported,
                          static_cast<int>(fields.size()), workbook.book->name(), workbook.sheet->name(), first,
                          lastCell, missing));
  } else {
    writeOut(core::format(L"Exported none of %d field(s); the workbook was left as it was\n",
                          static_cast<int>(fields.size())));
  }
  return exported > 0 || fields.empty() ? 0 : 1;
}

}  // namespace

void addExportFieldsCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<ExportFieldsOptions>();
  auto* cmd = app.add_subcommand(
      "export-fields",
      "Put the value of every field of a drawing into successive cells of a workbook, each with a note naming the "
      "drawing and the field, so that update-excel can refresh them; the workbook is saved, the previous file kept "
      "as .bak");
  cmd->add_option("DRAWING", options->drawing, "The drawing (DXF)")->required()->check(CLI::ExistingFile);
  cmd->add_option("WORKBOOK", options->workbook, "The workbook (.xlsx)")->required()->check(CLI::ExistingFile);
  cmd->add_option("--sheet", options->sheet, "The worksheet (default: the active one)");
  cmd->add_option("--cell", options->cell, "The first cell (default: A1)");
  cmd->add_flag("--right", options->right, "Go right from cell to cell instead of down");
  cmd->add_flag("--relative", options->relative, "Name the drawing in the notes relative to the workbook's folder");
  cmd->add_flag("--json", options->json, "Print the summary as one JSON object");
  cmd->footer("Exit status: 0 done, 1 failed (the workbook left as it was), 2 a usage mistake");
  cmd->callback([&action, options] { action = [options] { return exportFields(*options); }; });
}

}  // namespace corvane::cli
