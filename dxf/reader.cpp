#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "dxf/document.h"
#include "dxf/groupcode.h"
#include "dxf/numbertext.h"

namespace corvane::dxf {

namespace {

constexpr std::string_view kBinarySentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);
constexpr std::string_view kByteOrderMark("\xEF\xBB\xBF", 3);

// A piece of the file for an error message: short, and only printable ASCII.
std::string quoted(std::string_view text) {
  constexpr std::size_t kMax = 40;
  std::string out = "'";
  for (std::size_t i = 0; i < text.size() && i < kMax; ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    out.push_back(c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?');
  }
  if (text.size() > kMax) out += "...";
  return out + "'";
}

const char* kindName(ValueKind kind) {
  return kind == ValueKind::Double ? "a real number" : "an integer";
}

// Checks the spelling of a number without converting it. Only a real number with an exponent
// or very many digits can be out of range; those go through the full conversion.
bool validNumber(ValueKind kind, std::string_view text) noexcept {
  const char* p = text.data();
  const char* end = p + text.size();
  while (p < end && (*p == ' ' || *p == '\t')) ++p;
  while (end > p && (end[-1] == ' ' || end[-1] == '\t')) --end;
  const char* first = p;
  if (p < end && (*p == '-' || *p == '+')) ++p;
  const char* digits = p;
  while (p < end && *p >= '0' && *p <= '9') ++p;
  std::size_t count = static_cast<std::size_t>(p - digits);
  if (kind != ValueKind::Double) {
    if (p != end || count == 0) return false;
    if (count > 18) {
      std::int64_t value = 0;
      return kind == ValueKind::Int64 && parseInteger({first, static_cast<std::size_t>(end - first)}, value);
    }
    std::int64_t value = 0;
    for (const char* d = digits; d < end; ++d) value = value * 10 + (*d - '0');
    if (*first == '-') value = -value;
    switch (kind) {
      case ValueKind::Int16: return value >= -32768 && value <= 65535;
      case ValueKind::Int32: return value >= -2147483648ll && value <= 4294967295ll;
      case ValueKind::Bool: return value >= -128 && value <= 255;
      default: return true;
    }
  }
  if (p < end && *p == '.') {
    const char* fraction = ++p;
    while (p < end && *p >= '0' && *p <= '9') ++p;
    count += static_cast<std::size_t>(p - fraction);
  }
  if (p == end && count > 0 && count < 300) return true;
  double value = 0;
  return parseDouble({first, static_cast<std::size_t>(end - first)}, value);
}

// The line feeds in [p, end). Counted in byte-wide lanes that are summed before they can
// overflow, which the compiler turns into whole-register compares; a count straight into a
// size_t widens every byte first and takes several times as long on a large file.
std::size_t countLineFeeds(const char* p, const char* end) noexcept {
  constexpr std::size_t kLanes = 64;
  constexpr std::size_t kRounds = 255;  // a lane counts at most one line feed a round
  std::size_t total = 0;
  while (static_cast<std::size_t>(end - p) >= kLanes) {
    unsigned char lanes[kLanes] = {};
    const std::size_t rounds = std::min(kRounds, static_cast<std::size_t>(end - p) / kLanes);
    for (std::size_t r = 0; r < rounds; ++r, p += kLanes) {
      for (std::size_t j = 0; j < kLanes; ++j) lanes[j] = static_cast<unsigned char>(lanes[j] + (p[j] == '\n'));
    }
    for (const unsigned char lane : lanes) total += lane;
  }
  return total + static_cast<std::size_t>(std::count(p, end, '\n'));
}

// Group code lines are short: blanks, an optional minus, digits, blanks. Returns false for
// anything else or a code outside 16 bits.
bool parseCode(const char* p, const char* end, int& code) noexcept {
  while (p < end && (*p == ' ' || *p == '\t')) ++p;
  while (end > p && (end[-1] == ' ' || end[-1] == '\t')) --end;
  bool negative = false;
  if (p < end && *p == '-') {
    negative = true;
    ++p;
  }
  if (p == end || end - p > 6) return false;
  int value = 0;
  for (; p < end; ++p) {
    if (*p < '0' || *p > '9') return false;
    value = value * 10 + (*p - '0');
  }
  if (negative) value = -value;
  if (value < -32768 || value > 32767) return false;
  code = value;
  return true;
}

}  // namespace

// Turns the bytes of a file into a Document: tags first, then records, sections and the few
// header variables that decide how text is encoded.
class Reader {
 public:
  explicit Reader(std::string bytes) : doc_(new Document()) { doc_->source_ = std::move(bytes); }

