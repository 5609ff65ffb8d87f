// What the commands that save a drawing share: the check of the output argument, the --force
// option, and how the save tells what it did or why it failed.
#pragma once

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

#include "dxf/tags/document.h"
#include "dxf/tags/status.h"

namespace corvane::cli {

// An output argument names a file: it is not empty and not a folder.
CLI::Validator outputFile();

CLI::Option* addForceFlag(CLI::App& command, bool& force);

// The save's options; a left-over of an earlier save that the save removes is told on stderr.
dxf::SaveOptions saveOptions(const std::string& command, bool force);

// The save's failure on stderr, with what the user can do about a read-only file.
void reportSaveFailure(const std::string& command, const dxf::Status& status);
// Whether a save to `target` could go ahead; when it cannot, says why, before any work that
// would be lost with it.
bool savePossible(const std::string& command, const std::filesystem::path& target, const dxf::SaveOptions& options);

}  // namespace corvane::cli
