#include "headless/db/deepclone.h"

#include <memory>
#include <typeinfo>
#include <utility>

#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"
#include "headless/db/hatch.h"
#include "headless/db/line.h"
#include "headless/db/mleader.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
#include "headless/db/proxyobject.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/viewport.h"

namespace corvane::headless {

using host::Acad;
using host::AcDbObjectId;

namespace {

// A copy of the object as it stands, for the classes a deep clone knows; null for others
// (symbol tables and their records, layouts, the field list).
template <typename... Known>
std::unique_ptr<host::AcDbObject> copyAs(const host::AcDbObject& object) {
  std::unique_ptr<host::AcDbObject> copy;
  ((copy == nullptr && typeid(object) == typeid(Known)
        ? (copy = std::make_unique<Known>(static_cast<const Known&>(object)), true)
        : false) ||
   ...);
  return copy;
}

std::unique_ptr<host::AcDbObject> copyOf(const host::AcDbObject& object) {
  return copyAs<Line, Circle, Arc, Polyline, Hatch, Text, MText, Attribute, AttributeDefinition, BlockReference, Table,
                MLeader, Viewport, ProxyEntity, ProxyTextEntity, ProxyObject, Dictionary, Field>(object);
}

class Cloner {
 public:
  Cloner(Database& db, host::AcDbIdMapping& mapping) : db_(db), mapping_(mapping) {}

  // Whether the object and all it owns can be cloned.
  Acad::ErrorStatus check(AcDbObjectId id, int depth = 0) const;
  AcDbObjectId clone(AcDbObjectId source, AcDbObjectId owner, bool primary);
  // Once everything is cloned: references to cloned objects move onto the clones.
  void translateReferences();

 private:
  // The objects the source owns, in the order their clones are made.
  std::vector<AcDbObjectId> ownedBy(AcDbObjectId source) const;
  void cloneOwned(AcDbObjectId source, AcDbObjectId clone);
  AcDbObjectId cloneOf(AcDbObjectId source) const {
    host::AcDbIdPair pair(source, {}, false);
    return mapping_.compute(pair) ? pair.value() : AcDbObjectId();
  }

