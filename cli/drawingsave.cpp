#include "drawingsave.h"

#include <cstdio>

namespace corvane::cli {

CLI::Option* addForceFlag(CLI::App& command, bool& force) {
  return command.add_flag("--force", force, "Replace the file saved to even when it is read-only");
}

dxf::SaveOptions saveOptions(bool force) {
  dxf::SaveOptions options;
  options.replaceReadOnly = force;
  return options;
}

void reportSaveFailure(const std::string& command, const dxf::Status& status) {
  const char* advice = status.cause() == dxf::Status::Cause::kReadOnly ? "; add --force to replace it" : "";
  std::fprintf(stderr, "corvane %s: %s%s\n", command.c_str(), status.message().c_str(), advice);
}

}  // namespace corvane::cli
