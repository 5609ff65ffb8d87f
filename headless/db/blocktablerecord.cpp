#include "headless/db/blocktablerecord.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "headless/db/attributedefinition.h"
#include "headless/db/database.h"
#include "headless/db/objecttable.h"

namespace corvane::headless {

void BlockTableRecord::setFlags(int flags) {
  if (flags_ != flags) record_.modified = true;
  flags_ = flags;
}

void BlockTableRecord::setLayoutId(host::AcDbObjectId layout) {
  if (layout_ != layout) record_.modified = true;
  layout_ = layout;
}

void BlockTableRecord::setUnloaded(bool unloaded) {
  if (unloaded_ != unloaded) record_.modified = true;
  unloaded_ = unloaded;
}

void BlockTableRecord::setOrigin(host::AcGePoint3d origin) {
  if (!(origin_ == origin)) record_.modified = true;
  origin_ = origin;
}

void BlockTableRecord::setPathName(std::wstring path) {
  if (pathName_ != path) record_.modified = true;
  pathName_ = std::move(path);
}

void BlockTableRecord::setDynamicBlock(bool dynamic) {
  if (dynamic_ != dynamic) record_.modified = true;
  dynamic_ = dynamic;
}

bool BlockTableRecord::hasAttributeDefinitions() const {
  const Database* db = record_.database;
  if (!db) return false;
  return std::any_of(entities_.begin(), entities_.end(), [db](host::AcDbObjectId id) {
    const auto* definition = db->get<AttributeDefinition>(id);
    return definition && !definition->isErased();
  });
}

host::AcDbBlockTableRecordIterator BlockTableRecord::newIterator(bool skipErased) const {
  if (!skipErased) return host::AcDbBlockTableRecordIterator(entities_);
  std::vector<host::AcDbObjectId> live;
  live.reserve(entities_.size());
  for (const host::AcDbObjectId id : entities_) {
    const host::AcDbObject* entity = record_.database ? record_.database->lookup(id) : nullptr;
    if (entity && !entity->isErased()) live.push_back(id);
  }
  return host::AcDbBlockTableRecordIterator(std::move(live));
}

host::Acad::ErrorStatus BlockTableRecord::readEntities(EntityReader& reader) const {
  if (!record_.database) return host::Acad::eNoDatabase;
  const ObjectTable& table = record_.database->objects();
  // Ids are only ever appended, so the first `count` are the ids the walk began with, however
  // many the reader adds.
  const std::size_t count = entities_.size();
  // The first two lines of each entity (the open's state, the layer, the first fields a
  // reader looks at) are asked for this far ahead. What an entity keeps apart (vertices,
  // loops) is not: most readers never look at it, and asking would hold the walk up.
  constexpr std::size_t kAhead = 16;
  for (std::size_t i = 0; i < count; ++i) {
    if (i + kAhead < count) {
      if (const auto* coming = reinterpret_cast<const char*>(table.lookup(entities_[i + kAhead]))) {
        __builtin_prefetch(coming);
        __builtin_prefetch(coming + 64);
      }
    }
    const host::AcDbObjectId id = entities_[i];
    HeadlessObject* headless = table.lookupHeadless(id);
    if (!headless) continue;
    ObjectRecord& record = headless->record();
    // What an open for read refuses.
    if (record.erased || record.writeOpen) continue;
    host::AcDbObject* object = table.lookup(id);
    const host::AcDbEntity* entity = object->isKindOf(host::AcDbEntity::desc())
                                         ? static_cast<const host::AcDbEntity*>(object)
                                         : dynamic_cast<const host::AcDbEntity*>(object);
    if (!entity) continue;
    // Open for read while the reader has it, closed on every way out.
    struct ReadOpen {
      ObjectRecord& record;
      explicit ReadOpen(ObjectRecord& r) : record(r) { ++record.readers; }
      ~ReadOpen() { --record.readers; }
      ReadOpen(const ReadOpen&) = delete;
      ReadOpen& operator=(const ReadOpen&) = delete;
    } const open(record);
    reader.read(*entity);
  }
  return host::Acad::eOk;
}

void BlockTableRecord::addReference(host::AcDbObjectId reference) {
  // The file's own list and the database's wiring may both announce one reference. Ids grow
  // as objects are made, so one past every id seen so far cannot be in the list yet.
  if (reference > newestReference_ ||
      std::find(references_.begin(), references_.end(), reference) == references_.end()) {
    references_.push_back(reference);
  }
  newestReference_ = std::max(newestReference_, reference);
}

void BlockTableRecord::removeReference(host::AcDbObjectId reference) {
  references_.erase(std::remove(references_.begin(), references_.end(), reference), references_.end());
}

bool BlockTableRecord::isLayout() const {
  if (!layout_.isNull()) return true;
  const std::wstring& own = name();
  return core::equalsNoCase(own, L"*Model_Space") || core::startsWithNoCase(own, L"*Paper_Space");
}

host::Acad::ErrorStatus BlockTableRecord::getBlockReferenceIds(std::vector<host::AcDbObjectId>& ids,
                                                               bool directOnly) const {
  ids = references_;
  if (directOnly || !record_.database) return host::Acad::eOk;
  // Up through the blocks that hold references: each such block's own references reach this
  // block too. Every block is visited once, so a block that holds itself ends the walk.
  const Database& db = *record_.database;
  std::set<host::AcDbObjectId> visited{record_.id};
  std::vector<host::AcDbObjectId> pending = references_;
  while (!pending.empty()) {
    const host::AcDbObjectId reference = pending.back();
    pending.pop_back();
    const auto* entity = db.get<host::AcDbEntity>(reference);
    if (!entity) continue;
    const auto* holder = db.get<BlockTableRecord>(entity->blockId());
    if (!holder || holder->isLayout() || !visited.insert(holder->objectId()).second) continue;
    for (const host::AcDbObjectId outer : holder->referenceIds()) {
      ids.push_back(outer);
      pending.push_back(outer);
    }
  }
  return host::Acad::eOk;
}

std::optional<host::AcValue> BlockTableRecord::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Origin")) return host::AcValue(origin_.asArray());
  if (core::equalsNoCase(name, L"IsLayout")) return host::AcValue(std::int32_t{isLayout() ? 1 : 0});
  if (core::equalsNoCase(name, L"IsXRef")) return host::AcValue(std::int32_t{isFromExternalReference() ? 1 : 0});
  if (core::equalsNoCase(name, L"IsDynamicBlock")) return host::AcValue(std::int32_t{dynamic_ ? 1 : 0});
  if (core::equalsNoCase(name, L"Path") && isFromExternalReference()) return host::AcValue(pathName_);
  if (core::equalsNoCase(name, L"Count")) {
    std::int32_t count = 0;
    for (auto it = newIterator(); !it.done(); it.step()) ++count;
    return host::AcValue(count);
  }
  return SymbolTableRecordImpl::property(name);
}

}  // namespace corvane::headless
