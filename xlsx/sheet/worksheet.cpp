#include "xlsx/sheet/worksheet.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include <pugixml.hpp>

#include "xlsx/sheet/xmltext.h"

namespace corvane::xlsx {
namespace {

constexpr std::uint8_t kStyleWritten = 1;  // the cell had an s attribute, even s="0"
constexpr std::uint8_t kHasFormula = 2;
constexpr std::uint8_t kRowTouched = 1;  // its cells changed, so its spans are recomputed
constexpr std::string_view kRelationships = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

std::uint64_t packSpan(std::uint32_t offset, std::uint32_t length) {
  return (static_cast<std::uint64_t>(offset) << 32) | length;
}

bool isTextKind(CellKind kind) {
  return kind == CellKind::kInlineString || kind == CellKind::kFormulaString || kind == CellKind::kError ||
         kind == CellKind::kIsoDate;
}

std::string_view trimmedXml(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

std::optional<double> parseNumber(std::string_view text) {
  text = trimmedXml(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  double number = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
  return number;
}

void appendNumber(std::string& out, double number) {
  char buffer[32];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, number);
  out.append(buffer, ec == std::errc() ? end : buffer);
}

void appendUnsigned(std::string& out, std::uint64_t number) {
  char buffer[24];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, number);
  out.append(buffer, ec == std::errc() ? end : buffer);
}

// Attributes this file wrote itself, ` name="value"` each: the value of one, and the list
// without it.
std::optional<std::string_view> attributeIn(std::string_view list, std::string_view name) {
  std::size_t at = 0;
  while (at < list.size()) {
    const std::size_t equals = list.find("=\"", at);
    if (equals == std::string_view::npos) break;
    const std::size_t close = list.find('"', equals + 2);
    if (close == std::string_view::npos) break;
    if (list.substr(at + 1, equals - at - 1) == name) return list.substr(equals + 2, close - equals - 2);
    at = close + 1;
  }
  return std::nullopt;
}

std::string withoutAttribute(std::string_view list, std::string_view name) {
  std::string out;
  std::size_t at = 0;
  while (at < list.size()) {
    const std::size_t equals = list.find("=\"", at);
    const std::size_t close = equals == std::string_view::npos ? equals : list.find('"', equals + 2);
    if (close == std::string_view::npos) {
      out.append(list.substr(at));
      break;
    }
    if (list.substr(at + 1, equals - at - 1) != name) out.append(list.substr(at, close + 1 - at));
    at = close + 1;
  }
  return out;
}

// A range after `row` was removed: nullopt when the range lay on that row alone.
std::optional<CellRange> rangeWithoutRow(CellRange range, std::uint32_t row) {
  if (range.last.row < row) return range;
  if (range.first.row > row) {
    --range.first.row;
    --range.last.row;
    return range;
  }
  if (range.first.row == range.last.row) return std::nullopt;
  --range.last.row;
  return range;
}

void appendStartTag(std::string& out, std::string_view name, const char* const* attributes) {
  out += '<';
  out += name;
  for (; *attributes; attributes += 2) appendAttribute(out, attributes[0], attributes[1]);
  out += '>';
}

}  // namespace

// Builds the sheet from the part's events, and from batches of rows read straight from their
// bytes or the DOM parser's tree where it can (readBytes, readTree). Only <sheetData> is taken
// apart; of the rest it notes where the pieces serialize() may replace are.
class WorksheetReader : public XmlStream {
 public:
  explicit WorksheetReader(Worksheet& sheet) : sheet_(sheet) {}

  // What the events alone could not check; empty when the sheet is whole.
  std::string finish() {
    if (!sawSheetData_) return "the sheet has no <sheetData>";
    if (!sorted_) {
      std::stable_sort(sheet_.cells_.begin(), sheet_.cells_.end(), [](const auto& a, const auto& b) {
        return a.row != b.row ? a.row < b.row : a.column < b.column;
      });
      std::stable_sort(sheet_.rows_.begin(), sheet_.rows_.end(),
                       [](const auto& a, const auto& b) { return a.row < b.row; });
    }
    for (std::size_t i = 1; i < sheet_.cells_.size(); ++i) {
      const auto& a = sheet_.cells_[i - 1];
      const auto& b = sheet_.cells_[i];
      if (a.row == b.row && a.column == b.column) {
        return "cell " + cellRefText({b.row, b.column}) + " appears twice";
      }
    }
    for (std::size_t i = 1; i < sheet_.rows_.size(); ++i) {
      if (sheet_.rows_[i - 1].row == sheet_.rows_[i].row) {
        return "row " + std::to_string(sheet_.rows_[i].row) + " appears twice";
      }
    }
    if (sheet_.pool_.size() > std::numeric_limits<std::uint32_t>::max()) return "the sheet's texts are too large";
    sheet_.layout_.size = size_;
    if (!sheet_.layout_.legacyDrawingAt) sheet_.layout_.legacyDrawingAt = rootEnd_;
    return {};
  }
  void count(std::size_t bytes) { size_ += bytes; }

 protected:
  void startElement(std::string_view name, const char* const* attributes) override {
    ++depth_;
    if (captureDepth_) return capture(name, attributes);
    const std::string_view local = localName(name);
    if (depth_ == 1) {
      if (local != "worksheet") return fail("the part is not a worksheet: its root is <" + std::string(name) + ">");
      rootName_ = name;
      const char* r = findAttribute(attributes, "xmlns:r");
      sheet_.layout_.declaresR = r && r == kRelationships;
      return;
    }
    if (inSheetData_) return sheetDataStart(name, local, attributes);
    if (depth_ == 2) return topLevelStart(name, local);
    if (depth_ == 3 && inMerge_ && local == "mergeCell") {
      const char* ref = findAttribute(attributes, "ref");
      sheet_.merged_.emplace_back(ref ? ref : "");
    }
  }

