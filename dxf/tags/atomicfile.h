// A drawing saved all at once (see core::AtomicFile), as a sink for the writer.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "core/atomicfile.h"
#include "dxf/tags/bytesink.h"
#include "dxf/tags/status.h"

namespace corvane::dxf {

class AtomicFile : public ByteSink {
 public:
  explicit AtomicFile(std::filesystem::path target) : file_(std::move(target)) {}

  Status open() { return file_.open() ? Status::success() : Status::failure(file_.error()); }
  bool write(std::string_view bytes) override { return file_.write(bytes); }
  std::string error() const override { return file_.error(); }
  // Flushes, keeps the previous target as `backup` (none when empty) and renames the
  // temporary file over the target.
  Status commit(const std::filesystem::path& backup = {}) {
    return file_.commit(backup) ? Status::success() : Status::failure(file_.error());
  }

  // Simulates a full disk: writes fail once this many bytes were written.
  void failAfter(std::uint64_t bytes) noexcept { file_.failAfter(bytes); }

  const std::filesystem::path& temporaryPath() const noexcept { return file_.temporaryPath(); }
  // The host's backup name: the drawing's name with the extension ".bak".
  static std::filesystem::path backupPath(const std::filesystem::path& target) {
    return std::filesystem::path(target).replace_extension(".bak");
  }

 private:
  core::AtomicFile file_;
};

}  // namespace corvane::dxf
