#include "xlsx/package/zipbuffer.h"

#include <algorithm>
#include <cstring>

namespace corvane::xlsx {

zip_source_t* ZipBuffer::source(zip_error_t* error) {
  return zip_source_function_create(&callback, this, error);
}

zip_int64_t ZipBuffer::callback(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
  return static_cast<ZipBuffer*>(self)->handle(data, length, command);
}

zip_int64_t ZipBuffer::handle(void* data, zip_uint64_t length, zip_source_cmd_t command) {
  switch (command) {
    case ZIP_SOURCE_SUPPORTS:
      // Not ZIP_SOURCE_BEGIN_WRITE_CLONING: the archive is always written whole.
      return ZIP_SOURCE_SUPPORTS_WRITABLE;
    case ZIP_SOURCE_OPEN:
      readAt_ = 0;
      return 0;
    case ZIP_SOURCE_READ: {
      const auto count = std::min<zip_uint64_t>(length, input_.size() - readAt_);
      std::memcpy(data, input_.data() + readAt_, count);
      readAt_ += count;
      return static_cast<zip_int64_t>(count);
    }
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:  // this object is its owner's, not libzip's
      return 0;
    case ZIP_SOURCE_STAT: {
      auto* st = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &error_);
      if (!st) return -1;
      zip_stat_init(st);
      st->size = input_.size();
      st->valid |= ZIP_STAT_SIZE;
      return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&error_, data, length);
    case ZIP_SOURCE_SEEK: {
      const zip_int64_t at = zip_source_seek_compute_offset(readAt_, input_.size(), data, length, &error_);
      if (at < 0) return -1;
      readAt_ = static_cast<zip_uint64_t>(at);
      return 0;
    }
    case ZIP_SOURCE_TELL:
      return static_cast<zip_int64_t>(readAt_);
    case ZIP_SOURCE_BEGIN_WRITE:
      output_.clear();
      writeAt_ = 0;
      committed_ = false;
      return 0;
    case ZIP_SOURCE_WRITE: {
      const auto* bytes = static_cast<const char*>(data);
      if (writeAt_ + length > output_.size()) output_.resize(writeAt_ + length);
      std::memcpy(output_.data() + writeAt_, bytes, length);
      writeAt_ += length;
      return static_cast<zip_int64_t>(length);
    }
    case ZIP_SOURCE_SEEK_WRITE: {
      const zip_int64_t at = zip_source_seek_compute_offset(writeAt_, output_.size(), data, length, &error_);
      if (at < 0) return -1;
      writeAt_ = static_cast<std::size_t>(at);
      return 0;
    }
    case ZIP_SOURCE_TELL_WRITE:
      return static_cast<zip_int64_t>(writeAt_);
    case ZIP_SOURCE_COMMIT_WRITE:
      committed_ = true;
      return 0;
    case ZIP_SOURCE_ROLLBACK_WRITE:
    case ZIP_SOURCE_REMOVE:  // an archive left without entries is no file at all
      output_.clear();
      committed_ = command == ZIP_SOURCE_REMOVE;
      return 0;
    default:
      zip_error_set(&error_, ZIP_ER_OPNOTSUPP, 0);
      return -1;
  }
}

}  // namespace corvane::xlsx
