#include "plugin/measure/blockcount.h"

#include <cmath>
#include <unordered_map>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbattribute.h"
#include "host/acdbblockreference.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbdatabase.h"
#include "host/acdbsymboltable.h"
#include "host/hostservices.h"
#include "plugin/measure/fieldoptions.h"

namespace corvane {

using host::AcDbObjectId;
using host::AcDbObjectPointer;
namespace AcDb = host::AcDb;

namespace {

// The host's tolerance for equal points, which its comparisons of numbers use.
constexpr double kEqualPoint = 1e-10;
constexpr wchar_t kConditionSeparator = L'\u00A6';  // broken bar

std::wstring_view withoutBlanksAndParentheses(std::wstring_view text) noexcept {
  const auto trimmable = [](wchar_t c) { return c == L' ' || c == L'\t' || c == L'(' || c == L')'; };
  while (!text.empty() && trimmable(text.front())) text.remove_prefix(1);
  while (!text.empty() && trimmable(text.back())) text.remove_suffix(1);
  return text;
}

// "x,y,z" as a point; nullopt unless it is exactly three numbers.
std::optional<host::AcGePoint3d> readCorner(std::wstring_view text) {
  const std::vector<std::wstring> parts = core::split(text, L',');
  if (parts.size() != 3) return std::nullopt;
  double xyz[3] = {};
  for (int i = 0; i < 3; ++i) {
    const std::wstring_view part = core::trimmed(parts[i]);
    std::size_t used = 0;
    xyz[i] = core::wcstod(part, &used);
    if (part.empty() || used != part.size() || !std::isfinite(xyz[i])) return std::nullopt;
  }
  return host::AcGePoint3d{xyz[0], xyz[1], xyz[2]};
}

std::optional<host::AcDbExtents> readWindow(std::wstring_view text) {
  const std::size_t colon = text.find(L':');
  if (colon == std::wstring_view::npos) return std::nullopt;
  const auto first = readCorner(text.substr(0, colon));
  const auto second = readCorner(text.substr(colon + 1));
  if (!first || !second) return std::nullopt;
  return host::AcDbExtents(*first, *second);
}

std::vector<BlockCondition> readConditions(const FieldOptions& options) {
  const FieldOption* tag = options.find(L"tag");
  if (!tag || tag->value.empty()) return {};
  const FieldOption* op = options.find(L"op");
  const FieldOption* value = options.find(L"value");
  const std::vector<std::wstring> tags = core::split(tag->value, kConditionSeparator);
  const std::vector<std::wstring> ops = op ? core::split(op->value, kConditionSeparator) : std::vector<std::wstring>{};
  const std::vector<std::wstring> values =
      value ? core::split(value->value, kConditionSeparator) : std::vector<std::wstring>{};
  std::vector<BlockCondition> conditions;
  for (std::size_t i = 0; i < tags.size(); ++i) {
    if (tags[i].empty()) continue;
    conditions.push_back({tags[i], i < ops.size() ? ops[i] : std::wstring(L"="),
                          i < values.size() ? values[i] : std::wstring()});
  }
  return conditions;
}

// What a condition's operator does: one of the four numeric comparisons, or a comparison of
// texts; read once per condition rather than once per attribute.
enum class Comparison { kAtLeast, kAtMost, kMore, kLess, kUnequalText, kEqualText };

Comparison comparisonOf(const std::wstring& op) noexcept {
  if (op == L">=") return Comparison::kAtLeast;
  if (op == L"<=") return Comparison::kAtMost;
  if (op == L">") return Comparison::kMore;
  if (op == L"<") return Comparison::kLess;
  if (op == L"!=") return Comparison::kUnequalText;
  return Comparison::kEqualText;
}

bool comparisonHolds(Comparison comparison, const BlockCondition& condition, std::wstring_view a, double filter) {
  switch (comparison) {
    case Comparison::kAtLeast: return filter - core::wtof(a) < kEqualPoint;
    case Comparison::kAtMost: return core::wtof(a) - filter < kEqualPoint;
    case Comparison::kMore: return core::wtof(a) - filter > kEqualPoint;
    case Comparison::kLess: return filter - core::wtof(a) > kEqualPoint;
    case Comparison::kUnequalText: return !core::equalsNoCase(a, condition.value);
    case Comparison::kEqualText: break;
  }
  return core::equalsNoCase(a, condition.value);
}

// A dynamic property's value as the text an attribute would hold.
std::wstring valueText(const host::AcValue& value) {
  std::wstring text;
  std::int32_t whole = 0;
  double real = 0.0;
  if (value.get(text)) return text;
  if (value.get(whole)) return std::to_wstring(whole);
  if (value.get(real)) return core::format(L"%.15g", real);
  return {};
}

class BlockCounter {
 public:
  BlockCounter(host::AcDbDatabase& db, const BlockCountQuery& query)
      : services_(db.services()), db_(db), query_(query) {
    if (!query.space.empty()) space_ = host::AcDbHandle::fromText(query.space);
    for (const BlockCondition& condition : query.conditions) {
      filterNumbers_.push_back(core::wtof(condition.value));
      comparisons_.push_back(comparisonOf(condition.op));
    }
  }

