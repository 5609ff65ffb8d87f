#include "headless/editor/osservices.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "core/oledate.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"

namespace corvane::headless {

namespace {

// The shell's "file not found" answer; anything above 32 is success.
constexpr std::intptr_t kSeErrFileNotFound = 2;
constexpr std::intptr_t kShellOpened = 42;

bool isAddress(std::wstring_view file) {
  return file.find(L"://") != std::wstring_view::npos || core::startsWithNoCase(file, L"mailto:");
}

}  // namespace

OsServices::OsServices(std::wstring moduleFile, Notice notice)
    : moduleFile_(std::move(moduleFile)), notice_(std::move(notice)), languageId_(languageFromEnvironment()) {}

int OsServices::languageFromEnvironment() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (!value || !*value) continue;
    const std::string_view locale(value);
    return locale.substr(0, 2) == "ja" ? host::kLangJapanese : host::kLangEnglishUS;
  }
  return host::kLangEnglishUS;
}

std::string OsServices::localPath(std::wstring_view path) {
  std::wstring local(path);
  for (auto& c : local) {
    if (c == L'\\') c = L'/';
  }
  return core::toUtf8(local);
}

bool OsServices::fileExists(std::wstring_view path) const {
  if (path.empty()) return false;
  std::error_code error;
  return std::filesystem::is_regular_file(localPath(path), error);
}

host::HostSystem::FileStatus OsServices::fileStatus(std::wstring_view path) const {
  FileStatus status;
  struct stat info {};
  if (path.empty() || ::stat(localPath(path).c_str(), &info) != 0) return status;
  status.kind = S_ISREG(info.st_mode) ? FileKind::kFile : S_ISDIR(info.st_mode) ? FileKind::kFolder : FileKind::kOther;
  status.modified = core::localOleDate(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
  return status;
}

bool OsServices::readFile(std::wstring_view path, std::string& bytes, std::wstring& reason) const {
  bytes.clear();
  const auto failed = [&reason](int error) {
    reason = core::fromUtf8(std::strerror(error));
    return false;
  };
  // Opened without waiting, so that a pipe with no writer or a device cannot hold the caller.
  const int fd = ::open(localPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return failed(errno);
  struct stat info {};
  if (::fstat(fd, &info) != 0) {
    const int error = errno;
    ::close(fd);
    return failed(error);
  }
  if (!S_ISREG(info.st_mode)) {
    ::close(fd);
    reason = S_ISDIR(info.st_mode) ? L"It is a folder." : L"It is not a plain file.";
    return false;
  }
  bytes.reserve(static_cast<std::size_t>(info.st_size));
  char buffer[1 << 16];
  for (;;) {
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      const int error = errno;
      ::close(fd);
      bytes.clear();
      return failed(error);
    }
    bytes.append(buffer, static_cast<std::size_t>(got));
  }
  ::close(fd);
  return true;
}

std::uintptr_t OsServices::setTimer(unsigned periodMs, TimerCallback callback) {
  if (!callback) return 0;
  const std::uintptr_t id = ++lastTimerId_;
  timers_.emplace(id, Timer{periodMs, std::move(callback)});
  return id;
}

bool OsServices::killTimer(std::uintptr_t timerId) { return timers_.erase(timerId) > 0; }

unsigned OsServices::timerPeriod(std::uintptr_t timerId) const {
  const auto it = timers_.find(timerId);
  return it == timers_.end() ? 0 : it->second.periodMs;
}

void OsServices::fireTimers() {
  std::vector<std::uintptr_t> due;
  for (const auto& entry : timers_) due.push_back(entry.first);
  for (const auto id : due) {
    const auto it = timers_.find(id);
    if (it == timers_.end()) continue;  // killed by an earlier callback of this round
    const TimerCallback callback = it->second.callback;  // the callback may kill its own timer
    callback(id);
  }
}

std::intptr_t OsServices::shellExecute(std::wstring_view verb, std::wstring_view file, int show) {
  const bool found = isAddress(file) || fileExists(file);
  shellRequests_.push_back(ShellRequest{std::wstring(verb), std::wstring(file), show, found});
  if (!found) {
    notify(core::format(L"the shell cannot %s %s: there is no such file.", verb, file));
    return kSeErrFileNotFound;
  }
  notify(core::format(L"the shell would %s %s.", verb, file));
  return kShellOpened;
}

void OsServices::notify(const std::wstring& text) {
  if (notice_) {
    notice_(text);
    return;
  }
  std::fprintf(stderr, "corvane: %s\n", core::toUtf8(text).c_str());
}

}  // namespace corvane::headless
