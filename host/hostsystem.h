// What the plug-in needs of the operating system around the host: its own module's file, files
// on disk, the system language, timers and the shell.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::host {

// Language ids with the system's numbers.
enum LanguageId : int {
  kLangEnglishUS = 1033,
  kLangJapanese = 1041,
};

enum ShowCommand : int {
  SW_HIDE = 0,
  SW_SHOWNORMAL = 1,
};

class HostSystem {
 public:
  virtual ~HostSystem() = default;

  // The full path of the plug-in's module file (GetModuleFileNameW).
  virtual std::wstring moduleFileName() const = 0;
  // Paths may use "\" or "/" between names.
  virtual bool fileExists(std::wstring_view path) const = 0;

  // What a path names, and when a file was last written (a local OLE date, fraction of the
  // second kept; absent when the system cannot tell).
  enum class FileKind { kMissing, kFile, kFolder, kOther };
  struct FileStatus {
    FileKind kind = FileKind::kMissing;
    std::optional<double> modified;
  };
  virtual FileStatus fileStatus(std::wstring_view path) const = 0;
  // Reads a whole file, read-only and sharing it with every other reader and writer. Only a
  // plain file is read: a folder, a device or a pipe is refused at once rather than waited on.
  // False, with the system's reason, when it cannot be read.
  virtual bool readFile(std::wstring_view path, std::string& bytes, std::wstring& reason) const = 0;
  virtual int systemDefaultLangId() const = 0;

  // A thread-less timer: the callback runs on the host's main thread between commands, every
  // `periodMs` until the timer is killed. Returns the timer's id, never 0; killing an unknown
  // id returns false.
  using TimerCallback = std::function<void(std::uintptr_t timerId)>;
  virtual std::uintptr_t setTimer(unsigned periodMs, TimerCallback callback) = 0;
  virtual bool killTimer(std::uintptr_t timerId) = 0;

  // ShellExecuteW: opens a file or address with its associated program. Above 32 means
  // success; the shell itself tells the user when it fails.
  virtual std::intptr_t shellExecute(std::wstring_view verb, std::wstring_view file, int show) = 0;
};

}  // namespace corvane::host
