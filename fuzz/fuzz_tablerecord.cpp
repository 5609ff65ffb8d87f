// Tables of arbitrary drawings: a table record is either read or refused with a reason; a
// table read writes back to a record that reads as the same table, and writing it again
// changes nothing; a refused write leaves the drawing as it was; a changed cell reads back
// changed.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "dxf/document.h"
#include "dxf/recordview.h"
#include "dxf/tablerecord.h"
#include "dxf/textpieces.h"
#include "headless/database.h"
#include "headless/hostapplication.h"
#include "headless/table.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using namespace corvane;

std::string bytesOf(const dxf::Document& doc) {
  dxf::StringSink sink;
  if (!doc.write(sink).ok()) std::abort();
  return sink.data;
}

// The table of the record read afresh; null when it is refused (with a reason).
headless::Table* readInto(const dxf::Document& doc, dxf::RecordId id, headless::Database& db) {
  auto table = std::make_unique<headless::Table>();
  dxf::TableLinks links;
  const dxf::Status status = dxf::readTable(doc, id, db, *table, links);
  if (!status) {
    if (status.message().empty()) std::abort();
    return nullptr;
  }
  headless::Table* raw = table.get();
  db.addObject(std::move(table), db.modelSpaceId());
  dxf::resolveTableLinks(db, *raw, links);
  return raw;
}

// Texts compare as a file spells them. They are held as stored, so a control character read
// raw (which a line should not hold) stays raw while its cell is kept, and comes back as its
// caret escape once the cell is written anew.
bool sameCells(const headless::Table& a, const headless::Table& b) {
  if (a.numRows() != b.numRows() || a.numColumns() != b.numColumns()) return false;
  for (int r = 0; r < a.numRows(); ++r) {
    for (int c = 0; c < a.numColumns(); ++c) {
      if (dxf::escapeControlCharacters(a.textString(r, c)) != dxf::escapeControlCharacters(b.textString(r, c)) ||
          a.contentType(r, c) != b.contentType(r, c)) {
        return false;
      }
    }
  }
  return true;
}

// A write either succeeds or leaves the drawing as it was.
bool write(dxf::Document& doc, dxf::RecordId id, const headless::Table& table) {
  const std::string before = bytesOf(doc);
  const dxf::Status status = dxf::writeTable(doc, id, table);
  if (!status) {
    if (status.message().empty() || bytesOf(doc) != before) std::abort();
    return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static headless::HostApplication host;
  auto read = dxf::Document::read(std::string(reinterpret_cast<const char*>(data), size));
  if (!read.document) return 0;
  dxf::Document& doc = *read.document;
  headless::Database db(host);

  int tables = 0;
  for (const auto& section : doc.sections()) {
    for (const dxf::RecordId id : std::vector<dxf::RecordId>(section.records)) {
      if (doc.recordType(id) != "ACAD_TABLE" || ++tables > 3) continue;
      headless::Table* table = readInto(doc, id, db);
      if (!table) continue;
      if (!write(doc, id, *table)) continue;
      const std::string written = bytesOf(doc);
      if (!write(doc, id, *table) || bytesOf(doc) != written) std::abort();
      const headless::Table* again = readInto(doc, id, db);
      if (!again || !sameCells(*table, *again)) std::abort();

      if (table->numRows() < 1 || table->numColumns() < 1) continue;
      if (table->putTextString(0, 0, L"fuzz\nline") != host::Acad::eOk) std::abort();
      if (!write(doc, id, *table)) continue;
      // The file keeps the line break as "^J"; the plain text has it back.
      const headless::Table* changed = readInto(doc, id, db);
      std::wstring plain;
      if (!changed || changed->textString(0, 0, host::AcValueOptions::kIgnoreMtextFormat, plain) != host::Acad::eOk ||
          plain != L"fuzz\nline") {
        std::abort();
      }
    }
  }
  return 0;
}
