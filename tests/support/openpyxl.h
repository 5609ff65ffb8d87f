// The independent reader and writer of workbooks: Python with openpyxl, which shares no code
// with ours, run as a child process. Tests that need it skip when it is not installed.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "support/ezdxf.h"

namespace corvane::testing {

inline bool hasOpenpyxl() {
  static const bool found = std::system("/usr/bin/python3 -c 'import openpyxl' >/dev/null 2>&1") == 0;
  return found;
}

// Runs the script with the arguments; what it printed, or "ERROR: " and that when it failed.
inline std::string runOpenpyxl(const std::string& script, const std::vector<std::string>& args) {
  return runPythonScript("/usr/bin/python3", script, args);
}

}  // namespace corvane::testing
