// The relationships of one part (or of the package itself): which other parts, or outside
// resources, it refers to and in what role. Parts are found by following these, never by
// their names, since every writer names them its own way.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "xlsx/package/xmlpart.h"

namespace corvane::xlsx {

struct Relationship {
  std::string id, type, target;
  bool external = false;  // a URI outside the package (TargetMode="External")
};

class Relationships {
 public:
  static std::optional<Relationships> parse(std::string_view xml, std::string& error);
  // None yet, for a part made from nothing.
  Relationships();
  Relationships(const Relationships& other);
  Relationships& operator=(const Relationships& other);
  Relationships(Relationships&&) noexcept = default;
  Relationships& operator=(Relationships&&) noexcept = default;

  // The part as read, with only the relationships added or removed since then differing.
  std::string serialize() const;

  const Relationship* byId(std::string_view id) const;
  // Those whose type URI ends with `typeSuffix`, e.g. "/worksheet", in document order.
  std::vector<const Relationship*> byType(std::string_view typeSuffix) const;
  // A new internal relationship; returns its id, one not used by any other.
  std::string add(std::string type, std::string target);
  void remove(std::string_view id);
  const std::vector<Relationship>& all() const { return items_; }

  // The relationships part of `sourcePart`: "xl/workbook.xml" -> "xl/_rels/workbook.xml.rels",
  // and "" (the package) -> "_rels/.rels".
  static std::string partFor(std::string_view sourcePart);
  // The part a target of `sourcePart` names, without a leading slash: relative targets are
  // taken from the source's folder, absolute ones from the package root. Nullopt for an empty
  // target and for one that climbs above the root.
  static std::optional<std::string> resolve(std::string_view sourcePart, std::string_view target);

 private:
  void collect();

  pugi::xml_document doc_;
  xmlpart::Margins margins_;
  std::vector<Relationship> items_;  // mirrors the Relationship elements of doc_
};

}  // namespace corvane::xlsx
