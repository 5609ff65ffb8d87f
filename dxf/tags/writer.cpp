#include <cstring>

#include "dxf/tags/document.h"
#include "dxf/tags/groupcode.h"
#include "dxf/tags/numbertext.h"

namespace corvane::dxf {

namespace {

constexpr std::string_view kBinarySentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);
constexpr std::size_t kBufferSize = 1 << 20;
// Runs of unchanged bytes at least this long bypass the buffer.
constexpr std::size_t kDirectRun = 1 << 18;

template <typename T>
void appendLittleEndian(std::string& out, T value) {
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.append(bytes, sizeof value);
}

}  // namespace

// Writes a document as a stream of bytes. Unchanged tags of a file written in its own format
// are copied from the file as runs of bytes; everything else is spelt out.
class Writer {
 public:
  Writer(const Document& doc, ByteSink& sink, FileFormat format)
      : doc_(doc), sink_(sink), format_(format), sameFormat_(format == doc.format_) {
    twoByteCodes_ = doc.format_ == FileFormat::Binary ? doc.twoByteCodes_ : doc.version_ > "AC1009";
    buffer_.reserve(kBufferSize + 4096);
  }

  Status run() {
    if (sameFormat_) {
      raw(0, doc_.prefixSize_);
    } else if (format_ == FileFormat::Binary) {
      buffer_.append(kBinarySentinel);
    }
    if (doc_.prologue_ != kNoRecord) record(doc_.prologue_);
    for (const auto& section : doc_.sections_) {
      record(section.begin);
      for (RecordId id : section.records)
        if (!doc_.records_[id].erased) record(id);
      record(section.end);
    }
    record(doc_.eof_);
    if (sameFormat_) raw(doc_.tailStart_, static_cast<std::uint32_t>(doc_.source_.size()));
    flushRaw();
    flushBuffer();
    return failed_ ? Status::failure(std::move(error_)) : Status::success();
  }

 private:
  void record(RecordId id) {
    const Document::Record& stored = doc_.records_[id];
    if (stored.edited == 0 && stored.chunk == Document::kNoChunk) {
      // Released as read: its bytes, or its tags read again for the other format.
      if (sameFormat_) return raw(stored.first, stored.count);
      doc_.readTagsAt(stored.first, stored.count, scratch_);
      return tags(scratch_);
    }
    tags(doc_.tags(id));
  }

  void tags(std::span<const Tag> list) {
    for (const Tag& tag : list) {
      if (failed_) return;
      if (tag.wasRead() && sameFormat_) {
        raw(tag.start(), tag.end());
      } else if (format_ == FileFormat::Ascii) {
        asciiTag(tag);
      } else {
        binaryTag(tag);
      }
    }
  }

  void raw(std::uint32_t begin, std::uint32_t end) {
    if (begin == runEnd_) {
      runEnd_ = end;
      return;
    }
    flushRaw();
    runBegin_ = begin;
    runEnd_ = end;
  }

  void flushRaw() {
    const std::string_view run(doc_.source_.data() + runBegin_, runEnd_ - runBegin_);
    runBegin_ = runEnd_ = 0;
    if (run.size() >= kDirectRun) {
      flushBuffer();
      put(run);
    } else {
      buffer_.append(run);
      if (buffer_.size() >= kBufferSize) flushBuffer();
    }
  }

  void flushBuffer() {
    if (!buffer_.empty()) put(buffer_);
    buffer_.clear();
  }

  void put(std::string_view bytes) {
    if (failed_ || bytes.empty()) return;
    if (!sink_.write(bytes)) fail(sink_.error());
  }

  void fail(std::string message) {
    if (failed_) return;
    failed_ = true;
    error_ = std::move(message);
  }

  void asciiTag(const Tag& tag) {
    flushRaw();
    const std::string_view eol = doc_.lineEnding();
    const std::size_t codeAt = buffer_.size();
    appendInteger(buffer_, tag.code);
    const std::size_t width = buffer_.size() - codeAt;
    if (doc_.paddedCodes_ && width < 3) buffer_.insert(codeAt, 3 - width, ' ');
    buffer_.append(eol);
    const std::size_t valueAt = buffer_.size();
    doc_.appendValueText(tag, buffer_);
    if (buffer_.find_first_of("\r\n", valueAt) != std::string::npos)
      return fail("group code " + std::to_string(tag.code) + " holds a line break, which an ASCII file cannot");
    buffer_.append(eol);
    if (buffer_.size() >= kBufferSize) flushBuffer();
  }

  void binaryTag(const Tag& tag) {
    flushRaw();
    if (twoByteCodes_) {
      appendLittleEndian(buffer_, static_cast<std::int16_t>(tag.code));
    } else if (tag.code >= 0 && tag.code < 255) {
      buffer_.push_back(static_cast<char>(tag.code));
    } else {
      buffer_.push_back(static_cast<char>(255));
      appendLittleEndian(buffer_, static_cast<std::int16_t>(tag.code));
    }
    // Tags in binary form are only here when they came from a binary file read as such;
    // anything else is text to convert.
    if (tag.form() != TagForm::Text) {
      if (tag.form() == TagForm::BinaryChunk) buffer_.push_back(static_cast<char>(tag.size));
      buffer_.append(doc_.bytes(tag));
      if (tag.form() == TagForm::BinaryString) buffer_.push_back('\0');
      if (buffer_.size() >= kBufferSize) flushBuffer();
      return;
    }
    const std::string_view text = doc_.bytes(tag);
    bool valid = true;
    switch (valueKind(tag.code)) {
      case ValueKind::String:
        valid = text.find('\0') == std::string_view::npos;  // the zero would end the text early
        buffer_.append(text);
        buffer_.push_back('\0');
        break;
      case ValueKind::Double: {
        double value = 0;
        valid = parseDouble(text, value);
        appendLittleEndian(buffer_, value);
        break;
      }
      case ValueKind::Chunk: {
        chunk_.clear();
        valid = parseHexBytes(text, chunk_) && chunk_.size() <= 255;
        buffer_.push_back(static_cast<char>(chunk_.size()));
        buffer_.append(chunk_);
        break;
      }
      default: {
        std::int64_t value = 0;
        valid = parseInteger(text, value);
        switch (valueKind(tag.code)) {
          case ValueKind::Int16: appendLittleEndian(buffer_, static_cast<std::uint16_t>(value)); break;
          case ValueKind::Int32: appendLittleEndian(buffer_, static_cast<std::uint32_t>(value)); break;
          case ValueKind::Int64: appendLittleEndian(buffer_, value); break;
          default: buffer_.push_back(static_cast<char>(value)); break;
        }
      }
    }
    if (!valid)
      return fail("group code " + std::to_string(tag.code) + " value '" + std::string(text.substr(0, 40)) +
                  "' cannot be written in binary form");
    if (buffer_.size() >= kBufferSize) flushBuffer();
  }

  const Document& doc_;
  ByteSink& sink_;
  FileFormat format_;
  bool sameFormat_;
  bool twoByteCodes_ = true;
  std::string buffer_;
  std::string chunk_;
  std::vector<Tag> scratch_;
  std::uint32_t runBegin_ = 0;
  std::uint32_t runEnd_ = 0;
  bool failed_ = false;
  std::string error_;
};

Status Document::write(ByteSink& sink, std::optional<FileFormat> format) const {
  return Writer(*this, sink, format.value_or(format_)).run();
}

}  // namespace corvane::dxf
