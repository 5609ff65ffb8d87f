#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "drawingsave.h"
#include "dxf/drawingfile.h"
#include "headless/database.h"
#include "headless/fieldengine.h"
#include "headless/hostapplication.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane::cli {

namespace {

struct UpdateOptions {
  std::string drawing;
  std::string output;
  bool force = false;
};

int updateFields(const UpdateOptions& options) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane update: %s\n", loaded.error.c_str());
    return 1;
  }
  dxf::DrawingFile& drawing = *loaded.drawing;
  host.setWorkingDatabase(&drawing.database());
  CCorvaneApp app(host);
  app.onInitialize();

  host::AcFdFieldEngine::BatchResult batch;
  host.engine().evaluateFields(&drawing.database(), {}, host::AcDbField::kDemand, &batch);
  app.onUnload();

  const dxf::SaveOptions save = saveOptions("update", options.force);
  const dxf::Status saved = options.output.empty() ? drawing.save(save) : drawing.saveAs(options.output, save);
  if (!saved) {
    reportSaveFailure("update", saved);
    return 1;
  }
  std::printf("Evaluated %d of %d fields; saved %s\n", batch.evaluated, batch.found,
              (options.output.empty() ? options.drawing : options.output).c_str());
  return 0;
}

}  // namespace

void addUpdateCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<UpdateOptions>();
  auto* cmd = app.add_subcommand(
      "update", "Evaluate every field of a drawing on demand and save it (in place unless -o is given)");
  cmd->add_option("DRAWING", options->drawing, "The drawing (DXF)")->required();
  cmd->add_option("-o,--output", options->output, "Save to this file instead; the drawing stays as it was")
      ->check(outputFile());
  addForceFlag(*cmd, options->force);
  cmd->callback([&action, options] { action = [options] { return updateFields(*options); }; });
}

}  // namespace corvane::cli
