#include "dxf/tags/document.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "core/textutil.h"
#include "dxf/tags/filesink.h"
#include "dxf/tags/groupcode.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordview.h"
#include "dxf/tags/tagscan.h"
#include "dxf/tags/textpieces.h"

namespace corvane::dxf {

namespace {

template <typename T>
T loadLittleEndian(const char* p) noexcept {
  // Binary DXF is little-endian, as is every machine this builds for.
  T value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

bool fitsKind(ValueKind kind, std::int64_t value) noexcept {
  switch (kind) {
    case ValueKind::Int16: return value >= -32768 && value <= 65535;
    case ValueKind::Int32: return value >= std::numeric_limits<std::int32_t>::min() && value <= 0xFFFFFFFFll;
    case ValueKind::Bool: return value >= -128 && value <= 255;
    default: return true;
  }
}

}  // namespace

NewTag NewTag::real(std::int16_t code, double value) { return {code, formatDouble(value)}; }

NewTag NewTag::integer(std::int16_t code, std::int64_t value) {
  NewTag tag{code, {}};
  appendInteger(tag.value, value);
  return tag;
}

NewTag NewTag::handle(std::int16_t code, std::uint64_t value) { return {code, formatHandle(value)}; }

std::unique_ptr<Document> Document::create(std::string_view version) {
  const bool valid = version.size() == 6 && version.starts_with("AC") &&
                     version.find_first_not_of("0123456789", 2) == std::string_view::npos;
  if (!valid) throw std::invalid_argument("not a DXF version: '" + std::string(version) + "'");
  // The host writes CRLF line ends and right-aligned group codes; new drawings look the same.
  std::string text = "  0\r\nSECTION\r\n  2\r\nHEADER\r\n  9\r\n$ACADVER\r\n  1\r\n";
  text += version;
  text += "\r\n  9\r\n$DWGCODEPAGE\r\n  3\r\nANSI_1252\r\n  9\r\n$HANDSEED\r\n  5\r\n1\r\n"
          "  0\r\nENDSEC\r\n  0\r\nEOF\r\n";
  return std::move(read(std::move(text)).document);
}

// --- structure

std::string_view Document::sectionName(std::size_t section) const {
  const auto list = tags(sections_.at(section).begin);
  return list.size() > 1 ? core::trimBlanks(bytes(list[1])) : std::string_view();
}

std::optional<std::size_t> Document::findSection(std::string_view name) const {
  for (std::size_t i = 0; i < sections_.size(); ++i)
    if (sectionName(i) == name) return i;
  return std::nullopt;
}

std::vector<RecordId> Document::fileOrder() const {
  std::vector<RecordId> out;
  if (prologue_ != kNoRecord) out.push_back(prologue_);
  for (const auto& section : sections_) {
    out.push_back(section.begin);
    for (const RecordId id : section.records)
      if (!records_[id].erased) out.push_back(id);
    out.push_back(section.end);
  }
  if (eof_ != kNoRecord) out.push_back(eof_);
  return out;
}

std::size_t Document::insertSection(std::size_t position, std::string_view name) {
  if (position > sections_.size()) throw std::out_of_range("section position out of range");
  if (sections_.size() >= kNoSection) throw std::length_error("too many sections");
  const NewTag head[] = {{0, "SECTION"}, {2, std::string(name)}};
  const NewTag tail[] = {{0, "ENDSEC"}};
  Section section;
  section.begin = addRecord(head, static_cast<std::uint16_t>(position));
  section.end = addRecord(tail, static_cast<std::uint16_t>(position));
  sections_.insert(sections_.begin() + static_cast<std::ptrdiff_t>(position), std::move(section));
  for (std::size_t s = position; s < sections_.size(); ++s) {
    const auto number = static_cast<std::uint16_t>(s);
    records_[sections_[s].begin].section = number;
    records_[sections_[s].end].section = number;
    for (RecordId id : sections_[s].records) records_[id].section = number;
  }
  return position;
}

// --- records

std::span<const Tag> Document::tags(RecordId id) const {
  Record& record = records_.at(id);
  if (record.edited == 0 && record.chunk == kNoChunk) {
    std::vector<Tag> list;
    readTagsAt(record.first, record.count, list);
    editedTags_.push_back(std::move(list));
    record.edited = static_cast<std::uint32_t>(editedTags_.size());
    record.readAgain = true;
  }
  if (record.edited != 0) return editedTags_[record.edited - 1];
  return {chunks_[record.chunk].tags.data() + record.first, record.count};
}

std::span<const Tag> Document::peekTags(RecordId id, std::vector<Tag>& scratch) const {
  const Record& record = records_.at(id);
  if (record.edited != 0 || record.chunk != kNoChunk) return tags(id);
  readTagsAt(record.first, record.count, scratch);
  return scratch;
}

void Document::readTagsAt(std::uint32_t begin, std::uint32_t end, std::vector<Tag>& out) const {
  out.clear();
  const char* base = source_.data();
  const std::size_t n = source_.size();
  for (std::uint32_t at = begin; at < end;) {
    // The reader checked these bytes: every tag is found again as it was then.
    const Tag tag = format_ == FileFormat::Ascii ? scan::asciiTagAt(base, n, at).tag
                                                 : scan::binaryTagAt(base, n, at, twoByteCodes_).tag;
    if (tag.end() <= at) break;
    out.push_back(tag);
    at = tag.end();
  }
}

void Document::holdTagInNewPlace(Record& record, const Tag& tag) {
  const bool fresh = record.count == 0;
  if (chunks_.empty() || chunks_.back().tags.size() == chunks_.back().tags.capacity()) {
    if (fresh || chunks_.empty() || record.first > 0) {
      TagChunk next;
      next.tags.reserve(std::max<std::size_t>(kChunkTags, std::size_t{record.count} * 2));
      if (!fresh && !chunks_.empty()) {
        // The open record moves whole into the new block.
        TagChunk& full = chunks_.back();
        const auto first = full.tags.begin() + record.first;
        next.tags.assign(first, first + record.count);
        full.tags.erase(first, full.tags.end());
        --full.holders;
        ++next.holders;
        record.first = 0;
        record.chunk = static_cast<std::uint32_t>(chunks_.size());
      }
      chunks_.push_back(std::move(next));
    }
    // Otherwise the open record fills its block alone, which grows.
  }
  TagChunk& chunk = chunks_.back();
  if (fresh) {
    record.chunk = static_cast<std::uint32_t>(chunks_.size() - 1);
    record.first = static_cast<std::uint32_t>(chunk.tags.size());
    ++chunk.holders;
  }
  chunk.tags.push_back(tag);
  ++record.count;
}

void Document::release(RecordId id) {
  Record& record = records_.at(id);
  if (record.readAgain) {
    // Still as read: what was read again goes again.
    std::vector<Tag>().swap(editedTags_[record.edited - 1]);
    record.edited = 0;
    record.readAgain = false;
    return;
  }
  if (record.chunk == kNoChunk) return;
  TagChunk& chunk = chunks_[record.chunk];
  const Tag* list = chunk.tags.data() + record.first;
  // Tags as read follow each other in the file without a gap.
  const std::uint32_t begin = list[0].start();
  const std::uint32_t end = list[record.count - 1].end();
  record.first = begin;
  record.count = end;
  record.chunk = kNoChunk;
  if (--chunk.holders == 0) std::vector<Tag>().swap(chunk.tags);
}

std::string_view Document::recordType(RecordId id) const {
  const Record& record = records_.at(id);
  if (record.edited == 0 && record.chunk == kNoChunk) {
    // The first tag says it; the rest need not be read.
    if (record.first >= record.count) return {};
    const Tag first = format_ == FileFormat::Ascii
                          ? scan::asciiTagAt(source_.data(), source_.size(), record.first).tag
                          : scan::binaryTagAt(source_.data(), source_.size(), record.first, twoByteCodes_).tag;
    return first.code == 0 ? core::trimBlanks(bytes(first)) : std::string_view();
  }
  const auto list = tags(id);
  if (list.empty() || list.front().code != 0) return {};
  return core::trimBlanks(bytes(list.front()));
}

std::optional<std::size_t> Document::sectionOf(RecordId id) const {
  const auto section = records_.at(id).section;
  if (section == kNoSection) return std::nullopt;
  return section;
}

void Document::indexHandles() const {
  byHandle_ = core::HandleIndex();
  highestHandle_ = 0;
  std::vector<Tag> scratch;
  for (std::size_t s = 0; s < sections_.size(); ++s) {
    for (RecordId id : sections_[s].records) {
      if (const auto handle = RecordView(*this, id, peekTags(id, scratch)).handle()) {
        byHandle_.insert(*handle, id);  // the first record with a handle keeps it
        highestHandle_ = std::max(highestHandle_, *handle);
      }
    }
  }
  handlesIndexed_ = true;
  highestKnown_ = true;
}

std::optional<RecordId> Document::findHandle(std::uint64_t handle) const {
  if (!handlesIndexed_) indexHandles();
  const auto found = byHandle_.find(handle);
  if (!found) return std::nullopt;
  return static_cast<RecordId>(*found);
}

std::uint64_t Document::maxHandle() const {
  if (highestKnown_) return highestHandle_;
  // Loading a drawing needs only the highest handle; the index waits for a lookup.
  highestHandle_ = 0;
  std::vector<Tag> scratch;
  for (std::size_t s = 0; s < sections_.size(); ++s) {
    for (RecordId id : sections_[s].records) {
      if (const auto handle = RecordView(*this, id, peekTags(id, scratch)).handle())
        highestHandle_ = std::max(highestHandle_, *handle);
    }
  }
  highestKnown_ = true;
  return highestHandle_;
}

void Document::touchHandleTag(std::int16_t code) const {
  if (code == 5 || code == 105) handlesIndexed_ = highestKnown_ = false;
}

// --- values

std::string_view Document::bytes(const Tag& tag) const noexcept {
  const std::string& from = tag.wasRead() ? source_ : store_;
  return {from.data() + tag.value, tag.size};
}

void Document::appendValueText(const Tag& tag, std::string& out) const {
  const char* p = (tag.wasRead() ? source_ : store_).data() + tag.value;
  switch (tag.form()) {
    case TagForm::Text:
    case TagForm::BinaryString: out.append(p, tag.size); break;
    case TagForm::BinaryDouble: appendDouble(out, loadLittleEndian<double>(p)); break;
    case TagForm::BinaryInt16: appendInteger(out, loadLittleEndian<std::int16_t>(p)); break;
    case TagForm::BinaryInt32: appendInteger(out, loadLittleEndian<std::int32_t>(p)); break;
    case TagForm::BinaryInt64: appendInteger(out, loadLittleEndian<std::int64_t>(p)); break;
    case TagForm::BinaryBool: appendInteger(out, static_cast<unsigned char>(*p)); break;
    case TagForm::BinaryChunk: appendHexBytes(out, {p, tag.size}); break;
  }
}

std::string Document::valueText(const Tag& tag) const {
  std::string text;
  appendValueText(tag, text);
  return text;
}

std::optional<double> Document::toDouble(const Tag& tag) const noexcept {
  const char* p = (tag.wasRead() ? source_ : store_).data() + tag.value;
  switch (tag.form()) {
    case TagForm::BinaryDouble: return loadLittleEndian<double>(p);
    case TagForm::Text:
    case TagForm::BinaryString: {
      double value = 0;
      if (parseDouble({p, tag.size}, value)) return value;
      return std::nullopt;
    }
    case TagForm::BinaryChunk: return std::nullopt;
    default: {
      const auto integer = toInteger(tag);
      if (!integer) return std::nullopt;
      return static_cast<double>(*integer);
    }
  }
}

std::optional<std::int64_t> Document::toInteger(const Tag& tag) const noexcept {
  const char* p = (tag.wasRead() ? source_ : store_).data() + tag.value;
  switch (tag.form()) {
    case TagForm::BinaryInt16: return loadLittleEndian<std::int16_t>(p);
    case TagForm::BinaryInt32: return loadLittleEndian<std::int32_t>(p);
    case TagForm::BinaryInt64: return loadLittleEndian<std::int64_t>(p);
    case TagForm::BinaryBool: return static_cast<unsigned char>(*p);
    case TagForm::Text:
    case TagForm::BinaryString: {
      std::int64_t value = 0;
      if (parseInteger({p, tag.size}, value)) return value;
      return std::nullopt;
    }
    default: return std::nullopt;
  }
}

std::optional<std::uint64_t> Document::toHandle(const Tag& tag) const noexcept {
  if (tag.form() != TagForm::Text && tag.form() != TagForm::BinaryString) return std::nullopt;
  std::uint64_t value = 0;
  if (!parseHandle(bytes(tag), value)) return std::nullopt;
  return value;
}

std::wstring Document::text(const Tag& tag) const {
  if (tag.form() == TagForm::Text || tag.form() == TagForm::BinaryString) return codec_.decode(bytes(tag));
  const std::string spelt = valueText(tag);
  return std::wstring(spelt.begin(), spelt.end());
}

std::wstring Document::hostText(const Tag& tag) const { return decodeCarets(text(tag)); }

// --- editing

void Document::checkValue(std::int16_t code, std::string_view valueText) const {
  if (valueText.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos)
    throw std::invalid_argument("a DXF value cannot hold a line break or a zero byte");
  const ValueKind kind = valueKind(code);
  bool valid = true;
  if (kind == ValueKind::Double) {
    double value = 0;
    valid = parseDouble(valueText, value);
  } else if (kind == ValueKind::Chunk) {
    std::string data;
    valid = parseHexBytes(valueText, data) && data.size() <= 255;
  } else if (isNumeric(kind)) {
    std::int64_t value = 0;
    valid = parseInteger(valueText, value) && fitsKind(kind, value);
  }
  if (!valid)
    throw std::invalid_argument("group code " + std::to_string(code) + " cannot hold the value '" +
                                std::string(valueText) + "'");
}

Tag Document::storeValue(std::int16_t code, std::string_view valueText) {
  checkValue(code, valueText);
  if (store_.size() + valueText.size() >= Tag::kNotRead) throw std::length_error("too many edited values");
  Tag tag;
  tag.code = code;
  tag.value = static_cast<std::uint32_t>(store_.size());
  tag.size = static_cast<std::uint32_t>(valueText.size());
  tag.packed = Tag::pack(TagForm::Text, 0, false, 0);
  store_.append(valueText);
  return tag;
}

std::vector<Tag>& Document::editableTags(RecordId id) {
  Record& record = records_.at(id);
  if (record.edited == 0 || record.readAgain) {
    // The first change works on a copy: tags handed out before stay as they were.
    const auto current = tags(id);
    editedTags_.emplace_back(current.begin(), current.end());
    record.edited = static_cast<std::uint32_t>(editedTags_.size());
    record.readAgain = false;
  }
  return editedTags_[record.edited - 1];
}

void Document::setValue(RecordId id, std::size_t index, std::string_view valueText) {
  auto& list = editableTags(id);
  if (index >= list.size()) throw std::out_of_range("tag index out of range");
  const std::int16_t code = list[index].code;
  list[index] = storeValue(code, valueText);
  touchHandleTag(code);
}

void Document::setText(RecordId id, std::size_t index, std::wstring_view text) {
  setValue(id, index, codec_.encode(text));
}

void Document::setDouble(RecordId id, std::size_t index, double value) { setValue(id, index, formatDouble(value)); }

void Document::setInteger(RecordId id, std::size_t index, std::int64_t value) {
  std::string text;
  appendInteger(text, value);
  setValue(id, index, text);
}

void Document::setHandle(RecordId id, std::size_t index, std::uint64_t value) {
  setValue(id, index, formatHandle(value));
}

void Document::insertTag(RecordId id, std::size_t index, const NewTag& tag) {
  // The 0 tag starts the record: nothing may come before it, and a second one would split it.
  if (index == 0 || tag.code == 0) throw std::invalid_argument("a record has exactly one 0 tag, its first");
  auto& list = editableTags(id);
  if (index > list.size()) throw std::out_of_range("tag index out of range");
  const Tag stored = storeValue(tag.code, tag.value);
  list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), stored);
  touchHandleTag(tag.code);
}

