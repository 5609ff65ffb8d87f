#include "dxf/model/tables/newtable.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "core/textutil.h"
#include "dxf/model/tables/tablecontent.h"
#include "dxf/model/tables/tablegraphics.h"
#include "dxf/model/tables/tablerecord.h"
#include "dxf/tags/recordedit.h"
#include "dxf/tags/recordheader.h"
#include "dxf/tags/recordview.h"
#include "headless/db/database.h"
#include "headless/db/table.h"

namespace corvane::dxf {

namespace {

using host::AcGeVector3d;

struct Place {
  std::size_t section = 0;
  std::size_t position = 0;
};

std::optional<RecordId> firstRecord(const Document& doc, std::string_view section) {
  const auto index = doc.findSection(section);
  if (!index || doc.sections()[*index].records.empty()) return std::nullopt;
  return doc.sections()[*index].records.front();
}

std::size_t positionOf(const Document& doc, std::size_t section, RecordId id) {
  const auto& records = doc.sections()[section].records;
  return static_cast<std::size_t>(std::find(records.begin(), records.end(), id) - records.begin());
}

// The value of the first tag with the code in the record, as text.
std::optional<std::wstring> textOf(const Document& doc, RecordId id, int code) {
  for (const Tag& tag : doc.tags(id))
    if (tag.code == code) return doc.text(tag);
  return std::nullopt;
}

// The entries of a dictionary record: name and handle.
std::vector<std::pair<std::wstring, std::uint64_t>> entries(const Document& doc, RecordId dictionary) {
  std::vector<std::pair<std::wstring, std::uint64_t>> out;
  const auto tags = doc.tags(dictionary);
  for (std::size_t i = 0; i + 1 < tags.size(); ++i) {
    if (tags[i].code == 3 && (tags[i + 1].code == 350 || tags[i + 1].code == 360)) {
      out.emplace_back(doc.text(tags[i]), doc.toHandle(tags[i + 1]).value_or(0));
    }
  }
  return out;
}

std::optional<RecordId> entry(const Document& doc, RecordId dictionary, std::wstring_view name) {
  for (const auto& [key, handle] : entries(doc, dictionary)) {
    if (core::equalsNoCase(key, name)) return doc.findHandle(handle);
  }
  return std::nullopt;
}

// The TABLE record of a symbol table ("BLOCK_RECORD") and its ENDTAB.
std::optional<std::pair<RecordId, RecordId>> symbolTable(const Document& doc, std::string_view name) {
  const auto section = doc.findSection("TABLES");
  if (!section) return std::nullopt;
  const auto& records = doc.sections()[*section].records;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (doc.recordType(records[i]) != "TABLE") continue;
    const auto tableName = textOf(doc, records[i], 2);
    if (!tableName || core::toUpper(*tableName) != core::toUpper(std::wstring(name.begin(), name.end()))) continue;
    for (std::size_t k = i + 1; k < records.size(); ++k) {
      if (doc.recordType(records[k]) == "ENDTAB") return std::pair{records[i], records[k]};
    }
    return std::nullopt;
  }
  return std::nullopt;
}

// "*T" and the next number no block of the drawing uses.
std::wstring graphicsBlockName(const Document& doc, RecordId blockRecordTable, RecordId endTable) {
  const auto section = *doc.sectionOf(blockRecordTable);
  const auto& records = doc.sections()[section].records;
  long highest = 0;
  for (std::size_t i = positionOf(doc, section, blockRecordTable); i < records.size() && records[i] != endTable; ++i) {
    const auto name = textOf(doc, records[i], 2);
    if (!name || name->size() < 3 || core::toUpper(name->substr(0, 2)) != L"*T") continue;
    const std::wstring digits = name->substr(2);
    if (!std::all_of(digits.begin(), digits.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; })) continue;
    if (digits.size() < 9) highest = std::max(highest, std::stol(digits));
  }
  return L"*T" + std::to_wstring(highest + 1);
}

// Where a new entity of the block goes: the end of ENTITIES for the spaces, before the
// block's ENDBLK for any other block.
std::optional<Place> entityPlace(const Document& doc, std::uint64_t blockRecord, bool space) {
  if (space) {
    const auto section = doc.findSection("ENTITIES");
    if (!section) return std::nullopt;
    return Place{*section, doc.sections()[*section].records.size()};
  }
  const auto section = doc.findSection("BLOCKS");
  if (!section) return std::nullopt;
  const auto& records = doc.sections()[*section].records;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (doc.recordType(records[i]) != "BLOCK" || RecordView(doc, records[i]).owner() != blockRecord) continue;
    for (std::size_t k = i + 1; k < records.size(); ++k) {
      if (doc.recordType(records[k]) == "ENDBLK") return Place{*section, k};
    }
  }
  return std::nullopt;
}

