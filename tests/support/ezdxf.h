// The independent reader of the drawings we write: Python with ezdxf, a reader that shares no
// code with ours, run as a child process. Tests that need it skip when it is not installed.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace corvane::testing {

// A Python that can import ezdxf, or empty.
inline const std::string& pythonWithEzdxf() {
  static const std::string found = [] {
    for (const char* candidate : {"python3", "/usr/bin/python3"}) {
      const std::string command = std::string(candidate) + " -c \"import ezdxf\" >/dev/null 2>&1";
      if (std::system(command.c_str()) == 0) return std::string(candidate);
    }
    return std::string();
  }();
  return found;
}

// Runs a script with a Python and the arguments (each quoted for the shell); what it printed,
// standard error included, or "ERROR: " and that when it failed or could not start.
inline std::string runPythonScript(const std::string& python, const std::string& script,
                                   const std::vector<std::string>& args) {
  const auto quoted = [](const std::string& text) {
    std::string q = "'";
    for (const char c : text) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
  };
  std::string command = python + " -c " + quoted(script);
  for (const auto& arg : args) command += " " + quoted(arg);
  command += " 2>&1";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "ERROR: cannot start python";
  std::string output;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, got);
  return ::pclose(pipe) == 0 ? output : "ERROR: " + output;
}

inline std::string runEzdxfScript(const std::string& script, const std::vector<std::string>& args) {
  return runPythonScript(pythonWithEzdxf(), script, args);
}

}  // namespace corvane::testing