void Document::removeTag(RecordId id, std::size_t index) {
  if (index == 0) throw std::invalid_argument("the 0 tag of a record cannot be removed");
  auto& list = editableTags(id);
  if (index >= list.size()) throw std::out_of_range("tag index out of range");
  touchHandleTag(list[index].code);
  list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
}

RecordId Document::addRecord(std::span<const NewTag> tags, std::uint16_t section) {
  if (tags.empty() || tags.front().code != 0) throw std::invalid_argument("a record begins with a 0 tag");
  for (std::size_t i = 1; i < tags.size(); ++i)
    if (tags[i].code == 0) throw std::invalid_argument("a record has exactly one 0 tag, its first");
  if (records_.size() >= kNoRecord) throw std::length_error("too many records");
  std::vector<Tag> list;
  list.reserve(tags.size());
  for (const auto& tag : tags) list.push_back(storeValue(tag.code, tag.value));
  editedTags_.push_back(std::move(list));
  Record record;
  record.edited = static_cast<std::uint32_t>(editedTags_.size());
  record.section = section;
  records_.push_back(record);
  return static_cast<RecordId>(records_.size() - 1);
}

RecordId Document::insertRecord(std::size_t section, std::size_t position, std::span<const NewTag> tags) {
  auto& records = sections_.at(section).records;
  if (position > records.size()) throw std::out_of_range("record position out of range");
  const RecordId id = addRecord(tags, static_cast<std::uint16_t>(section));
  records.insert(records.begin() + static_cast<std::ptrdiff_t>(position), id);
  if (handlesIndexed_ || highestKnown_) {
    if (const auto handle = RecordView(*this, id).handle()) {
      if (handlesIndexed_) {
        byHandle_.erase(*handle);
        byHandle_.insert(*handle, id);
      }
      highestHandle_ = std::max(highestHandle_, *handle);
    }
  }
  return id;
}

