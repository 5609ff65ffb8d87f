#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane::cli {

namespace {

// Field errors under --strict: the drawing is saved, and whoever runs the command can tell.
constexpr int kFieldErrors = 3;

struct UpdateOptions {
  std::string drawing;
  std::string output;
  bool force = false;
  bool json = false;
  bool strict = false;
  bool verbose = false;
};

// What came of the batch: the count, then one line for each field that ended in an error; or
// the same as one JSON object.
std::wstring report(headless::Database& db, const host::AcFdFieldEngine::BatchResult& batch, const std::string& saved,
                    bool json) {
  const int failed = static_cast<int>(batch.failed.size());
  const int evaluated = batch.evaluated - failed;
  std::wstring errors;
  for (const auto id : batch.failed) {
    const auto* field = headless::Field::of(db.lookup(id));
    if (!field) continue;
    std::wstring message;
    const int status = field->evaluationStatus(nullptr, &message);
    if (json) {
      errors += core::format(L"%s{\"handle\": %s, \"evaluator\": %s, \"status\": %d, \"message\": %s, \"value\": %s}",
                             errors.empty() ? L"" : L", ", jsonString(field->handle().text()),
                             jsonString(field->evaluatorId()), status, jsonString(message),
                             jsonString(field->getDisplayText()));
    } else {
      errors += core::format(L"%s\t%s\t%d\t%s\n", field->handle().text(), field->evaluatorId(), status,
                             oneLine(message.empty() ? field->getDisplayText() : message));
    }
  }
  if (json) {
    return core::format(L"{\"found\": %d, \"evaluated\": %d, \"failed\": %d, \"errors\": [%s], \"saved\": %s}\n",
                        batch.found, evaluated, failed, errors, jsonString(core::fromUtf8(saved)));
  }
  return core::format(L"Evaluated %d of %d fields, %d ended in an error; saved %s\n%s", evaluated, batch.found, failed,
                      core::fromUtf8(saved), errors);
}

int updateFields(const UpdateOptions& options) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane update: %s\n", loaded.error.c_str());
    return 1;
  }
  dxf::DrawingFile& drawing = *loaded.drawing;
  host.setWorkingDatabase(&drawing.database());
  // What the fields say on the command line goes beside the report, which may be JSON, and only
  // when asked for: the report tells every field that failed.
  if (options.verbose) {
    host.setOutput(writeErr);
  } else {
    host.setOutput([](std::wstring_view) {});
  }
  LinkedFiles linked(host);
  CCorvaneApp app(host, linked.system, &linked.excel);
  app.onInitialize();

  host::AcFdFieldEngine::BatchResult batch;
  host.engine().evaluateFields(&drawing.database(), {}, host::AcDbField::kDemand, &batch);
  app.onUnload();
  host.endLine();

  const dxf::SaveOptions save = saveOptions("update", options.force);
  const dxf::Status saved = options.output.empty() ? drawing.save(save) : drawing.saveAs(options.output, save);
  if (!saved) {
    reportSaveFailure("update", saved);
    return 1;
  }
  writeOut(report(drawing.database(), batch, options.output.empty() ? options.drawing : options.output, options.json));
  return options.strict && !batch.failed.empty() ? kFieldErrors : 0;
}

}  // namespace

void addUpdateCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<UpdateOptions>();
  auto* cmd = app.add_subcommand(
      "update",
      "Evaluate every field of a drawing on demand, save it (in place unless -o is given) and report how many "
      "fields were evaluated and each one that ended in an error: handle, evaluator, status, message or value");
  cmd->add_option("DRAWING", options->drawing, "The drawing (DXF)")->required();
  cmd->add_option("-o,--output", options->output, "Save to this file instead; the drawing stays as it was")
      ->check(outputFile());
  addForceFlag(*cmd, options->force);
  cmd->add_flag("--json", options->json, "Print the report as one JSON object");
  cmd->add_flag("-v,--verbose", options->verbose,
                "Show on standard error what the fields say as they update "
                "(workbooks opened, files up to date)");
  cmd->add_flag("--strict", options->strict,
                "Exit with status 3 when a field ended in an error (the drawing is saved all the same)");
  cmd->footer(
      "Exit status: 0 done, 1 failed (nothing saved), 2 a usage mistake, 3 a field ended in an error "
      "under --strict");
  cmd->callback([&action, options] { action = [options] { return updateFields(*options); }; });
}

}  // namespace corvane::cli
