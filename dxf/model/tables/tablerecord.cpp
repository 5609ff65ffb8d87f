#include "dxf/model/tables/tablerecord.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>

#include "dxf/model/tables/tablecontent.h"
#include "dxf/model/tables/tablegraphics.h"
#include "dxf/model/values/valueblock.h"
#include "dxf/tags/recordedit.h"
#include "dxf/tags/recordheader.h"
#include "dxf/tags/recordview.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/database.h"
#include "headless/db/table.h"

namespace corvane::dxf {

namespace {

using host::AcGePoint3d;
using host::AcGeVector3d;

// One cell's group of the table record: [begin, end), starting with its 171.
struct LegacyCell {
  std::size_t begin = 0;
  std::size_t end = 0;
  int type = 1;
  bool covered = false;
  int mergeWidth = 1;
  int mergeHeight = 1;
  std::uint64_t field = 0;
  std::uint64_t block = 0;
  double blockScale = 1.0;
  double textHeight = 0.0;
  int alignment = 0;
  std::size_t valueMarker = kNoIndex;  // "301 CELL_VALUE"
  std::optional<ValueBlock> value;
  std::wstring text;
};

struct LegacyTable {
  std::size_t insertIndex = kNoIndex;  // 10, with 20 and 30 after it
  AcGePoint3d insert;
  AcGeVector3d normal{0.0, 0.0, 1.0};
  std::size_t directionIndex = kNoIndex;
  AcGeVector3d direction{1.0, 0.0, 0.0};
  std::size_t rowCountIndex = kNoIndex;
  std::size_t columnCountIndex = kNoIndex;
  std::optional<int> flow;  // the table's own override of its style's flow direction
  std::uint64_t style = 0;
  std::uint64_t graphics = 0;
  std::vector<std::size_t> heights;
  std::vector<std::size_t> widths;
  int rows = 0;
  int columns = 0;
  std::vector<LegacyCell> cells;
  std::size_t cellsBegin = kNoIndex;
  std::size_t cellsEnd = kNoIndex;
  // Whether cells keep their texts in value blocks: from R2007 on, and in any record read
  // with them. The last cell ends with its value block, so a record whose tags go on after
  // it has to keep that form, or those tags would be read as the last cell's text.
  bool valueBlocks = false;
};

double real(const Document& doc, const Tag& tag) { return doc.toDouble(tag).value_or(0.0); }
int integer(const Document& doc, const Tag& tag) { return static_cast<int>(doc.toInteger(tag).value_or(0)); }

// Three coordinates at `at` (codes c, c+10, c+20), or nullopt when they are not there.
std::optional<std::array<double, 3>> pointAt(const Document& doc, std::span<const Tag> tags, std::size_t at, int code) {
  if (at + 1 >= tags.size() || tags[at].code != code || tags[at + 1].code != code + 10) return std::nullopt;
  const double z = at + 2 < tags.size() && tags[at + 2].code == code + 20 ? real(doc, tags[at + 2]) : 0.0;
  return std::array<double, 3>{real(doc, tags[at]), real(doc, tags[at + 1]), z};
}

std::wstring joinedText(const Document& doc, std::span<const Tag> tags, const std::vector<std::size_t>& pieces) {
  std::string bytes;
  for (const std::size_t i : pieces) doc.appendValueText(tags[i], bytes);
  return decodeCarets(doc.codec().decode(bytes));
}

std::optional<LegacyTable> scanLegacy(const Document& doc, RecordId record, const headless::Database& db,
                                      std::string& error) {
  if (doc.recordType(record) != "ACAD_TABLE") {
    error = "the record is not a table";
    return std::nullopt;
  }
  const auto tags = doc.tags(record);
  LegacyTable table;
  if (const std::size_t ref = findSubclass(doc, tags, "AcDbBlockReference"); ref != kNoIndex) {
    const std::size_t end = subclassEnd(tags, ref);
    for (std::size_t i = ref + 1; i < end; ++i) {
      if (tags[i].code == 10 && table.insertIndex == kNoIndex) {
        if (const auto p = pointAt(doc, tags, i, 10)) {
          table.insertIndex = i;
          table.insert = AcGePoint3d::fromArray(*p);
        }
      } else if (tags[i].code == 210) {
        if (const auto p = pointAt(doc, tags, i, 210)) table.normal = {(*p)[0], (*p)[1], (*p)[2]};
      }
    }
  }
  const std::size_t marker = findSubclass(doc, tags, "AcDbTable");
  if (marker == kNoIndex) {
    error = "the table record has no table data";
    return std::nullopt;
  }
  const std::size_t end = subclassEnd(tags, marker);
  LegacyCell* cell = nullptr;
  std::vector<std::size_t> textPieces;
  // A cell runs to the next one; the last one ends with its value block, where it has one.
  auto closeCell = [&](std::size_t at, bool last) {
    if (!cell) return;
    cell->end = last && cell->value ? cell->value->end : at;
    if (!cell->value && !textPieces.empty()) cell->text = joinedText(doc, tags, textPieces);
    textPieces.clear();
  };
  for (std::size_t i = marker + 1; i < end; ++i) {
    const Tag& tag = tags[i];
    if (tag.code == 171) {
      closeCell(i, false);
      table.cells.emplace_back();
      cell = &table.cells.back();
      cell->begin = i;
      cell->type = integer(doc, tag);
      if (table.cellsBegin == kNoIndex) table.cellsBegin = i;
      continue;
    }
    if (!cell) {
      switch (tag.code) {
        case 342: table.style = doc.toHandle(tag).value_or(0); break;
        case 343: table.graphics = doc.toHandle(tag).value_or(0); break;
        case 11:
          if (const auto p = pointAt(doc, tags, i, 11); p && table.directionIndex == kNoIndex) {
            table.directionIndex = i;
            table.direction = {(*p)[0], (*p)[1], (*p)[2]};
          }
          break;
        case 91:
          if (table.rowCountIndex == kNoIndex) table.rowCountIndex = i;
          break;
        case 92:
          if (table.columnCountIndex == kNoIndex) table.columnCountIndex = i;
          break;
        case 70: table.flow = integer(doc, tag); break;
        case 141: table.heights.push_back(i); break;
        case 142: table.widths.push_back(i); break;
        default: break;
      }
      continue;
    }
    if (cell->value) continue;  // nothing of a cell follows its value block
    switch (tag.code) {
      case 173: cell->covered = integer(doc, tag) != 0; break;
      case 175: cell->mergeWidth = std::max(1, integer(doc, tag)); break;
      case 176: cell->mergeHeight = std::max(1, integer(doc, tag)); break;
      case 344: cell->field = doc.toHandle(tag).value_or(0); break;
      case 340: cell->block = doc.toHandle(tag).value_or(0); break;
      case 144: cell->blockScale = real(doc, tag); break;
      case 140: cell->textHeight = real(doc, tag); break;
      case 170:
        if (cell->type != 2) cell->alignment = integer(doc, tag);
        break;
      case 1:
      case 2: textPieces.push_back(i); break;
      case 301:
        if (doc.bytes(tag) == "CELL_VALUE") {
          cell->valueMarker = i;
          cell->value = readValueBlock(doc, tags, i + 1, db);
          if (!cell->value) {
            error = "a cell's value cannot be read";
            return std::nullopt;
          }
          cell->text = cell->value->formatted;
          i = cell->value->end - 1;
        }
        break;
      default: break;
    }
  }
  closeCell(end, true);
  table.cellsEnd = table.cells.empty() ? kNoIndex : table.cells.back().end;
  table.valueBlocks = doc.isUnicodeVersion() ||
                      std::any_of(table.cells.begin(), table.cells.end(), [](const LegacyCell& c) { return c.value; });
  if (table.rowCountIndex == kNoIndex || table.columnCountIndex == kNoIndex) {
    error = "the table record has no row or column count";
    return std::nullopt;
  }
  table.rows = integer(doc, tags[table.rowCountIndex]);
  table.columns = integer(doc, tags[table.columnCountIndex]);
  if (table.rows < 0 || table.columns < 0 ||
      static_cast<std::size_t>(table.rows) * static_cast<std::size_t>(table.columns) != table.cells.size()) {
    error = "the table record's cells do not fill its " + std::to_string(table.rows) + " by " +
            std::to_string(table.columns) + " grid";
    return std::nullopt;
  }
  if (table.heights.size() != static_cast<std::size_t>(table.rows) ||
      table.widths.size() != static_cast<std::size_t>(table.columns)) {
    error = "the table record's row heights or column widths do not match its grid";
    return std::nullopt;
  }
  return table;
}

// The flow direction a table style gives its tables.
int styleFlow(const Document& doc, std::uint64_t style) {
  const auto record = style ? doc.findHandle(style) : std::nullopt;
  if (!record || doc.recordType(*record) != "TABLESTYLE") return 0;
  const auto tags = doc.tags(*record);
  const std::size_t marker = findSubclass(doc, tags, "AcDbTableStyle");
  if (marker == kNoIndex) return 0;
  for (std::size_t i = marker + 1; i < subclassEnd(tags, marker); ++i)
    if (tags[i].code == 70) return integer(doc, tags[i]);
  return 0;
}

// Where a cell stands in the table's merged ranges.
struct MergeState {
  bool covered = false;
  int width = 1;
  int height = 1;
  bool operator==(const MergeState&) const = default;
};

MergeState mergeState(const headless::Table& table, int row, int column) {
  MergeState state;
  int minRow = 0, maxRow = 0, minColumn = 0, maxColumn = 0;
  if (!table.isMergedCell(row, column, &minRow, &maxRow, &minColumn, &maxColumn)) return state;
  if (row != minRow || column != minColumn) {
    state.covered = true;
  } else {
    state.width = maxColumn - minColumn + 1;
    state.height = maxRow - minRow + 1;
  }
  return state;
}

// Whether a cell's group already says what the table's cell holds.
bool legacyHolds(const LegacyCell& old, const headless::TableCell& cell, const MergeState& merge,
                 const headless::Database& db) {
  const bool block = cell.type == host::AcDb::kBlockCell;
  if ((old.type == 2) != block) return false;
  if (MergeState{old.covered, old.mergeWidth, old.mergeHeight} != merge) return false;
  if (block) return old.block == liveHandle(db, cell.block);
  if (old.field != liveHandle(db, cell.field)) return false;
  if (old.text != cell.text) return false;
  if (!old.value) return cell.value.isEmpty() || cell.value == host::AcValue(cell.text);
  if (old.value->opaque) return cell.value.isEmpty();
  return old.value->value == cell.value || old.value->value == storedValue(cell);
}

// The position for a field's 344 in a cell's group: after the rotation, before any content.
std::size_t fieldPosition(const std::vector<NewTag>& group) {
  for (std::size_t i = 0; i < group.size(); ++i)
    if (group[i].code == 145) return i + 1;
  for (std::size_t i = 1; i < group.size(); ++i) {
    const int code = group[i].code;
    if (code == 340 || code == 92 || code == 301 || code == 1 || code == 2) return i;
  }
  return group.size();
}

void appendCellText(std::vector<NewTag>& out, const Document& doc, const headless::TableCell& cell,
                    const headless::Database& db, bool valueBlock, const ValueBlock* old) {
  if (valueBlock) {
    out.push_back({301, "CELL_VALUE"});
    ValueStyle style;
    if (old) style.flags = old->flags;
    style.unitType = cell.format.unitType;
    style.formatted = cell.text;
    appendValueBlock(out, doc, storedValue(cell), style, true, db);
  } else if (cell.type != host::AcDb::kBlockCell && !cell.text.empty()) {
    appendPieces(out, doc, cell.text, 2, 1);
  }
}

// A changed cell's group, starting from the group of the cell it came from.
void appendChangedCell(std::vector<NewTag>& out, const Document& doc, std::span<const Tag> tags,
                       const LegacyTable& table, const LegacyCell& old, const headless::TableCell& cell,
                       const MergeState& merge, const headless::Database& db) {
  const bool block = cell.type == host::AcDb::kBlockCell;
  const bool wasBlock = old.type == 2;
  std::vector<NewTag> group;
  const std::size_t stop = old.valueMarker != kNoIndex ? old.valueMarker : old.end;
  for (std::size_t i = old.begin; i < stop; ++i) {
    const Tag& tag = tags[i];
    switch (tag.code) {
      case 171: group.push_back(NewTag::integer(171, block ? 2 : 1)); continue;
      case 173: group.push_back(NewTag::integer(173, merge.covered ? 1 : 0)); continue;
      case 175: group.push_back(NewTag::integer(175, merge.width)); continue;
      case 176: group.push_back(NewTag::integer(176, merge.height)); continue;
      case 344: continue;           // written below when the cell holds a field
      case 1: case 2: continue;     // the text of older drawings, written below
      case 340:
        if (block) group.push_back(NewTag::handle(340, liveHandle(db, cell.block)));
        continue;
      case 144: case 179: case 331: case 300:
        // A block's scale and attribute values mean nothing to a text cell.
        if (wasBlock && !block) continue;
        break;
      default: break;
    }
    group.push_back({tag.code, doc.valueText(tag)});
  }
  if (const std::uint64_t field = block ? 0 : liveHandle(db, cell.field)) {
    group.insert(group.begin() + static_cast<std::ptrdiff_t>(fieldPosition(group)), NewTag::handle(344, field));
  }
  if (block && !wasBlock) {
    group.insert(group.begin() + static_cast<std::ptrdiff_t>(fieldPosition(group)),
                 {NewTag::handle(340, liveHandle(db, cell.block)), NewTag::real(144, cell.blockScale),
                  NewTag::integer(179, 0)});
  }
  out.insert(out.end(), group.begin(), group.end());
  appendCellText(out, doc, cell, db, table.valueBlocks, old.value ? &*old.value : nullptr);
}

AcGeVector3d unitVector(const AcGeVector3d& v) {
  const double length = v.length();
  return length > 0.0 ? AcGeVector3d{v.x / length, v.y / length, v.z / length} : v;
}

void setTag(Document& doc, RecordId id, std::size_t index, const NewTag& tag) {
  replaceTags(doc, id, index, index + 1, std::span<const NewTag>(&tag, 1));
}

void setPoint(Document& doc, RecordId id, std::size_t index, int code, double x, double y, double z) {
  const NewTag point[] = {NewTag::real(static_cast<std::int16_t>(code), x),
                          NewTag::real(static_cast<std::int16_t>(code + 10), y),
                          NewTag::real(static_cast<std::int16_t>(code + 20), z)};
  const auto tags = doc.tags(id);
  const std::size_t count = index + 2 < tags.size() && tags[index + 2].code == code + 20 ? 3 : 2;
  replaceTags(doc, id, index, index + count, std::span<const NewTag>(point, count));
}

// ---- the graphics block ------------------------------------------------------------------------

struct TextChange {
  int row = 0;
  int column = 0;
  std::wstring text;
};

// The cell under a point of the graphics block, whose origin is the insertion point and whose
// axes are the drawing's; nullopt outside the grid.
std::optional<std::pair<int, int>> cellAt(const headless::Table& table, double bx, double by) {
  const AcGeVector3d dir = table.direction();
  const AcGeVector3d n = table.normal();
  const AcGeVector3d up{n.y * dir.z - n.z * dir.y, n.z * dir.x - n.x * dir.z, n.x * dir.y - n.y * dir.x};
  const double x = bx * dir.x + by * dir.y;
  const double y = bx * up.x + by * up.y;
  const double down = table.flowDirection() == host::AcDb::kTtoB ? -y : y;
  int row = -1;
  int column = -1;
  double edge = 0.0;
  for (int r = 0; r < table.numRows() && row < 0; ++r) {
    if (down >= edge && down <= edge + table.rowHeight(r)) row = r;
    edge += table.rowHeight(r);
  }
  edge = 0.0;
  for (int c = 0; c < table.numColumns() && column < 0; ++c) {
    if (x >= edge && x <= edge + table.columnWidth(c)) column = c;
    edge += table.columnWidth(c);
  }
  if (row < 0 || column < 0) return std::nullopt;
  return std::pair{row, column};
}

// Texts the block already draws are rewritten in place; a cell that had none gets one, made
// the way a new table's texts are.
void updateGraphics(Document& doc, std::uint64_t graphics, const headless::Table& table,
                    const std::vector<TextChange>& changes, double textHeight, const HandleSource& newHandle) {
  const auto section = doc.findSection("BLOCKS");
  if (!section || graphics == 0 || changes.empty()) return;
  const auto& records = doc.sections()[*section].records;
  for (std::size_t k = 0; k < records.size(); ++k) {
    if (doc.recordType(records[k]) != "BLOCK" || RecordView(doc, records[k]).owner() != graphics) continue;
    std::vector<bool> drawn(changes.size(), false);
    std::size_t e = k + 1;
    for (; e < records.size() && doc.recordType(records[e]) != "ENDBLK"; ++e) {
      const RecordId id = records[e];
      if (doc.recordType(id) != "MTEXT") continue;
      const auto tags = doc.tags(id);
      const std::size_t marker = findSubclass(doc, tags, "AcDbMText");
      if (marker == kNoIndex) continue;
      const std::size_t end = subclassEnd(tags, marker);
      std::optional<std::array<double, 3>> at;
      std::size_t first = kNoIndex;
      std::size_t last = kNoIndex;
      for (std::size_t i = marker + 1; i < end; ++i) {
        if (tags[i].code == 10 && !at) at = pointAt(doc, tags, i, 10);
        if (tags[i].code == 3 && first == kNoIndex) first = i;
        if (tags[i].code == 1) {
          if (first == kNoIndex) first = i;
          last = i;
          break;
        }
      }
      if (!at || last == kNoIndex) continue;
      const auto cell = cellAt(table, (*at)[0], (*at)[1]);
      if (!cell) continue;
      for (std::size_t n = 0; n < changes.size(); ++n) {
        const auto& change = changes[n];
        if (change.row != cell->first || change.column != cell->second) continue;
        std::vector<NewTag> pieces;
        appendPieces(pieces, doc, change.text, 3, 1);
        replaceTags(doc, id, first, last + 1, pieces);
        drawn[n] = true;
      }
    }
    for (std::size_t n = 0; n < changes.size(); ++n) {
      if (drawn[n] || e > records.size()) continue;
      auto text = cellGraphics(doc, table, changes[n].row, changes[n].column, textHeight, graphics, newHandle);
      if (!text.empty()) doc.insertRecord(*section, e++, std::move(text));
    }
    return;
  }
}

}  // namespace

Status readTable(const Document& doc, RecordId record, const headless::Database& db, headless::Table& table,
                 TableLinks& links) {
  std::string error;
  const auto legacy = scanLegacy(doc, record, db, error);
  if (!legacy) return Status::failure(error);
  const RecordHeader header = scanRecordHeader(doc, record);
  const auto tags = doc.tags(record);

  // The second copy, where it matches the grid, adds formats and fields.
  std::optional<TableContent> content;
  const TableCompanions companions = findTableCompanions(doc, header);
  if (companions.content != kNoRecord) {
    std::string ignored;
    content = scanTableContent(doc, companions.content, db, ignored);
    if (content && (content->rows.size() != static_cast<std::size_t>(legacy->rows) ||
                    content->columns.size() != static_cast<std::size_t>(legacy->columns))) {
      content.reset();
    }
  }

  const bool wasModified = table.record().modified;
  std::vector<double> heights;
  std::vector<double> widths;
  for (const std::size_t i : legacy->heights) heights.push_back(real(doc, tags[i]));
  for (const std::size_t i : legacy->widths) widths.push_back(real(doc, tags[i]));
  table.setGrid(heights, widths);
  table.setPosition(legacy->insert);
  if (legacy->normal.length() > 0.0) table.setNormal(legacy->normal);
  if (legacy->direction.length() > 0.0) table.setDirection(legacy->direction);
  const int flow = legacy->flow.value_or(styleFlow(doc, legacy->style));
  table.setFlowDirection(flow == 1 ? host::AcDb::kBtoT : host::AcDb::kTtoB);

  TableLinks found;
  found.tableStyle = legacy->style;
  found.graphics = legacy->graphics;
  found.content = companions.content != kNoRecord ? RecordView(doc, companions.content).handle().value_or(0) : 0;
  for (int r = 0; r < legacy->rows; ++r) {
    for (int c = 0; c < legacy->columns; ++c) {
      const LegacyCell& old = legacy->cells[static_cast<std::size_t>(r * legacy->columns + c)];
      headless::TableCell& cell = table.editCell(r, c);
      cell.type = old.type == 2 ? host::AcDb::kBlockCell : host::AcDb::kTextCell;
      cell.text = old.text;
      if (old.value) {
        if (!old.value->opaque) cell.value = old.value->value;
        cell.format.dataType = old.value->dataType == 0 ? host::AcValue::kGeneral
                                                        : static_cast<host::AcValue::DataType>(old.value->dataType);
        cell.format.unitType = static_cast<host::AcValueOptions::UnitType>(old.value->unitType);
        cell.format.format = old.value->value.getFormat();
      } else if (!old.text.empty()) {
        cell.value = host::AcValue(old.text);
      }
      cell.format.textHeight = old.textHeight;
      cell.format.alignment = old.alignment;
      cell.blockScale = old.blockScale;
      std::uint64_t field = old.field;
      std::uint64_t block = cell.type == host::AcDb::kBlockCell ? old.block : 0;
      if (const ContentCell* second = content ? content->cell(r, c) : nullptr) {
        for (const auto& item : second->items) {
          if (item.type == 2 && field == 0) field = item.handle;
          if (item.type == 4 && block == 0) block = item.handle;
          if (item.hasFormat && (item.type == 1 || item.type == 2)) {
            if (item.dataType != 0) cell.format.dataType = static_cast<host::AcValue::DataType>(item.dataType);
            cell.format.unitType = static_cast<host::AcValueOptions::UnitType>(item.unitType);
            if (!item.format.empty()) cell.format.format = item.format;
          }
        }
      }
      if (field != 0 && cell.type != host::AcDb::kBlockCell) found.fields.push_back({r, c, field});
      if (block != 0) found.blocks.push_back({r, c, block});
      if (!old.covered && (old.mergeWidth > 1 || old.mergeHeight > 1)) {
        table.mergeCells({r, std::min(r + old.mergeHeight, legacy->rows) - 1, c,
                          std::min(c + old.mergeWidth, legacy->columns) - 1});
      }
    }
  }
  // As read, nothing is to be written back.
  for (int r = 0; r < legacy->rows; ++r) {
    for (int c = 0; c < legacy->columns; ++c) table.editCell(r, c).edited = false;
  }
  table.record().modified = wasModified;
  links = std::move(found);
  return Status::success();
}

std::vector<std::uint64_t> resolveTableLinks(const headless::Database& db, headless::Table& table,
                                             const TableLinks& links) {
  std::vector<std::uint64_t> unknown;
  const bool wasModified = table.record().modified;
  auto idOf = [&](std::uint64_t handle) {
    host::AcDbObjectId id;
    if (db.getAcDbObjectId(id, host::AcDbHandle(handle)) != host::Acad::eOk) {
      unknown.push_back(handle);
      return host::AcDbObjectId();
    }
    return id;
  };
  for (const auto& link : links.fields) {
    if (!table.isCell(link.row, link.column)) continue;
    if (const auto id = idOf(link.handle); !id.isNull()) {
      const bool edited = table.cell(link.row, link.column).edited;
      headless::TableCell& cell = table.editCell(link.row, link.column);
      cell.field = id;
      cell.edited = edited;
      if (auto* field = db.lookup(id); field && field->ownerId().isNull()) {
        if (auto* object = db.objects().lookupHeadless(id)) object->record().owner = table.objectId();
      }
    }
  }
  for (const auto& link : links.blocks) {
    if (!table.isCell(link.row, link.column)) continue;
    if (const auto id = idOf(link.handle); !id.isNull()) {
      const bool edited = table.cell(link.row, link.column).edited;
      headless::TableCell& cell = table.editCell(link.row, link.column);
      cell.block = id;
      cell.edited = edited;
    }
  }
  if (links.tableStyle != 0) {
    if (const auto id = idOf(links.tableStyle); !id.isNull()) table.setTableStyle(id);
  }
  table.record().modified = wasModified;
  return unknown;
}

namespace {

void appendNewCell(std::vector<NewTag>& out, const Document& doc, const headless::Table& table, int row, int column,
                   bool valueBlock) {
  const headless::Database& db = *table.record().database;
  const headless::TableCell& cell = table.cell(row, column);
  const MergeState merge = mergeState(table, row, column);
  const bool block = cell.type == host::AcDb::kBlockCell;
  out.push_back(NewTag::integer(171, block ? 2 : 1));
  out.push_back(NewTag::integer(172, 0));
  out.push_back(NewTag::integer(173, merge.covered ? 1 : 0));
  out.push_back(NewTag::integer(174, 0));
  out.push_back(NewTag::integer(175, merge.width));
  out.push_back(NewTag::integer(176, merge.height));
  if (doc.isUnicodeVersion()) out.push_back(NewTag::integer(91, 0));
  out.push_back(NewTag::integer(178, 0));
  out.push_back(NewTag::real(145, 0.0));
  if (block) {
    out.push_back(NewTag::handle(340, liveHandle(db, cell.block)));
    out.push_back(NewTag::real(144, cell.blockScale));
    out.push_back(NewTag::integer(179, 0));
  } else if (const std::uint64_t field = liveHandle(db, cell.field)) {
    out.push_back(NewTag::handle(344, field));
  }
  if (doc.isUnicodeVersion()) out.push_back(NewTag::integer(92, 0));
  appendCellText(out, doc, cell, db, valueBlock, nullptr);
}

}  // namespace

void appendTableCell(std::vector<NewTag>& out, const Document& doc, const headless::Table& table, int row,
                     int column) {
  appendNewCell(out, doc, table, row, column, doc.isUnicodeVersion());
}

Status writeTable(Document& doc, RecordId record, const headless::Table& table) {
  // Everything that can refuse the write is looked at before the first change.
  const headless::Database* db = table.record().database;
  if (!db) return Status::failure("the table is not in a drawing");
  std::string error;
  const auto legacy = scanLegacy(doc, record, *db, error);
  if (!legacy) return Status::failure(error);
  if (legacy->cells.empty() || table.numRows() < 1 || table.numColumns() < 1) {
    return Status::failure("a table without cells cannot be written");
  }
  if (const auto problem = unwritable(table)) return Status::failure(*problem);
  const TableCompanions companions = findTableCompanions(doc, scanRecordHeader(doc, record));
  std::optional<TableContent> content;
  if (companions.content != kNoRecord) {
    content = scanTableContent(doc, companions.content, *db, error);
    if (!content) return Status::failure("the table's second copy of its cells cannot be read: " + error);
  }
  bool sameGrid = table.numRows() == legacy->rows && table.numColumns() == legacy->columns;
  for (int r = 0; sameGrid && r < table.numRows(); ++r) sameGrid = table.rowOrigin(r) == r;
  for (int c = 0; sameGrid && c < table.numColumns(); ++c) sameGrid = table.columnOrigin(c) == c;
  // Row heights and column widths stand together before the cells, where rows can be added.
  std::vector<std::size_t> sizeIndices = legacy->heights;
  sizeIndices.insert(sizeIndices.end(), legacy->widths.begin(), legacy->widths.end());
  const bool together = !sizeIndices.empty() && std::is_sorted(sizeIndices.begin(), sizeIndices.end()) &&
                        sizeIndices.back() - sizeIndices.front() + 1 == sizeIndices.size();
  if (!together && !sameGrid) {
    return Status::failure("the table record's row heights and column widths are not where rows can be added");
  }

  // Tags replaced one for one come first, while every index found is good: the insertion
  // point's subclass may follow the table's, after the cells. Then the runs whose length
  // changes, from the back: the cells, then the sizes, which the scan finds only before them.
  setTag(doc, record, legacy->columnCountIndex, NewTag::integer(92, table.numColumns()));
  setTag(doc, record, legacy->rowCountIndex, NewTag::integer(91, table.numRows()));
  // The table keeps its direction as a unit vector; the record's stays as spelt while it
  // points the same way.
  const AcGeVector3d d = table.direction();
  if (legacy->directionIndex != kNoIndex && !(unitVector(legacy->direction) == d)) {
    setPoint(doc, record, legacy->directionIndex, 11, d.x, d.y, d.z);
  }
  if (legacy->insertIndex != kNoIndex) {
    const AcGePoint3d p = table.position();
    setPoint(doc, record, legacy->insertIndex, 10, p.x, p.y, p.z);
  }

  std::vector<NewTag> cells;
  std::vector<TextChange> changes;
  {
    const auto tags = doc.tags(record);
    for (int r = 0; r < table.numRows(); ++r) {
      for (int c = 0; c < table.numColumns(); ++c) {
        const headless::TableCell& cell = table.cell(r, c);
        const MergeState merge = mergeState(table, r, c);
        const int ro = table.rowOrigin(r);
        const int co = table.columnOrigin(c);
        const LegacyCell* old = ro >= 0 && co >= 0 && ro < legacy->rows && co < legacy->columns
                                    ? &legacy->cells[static_cast<std::size_t>(ro * legacy->columns + co)]
                                    : nullptr;
        const bool untouched =
            old && !cell.edited && MergeState{old->covered, old->mergeWidth, old->mergeHeight} == merge;
        if (!old) {
          appendNewCell(cells, doc, table, r, c, legacy->valueBlocks);
        } else if (untouched || legacyHolds(*old, cell, merge, *db)) {
          for (std::size_t i = old->begin; i < old->end; ++i) cells.push_back({tags[i].code, doc.valueText(tags[i])});
        } else {
          appendChangedCell(cells, doc, tags, *legacy, *old, cell, merge, *db);
        }
        if (sameGrid && old && cell.edited && old->text != cell.text &&
            cell.type != host::AcDb::kBlockCell) {
          changes.push_back({r, c, cell.text});
        }
      }
    }
  }
  replaceTags(doc, record, legacy->cellsBegin, legacy->cellsEnd, cells);

  std::vector<NewTag> sizes;
  for (int r = 0; r < table.numRows(); ++r) sizes.push_back(NewTag::real(141, table.rowHeight(r)));
  for (int c = 0; c < table.numColumns(); ++c) sizes.push_back(NewTag::real(142, table.columnWidth(c)));
  if (together) {
    replaceTags(doc, record, sizeIndices.front(), sizeIndices.back() + 1, sizes);
  } else {
    for (std::size_t i = sizeIndices.size(); i-- > 0;) setTag(doc, record, sizeIndices[i], sizes[i]);
  }

  if (content) writeTableContent(doc, *content, table, *db);
  if (!sameGrid && companions.geometry != kNoRecord) writeTableGeometry(doc, companions.geometry, table);
  // The drawing follows: changed texts in place, or all of it anew when the grid changed.
  if (sameGrid) {
    updateGraphics(doc, legacy->graphics, table, changes, styleTextHeight(doc, legacy->style), freeHandles(doc, *db));
  } else {
    redrawTable(doc, legacy->graphics, table, styleTextHeight(doc, legacy->style), freeHandles(doc, *db));
  }
  return Status::success();
}

std::optional<std::string> unwritable(const headless::Table& table) {
  auto finite = [](std::initializer_list<double> values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
  };
  // Names and formats are written as single values, which cannot hold line breaks.
  auto oneValue = [](std::wstring_view text) {
    return text.find_first_of(std::wstring_view(L"\r\n\0", 3)) == std::wstring_view::npos;
  };
  if (!oneValue(table.layer())) return "the table's layer name holds a line break";
  const auto p = table.position();
  const auto d = table.direction();
  const auto n = table.normal();
  if (!finite({p.x, p.y, p.z, d.x, d.y, d.z, n.x, n.y, n.z})) return "the table's position or direction is not a number";
  for (int r = 0; r < table.numRows(); ++r) {
    if (!finite({table.rowHeight(r)})) return "a row height of the table is not a number";
  }
  for (int c = 0; c < table.numColumns(); ++c) {
    if (!finite({table.columnWidth(c)})) return "a column width of the table is not a number";
  }
  for (int r = 0; r < table.numRows(); ++r) {
    for (int c = 0; c < table.numColumns(); ++c) {
      const headless::TableCell& cell = table.cell(r, c);
      double real = 0.0;
      host::AcValue::Point2d p2{};
      host::AcValue::Point3d p3{};
      host::AcValue::Date date;
      const bool ok = finite({cell.blockScale}) && (!cell.value.get(real) || finite({real})) &&
                      (!cell.value.get(p2) || finite({p2[0], p2[1]})) &&
                      (!cell.value.get(p3) || finite({p3[0], p3[1], p3[2]})) &&
                      (!cell.value.get(date) || finite({date.oleDate})) && oneValue(cell.format.format) &&
                      oneValue(cell.value.getFormat());
      if (!ok) {
        return "cell " + std::to_string(r) + "," + std::to_string(c) +
               " of the table holds a number or a format a drawing cannot";
      }
    }
  }
  return std::nullopt;
}

}  // namespace corvane::dxf
