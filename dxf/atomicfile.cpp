#include "dxf/atomicfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace corvane::dxf {

namespace {

std::string describe(const std::string& what, const std::filesystem::path& path) {
  return what + " '" + path.string() + "': " + std::strerror(errno);
}

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

std::filesystem::path AtomicFile::backupPath(const std::filesystem::path& target) {
  return std::filesystem::path(target).replace_extension(".bak");
}

Status AtomicFile::open() {
  discard();
  // Hidden, and named after the drawing so that a left-over from a killed process explains itself.
  std::string base = target_.filename().string();
  base.insert(base.begin(), '.');
  base.append(".saving-XXXXXX");
  const std::string pattern = (target_.parent_path() / base).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  fd_ = ::mkstemp(name.data());
  if (fd_ < 0) return Status::failure(describe("cannot create a temporary file next to", target_));
  temporary_ = name.data();
  // The new file takes the old one's permissions, or the usual ones for a new file.
  struct stat info {};
  mode_t mode;
  if (::stat(target_.c_str(), &info) == 0) {
    mode = info.st_mode & 07777;
  } else {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode = 0666 & ~mask;
  }
  ::fchmod(fd_, mode);
  written_ = 0;
  error_.clear();
  return Status::success();
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
  if (!writeAll(fd_, bytes.data(), size)) {
    error_ = describe("cannot write", temporary_);
    return false;
  }
  written_ += size;
  if (full) {
    errno = ENOSPC;
    error_ = describe("cannot write", temporary_);
    return false;
  }
  return true;
}

Status AtomicFile::commit(const std::filesystem::path& backup) {
  if (fd_ < 0) return Status::failure("the file is not open for writing");
  if (::fsync(fd_) != 0) {
    const auto status = Status::failure(describe("cannot flush", temporary_));
    discard();
    return status;
  }
  ::close(fd_);
  fd_ = -1;
  if (!backup.empty() && ::access(target_.c_str(), F_OK) == 0) {
    // A hard link keeps the old contents under the backup name without a moment in which
    // the drawing itself is missing.
    ::unlink(backup.c_str());
    if (::link(target_.c_str(), backup.c_str()) != 0 && !copyFile(target_, backup)) {
      const auto status = Status::failure(describe("cannot keep the backup", backup));
      discard();
      return status;
    }
  }
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
    const auto status = Status::failure(describe("cannot replace", target_));
    discard();
    return status;
  }
  temporary_.clear();
  syncFolder(target_.parent_path());
  return Status::success();
}

void AtomicFile::discard() noexcept {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

}  // namespace corvane::dxf