  void endElement(std::string_view name) override {
    if (captureDepth_) {
      if (depth_ == captureDepth_) captureDepth_ = 0;
      endCapture(name);
      --depth_;
      return;
    }
    if (inSheetData_) sheetDataEnd(localName(name));
    if (depth_ == 2) {
      const std::uint64_t end = eventOffset() + eventLength();
      auto& layout = sheet_.layout_;
      if (localName(name) == "sheetData") {
        inSheetData_ = false;
        if (eventLength()) layout.sheetDataEnd = end;
      } else if (inMerge_) {
        inMerge_ = false;
        if (eventLength()) layout.mergeEnd = end;
      } else if (inDimension_) {
        inDimension_ = false;
        if (eventLength()) layout.dimensionEnd = end;
      }
    } else if (depth_ == 1) {
      rootEnd_ = eventOffset();
    }
    --depth_;
  }

  void text(std::string_view text) override {
    if (captureDepth_ && captureTo_) {
      appendEscapedText(*captureTo_, text);
      if (inInline_ && collect_) collect_->append(text);
    } else if (collect_) {
      collect_->append(text);
    }
  }

 protected:
  // Batches start and end between rows.
  void saveState() override {
    saved_ = {sheet_.cells_.size(), sheet_.extras_.size(), sheet_.rows_.size(), sheet_.pool_.size(),
              lastRow_,           lastColumn_,           sorted_};
  }
  void restoreState() override {
    sheet_.cells_.resize(saved_.cells);
    sheet_.extras_.resize(saved_.extras);
    sheet_.rows_.resize(saved_.rows);
    sheet_.pool_.resize(saved_.pool);
    lastRow_ = saved_.lastRow;
    lastColumn_ = saved_.lastColumn;
    sorted_ = saved_.sorted;
    depth_ = 2;
    captureDepth_ = phoneticDepth_ = 0;
    collect_ = captureTo_ = nullptr;
    inInline_ = false;
    rowChildren_.clear();
  }

  // Rows of plain cells are read here straight from the bytes: values, formulas and inline
  // strings of plain text runs, named with the prefix of <sheetData>. Anything else (other
  // elements, comments, line ends that are not plain line feeds) leaves the batch to the tree.
  // Texts are decoded in place and names and attribute values ended with a NUL there.
  BatchRead readBytes(char* bytes, std::size_t size) override {
    at_ = bytes;
    end_ = bytes + size;
    while (true) {
      skipText();  // between rows: not kept
      if (at_ == end_) return BatchRead::kRead;
      if (!scanRow()) return BatchRead::kOn;
      if (failed()) return BatchRead::kRead;
    }
  }

  // Rows of plain cells are read here, straight from the tree: values, formulas and inline
  // strings of plain text runs. A row or cell holding anything else (extensions, rich text,
  // child elements the events keep as they are) leaves the batch to the events.
  BatchRead readTree(const pugi::xml_node& first, bool nonAscii) override {
    for (pugi::xml_node row = first; row; row = row.next_sibling()) {
      const pugi::xml_node_type type = row.type();
      if (type == pugi::node_pcdata) continue;  // white space between rows
      if (!isElement(row, "row", nonAscii)) return BatchRead::kOn;
      rowStart(treeAttributes_.data());
      if (failed()) return BatchRead::kRead;
      for (pugi::xml_node c = row.first_child(); c; c = c.next_sibling()) {
        if (c.type() == pugi::node_pcdata) continue;
        if (!isElement(c, "c", nonAscii)) return BatchRead::kOn;
        cellStart(treeAttributes_.data());
        if (failed()) return BatchRead::kRead;
        if (!readCellChildren(c, nonAscii)) return BatchRead::kOn;
        cellEnd(treeValue_, treeFormula_, inlineText_);
        if (failed()) return BatchRead::kRead;
      }
    }
    return BatchRead::kRead;
  }

 private:
  // ---- Reading rows from the bytes: each step false where the bytes are not what it reads.

