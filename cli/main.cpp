#include <cstdio>
#include <exception>

#include "commands.h"

int main(int argc, char** argv) {
  CLI::App app{"corvane - live fields for drawings: formulas, table cells, areas, lengths, block counts, "
               "Excel cells, text files and objects of other drawings"};
  app.set_version_flag("--version", std::string("corvane ") + CORVANE_VERSION);
  app.require_subcommand(1);
  app.fallthrough(false);

  corvane::cli::Action action;
  corvane::cli::addDemoCommand(app, action);
  corvane::cli::addFormulaCommand(app, action);
  corvane::cli::addRtosCommand(app, action);
  corvane::cli::addFormatCommand(app, action);
  corvane::cli::addFieldsCommand(app, action);
  corvane::cli::addFieldCommand(app, action);
  corvane::cli::addUpdateCommand(app, action);
  corvane::cli::addSaveCommand(app, action);
  corvane::cli::addRunCommand(app, action);
  corvane::cli::addTableCommand(app, action);
  corvane::cli::addCellsCommand(app, action);
  corvane::cli::addExportFieldsCommand(app, action);
  corvane::cli::addUpdateExcelCommand(app, action);
  corvane::cli::addInsertFieldsCommand(app, action);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int code = app.exit(e);
    // Usage mistakes exit with 2, as command-line tools commonly do; --help and --version with 0.
    return code == 0 ? 0 : 2;
  }
  try {
    return action ? action() : 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "corvane: %s\n", e.what());
    return 1;
  }
}
