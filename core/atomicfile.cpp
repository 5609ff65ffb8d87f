#include "core/atomicfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace corvane::core {

namespace {

bool writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t done = ::write(fd, data, size);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    data += done;
    size -= static_cast<std::size_t>(done);
  }
  return true;
}

// A rename is only durable once the folder itself reached the disk.
void syncFolder(const std::filesystem::path& folder) {
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

// Copies a file through a temporary of its own, for folders where hard links are refused.
bool copyFile(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  const auto staging = std::filesystem::path(to).concat(".tmp");
  if (!std::filesystem::copy_file(from, staging, std::filesystem::copy_options::overwrite_existing, error))
    return false;
  std::filesystem::rename(staging, to, error);
  if (error) std::filesystem::remove(staging, error);
  return !error;
}

}  // namespace

AtomicFile::AtomicFile(std::filesystem::path target) : target_(std::move(target)) {}

AtomicFile::~AtomicFile() { discard(); }

bool AtomicFile::fail(const std::string& what, const std::filesystem::path& path) {
  error_ = what + " '" + path.string() + "': " + std::strerror(errno);
  return false;
}

bool AtomicFile::open(std::optional<unsigned> mode) {
  discard();
  error_.clear();
  // Hidden, and named after the target so that a left-over from a killed process explains itself.
  std::string base = target_.filename().string();
  base.insert(base.begin(), '.');
  base.append(".saving-XXXXXX");
  const std::string pattern = (target_.parent_path() / base).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  fd_ = ::mkstemp(name.data());
  if (fd_ < 0) return fail("cannot create a temporary file next to", target_);
  temporary_ = name.data();
  struct stat info {};
  if (!mode) {
    if (::stat(target_.c_str(), &info) == 0) {
      mode = info.st_mode & 07777;
    } else {
      const mode_t mask = ::umask(0);
      ::umask(mask);
      mode = 0666 & ~mask;
    }
  }
  ::fchmod(fd_, static_cast<mode_t>(*mode));
  written_ = 0;
  return true;
}

bool AtomicFile::write(std::string_view bytes) {
  if (fd_ < 0) {
    error_ = "the file is not open for writing";
    return false;
  }
  std::size_t size = bytes.size();
  bool full = false;
  if (written_ + size > limit_) {
    size = static_cast<std::size_t>(limit_ - written_);
    full = true;
  }
  if (!writeAll(fd_, bytes.data(), size)) return fail("cannot write", temporary_);
  written_ += size;
  if (full) {
    errno = ENOSPC;
    return fail("cannot write", temporary_);
  }
  return true;
}

bool AtomicFile::commit(const std::filesystem::path& backup) {
  if (fd_ < 0) {
    error_ = "the file is not open for writing";
    return false;
  }
  bool done = ::fsync(fd_) == 0 || fail("cannot flush", temporary_);
  ::close(fd_);
  fd_ = -1;
  if (done && beforeRename_ && !beforeRename_()) {
    error_ = "the write was stopped before '" + target_.string() + "' was replaced";
    done = false;
  }
  if (done && !backup.empty() && ::access(target_.c_str(), F_OK) == 0) {
    // A hard link keeps the old contents under the backup name without a moment in which
    // the target itself is missing.
    ::unlink(backup.c_str());
    if (::link(target_.c_str(), backup.c_str()) != 0 && !copyFile(target_, backup))
      done = fail("cannot keep the backup", backup);
  }
  if (done && ::rename(temporary_.c_str(), target_.c_str()) != 0) done = fail("cannot replace", target_);
  if (!done) {
    discard();
    return false;
  }
  temporary_.clear();
  syncFolder(target_.parent_path());
  return true;
}

void AtomicFile::discard() noexcept {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

}  // namespace corvane::core
