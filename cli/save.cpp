#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "headless/hostapplication.h"

namespace corvane::cli {

namespace {

struct SaveOptions {
  std::string drawing;
  std::string output;
  bool force = false;
};

// Loads the drawing into the database and saves it from there: what goes through unchanged
// comes out as it came in.
int saveDrawing(const SaveOptions& options) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane save: %s\n", loaded.error.c_str());
    return 1;
  }
  const dxf::Status saved = loaded.drawing->saveAs(options.output, saveOptions("save", options.force));
  if (!saved) {
    reportSaveFailure("save", saved);
    return 1;
  }
  return 0;
}

}  // namespace

void addSaveCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<SaveOptions>();
  auto* cmd = app.add_subcommand("save", "Load a drawing into the database and save it to another file");
  cmd->add_option("DRAWING", options->drawing, "The drawing (DXF)")->required();
  cmd->add_option("-o,--output", options->output, "The file to write")->required()->check(outputFile());
  addForceFlag(*cmd, options->force);
  cmd->callback([&action, options] { action = [options] { return saveDrawing(*options); }; });
}

}  // namespace corvane::cli
