// The common front of a record, found in one pass: its handle, its extension dictionary and
// its owner, where its own data starts and where its extended data starts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "dxf/tags/document.h"

namespace corvane::dxf {

inline constexpr std::size_t kNoIndex = static_cast<std::size_t>(-1);

struct RecordHeader {
  std::optional<std::uint64_t> handle;
  std::uint64_t owner = 0;
  std::uint64_t extensionDictionary = 0;
  std::size_t handleIndex = kNoIndex;
  std::size_t ownerIndex = kNoIndex;      // the 330 outside application-data groups
  std::size_t reactorsEnd = kNoIndex;     // the closing 102 of "{ACAD_REACTORS"
  std::size_t xdictionaryIndex = kNoIndex;  // the 360 inside "{ACAD_XDICTIONARY"
  std::size_t xdictionaryEnd = kNoIndex;  // its closing 102
  std::size_t bodyBegin = 0;              // the first subclass marker (100), or where data starts
  std::size_t xdataBegin = 0;             // the first 1001, or the tag count
};

RecordHeader scanRecordHeader(const Document& doc, RecordId id);

// The index of the subclass marker "100 <name>" at or after `from`, or kNoIndex.
std::size_t findSubclass(const Document& doc, std::span<const Tag> tags, std::string_view name, std::size_t from = 1);
// The end of the subclass whose marker is at `marker`: the next marker, an embedded object
// (101) or the extended data.
std::size_t subclassEnd(std::span<const Tag> tags, std::size_t marker);

}  // namespace corvane::dxf
