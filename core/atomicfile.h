// Replaces a file all at once: the new contents go to a temporary file in the same folder,
// which is flushed to disk and then renamed over the target. Until commit() succeeds the
// target is untouched, and a temporary file that was not committed is removed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::core {

class AtomicFile {
 public:
  explicit AtomicFile(std::filesystem::path target);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  // Makes the temporary file with the given permissions; without them the new file takes
  // the target's, or the usual ones for a new file. False (see error()) when it cannot.
  bool open(std::optional<unsigned> mode = std::nullopt);
  bool write(std::string_view bytes);
  // Flushes, keeps the previous target as `backup` (none when empty, or when there is no
  // target yet) and renames the temporary file over the target.
  bool commit(const std::filesystem::path& backup = {});
  // Drops the temporary file; the target stays as it was.
  void discard() noexcept;

  // Why the last call failed.
  const std::string& error() const noexcept { return error_; }
  const std::filesystem::path& temporaryPath() const noexcept { return temporary_; }

  // Simulates a full disk: writes fail once this many bytes were written.
  void failAfter(std::uint64_t bytes) noexcept { limit_ = bytes; }
  // Runs once the contents are on disk, before the rename; returning false stops the commit
  // there, as a killed process would.
  void beforeRename(std::function<bool()> hook) { beforeRename_ = std::move(hook); }

 private:
  bool fail(const std::string& what, const std::filesystem::path& path);

  std::filesystem::path target_;
  std::filesystem::path temporary_;
  int fd_ = -1;
  std::uint64_t written_ = 0;
  std::uint64_t limit_ = UINT64_MAX;
  std::function<bool()> beforeRename_;
  std::string error_;
};

}  // namespace corvane::core
