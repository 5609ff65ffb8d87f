#include "xlsx/package/relationships.h"

#include <charconv>
#include <set>

#include "xlsx/package/xmlpart.h"

namespace corvane::xlsx {

namespace {

constexpr std::string_view kNamespace = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr std::string_view kRoot = "Relationships";
constexpr std::string_view kElement = "Relationship";

// The number of an id the way writers make them ("rId7" -> 7), or 0 for any other id.
unsigned long idNumber(std::string_view id) {
  constexpr std::string_view kPrefix = "rId";
  if (id.substr(0, kPrefix.size()) != kPrefix) return 0;
  unsigned long number = 0;
  const auto* end = id.data() + id.size();
  const auto [stop, failed] = std::from_chars(id.data() + kPrefix.size(), end, number);
  return failed == std::errc() && stop == end ? number : 0;
}

}  // namespace

Relationships::Relationships() {
  xmlpart::create(doc_, kNamespace, kRoot);
}

Relationships::Relationships(const Relationships& other) : margins_(other.margins_), items_(other.items_) {
  doc_.reset(other.doc_);
}

Relationships& Relationships::operator=(const Relationships& other) {
  if (this != &other) {
    doc_.reset(other.doc_);
    margins_ = other.margins_;
    items_ = other.items_;
  }
  return *this;
}

std::optional<Relationships> Relationships::parse(std::string_view xml, std::string& error) {
  Relationships out;
  if (!xmlpart::load(out.doc_, out.margins_, xml, kNamespace, kRoot, "the relationships part", error))
    return std::nullopt;
  out.collect();
  std::set<std::string_view> ids;
  for (std::size_t i = 0; i < out.items_.size(); ++i) {
    const auto& item = out.items_[i];
    const std::string which = "relationship " + std::to_string(i + 1);
    if (item.id.empty()) {
      error = which + " has no Id";
    } else if (item.type.empty()) {
      error = which + " (" + item.id + ") has no Type";
    } else if (item.target.empty() && !item.external) {
      error = which + " (" + item.id + ") has no Target";
    } else if (!ids.insert(item.id).second) {
      error = "two relationships have the Id " + item.id;
    } else {
      continue;
    }
    return std::nullopt;
  }
  return out;
}

void Relationships::collect() {
  items_.clear();
  for (const auto& node : doc_.document_element().children()) {
    if (!xmlpart::isSibling(node, kElement)) continue;
    items_.push_back({node.attribute("Id").value(), node.attribute("Type").value(), node.attribute("Target").value(),
                      std::string_view(node.attribute("TargetMode").value()) == "External"});
  }
}

std::string Relationships::serialize() const {
  return xmlpart::save(doc_, margins_);
}

const Relationship* Relationships::byId(std::string_view id) const {
  for (const auto& item : items_) {
    if (item.id == id) return &item;
  }
  return nullptr;
}

std::vector<const Relationship*> Relationships::byType(std::string_view typeSuffix) const {
  std::vector<const Relationship*> out;
  for (const auto& item : items_) {
    if (item.type.size() >= typeSuffix.size() && std::string_view(item.type).ends_with(typeSuffix)) {
      out.push_back(&item);
    }
  }
  return out;
}

std::string Relationships::add(std::string type, std::string target) {
  unsigned long highest = 0;
  for (const auto& item : items_) highest = std::max(highest, idNumber(item.id));
  std::string id = "rId" + std::to_string(highest + 1);
  // Ids of other shapes may still spell the candidate (digits too many to count, say).
  for (unsigned long next = highest + 2; byId(id); ++next) id = "rId" + std::to_string(next);

  auto node = xmlpart::addChild(doc_.document_element(), kElement);
  node.append_attribute("Id") = id.c_str();
  node.append_attribute("Type") = type.c_str();
  node.append_attribute("Target") = target.c_str();
  items_.push_back({id, std::move(type), std::move(target), false});
  return id;
}

void Relationships::remove(std::string_view id) {
  auto root = doc_.document_element();
  for (auto node = root.first_child(); node;) {
    const auto next = node.next_sibling();
    if (xmlpart::isSibling(node, kElement) && node.attribute("Id").value() == id) root.remove_child(node);
    node = next;
  }
  collect();
}

std::string Relationships::partFor(std::string_view sourcePart) {
  if (sourcePart.starts_with('/')) sourcePart.remove_prefix(1);
  if (sourcePart.empty()) return "_rels/.rels";
  const auto slash = sourcePart.rfind('/');
  const std::size_t nameAt = slash == std::string_view::npos ? 0 : slash + 1;
  return std::string(sourcePart.substr(0, nameAt)) + "_rels/" + std::string(sourcePart.substr(nameAt)) + ".rels";
}

std::optional<std::string> Relationships::resolve(std::string_view sourcePart, std::string_view target) {
  if (target.empty()) return std::nullopt;
  // The base is the source's folder, or the root for an absolute target.
  std::vector<std::string_view> segments;
  if (target.starts_with('/')) {
    target.remove_prefix(1);
  } else {
    if (sourcePart.starts_with('/')) sourcePart.remove_prefix(1);
    for (auto slash = sourcePart.find('/'); slash != std::string_view::npos; slash = sourcePart.find('/')) {
      segments.push_back(sourcePart.substr(0, slash));
      sourcePart.remove_prefix(slash + 1);
    }
  }

  std::vector<std::string_view> resolved;
  const auto walk = [&resolved](std::string_view segment) {
    if (segment.empty() || segment == ".") return true;
    if (segment != "..") {
      resolved.push_back(segment);
      return true;
    }
    if (resolved.empty()) return false;
    resolved.pop_back();
    return true;
  };
  for (const auto segment : segments) {
    if (!walk(segment)) return std::nullopt;
  }
  while (true) {
    const auto slash = target.find('/');
    if (!walk(target.substr(0, slash))) return std::nullopt;
    if (slash == std::string_view::npos) break;
    target.remove_prefix(slash + 1);
  }
  if (resolved.empty()) return std::nullopt;
  std::string out;
  for (const auto segment : resolved) {
    if (!out.empty()) out.push_back('/');
    out.append(segment);
  }
  return out;
}

}  // namespace corvane::xlsx
