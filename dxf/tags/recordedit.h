// Building and editing the tags of records: texts in the file's encoding, long texts in
// pieces, and replacing a run of tags so that the tags that keep their value stay as read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "dxf/tags/document.h"

namespace corvane::dxf {

// A name or key: in the file's encoding, with no escapes of its own.
NewTag textTag(const Document& doc, std::int16_t code, std::wstring_view text);
// A text as the file stores it: control characters and carets escaped (see textpieces.h).
NewTag escapedTextTag(const Document& doc, std::int16_t code, std::wstring_view text);
// A text that may be long: escaped pieces of 250 characters, every piece but the last under
// `leadCode`, the last under `lastCode`.
void appendPieces(std::vector<NewTag>& out, const Document& doc, std::wstring_view text, std::int16_t leadCode,
                  std::int16_t lastCode);

// A point's coordinates under `code`, `code + 10` and `code + 20`.
void appendPoint(std::vector<NewTag>& out, int code, double x, double y, double z);
// The first tags of a new entity on layer "0": type, handle, owner and the entity marker.
void appendEntityStart(std::vector<NewTag>& out, const char* type, std::uint64_t handle, std::uint64_t owner);

// Whether a tag already holds the value: same code, and the same text, number or handle
// however it is spelt (padded integers, "1.0" against "1").
bool holdsValue(const Document& doc, const Tag& tag, const NewTag& value);

// Makes the tags [begin, end) of a record the given ones. Leading and trailing tags that
// already hold their new value are left untouched. Returns whether anything changed.
bool replaceTags(Document& doc, RecordId id, std::size_t begin, std::size_t end, std::span<const NewTag> tags);

}  // namespace corvane::dxf