  void skipText() {
    const void* open = std::memchr(at_, '<', static_cast<std::size_t>(end_ - at_));
    at_ = open ? static_cast<char*>(const_cast<void*>(open)) : end_;
  }
  static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
  void skipBlanks() {
    while (at_ < end_ && isBlank(*at_)) ++at_;
  }
  // The prefix of <sheetData> and `local`, at the cursor. Names are a few bytes: a loop beats
  // a call.
  bool name(std::string_view local) {
    const std::string& prefix = sheet_.layout_.prefix;
    if (static_cast<std::size_t>(end_ - at_) < prefix.size() + local.size()) return false;
    const char* p = at_;
    for (const char c : prefix) {
      if (*p++ != c) return false;
    }
    for (const char c : local) {
      if (*p++ != c) return false;
    }
    at_ = const_cast<char*>(p);
    return true;
  }
  // One of the five named references at `from` (just after its '&'): its character, and
  // `from` moved past its ';'. The batch's checks let no other through.
  static char reference(char*& from) {
    static constexpr struct {
      std::string_view name;
      char c;
    } kNamed[] = {{"amp;", '&'}, {"lt;", '<'}, {"gt;", '>'}, {"quot;", '"'}, {"apos;", '\''}};
    for (const auto& [text, c] : kNamed) {
      if (std::string_view(from, text.size()) == text) {
        from += text.size();
        return c;
      }
    }
    return 0;
  }
  // Whether the tag at the cursor ('<' there) starts an element named prefix + `local`.
  bool isTag(std::string_view local) {
    char* const tag = at_;
    ++at_;
    const bool named = name(local) && at_ < end_ && (isBlank(*at_) || *at_ == '>' || *at_ == '/');
    at_ = tag;
    return named;
  }
  // The start tag of an element named prefix + `local` at the cursor, its attributes into
  // treeAttributes_; `empty` for <a/>.
  bool startTag(std::string_view local, bool& empty) {
    if (!isTag(local)) return false;
    at_ += 1 + sheet_.layout_.prefix.size() + local.size();
    treeAttributes_.clear();
    while (true) {
      const bool blank = at_ < end_ && isBlank(*at_);
      skipBlanks();
      if (at_ == end_) return false;
      if (*at_ == '>' || *at_ == '/') {
        empty = *at_ == '/';
        if (empty && (++at_ == end_ || *at_ != '>')) return false;
        ++at_;
        treeAttributes_.push_back(nullptr);
        return true;
      }
      if (!blank) return false;  // attributes are set apart by white space
      char* const attribute = at_;
      const auto nameStart = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
      const auto nameChar = [&](char c) { return nameStart(c) || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == ':'; };
      if (!nameStart(*at_)) return false;
      while (at_ < end_ && nameChar(*at_)) ++at_;
      char* const nameEnd = at_;
      skipBlanks();
      if (at_ == end_ || *at_ != '=') return false;
      ++at_;
      skipBlanks();
      if (at_ == end_ || (*at_ != '"' && *at_ != '\'')) return false;
      const char quote = *at_++;
      char* const value = at_;
      char* out = at_;
      while (true) {
        if (at_ == end_) return false;
        const char c = *at_;
        if (c == quote) break;
        // The XML parser refuses '<' and turns white space other than blanks into blanks.
        if (c == '<' || c == '\t' || c == '\n' || c == '\r') return false;
        if (c == '&') {
          ++at_;
          if (!(*out++ = reference(at_))) return false;
        } else {
          *out++ = c;
          ++at_;
        }
      }
      ++at_;
      *nameEnd = '\0';
      *out = '\0';
      for (std::size_t i = 0; i < treeAttributes_.size(); i += 2) {
        if (*treeAttributes_[i] == *attribute && std::strcmp(treeAttributes_[i], attribute) == 0) return false;  // twice
      }
      treeAttributes_.push_back(attribute);
      treeAttributes_.push_back(value);
    }
  }
  // The end tag of prefix + `local` at the cursor.
  bool endTag(std::string_view local) {
    char* const tag = at_;
    if (end_ - at_ < 2 || at_[1] != '/') return false;
    at_ += 2;
    if (!name(local)) {
      at_ = tag;
      return false;
    }
    skipBlanks();
    if (at_ == end_ || *at_ != '>') {
      at_ = tag;
      return false;
    }
    ++at_;
    return true;
  }
  // The text of an element whose start tag was read, decoded, and its end tag.
  bool elementText(std::string_view local, bool empty, std::string_view& text) {
    if (empty) {
      text = {};
      return true;
    }
    char* const begin = at_;
    char* out = at_;
    while (at_ < end_ && *at_ != '<') {
      const char c = *at_;
      if (c == '\r') return false;  // line ends the parsers normalise
      if (c == '&') {
        ++at_;
        if (!(*out++ = reference(at_))) return false;
      } else {
        *out++ = c;
        ++at_;
      }
    }
    text = std::string_view(begin, static_cast<std::size_t>(out - begin));
    return at_ < end_ && endTag(local);
  }

  bool scanRow() {
    bool empty = false;
    if (!startTag("row", empty)) return false;
    rowStart(treeAttributes_.data());
    if (failed() || empty) return true;
    while (true) {
      skipText();  // between cells: not kept
      if (at_ == end_) return false;
      if (endTag("row")) return true;
      if (!startTag("c", empty)) return false;
      cellStart(treeAttributes_.data());
      if (failed()) return true;
      treeValue_ = treeFormula_ = {};
      if (!empty && !scanCellChildren()) return false;
      cellEnd(treeValue_, treeFormula_, inlineText_);
      if (failed()) return true;
    }
  }

  bool scanCellChildren() {
    while (true) {
      skipText();  // beside the cell's elements: not kept
      if (at_ == end_) return false;
      if (endTag("c")) return true;
      bool empty = false;
      if (isTag("v")) {
        hasValue_ = true;
        if (!startTag("v", empty) || !elementText("v", empty, treeValue_)) return false;
      } else if (isTag("f")) {
        if (!startTag("f", empty)) return false;
        hasFormula_ = true;
        formulaAttributes_.clear();
        for (auto a = treeAttributes_.data(); *a; a += 2) appendAttribute(formulaAttributes_, a[0], a[1]);
        if (!elementText("f", empty, treeFormula_)) return false;
      } else if (isTag("is")) {
        if (!startTag("is", empty)) return false;
        hasInline_ = true;
        richInline_ = false;
        inlineText_.clear();
        while (!empty) {
          skipText();
          if (at_ == end_) return false;
          if (endTag("is")) break;
          bool emptyRun = false;
          std::string_view run;
          if (!startTag("t", emptyRun) || !elementText("t", emptyRun, run)) return false;
          inlineText_ += run;
        }
      } else {
        return false;
      }
    }
  }

  // An element named `local` whose name and attributes the events would give alike; its
  // attributes are then in treeAttributes_.
  bool isElement(const pugi::xml_node& node, std::string_view local, bool nonAscii) {
    if (node.type() != pugi::node_element) return false;
    const std::string_view name = node.name();
    if (localName(name) != local) return false;
    // The events take a batch whose names are not ASCII back to the XML parser.
    if (nonAscii && std::any_of(name.begin(), name.end(), [](char ch) { return static_cast<unsigned char>(ch) >= 0x80; })) {
      return false;
    }
    return attributesOf(node, nonAscii, treeAttributes_);
  }

  // The <v>, <f> and <is> of a cell into treeValue_, treeFormula_ and inlineText_; false for a
  // child the tree reader leaves to the events.
  bool readCellChildren(const pugi::xml_node& c, bool nonAscii) {
    treeValue_ = treeFormula_ = {};
    for (pugi::xml_node child = c.first_child(); child; child = child.next_sibling()) {
      if (child.type() == pugi::node_pcdata) continue;  // text beside the cell's elements is not kept
      if (isElement(child, "v", nonAscii) && !child.first_child()) {
        hasValue_ = true;
        treeValue_ = child.value();
      } else if (isElement(child, "f", nonAscii) && !child.first_child()) {
        hasFormula_ = true;
        formulaAttributes_.clear();
        for (auto a = treeAttributes_.data(); *a; a += 2) appendAttribute(formulaAttributes_, a[0], a[1]);
        treeFormula_ = child.value();
      } else if (isElement(child, "is", nonAscii)) {
        hasInline_ = true;
        richInline_ = false;
        inlineText_.clear();
        for (pugi::xml_node run = child.first_child(); run; run = run.next_sibling()) {
          if (run.type() == pugi::node_pcdata) continue;
          if (!isElement(run, "t", nonAscii) || run.first_child()) return false;
          inlineText_ += run.value();
        }
      } else {
        return false;
      }
    }
    return true;
  }