std::vector<NewTag> tableStyleRecord(const Document& doc, std::uint64_t handle, std::uint64_t dictionary,
                                     double textHeight) {
  std::vector<NewTag> out = {{0, "TABLESTYLE"},
                             NewTag::handle(5, handle),
                             {102, "{ACAD_REACTORS"},
                             NewTag::handle(330, dictionary),
                             {102, "}"},
                             NewTag::handle(330, dictionary),
                             {100, "AcDbTableStyle"},
                             textTag(doc, 3, L"Standard"),
                             NewTag::integer(70, 0),
                             NewTag::integer(71, 0),
                             NewTag::real(40, textHeight / 3.0),
                             NewTag::real(41, textHeight / 3.0),
                             NewTag::integer(280, 0),
                             NewTag::integer(281, 0)};
  // Data, title and header rows; the title a third larger and centred.
  const double heights[] = {textHeight, textHeight * 4.0 / 3.0, textHeight};
  const int alignments[] = {2, 5, 5};
  for (int row = 0; row < 3; ++row) {
    out.push_back({7, "Standard"});
    out.push_back(NewTag::real(140, heights[row]));
    out.push_back(NewTag::integer(170, alignments[row]));
    out.push_back(NewTag::integer(62, 0));
    out.push_back(NewTag::integer(63, 257));
    out.push_back(NewTag::integer(283, 0));
    if (doc.isUnicodeVersion()) {
      out.push_back(NewTag::integer(90, 512));
      out.push_back(NewTag::integer(91, 0));
      out.push_back({1, ""});
    }
    for (int edge = 0; edge < 6; ++edge) {
      out.push_back(NewTag::integer(static_cast<std::int16_t>(274 + edge), -2));
      out.push_back(NewTag::integer(static_cast<std::int16_t>(284 + edge), 1));
      out.push_back(NewTag::integer(static_cast<std::int16_t>(64 + edge), 0));
    }
  }
  return out;
}

std::vector<NewTag> classRecord(const char* dxfName, const char* className, int flags, bool entity) {
  return {{0, "CLASS"},           {1, dxfName},  {2, className},
          {3, "ObjectDBX Classes"}, NewTag::integer(90, flags), NewTag::integer(91, 0),
          NewTag::integer(280, 0), NewTag::integer(281, entity ? 1 : 0)};
}

}  // namespace

HandleSource freeHandles(Document& doc, const headless::Database& db) {
  return [&doc, &db] {
    while (true) {
      const std::uint64_t handle = doc.allocateHandle();
      host::AcDbObjectId id;
      if (db.getAcDbObjectId(id, host::AcDbHandle(handle)) != host::Acad::eOk) return handle;
    }
  };
}

