// Running the corvane program and python3 with ezdxf from tests: the command line is built with
// every argument quoted, and what the program prints is caught whole.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/ezdxf.h"
#include "support/scratchfolder.h"

namespace corvane::testing {

struct CommandRun {
  std::string out;
  std::string err;
  int exitCode = -1;
};

inline std::string shellQuoted(const std::string& arg) {
  std::string q = "'";
  for (const char c : arg) {
    if (c == '\'') q += "'\\''";
    else q += c;
  }
  return q + "'";
}

inline std::string readWhole(const std::filesystem::path& file) { return ScratchFolder::read(file); }

using RunFolder = ScratchFolder;

// A drawing of the shared sample folder; tests that need one skip when the folder is missing.
inline std::filesystem::path sampleDrawing(const std::string& name) {
  return std::filesystem::path(CORVANE_SHARED_DIR) / "samples" / "dxf" / name;
}

#define CORVANE_NEED_SAMPLE_DRAWINGS()                                                     \
  do {                                                                                     \
    if (!std::filesystem::is_directory(::corvane::testing::sampleDrawing(""))) {           \
      GTEST_SKIP() << "no sample drawings";                                                \
    }                                                                                      \
  } while (false)

// Runs a command line (already quoted); its error output goes through the file `errors`,
// which is removed afterwards.
inline CommandRun runCommandLine(const std::string& commandLine, const std::filesystem::path& errors) {
  const std::string command = commandLine + " 2>" + shellQuoted(errors.string());
  CommandRun result;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (!pipe) return result;
  char buffer[4096];
  std::size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.out.append(buffer, n);
  const int status = ::pclose(pipe);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.err = readWhole(errors);
  std::error_code ignored;
  std::filesystem::remove(errors, ignored);
  return result;
}

inline CommandRun runCommandLine(const std::string& commandLine, const RunFolder& folder) {
  return runCommandLine(commandLine, folder / "stderr.txt");
}

inline std::string corvaneCommandLine(const std::vector<std::string>& args) {
  std::string command = shellQuoted(CORVANE_CLI);
  for (const auto& arg : args) command += " " + shellQuoted(arg);
  return command;
}

inline CommandRun runCorvane(const std::vector<std::string>& args, const std::filesystem::path& errors) {
  return runCommandLine(corvaneCommandLine(args), errors);
}

inline CommandRun runCorvane(const std::vector<std::string>& args, const RunFolder& folder) {
  return runCommandLine(corvaneCommandLine(args), folder);
}

// The settings go to a file in `folder`, never the user's; nothing is read from the terminal.
inline CommandRun runCorvaneWithOwnSettings(const std::filesystem::path& folder, const std::vector<std::string>& args) {
  const std::string command = "CORVANE_REGISTRY=" + shellQuoted((folder / "registry.reg").string()) + " " +
                              corvaneCommandLine(args) + " </dev/null";
  return runCommandLine(command, folder / "stderr.txt");
}

inline CommandRun runPython(const std::string& script, const std::vector<std::string>& args,
                            const RunFolder& folder) {
  std::string command = pythonWithEzdxf() + " -c " + shellQuoted(script);
  for (const auto& arg : args) command += " " + shellQuoted(arg);
  return runCommandLine(command, folder);
}

}  // namespace corvane::testing