  void topLevelStart(std::string_view name, std::string_view local) {
    auto& layout = sheet_.layout_;
    const std::uint64_t begin = eventOffset();
    const std::uint64_t end = begin + eventLength();
    if (local == "sheetData") {
      if (sawSheetData_) return fail("the sheet has two <sheetData>");
      sawSheetData_ = inSheetData_ = true;
      layout.sheetDataBegin = begin;
      layout.sheetDataEnd = end;
      layout.prefix = std::string(name.substr(0, name.size() - local.size()));
      readContentInBatches({rootName_, std::string(name)}, layout.prefix + "row");
    } else if (local == "dimension") {
      inDimension_ = layout.hasDimension = true;
      layout.dimensionBegin = begin;
      layout.dimensionEnd = end;
    } else if (local == "mergeCells") {
      inMerge_ = layout.hasMerge = true;
      layout.mergeBegin = begin;
      layout.mergeEnd = end;
    } else if (local == "legacyDrawing") {
      layout.hasLegacyDrawing = true;
    } else if (!layout.legacyDrawingAt && sawSheetData_ &&
               (local == "legacyDrawingHF" || local == "drawingHF" || local == "picture" || local == "oleObjects" ||
                local == "controls" || local == "webPublishItems" || local == "tableParts" || local == "extLst" ||
                local == "AlternateContent")) {
      layout.legacyDrawingAt = begin;
    }
  }

  void sheetDataStart(std::string_view name, std::string_view local, const char* const* attributes) {
    if (depth_ == 3) {
      if (local != "row") return fail("<" + std::string(name) + "> in <sheetData> is not a row");
      return rowStart(attributes);
    }
    if (depth_ == 4) {
      if (local != "c") {
        // A row's own extensions, kept as they are.
        captureTo_ = &rowChildren_;
        captureDepth_ = depth_;
        capture(name, attributes);
        return;
      }
      return cellStart(attributes);
    }
    // depth 5: the cell's children
    if (local == "v") {
      value_.clear();
      hasValue_ = true;
      collect_ = &value_;
    } else if (local == "f") {
      hasFormula_ = true;
      formula_.clear();
      formulaAttributes_.clear();
      for (auto a = attributes; *a; a += 2) appendAttribute(formulaAttributes_, a[0], a[1]);
      collect_ = &formula_;
    } else if (local == "is") {
      hasInline_ = true;
      inlineText_.clear();
      inlineXml_.clear();
      richInline_ = false;
      inInline_ = true;
      captureTo_ = &inlineXml_;
      captureDepth_ = depth_;
      capture(name, attributes);
    } else {
      captureTo_ = &children_;
      captureDepth_ = depth_;
      capture(name, attributes);
    }
  }

  void sheetDataEnd(std::string_view local) {
    if (depth_ == 5) {
      collect_ = nullptr;
    } else if (depth_ == 4 && local == "c") {
      cellEnd(value_, formula_, inlineText_);
    } else if (depth_ == 3) {
      if (!rowChildren_.empty()) {
        currentRow().children = sheet_.pool(rowChildren_);
        rowChildren_.clear();
      }
    }
  }

  Worksheet::Row& currentRow() { return sheet_.rows_.back(); }

  void rowStart(const char* const* attributes) {
    Worksheet::Row row;
    const char* r = findAttribute(attributes, "r");
    if (r) {
      std::uint32_t number = 0;
      const std::string_view text(r);
      const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
      if (ec != std::errc() || end != text.data() + text.size() || number == 0 || number > kMaxRow) {
        return fail("row number \"" + std::string(text) + "\" is not between 1 and " + std::to_string(kMaxRow));
      }
      row.row = number;
    } else {
      row.row = lastRow_ + 1;
      if (row.row > kMaxRow) return fail("more rows than a sheet can have");
    }
    if (row.row <= lastRow_) sorted_ = false;
    lastRow_ = row.row;
    lastColumn_ = 0;
    rowChildren_.clear();
    attributes_.clear();
    for (auto a = attributes; *a; a += 2) {
      const std::string_view attribute(a[0]);
      if (attribute == "r") continue;
      if (attribute == "spans") {
        row.spans = sheet_.pool(a[1]);
      } else {
        appendAttribute(attributes_, a[0], a[1]);
      }
    }
    row.attributes = sheet_.pool(attributes_);
    sheet_.rows_.push_back(row);
  }

