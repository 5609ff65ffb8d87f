// The writer's sink onto a drawing file that is replaced all at once (see core::AtomicFile).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/atomicfile.h"
#include "dxf/tags/bytesink.h"
#include "dxf/tags/document.h"
#include "dxf/tags/status.h"

namespace corvane::dxf {

class FileSink : public ByteSink {
 public:
  explicit FileSink(std::filesystem::path target) : file_(std::move(target)) {}

  // Whether the save can go ahead; nothing is made or changed.
  Status check(const SaveOptions& options = {}) { return status(file_.check(fileOptions(options))); }
  Status open(const SaveOptions& options = {}) { return status(file_.open(fileOptions(options))); }
  bool write(std::string_view bytes) override { return file_.write(bytes); }
  std::string error() const override { return file_.error(); }
  // Flushes, keeps the previous drawing as the backup when the options said so, and renames
  // the temporary file over the drawing.
  Status commit() { return status(file_.commit()); }

  // Simulates a full disk: writes fail once this many bytes were written.
  void failAfter(std::uint64_t bytes) noexcept { file_.failAfter(bytes); }

  // The file replaced: the drawing's path with its symbolic links followed.
  const std::filesystem::path& target() const noexcept { return file_.target(); }
  const std::filesystem::path& temporaryPath() const noexcept { return file_.temporaryPath(); }
  const std::vector<std::filesystem::path>& removedLeftovers() const noexcept { return file_.removedLeftovers(); }
  // The host's backup name: the drawing's name with the extension ".bak".
  static std::filesystem::path backupPath(const std::filesystem::path& target) {
    return std::filesystem::path(target).replace_extension(".bak");
  }

 private:
  core::AtomicFile::Options fileOptions(const SaveOptions& options) const {
    core::AtomicFile::Options made;
    if (options.keepBackup && !file_.target().empty()) made.backup = backupPath(file_.target());
    made.replaceReadOnly = options.replaceReadOnly;
    return made;
  }
  Status status(bool done) const {
    if (done) return Status::success();
    return Status::failure(file_.error(), file_.refusedReadOnly() ? Status::Cause::kReadOnly : Status::Cause::kOther);
  }

  core::AtomicFile file_;
};

}  // namespace corvane::dxf
