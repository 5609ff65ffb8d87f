// Replaces a file all at once: the new contents go to a temporary file in the same folder,
// which is flushed to disk and then renamed over the target. Until commit() succeeds the
// target is untouched, and a temporary file that was not committed is removed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "dxf/bytesink.h"
#include "dxf/status.h"

namespace corvane::dxf {

class AtomicFile : public ByteSink {
 public:
  explicit AtomicFile(std::filesystem::path target);
  ~AtomicFile() override;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  Status open();
  bool write(std::string_view bytes) override;
  std::string error() const override { return error_; }
  // Flushes, keeps the previous target as `backup` (none when empty) and renames the
  // temporary file over the target.
  Status commit(const std::filesystem::path& backup = {});

  // Simulates a full disk: writes fail once this many bytes were written.
  void failAfter(std::uint64_t bytes) noexcept { limit_ = bytes; }

  const std::filesystem::path& temporaryPath() const noexcept { return temporary_; }
  // The host's backup name: the drawing's name with the extension ".bak".
  static std::filesystem::path backupPath(const std::filesystem::path& target);

 private:
  void discard() noexcept;

  std::filesystem::path target_;
  std::filesystem::path temporary_;
  int fd_ = -1;
  std::uint64_t written_ = 0;
  std::uint64_t limit_ = UINT64_MAX;
  std::string error_;
};

}  // namespace corvane::dxf