  void cellStart(const char* const* attributes) {
    cell_ = Worksheet::Cell{};
    cell_.row = lastRow_;
    type_.clear();
    kindOfType_ = CellKind::kNumber;
    hasValue_ = hasFormula_ = hasInline_ = false;
    attributes_.clear();
    children_.clear();
    std::uint32_t column = lastColumn_ + 1;
    for (auto a = attributes; *a; a += 2) {
      const std::string_view attribute(a[0]);
      if (attribute == "r") {
        const auto ref = parseCellRef(a[1]);
        if (!ref) return fail("\"" + std::string(a[1]) + "\" is not a cell reference");
        if (ref->row != lastRow_) {
          return fail("cell " + std::string(a[1]) + " is in row " + std::to_string(lastRow_));
        }
        column = ref->column;
      } else if (attribute == "s") {
        const std::string_view text(a[1]);
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), cell_.style);
        if (ec != std::errc() || end != text.data() + text.size()) {
          return fail("style \"" + std::string(text) + "\" is not a number");
        }
        cell_.flags |= kStyleWritten;
      } else if (attribute == "t") {
        type_ = a[1];
        kindOfType_ = kindOfType(type_);
      } else {
        appendAttribute(attributes_, a[0], a[1]);
      }
    }
    if (column > kMaxColumn) return fail("more cells in row " + std::to_string(lastRow_) + " than a row can have");
    if (column <= lastColumn_) sorted_ = false;
    lastColumn_ = column;
    cell_.column = static_cast<std::uint16_t>(column);
  }

  // The kind a t attribute gives; kBlank for one that is not known.
  static CellKind kindOfType(std::string_view type) {
    if (type.empty() || type == "n") return CellKind::kNumber;
    if (type == "s") return CellKind::kSharedString;
    if (type == "b") return CellKind::kBoolean;
    if (type == "str") return CellKind::kFormulaString;
    if (type == "e") return CellKind::kError;
    if (type == "d") return CellKind::kIsoDate;
    if (type == "inlineStr") return CellKind::kInlineString;
    return CellKind::kBlank;
  }

  // The cell whose start tag cellStart() read, given the texts of its <v>, <f> and <is>.
  void cellEnd(std::string_view value, std::string_view formula, std::string_view inlineText) {
    auto& cell = cell_;
    const auto where = [&] { return cellRefText({cell.row, cell.column}); };
    const CellKind kind = kindOfType_;
    // Some writers leave an empty <v/> after a formula never calculated: no value, except
    // for a text result, which may be empty.
    if (hasValue_ && kind != CellKind::kFormulaString && trimmedXml(value).empty()) hasValue_ = false;
    switch (kind) {
      case CellKind::kNumber:
        if (hasValue_) {
          const auto number = parseNumber(value);
          if (!number) return fail("cell " + where() + ": \"" + std::string(value) + "\" is not a number");
          cell.kind = CellKind::kNumber;
          cell.payload = std::bit_cast<std::uint64_t>(*number);
        }
        break;
      case CellKind::kSharedString:
        if (hasValue_) {
          const std::string_view text = trimmedXml(value);
          std::uint32_t index = 0;
          const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), index);
          if (ec != std::errc() || end != text.data() + text.size()) {
            return fail("cell " + where() + ": \"" + std::string(value) + "\" is not a shared string index");
          }
          cell.kind = CellKind::kSharedString;
          cell.payload = index;
        }
        break;
      case CellKind::kBoolean:
        if (hasValue_) {
          const std::string_view text = trimmedXml(value);
          if (text != "0" && text != "1" && text != "true" && text != "false") {
            return fail("cell " + where() + ": \"" + std::string(value) + "\" is not a boolean");
          }
          cell.kind = CellKind::kBoolean;
          cell.payload = text == "1" || text == "true";
        }
        break;
      case CellKind::kFormulaString:
      case CellKind::kError:
      case CellKind::kIsoDate:
        if (hasValue_) {
          cell.kind = kind;
          decoded_.clear();
          if (cell.kind == CellKind::kFormulaString) {
            appendDecodedXstring(decoded_, value);
          } else {
            decoded_.append(trimmedXml(value));
          }
          const auto span = sheet_.pool(decoded_);
          cell.payload = packSpan(span.offset, span.length);
        }
        break;
      case CellKind::kInlineString:
        if (hasInline_) {
          cell.kind = CellKind::kInlineString;
          decoded_.clear();
          appendDecodedXstring(decoded_, inlineText);
          const auto span = sheet_.pool(decoded_);
          cell.payload = packSpan(span.offset, span.length);
        }
        break;
      case CellKind::kBlank:
        return fail("cell " + where() + " has the unknown type \"" + type_ + "\"");
    }
    if (hasFormula_) cell.flags |= kHasFormula;
    const bool keepInline = hasInline_ && richInline_ && cell.kind == CellKind::kInlineString;
    if (hasFormula_ || !attributes_.empty() || !children_.empty() || keepInline) {
      Worksheet::Extra extra;
      extra.attributes = sheet_.pool(attributes_);
      if (hasFormula_) {
        extra.formulaAttributes = sheet_.pool(formulaAttributes_);
        extra.formula = sheet_.pool(formula);
      }
      extra.children = sheet_.pool(children_);
      if (keepInline) extra.inlineXml = sheet_.pool(inlineXml_);
      cell.extra = static_cast<std::uint32_t>(sheet_.extras_.size());
      sheet_.extras_.push_back(extra);
    }
    sheet_.cells_.push_back(cell);
  }

  // Re-writes an element that is kept whole; in an inline string it also gathers the text of
  // the runs, phonetic runs left out.
  void capture(std::string_view name, const char* const* attributes) {
    appendStartTag(*captureTo_, name, attributes);
    if (!inInline_) return;
    const std::string_view local = localName(name);
    if (local == "r" || local == "rPh" || local == "phoneticPr") richInline_ = true;
    if (local == "rPh") phoneticDepth_ = depth_;
    if (local == "t" && !phoneticDepth_) collect_ = &inlineText_;
  }
  void endCapture(std::string_view name) {
    *captureTo_ += "</";
    *captureTo_ += name;
    *captureTo_ += '>';
    if (!inInline_) return;
    if (localName(name) == "t") collect_ = nullptr;
    if (phoneticDepth_ == depth_) phoneticDepth_ = 0;
    if (!captureDepth_) inInline_ = false;
  }

  Worksheet& sheet_;
  std::uint64_t size_ = 0, rootEnd_ = 0;
  int depth_ = 0, captureDepth_ = 0, phoneticDepth_ = 0;
  bool sawSheetData_ = false, inSheetData_ = false, inMerge_ = false, inDimension_ = false;
  bool sorted_ = true;
  std::uint32_t lastRow_ = 0, lastColumn_ = 0;
  Worksheet::Cell cell_;
  std::string type_;
  CellKind kindOfType_ = CellKind::kNumber;
  bool hasValue_ = false, hasFormula_ = false, hasInline_ = false, richInline_ = false, inInline_ = false;
  std::string value_, formula_, formulaAttributes_, attributes_, children_, rowChildren_;
  std::string inlineText_, inlineXml_, decoded_;
  std::vector<const char*> treeAttributes_;
  std::string_view treeValue_, treeFormula_;
  char* at_ = nullptr;  // where readBytes() is in the batch
  char* end_ = nullptr;
  std::string* collect_ = nullptr;
  std::string* captureTo_ = nullptr;
  std::string rootName_;
  struct {
    std::size_t cells = 0, extras = 0, rows = 0, pool = 0;
    std::uint32_t lastRow = 0, lastColumn = 0;
    bool sorted = true;
  } saved_;
};