  long count() {
    AcDbObjectPointer<host::AcDbBlockTable> blocks(services_, db_.blockTableId(), AcDb::kForRead);
    if (!blocks) return 0;
    long total = 0;
    for (auto records = blocks->newIterator(); !records.done(); records.step()) {
      AcDbObjectPointer<host::AcDbBlockTableRecord> record(services_, records.objectId(), AcDb::kForRead);
      if (!record || record->isLayout() || record->isUnloaded() || record->isFromOverlayReference()) continue;
      std::wstring name;
      record->getName(name);
      const bool named = isListed(query_.blocks, name);
      if (!named && !record->isAnonymous()) continue;
      std::vector<AcDbObjectId> references;
      record->getBlockReferenceIds(references, true);
      record.close();
      // No hint of the insertions to come: a count does little with each, and the hint's own
      // work cost more than the waits it saved.
      for (const AcDbObjectId reference : references) total += countReference(reference, named, name);
    }
    return total;
  }

 private:
  struct Owner {
    bool isLayout = false;
    bool inSpace = false;
  };

  const Owner& owner(AcDbObjectId id) {
    auto found = owners_.find(id.asOldId());
    if (found != owners_.end()) return found->second;
    Owner owner;
    AcDbObjectPointer<host::AcDbBlockTableRecord> record(services_, id, AcDb::kForRead);
    owner.isLayout = record && record->isLayout();
    owner.inSpace = space_ && services_.handle(id) == *space_;
    return owners_.emplace(id.asOldId(), owner).first->second;
  }

  // Whether the block a reference is judged by (its dynamic block for a variant) is listed.
  bool namePasses(const host::AcDbBlockReference& reference, bool named, const std::wstring& blockName) {
    if (named) return true;  // a listed block, or a dynamic block inserted as it is
    if (!reference.isDynamicBlock()) return isListed(query_.blocks, blockName);
    const AcDbObjectId definition = reference.dynamicBlockTableRecord();
    auto found = definitions_.find(definition.asOldId());
    if (found != definitions_.end()) return found->second;
    AcDbObjectPointer<host::AcDbBlockTableRecord> record(services_, definition, AcDb::kForRead);
    std::wstring name;
    if (record) record->getName(name);
    return definitions_.emplace(definition.asOldId(), record && isListed(query_.blocks, name)).first->second;
  }

  bool conditionsHold(const host::AcDbBlockReference& reference) {
    for (std::size_t i = 0; i < query_.conditions.size(); ++i) {
      if (!conditionHolds(reference, query_.conditions[i], comparisons_[i], filterNumbers_[i])) return false;
    }
    return true;
  }

  bool conditionHolds(const host::AcDbBlockReference& reference, const BlockCondition& condition,
                      Comparison comparison, double filter) {
    for (auto attributes = reference.attributeIterator(); !attributes.done(); attributes.step()) {
      AcDbObjectPointer<host::AcDbAttribute> attribute(services_, attributes.objectId(), AcDb::kForRead);
      if (!attribute) continue;
      attribute->getTag(tag_);
      if (!core::equalsNoCase(tag_, condition.tag)) continue;
      attribute->getTextString(text_);
      if (comparisonHolds(comparison, condition, text_, filter)) return true;
    }
    if (!reference.isDynamicBlock()) return false;
    std::vector<host::AcDbDynBlockReferenceProperty> properties;
    if (reference.getBlockProperties(properties) != host::Acad::eOk) return false;
    for (const auto& property : properties) {
      if (core::equalsNoCase(property.propertyName(), condition.tag) &&
          comparisonHolds(comparison, condition, valueText(property.value()), filter)) {
        return true;
      }
    }
    return false;
  }

  long countReference(AcDbObjectId id, bool named, const std::wstring& blockName) {
    AcDbObjectPointer<host::AcDbBlockReference> reference(services_, id, AcDb::kForRead);
    if (!reference || reference->visibility() != AcDb::kVisible) return 0;
    const AcDbObjectId ownerId = reference->ownerId();
    const Owner& where = owner(ownerId);
    if (space_ && !where.inSpace) return 0;
    if (!query_.space.empty() && !space_) return 0;  // a space that is no handle holds nothing
    if (query_.window) {
      host::AcDbExtents extents;
      if (reference->getGeomExtents(extents) != host::Acad::eOk || !inside(extents, *query_.window)) return 0;
    }
    if (!query_.layers.empty() && !isListed(query_.layers, reference->layerName())) return 0;
    if (!namePasses(*reference.object(), named, blockName)) return 0;
    if (!conditionsHold(*reference.object())) return 0;
    if (where.isLayout) return 1;
    reference.close();
    return query_.nested ? placements(ownerId) : 0;
  }

