// The small parts (workbook, styles, notes, properties) are read whole with pugixml; these
// helpers find elements by local name, so prefixed and unprefixed documents read alike.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace corvane::xlsx {

std::string_view localName(const pugi::xml_node& node);
// The first child element with this local name; an empty node when none.
pugi::xml_node childNamed(const pugi::xml_node& node, std::string_view local);
// The attribute with this local name whatever its prefix ("r:id" for "id").
pugi::xml_attribute attributeNamed(const pugi::xml_node& node, std::string_view local);

// Parses `xml` into `document`; false, with the reason in `error` (prefixed by `part`), for
// XML that is not well-formed, has a document type, or whose root is not `root`.
bool loadPart(pugi::xml_document& document, std::string_view xml, std::string_view root, std::string_view part,
              std::string& error);

}  // namespace corvane::xlsx