std::optional<Worksheet> Worksheet::parse(const ChunkSource& source, std::string& error) {
  Worksheet sheet;
  WorksheetReader reader(sheet);
  const ChunkSource counted = [&](const ChunkSink& sink) {
    return source([&](std::string_view chunk) {
      reader.count(chunk.size());
      return sink(chunk);
    });
  };
  if (!reader.run(counted, error) || !(error = reader.finish()).empty()) {
    error = "worksheet: " + error;
    return std::nullopt;
  }
  // A copy to give back what growth left over costs a moment and, while it is made, the
  // memory of both; worth it only where much is left over.
  const auto trim = [](auto& container) {
    if (container.capacity() - container.size() > container.size() / 8) container.shrink_to_fit();
  };
  trim(sheet.cells_);
  trim(sheet.pool_);
  return sheet;
}

Worksheet::Span Worksheet::pool(std::string_view text) {
  if (text.empty()) return {};
  Span span{static_cast<std::uint32_t>(pool_.size()), static_cast<std::uint32_t>(text.size())};
  pool_.append(text);
  return span;
}

CellView Worksheet::cell(std::size_t position) const {
  const Cell& c = cells_.at(position);
  return CellView{c.row, c.column, c.kind, c.style, (c.flags & kHasFormula) != 0, position};
}

void Worksheet::visit(const std::function<void(const CellView&)>& visitor) const {
  for (std::size_t i = 0; i < cells_.size(); ++i) visitor(cell(i));
}

std::optional<CellView> Worksheet::find(CellRef at) const {
  const auto it = std::lower_bound(cells_.begin(), cells_.end(), at, [](const Cell& c, CellRef ref) {
    return c.row != ref.row ? c.row < ref.row : c.column < ref.column;
  });
  if (it == cells_.end() || it->row != at.row || it->column != at.column) return std::nullopt;
  return cell(static_cast<std::size_t>(it - cells_.begin()));
}

double Worksheet::number(std::size_t position) const {
  const Cell& c = cells_.at(position);
  if (c.kind == CellKind::kNumber) return std::bit_cast<double>(c.payload);
  if (c.kind == CellKind::kBoolean) return c.payload ? 1.0 : 0.0;
  return 0.0;
}

std::string_view Worksheet::text(std::size_t position, const SharedStrings& strings) const {
  const Cell& c = cells_.at(position);
  if (c.kind == CellKind::kSharedString) return strings.at(c.payload);
  if (!isTextKind(c.kind)) return {};
  return pooled({static_cast<std::uint32_t>(c.payload >> 32), static_cast<std::uint32_t>(c.payload)});
}

std::string_view Worksheet::formula(std::size_t position) const {
  const Cell& c = cells_.at(position);
  if (!(c.flags & kHasFormula) || c.extra == kNoExtra) return {};
  return pooled(extras_[c.extra].formula);
}

CellValue Worksheet::value(std::size_t position, const SharedStrings& strings) const {
  const Cell& c = cells_.at(position);
  switch (c.kind) {
    case CellKind::kNumber:
      return number(position);
    case CellKind::kBoolean:
      return c.payload != 0;
    case CellKind::kError:
      return ErrorText{std::string(text(position, strings))};
    case CellKind::kBlank:
      return {};
    default:
      return std::string(text(position, strings));
  }
}

std::optional<CellRange> Worksheet::usedRange() const {
  if (cells_.empty()) return std::nullopt;
  CellRange range{{cells_.front().row, kMaxColumn}, {cells_.back().row, 1}};
  for (const Cell& c : cells_) {
    range.first.column = std::min<std::uint32_t>(range.first.column, c.column);
    range.last.column = std::max<std::uint32_t>(range.last.column, c.column);
  }
  return range;
}

std::vector<CellRange> Worksheet::mergedCells() const {
  std::vector<CellRange> ranges;
  for (const auto& text : merged_) {
    if (const auto range = parseCellRange(text)) ranges.push_back(*range);
  }
  return ranges;
}

Worksheet::Extra& Worksheet::extraOf(Cell& cell) {
  if (cell.extra == kNoExtra) {
    cell.extra = static_cast<std::uint32_t>(extras_.size());
    extras_.emplace_back();
  }
  return extras_[cell.extra];
}

// The cells that share a formula with `master` hold no text of their own; without the master
// they cannot stand, so they become the values they last showed.
void Worksheet::dropSharedFollowers(const Cell& master) {
  if (!(master.flags & kHasFormula) || master.extra == kNoExtra) return;
  const std::string_view attributes = pooled(extras_[master.extra].formulaAttributes);
  const auto type = attributeIn(attributes, "t");
  const auto group = attributeIn(attributes, "si");
  if (!type || *type != "shared" || !group || extras_[master.extra].formula.length == 0) return;
  for (Cell& c : cells_) {
    if (&c == &master || !(c.flags & kHasFormula) || c.extra == kNoExtra) continue;
    Extra& extra = extras_[c.extra];
    const std::string_view own = pooled(extra.formulaAttributes);
    if (attributeIn(own, "t") == type && attributeIn(own, "si") == group) {
      c.flags &= static_cast<std::uint8_t>(~kHasFormula);
      extra.formulaAttributes = extra.formula = {};
    }
  }
}

