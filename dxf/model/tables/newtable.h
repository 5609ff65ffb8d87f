// A table that has no record yet, written into a drawing as the host writes one: the
// ACAD_TABLE entity with its grid and cells, an anonymous "*T" block that draws it (a
// multiline text per cell, a line per cell edge), a table style when the drawing has none,
// and the CLASS entries readers need to know the new kinds of record.
#pragma once

#include <cstdint>
#include <functional>

#include "dxf/tags/document.h"
#include "dxf/tags/status.h"

namespace corvane::headless {
class Database;
class Table;
}

namespace corvane::dxf {

// Hands out handles for new records. The default takes them from the drawing's $HANDSEED;
// a caller that gives handles to new objects of its own passes one that keeps both in step.
using HandleSource = std::function<std::uint64_t()>;
// Handles from the drawing's $HANDSEED that no object of `db` holds yet.
HandleSource freeHandles(Document& doc, const headless::Database& db);

struct NewTable {
  RecordId table = kNoRecord;     // the ACAD_TABLE
  RecordId graphics = kNoRecord;  // the BLOCK_RECORD of its "*T" block
  std::uint64_t tableStyle = 0;   // the style it uses (made when the drawing had none)
};

// Adds the table, which must be in a database, to the space or block whose BLOCK_RECORD is
// `owner`. The table keeps its own handle when the drawing does not use it yet. Drawings
// older than R2004 cannot hold tables. On failure the drawing is as it was.
Status createTable(Document& doc, RecordId owner, const headless::Table& table, NewTable& created,
                   const HandleSource& newHandle = {});

}  // namespace corvane::dxf
