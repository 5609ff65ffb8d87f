// A libzip source that reads an archive from bytes it does not own and writes the archive
// libzip makes from it into a string of its own. Unlike libzip's buffer source it never writes
// into the bytes it reads: an archive rewritten from it is whole in output() and the input is
// left as it was, whatever libzip keeps or copies.
#pragma once

#include <zip.h>

#include <string>
#include <string_view>

namespace corvane::xlsx {

class ZipBuffer {
 public:
  explicit ZipBuffer(std::string_view input) : input_(input) { zip_error_init(&error_); }
  ~ZipBuffer() { zip_error_fini(&error_); }
  ZipBuffer(const ZipBuffer&) = delete;
  ZipBuffer& operator=(const ZipBuffer&) = delete;

  // A new source over this buffer, which must outlive it; nullptr with `error` set.
  zip_source_t* source(zip_error_t* error);
  // Whether libzip wrote an archive, and the archive it wrote.
  bool written() const noexcept { return committed_; }
  const std::string& output() const noexcept { return output_; }

 private:
  static zip_int64_t callback(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);
  zip_int64_t handle(void* data, zip_uint64_t length, zip_source_cmd_t command);

  std::string_view input_;
  zip_uint64_t readAt_ = 0;
  std::string output_;
  std::size_t writeAt_ = 0;
  bool committed_ = false;
  zip_error_t error_;
};

}  // namespace corvane::xlsx
