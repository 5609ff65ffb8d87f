// Replaces a file all at once: the new contents go to a temporary file in the same folder,
// which is flushed to disk and then renamed over the target. Until commit() succeeds every
// file is as it was, and a temporary file that was not committed is removed.
//
// A target that is a symbolic link is written through: the file the link leads to is the one
// replaced, in its own folder, and the link stays a link.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::core {

class AtomicFile {
 public:
  struct Options {
    // The new file's permissions; without them it takes the target's, or the usual ones for a
    // new file.
    std::optional<unsigned> mode;
    // Where the previous target is kept (none when empty, or when there is no target yet).
    // Name it after target(), so that it lands beside the file really replaced.
    std::filesystem::path backup;
    // A target without write permission is refused unless this is set.
    bool replaceReadOnly = false;
  };

  explicit AtomicFile(std::filesystem::path target);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  // The file that commit() replaces: the target with its symbolic links followed.
  const std::filesystem::path& target() const noexcept { return target_; }

  // Whether a save with these options can go ahead, without making or changing anything.
  bool check(const Options& options);
  // Checks, then makes the temporary file. False (see error()) when it cannot.
  bool open(const Options& options);
  bool open();
  bool write(std::string_view bytes);
  // Flushes, makes the previous target the backup and renames the temporary file over the
  // target; then removes what earlier saves of the target that never finished left behind.
  bool commit();
  // Drops the temporary file; the target stays as it was.
  void discard() noexcept;

  // Why the last call failed.
  const std::string& error() const noexcept { return error_; }
  // Whether it failed because the target is read-only.
  bool refusedReadOnly() const noexcept { return refusedReadOnly_; }
  const std::filesystem::path& temporaryPath() const noexcept { return temporary_; }
  // The temporary files of killed saves that the last commit removed.
  const std::vector<std::filesystem::path>& removedLeftovers() const noexcept { return removed_; }

  // Simulates a full disk: writes fail once this many bytes were written.
  void failAfter(std::uint64_t bytes) noexcept { limit_ = bytes; }
  // Runs once the new contents are on disk and the backup is in place, just before the target
  // is replaced; returning false stops the commit there, and the backup is put back.
  void beforeRename(std::function<bool()> hook) { beforeRename_ = std::move(hook); }

 private:
  bool fail(const std::string& what, const std::filesystem::path& path, int code);
  bool failWith(std::string message);
  bool swapInBackup();
  void restoreBackup();
  bool linkHidden(const std::filesystem::path& file, std::filesystem::path& made) const;
  bool copyToStaging(std::filesystem::path& staged);
  void releaseHeld() noexcept;
  void removeLeftovers();

  std::filesystem::path requested_;
  std::filesystem::path target_;
  std::string resolveError_;
  Options options_;
  std::filesystem::path temporary_;
  int fd_ = -1;
  std::uint64_t written_ = 0;
  std::uint64_t limit_ = UINT64_MAX;
  std::function<bool()> beforeRename_;
  std::string error_;
  bool refusedReadOnly_ = false;
  std::filesystem::path aside_;  // the old backup, until the target is replaced
  bool backupSwapped_ = false;
  std::vector<int> held_;  // descriptors that keep the commit's hidden names from other saves' clean-up
  std::vector<std::filesystem::path> removed_;
};

}  // namespace corvane::core
