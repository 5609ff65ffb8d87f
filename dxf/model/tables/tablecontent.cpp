#include "dxf/model/tables/tablecontent.h"

#include <algorithm>

#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordedit.h"
#include "dxf/tags/recordview.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/database.h"
#include "headless/db/fieldcode.h"

namespace corvane::dxf {

namespace {

constexpr std::string_view kBeginSuffix = "_BEGIN";
constexpr std::string_view kEndSuffix = "_END";

bool isTag(const Document& doc, const Tag& tag, int code, std::string_view value) {
  return tag.code == code && doc.bytes(tag) == value;
}

bool isBegin(const Document& doc, const Tag& tag) {
  return tag.code == 1 && doc.bytes(tag).ends_with(kBeginSuffix);
}

// One past the "309 NAME_END" that closes the "1 NAME_BEGIN" at `begin`, nested blocks
// skipped; kNoIndex when it is never closed.
std::size_t blockEnd(const Document& doc, std::span<const Tag> tags, std::size_t begin) {
  int depth = 0;
  for (std::size_t i = begin; i < tags.size(); ++i) {
    if (isBegin(doc, tags[i])) {
      ++depth;
    } else if (tags[i].code == 309 && doc.bytes(tags[i]).ends_with(kEndSuffix)) {
      if (--depth == 0) return i + 1;
    }
  }
  return kNoIndex;
}

// A part named by a tag ("300 CELL", "301 ROW", ...) and the blocks that follow it.
std::size_t partEnd(const Document& doc, std::span<const Tag> tags, std::size_t nameIndex) {
  std::size_t i = nameIndex + 1;
  while (i < tags.size() && isBegin(doc, tags[i])) {
    i = blockEnd(doc, tags, i);
    if (i == kNoIndex) return kNoIndex;
  }
  return i;
}

std::optional<std::size_t> findIn(std::span<const Tag> tags, int code, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to && i < tags.size(); ++i)
    if (tags[i].code == code) return i;
  return std::nullopt;
}

// The content format inside a content's formatted part.
void readContentFormat(const Document& doc, std::span<const Tag> tags, std::size_t from, std::size_t to,
                       ContentItem& item) {
  for (std::size_t i = from; i < to; ++i) {
    if (!isTag(doc, tags[i], 1, "CONTENTFORMAT_BEGIN")) continue;
    const std::size_t end = std::min(blockEnd(doc, tags, i), to);
    item.hasFormat = true;
    for (std::size_t k = i + 1; k < end; ++k) {
      const Tag& tag = tags[k];
      if (tag.code == 92) item.dataType = static_cast<int>(doc.toInteger(tag).value_or(0));
      else if (tag.code == 93) item.unitType = static_cast<int>(doc.toInteger(tag).value_or(0));
      else if (tag.code == 300) item.format = doc.text(tag);
      else if (tag.code == 144) item.textHeight = doc.toDouble(tag).value_or(0.0);
    }
    return;
  }
}

bool scanCell(const Document& doc, std::span<const Tag> tags, ContentCell& cell, const headless::Database& db) {
  const std::size_t linked = cell.begin + 1;
  if (linked >= cell.end || !isTag(doc, tags[linked], 1, "LINKEDTABLEDATACELL_BEGIN")) return false;
  const std::size_t linkedEnd = blockEnd(doc, tags, linked);
  if (linkedEnd == kNoIndex || linkedEnd > cell.end) return false;
  std::size_t i = linked + 1;
  while (i + 1 < linkedEnd) {
    const Tag& tag = tags[i];
    if (isTag(doc, tag, 1, "DATAMAP_BEGIN")) {
      const std::size_t end = blockEnd(doc, tags, i);
      if (end == kNoIndex) return false;
      for (std::size_t k = i; k < end; ++k) {
        if (tags[k].code == 300 && doc.bytes(tags[k]) == "ACAD_ROUNDTRIP_2008_CELL_CHECKSUM") {
          if (const auto at = findIn(tags, 140, k, end)) cell.checksumIndex = *at;
          break;
        }
      }
      i = end;
    } else if (isBegin(doc, tag)) {
      i = blockEnd(doc, tags, i);
      if (i == kNoIndex) return false;
    } else if (tag.code == 95) {
      cell.countIndex = i++;
      break;
    } else {
      ++i;
    }
  }
  if (cell.countIndex == kNoIndex) return false;
  // The contents, each "302 CONTENT" with its content block and its formatted part.
  while (i < linkedEnd && isTag(doc, tags[i], 302, "CONTENT")) {
    ContentItem item;
    item.begin = i;
    const std::size_t contentBegin = i + 1;
    if (contentBegin >= linkedEnd || !isTag(doc, tags[contentBegin], 1, "CELLCONTENT_BEGIN")) return false;
    const std::size_t contentEnd = blockEnd(doc, tags, contentBegin);
    if (contentEnd == kNoIndex || contentEnd > linkedEnd) return false;
    for (std::size_t k = contentBegin + 1; k + 1 < contentEnd; ++k) {
      const Tag& tag = tags[k];
      if (tag.code == 90 && item.type == 0) {
        item.type = static_cast<int>(doc.toInteger(tag).value_or(0));
      } else if (isTag(doc, tag, 300, "VALUE")) {
        item.value = readValueBlock(doc, tags, k + 1, db);
        if (item.value) k = item.value->end - 1;
      } else if (tag.code == 340 && item.handle == 0) {
        item.handle = doc.toHandle(tag).value_or(0);
      }
    }
    i = contentEnd;
    if (i < linkedEnd && isTag(doc, tags[i], 1, "FORMATTEDCELLCONTENT_BEGIN")) {
      const std::size_t end = blockEnd(doc, tags, i);
      if (end == kNoIndex || end > linkedEnd) return false;
      readContentFormat(doc, tags, i, end, item);
      i = end;
    }
    item.end = i;
    cell.items.push_back(std::move(item));
  }
  cell.itemsEnd = i;
  return true;
}

bool scanRow(const Document& doc, std::span<const Tag> tags, ContentRow& row, const headless::Database& db) {
  const std::size_t linked = row.begin + 1;
  if (linked >= row.end || !isTag(doc, tags[linked], 1, "LINKEDTABLEDATAROW_BEGIN")) return false;
  std::size_t i = linked + 1;
  if (i >= row.end || tags[i].code != 90) return false;
  row.cellCountIndex = i;
  const auto count = doc.toInteger(tags[i]).value_or(-1);
  if (count < 0) return false;
  ++i;
  for (std::int64_t c = 0; c < count; ++c) {
    if (i >= row.end || !isTag(doc, tags[i], 300, "CELL")) return false;
    ContentCell cell;
    cell.begin = i;
    cell.end = partEnd(doc, tags, i);
    if (cell.end == kNoIndex || cell.end > row.end || !scanCell(doc, tags, cell, db)) return false;
    i = cell.end;
    row.cells.push_back(std::move(cell));
  }
  for (; i < row.end; ++i) {
    if (!isTag(doc, tags[i], 1, "TABLEROW_BEGIN")) continue;
    const std::size_t end = blockEnd(doc, tags, i);
    if (const auto at = findIn(tags, 40, i, end)) {
      row.heightIndex = *at;
      row.height = doc.toDouble(tags[*at]).value_or(0.0);
    }
    break;
  }
  return true;
}

// Copies [begin, end), the tag at `replaced` (when inside) taking the given value.
void appendCopy(std::vector<NewTag>& out, const Document& doc, std::span<const Tag> tags, std::size_t begin,
                std::size_t end, std::size_t replaced = kNoIndex, const NewTag* with = nullptr) {
  for (std::size_t i = begin; i < end; ++i) {
    if (i == replaced && with) out.push_back(*with);
    else out.push_back({tags[i].code, doc.valueText(tags[i])});
  }
}

// What a cell of the table holds, in the terms of a content list.
struct WantedContent {
  int type = 0;  // 0 nothing
  std::uint64_t handle = 0;
  const headless::TableCell* cell = nullptr;
};

WantedContent wanted(const headless::TableCell& cell, const headless::Database& db) {
  WantedContent want;
  want.cell = &cell;
  if (cell.type == host::AcDb::kBlockCell) {
    want.handle = liveHandle(db, cell.block);
    want.type = want.handle != 0 ? 4 : 0;
  } else if (const std::uint64_t field = liveHandle(db, cell.field); field != 0) {
    want.type = 2;
    want.handle = field;
  } else if (!cell.value.isEmpty() || !cell.text.empty()) {
    want.type = 1;
  }
  return want;
}

bool holds(const ContentCell& old, const WantedContent& want) {
  if (want.type == 0) {
    return std::all_of(old.items.begin(), old.items.end(), [](const ContentItem& item) {
      return item.type == 1 && item.value && item.value->value.isEmpty() && item.value->formatted.empty();
    });
  }
  if (want.type == 4) {
    return std::any_of(old.items.begin(), old.items.end(),
                       [&](const ContentItem& item) { return item.type == 4 && item.handle == want.handle; });
  }
  if (old.items.size() != 1 || old.items[0].type != want.type) return false;
  const ContentItem& item = old.items[0];
  if (want.type == 2) return item.handle == want.handle;
  if (!item.value) return false;
  if (item.value->opaque) return want.cell->value.isEmpty();
  return (item.value->value == want.cell->value || item.value->value == storedValue(*want.cell)) &&
         item.value->formatted == want.cell->text;
}

// The formatted part of a content: the model's own, the cell's format written into its
// content format, or a part that overrides nothing.
void appendFormattedPart(std::vector<NewTag>& out, const Document& doc, std::span<const Tag> tags,
                         const ContentItem* model, const headless::CellFormat& format) {
  if (!model || model->end <= model->begin) {
    out.push_back({1, "FORMATTEDCELLCONTENT_BEGIN"});
    out.push_back(NewTag::integer(170, 0));
    out.push_back({309, "FORMATTEDCELLCONTENT_END"});
    return;
  }
  std::size_t i = model->begin + 1;
  i = blockEnd(doc, tags, i);  // past the content block
  if (i == kNoIndex || i >= model->end) {
    out.push_back({1, "FORMATTEDCELLCONTENT_BEGIN"});
    out.push_back(NewTag::integer(170, 0));
    out.push_back({309, "FORMATTEDCELLCONTENT_END"});
    return;
  }
  bool inFormat = false;
  for (; i < model->end; ++i) {
    const Tag& tag = tags[i];
    if (isTag(doc, tag, 1, "CONTENTFORMAT_BEGIN")) inFormat = true;
    else if (isTag(doc, tag, 309, "CONTENTFORMAT_END")) inFormat = false;
    if (inFormat && tag.code == 92 && format.dataType != host::AcValue::kUnknown) {
      out.push_back(NewTag::integer(92, format.dataType));
    } else if (inFormat && tag.code == 93) {
      out.push_back(NewTag::integer(93, format.unitType));
    } else if (inFormat && tag.code == 300) {
      out.push_back(textTag(doc, 300, format.format));
    } else {
      out.push_back({tag.code, doc.valueText(tag)});
    }
  }
}

void appendContents(std::vector<NewTag>& out, const Document& doc, std::span<const Tag> tags, const ContentCell* old,
                    const WantedContent& want, const headless::Database& db) {
  if (want.type == 0) return;
  // The old content of the same kind lends its flags and its formatted part.
  const ContentItem* model = nullptr;
  if (old) {
    for (const auto& item : old->items) {
      if (item.type == want.type) {
        model = &item;
        break;
      }
    }
    if (!model && !old->items.empty()) model = &old->items.front();
  }
  out.push_back({302, "CONTENT"});
  out.push_back({1, "CELLCONTENT_BEGIN"});
  out.push_back(NewTag::integer(90, want.type));
  if (want.type == 1) {
    out.push_back({300, "VALUE"});
    ValueStyle style;
    if (model && model->value) style.flags = model->value->flags;
    style.unitType = want.cell->format.unitType;
    style.formatted = want.cell->text;
    appendValueBlock(out, doc, storedValue(*want.cell), style, true, db);
  } else {
    out.push_back(NewTag::handle(340, want.handle));
  }
  out.push_back(NewTag::integer(91, 0));
  out.push_back({309, "CELLCONTENT_END"});
  appendFormattedPart(out, doc, tags, model, want.cell->format);
}

void appendCell(std::vector<NewTag>& out, const Document& doc, std::span<const Tag> tags, const ContentCell* old,
                const headless::TableCell& cell, const headless::Database& db) {
  const WantedContent want = wanted(cell, db);
  if (old && (!cell.edited || holds(*old, want))) {
    appendCopy(out, doc, tags, old->begin, old->end);
    return;
  }
  if (!old) {
    // A cell with nothing to copy: the parts every cell has, overriding nothing.
    out.push_back({300, "CELL"});
    out.push_back({1, "LINKEDTABLEDATACELL_BEGIN"});
    out.push_back(NewTag::integer(90, 0));
    out.push_back({300, ""});
    out.push_back(NewTag::integer(91, 0));
    out.push_back({301, "CUSTOMDATA"});
    out.push_back({1, "DATAMAP_BEGIN"});
    out.push_back(NewTag::integer(90, 0));
    out.push_back({309, "DATAMAP_END"});
    out.push_back(NewTag::integer(92, 0));
    out.push_back(NewTag::integer(95, want.type == 0 ? 0 : 1));
    appendContents(out, doc, tags, nullptr, want, db);
    out.push_back({309, "LINKEDTABLEDATACELL_END"});
    out.push_back({1, "TABLECELL_BEGIN"});
    out.push_back(NewTag::integer(90, 0));
    out.push_back(NewTag::integer(91, 0));
    out.push_back({309, "TABLECELL_END"});
    return;
  }
  // The host keeps the check sum of the cell's text to notice edits of the other copy.
  const NewTag checksum = NewTag::real(140, headless::fieldTextChecksum(cell.text));
  appendCopy(out, doc, tags, old->begin, old->countIndex, old->checksumIndex, &checksum);
  out.push_back(NewTag::integer(95, want.type == 0 ? 0 : 1));
  appendContents(out, doc, tags, old, want, db);
  appendCopy(out, doc, tags, old->itemsEnd, old->end);
}

}  // namespace

