// A DXF file held at the tag level. Everything read is kept: sections, records (a 0 tag and
// the tags up to the next 0), and each tag's bytes as they stood, so that a drawing saved
// without changes comes out as it came in. Records keep their id for the document's life,
// are found by handle, and their tags can be edited in place; records can be added and
// removed; header variables can be read and set.
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/handleindex.h"
#include "dxf/tags/bytesink.h"
#include "dxf/tags/status.h"
#include "dxf/tags/tag.h"
#include "dxf/tags/textcodec.h"

namespace corvane::dxf {

using RecordId = std::uint32_t;
inline constexpr RecordId kNoRecord = 0xFFFFFFFFu;

enum class FileFormat : std::uint8_t { Ascii, Binary };

// A tag to add: the value spelt as an ASCII file spells it, text already in the file's
// encoding (Document::encodeText).
struct NewTag {
  std::int16_t code = 0;
  std::string value;

  static NewTag real(std::int16_t code, double value);
  static NewTag integer(std::int16_t code, std::int64_t value);
  static NewTag handle(std::int16_t code, std::uint64_t value);
};

struct Section {
  RecordId begin = kNoRecord;  // "0 SECTION", "2 <name>" and any tags before the first record
  std::vector<RecordId> records;
  RecordId end = kNoRecord;    // "0 ENDSEC"
};

// A header variable inside the HEADER section's first record: its "9 $NAME" tag and the value
// tags after it, as tag indices [first, last).
struct HeaderVariable {
  std::size_t nameIndex = 0;
  std::size_t first = 0;
  std::size_t last = 0;
};

struct SaveOptions {
  std::optional<FileFormat> format;  // the file's own format when absent
  bool keepBackup = true;            // the previous file becomes NAME.bak beside it
  bool replaceReadOnly = false;      // a read-only file is refused otherwise
  // Simulates a full disk: writing fails once this many bytes went to the temporary file.
  std::uint64_t failAfterBytes = UINT64_MAX;
  // Told of each temporary file of an earlier save that never finished, once the save removed it.
  std::function<void(const std::filesystem::path&)> leftoverRemoved = nullptr;
};

class Document;

struct ReadResult {
  std::unique_ptr<Document> document;  // null when the file could not be read
  std::string error;
};

class Document {
 public:
  // Reads a whole file held in memory; the document keeps the bytes.
  static ReadResult read(std::string bytes);
  static ReadResult readFile(const std::filesystem::path& path);
  // A new ASCII drawing with only a HEADER ($ACADVER, $DWGCODEPAGE, $HANDSEED); the sections
  // a drawing needs are added by whoever fills it. The version is "AC1009" to "AC1032".
  static std::unique_ptr<Document> create(std::string_view version);

  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  FileFormat format() const noexcept { return format_; }
  // $ACADVER ("AC1032"); "AC1009" for a file without one.
  const std::string& version() const noexcept { return version_; }
  bool isUnicodeVersion() const noexcept { return version_ >= "AC1021"; }
  const TextCodec& codec() const noexcept { return codec_; }
  std::string_view lineEnding() const noexcept { return crlf_ ? "\r\n" : "\n"; }

  // --- structure
  const std::vector<Section>& sections() const noexcept { return sections_; }
  std::string_view sectionName(std::size_t section) const;
  std::optional<std::size_t> findSection(std::string_view name) const;
  // The 999 comments before the first section, if any.
  RecordId prologue() const noexcept { return prologue_; }
  RecordId eofRecord() const noexcept { return eof_; }
  // Every record as the file has them: the prologue, each section's SECTION record, records
  // and ENDSEC, and the EOF record. Removed records are left out.
  std::vector<RecordId> fileOrder() const;
  // Adds an empty section; `position` counts sections.
  std::size_t insertSection(std::size_t position, std::string_view name);

  // --- records
  std::span<const Tag> tags(RecordId id) const;
  std::size_t tagCount(RecordId id) const { return tags(id).size(); }
  // The value of the record's 0 tag, blanks trimmed.
  std::string_view recordType(RecordId id) const;
  bool isErased(RecordId id) const { return records_.at(id).erased; }
  // The section holding the record; none for the prologue and EOF records.
  std::optional<std::size_t> sectionOf(RecordId id) const;
  // Lets go of the tags of a record that is as read: it keeps only where its bytes are, and
  // its tags are read from there again when asked for. A drawing loaded into objects keeps
  // few of its tags this way; writing such a record back in its own format copies its bytes.
  void release(RecordId id);
  bool isReleased(RecordId id) const {
    const Record& record = records_.at(id);
    return record.chunk == kNoChunk && (record.edited == 0 || record.readAgain);
  }
  std::optional<RecordId> findHandle(std::uint64_t handle) const;
  std::uint64_t maxHandle() const;

  // --- values
  // The value bytes as stored: an ASCII value line, or the raw bytes of a binary value.
  std::string_view bytes(const Tag& tag) const noexcept;
  // The value as an ASCII file spells it (binary numbers formatted, binary data in hex).
  std::string valueText(const Tag& tag) const;
  void appendValueText(const Tag& tag, std::string& out) const;
  std::optional<double> toDouble(const Tag& tag) const noexcept;
  std::optional<std::int64_t> toInteger(const Tag& tag) const noexcept;
  std::optional<std::uint64_t> toHandle(const Tag& tag) const noexcept;
  // Text decoded from the file's encoding, \U+XXXX escapes included.
  std::wstring text(const Tag& tag) const;
  // The text a drawing holds: decoded, and its caret escapes too (see textpieces.h).
  std::wstring hostText(const Tag& tag) const;
  std::string encodeText(std::wstring_view text) const { return codec_.encode(text); }

