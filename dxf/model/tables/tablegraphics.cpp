#include "dxf/model/tables/tablegraphics.h"

#include <algorithm>
#include <array>

#include "dxf/tags/recordedit.h"
#include "dxf/tags/recordheader.h"
#include "dxf/tags/recordview.h"
#include "headless/db/table.h"

namespace corvane::dxf {

namespace {

using host::AcGeVector3d;

// The table's drawing, in the block's coordinates: the insertion point is the origin and the
// axes are the drawing's, so the rows lie along the table's direction.
class Painter {
 public:
  Painter(const Document& doc, const headless::Table& table, double styleHeight, std::uint64_t owner,
          const HandleSource& newHandle)
      : doc_(doc), table_(table), styleHeight_(styleHeight), owner_(owner), newHandle_(newHandle) {
    const AcGeVector3d n = table.normal();
    dir_ = table.direction();
    up_ = {n.y * dir_.z - n.z * dir_.y, n.z * dir_.x - n.x * dir_.z, n.x * dir_.y - n.y * dir_.x};
    if (table.flowDirection() == host::AcDb::kBtoT) down_ = 1.0;
    for (int r = 0; r <= table.numRows(); ++r) rowEdges_.push_back(r == 0 ? 0.0 : rowEdges_.back() + table.rowHeight(r - 1));
    for (int c = 0; c <= table.numColumns(); ++c) {
      columnEdges_.push_back(c == 0 ? 0.0 : columnEdges_.back() + table.columnWidth(c - 1));
    }
  }

  // The text of the merged range (or single cell) that holds the cell; empty when it shows none.
  std::vector<NewTag> cellText(int row, int column) {
    int minRow = row, maxRow = row, minColumn = column, maxColumn = column;
    table_.isMergedCell(row, column, &minRow, &maxRow, &minColumn, &maxColumn);
    const headless::TableCell& cell = table_.cell(minRow, minColumn);
    if (cell.type == host::AcDb::kBlockCell || cell.text.empty()) return {};
    return text(cell, minRow, maxRow, minColumn, maxColumn);
  }

  std::vector<std::vector<NewTag>> records() {
    std::vector<std::vector<NewTag>> out;
    for (int r = 0; r < table_.numRows(); ++r) {
      for (int c = 0; c < table_.numColumns(); ++c) {
        int minRow = r, maxRow = r, minColumn = c, maxColumn = c;
        table_.isMergedCell(r, c, &minRow, &maxRow, &minColumn, &maxColumn);
        if (minRow != r || minColumn != c) continue;  // covered by a merge
        const headless::TableCell& cell = table_.cell(r, c);
        if (cell.type == host::AcDb::kBlockCell || cell.text.empty()) continue;
        out.push_back(text(cell, r, maxRow, c, maxColumn));
      }
    }
    // Each cell edge once, leaving out the edges inside merged ranges.
    for (int r = 0; r <= table_.numRows(); ++r) {
      for (int c = 0; c < table_.numColumns(); ++c) {
        if (r > 0 && r < table_.numRows() && sameRange(r - 1, c, r, c)) continue;
        out.push_back(line(columnEdges_[static_cast<std::size_t>(c)], rowEdges_[static_cast<std::size_t>(r)],
                           columnEdges_[static_cast<std::size_t>(c) + 1], rowEdges_[static_cast<std::size_t>(r)]));
      }
    }
    for (int c = 0; c <= table_.numColumns(); ++c) {
      for (int r = 0; r < table_.numRows(); ++r) {
        if (c > 0 && c < table_.numColumns() && sameRange(r, c - 1, r, c)) continue;
        out.push_back(line(columnEdges_[static_cast<std::size_t>(c)], rowEdges_[static_cast<std::size_t>(r)],
                           columnEdges_[static_cast<std::size_t>(c)], rowEdges_[static_cast<std::size_t>(r) + 1]));
      }
    }
    return out;
  }

 private:
  bool sameRange(int r1, int c1, int r2, int c2) const {
    int a = 0, b = 0, c = 0, d = 0;
    int e = 0, f = 0, g = 0, h = 0;
    return table_.isMergedCell(r1, c1, &a, &b, &c, &d) && table_.isMergedCell(r2, c2, &e, &f, &g, &h) && a == e &&
           c == g;
  }
  // A point of the table's own frame: x along the rows, `depth` down the rows.
  std::array<double, 3> at(double x, double depth) const {
    const double y = down_ * depth;
    return {x * dir_.x + y * up_.x, x * dir_.y + y * up_.y, x * dir_.z + y * up_.z};
  }