host::AcValue storedValue(const headless::TableCell& cell) {
  host::AcValue value = cell.value;
  if (value.getFormat().empty() && !value.isEmpty()) value.setFormat(cell.format.format);
  return value;
}

std::uint64_t liveHandle(const headless::Database& db, host::AcDbObjectId id) {
  if (id.isNull()) return 0;
  const auto* object = db.lookup(id);
  if (!object || object->isErased()) return 0;
  return object->handle().value();
}

const ContentCell* TableContent::cell(int row, int column) const {
  if (row < 0 || column < 0 || row >= static_cast<int>(rows.size())) return nullptr;
  const auto& cells = rows[static_cast<std::size_t>(row)].cells;
  if (column >= static_cast<int>(cells.size())) return nullptr;
  return &cells[static_cast<std::size_t>(column)];
}

TableCompanions findTableCompanions(const Document& doc, const RecordHeader& tableHeader) {
  TableCompanions found;
  if (tableHeader.extensionDictionary == 0) return found;
  const auto xdict = doc.findHandle(tableHeader.extensionDictionary);
  if (!xdict || doc.recordType(*xdict) != "DICTIONARY") return found;
  const auto dictTags = doc.tags(*xdict);
  std::uint64_t xrecordHandle = 0;
  for (std::size_t i = 0; i + 1 < dictTags.size(); ++i) {
    if (isTag(doc, dictTags[i], 3, "ACAD_XREC_ROUNDTRIP") &&
        (dictTags[i + 1].code == 350 || dictTags[i + 1].code == 360)) {
      xrecordHandle = doc.toHandle(dictTags[i + 1]).value_or(0);
      break;
    }
  }
  const auto xrecord = xrecordHandle ? doc.findHandle(xrecordHandle) : std::nullopt;
  if (!xrecord || doc.recordType(*xrecord) != "XRECORD") return found;
  const auto tags = doc.tags(*xrecord);
  bool inTable = false;
  for (const Tag& tag : tags) {
    if (tag.code == 102) inTable = doc.bytes(tag) == "ACAD_ROUNDTRIP_2008_TABLE_ENTITY";
    if (!inTable) continue;
    const auto record = (tag.code == 360 || tag.code == 361) ? doc.findHandle(doc.toHandle(tag).value_or(0))
                                                             : std::nullopt;
    if (tag.code == 360 && record && doc.recordType(*record) == "TABLECONTENT") found.content = *record;
    if (tag.code == 361 && record && doc.recordType(*record) == "TABLEGEOMETRY") found.geometry = *record;
  }
  return found;
}

