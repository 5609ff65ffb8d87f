#include "xlsx/package/xmlpart.h"

#include <algorithm>

namespace corvane::xlsx::xmlpart {

namespace {

std::string_view prefixOf(const pugi::xml_node& node) {
  const std::string_view name = node.name();
  const auto colon = name.find(':');
  return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

std::string_view namespaceOf(const pugi::xml_node& root) {
  const std::string_view prefix = prefixOf(root);
  const std::string attribute = prefix.empty() ? std::string("xmlns") : "xmlns:" + std::string(prefix);
  return root.attribute(attribute.c_str()).value();
}

struct StringWriter : pugi::xml_writer {
  std::string out;
  void write(const void* data, std::size_t size) override { out.append(static_cast<const char*>(data), size); }
};

}  // namespace

bool load(pugi::xml_document& doc, Margins& margins, std::string_view xml, std::string_view ns,
          std::string_view rootName, std::string_view what, std::string& error) {
  // Whitespace between elements, comments and processing instructions are kept so that a part
  // written back differs only where it was edited.
  constexpr unsigned kOptions =
      pugi::parse_default | pugi::parse_declaration | pugi::parse_comments | pugi::parse_pi | pugi::parse_ws_pcdata;
  const auto result = doc.load_buffer(xml.data(), xml.size(), kOptions);
  if (!result) {
    error = std::string(what) + " is not well-formed XML at byte " + std::to_string(result.offset) + ": " +
            result.description();
    return false;
  }
  const auto root = doc.document_element();
  if (!root || localName(root) != rootName || namespaceOf(root) != ns) {
    error = std::string(what) + " does not have the root element " + std::string(rootName) + " of " + std::string(ns);
    return false;
  }
  constexpr std::string_view kSpace = " \t\r\n";
  margins = {};
  if (xml.starts_with("<?xml")) {
    const auto end = xml.find("?>");
    const auto text = xml.substr(end + 2);
    margins.afterDeclaration = text.substr(0, std::min(text.size(), text.find_first_not_of(kSpace)));
  }
  const auto last = xml.find_last_not_of(kSpace);
  if (last != std::string_view::npos) margins.atEnd = xml.substr(last + 1);
  // The tree is written back as UTF-8 whatever it was read as.
  for (auto node = doc.first_child(); node; node = node.next_sibling()) {
    if (node.type() == pugi::node_declaration && node.attribute("encoding")) node.attribute("encoding") = "UTF-8";
  }
  return true;
}

void create(pugi::xml_document& doc, std::string_view ns, std::string_view rootName) {
  doc.reset();
  auto declaration = doc.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  declaration.append_attribute("standalone") = "yes";
  auto root = doc.append_child(std::string(rootName).c_str());
  root.append_attribute("xmlns") = std::string(ns).c_str();
}

std::string save(const pugi::xml_document& doc, const Margins& margins) {
  StringWriter writer;
  doc.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  std::string& out = writer.out;
  if (doc.first_child().type() == pugi::node_declaration && !margins.afterDeclaration.empty()) {
    const auto end = out.find("?>");
    if (end != std::string::npos) out.insert(end + 2, margins.afterDeclaration);
  }
  out += margins.atEnd;
  return std::move(out);
}

std::string_view localName(const pugi::xml_node& node) {
  const std::string_view name = node.name();
  const auto colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

bool isSibling(const pugi::xml_node& node, std::string_view name) {
  return node.type() == pugi::node_element && localName(node) == name && prefixOf(node) == prefixOf(node.parent());
}

pugi::xml_node addChild(pugi::xml_node parent, std::string_view name, pugi::xml_node before) {
  const std::string_view prefix = prefixOf(parent);
  const std::string full = prefix.empty() ? std::string(name) : std::string(prefix) + ":" + std::string(name);
  return before ? parent.insert_child_before(full.c_str(), before) : parent.append_child(full.c_str());
}

bool equalNoCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i];
    char y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

}  // namespace corvane::xlsx::xmlpart
