#include "xlsx/sheet/comments.h"

#include <algorithm>
#include <charconv>
#include <pugixml.hpp>
#include <set>

#include "xlsx/sheet/xmldom.h"
#include "xlsx/sheet/xmltext.h"

namespace corvane::xlsx {
namespace {

constexpr std::string_view kMain = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";

struct StringWriter : pugi::xml_writer {
  std::string& out;
  explicit StringWriter(std::string& target) : out(target) {}
  void write(const void* data, size_t size) override { out.append(static_cast<const char*>(data), size); }
};

void appendNode(std::string& out, const pugi::xml_node& node) {
  StringWriter writer(out);
  node.print(writer, "", pugi::format_raw);
}

// The text of a note's runs; phonetic runs are not part of it.
void gatherText(const pugi::xml_node& node, std::string& raw) {
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    const std::string_view local = localName(child);
    if (local == "rPh") continue;
    if (local == "t") {
      raw += child.text().get();
    } else {
      gatherText(child, raw);
    }
  }
}

std::optional<int> parseInt(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\n' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n' || text.back() == '\t')) text.remove_suffix(1);
  int value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

pugi::xml_node clientData(const pugi::xml_node& shape) { return childNamed(shape, "ClientData"); }

bool isNoteShape(const pugi::xml_node& node) {
  return localName(node) == "shape" && std::string_view(clientData(node).attribute("ObjectType").value()) == "Note";
}

std::string anchorText(const int (&fields)[8]) {
  std::string text;
  for (int i = 0; i < 8; ++i) {
    if (i) text += ", ";
    text += std::to_string(fields[i]);
  }
  return text;
}

}  // namespace

struct Comments::Box {
  std::string richText;                       // the <text> element's content as read; empty once the note is replaced
  std::unique_ptr<pugi::xml_document> shape;  // the note's VML shape as read, if it had one
};

Comments::Comments(int shapeBlock) : shapeBlock_(std::max(shapeBlock, 1)) {}
Comments::~Comments() = default;
Comments::Comments(Comments&&) noexcept = default;
Comments& Comments::operator=(Comments&&) noexcept = default;

std::optional<Comments> Comments::parse(std::string_view commentsXml, std::string_view vmlXml, std::string& error) {
  pugi::xml_document document;
  if (!loadPart(document, commentsXml, "comments", "notes", error)) return std::nullopt;
  const pugi::xml_node root = document.document_element();
  const bool keepRuns = std::string_view(root.name()) == "comments";  // unprefixed, so the runs can be copied
  std::vector<std::string> authors;
  for (pugi::xml_node author : childNamed(root, "authors").children()) {
    if (localName(author) == "author") authors.emplace_back(author.text().get());
  }
  Comments comments;
  for (pugi::xml_node comment : childNamed(root, "commentList").children()) {
    if (localName(comment) != "comment") continue;
    const auto ref = parseCellRef(comment.attribute("ref").value());
    if (!ref) {
      error = "notes: \"" + std::string(comment.attribute("ref").value()) + "\" is not a cell reference";
      return std::nullopt;
    }
    Note note{*ref, {}, {}};
    const unsigned authorId = comment.attribute("authorId").as_uint(0);
    if (authorId < authors.size()) note.author = authors[authorId];
    std::string raw;
    const pugi::xml_node text = childNamed(comment, "text");
    gatherText(text, raw);
    note.text = decodeXstring(raw);
    auto box = std::make_unique<Box>();
    if (keepRuns) {
      for (pugi::xml_node child = text.first_child(); child; child = child.next_sibling())
        appendNode(box->richText, child);
    }
    if (const auto same = std::find_if(comments.notes_.begin(), comments.notes_.end(),
                                       [&](const Note& n) { return n.ref == note.ref; });
        same != comments.notes_.end()) {
      error = "notes: cell " + cellRefText(note.ref) + " has two notes";
      return std::nullopt;
    }
    comments.notes_.push_back(std::move(note));
    comments.boxes_.push_back(std::move(box));
  }
  if (vmlXml.empty()) return comments;

  auto drawing = std::make_unique<pugi::xml_document>();
  if (!loadPart(*drawing, vmlXml, "xml", "note drawing", error)) return std::nullopt;
  pugi::xml_node vml = drawing->document_element();
  if (const auto block = parseInt(childNamed(childNamed(vml, "shapelayout"), "idmap").attribute("data").value())) {
    comments.shapeBlock_ = std::max(*block, 1);
  }
  std::vector<pugi::xml_node> taken;
  for (pugi::xml_node shape : vml.children()) {
    if (!isNoteShape(shape)) continue;
    taken.push_back(shape);
    const pugi::xml_node data = clientData(shape);
    const auto row = parseInt(childNamed(data, "Row").text().get());
    const auto column = parseInt(childNamed(data, "Column").text().get());
    if (!row || !column) continue;
    const CellRef at{static_cast<std::uint32_t>(*row + 1), static_cast<std::uint32_t>(*column + 1)};
    for (std::size_t i = 0; i < comments.notes_.size(); ++i) {
      if (comments.notes_[i].ref == at && !comments.boxes_[i]->shape) {
        comments.boxes_[i]->shape = std::make_unique<pugi::xml_document>();
        comments.boxes_[i]->shape->append_copy(shape);
        break;
      }
    }
  }
  // Note shapes are written from the notes; what stays is the frame and anything else.
  for (const auto& shape : taken) vml.remove_child(shape);
  comments.drawing_ = std::move(drawing);
  return comments;
}