std::optional<TableContent> scanTableContent(const Document& doc, RecordId record, const headless::Database& db,
                                             std::string& error) {
  const auto tags = doc.tags(record);
  TableContent content;
  content.record = record;
  const std::size_t marker = findSubclass(doc, tags, "AcDbLinkedTableData");
  if (marker == kNoIndex || marker + 1 >= tags.size() || tags[marker + 1].code != 90) {
    error = "the table content has no column list";
    return std::nullopt;
  }
  std::size_t i = marker + 1;
  content.columnCountIndex = i;
  const auto columns = doc.toInteger(tags[i]).value_or(-1);
  ++i;
  for (std::int64_t c = 0; c < columns; ++c) {
    if (i >= tags.size() || !isTag(doc, tags[i], 300, "COLUMN")) {
      error = "the table content lists fewer columns than it counts";
      return std::nullopt;
    }
    ContentColumn column;
    column.begin = i;
    column.end = partEnd(doc, tags, i);
    if (column.end == kNoIndex) {
      error = "a column of the table content is not closed";
      return std::nullopt;
    }
    for (std::size_t k = i; k < column.end; ++k) {
      if (!isTag(doc, tags[k], 1, "TABLECOLUMN_BEGIN")) continue;
      if (const auto at = findIn(tags, 40, k, column.end)) {
        column.widthIndex = *at;
        column.width = doc.toDouble(tags[*at]).value_or(0.0);
      }
      break;
    }
    i = column.end;
    content.columns.push_back(column);
  }
  if (i >= tags.size() || tags[i].code != 91) {
    error = "the table content has no row list";
    return std::nullopt;
  }
  content.rowCountIndex = i;
  const auto rows = doc.toInteger(tags[i]).value_or(-1);
  ++i;
  for (std::int64_t r = 0; r < rows; ++r) {
    if (i >= tags.size() || !isTag(doc, tags[i], 301, "ROW")) {
      error = "the table content lists fewer rows than it counts";
      return std::nullopt;
    }
    ContentRow row;
    row.begin = i;
    row.end = partEnd(doc, tags, i);
    if (row.end == kNoIndex || !scanRow(doc, tags, row, db)) {
      error = "a row of the table content cannot be read";
      return std::nullopt;
    }
    i = row.end;
    content.rows.push_back(std::move(row));
  }
  // Merged ranges follow the table format of the formatted-data part.
  content.mergeCountIndex = kNoIndex;
  const std::size_t formatted = findSubclass(doc, tags, "AcDbFormattedTableData", i);
  if (formatted != kNoIndex) {
    std::size_t k = formatted + 1;
    while (k < tags.size() && tags[k].code != 90) {
      if (isBegin(doc, tags[k])) {
        k = blockEnd(doc, tags, k);
        if (k == kNoIndex) break;
      } else {
        ++k;
      }
    }
    if (k != kNoIndex && k < tags.size()) {
      content.mergeCountIndex = k;
      const auto count = doc.toInteger(tags[k]).value_or(0);
      std::size_t m = k + 1;
      for (std::int64_t n = 0; n < count && m + 3 < tags.size(); ++n, m += 4) {
        if (tags[m].code != 91 || tags[m + 1].code != 92 || tags[m + 2].code != 93 || tags[m + 3].code != 94) break;
        content.merges.push_back({static_cast<int>(doc.toInteger(tags[m]).value_or(0)),
                                  static_cast<int>(doc.toInteger(tags[m + 2]).value_or(0)),
                                  static_cast<int>(doc.toInteger(tags[m + 1]).value_or(0)),
                                  static_cast<int>(doc.toInteger(tags[m + 3]).value_or(0))});
      }
      content.mergesEnd = m;
    }
  }
  return content;
}

