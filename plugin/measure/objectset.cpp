#include "plugin/measure/objectset.h"

#include "core/crt.h"
#include "core/textutil.h"
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

constexpr std::wstring_view kModelSpaceName = L"*Model_Space";
constexpr std::wstring_view kModelSpaceSet = L"*MSPObjects*";
constexpr std::wstring_view kOwnerSpaceSet = L"*OSPObjects*";

std::wstring_view cleanObjectList(std::wstring_view objects) noexcept {
  const auto isLetter = [](wchar_t c) { return c == L'O' || c == L'b' || c == L'j' || c == L'e' || c == L'c' || c == L't'; };
  while (!objects.empty() && isLetter(objects.front())) objects.remove_prefix(1);
  while (!objects.empty() && (objects.front() == L'(' || objects.front() == L'<')) objects.remove_prefix(1);
  while (!objects.empty() && (objects.back() == L'>' || objects.back() == L')')) objects.remove_suffix(1);
  return objects;
}

// True when the owner chain from `from` reaches `space`. A chain that breaks or runs in a
// circle ends without a match.
bool ownedBy(host::AcDbHostApplicationServices& services, AcDbObjectId from, AcDbObjectId space) {
  constexpr int kLongestChain = 256;
  AcDbObjectId current = from;
  for (int step = 0; step < kLongestChain && !current.isNull() && services.isValid(current); ++step) {
    if (current == space) return true;
    AcDbObjectPointer<host::AcDbObject> object(services, current, AcDb::kForRead);
    if (!object) return false;
    const AcDbObjectId owner = object->ownerId();
    if (owner == current) return false;
    current = owner;
  }
  return false;
}

double measureEntity(const host::AcDbEntity& entity, const ObjectSet& set, EntityMeasure measure) {
  if (!set.layers.empty() && !layerPasses(set.layers, entity.layerName())) return 0.0;
  return measure(entity, set.typeMask);
}

// Adds the measure of each entity a space's walk hands over to one running sum, entity by
// entity across the spaces.
class Summer final : public host::AcDbBlockTableRecord::EntityReader {
 public:
  Summer(const ObjectSet& set, EntityMeasure measure, double& sum) : set_(set), measure_(measure), sum_(sum) {}
  void read(const host::AcDbEntity& entity) override { sum_ += measureEntity(entity, set_, measure_); }

 private:
  const ObjectSet& set_;
  EntityMeasure measure_;
  double& sum_;
};

double sumExplicit(host::AcDbDatabase& db, const ObjectSet& set, EntityMeasure measure) {
  host::AcDbHostApplicationServices& services = db.services();
  double sum = 0.0;
  for (const std::wstring& token : set.handles()) {
    const auto handle = host::AcDbHandle::fromText(token);
    AcDbObjectId id;
    if (!handle || db.getAcDbObjectId(id, *handle) != host::Acad::eOk) continue;
    AcDbObjectPointer<host::AcDbEntity> entity(services, id, AcDb::kForRead);
    if (entity) sum += measureEntity(*entity.object(), set, measure);
  }
  return sum;
}

double sumSpaces(host::AcDbDatabase& db, AcDbObjectId ownerId, const ObjectSet& set, EntityMeasure measure) {
  host::AcDbHostApplicationServices& services = db.services();
  AcDbObjectPointer<host::AcDbBlockTable> blocks(services, db.blockTableId(), AcDb::kForRead);
  if (!blocks) return 0.0;
  const SpaceScope scope = set.scope();
  double sum = 0.0;
  for (auto records = blocks->newIterator(); !records.done(); records.step()) {
    const AcDbObjectId recordId = records.objectId();
    AcDbObjectPointer<host::AcDbBlockTableRecord> record(services, recordId, AcDb::kForRead);
    if (!record || !record->isLayout() || record->isUnloaded() || record->isFromOverlayReference()) continue;
    if (scope == SpaceScope::kModelSpace) {
      std::wstring name;
      record->getName(name);
      if (!core::equalsNoCase(name, kModelSpaceName)) continue;
    } else if (scope == SpaceScope::kOwnerSpace && !ownedBy(services, ownerId, recordId)) {
      continue;
    }
    Summer summer(set, measure, sum);
    record->readEntities(summer);
  }
  return sum;
}

}  // namespace

SpaceScope ObjectSet::scope() const noexcept {
  if (core::equalsNoCase(objects, kModelSpaceSet)) return SpaceScope::kModelSpace;
  if (core::equalsNoCase(objects, kOwnerSpaceSet)) return SpaceScope::kOwnerSpace;
  return SpaceScope::kAllSpaces;
}

std::vector<std::wstring> ObjectSet::handles() const { return splitList(objects); }

bool hasObjectSetPrefix(std::wstring_view text) noexcept { return core::startsWithNoCase(text, L"Object("); }

ObjectSet parseObjectSet(std::wstring_view text) {
  ObjectSet set;
  std::wstring_view objects = text;
  const std::size_t split = text.find(L" \\");
  if (split != std::wstring_view::npos && split > 0) {
    objects = text.substr(0, split);
    set.options = text.substr(split);
  }
  set.objects = cleanObjectList(objects);

  const FieldOptions options = readFieldOptions(set.options);
  set.error = options.error.empty() ? unknownOptionError(options, {L"objtype", L"layer"}) : options.error;
  if (const FieldOption* mask = options.find(L"objtype")) set.typeMask = core::leadingInteger(mask->value);
  if (const FieldOption* layers = options.find(L"layer")) set.layers = splitList(layers->value);
  return set;
}

const wchar_t* spaceSetName(SpaceScope scope) noexcept {
  switch (scope) {
    case SpaceScope::kModelSpace: return L"*MSPObjects*";
    case SpaceScope::kOwnerSpace: return L"*OSPObjects*";
    default: return L"*AllObjects*";
  }
}

std::wstring buildObjectSetText(const ObjectSetChoice& choice) {
  std::wstring text = L"Object(<";
  if (choice.explicitObjects) {
    for (std::size_t i = 0; i < choice.handles.size(); ++i) {
      if (i > 0) text += L';';
      text += choice.handles[i];
    }
    return text + L">)";
  }
  text += spaceSetName(choice.scope);
  text += L">)";
  // With every layer selected the set measures every type as well.
  if (choice.selectedLayers.size() == choice.allLayers.size()) return text;
  if (choice.typeMask != 0 && choice.typeMask != kEveryTypeMask) {
    text += L" \\objtype \"" + std::to_wstring(choice.typeMask) + L"\"";
  }
  if (!choice.selectedLayers.empty()) {
    text += L" \\layer \"";
    for (std::size_t i = 0; i < choice.selectedLayers.size(); ++i) {
      if (i > 0) text += L';';
      text += choice.selectedLayers[i];
    }
    text += L"\"";
  }
  return text;
}

bool layerPasses(const std::vector<std::wstring>& layers, std::wstring_view layer) noexcept {
  return layers.empty() || isListed(layers, layer);
}

double sumObjectSet(host::AcDbDatabase& db, AcDbObjectId ownerId, const ObjectSet& set, EntityMeasure measure) {
  return set.isNamedSet() ? sumSpaces(db, ownerId, set, measure) : sumExplicit(db, set, measure);
}

}  // namespace corvane
