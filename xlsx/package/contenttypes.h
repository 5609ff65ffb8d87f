// [Content_Types].xml: the media type of every part, given for a whole extension by a Default
// or for one part by an Override.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "xlsx/package/xmlpart.h"

namespace corvane::xlsx {

class ContentTypes {
 public:
  static std::optional<ContentTypes> parse(std::string_view xml, std::string& error);
  // No Defaults and no Overrides yet, for a package made from nothing.
  ContentTypes();
  ContentTypes(const ContentTypes& other);
  ContentTypes& operator=(const ContentTypes& other);
  ContentTypes(ContentTypes&&) noexcept = default;
  ContentTypes& operator=(ContentTypes&&) noexcept = default;

  // The part as read, differing only in the entries set or removed since.
  std::string serialize() const;

  // The part's Override, else the Default of its extension, else "". Part names, with or
  // without their leading slash, and extensions compare without regard to case.
  std::string typeOf(std::string_view part) const;
  void setOverride(std::string_view part, std::string type);
  void removeOverride(std::string_view part);
  // Adds a Default for the extension unless it has one already; an existing one is left as it
  // is, since the parts it covers were written for it, and a second one makes the package
  // unreadable to some consumers.
  void ensureDefault(std::string_view extension, std::string type);

 private:
  pugi::xml_node findOverride(std::string_view part) const;
  pugi::xml_node findDefault(std::string_view extension) const;

  pugi::xml_document doc_;
  xmlpart::Margins margins_;
};

}  // namespace corvane::xlsx
