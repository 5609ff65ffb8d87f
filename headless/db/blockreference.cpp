#include "headless/db/blockreference.h"

#include <algorithm>
#include <cstdint>

#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"

namespace corvane::headless {

using host::Acad;

namespace {

// Blocks nest; a block that holds itself must not make the box endless.
constexpr int kMaxNesting = 64;

const host::ResBuf* firstOfCode(const host::ResBufList& data, int code) {
  const auto it = std::find_if(data.begin(), data.end(), [code](const host::ResBuf& item) { return item.restype == code; });
  return it == data.end() ? nullptr : &*it;
}

}  // namespace

void BlockReference::setBlockTableRecord(host::AcDbObjectId block) {
  if (block == block_) return;
  if (Database* db = record_.database) {
    if (auto* old = db->get<BlockTableRecord>(block_)) old->removeReference(record_.id);
    if (auto* now = db->get<BlockTableRecord>(block)) now->addReference(record_.id);
  }
  block_ = block;
  record_.modified = true;
}

void BlockReference::setPosition(host::AcGePoint3d position) {
  if (!(position_ == position)) record_.modified = true;
  position_ = position;
}

void BlockReference::setScaleFactors(host::AcGeScale3d scale) {
  if (!(scale_ == scale)) record_.modified = true;
  scale_ = scale;
}

void BlockReference::setRotation(double rotation) {
  if (rotation_ != rotation) record_.modified = true;
  rotation_ = rotation;
}

void BlockReference::setNormal(host::AcGeVector3d normal) {
  if (!(normal_ == normal)) record_.modified = true;
  normal_ = normal;
}

geometry::Transform BlockReference::blockTransform() const {
  host::AcGePoint3d origin;
  if (const auto* block = record_.database ? record_.database->get<BlockTableRecord>(block_) : nullptr) {
    origin = block->origin();
  }
  using geometry::Transform;
  return Transform::fromOcs(normal_) * Transform::translate({position_.x, position_.y, position_.z}) *
         Transform::rotateZ(rotation_) * Transform::scale(scale_.sx, scale_.sy, scale_.sz) *
         Transform::translate({-origin.x, -origin.y, -origin.z});
}

void BlockReference::addAttributeId(host::AcDbObjectId attribute) {
  if (std::find(attributes_.begin(), attributes_.end(), attribute) != attributes_.end()) return;
  attributes_.push_back(attribute);
  record_.modified = true;
}

host::AcDbObjectIterator BlockReference::attributeIterator() const {
  host::AcDbObjectIterator live;
  for (const host::AcDbObjectId id : attributes_) {
    const host::AcDbObject* attribute = record_.database ? record_.database->lookup(id) : nullptr;
    if (attribute && !attribute->isErased()) live.append(id);
  }
  return live;
}

void BlockReference::setDynamicBlockName(std::wstring name) {
  if (dynamicBlockName_ != name) record_.modified = true;
  dynamicBlockName_ = std::move(name);
}

void BlockReference::setDynamicProperties(std::vector<host::AcDbDynBlockReferenceProperty> properties) {
  properties_ = std::move(properties);
  record_.modified = true;
}

host::AcDbObjectId BlockReference::dynamicBlockTableRecord() const {
  const Database* db = record_.database;
  if (!db) return {};
  if (!dynamicBlockName_.empty()) {
    const auto* table = db->get<host::AcDbBlockTable>(db->blockTableId());
    host::AcDbObjectId id;
    if (table && table->getAt(dynamicBlockName_, id) == Acad::eOk) return id;
  }
  const auto* block = db->get<BlockTableRecord>(block_);
  if (!block) return {};
  if (block->isDynamicBlock()) return block_;
  if (!block->isAnonymous()) return {};
  // A variant names its definition by handle in its representation tag.
  const host::ResBufList tag = block->xData(L"AcDbBlockRepBTag");
  const host::ResBuf* handleItem = firstOfCode(tag, 1005);
  const auto* handleText = handleItem ? std::get_if<std::wstring>(&handleItem->value) : nullptr;
  const auto handle = handleText ? host::AcDbHandle::fromText(*handleText) : std::nullopt;
  host::AcDbObjectId definition;
  if (!handle || db->getAcDbObjectId(definition, *handle) != Acad::eOk) return {};
  return db->get<BlockTableRecord>(definition) ? definition : host::AcDbObjectId();
}

Acad::ErrorStatus BlockReference::getBlockProperties(std::vector<host::AcDbDynBlockReferenceProperty>& properties) const {
  if (!isDynamicBlock()) return Acad::eNotApplicable;
  properties = properties_;
  return Acad::eOk;
}

std::wstring BlockReference::blockName() const {
  const auto* block = record_.database ? record_.database->get<BlockTableRecord>(block_) : nullptr;
  return block ? block->name() : std::wstring();
}

std::wstring BlockReference::effectiveName() const {
  const host::AcDbObjectId definition = dynamicBlockTableRecord();
  if (!definition.isNull() && definition != block_) {
    if (const auto* block = record_.database->get<BlockTableRecord>(definition)) return block->name();
  }
  return blockName();
}

void BlockReference::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  addExtents(extents, transform, 0);
}

