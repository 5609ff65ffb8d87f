// Running the corvane program and python3 with ezdxf from tests: the command line is built with
// every argument quoted, and what the program prints is caught whole.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/ezdxf.h"

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

inline std::string readWhole(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A folder of its own for one test, removed with everything in it at the end.
class RunFolder {
 public:
  RunFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "corvane-run-XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (::mkdtemp(name.data())) path_ = name.data();
  }
  ~RunFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

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

inline CommandRun runPython(const std::string& script, const std::vector<std::string>& args,
                            const RunFolder& folder) {
  std::string command = pythonWithEzdxf() + " -c " + shellQuoted(script);
  for (const auto& arg : args) command += " " + shellQuoted(arg);
  return runCommandLine(command, folder);
}

}  // namespace corvane::testing