  static bool inside(const host::AcDbExtents& box, const host::AcDbExtents& window) noexcept {
    const auto lo = box.minPoint(), hi = box.maxPoint(), wlo = window.minPoint(), whi = window.maxPoint();
    return lo.x >= wlo.x && lo.y >= wlo.y && hi.x <= whi.x && hi.y <= whi.y;
  }

  // How many times a block definition is placed in a layout, through any depth of other
  // blocks: each path of insertions is one placement. A block that holds itself adds nothing
  // more on the second pass.
  long placements(AcDbObjectId definition) {
    const auto key = definition.asOldId();
    if (auto found = placements_.find(key); found != placements_.end()) return found->second;
    placements_[key] = 0;  // a cycle meets this
    std::vector<AcDbObjectId> references;
    {
      AcDbObjectPointer<host::AcDbBlockTableRecord> record(services_, definition, AcDb::kForRead);
      if (!record || record->isLayout()) return 0;
      record->getBlockReferenceIds(references, true);
    }
    long total = 0;
    for (const AcDbObjectId id : references) {
      AcDbObjectId ownerId;
      {
        AcDbObjectPointer<host::AcDbBlockReference> reference(services_, id, AcDb::kForRead);
        if (!reference || reference->visibility() != AcDb::kVisible) continue;
        ownerId = reference->ownerId();
      }
      total += owner(ownerId).isLayout ? 1 : placements(ownerId);
    }
    placements_[key] = total;
    return total;
  }

  host::AcDbHostApplicationServices& services_;
  host::AcDbDatabase& db_;
  const BlockCountQuery& query_;
  std::optional<host::AcDbHandle> space_;
  std::vector<double> filterNumbers_;  // each condition's value read as a number, once
  std::vector<Comparison> comparisons_;  // each condition's operator, read once
  std::unordered_map<std::uint64_t, Owner> owners_;
  std::unordered_map<std::uint64_t, bool> definitions_;
  std::unordered_map<std::uint64_t, long> placements_;
  // An attribute's tag and text, read into the same two strings for every attribute.
  std::wstring tag_;
  std::wstring text_;
};

}  // namespace

bool conditionHolds(const BlockCondition& condition, std::wstring_view a) {
  return conditionHolds(condition, a, core::wtof(condition.value));
}

bool conditionHolds(const BlockCondition& condition, std::wstring_view a, double filter) {
  return comparisonHolds(comparisonOf(condition.op), condition, a, filter);
}

BlockCountQuery parseBlockCount(std::wstring_view text) {
  BlockCountQuery query;
  while (!text.empty() && (text.front() == L' ' || text.front() == L'"')) text.remove_prefix(1);
  while (!text.empty() && core::isSpace(text.back())) text.remove_suffix(1);
  if (text.empty()) return query;

  std::wstring_view names = text, rest;
  if (const std::size_t quote = text.find(L'"'); quote != std::wstring_view::npos && quote > 0) {
    names = text.substr(0, quote);
    rest = text.substr(quote + 1);
  } else if (const std::size_t option = text.find(L" \\"); option != std::wstring_view::npos) {
    names = text.substr(0, option);
    rest = text.substr(option);
  }
  query.blocks = splitList(names);

  const FieldOptions options = readFieldOptions(rest);
  query.error = options.error.empty()
                    ? unknownOptionError(options, {L"layer", L"op", L"tag", L"value", L"nested", L"Space", L"Window"})
                    : options.error;
  if (const FieldOption* layers = options.find(L"layer")) query.layers = splitList(layers->value);
  query.conditions = readConditions(options);
  query.nested = options.find(L"nested") != nullptr;
  const FieldOption* space = options.find(L"Space");
  const FieldOption* window = options.find(L"Window");
  if (space && window) {
    const std::wstring_view handle = withoutBlanksAndParentheses(space->value);
    if (!handle.empty()) {
      query.window = readWindow(withoutBlanksAndParentheses(window->value));
      if (query.window) query.space = handle;
    }
  }
  return query;
}

long countBlocks(host::AcDbDatabase& db, const BlockCountQuery& query) {
  if (query.blocks.empty()) return 0;
  return BlockCounter(db, query).count();
}

}  // namespace corvane