Status createTable(Document& doc, RecordId owner, const headless::Table& table, NewTable& created,
                   const HandleSource& handles) {
  // Everything is checked before the first change.
  const headless::Database* db = table.record().database;
  if (!db) return Status::failure("the table is not in a drawing");
  if (doc.version() < "AC1018") return Status::failure("drawings older than R2004 cannot hold tables");
  if (table.numRows() < 1 || table.numColumns() < 1) return Status::failure("a table needs a row and a column");
  if (const auto problem = unwritable(table)) return Status::failure(*problem);
  if (owner >= kNoRecord || doc.recordType(owner) != "BLOCK_RECORD") {
    return Status::failure("a table goes into a block table record");
  }
  const auto ownerHandle = RecordView(doc, owner).handle();
  const std::wstring ownerName = core::toUpper(textOf(doc, owner, 2).value_or(L""));
  const bool paperSpace = ownerName == L"*PAPER_SPACE";
  const bool space = paperSpace || ownerName == L"*MODEL_SPACE";
  const auto place = ownerHandle ? entityPlace(doc, *ownerHandle, space) : std::nullopt;
  if (!place) return Status::failure("the drawing has no place for the table's block");
  const auto blockRecords = symbolTable(doc, "BLOCK_RECORD");
  const auto blocks = doc.findSection("BLOCKS");
  if (!blockRecords || !blocks) return Status::failure("the drawing has no block table");
  const auto tableRecordHandle = RecordView(doc, blockRecords->first).handle().value_or(0);

  // The style: the table's own, else the drawing's "Standard" (or first), else a new one.
  std::optional<RecordId> style;
  if (const std::uint64_t own = liveHandle(*db, table.tableStyle())) style = doc.findHandle(own);
  const auto root = firstRecord(doc, "OBJECTS");
  std::optional<RecordId> styles;
  if (root && doc.recordType(*root) == "DICTIONARY") styles = entry(doc, *root, L"ACAD_TABLESTYLE");
  if (!style && styles) {
    style = entry(doc, *styles, L"Standard");
    if (!style) {
      const auto all = entries(doc, *styles);
      if (!all.empty()) style = doc.findHandle(all.front().second);
    }
  }
  if (!style && (!root || doc.recordType(*root) != "DICTIONARY")) {
    return Status::failure("the drawing has no named objects dictionary for a table style");
  }

  std::uint64_t tableHandle = table.handle().value();
  if (doc.findHandle(tableHandle)) tableHandle = 0;
  const HandleSource free = freeHandles(doc, *db);
  const HandleSource newHandle = handles ? handles : HandleSource([&free, tableHandle] {
    std::uint64_t handle = free();
    while (handle == tableHandle) handle = free();
    return handle;
  });
  if (tableHandle == 0) tableHandle = newHandle();
  const std::uint64_t graphicsHandle = newHandle();
  const std::wstring graphicsName = graphicsBlockName(doc, blockRecords->first, blockRecords->second);

  // A new style, and the dictionary of styles if the drawing lacks it.
  double textHeight = 0.0;
  for (int r = 0; r < table.numRows(); ++r) {
    textHeight = textHeight == 0.0 ? table.rowHeight(r) / 2.0 : std::min(textHeight, table.rowHeight(r) / 2.0);
  }
  bool madeStyle = false;
  std::uint64_t styleHandle = 0;
  if (style) {
    styleHandle = RecordView(doc, *style).handle().value_or(0);
    const double styled = styleTextHeight(doc, styleHandle);
    if (styled > 0.0) textHeight = styled;
  } else {
    const auto objects = *doc.sectionOf(*root);
    const std::uint64_t rootHandle = RecordView(doc, *root).handle().value_or(0);
    std::uint64_t dictionaryHandle = 0;
    if (styles) {
      dictionaryHandle = RecordView(doc, *styles).handle().value_or(0);
    } else {
      dictionaryHandle = newHandle();
      const std::vector<NewTag> dictionary = {{0, "DICTIONARY"},         NewTag::handle(5, dictionaryHandle),
                                              {102, "{ACAD_REACTORS"},   NewTag::handle(330, rootHandle),
                                              {102, "}"},                NewTag::handle(330, rootHandle),
                                              {100, "AcDbDictionary"},   NewTag::integer(281, 1)};
      styles = doc.insertRecord(objects, doc.sections()[objects].records.size(), dictionary);
      const auto rootTags = doc.tags(*root);
      const std::size_t at = subclassEnd(rootTags, findSubclass(doc, rootTags, "AcDbDictionary"));
      doc.insertTag(*root, at, textTag(doc, 3, L"ACAD_TABLESTYLE"));
      doc.insertTag(*root, at + 1, NewTag::handle(350, dictionaryHandle));
    }
    styleHandle = newHandle();
    doc.insertRecord(objects, doc.sections()[objects].records.size(),
                     tableStyleRecord(doc, styleHandle, dictionaryHandle, textHeight));
    const std::size_t at = RecordView(doc, *styles).xdataBegin();
    doc.insertTag(*styles, at, textTag(doc, 3, L"Standard"));
    doc.insertTag(*styles, at + 1, NewTag::handle(350, styleHandle));
    madeStyle = true;
  }

  // The graphics block: its record, then BLOCK, the drawing, ENDBLK.
  const std::vector<NewTag> blockRecord = {{0, "BLOCK_RECORD"},
                                           NewTag::handle(5, graphicsHandle),
                                           NewTag::handle(330, tableRecordHandle),
                                           {100, "AcDbSymbolTableRecord"},
                                           {100, "AcDbBlockTableRecord"},
                                           textTag(doc, 2, graphicsName),
                                           NewTag::handle(340, 0),
                                           NewTag::integer(70, 0),
                                           NewTag::integer(280, 1),
                                           NewTag::integer(281, 0)};
  const auto tablesSection = *doc.sectionOf(blockRecords->second);
  created.graphics = doc.insertRecord(tablesSection, positionOf(doc, tablesSection, blockRecords->second), blockRecord);

  std::vector<std::vector<NewTag>> drawn;
  std::vector<NewTag> begin;
  appendEntityStart(begin, "BLOCK", newHandle(), graphicsHandle);
  begin.push_back({100, "AcDbBlockBegin"});
  begin.push_back(textTag(doc, 2, graphicsName));
  begin.push_back(NewTag::integer(70, 1));
  appendPoint(begin, 10, 0.0, 0.0, 0.0);
  begin.push_back(textTag(doc, 3, graphicsName));
  begin.push_back({1, ""});
  drawn.push_back(std::move(begin));
  for (auto& record : tableGraphics(doc, table, textHeight, graphicsHandle, newHandle)) drawn.push_back(std::move(record));
  std::vector<NewTag> end;
  appendEntityStart(end, "ENDBLK", newHandle(), graphicsHandle);
  end.push_back({100, "AcDbBlockEnd"});
  drawn.push_back(std::move(end));
  std::size_t blockAt = doc.sections()[*blocks].records.size();
  for (const auto& record : drawn) doc.insertRecord(*blocks, blockAt++, record);

  // The table itself.
  std::vector<NewTag> record;
  record.push_back({0, "ACAD_TABLE"});
  record.push_back(NewTag::handle(5, tableHandle));
  record.push_back(NewTag::handle(330, *ownerHandle));
  record.push_back({100, "AcDbEntity"});
  if (paperSpace) record.push_back(NewTag::integer(67, 1));
  record.push_back(textTag(doc, 8, table.layer()));
  record.push_back({100, "AcDbBlockReference"});
  record.push_back(textTag(doc, 2, graphicsName));
  const auto p = table.position();
  appendPoint(record, 10, p.x, p.y, p.z);
  const auto n = table.normal();
  if (n.x != 0.0 || n.y != 0.0 || n.z != 1.0) appendPoint(record, 210, n.x, n.y, n.z);
  record.push_back({100, "AcDbTable"});
  record.push_back(NewTag::integer(280, 0));
  record.push_back(NewTag::handle(342, styleHandle));
  record.push_back(NewTag::handle(343, graphicsHandle));
  const auto d = table.direction();
  appendPoint(record, 11, d.x, d.y, d.z);
  record.push_back(NewTag::integer(90, 22));
  record.push_back(NewTag::integer(91, table.numRows()));
  record.push_back(NewTag::integer(92, table.numColumns()));
  for (std::int16_t code = 93; code <= 96; ++code) record.push_back(NewTag::integer(code, 0));
  if (table.flowDirection() == host::AcDb::kBtoT) record.push_back(NewTag::integer(70, 1));
  for (int r = 0; r < table.numRows(); ++r) record.push_back(NewTag::real(141, table.rowHeight(r)));
  for (int c = 0; c < table.numColumns(); ++c) record.push_back(NewTag::real(142, table.columnWidth(c)));
  for (int r = 0; r < table.numRows(); ++r) {
    for (int c = 0; c < table.numColumns(); ++c) appendTableCell(record, doc, table, r, c);
  }
  // Found again: records went into the sections since.
  const auto target = entityPlace(doc, *ownerHandle, space);
  created.table = doc.insertRecord(target->section, target->position, record);
  created.tableStyle = styleHandle;

  // Readers learn the new kinds of record from the class list.
  auto classes = doc.findSection("CLASSES");
  if (!classes) {
    const auto header = doc.findSection("HEADER");
    classes = doc.insertSection(header ? *header + 1 : 0, "CLASSES");
  }
  auto hasClass = [&](std::wstring_view name) {
    for (const RecordId id : doc.sections()[*classes].records) {
      if (doc.recordType(id) == "CLASS" && textOf(doc, id, 1) == std::wstring(name)) return true;
    }
    return false;
  };
  if (!hasClass(L"ACAD_TABLE")) {
    doc.insertRecord(*classes, doc.sections()[*classes].records.size(), classRecord("ACAD_TABLE", "AcDbTable", 1025, true));
  }
  if (madeStyle && !hasClass(L"TABLESTYLE")) {
    doc.insertRecord(*classes, doc.sections()[*classes].records.size(),
                     classRecord("TABLESTYLE", "AcDbTableStyle", 4095, false));
  }

  // Handles handed out by the caller must not be handed out again by the drawing.
  const std::uint64_t highest = doc.maxHandle();
  const auto seed = doc.headerVariable("$HANDSEED");
  const auto current = seed && seed->last > seed->first ? doc.toHandle(doc.tags(doc.headerRecord())[seed->first])
                                                         : std::nullopt;
  if (!current || *current <= highest) {
    const NewTag value = NewTag::handle(5, highest + 1);
    doc.setHeaderVariable("$HANDSEED", std::span<const NewTag>(&value, 1));
  }
  return Status::success();
}

}  // namespace corvane::dxf
