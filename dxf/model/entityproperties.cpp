#include "dxf/model/entityproperties.h"

#include <cmath>
#include <optional>

#include "dxf/tags/recordedit.h"

namespace corvane::dxf {

namespace {

using headless::EntityProperties;

struct Group {
  std::int16_t code;
  void (*read)(EntityProperties&, const Document&, const Tag&);
  // Nullopt for the value a missing group means.
  std::optional<NewTag> (*spell)(const EntityProperties&, const Document&);
};

std::optional<NewTag> integerUnless(std::int16_t code, std::int64_t value, std::int64_t absent) {
  if (value == absent) return std::nullopt;
  return NewTag::integer(code, value);
}
std::optional<NewTag> optionalInteger(std::int16_t code, const std::optional<std::int64_t>& value) {
  if (!value) return std::nullopt;
  return NewTag::integer(code, *value);
}
std::optional<NewTag> textUnlessEmpty(const Document& doc, std::int16_t code, const std::wstring& text) {
  if (text.empty()) return std::nullopt;
  return textTag(doc, code, text);
}
std::optional<NewTag> handleUnlessNone(std::int16_t code, std::uint64_t handle) {
  if (handle == 0) return std::nullopt;
  return NewTag::handle(code, handle);
}

// In the order the host writes them.
constexpr Group kGroups[] = {
    {6, [](EntityProperties& p, const Document& doc, const Tag& tag) { p.linetype = doc.text(tag); },
     [](const EntityProperties& p, const Document& doc) { return textUnlessEmpty(doc, 6, p.linetype); }},
    {347, [](EntityProperties& p, const Document& doc, const Tag& tag) { p.material = doc.toHandle(tag).value_or(0); },
     [](const EntityProperties& p, const Document&) { return handleUnlessNone(347, p.material); }},
    {62,
     [](EntityProperties& p, const Document& doc, const Tag& tag) { p.color = doc.toInteger(tag).value_or(p.color); },
     [](const EntityProperties& p, const Document&) { return integerUnless(62, p.color, 256); }},
    {370,
     [](EntityProperties& p, const Document& doc, const Tag& tag) {
       p.lineweight = doc.toInteger(tag).value_or(p.lineweight);
     },
     [](const EntityProperties& p, const Document&) { return integerUnless(370, p.lineweight, -1); }},
    {48,
     [](EntityProperties& p, const Document& doc, const Tag& tag) {
       // A scale that is no number counts as missing, so that properties compare as equal.
       if (const auto value = doc.toDouble(tag); value && std::isfinite(*value)) p.linetypeScale = *value;
     },
     [](const EntityProperties& p, const Document&) -> std::optional<NewTag> {
       if (p.linetypeScale == 1.0) return std::nullopt;
       return NewTag::real(48, p.linetypeScale);
     }},
    {420,
     [](EntityProperties& p, const Document& doc, const Tag& tag) {
       if (const auto value = doc.toInteger(tag)) p.trueColor = *value;
     },
     [](const EntityProperties& p, const Document&) { return optionalInteger(420, p.trueColor); }},
    {430, [](EntityProperties& p, const Document& doc, const Tag& tag) { p.colorName = doc.text(tag); },
     [](const EntityProperties& p, const Document& doc) { return textUnlessEmpty(doc, 430, p.colorName); }},
    {440,
     [](EntityProperties& p, const Document& doc, const Tag& tag) {
       if (const auto value = doc.toInteger(tag)) p.transparency = *value;
     },
     [](const EntityProperties& p, const Document&) { return optionalInteger(440, p.transparency); }},
    {390, [](EntityProperties& p, const Document& doc, const Tag& tag) { p.plotStyle = doc.toHandle(tag).value_or(0); },
     [](const EntityProperties& p, const Document&) { return handleUnlessNone(390, p.plotStyle); }},
};

const Group* groupOf(std::int16_t code) {
  for (const Group& group : kGroups)
    if (group.code == code) return &group;
  return nullptr;
}

bool sameSpelling(const std::optional<NewTag>& a, const std::optional<NewTag>& b) {
  if (!a || !b) return !a && !b;
  return a->value == b->value;
}

}  // namespace

EntityProperties readEntityProperties(const Document& doc, std::span<const Tag> tags) {
  EntityProperties properties;
  unsigned seen = 0;  // one bit per group of kGroups
  for (const Tag& tag : tags) {
    const Group* group = groupOf(tag.code);
    if (!group) continue;
    const unsigned bit = 1u << (group - kGroups);
    if (seen & bit) continue;
    seen |= bit;
    group->read(properties, doc, tag);
  }
  return properties;
}

void appendEntityProperties(std::vector<NewTag>& out, const Document& doc, const EntityProperties& properties) {
  for (const Group& group : kGroups)
    if (auto tag = group.spell(properties, doc)) out.push_back(std::move(*tag));
}

bool writeEntityProperties(Document& doc, RecordId id, std::size_t begin, std::size_t end,
                           const EntityProperties& properties) {
  const EntityProperties stored = readEntityProperties(doc, doc.tags(id).subspan(begin, end - begin));
  if (stored == properties) return false;
  bool changed = false;
  for (const Group& group : kGroups) {
    const auto wanted = group.spell(properties, doc);
    if (sameSpelling(group.spell(stored, doc), wanted)) continue;
    const auto tags = doc.tags(id);
    std::size_t at = begin;
    while (at < end && tags[at].code != group.code) ++at;
    if (at < end && wanted) {
      doc.setValue(id, at, wanted->value);
    } else if (at < end) {
      doc.removeTag(id, at);
      --end;
    } else {
      doc.insertTag(id, end++, *wanted);
    }
    changed = true;
  }
  return changed;
}

}  // namespace corvane::dxf
