#include "xlsx/package/contenttypes.h"

#include "xlsx/package/xmlpart.h"

namespace corvane::xlsx {

namespace {

constexpr std::string_view kNamespace = "http://schemas.openxmlformats.org/package/2006/content-types";
constexpr std::string_view kRoot = "Types";
constexpr std::string_view kDefault = "Default";
constexpr std::string_view kOverride = "Override";

std::string_view withoutSlash(std::string_view part) {
  if (part.starts_with('/')) part.remove_prefix(1);
  return part;
}

std::string_view extensionOf(std::string_view part) {
  const auto name = part.substr(part.rfind('/') + 1);  // npos + 1 is 0
  const auto dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

}  // namespace

ContentTypes::ContentTypes() {
  xmlpart::create(doc_, kNamespace, kRoot);
}

ContentTypes::ContentTypes(const ContentTypes& other) {
  doc_.reset(other.doc_);
}

ContentTypes& ContentTypes::operator=(const ContentTypes& other) {
  if (this != &other) {
    doc_.reset(other.doc_);
    margins_ = other.margins_;
  }
  return *this;
}

std::optional<ContentTypes> ContentTypes::parse(std::string_view xml, std::string& error) {
  ContentTypes out;
  if (!xmlpart::load(out.doc_, out.margins_, xml, kNamespace, kRoot, "[Content_Types].xml", error)) return std::nullopt;
  for (const auto& node : out.doc_.document_element().children()) {
    const bool isDefault = xmlpart::isSibling(node, kDefault);
    if (!isDefault && !xmlpart::isSibling(node, kOverride)) continue;
    const char* key = isDefault ? "Extension" : "PartName";
    if (!node.attribute(key) || !node.attribute("ContentType")) {
      error = std::string("[Content_Types].xml has ") + (isDefault ? "a Default" : "an Override") + " without " +
              (node.attribute(key) ? "ContentType" : key);
      return std::nullopt;
    }
  }
  return out;
}

std::string ContentTypes::serialize() const {
  return xmlpart::save(doc_, margins_);
}

pugi::xml_node ContentTypes::findOverride(std::string_view part) const {
  part = withoutSlash(part);
  for (const auto& node : doc_.document_element().children()) {
    if (xmlpart::isSibling(node, kOverride) &&
        xmlpart::equalNoCase(withoutSlash(node.attribute("PartName").value()), part)) {
      return node;
    }
  }
  return {};
}

pugi::xml_node ContentTypes::findDefault(std::string_view extension) const {
  for (const auto& node : doc_.document_element().children()) {
    if (xmlpart::isSibling(node, kDefault) && xmlpart::equalNoCase(node.attribute("Extension").value(), extension)) {
      return node;
    }
  }
  return {};
}

std::string ContentTypes::typeOf(std::string_view part) const {
  if (const auto node = findOverride(part)) return node.attribute("ContentType").value();
  const auto extension = extensionOf(withoutSlash(part));
  if (extension.empty()) return {};
  if (const auto node = findDefault(extension)) return node.attribute("ContentType").value();
  return {};
}

void ContentTypes::setOverride(std::string_view part, std::string type) {
  auto node = findOverride(part);
  if (!node) {
    node = xmlpart::addChild(doc_.document_element(), kOverride);
    node.append_attribute("PartName") = ("/" + std::string(withoutSlash(part))).c_str();
    node.append_attribute("ContentType");
  }
  node.attribute("ContentType") = type.c_str();
}

void ContentTypes::removeOverride(std::string_view part) {
  auto root = doc_.document_element();
  while (const auto node = findOverride(part)) root.remove_child(node);
}

void ContentTypes::ensureDefault(std::string_view extension, std::string type) {
  if (extension.starts_with('.')) extension.remove_prefix(1);
  if (extension.empty() || findDefault(extension)) return;
  // Among the other Defaults, ahead of the Overrides, where writers put them.
  pugi::xml_node before;
  for (const auto& node : doc_.document_element().children()) {
    if (xmlpart::isSibling(node, kOverride)) {
      before = node;
      break;
    }
  }
  auto node = xmlpart::addChild(doc_.document_element(), kDefault, before);
  node.append_attribute("Extension") = std::string(extension).c_str();
  node.append_attribute("ContentType") = type.c_str();
}

}  // namespace corvane::xlsx
