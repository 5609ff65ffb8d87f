// The operating system as the headless host offers it to a plug-in: the module's file, files
// on disk ("\" is read as "/"), the system language, timers delivered between commands, and a
// shell whose requests are recorded rather than carried out.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/hostsystem.h"

namespace corvane::headless {

class OsServices : public host::HostSystem {
 public:
  using Notice = std::function<void(std::wstring_view)>;
  struct ShellRequest {
    std::wstring verb;
    std::wstring file;
    int show = 0;
    bool found = false;
  };

  // The language id is 1041 when the locale of the environment (LC_ALL, LC_MESSAGES, LANG)
  // is Japanese, 1033 otherwise. Notices of the shell go to stderr unless a sink is given.
  explicit OsServices(std::wstring moduleFile, Notice notice = {});

  std::wstring moduleFileName() const override { return moduleFile_; }
  bool fileExists(std::wstring_view path) const override;
  FileStatus fileStatus(std::wstring_view path) const override;
  bool readFile(std::wstring_view path, std::string& bytes, std::wstring& reason) const override;
  int systemDefaultLangId() const override { return languageId_; }
  void setSystemDefaultLangId(int id) noexcept { languageId_ = id; }

  std::uintptr_t setTimer(unsigned periodMs, TimerCallback callback) override;
  bool killTimer(std::uintptr_t timerId) override;
  // Runs every timer once, in the order they were set; timers set or killed by a callback
  // take effect for the next round.
  void fireTimers();
  std::size_t timerCount() const noexcept { return timers_.size(); }
  unsigned timerPeriod(std::uintptr_t timerId) const;

  std::intptr_t shellExecute(std::wstring_view verb, std::wstring_view file, int show) override;
  const std::vector<ShellRequest>& shellRequests() const noexcept { return shellRequests_; }

  // A path of this system for a path that may use "\".
  static std::string localPath(std::wstring_view path);
  static int languageFromEnvironment();

 private:
  struct Timer {
    unsigned periodMs;
    TimerCallback callback;
  };
  void notify(const std::wstring& text);

  std::wstring moduleFile_;
  Notice notice_;
  int languageId_;
  std::map<std::uintptr_t, Timer> timers_;
  std::uintptr_t lastTimerId_ = 0;
  std::vector<ShellRequest> shellRequests_;
};

}  // namespace corvane::headless