  ReadResult run() {
    const std::string& src = doc_->source_;
    if (src.size() >= Tag::kNotRead) return failed("the file is larger than 4 GiB, which is not supported");
    const bool binary = src.compare(0, 18, kBinarySentinel.substr(0, 18)) == 0;
    if (binary ? !scanBinary() : !scanAscii()) return failed(std::move(error_));
    if (!finishStructure()) return failed(std::move(error_));
    readHeader();
    return {std::move(doc_), {}};
  }

 private:
  ReadResult failed(std::string message) { return {nullptr, std::move(message)}; }

  bool fail(std::string message) {
    error_ = std::move(message);
    return false;
  }

  // Where a tag starts, as a person looks for it: a line in ASCII, a byte offset in binary.
  std::string where(std::size_t tagIndex) const {
    if (doc_->format_ == FileFormat::Ascii) return "line " + std::to_string(tagIndex * 2 + 1);
    return "byte " + std::to_string(doc_->tags_[tagIndex].start());
  }

  // Records of drawings hold a dozen tags or more; room for one per eight tags spares the
  // record list its copies as it grows, and costs little when records are longer.
  void reserveRecords() { doc_->records_.reserve(doc_->tags_.capacity() / 8 + 16); }

  // Every 0 tag opens a record; tags before the first one may only be comments.
  bool addTag(const Tag& tag) {
    auto& tags = doc_->tags_;
    auto& records = doc_->records_;
    const auto index = static_cast<std::uint32_t>(tags.size());
    tags.push_back(tag);
    if (tag.code == 0) {
      if (!records.empty() && !placeRecord(records.size() - 1)) return false;
      Document::Record record;
      record.first = index;
      record.count = 1;
      records.push_back(record);
      return true;
    }
    if (records.empty()) {
      if (tag.code != 999)
        return fail(where(index) + ": expected group code 0 or a 999 comment, found group code " +
                    std::to_string(tag.code));
      records.push_back(Document::Record{index, 0, 0, Document::kNoSection, false});
    }
    ++records.back().count;
    return true;
  }

  std::string sectionName(const Section& section) const {
    const auto tags = doc_->tags(section.begin);
    return std::string(trimBlanks(doc_->bytes(tags[1])));
  }

  bool isEof(const Tag& tag) const { return tag.code == 0 && trimBlanks(doc_->bytes(tag)) == "EOF"; }

  bool scanAscii() {
    Document& doc = *doc_;
    doc.format_ = FileFormat::Ascii;
    const std::string& src = doc.source_;
    const char* base = src.data();
    const std::size_t n = src.size();
    std::size_t pos = src.compare(0, 3, kByteOrderMark) == 0 ? 3 : 0;
    doc.prefixSize_ = static_cast<std::uint32_t>(pos);
    if (std::all_of(base + pos, base + n, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }))
      return fail("empty file: no DXF tags");

    // Two lines a tag, so the line count sizes the tag list once.
    doc.tags_.reserve(countLineFeeds(base + pos, base + n) / 2 + 1);
    reserveRecords();
    const char* firstEnd = static_cast<const char*>(std::memchr(base + pos, '\n', n - pos));
    doc.crlf_ = firstEnd != nullptr && firstEnd > base + pos && firstEnd[-1] == '\r';
    doc.paddedCodes_ = base[pos] == ' ';