bool writeTableContent(Document& doc, const TableContent& content, const headless::Table& table,
                       const headless::Database& db) {
  if (content.columns.empty() || content.rows.empty()) return false;
  const RecordId id = content.record;
  bool changed = false;

  // Merged ranges first: they stand after the rows, so the rows' indices stay good.
  if (content.mergeCountIndex != kNoIndex) {
    std::vector<NewTag> merges;
    merges.push_back(NewTag::integer(90, static_cast<std::int64_t>(table.mergedRanges().size())));
    for (const auto& range : table.mergedRanges()) {
      merges.push_back(NewTag::integer(91, range.minRow));
      merges.push_back(NewTag::integer(92, range.minColumn));
      merges.push_back(NewTag::integer(93, range.maxRow));
      merges.push_back(NewTag::integer(94, range.maxColumn));
    }
    changed |= replaceTags(doc, id, content.mergeCountIndex, content.mergesEnd, merges);
  }

  const auto tags = doc.tags(id);
  std::vector<NewTag> out;
  out.push_back(NewTag::integer(90, table.numColumns()));
  for (int c = 0; c < table.numColumns(); ++c) {
    const int origin = table.columnOrigin(c);
    const ContentColumn& model = origin >= 0 && origin < static_cast<int>(content.columns.size())
                                     ? content.columns[static_cast<std::size_t>(origin)]
                                     : content.columns.back();
    const NewTag width = NewTag::real(40, table.columnWidth(c));
    const bool same = model.widthIndex != kNoIndex && holdsValue(doc, tags[model.widthIndex], width);
    appendCopy(out, doc, tags, model.begin, model.end, model.widthIndex, same ? nullptr : &width);
  }
  out.push_back(NewTag::integer(91, table.numRows()));
  for (int r = 0; r < table.numRows(); ++r) {
    const int origin = table.rowOrigin(r);
    const bool known = origin >= 0 && origin < static_cast<int>(content.rows.size());
    const ContentRow& model = known ? content.rows[static_cast<std::size_t>(origin)] : content.rows.back();
    const std::size_t cellsBegin = model.cells.empty() ? model.cellCountIndex + 1 : model.cells.front().begin;
    const std::size_t cellsEnd = model.cells.empty() ? cellsBegin : model.cells.back().end;
    const NewTag count = NewTag::integer(90, table.numColumns());
    appendCopy(out, doc, tags, model.begin, cellsBegin, model.cellCountIndex, &count);
    for (int c = 0; c < table.numColumns(); ++c) {
      const int columnOrigin = table.columnOrigin(c);
      const ContentCell* old = nullptr;
      if (!model.cells.empty()) {
        old = columnOrigin >= 0 && columnOrigin < static_cast<int>(model.cells.size())
                  ? &model.cells[static_cast<std::size_t>(columnOrigin)]
                  : &model.cells.back();
      }
      appendCell(out, doc, tags, old, table.cell(r, c), db);
    }
    const NewTag height = NewTag::real(40, table.rowHeight(r));
    const bool same = model.heightIndex != kNoIndex && holdsValue(doc, tags[model.heightIndex], height);
    appendCopy(out, doc, tags, cellsEnd, model.end, model.heightIndex, same ? nullptr : &height);
  }
  const std::size_t end = content.rows.back().end;
  changed |= replaceTags(doc, id, content.columnCountIndex, end, out);
  return changed;
}