bool Worksheet::setValue(CellRef at, const CellValue& value) {
  if (at.row == 0 || at.row > kMaxRow || at.column == 0 || at.column > kMaxColumn) return false;
  auto it = std::lower_bound(cells_.begin(), cells_.end(), at, [](const Cell& c, CellRef ref) {
    return c.row != ref.row ? c.row < ref.row : c.column < ref.column;
  });
  const bool exists = it != cells_.end() && it->row == at.row && it->column == at.column;
  if (!exists && value.empty()) return true;
  if (!exists) {
    Cell fresh;
    fresh.row = at.row;
    fresh.column = static_cast<std::uint16_t>(at.column);
    it = cells_.insert(it, fresh);
  }
  Cell& c = *it;
  dropSharedFollowers(c);
  if (c.extra != kNoExtra) {
    // Value metadata and cell metadata belong to the value and formula that go.
    Extra& extra = extras_[c.extra];
    const std::string kept = withoutAttribute(withoutAttribute(pooled(extra.attributes), "vm"), "cm");
    extra.attributes = pool(kept);
    extra.formulaAttributes = extra.formula = extra.inlineXml = {};
  }
  c.flags &= static_cast<std::uint8_t>(~kHasFormula);
  const auto storeText = [&](std::string_view text, CellKind kind) {
    const Span span = pool(text);
    c.kind = kind;
    c.payload = packSpan(span.offset, span.length);
  };
  if (const auto* number = std::get_if<double>(&value.value)) {
    if (std::isfinite(*number)) {
      c.kind = CellKind::kNumber;
      c.payload = std::bit_cast<std::uint64_t>(*number);
    } else {
      storeText("#NUM!", CellKind::kError);
    }
  } else if (const auto* text = std::get_if<std::string>(&value.value)) {
    storeText(*text, CellKind::kInlineString);
  } else if (const auto* flag = std::get_if<bool>(&value.value)) {
    c.kind = CellKind::kBoolean;
    c.payload = *flag;
  } else if (const auto* error = std::get_if<ErrorText>(&value.value)) {
    storeText(error->text, CellKind::kError);
  } else {
    c.kind = CellKind::kBlank;
    c.payload = 0;
  }
  if (pool_.size() > std::numeric_limits<std::uint32_t>::max()) {
    c.kind = CellKind::kBlank;  // beyond what the pool can address; never reached by real sheets
  }
  const bool bare =
      c.kind == CellKind::kBlank && c.style == 0 &&
      (c.extra == kNoExtra || (extras_[c.extra].attributes.length == 0 && extras_[c.extra].children.length == 0));
  if (bare) cells_.erase(it);
  const auto row =
      std::lower_bound(rows_.begin(), rows_.end(), at.row, [](const Row& r, std::uint32_t n) { return r.row < n; });
  if (row != rows_.end() && row->row == at.row) row->flags |= kRowTouched;
  changed_ = true;
  return true;
}

bool Worksheet::deleteRow(std::uint32_t row) {
  if (row == 0 || row > kMaxRow) return false;
  const auto before = [](const Cell& c, std::uint32_t n) { return c.row < n; };
  auto first = std::lower_bound(cells_.begin(), cells_.end(), row, before);
  auto last = std::lower_bound(first, cells_.end(), row + 1, before);
  for (auto it = first; it != last; ++it) dropSharedFollowers(*it);
  cells_.erase(first, last);
  for (auto it = std::lower_bound(cells_.begin(), cells_.end(), row, before); it != cells_.end(); ++it) --it->row;
  std::erase_if(rows_, [row](const Row& r) { return r.row == row; });
  for (Row& r : rows_) {
    if (r.row > row) --r.row;
  }
  // Shared and array formulas name the cells they cover.
  for (Extra& extra : extras_) {
    const std::string_view attributes = pooled(extra.formulaAttributes);
    const auto ref = attributeIn(attributes, "ref");
    const auto range = ref ? parseCellRange(*ref) : std::nullopt;
    if (!range) continue;
    const auto moved = rangeWithoutRow(*range, row);
    if (!moved || *moved == *range) continue;
    std::string rewritten = withoutAttribute(attributes, "ref");
    appendAttribute(rewritten, "ref", cellRangeText(*moved));
    extra.formulaAttributes = pool(rewritten);
  }
  std::vector<std::string> merged;
  for (auto& text : merged_) {
    const auto range = parseCellRange(text);
    if (!range) {
      merged.push_back(std::move(text));
      continue;
    }
    const auto moved = rangeWithoutRow(*range, row);
    if (moved && moved->first != moved->last) merged.push_back(cellRangeText(*moved));
  }
  merged_ = std::move(merged);
  changed_ = rowsDeleted_ = true;
  return true;
}