    while (pos < n) {
      const std::size_t index = doc.tags_.size();
      const char* codeLine = base + pos;
      // Code lines are a few bytes long: looking at them directly beats a call per line.
      const char* codeEnd = codeLine;
      while (codeEnd < base + n && *codeEnd != '\n') ++codeEnd;
      if (codeEnd == base + n) codeEnd = nullptr;
      const char* codeTextEnd = codeEnd != nullptr ? codeEnd : base + n;
      if (codeTextEnd > codeLine && codeTextEnd[-1] == '\r') --codeTextEnd;
      int code = 0;
      if (!parseCode(codeLine, codeTextEnd, code))
        return fail(where(index) + ": expected a group code, found " +
                    quoted(std::string_view(codeLine, static_cast<std::size_t>(codeTextEnd - codeLine))));
      if (codeEnd == nullptr || codeEnd + 1 == base + n)
        return fail(where(index) + ": truncated file: group code " + std::to_string(code) + " has no value");

      const std::size_t valuePos = static_cast<std::size_t>(codeEnd + 1 - base);
      if (valuePos - pos > Tag::kMaxLead)
        return fail(where(index) + ": the line of group code " + std::to_string(code) + " is longer than " +
                    std::to_string(Tag::kMaxLead) + " bytes");
      const char* valueEnd = static_cast<const char*>(std::memchr(base + valuePos, '\n', n - valuePos));
      std::size_t valueSize;
      std::uint8_t lineEnd;
      if (valueEnd != nullptr) {
        valueSize = static_cast<std::size_t>(valueEnd - (base + valuePos));
        lineEnd = 1;
      } else {
        valueSize = n - valuePos;
        lineEnd = 0;
      }
      if (valueSize > 0 && base[valuePos + valueSize - 1] == '\r') {
        --valueSize;
        ++lineEnd;
      }

      const Tag tag{.value = static_cast<std::uint32_t>(valuePos),
                    .size = static_cast<std::uint32_t>(valueSize),
                    .code = static_cast<std::int16_t>(code),
                    .packed = Tag::pack(TagForm::Text, lineEnd, true, static_cast<unsigned>(valuePos - pos))};
      const ValueKind kind = valueKind(code);
      if (isNumeric(kind) && !validNumber(kind, {base + valuePos, valueSize}))
        return fail("line " + std::to_string(index * 2 + 2) + ": expected " + kindName(kind) + " for group code " +
                    std::to_string(code) + ", found " + quoted({base + valuePos, valueSize}));
      if (!addTag(tag)) return false;
      pos = tag.end();
      if (isEof(tag)) break;
    }
    doc.tailStart_ = static_cast<std::uint32_t>(pos);
    return true;
  }

  bool scanBinary() {
    Document& doc = *doc_;
    doc.format_ = FileFormat::Binary;
    const std::string& src = doc.source_;
    const std::size_t n = src.size();
    if (src.compare(0, kBinarySentinel.size(), kBinarySentinel) != 0)
      return fail("byte 18: damaged binary DXF sentinel: expected CR LF SUB NUL after 'AutoCAD Binary DXF'");
    std::size_t pos = kBinarySentinel.size();
    doc.prefixSize_ = static_cast<std::uint32_t>(pos);
    if (n < pos + 2) return fail("byte " + std::to_string(pos) + ": truncated file: no DXF tags after the sentinel");
    // The first tag is (0, "SECTION") or a 999 comment: two zero bytes, or 999 in two bytes,
    // mean two-byte group codes; one-byte files have 0 then 'S', or 255 then the code.
    const auto b0 = static_cast<unsigned char>(src[pos]);
    const auto b1 = static_cast<unsigned char>(src[pos + 1]);
    doc.twoByteCodes_ = (b0 == 0 && b1 == 0) || (b0 == 0xE7 && b1 == 0x03);
    // Binary tags vary too much in size to guess their number; a first pass counts them so
    // that the tag list is allocated once, at its final size.
    std::size_t count = 0;
    Tag tag;
    for (std::size_t at = pos; at < n && decodeBinaryTag(at, tag, false); at = tag.end()) {
      ++count;
      if (isEof(tag)) break;
    }
    doc.tags_.reserve(count + 1);
    reserveRecords();
    while (pos < n) {
      if (!decodeBinaryTag(pos, tag, true) || !addTag(tag)) return false;
      pos = tag.end();
      if (isEof(tag)) break;
    }
    doc.tailStart_ = static_cast<std::uint32_t>(pos);
    return true;
  }