  Database& db_;
  host::AcDbIdMapping& mapping_;
  std::vector<AcDbObjectId> clones_;
};

// Ownership chains are short (entity, dictionaries, fields, their children); a cycle in a
// damaged drawing must not run away.
constexpr int kMaxOwnershipDepth = 64;

Acad::ErrorStatus Cloner::check(AcDbObjectId id, int depth) const {
  const host::AcDbObject* object = db_.lookup(id);
  if (!object) return db_.objects().isValid(id) ? Acad::eWrongDatabase : Acad::eInvalidObjectId;
  if (object->isErased()) return Acad::eWasErased;
  if (depth > kMaxOwnershipDepth || !copyOf(*object)) return Acad::eNotApplicable;
  for (const AcDbObjectId owned : ownedBy(id)) {
    if (const Acad::ErrorStatus es = check(owned, depth + 1); es != Acad::eOk) return es;
  }
  return Acad::eOk;
}

std::vector<AcDbObjectId> Cloner::ownedBy(AcDbObjectId source) const {
  std::vector<AcDbObjectId> owned;
  const host::AcDbObject* object = db_.lookup(source);
  const auto ownedHere = [&](AcDbObjectId id) {
    const host::AcDbObject* candidate = db_.lookup(id);
    if (candidate && !candidate->isErased() && candidate->ownerId() == source) owned.push_back(id);
  };
  if (const AcDbObjectId xdict = object->extensionDictionary(); !xdict.isNull()) ownedHere(xdict);
  if (const auto* dictionary = dynamic_cast<const Dictionary*>(object)) {
    for (const auto& [name, id] : dictionary->entries()) ownedHere(id);
  } else if (const auto* field = Field::of(const_cast<host::AcDbObject*>(object))) {
    for (const AcDbObjectId child : field->children()) ownedHere(child);
  } else if (const auto* table = dynamic_cast<const Table*>(object)) {
    for (int row = 0; row < table->numRows(); ++row) {
      for (int column = 0; column < table->numColumns(); ++column) {
        if (const AcDbObjectId cellField = table->cell(row, column).field; !cellField.isNull()) ownedHere(cellField);
      }
    }
  } else if (const auto* reference = dynamic_cast<const BlockReference*>(object)) {
    for (const AcDbObjectId attribute : reference->attributeIds()) ownedHere(attribute);
  }
  return owned;
}

AcDbObjectId Cloner::clone(AcDbObjectId source, AcDbObjectId owner, bool primary) {
  std::unique_ptr<host::AcDbObject> copy = copyOf(*db_.lookup(source));
  // The copy keeps the source's contents; identity, open state and ownership are its own.
  ObjectRecord& record = dynamic_cast<HeadlessObject&>(*copy).record();
  ObjectRecord fresh;
  fresh.visible = record.visible;
  fresh.xdata = record.xdata;
  fresh.modified = true;
  record = std::move(fresh);
  if (auto* reference = dynamic_cast<BlockReference*>(copy.get())) reference->clearAttributeIds();

  const AcDbObjectId id = primary ? db_.appendEntity(std::move(copy), owner) : db_.addObject(std::move(copy), owner);
  mapping_.assign(host::AcDbIdPair(source, id, true, primary));
  clones_.push_back(id);
  cloneOwned(source, id);
  return id;
}

void Cloner::cloneOwned(AcDbObjectId source, AcDbObjectId clone) {
  HeadlessObject& made = *db_.objects().lookupHeadless(clone);
  const host::AcDbObject& original = *db_.lookup(source);
  const AcDbObjectId sourceXdict = original.extensionDictionary();
  for (const AcDbObjectId owned : ownedBy(source)) {
    const AcDbObjectId ownedClone = this->clone(owned, clone, false);
    if (owned == sourceXdict) made.record().extensionDictionary = ownedClone;
  }
  host::AcDbObject* object = db_.lookup(clone);
  if (auto* dictionary = dynamic_cast<Dictionary*>(object)) {
    for (const auto& [name, id] : dictionary->entries()) {
      if (const AcDbObjectId entryClone = cloneOf(id); !entryClone.isNull()) dictionary->put(name, entryClone);
    }
  } else if (Field* field = Field::of(object)) {
    std::vector<AcDbObjectId> children;
    for (const AcDbObjectId child : field->children()) {
      const AcDbObjectId childClone = cloneOf(child);
      children.push_back(childClone.isNull() ? child : childClone);
    }
    field->restore(field->evaluatorId(), field->ownCode(), std::move(children), field->objectIds());
    db_.get<FieldList>(db_.fieldListId())->add(clone);
  } else if (auto* table = dynamic_cast<Table*>(object)) {
    for (int row = 0; row < table->numRows(); ++row) {
      for (int column = 0; column < table->numColumns(); ++column) {
        const AcDbObjectId cellField = cloneOf(table->cell(row, column).field);
        if (!cellField.isNull()) table->placeField(row, column, cellField);
      }
    }
    // A cell selected for editing belongs to the source's editor session, not to the copy.
    openRecord(made.record(), host::AcDb::kForWrite, false);
    table->clearSubSelection();
    closeRecord(made.record());
  }
}

void Cloner::translateReferences() {
  for (const AcDbObjectId id : clones_) {
    HeadlessObject& headless = *db_.objects().lookupHeadless(id);
    if (Field* field = Field::of(db_.lookup(id))) {
      std::vector<AcDbObjectId> objects = field->objectIds();
      bool moved = false;
      for (AcDbObjectId& referenced : objects) {
        if (const AcDbObjectId target = cloneOf(referenced); !target.isNull()) {
          referenced = target;
          moved = true;
        }
      }
      if (moved) field->restore(field->evaluatorId(), field->ownCode(), field->children(), std::move(objects));
    }
    if (headless.record().xdata.empty()) continue;
    host::ResBufList xdata = headless.record().xdata;
    bool moved = false;
    for (host::ResBuf& item : xdata) {
      const auto* text = std::get_if<std::wstring>(&item.value);
      if (item.restype != 1005 || !text) continue;
      const auto handle = host::AcDbHandle::fromText(*text);
      AcDbObjectId referenced;
      if (!handle || db_.getAcDbObjectId(referenced, *handle) != Acad::eOk) continue;
      if (const AcDbObjectId target = cloneOf(referenced); !target.isNull()) {
        item.value = db_.objects().handle(target).text();
        moved = true;
      }
    }
    if (moved) headless.record().xdata = std::move(xdata);
  }
}

}  // namespace

Acad::ErrorStatus deepCloneObjects(Database& db, const std::vector<AcDbObjectId>& ids, AcDbObjectId owner,
                                   host::AcDbIdMapping& mapping) {
  if (!db.get<BlockTableRecord>(owner)) return Acad::eWrongObjectType;
  Cloner cloner(db, mapping);
  for (const AcDbObjectId id : ids) {
    if (db.lookup(id) && !dynamic_cast<const host::AcDbEntity*>(db.lookup(id))) return Acad::eNotAnEntity;
    if (const Acad::ErrorStatus es = cloner.check(id); es != Acad::eOk) return es;
  }
  mapping.setOrigDb(&db);
  mapping.setDestDb(&db);
  for (const AcDbObjectId id : ids) {
    host::AcDbIdPair done(id, {}, false);
    if (!mapping.compute(done)) cloner.clone(id, owner, true);  // an id given twice is cloned once
  }
  cloner.translateReferences();
  return Acad::eOk;
}

}  // namespace corvane::headless