void Worksheet::writeCell(std::string& out, const Cell& c) const {
  const std::string& p = layout_.prefix;
  out += '<';
  out += p;
  out += "c r=\"";
  out += columnLetters(c.column);
  appendUnsigned(out, c.row);
  out += '"';
  if (c.style != 0 || (c.flags & kStyleWritten)) {
    out += " s=\"";
    appendUnsigned(out, c.style);
    out += '"';
  }
  static constexpr std::string_view kTypes[] = {"", "s", "inlineStr", "str", "b", "e", "d", ""};
  const std::string_view type = kTypes[static_cast<int>(c.kind)];
  if (!type.empty()) {
    out += " t=\"";
    out += type;
    out += '"';
  }
  const Extra* extra = c.extra == kNoExtra ? nullptr : &extras_[c.extra];
  if (extra) out += pooled(extra->attributes);
  const bool hasFormula = (c.flags & kHasFormula) && extra;
  if (c.kind == CellKind::kBlank && !hasFormula && (!extra || extra->children.length == 0)) {
    out += "/>";
    return;
  }
  out += '>';
  if (hasFormula) {
    out += '<';
    out += p;
    out += 'f';
    out += pooled(extra->formulaAttributes);
    if (extra->formula.length == 0) {
      out += "/>";
    } else {
      out += '>';
      appendEscapedText(out, pooled(extra->formula));
      out += "</";
      out += p;
      out += "f>";
    }
  }
  const auto openValue = [&] {
    out += '<';
    out += p;
    out += "v>";
  };
  const auto closeValue = [&] {
    out += "</";
    out += p;
    out += "v>";
  };
  const std::string_view text =
      isTextKind(c.kind) ? pooled({static_cast<std::uint32_t>(c.payload >> 32), static_cast<std::uint32_t>(c.payload)})
                         : std::string_view();
  switch (c.kind) {
    case CellKind::kNumber:
      openValue();
      appendNumber(out, std::bit_cast<double>(c.payload));
      closeValue();
      break;
    case CellKind::kSharedString:
    case CellKind::kBoolean:
      openValue();
      appendUnsigned(out, c.payload);
      closeValue();
      break;
    case CellKind::kFormulaString:
      openValue();
      appendEscapedText(out, encodeXstring(text));
      closeValue();
      break;
    case CellKind::kError:
    case CellKind::kIsoDate:
      openValue();
      appendEscapedText(out, text);
      closeValue();
      break;
    case CellKind::kInlineString:
      if (extra && extra->inlineXml.length) {
        out += pooled(extra->inlineXml);
        break;
      }
      out += '<';
      out += p;
      out += "is><";
      out += p;
      out += 't';
      if (!text.empty() && (text.front() == ' ' || text.back() == ' ' || text.front() == '\n' || text.back() == '\n' ||
                            text.front() == '\t' || text.back() == '\t')) {
        out += " xml:space=\"preserve\"";
      }
      out += '>';
      appendEscapedText(out, encodeXstring(text));
      out += "</";
      out += p;
      out += "t></";
      out += p;
      out += "is>";
      break;
    case CellKind::kBlank:
      break;
  }
  if (extra) out += pooled(extra->children);
  out += "</";
  out += p;
  out += "c>";
}

void Worksheet::writeSheetData(std::string& out) const {
  const std::string& p = layout_.prefix;
  if (cells_.empty() && rows_.empty()) {
    out += '<' + p + "sheetData/>";
    return;
  }
  out += '<' + p + "sheetData>";
  std::size_t c = 0, r = 0;
  while (c < cells_.size() || r < rows_.size()) {
    const std::uint32_t number =
        std::min(c < cells_.size() ? cells_[c].row : kMaxRow + 1, r < rows_.size() ? rows_[r].row : kMaxRow + 1);
    const Row* row = r < rows_.size() && rows_[r].row == number ? &rows_[r++] : nullptr;
    std::size_t end = c;
    while (end < cells_.size() && cells_[end].row == number) ++end;
    out += '<' + p + "row r=\"";
    appendUnsigned(out, number);
    out += '"';
    if (row && row->spans.length) {
      if (!(row->flags & kRowTouched)) {
        appendAttribute(out, "spans", pooled(row->spans));
      } else if (end > c) {
        std::uint32_t low = kMaxColumn, high = 1;
        for (std::size_t i = c; i < end; ++i) {
          low = std::min<std::uint32_t>(low, cells_[i].column);
          high = std::max<std::uint32_t>(high, cells_[i].column);
        }
        appendAttribute(out, "spans", std::to_string(low) + ':' + std::to_string(high));
      }
    }
    if (row) out += pooled(row->attributes);
    if (end == c && (!row || row->children.length == 0)) {
      out += "/>";
      continue;
    }
    out += '>';
    for (; c < end; ++c) writeCell(out, cells_[c]);
    if (row) out += pooled(row->children);
    out += "</" + p + "row>";
  }
  out += "</" + p + "sheetData>";
}

std::string Worksheet::serialize(std::string_view original, std::string_view legacyDrawingId) const {
  const Layout& layout = layout_;
  const std::string sheetDataTag = '<' + layout.prefix + "sheetData";
  if (original.size() != layout.size || original.substr(layout.sheetDataBegin, sheetDataTag.size()) != sheetDataTag) {
    return {};
  }
  const bool addDrawing = !legacyDrawingId.empty() && !layout.hasLegacyDrawing;
  if (!changed_ && !addDrawing) return std::string(original);

  struct Edit {
    std::uint64_t begin, end;
    std::string text;
  };
  std::vector<Edit> edits;
  if (rowsDeleted_ && layout.hasDimension) {
    const auto used = usedRange();
    std::string text = '<' + layout.prefix + "dimension";
    appendAttribute(text, "ref", used ? cellRangeText(*used) : "A1");
    edits.push_back({layout.dimensionBegin, layout.dimensionEnd, text + "/>"});
  }
  if (changed_) {
    std::string text;
    text.reserve(static_cast<std::size_t>(layout.sheetDataEnd - layout.sheetDataBegin) + 64);
    writeSheetData(text);
    edits.push_back({layout.sheetDataBegin, layout.sheetDataEnd, std::move(text)});
  }
  if (rowsDeleted_ && layout.hasMerge) {
    std::string text;
    if (!merged_.empty()) {
      text = '<' + layout.prefix + "mergeCells count=\"" + std::to_string(merged_.size()) + "\">";
      for (const auto& ref : merged_) {
        text += '<' + layout.prefix + "mergeCell";
        appendAttribute(text, "ref", ref);
        text += "/>";
      }
      text += "</" + layout.prefix + "mergeCells>";
    }
    edits.push_back({layout.mergeBegin, layout.mergeEnd, std::move(text)});
  }
  if (addDrawing) {
    std::string text = '<' + layout.prefix + "legacyDrawing";
    if (!layout.declaresR) appendAttribute(text, "xmlns:r", kRelationships);
    appendAttribute(text, "r:id", legacyDrawingId);
    edits.push_back({layout.legacyDrawingAt, layout.legacyDrawingAt, text + "/>"});
  }
  std::stable_sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.begin < b.begin; });
  std::string out;
  out.reserve(original.size() + original.size() / 8);
  std::uint64_t done = 0;
  for (const Edit& edit : edits) {
    out.append(original.substr(done, edit.begin - done));
    out += edit.text;
    done = edit.end;
  }
  out.append(original.substr(done));
  return out;
}

}  // namespace corvane::xlsx