bool writeTableGeometry(Document& doc, RecordId record, const headless::Table& table) {
  const auto tags = doc.tags(record);
  const std::size_t marker = findSubclass(doc, tags, "AcDbTableGeometry");
  if (marker == kNoIndex || marker + 3 >= tags.size()) return false;
  const std::size_t counts = marker + 1;
  if (tags[counts].code != 90 || tags[counts + 1].code != 91 || tags[counts + 2].code != 92) return false;
  const auto oldRows = doc.toInteger(tags[counts]).value_or(0);
  const auto oldColumns = doc.toInteger(tags[counts + 1]).value_or(0);
  // Each cell's entry starts with a 93.
  std::vector<std::size_t> starts;
  std::size_t end = counts + 3;
  for (; end < tags.size() && tags[end].code != 100 && tags[end].code != 1001; ++end) {
    if (tags[end].code == 93) starts.push_back(end);
  }
  if (oldRows < 1 || oldColumns < 1 || static_cast<std::int64_t>(starts.size()) != oldRows * oldColumns) return false;
  starts.push_back(end);

  std::vector<NewTag> out;
  out.push_back(NewTag::integer(90, table.numRows()));
  out.push_back(NewTag::integer(91, table.numColumns()));
  out.push_back(NewTag::integer(92, static_cast<std::int64_t>(table.numRows()) * table.numColumns()));
  for (int r = 0; r < table.numRows(); ++r) {
    const int rowOrigin = std::clamp<int>(table.rowOrigin(r) < 0 ? static_cast<int>(oldRows) - 1 : table.rowOrigin(r),
                                          0, static_cast<int>(oldRows) - 1);
    for (int c = 0; c < table.numColumns(); ++c) {
      const int columnOrigin = std::clamp<int>(
          table.columnOrigin(c) < 0 ? static_cast<int>(oldColumns) - 1 : table.columnOrigin(c), 0,
          static_cast<int>(oldColumns) - 1);
      const std::size_t k = static_cast<std::size_t>(rowOrigin) * static_cast<std::size_t>(oldColumns) +
                            static_cast<std::size_t>(columnOrigin);
      appendCopy(out, doc, tags, starts[k], starts[k + 1]);
    }
  }
  return replaceTags(doc, record, counts, end, out);
}

}  // namespace corvane::dxf
