#include "drawingsave.h"

#include <cstdio>
#include <filesystem>

namespace corvane::cli {

CLI::Validator outputFile() {
  return CLI::Validator(
      [](std::string& name) -> std::string {
        if (name.empty()) return "the output file name is empty";
        std::error_code ignored;
        if (std::filesystem::is_directory(name, ignored)) return "'" + name + "' is a folder; name the file to write";
        return {};
      },
      "FILE");
}

CLI::Option* addForceFlag(CLI::App& command, bool& force) {
  return command.add_flag("--force", force, "Replace the file saved to even when it is read-only");
}

dxf::SaveOptions saveOptions(const std::string& command, bool force) {
  dxf::SaveOptions options;
  options.replaceReadOnly = force;
  options.leftoverRemoved = [command](const std::filesystem::path& leftover) {
    std::fprintf(stderr, "corvane %s: removed '%s', left by a save that did not finish\n", command.c_str(),
                 leftover.c_str());
  };
  return options;
}

void reportSaveFailure(const std::string& command, const dxf::Status& status) {
  const char* advice = status.cause() == dxf::Status::Cause::kReadOnly ? "; add --force to replace it" : "";
  std::fprintf(stderr, "corvane %s: %s%s\n", command.c_str(), status.message().c_str(), advice);
}

bool savePossible(const std::string& command, const std::filesystem::path& target, const dxf::SaveOptions& options) {
  const dxf::Status possible = dxf::Document::checkSave(target, options);
  if (!possible) reportSaveFailure(command, possible);
  return possible.ok();
}

}  // namespace corvane::cli
