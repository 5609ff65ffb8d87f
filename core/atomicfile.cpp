#include "core/atomicfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <random>

namespace corvane::core {

namespace {

constexpr int kMaxLinks = 40;  // as the kernel follows them
constexpr std::string_view kStaging = ".saving-";
constexpr std::size_t kStagingTail = 6;  // the characters mkstemp puts in place of XXXXXX

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

std::filesystem::path folderOf(const std::filesystem::path& file) {
  return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

// A rename is only durable once the folder itself reached the disk.
void syncFolder(const std::filesystem::path& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

// The file a chain of symbolic links leads to; a link relative to its own folder.
std::filesystem::path followLinks(std::filesystem::path path, std::string& error) {
  for (int hops = 0; hops < kMaxLinks; ++hops) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
    std::error_code failure;
    const std::filesystem::path next = std::filesystem::read_symlink(path, failure);
    if (failure) {
      error = "cannot follow the link " + quoted(path) + ": " + failure.message();
      return path;
    }
    path = next.is_absolute() ? next : folderOf(path) / next;
  }
  error = "cannot follow the link " + quoted(path) + ": " + std::strerror(ELOOP);
  return path;
}

// Whether a save would replace a file its user may not write. Root may write anything, so
// for root only the permission bits say it, as editors read them.
bool isReadOnly(const std::filesystem::path& file, const struct stat& info) {
  if (::geteuid() == 0) return (info.st_mode & 0222) == 0;
  return ::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0 && errno == EACCES;
}

bool sameName(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code ignored;
  return std::filesystem::absolute(a, ignored).lexically_normal() ==
         std::filesystem::absolute(b, ignored).lexically_normal();
}

// Hidden, and named after the target so that a left-over from a killed process explains
// itself and the next save of the target can find it.
std::string stagingPrefix(const std::filesystem::path& target) {
  return "." + target.filename().string() + std::string(kStaging);
}

bool isStagingName(const std::string& name, const std::string& prefix) {
  return name.size() == prefix.size() + kStagingTail && name.compare(0, prefix.size(), prefix) == 0 &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                     [](unsigned char c) { return std::isalnum(c) != 0; });
}

std::filesystem::path randomStagingName(const std::filesystem::path& target) {
  static constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device seed;
  std::string name = stagingPrefix(target);
  for (std::size_t i = 0; i < kStagingTail; ++i) name.push_back(kLetters[seed() % (sizeof kLetters - 1)]);
  return folderOf(target) / name;
}

// Makes a staging file for the target, held with an exclusive lock for as long as the
// descriptor is open: another save's clean-up leaves a locked file alone.
int makeStagingFile(const std::filesystem::path& target, std::filesystem::path& made) {
  const std::string pattern = (folderOf(target) / (stagingPrefix(target) + "XXXXXX")).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  const int fd = ::mkostemp(name.data(), O_CLOEXEC);
  if (fd < 0) return fd;
  ::flock(fd, LOCK_EX | LOCK_NB);
  made = name.data();
  return fd;
}

// Holds a file against other saves' clean-up for as long as the descriptor is open.
int hold(const std::filesystem::path& file) {
  const int fd = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  if (fd >= 0) ::flock(fd, LOCK_SH | LOCK_NB);
  return fd;
}

}  // namespace

AtomicFile::AtomicFile(std::filesystem::path target) : requested_(std::move(target)) {
  if (!requested_.empty()) target_ = followLinks(requested_, resolveError_);
}

AtomicFile::~AtomicFile() {
  releaseHeld();
  discard();
}

bool AtomicFile::fail(const std::string& what, const std::filesystem::path& path, int code) {
  return failWith(what + " " + quoted(path) + ": " + std::strerror(code));
}

bool AtomicFile::failWith(std::string message) {
  error_ = std::move(message);
  return false;
}

bool AtomicFile::check(const Options& options) {
  error_.clear();
  refusedReadOnly_ = false;
  if (requested_.empty()) return failWith("no file name was given");
  if (!resolveError_.empty()) return failWith(resolveError_);
  const std::filesystem::path folder = folderOf(target_);
  struct stat info {};
  if (!target_.has_filename() || (::stat(target_.c_str(), &info) == 0 && S_ISDIR(info.st_mode)))
    return failWith(quoted(target_) + " is a folder, not a file");
  if (::stat(folder.c_str(), &info) != 0) return fail("cannot create a temporary file next to", target_, errno);
  if (!S_ISDIR(info.st_mode)) return fail("cannot create a temporary file next to", target_, ENOTDIR);
  if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
    return fail("cannot write in the folder", folder, errno);
  if (::stat(target_.c_str(), &info) == 0) {
    if (!S_ISREG(info.st_mode)) return failWith(quoted(target_) + " is not a regular file");
    if (!options.replaceReadOnly && isReadOnly(target_, info)) {
      refusedReadOnly_ = true;
      return failWith(quoted(target_) + " is read-only");
    }
  } else if (errno != ENOENT) {
    return fail("cannot save", target_, errno);
  }
  // A folder in the backup's place cannot be replaced by a file; a file there can.
  if (!options.backup.empty() && ::lstat(options.backup.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
      !sameName(options.backup, target_)) {
    return failWith("cannot keep the backup " + quoted(options.backup) + ": it is a folder");
  }
  return true;
}

bool AtomicFile::open(const Options& options) {
  discard();
  removed_.clear();
  if (!check(options)) return false;
  options_ = options;
  // A file whose own name is its backup's name (a drawing called NAME.bak) is saved without a
  // backup: the previous contents cannot be kept under the name that receives the new ones,
  // and any other name would be one the user never asked for, perhaps taken by a file of theirs.
  if (!options_.backup.empty() && sameName(options_.backup, target_)) options_.backup.clear();
  fd_ = makeStagingFile(target_, temporary_);
  if (fd_ < 0) return fail("cannot create a temporary file next to", target_, errno);
  struct stat info {};
  std::optional<unsigned> mode = options_.mode;
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

bool AtomicFile::open() { return open(Options()); }

bool AtomicFile::write(std::string_view bytes) {
  if (fd_ < 0) return failWith("the file is not open for writing");
  std::size_t size = bytes.size();
  bool full = false;
  if (written_ + size > limit_) {
    size = static_cast<std::size_t>(limit_ - written_);
    full = true;
  }
  if (!writeAll(fd_, bytes.data(), size)) return fail("cannot write", temporary_, errno);
  written_ += size;
  if (full) return fail("cannot write", temporary_, ENOSPC);
  return true;
}

bool AtomicFile::commit() {
  if (fd_ < 0) return failWith("the file is not open for writing");
  if (::fsync(fd_) != 0) {
    fail("cannot flush", temporary_, errno);
    discard();
    return false;
  }
  if (!swapInBackup()) {
    releaseHeld();
    discard();
    return false;
  }
  bool replaced = false;
  if (beforeRename_ && !beforeRename_()) {
    failWith("the write was stopped before " + quoted(target_) + " was replaced");
  } else if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
    fail("cannot replace", target_, errno);
  } else {
    replaced = true;
  }
  if (!replaced) {
    restoreBackup();
    syncFolder(folderOf(target_));
    releaseHeld();
    discard();
    return false;
  }
  temporary_.clear();
  if (!aside_.empty()) ::unlink(aside_.c_str());
  aside_.clear();
  backupSwapped_ = false;
  syncFolder(folderOf(target_));
  releaseHeld();
  ::close(fd_);
  fd_ = -1;
  removeLeftovers();
  return true;
}

// Makes the target's contents the backup, once the new contents are on disk and before the
// target is replaced: a save killed at any moment leaves a whole target, and a backup that is
// either the old one or a copy of the target. The old backup stays under a hidden name until
// the target is replaced, so that a failure can put it back.
bool AtomicFile::swapInBackup() {
  const std::filesystem::path& backup = options_.backup;
  if (backup.empty()) return true;
  struct stat current {};
  if (::stat(target_.c_str(), &current) != 0) {
    return errno == ENOENT || fail("cannot keep the backup", backup, errno);
  }
  struct stat old {};
  const bool hadBackup = ::lstat(backup.c_str(), &old) == 0;
  if (hadBackup && old.st_dev == current.st_dev && old.st_ino == current.st_ino) {
    return true;  // the backup is another name of the previous contents already
  }
  if (hadBackup && S_ISDIR(old.st_mode)) {
    return failWith("cannot keep the backup " + quoted(backup) + ": it is a folder");
  }
  // A hard link keeps the old contents without copying them; file systems without hard links
  // get a copy.
  held_.push_back(hold(target_));
  std::filesystem::path staged;
  if (!linkHidden(target_, staged) && !copyToStaging(staged)) return false;
  bool asideMoved = false;
  if (hadBackup) {
    held_.push_back(hold(backup));
    if (!linkHidden(backup, aside_)) {
      aside_ = randomStagingName(target_);
      asideMoved = ::rename(backup.c_str(), aside_.c_str()) == 0;
      if (!asideMoved) {
        const int code = errno;
        aside_.clear();
        ::unlink(staged.c_str());
        return fail("cannot keep the backup", backup, code);
      }
    }
  }
  if (::rename(staged.c_str(), backup.c_str()) != 0) {
    fail("cannot keep the backup", backup, errno);
    ::unlink(staged.c_str());
    if (asideMoved && ::rename(aside_.c_str(), backup.c_str()) != 0) {
      error_ += "; the previous backup is in " + quoted(aside_) + ": " + std::strerror(errno);
    } else if (!asideMoved && !aside_.empty()) {
      ::unlink(aside_.c_str());
    }
    aside_.clear();
    return false;
  }
  backupSwapped_ = true;
  return true;
}

// Puts the old backup back, or none where there was none, when the target was not replaced.
void AtomicFile::restoreBackup() {
  if (!backupSwapped_) return;
  backupSwapped_ = false;
  if (aside_.empty()) {
    ::unlink(options_.backup.c_str());
  } else if (::rename(aside_.c_str(), options_.backup.c_str()) != 0) {
    error_ += "; the previous backup is in " + quoted(aside_) + ": " + std::strerror(errno);
  }
  aside_.clear();
}

// A second, hidden name for a file, beside the target.
bool AtomicFile::linkHidden(const std::filesystem::path& file, std::filesystem::path& made) const {
  for (int attempt = 0; attempt < 100; ++attempt) {
    made = randomStagingName(target_);
    if (::link(file.c_str(), made.c_str()) == 0) return true;
    if (errno != EEXIST) break;
  }
  made.clear();
  return false;
}

bool AtomicFile::copyToStaging(std::filesystem::path& staged) {
  staged.clear();
  const int from = ::open(target_.c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) return fail("cannot keep the backup", options_.backup, errno);
  std::filesystem::path made;
  const int to = makeStagingFile(target_, made);
  if (to < 0) {
    const int code = errno;
    ::close(from);
    return fail("cannot keep the backup", options_.backup, code);
  }
  held_.push_back(to);
  char buffer[1 << 16];
  ssize_t got = 0;
  bool done = true;
  while (done && (got = ::read(from, buffer, sizeof buffer)) != 0) {
    if (got < 0 && errno == EINTR) continue;
    done = got > 0 && writeAll(to, buffer, static_cast<std::size_t>(got));
  }
  struct stat info {};
  if (done && ::fstat(from, &info) == 0) ::fchmod(to, info.st_mode & 07777);
  done = done && ::fsync(to) == 0;
  const int code = errno;
  ::close(from);
  if (!done) {
    ::unlink(made.c_str());
    return fail("cannot keep the backup", options_.backup, code);
  }
  staged = made;
  return true;
}

void AtomicFile::releaseHeld() noexcept {
  for (const int fd : held_) {
    if (fd >= 0) ::close(fd);
  }
  held_.clear();
}

// Staging files of this target that no save holds any more are what killed saves left.
void AtomicFile::removeLeftovers() {
  const std::string prefix = stagingPrefix(target_);
  std::error_code failure;
  std::filesystem::directory_iterator entries(folderOf(target_), failure);
  if (failure) return;
  std::vector<std::filesystem::path> candidates;
  for (const auto& entry : entries) {
    if (isStagingName(entry.path().filename().string(), prefix)) candidates.push_back(entry.path());
  }
  std::sort(candidates.begin(), candidates.end());
  for (const auto& candidate : candidates) {
    struct stat info {};
    if (::lstat(candidate.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) continue;
    const int fd = ::open(candidate.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) continue;
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0 && ::unlink(candidate.c_str()) == 0) removed_.push_back(candidate);
    ::close(fd);
  }
}

void AtomicFile::discard() noexcept {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

}  // namespace corvane::core