  // The tag at `pos`; false when the file ends inside it (with the reason when `report`).
  bool decodeBinaryTag(std::size_t pos, Tag& tag, bool report) {
    const std::string& src = doc_->source_;
    const std::size_t n = src.size();
    const auto* base = reinterpret_cast<const unsigned char*>(src.data());
    const std::size_t start = pos;
    int code;
    if (doc_->twoByteCodes_) {
      if (n - pos < 2) return report && fail("byte " + std::to_string(pos) + ": truncated file: half a group code");
      code = static_cast<std::int16_t>(base[pos] | (base[pos + 1] << 8));
      pos += 2;
    } else if (base[pos] == 255) {
      if (n - pos < 3) return report && fail("byte " + std::to_string(pos) + ": truncated file: half a group code");
      code = static_cast<std::int16_t>(base[pos + 1] | (base[pos + 2] << 8));
      pos += 3;
    } else {
      code = base[pos++];
    }
    tag.code = static_cast<std::int16_t>(code);
    std::size_t size = 0;
    TagForm form = TagForm::Text;
    switch (valueKind(code)) {
      case ValueKind::String: {
        const void* zero = std::memchr(base + pos, 0, n - pos);
        if (zero == nullptr)
          return report && fail("byte " + std::to_string(start) + ": truncated file: the text of group code " +
                                std::to_string(code) + " has no terminating zero byte");
        size = static_cast<std::size_t>(static_cast<const unsigned char*>(zero) - (base + pos));
        form = TagForm::BinaryString;
        break;
      }
      case ValueKind::Chunk:
        if (pos >= n)
          return report && fail("byte " + std::to_string(start) + ": truncated file: binary data of group code " +
                                std::to_string(code) + " has no length byte");
        size = base[pos++];
        form = TagForm::BinaryChunk;
        break;
      case ValueKind::Double: size = 8; form = TagForm::BinaryDouble; break;
      case ValueKind::Int16: size = 2; form = TagForm::BinaryInt16; break;
      case ValueKind::Int32: size = 4; form = TagForm::BinaryInt32; break;
      case ValueKind::Int64: size = 8; form = TagForm::BinaryInt64; break;
      case ValueKind::Bool: size = 1; form = TagForm::BinaryBool; break;
    }
    if (form != TagForm::BinaryString && n - pos < size)
      return report && fail("byte " + std::to_string(start) + ": truncated file: group code " + std::to_string(code) +
                            " needs " + std::to_string(size) + " value bytes, " + std::to_string(n - pos) + " left");
    tag.value = static_cast<std::uint32_t>(pos);
    // At most three code bytes and a length byte lead to the value.
    tag.packed = Tag::pack(form, 0, true, static_cast<unsigned>(pos - start));
    tag.size = static_cast<std::uint32_t>(size);
    return true;
  }