const Note* Comments::find(CellRef ref) const {
  const auto it = std::find_if(notes_.begin(), notes_.end(), [&](const Note& n) { return n.ref == ref; });
  return it == notes_.end() ? nullptr : &*it;
}

bool Comments::add(CellRef ref, std::string text, std::string author) {
  if (cellRefText(ref).empty()) return false;
  const auto it = std::find_if(notes_.begin(), notes_.end(), [&](const Note& n) { return n.ref == ref; });
  if (it != notes_.end()) {
    it->text = std::move(text);
    it->author = std::move(author);
    boxes_[static_cast<std::size_t>(it - notes_.begin())]->richText.clear();
    return true;
  }
  notes_.push_back(Note{ref, std::move(author), std::move(text)});
  boxes_.push_back(std::make_unique<Box>());
  return true;
}

bool Comments::remove(CellRef ref) {
  const auto it = std::find_if(notes_.begin(), notes_.end(), [&](const Note& n) { return n.ref == ref; });
  if (it == notes_.end()) return false;
  const auto index = it - notes_.begin();
  notes_.erase(it);
  boxes_.erase(boxes_.begin() + index);
  return true;
}

void Comments::deleteRow(std::uint32_t row) {
  for (std::size_t i = notes_.size(); i-- > 0;) {
    if (notes_[i].ref.row == row) {
      notes_.erase(notes_.begin() + static_cast<std::ptrdiff_t>(i));
      boxes_.erase(boxes_.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  const int removed = static_cast<int>(row) - 1;  // 0-based, as the drawing counts
  for (std::size_t i = 0; i < notes_.size(); ++i) {
    if (notes_[i].ref.row < row) continue;
    --notes_[i].ref.row;
    if (!boxes_[i]->shape) continue;
    pugi::xml_node data = clientData(boxes_[i]->shape->first_child());
    childNamed(data, "Row").text().set(static_cast<int>(notes_[i].ref.row) - 1);
    pugi::xml_node anchor = childNamed(data, "Anchor");
    int fields[8] = {};
    std::string_view text = anchor.text().get();
    int count = 0;
    while (count < 8 && !text.empty()) {
      const std::size_t comma = text.find(',');
      const auto value = parseInt(text.substr(0, comma));
      if (!value) break;
      fields[count++] = *value;
      text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
    }
    if (count != 8) continue;
    for (int field : {2, 6}) {
      if (fields[field] > removed) --fields[field];
    }
    anchor.text().set(anchorText(fields).c_str());
  }
}

std::string Comments::serializeComments() const {
  std::vector<std::string> authors;
  for (const Note& note : notes_) {
    if (std::find(authors.begin(), authors.end(), note.author) == authors.end()) authors.push_back(note.author);
  }
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<comments";
  appendAttribute(out, "xmlns", kMain);
  out += "><authors>";
  for (const auto& author : authors) {
    out += "<author>";
    appendEscapedText(out, author);
    out += "</author>";
  }
  out += "</authors><commentList>";
  for (std::size_t i = 0; i < notes_.size(); ++i) {
    const Note& note = notes_[i];
    out += "<comment";
    appendAttribute(out, "ref", cellRefText(note.ref));
    const auto author = std::find(authors.begin(), authors.end(), note.author) - authors.begin();
    appendAttribute(out, "authorId", std::to_string(author));
    out += "><text>";
    if (!boxes_[i]->richText.empty()) {
      out += boxes_[i]->richText;
    } else {
      out += "<t xml:space=\"preserve\">";
      appendEscapedText(out, encodeXstring(note.text));
      out += "</t>";
    }
    out += "</text></comment>";
  }
  out += "</commentList></comments>";
  return out;
}

std::string Comments::serializeVml() const {
  std::string out;
  bool haveTextBoxType = false;
  std::set<std::string> usedIds;
  if (drawing_) {
    const pugi::xml_node root = drawing_->document_element();
    out += '<';
    out += root.name();
    for (pugi::xml_attribute a = root.first_attribute(); a; a = a.next_attribute())
      appendAttribute(out, a.name(), a.value());
    out += '>';
    for (pugi::xml_node child = root.first_child(); child; child = child.next_sibling()) {
      if (localName(child) == "shapetype" && std::string_view(child.attribute("id").value()) == "_x0000_t202") {
        haveTextBoxType = true;
      }
      if (localName(child) == "shape") usedIds.insert(child.attribute("id").value());
      appendNode(out, child);
    }
  } else {
    out +=
        "<xml xmlns:v=\"urn:schemas-microsoft-com:vml\" xmlns:o=\"urn:schemas-microsoft-com:office:office\" "
        "xmlns:x=\"urn:schemas-microsoft-com:office:excel\">"
        "<o:shapelayout v:ext=\"edit\"><o:idmap v:ext=\"edit\" data=\"" +
        std::to_string(shapeBlock_) + "\"/></o:shapelayout>";
  }
  if (!haveTextBoxType) {
    out +=
        "<v:shapetype id=\"_x0000_t202\" coordsize=\"21600,21600\" o:spt=\"202\" path=\"m,l,21600r21600,l21600,xe\">"
        "<v:stroke joinstyle=\"miter\"/><v:path gradientshapeok=\"t\" o:connecttype=\"rect\"/></v:shapetype>";
  }
  for (const auto& box : boxes_) {
    if (box->shape) usedIds.insert(box->shape->first_child().attribute("id").value());
  }
  int nextId = 1024 * shapeBlock_ + 1;
  for (std::size_t i = 0; i < notes_.size(); ++i) {
    if (boxes_[i]->shape) {
      appendNode(out, boxes_[i]->shape->first_child());
      continue;
    }
    std::string id;
    do {
      id = "_x0000_s" + std::to_string(nextId++);
    } while (usedIds.count(id));
    const int row = static_cast<int>(notes_[i].ref.row) - 1;
    const int column = static_cast<int>(notes_[i].ref.column) - 1;
    const int top = std::max(row - 1, 0);
    const int anchor[8] = {column + 1, 15, top, 10, column + 3, 15, top + 4, 4};
    // Position and size in points, for readers that ignore the anchor: 48pt columns, 15pt rows.
    out += "<v:shape id=\"" + id +
           "\" type=\"#_x0000_t202\" style=\"position:absolute;margin-left:" + std::to_string(48 * (column + 1) + 11) +
           "pt;margin-top:" + std::to_string(15 * top + 2) +
           "pt;width:108pt;height:59.25pt;z-index:" + std::to_string(i + 1) +
           ";visibility:hidden\" fillcolor=\"#ffffe1\" o:insetmode=\"auto\">"
           "<v:fill color2=\"#ffffe1\"/><v:shadow on=\"t\" color=\"black\" obscured=\"t\"/>"
           "<v:path o:connecttype=\"none\"/><v:textbox style=\"mso-direction-alt:auto\">"
           "<div style=\"text-align:left\"></div></v:textbox>"
           "<x:ClientData ObjectType=\"Note\"><x:MoveWithCells/><x:SizeWithCells/><x:Anchor>" +
           anchorText(anchor) + "</x:Anchor><x:AutoFill>False</x:AutoFill><x:Row>" + std::to_string(row) +
           "</x:Row><x:Column>" + std::to_string(column) + "</x:Column></x:ClientData></v:shape>";
  }
  out += drawing_ ? "</" + std::string(drawing_->document_element().name()) + ">" : "</xml>";
  return out;
}

}  // namespace corvane::xlsx
