#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "core/utf8.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/editor/script.h"
#include "headless/editor/session.h"
#include "headless/hostapplication.h"
#include "linkedfiles.h"
#include "plugin/shell/ccorvaneapp.h"
#include "xlsx/bookapplication.h"
#include "xlsx/bookautomation.h"
#include "xlsx/bookrange.h"
#include "xlsx/booksheet.h"
#include "xlsx/bookworkbook.h"

namespace corvane::cli {

namespace {

struct RunOptions {
  std::string drawing;
  std::string script;
  std::string output;
  bool save = false;
  bool force = false;
  bool light = false;
  std::vector<std::string> workbooks;
  std::string selection;
  std::vector<std::string> commands;
};

void fail(const std::string& message) { std::fprintf(stderr, "corvane run: %s\n", message.c_str()); }

// The plug-in is built into this program, so the program's file is its module: the menu and
// help files are looked for beside it.
std::wstring moduleFile() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::wstring(L"corvane") : core::fromUtf8(self.string());
}

// "Sheet1!A1:B3,D5" (the sheet optional, in single quotes when its name has blanks): the cells
// become the selection of the active workbook, its first cell the active cell.
bool selectCells(xlsx::BookApplication& excel, const std::string& text) {
  const auto book = excel.activeWorkbook();
  if (!book) {
    fail("--select needs a workbook (--workbook)");
    return false;
  }
  std::wstring areas = core::fromUtf8(text);
  std::shared_ptr<host::ExcelWorksheet> sheet = book->activeSheet();
  if (const std::size_t bang = areas.rfind(L'!'); bang != std::wstring::npos) {
    std::wstring name = areas.substr(0, bang);
    if (name.size() >= 2 && name.front() == L'\'' && name.back() == L'\'') name = name.substr(1, name.size() - 2);
    auto named = book->worksheet(name);
    if (!named) {
      fail("--select: " + core::toUtf8(named.error().text));
      return false;
    }
    sheet = std::move(named).value();
    areas = areas.substr(bang + 1);
  }
  auto bookSheet = std::dynamic_pointer_cast<xlsx::BookSheet>(sheet);
  std::vector<xlsx::CellRange> cells;
  std::size_t from = 0;
  while (bookSheet && from <= areas.size()) {
    const std::size_t comma = std::min(areas.find(L',', from), areas.size());
    const std::wstring area = areas.substr(from, comma - from);
    auto range = bookSheet->range(area, {});
    if (!range) {
      fail("--select: " + core::toUtf8(range.error().text));
      return false;
    }
    const auto& parts = std::static_pointer_cast<xlsx::BookRange>(*range)->cellAreas();
    cells.insert(cells.end(), parts.begin(), parts.end());
    from = comma + 1;
  }
  if (cells.empty()) {
    fail("--select names no cells");
    return false;
  }
  excel.select(std::make_shared<xlsx::BookRange>(bookSheet, std::move(cells)));
  return true;
}

int runCommands(const RunOptions& options) {
  const bool isNew = options.drawing == "new";
  if (isNew && (options.save || !options.output.empty())) {
    fail("a new drawing cannot be saved by this build; run the commands on a DXF drawing to save the result");
    return 1;
  }
  headless::Script script;
  if (!options.script.empty()) {
    std::string error;
    auto loaded = headless::Script::fromFile(options.script, error);
    if (!loaded) {
      fail(error);
      return 1;
    }
    script = std::move(*loaded);
  }

  headless::HostApplication host;
  std::unique_ptr<dxf::DrawingFile> drawing;
  std::unique_ptr<headless::Database> newDrawing;
  headless::Database* db = nullptr;
  if (isNew) {
    newDrawing = std::make_unique<headless::Database>(host);
    db = newDrawing.get();
  } else {
    auto loaded = dxf::DrawingFile::load(options.drawing, host);
    if (!loaded.drawing) {
      fail(loaded.error);
      return 1;
    }
    drawing = std::move(loaded.drawing);
    db = &drawing->database();
  }
  // Commands may ask for answers at length: a save that cannot be done is told before they run.
  const bool saving = drawing && (options.save || !options.output.empty());
  const dxf::SaveOptions save = saveOptions("run", options.force);
  if (saving) {
    const std::filesystem::path target =
        options.output.empty() ? drawing->path() : std::filesystem::path(options.output);
    if (!savePossible("run", target, save)) return 1;
  }

  headless::Session::Options sessionOptions;
  sessionOptions.program = options.light ? L"acadlt" : L"acad";
  sessionOptions.moduleFile = moduleFile();
  headless::Session session(host, std::move(script), sessionOptions);
  session.openDocument(db);
  // The Excel the commands reach: running, with the workbooks open, when any were named.
  xlsx::BookAutomation excel;
  session.setExcel(&excel);
  for (const auto& workbook : options.workbooks) {
    auto opened = excel.start().openWorkbook(core::fromUtf8(workbook), 0, 0);
    if (!opened) {
      fail(core::toUtf8(opened.error().text));
      return 1;
    }
  }
  if (!options.selection.empty() && !selectCells(excel.start(), options.selection)) return 1;

  int problems = 0;
  {
    readOtherDrawingsAsDxf(host);
    CCorvaneApp app(host, session);
    if (session.loadApplication(app) != host::AcRx::kRetOK) {
      fail("the plug-in did not initialise");
      return 1;
    }
    const auto count = [&problems](headless::Session::Outcome outcome) {
      if (outcome == headless::Session::Outcome::kUnknown || outcome == headless::Session::Outcome::kFailed)
        ++problems;
    };
    if (options.commands.empty()) {
      problems = session.runScript();
    } else {
      for (const auto& command : options.commands) count(session.runCommand(core::fromUtf8(command)));
      if (!session.script().empty()) {
        std::fprintf(stderr, "corvane run: %zu line(s) of the script were not read by the commands\n",
                     session.script().size());
      }
    }
    session.unloadApplication(app);
  }
  host.print(L"\n");
  std::fflush(stdout);

  if (saving) {
    // A command that stopped half-way may have left the drawing half-changed.
    if (session.failures() > 0) {
      fail("the drawing was not saved because a command failed");
      return 1;
    }
    const dxf::Status saved = options.output.empty() ? drawing->save(save) : drawing->saveAs(options.output, save);
    if (!saved) {
      reportSaveFailure("run", saved);
      return 1;
    }
    if (excel.running()) {
      for (const auto& workbook : excel.start().books()) {
        if (!workbook->dirty() || workbook->path().empty()) continue;
        if (auto written = workbook->save(); !written) {
          fail(core::toUtf8(written.error().text));
          return 1;
        }
      }
    }
  }
  return problems == 0 ? 0 : 1;
}

}  // namespace

void addRunCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<RunOptions>();
  auto* run = app.add_subcommand(
      "run", "Open a drawing, load the plug-in and run commands, a script answering their prompts and boxes");
  run->add_option("DRAWING", options->drawing, "The drawing (DXF), or \"new\" for an empty one")->required();
  run->add_option("--script", options->script,
                  "Answers, one per line (an empty line is Enter, ^C cancels, [Yes] answers a box); without "
                  "COMMANDs the script holds the commands too");
  auto* output = run->add_option("-o,--output", options->output,
                                 "Save the drawing to this file; the drawing itself stays as it was")
                     ->check(outputFile());
  run->add_flag("--save", options->save, "Save the drawing in place")->excludes(output);
  addForceFlag(*run, options->force);
  run->add_flag("--lt", options->light, "Act as the light edition of the host (program name acadlt)");
  run->add_option("--workbook", options->workbooks,
                  "A workbook (.xlsx) open in the Excel the commands reach, the last one active; the ones "
                  "they change are saved with the drawing")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->check(CLI::ExistingFile);
  run->add_option("--select", options->selection,
                  "Cells selected in the last workbook, as 'Sheet1!A1:B3,D5' (the sheet optional; areas "
                  "separated by commas), its first cell the active cell");
  run->add_option("COMMAND", options->commands, "Commands to run in order; put -- before them");
  run->callback([&action, options] { action = [options] { return runCommands(*options); }; });
}

}  // namespace corvane::cli
