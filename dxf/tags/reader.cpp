#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/textutil.h"
#include "dxf/tags/document.h"
#include "dxf/tags/groupcode.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/tagscan.h"

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
    doc_->records_.shrink_to_fit();
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
  std::string where(const Tag& tag) const {
    if (doc_->format_ == FileFormat::Binary) return "byte " + std::to_string(tag.start());
    const char* base = doc_->source_.data();
    return "line " + std::to_string(countLineFeeds(base, base + tag.start()) + 1);
  }
  std::string where(RecordId record) const { return where(doc_->tags(record).front()); }
  // The code line of the next ASCII tag, which has not been stored.
  std::string line(std::size_t lineNumber) const { return "line " + std::to_string(lineNumber); }

  // Every 0 tag opens a record; tags before the first one may only be comments.
  bool addTag(const Tag& tag) {
    auto& records = doc_->records_;
    if (tag.code == 0) {
      if (!records.empty() && !placeRecord(records.size() - 1)) return false;
      records.emplace_back();
    } else if (records.empty()) {
      if (tag.code != 999)
        return fail(where(tag) + ": expected group code 0 or a 999 comment, found group code " +
                    std::to_string(tag.code));
      records.emplace_back();
    }
    doc_->holdTag(records.back(), tag);
    return true;
  }

  std::string sectionName(const Section& section) const {
    const auto tags = doc_->tags(section.begin);
    return std::string(core::trimBlanks(doc_->bytes(tags[1])));
  }

  bool isEof(const Tag& tag) const { return tag.code == 0 && core::trimBlanks(doc_->bytes(tag)) == "EOF"; }

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

    // Records of drawings hold a dozen tags or more, two lines each: room for one record per
    // sixteen lines spares the record list its copies as it grows. What is left over goes
    // once the file is read.
    doc.records_.reserve(countLineFeeds(base + pos, base + n) / 16 + 16);
    const char* firstEnd = static_cast<const char*>(std::memchr(base + pos, '\n', n - pos));
    doc.crlf_ = firstEnd != nullptr && firstEnd > base + pos && firstEnd[-1] == '\r';
    doc.paddedCodes_ = base[pos] == ' ';

    for (std::size_t index = 0; pos < n; ++index) {
      const scan::AsciiTag found = scan::asciiTagAt(base, n, pos);
      const std::size_t codeLine = index * 2 + 1;
      switch (found.found) {
        case scan::Found::BadCode:
          return fail(line(codeLine) + ": expected a group code, found " +
                      quoted(std::string_view(base + pos, static_cast<std::size_t>(found.codeTextEnd - (base + pos)))));
        case scan::Found::NoValue:
          return fail(line(codeLine) + ": truncated file: group code " + std::to_string(found.code) + " has no value");
        case scan::Found::LongLead:
          return fail(line(codeLine) + ": the line of group code " + std::to_string(found.code) +
                      " is longer than " + std::to_string(Tag::kMaxLead) + " bytes");
        default: break;
      }
      const Tag& tag = found.tag;
      const ValueKind kind = valueKind(found.code);
      if (isNumeric(kind) && !validNumber(kind, {base + tag.value, tag.size}))
        return fail(line(codeLine + 1) + ": expected " + kindName(kind) + " for group code " +
                    std::to_string(found.code) + ", found " + quoted({base + tag.value, tag.size}));
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
    while (pos < n) {
      const scan::BinaryTag found = scan::binaryTagAt(src.data(), n, pos, doc.twoByteCodes_);
      if (found.found != scan::Found::Tag) return fail(truncated(pos, found));
      if (!addTag(found.tag)) return false;
      pos = found.tag.end();
      if (isEof(found.tag)) break;
    }
    doc.tailStart_ = static_cast<std::uint32_t>(pos);
    return true;
  }

  // Why the binary tag at `pos` is cut short.
  std::string truncated(std::size_t pos, const scan::BinaryTag& found) const {
    const std::string at = "byte " + std::to_string(pos) + ": truncated file: ";
    const std::string code = std::to_string(found.code);
    if (!found.codeRead) return at + "half a group code";
    if (found.needed > 0)
      return at + "group code " + code + " needs " + std::to_string(found.needed) + " value bytes, " +
             std::to_string(doc_->source_.size() - found.valueAt) + " left";
    if (valueKind(found.code) == ValueKind::Chunk) return at + "binary data of group code " + code + " has no length byte";
    return at + "the text of group code " + code + " has no terminating zero byte";
  }

  // Places a complete record: sections open and close, everything else goes into the open
  // section. Done while the record's bytes are still in the cache.
  bool placeRecord(std::size_t r) {
    Document& doc = *doc_;
    auto& records = doc.records_;
    const auto id = static_cast<RecordId>(r);
    const auto tags = doc.tags(id);
    if (tags.front().code != 0) {
      doc.prologue_ = id;
      return true;
    }
    const std::string_view type = doc.recordType(id);
    if (!inside_) {
      if (type == "SECTION") {
        if (tags.size() < 2 || tags[1].code != 2)
          return fail(where(id) + ": expected the section name (group code 2) after SECTION");
        if (doc.sections_.size() + 1 >= Document::kNoSection) return fail(where(id) + ": too many sections");
        section_ = Section{id, {}, kNoRecord};
        records[r].section = static_cast<std::uint16_t>(doc.sections_.size());
        inside_ = true;
      } else if (type == "EOF") {
        doc.eof_ = id;
      } else {
        return fail(where(id) + ": expected SECTION or EOF, found " + quoted(type));
      }
      return true;
    }
    if (type == "ENDSEC") {
      section_.end = id;
      records[r].section = static_cast<std::uint16_t>(doc.sections_.size());
      doc.sections_.push_back(std::move(section_));
      inside_ = false;
    } else if (type == "SECTION" || type == "EOF") {
      return fail(where(id) + ": section " + sectionName(section_) + " begun on " +
                  where(section_.begin) + " has no ENDSEC before this " + std::string(type));
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
                  where(section_.begin) + " has no ENDSEC");
    if (doc.eof_ == kNoRecord) return fail("truncated file: no EOF after the last section");
    return true;
  }

  void readHeader() {
    Document& doc = *doc_;
    std::string_view codePage;
    if (const auto version = doc.headerVariable("$ACADVER"); version && version->last > version->first)
      doc.version_ = core::trimBlanks(doc.bytes(doc.tags(doc.headerRecord())[version->first]));
    if (doc.version_.empty()) doc.version_ = "AC1009";
    if (const auto page = doc.headerVariable("$DWGCODEPAGE"); page && page->last > page->first)
      codePage = core::trimBlanks(doc.bytes(doc.tags(doc.headerRecord())[page->first]));
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
