// Reads the common parts of a record: its handle, owner, application-data groups (102
// "{NAME" ... 102 "}"), extension dictionary, reactors and extended data. The record's own
// data is left to whoever knows its type.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "dxf/tags/document.h"

namespace corvane::dxf {

struct AppDataGroup {
  std::string_view name;  // without the brace: "ACAD_REACTORS"
  std::size_t begin = 0;  // index of the opening 102 tag
  std::size_t end = 0;    // index of the closing 102 tag (the group's last tag when unclosed)
};

// A run of tags [begin, end).
struct TagRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

class RecordView {
 public:
  RecordView(const Document& document, RecordId id) : document_(&document), id_(id), tags_(document.tags(id)) {}
  // A view of tags the caller holds for the record.
  RecordView(const Document& document, RecordId id, std::span<const Tag> tags)
      : document_(&document), id_(id), tags_(tags) {}

  RecordId id() const noexcept { return id_; }
  std::span<const Tag> tags() const noexcept { return tags_; }
  std::string_view type() const { return document_->recordType(id_); }

  // Group 5, or 105 in a DIMSTYLE (whose 5 names a block).
  std::optional<std::size_t> handleIndex() const;
  std::optional<std::uint64_t> handle() const;
  // The first 330 outside application-data groups and before the first subclass marker.
  std::optional<std::uint64_t> owner() const;
  std::vector<AppDataGroup> appDataGroups() const;
  std::optional<std::uint64_t> extensionDictionary() const;
  std::vector<std::uint64_t> reactors() const;
  // Index of the first 1001 tag, or the tag count when there is no extended data.
  std::size_t xdataBegin() const;
  // The tags of one application's extended data, its 1001 tag included.
  std::optional<TagRange> xdata(std::string_view application) const;
  std::optional<std::size_t> find(int code, std::size_t from = 0) const;

 private:
  std::optional<std::size_t> groupMember(std::string_view group, int code) const;

  const Document* document_;
  RecordId id_;
  std::span<const Tag> tags_;
};

}  // namespace corvane::dxf