void BlockReference::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform, int depth) const {
  const Database* db = record_.database;
  if (!db || depth > kMaxNesting) return;
  if (const auto* block = db->get<BlockTableRecord>(block_)) {
    const geometry::Transform inner = transform * blockTransform();
    for (auto it = block->newIterator(); !it.done(); it.step()) {
      const host::AcDbObject* object = db->lookup(it.objectId());
      const auto* entity = dynamic_cast<const host::AcDbEntity*>(object);
      if (!entity || !entity->visible()) continue;
      // A reference shows the attributes it owns, not the block's definitions of them; only a
      // constant definition's text appears in every reference.
      if (const auto* definition = dynamic_cast<const AttributeDefinition*>(object);
          definition && !definition->isConstant()) {
        continue;
      }
      if (const auto* nested = dynamic_cast<const BlockReference*>(object)) {
        nested->addExtents(extents, inner, depth + 1);
      } else if (const auto* shape = dynamic_cast<const Shape*>(object)) {
        shape->addExtents(extents, inner);
      }
    }
  }
  for (auto it = attributeIterator(); !it.done(); it.step()) {
    const auto* attribute = db->get<Attribute>(it.objectId());
    if (attribute && attribute->visible() && !attribute->isInvisible()) attribute->addExtents(extents, transform);
  }
}

std::optional<host::AcValue> BlockReference::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Name")) return host::AcValue(blockName());
  if (core::equalsNoCase(name, L"EffectiveName")) return host::AcValue(effectiveName());
  if (core::equalsNoCase(name, L"InsertionPoint") || core::equalsNoCase(name, L"Position")) {
    return host::AcValue(position_.asArray());
  }
  if (core::equalsNoCase(name, L"Rotation")) return host::AcValue(rotation_);
  if (core::equalsNoCase(name, L"XScaleFactor")) return host::AcValue(scale_.sx);
  if (core::equalsNoCase(name, L"YScaleFactor")) return host::AcValue(scale_.sy);
  if (core::equalsNoCase(name, L"ZScaleFactor")) return host::AcValue(scale_.sz);
  if (core::equalsNoCase(name, L"IsDynamicBlock")) return host::AcValue(std::int32_t{isDynamicBlock() ? 1 : 0});
  if (core::equalsNoCase(name, L"HasAttributes")) {
    return host::AcValue(std::int32_t{attributeIterator().done() ? 0 : 1});
  }
  if (auto own = EntityImpl::property(name)) return own;
  // A dynamic block's properties read like the reference's own.
  for (const auto& dynamicProperty : properties_) {
    if (core::equalsNoCase(dynamicProperty.propertyName(), name)) return dynamicProperty.value();
  }
  return std::nullopt;
}

}  // namespace corvane::headless
