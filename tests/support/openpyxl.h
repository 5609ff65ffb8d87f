// The independent reader and writer of workbooks: Python with openpyxl, which shares no code
// with ours, run as a child process. Tests that need it skip when it is not installed.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace corvane::testing {

inline bool hasOpenpyxl() {
  static const bool found = std::system("/usr/bin/python3 -c 'import openpyxl' >/dev/null 2>&1") == 0;
  return found;
}

// Runs the script with the arguments; what it printed, or "ERROR: " and that when it failed.
inline std::string runOpenpyxl(const std::string& script, const std::vector<std::string>& args) {
  const auto quoted = [](const std::string& text) {
    std::string q = "'";
    for (const char c : text) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
  };
  std::string command = "/usr/bin/python3 -c " + quoted(script);
  for (const auto& arg : args) command += " " + quoted(arg);
  command += " 2>&1";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "ERROR: cannot start python";
  std::string output;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, got);
  return ::pclose(pipe) == 0 ? output : "ERROR: " + output;
}

}  // namespace corvane::testing
