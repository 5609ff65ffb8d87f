// What the small XML parts of a package share: reading one into a tree that keeps everything
// it holds, finding elements by namespace whatever prefix the writer chose, and writing the
// tree back without adding indentation or changing what was not touched.
#pragma once

#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace corvane::xlsx::xmlpart {

// The whitespace around the root element, which the tree has no place for.
struct Margins {
  std::string afterDeclaration;
  std::string atEnd;
};

// Reads `xml` into `doc`; false with `error` saying where it stops being XML, or when the root
// is not `rootName` in namespace `ns` (`what` names the part for the message).
bool load(pugi::xml_document& doc, Margins& margins, std::string_view xml, std::string_view ns,
          std::string_view rootName, std::string_view what, std::string& error);

// A new document holding only the declaration and an empty root in namespace `ns`.
void create(pugi::xml_document& doc, std::string_view ns, std::string_view rootName);

std::string save(const pugi::xml_document& doc, const Margins& margins);

std::string_view localName(const pugi::xml_node& node);
// Whether `node` is the element `name` in the namespace of its parent.
bool isSibling(const pugi::xml_node& node, std::string_view name);
// A new last child of `parent` named `name` with the parent's prefix, or placed before `before`.
pugi::xml_node addChild(pugi::xml_node parent, std::string_view name, pugi::xml_node before = {});

// ASCII case-insensitive equality: part names and extensions compare that way.
bool equalNoCase(std::string_view a, std::string_view b) noexcept;

}  // namespace corvane::xlsx::xmlpart