  std::vector<NewTag> line(double x1, double d1, double x2, double d2) {
    std::vector<NewTag> out;
    appendEntityStart(out, "LINE", newHandle_(), owner_);
    out.push_back({100, "AcDbLine"});
    const auto a = at(x1, d1);
    const auto b = at(x2, d2);
    appendPoint(out, 10, a[0], a[1], a[2]);
    appendPoint(out, 11, b[0], b[1], b[2]);
    return out;
  }

  std::vector<NewTag> text(const headless::TableCell& cell, int r0, int r1, int c0, int c1) {
    const double top = rowEdges_[static_cast<std::size_t>(r0)];
    const double bottom = rowEdges_[static_cast<std::size_t>(r1) + 1];
    const double left = columnEdges_[static_cast<std::size_t>(c0)];
    const double right = columnEdges_[static_cast<std::size_t>(c1) + 1];
    double height = cell.format.textHeight > 0.0 ? cell.format.textHeight : styleHeight_;
    if (!(height > 0.0) || height > bottom - top) height = (bottom - top) / 2.0;
    std::vector<NewTag> out;
    appendEntityStart(out, "MTEXT", newHandle_(), owner_);
    out.push_back({100, "AcDbMText"});
    const auto centre = at((left + right) / 2.0, (top + bottom) / 2.0);
    appendPoint(out, 10, centre[0], centre[1], centre[2]);
    out.push_back(NewTag::real(40, height));
    out.push_back(NewTag::real(41, std::max(0.0, right - left - height)));
    out.push_back(NewTag::integer(71, 5));  // attached at its middle centre
    out.push_back(NewTag::integer(72, 1));
    appendPieces(out, doc_, cell.text, 3, 1);
    appendPoint(out, 11, dir_.x, dir_.y, dir_.z);
    return out;
  }

  const Document& doc_;
  const headless::Table& table_;
  double styleHeight_;
  std::uint64_t owner_;
  const HandleSource& newHandle_;
  AcGeVector3d dir_;
  AcGeVector3d up_;
  double down_ = -1.0;
  std::vector<double> rowEdges_;
  std::vector<double> columnEdges_;
};

}  // namespace

std::vector<std::vector<NewTag>> tableGraphics(const Document& doc, const headless::Table& table, double textHeight,
                                               std::uint64_t block, const HandleSource& newHandle) {
  return Painter(doc, table, textHeight, block, newHandle).records();
}

std::vector<NewTag> cellGraphics(const Document& doc, const headless::Table& table, int row, int column,
                                 double textHeight, std::uint64_t block, const HandleSource& newHandle) {
  return Painter(doc, table, textHeight, block, newHandle).cellText(row, column);
}

bool redrawTable(Document& doc, std::uint64_t block, const headless::Table& table, double textHeight,
                 const HandleSource& newHandle) {
  const auto section = doc.findSection("BLOCKS");
  if (!section || block == 0) return false;
  const auto records = doc.sections()[*section].records;
  for (std::size_t k = 0; k < records.size(); ++k) {
    if (doc.recordType(records[k]) != "BLOCK" || RecordView(doc, records[k]).owner() != block) continue;
    for (std::size_t e = k + 1; e < records.size() && doc.recordType(records[e]) != "ENDBLK"; ++e) {
      doc.removeRecord(records[e]);
    }
    std::size_t at = static_cast<std::size_t>(
        std::find(doc.sections()[*section].records.begin(), doc.sections()[*section].records.end(), records[k]) -
        doc.sections()[*section].records.begin()) + 1;
    for (const auto& record : tableGraphics(doc, table, textHeight, block, newHandle)) {
      doc.insertRecord(*section, at++, record);
    }
    return true;
  }
  return false;
}

double styleTextHeight(const Document& doc, std::uint64_t style) {
  const auto record = style ? doc.findHandle(style) : std::nullopt;
  if (!record || doc.recordType(*record) != "TABLESTYLE") return 0.0;
  const auto tags = doc.tags(*record);
  const std::size_t marker = findSubclass(doc, tags, "AcDbTableStyle");
  if (marker == kNoIndex) return 0.0;
  for (std::size_t i = marker + 1; i < subclassEnd(tags, marker); ++i)
    if (tags[i].code == 140) return doc.toDouble(tags[i]).value_or(0.0);
  return 0.0;
}

}  // namespace corvane::dxf
