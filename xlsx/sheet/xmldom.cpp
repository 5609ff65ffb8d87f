#include "xlsx/sheet/xmldom.h"

namespace corvane::xlsx {
namespace {

std::string_view afterPrefix(std::string_view name) {
  const std::size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

}  // namespace

std::string_view localName(const pugi::xml_node& node) { return afterPrefix(node.name()); }

pugi::xml_node childNamed(const pugi::xml_node& node, std::string_view local) {
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_element && localName(child) == local) return child;
  }
  return {};
}

pugi::xml_attribute attributeNamed(const pugi::xml_node& node, std::string_view local) {
  for (pugi::xml_attribute attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
    const std::string_view name = attribute.name();
    if (name.substr(0, 6) != "xmlns:" && afterPrefix(name) == local) return attribute;
  }
  return {};
}

bool loadPart(pugi::xml_document& document, std::string_view xml, std::string_view root, std::string_view part,
              std::string& error) {
  // pugixml leaves entity declarations unexpanded, and a part with a DOCTYPE is not one any
  // writer of workbooks makes.
  const pugi::xml_parse_result result =
      document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_doctype, pugi::encoding_utf8);
  if (!result) {
    error = std::string(part) + ": " + result.description() + " at byte " + std::to_string(result.offset);
    return false;
  }
  for (pugi::xml_node node = document.first_child(); node; node = node.next_sibling()) {
    if (node.type() == pugi::node_doctype) {
      error = std::string(part) + ": a document type declaration is not allowed";
      return false;
    }
  }
  const pugi::xml_node element = document.document_element();
  if (!element || localName(element) != root) {
    error = std::string(part) + ": the root element is <" + std::string(element ? element.name() : "") + ">, not <" +
            std::string(root) + ">";
    return false;
  }
  return true;
}

}  // namespace corvane::xlsx