void Document::removeRecord(RecordId id) {
  Record& record = records_.at(id);
  if (record.erased) return;
  if (record.section == kNoSection) throw std::invalid_argument("only records inside a section can be removed");
  auto& records = sections_[record.section].records;
  const auto found = std::find(records.begin(), records.end(), id);
  if (found == records.end()) throw std::invalid_argument("a section's own SECTION and ENDSEC records stay");
  records.erase(found);
  record.erased = true;
  if (handlesIndexed_) {
    if (const auto handle = RecordView(*this, id).handle()) {
      if (byHandle_.find(*handle) == id) byHandle_.erase(*handle);
    }
  }
}

// --- header

RecordId Document::headerRecord() const {
  const auto section = findSection("HEADER");
  return section ? sections_[*section].begin : kNoRecord;
}

std::optional<HeaderVariable> Document::headerVariable(std::string_view name) const {
  const RecordId header = headerRecord();
  if (header == kNoRecord) return std::nullopt;
  const auto list = tags(header);
  for (std::size_t i = 2; i < list.size(); ++i) {
    if (list[i].code != 9 || core::trimBlanks(bytes(list[i])) != name) continue;
    HeaderVariable variable{i, i + 1, i + 1};
    while (variable.last < list.size() && list[variable.last].code != 9) ++variable.last;
    return variable;
  }
  return std::nullopt;
}

