// The value block DXF keeps a field's data, its cached value and a table cell's value in: a
// flags word, the data type, the typed data, then (from R2007 on) the unit type, the format,
// the formatted text and an end marker. Drawings before R2007 keep only the type and the data.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/tags/document.h"
#include "host/acvalue.h"

namespace corvane::headless {
class Database;
}

namespace corvane::dxf {

struct ValueBlock {
  host::AcValue value;       // the data and, as its format, the block's format text
  int flags = 0;             // bit 1: no data follows; the other bits are kept as they were
  int dataType = 0;          // as stored
  int unitType = 0;
  std::wstring formatted;    // the formatted text stored beside the value
  bool longForm = true;
  // Data of a type the host value cannot hold (buffers, result buffers, general values, ids
  // of objects that are not in the drawing): the value is empty and the tags are what counts.
  bool opaque = false;
  std::size_t begin = 0;     // the block's tags in the record: [begin, end)
  std::size_t end = 0;
};

// Reads the block starting at `begin` (a 93 tag for the long form, a 90 tag for the short
// one); nullopt when no block starts there. Object ids are looked up in `db` by handle.
std::optional<ValueBlock> readValueBlock(const Document& doc, std::span<const Tag> tags, std::size_t begin,
                                         const headless::Database& db);

// How a block is written around its value.
struct ValueStyle {
  int flags = 2;             // bit 1 is set or cleared to match the value
  int unitType = 0;
  std::wstring formatted;
};
void appendValueBlock(std::vector<NewTag>& out, const Document& doc, const host::AcValue& value,
                      const ValueStyle& style, bool longForm, const headless::Database& db);

// A date as the 16 bytes of a Windows SYSTEMTIME (year, month, day of the week, day, hour,
// minute, second, millisecond; little-endian 16-bit numbers) and back. OLE dates count days
// from 1899-12-30; before that day the fraction still counts forward from midnight.
std::string systemTimeBytes(double oleDate);
std::optional<double> oleDateFromSystemTime(std::string_view bytes);

}  // namespace corvane::dxf
