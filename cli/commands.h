// The corvane program's subcommands. Each lives in its own file and adds itself to the
// command line; main() only wires them together.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

namespace corvane::cli {

// A subcommand's action, run after the command line has been parsed; returns the exit code.
using Action = std::function<int()>;

void addDemoCommand(CLI::App& app, Action& action);
void addFormulaCommand(CLI::App& app, Action& action);
void addRtosCommand(CLI::App& app, Action& action);
void addFormatCommand(CLI::App& app, Action& action);
void addFieldsCommand(CLI::App& app, Action& action);
void addFieldCommand(CLI::App& app, Action& action);
void addUpdateCommand(CLI::App& app, Action& action);
void addSaveCommand(CLI::App& app, Action& action);
void addRunCommand(CLI::App& app, Action& action);
void addTableCommand(CLI::App& app, Action& action);
void addCellsCommand(CLI::App& app, Action& action);
void addExportFieldsCommand(CLI::App& app, Action& action);
void addUpdateExcelCommand(CLI::App& app, Action& action);
void addInsertFieldsCommand(CLI::App& app, Action& action);

}  // namespace corvane::cli