  // --- editing (an index or id out of range, or a value the group code cannot hold, throws
  // std::out_of_range or std::invalid_argument)
  void setValue(RecordId id, std::size_t index, std::string_view valueText);
  void setText(RecordId id, std::size_t index, std::wstring_view text);
  void setDouble(RecordId id, std::size_t index, double value);
  void setInteger(RecordId id, std::size_t index, std::int64_t value);
  void setHandle(RecordId id, std::size_t index, std::uint64_t value);
  void insertTag(RecordId id, std::size_t index, const NewTag& tag);
  void removeTag(RecordId id, std::size_t index);
  // Adds a record (its first tag must have code 0) at `position` among the section's records.
  RecordId insertRecord(std::size_t section, std::size_t position, std::span<const NewTag> tags);
  void removeRecord(RecordId id);

  // --- header
  RecordId headerRecord() const;
  std::optional<HeaderVariable> headerVariable(std::string_view name) const;
  // Replaces the variable's value tags, or adds the variable at the end of the header.
  // Needs a HEADER section.
  void setHeaderVariable(std::string_view name, std::span<const NewTag> values);
  // A handle no record uses, from $HANDSEED, which is raised past it.
  std::uint64_t allocateHandle();

  // --- output
  Status write(ByteSink& sink, std::optional<FileFormat> format = std::nullopt) const;
  // Atomic: a temporary file in the same folder, flushed to disk, then renamed over the
  // drawing (over the file it leads to, for a symbolic link). On failure every file is as it
  // was and no temporary file is left.
  Status save(const std::filesystem::path& path, const SaveOptions& options = {}) const;
  // Whether a save to the path could go ahead, checked before any file is made or changed.
  static Status checkSave(const std::filesystem::path& path, const SaveOptions& options = {});

 private:
  friend class Reader;
  friend class Writer;

  static constexpr std::uint16_t kNoSection = 0xFFFF;
  static constexpr std::uint32_t kNoChunk = 0xFFFFFFFFu;
  struct Record {
    // Tags as read, held in a chunk: the first one's place in it and their number. Released
    // (no chunk): the record's bytes in the file, [first, count).
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::uint32_t edited = 0;  // 1 + index into editedTags_ once they were changed or read again
    std::uint32_t chunk = kNoChunk;
    std::uint16_t section = kNoSection;
    bool erased = false;
    bool readAgain = false;  // its edited tags are those of the file, read again after release
  };
  // Tags as read, in blocks that are freed once none of their records needs them. A record's
  // tags never straddle two blocks.
  struct TagChunk {
    std::vector<Tag> tags;
    std::uint32_t holders = 0;  // records whose tags are here
  };
  static constexpr std::size_t kChunkTags = 1 << 13;

  Document() = default;
  // Adds a tag read from the file to the open record (a new one when its count is 0).
  void holdTag(Record& record, const Tag& tag) {
    if (record.count != 0) {
      std::vector<Tag>& block = chunks_.back().tags;
      if (block.size() < block.capacity()) {
        block.push_back(tag);
        ++record.count;
        return;
      }
    }
    holdTagInNewPlace(record, tag);
  }
  // A record's first tag, or one that does not fit in the block.
  void holdTagInNewPlace(Record& record, const Tag& tag);
  // The tags of the file's bytes [begin, end), read as the reader read them.
  void readTagsAt(std::uint32_t begin, std::uint32_t end, std::vector<Tag>& out) const;
  // The record's tags without keeping those of a released record: `scratch` holds them then.
  std::span<const Tag> peekTags(RecordId id, std::vector<Tag>& scratch) const;
  std::vector<Tag>& editableTags(RecordId id);
  Tag storeValue(std::int16_t code, std::string_view valueText);
  void checkValue(std::int16_t code, std::string_view valueText) const;
  void touchHandleTag(std::int16_t code) const;
  RecordId addRecord(std::span<const NewTag> tags, std::uint16_t section);
  void indexHandles() const;

  std::string source_;  // the file's bytes
  std::string store_;   // values set or added after reading
  std::vector<TagChunk> chunks_;
  // Reading a released record's tags again changes neither what the document holds nor
  // what it writes, so it is done on const access.
  mutable std::vector<Record> records_;
  // A deque: reading a record again adds to it while a caller may hold another's tags.
  mutable std::deque<std::vector<Tag>> editedTags_;
  std::vector<Section> sections_;
  RecordId prologue_ = kNoRecord;
  RecordId eof_ = kNoRecord;

  FileFormat format_ = FileFormat::Ascii;
  std::uint32_t prefixSize_ = 0;  // byte-order mark or binary sentinel
  std::uint32_t tailStart_ = 0;   // bytes after EOF, kept as they are
  bool crlf_ = false;
  bool paddedCodes_ = false;      // group codes right-aligned in three columns
  bool twoByteCodes_ = true;      // binary files from R13 on
  std::string version_;
  TextCodec codec_;

  mutable core::HandleIndex byHandle_;  // values: record ids
  mutable std::uint64_t highestHandle_ = 0;
  mutable bool handlesIndexed_ = false;
  mutable bool highestKnown_ = false;
  std::uint64_t lastAllocated_ = 0;
};

}  // namespace corvane::dxf