void Document::setHeaderVariable(std::string_view name, std::span<const NewTag> values) {
  const RecordId header = headerRecord();
  if (header == kNoRecord) throw std::invalid_argument("the drawing has no HEADER section");
  for (const auto& value : values) checkValue(value.code, value.value);
  auto variable = headerVariable(name);
  if (!variable) {
    const std::size_t at = tagCount(header);
    insertTag(header, at, NewTag{9, std::string(name)});
    variable = HeaderVariable{at, at + 1, at + 1};
  }
  std::vector<Tag> stored;
  for (const auto& value : values) stored.push_back(storeValue(value.code, value.value));
  auto& list = editableTags(header);
  const auto first = list.begin() + static_cast<std::ptrdiff_t>(variable->first);
  list.insert(list.erase(first, list.begin() + static_cast<std::ptrdiff_t>(variable->last)), stored.begin(),
              stored.end());
}

std::uint64_t Document::allocateHandle() {
  std::uint64_t next = 0;
  if (const auto seed = headerVariable("$HANDSEED"); seed && seed->last > seed->first) {
    if (const auto value = toHandle(tags(headerRecord())[seed->first])) next = *value;
  }
  // Writers do not all keep the seed above every handle; never hand out one in use.
  next = std::max({next, maxHandle() + 1, lastAllocated_ + 1});
  lastAllocated_ = next;
  if (headerRecord() != kNoRecord) {
    const NewTag seed[] = {NewTag::handle(5, next + 1)};
    setHeaderVariable("$HANDSEED", seed);
  }
  return next;
}

// --- output

Status Document::save(const std::filesystem::path& path, const SaveOptions& options) const {
  FileSink file(path);
  file.failAfter(options.failAfterBytes);
  if (auto opened = file.open(options); !opened) return opened;
  if (auto written = write(file, options.format); !written) return written;
  if (auto committed = file.commit(); !committed) return committed;
  if (options.leftoverRemoved) {
    for (const auto& leftover : file.removedLeftovers()) options.leftoverRemoved(leftover);
  }
  return Status::success();
}

Status Document::checkSave(const std::filesystem::path& path, const SaveOptions& options) {
  return FileSink(path).check(options);
}

}  // namespace corvane::dxf