  // Places a complete record: sections open and close, everything else goes into the open
  // section. Done while the record's bytes are still in the cache.
  bool placeRecord(std::size_t r) {
    Document& doc = *doc_;
    auto& records = doc.records_;
    const auto id = static_cast<RecordId>(r);
    const std::uint32_t first = records[r].first;
    if (doc.tags_[first].code != 0) {
      doc.prologue_ = id;
      return true;
    }
    const std::string_view type = doc.recordType(id);
    if (!inside_) {
      if (type == "SECTION") {
        if (records[r].count < 2 || doc.tags_[first + 1].code != 2)
          return fail(where(first) + ": expected the section name (group code 2) after SECTION");
        if (doc.sections_.size() + 1 >= Document::kNoSection) return fail(where(first) + ": too many sections");
        section_ = Section{id, {}, kNoRecord};
        records[r].section = static_cast<std::uint16_t>(doc.sections_.size());
        inside_ = true;
      } else if (type == "EOF") {
        doc.eof_ = id;
      } else {
        return fail(where(first) + ": expected SECTION or EOF, found " + quoted(type));
      }
      return true;
    }
    if (type == "ENDSEC") {
      section_.end = id;
      records[r].section = static_cast<std::uint16_t>(doc.sections_.size());
      doc.sections_.push_back(std::move(section_));
      inside_ = false;
    } else if (type == "SECTION" || type == "EOF") {
      return fail(where(first) + ": section " + sectionName(section_) + " begun on " +
                  where(records[section_.begin].first) + " has no ENDSEC before this " + std::string(type));
    } else {
      records[r].section = static_cast<std::uint16_t>(doc.sections_.size());
      section_.records.push_back(id);
    }
    return true;
  }

  bool finishStructure() {
    Document& doc = *doc_;
    if (!doc.records_.empty() && !placeRecord(doc.records_.size() - 1)) return false;
    if (inside_)
      return fail("truncated file: section " + sectionName(section_) + " begun on " +
                  where(doc.records_[section_.begin].first) + " has no ENDSEC");
    if (doc.eof_ == kNoRecord) return fail("truncated file: no EOF after the last section");
    return true;
  }

  void readHeader() {
    Document& doc = *doc_;
    std::string_view codePage;
    if (const auto version = doc.headerVariable("$ACADVER"); version && version->last > version->first)
      doc.version_ = trimBlanks(doc.bytes(doc.tags(doc.headerRecord())[version->first]));
    if (doc.version_.empty()) doc.version_ = "AC1009";
    if (const auto page = doc.headerVariable("$DWGCODEPAGE"); page && page->last > page->first)
      codePage = trimBlanks(doc.bytes(doc.tags(doc.headerRecord())[page->first]));
    if (doc.isUnicodeVersion()) {
      doc.codec_ = TextCodec::utf8();
    } else if (codePage.empty()) {
      doc.codec_ = TextCodec::forCodePage(&CodePage::ansi1252());
    } else {
      doc.codec_ = TextCodec::forCodePage(CodePage::find(codePage));
    }
    if (doc.format_ == FileFormat::Ascii) return;
    doc.crlf_ = true;      // for a later ASCII copy, as the host writes them
    doc.paddedCodes_ = true;
  }

  std::unique_ptr<Document> doc_;
  std::string error_;
  bool inside_ = false;  // a section is open
  Section section_;
};

ReadResult Document::read(std::string bytes) { return Reader(std::move(bytes)).run(); }

ReadResult Document::readFile(const std::filesystem::path& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return {nullptr, "cannot open '" + path.string() + "': " + std::strerror(errno)};
  struct stat info {};
  std::string bytes;
  std::string error;
  if (::fstat(fd, &info) != 0) {
    error = std::strerror(errno);
  } else if (!S_ISREG(info.st_mode)) {
    error = "not a regular file";
  } else {
    bytes.resize(static_cast<std::size_t>(info.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) {
        error = std::strerror(errno);
        break;
      }
      if (got == 0) {
        bytes.resize(done);  // the file shrank while being read
        break;
      }
      done += static_cast<std::size_t>(got);
    }
  }
  ::close(fd);
  if (!error.empty()) return {nullptr, "cannot read '" + path.string() + "': " + error};
  ReadResult result = read(std::move(bytes));
  if (!result.document) result.error = path.filename().string() + ": " + result.error;
  return result;
}

}  // namespace corvane::dxf
