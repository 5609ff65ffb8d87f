#include "headless/db/database.h"

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

#include "core/textutil.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktable.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/dictionary.h"
#include "headless/db/fieldlist.h"
#include "headless/db/layertable.h"
#include "headless/db/layertablerecord.h"
#include "headless/db/layout.h"
#include "headless/db/objectimpl.h"
#include "headless/db/sysvars.h"

namespace corvane::headless {

using host::Acad;

Database::Database(DatabaseHost& host) : host_(host), table_(host.objects()) {
  for (const auto& var : initialSysVars()) sysvars_.emplace(var.name, var.value);
  regApps_.emplace_back(L"ACAD");
  namedObjects_ = addObject(std::make_unique<Dictionary>(), {});
  fieldList_ = addObject(std::make_unique<FieldList>(), namedObjects_);
  get<Dictionary>(namedObjects_)->put(L"ACAD_FIELDLIST", fieldList_);
  modelSpace_ = addObject(std::make_unique<BlockTableRecord>(L"*Model_Space"), {});
  paperSpace_ = addObject(std::make_unique<BlockTableRecord>(L"*Paper_Space"), {});
  // The spaces came first and keep their early handles; the tables take them in now.
  blockTable_ = addObject(std::make_unique<BlockTable>(), {});
  for (const host::AcDbObjectId space : {modelSpace_, paperSpace_}) {
    objects().lookupHeadless(space)->record().owner = blockTable_;
    get<BlockTable>(blockTable_)->addRecord(space);
  }
  layerTable_ = addObject(std::make_unique<LayerTable>(), {});
  addRecord(std::make_unique<LayerTableRecord>(L"0"));
  layouts_ = addObject(std::make_unique<Dictionary>(), namedObjects_);
  get<Dictionary>(namedObjects_)->put(L"ACAD_LAYOUT", layouts_);
  const host::AcDbObjectId model = addObject(std::make_unique<Layout>(L"Model", modelSpace_, 0), layouts_);
  const host::AcDbObjectId sheet = addObject(std::make_unique<Layout>(L"Layout1", paperSpace_, 1), layouts_);
  get<Dictionary>(layouts_)->put(L"Model", model);
  get<Dictionary>(layouts_)->put(L"Layout1", sheet);
  get<BlockTableRecord>(modelSpace_)->setLayoutId(model);
  get<BlockTableRecord>(paperSpace_)->setLayoutId(sheet);
}

Database::Database(DatabaseHost& host, Empty) : host_(host), table_(host.objects()) {
  for (const auto& var : initialSysVars()) sysvars_.emplace(var.name, var.value);
  regApps_.emplace_back(L"ACAD");
}

void Database::setStandardObjects(const StandardObjects& objects) {
  namedObjects_ = objects.namedObjects;
  fieldList_ = objects.fieldList;
  modelSpace_ = objects.modelSpace;
  paperSpace_ = objects.paperSpace;
  blockTable_ = objects.blockTable;
  layerTable_ = objects.layerTable;
  layouts_ = objects.layouts;
}

Database::~Database() {
  for (const auto& entry : objects_) {
    if (entry.object) objects().remove(entry.id);
  }
  host_.databaseClosing(*this);
}

host::AcDbHostApplicationServices& Database::services() { return host_.services(); }

Acad::ErrorStatus Database::getAcDbObjectId(host::AcDbObjectId& id, host::AcDbHandle handle) const {
  if (handle.isNull()) return Acad::eNullHandle;
  const auto found = byHandle_.find(handle.value());
  if (!found) return Acad::eUnknownHandle;
  id = host::AcDbObjectId(*found);
  return Acad::eOk;
}

bool Database::NameLess::operator()(std::wstring_view a, std::wstring_view b) const noexcept {
  return core::compareNoCase(a, b) < 0;
}

Acad::ErrorStatus Database::getSysVar(std::wstring_view name, host::ResBuf& value) const {
  const auto it = sysvars_.find(name);
  if (it == sysvars_.end()) return Acad::eInvalidInput;
  value = it->second;
  return Acad::eOk;
}

Acad::ErrorStatus Database::setSysVar(std::wstring_view name, const host::ResBuf& value) {
  const auto it = sysvars_.find(name);
  if (it == sysvars_.end()) return Acad::eInvalidInput;
  if (it->second.value.index() != value.value.index()) return Acad::eInvalidInput;
  it->second.value = value.value;
  units_.reset();
  return Acad::eOk;
}

const DrawingUnits& Database::drawingUnits() const {
  if (!units_) {
    DrawingUnits units;
    const auto read = [this](const wchar_t* name, int& target) {
      const auto it = sysvars_.find(std::wstring_view(name));
      if (it == sysvars_.end()) return;
      if (const auto* value = std::get_if<std::int32_t>(&it->second.value)) target = *value;
    };
    read(L"LUNITS", units.lunits);
    read(L"LUPREC", units.luprec);
    read(L"DIMZIN", units.dimzin);
    read(L"UNITMODE", units.unitmode);
    units_ = units;
  }
  return *units_;
}

bool Database::isRegApp(std::wstring_view name) const {
  return std::any_of(regApps_.begin(), regApps_.end(),
                     [name](const std::wstring& app) { return core::equalsNoCase(app, name); });
}

Acad::ErrorStatus Database::registerApp(std::wstring_view name) {
  if (name.empty()) return Acad::eInvalidInput;
  if (!isRegApp(name)) regApps_.emplace_back(name);
  return Acad::eOk;
}

host::AcDbObjectId Database::addObject(std::unique_ptr<host::AcDbObject> object, host::AcDbObjectId owner,
                                       host::AcDbHandle handle) {
  auto* headless = dynamic_cast<HeadlessObject*>(object.get());
  if (!headless) throw std::invalid_argument("only headless objects can be added to a headless database");
  return addObject(std::move(object), *headless, owner, handle);
}

void Database::reserve(std::size_t objects) {
  objects_.reserve(objects_.size() + objects);
  this->objects().reserve(objects);
  byHandle_.reserve(byHandle_.size() + objects);
}

host::AcDbObjectId Database::addObject(std::unique_ptr<host::AcDbObject> object, HeadlessObject& headless,
                                       host::AcDbObjectId owner, host::AcDbHandle handle) {
  if (handle.isNull()) {
    handle = handseed_;
  } else if (byHandle_.contains(handle.value())) {
    throw std::invalid_argument("handle already in use");
  }
  if (handle.value() >= handseed_.value()) handseed_ = host::AcDbHandle(handle.value() + 1);

  ObjectRecord& record = headless.record();
  record.database = this;
  record.handle = handle;
  record.owner = owner;
  record.id = objects().add(*this, *object, headless);
  byHandle_.insert(handle.value(), record.id.asOldId());
  const host::AcDbObjectId id = record.id;
  host::AcDbObject* added = object.get();
  objects_.push_back({id, std::move(object)});
  linkStructure(*added);
  return id;
}

std::uint8_t Database::structureRoles(const host::AcDbObject& object) const {
  // What an object means to the drawing's structure depends on its class alone; asking once
  // per class spares every added object a row of casts.
  const std::type_info* type = &typeid(object);
  for (const auto& [known, roles] : roles_)
    if (known == type) return roles;
  std::uint8_t roles = 0;
  if (dynamic_cast<const BlockTable*>(&object)) roles |= kBlockTableRole;
  if (dynamic_cast<const LayerTable*>(&object)) roles |= kLayerTableRole;
  if (dynamic_cast<const host::AcDbSymbolTableRecord*>(&object)) roles |= kTableRecordRole;
  if (dynamic_cast<const BlockReference*>(&object)) roles |= kBlockReferenceRole;
  if (dynamic_cast<const Attribute*>(&object)) roles |= kAttributeRole;
  roles_.emplace_back(type, roles);
  return roles;
}

void Database::linkStructure(host::AcDbObject& object) {
  const std::uint8_t roles = structureRoles(object);
  if (roles == 0) return;
  const host::AcDbObjectId id = object.objectId();
  const host::AcDbObjectId owner = object.ownerId();
  if ((roles & kBlockTableRole) && blockTable_.isNull()) blockTable_ = id;
  if ((roles & kLayerTableRole) && layerTable_.isNull()) layerTable_ = id;
  if (roles & kTableRecordRole) {
    if (auto* table = dynamic_cast<SymbolTableBase*>(lookup(owner))) table->addRecord(id);
  }
  if (roles & kBlockReferenceRole) {
    auto& reference = static_cast<BlockReference&>(object);
    if (auto* block = get<BlockTableRecord>(reference.blockTableRecord())) block->addReference(id);
  }
  if (roles & kAttributeRole) {
    if (auto* reference = get<BlockReference>(owner)) reference->addAttributeId(id);
  }
}

host::AcDbObjectId Database::addRecord(std::unique_ptr<host::AcDbObject> record, host::AcDbHandle handle) {
  host::AcDbObjectId table;
  if (dynamic_cast<BlockTableRecord*>(record.get())) table = blockTable_;
  if (dynamic_cast<LayerTableRecord*>(record.get())) table = layerTable_;
  if (table.isNull()) throw std::invalid_argument("a record goes into the block table or the layer table");
  return addObject(std::move(record), table, handle);
}

void Database::destroyObject(host::AcDbObjectId id) {
  const auto before = [](const Entry& entry, std::uint64_t wanted) { return entry.id.asOldId() < wanted; };
  const auto it = std::lower_bound(objects_.begin(), objects_.end(), id.asOldId(), before);
  if (it == objects_.end() || it->id != id || !it->object) return;
  host::AcDbObject& object = *it->object;
  // Nothing may keep the id of an object that is gone.
  if (auto* reference = dynamic_cast<BlockReference*>(&object)) {
    if (auto* block = get<BlockTableRecord>(reference->blockTableRecord())) block->removeReference(id);
  }
  if (auto* table = dynamic_cast<SymbolTableBase*>(lookup(object.ownerId()))) table->removeRecord(id);
  byHandle_.erase(object.handle().value());
  objects().remove(id);
  it->object.reset();
  ++destroyed_;
  // The newest objects, the usual ones to go, leave no empty entry behind them.
  while (!objects_.empty() && !objects_.back().object) {
    objects_.pop_back();
    --destroyed_;
  }
  if (destroyed_ > objects_.size() / 2) {
    std::erase_if(objects_, [](const Entry& entry) { return !entry.object; });
    destroyed_ = 0;
  }
}

void Database::raiseHandseed(host::AcDbHandle seed) {
  if (seed.value() > handseed_.value()) handseed_ = seed;
}

host::AcDbObject* Database::lookup(host::AcDbObjectId id) const {
  return objects().database(id) == this ? objects().lookup(id) : nullptr;
}

std::vector<host::AcDbObjectId> Database::objectIds() const {
  std::vector<host::AcDbObjectId> ids;
  ids.reserve(objects_.size() - destroyed_);
  for (const auto& entry : objects_) {
    if (entry.object) ids.push_back(entry.id);
  }
  return ids;
}

void Database::markUnmodified() {
  for (const auto& entry : objects_) {
    if (auto* headless = entry.object ? objects().lookupHeadless(entry.id) : nullptr) headless->record().modified = false;
  }
}

host::AcDbObjectId Database::appendEntity(std::unique_ptr<host::AcDbObject> entity, host::AcDbObjectId block,
                                         host::AcDbHandle handle) {
  if (block.isNull()) block = modelSpace_;
  auto* record = get<BlockTableRecord>(block);
  if (!record) throw std::invalid_argument("entities go into a block table record");
  const host::AcDbObjectId id = addObject(std::move(entity), block, handle);
  record->append(id);
  return id;
}

}  // namespace corvane::headless
