// Writes headless objects into records: what a changed object holds goes into the groups its
// record keeps for it, everything else in the record staying as read; an object that has no
// record yet gets one spelt the way the host spells it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "dxf/tags/document.h"
#include "host/acdbobject.h"

namespace corvane::headless {
class BlockReference;
class Database;
class Polyline;
}

namespace corvane::dxf {

class ObjectWriter {
 public:
  // `removed` tells which objects lose their records in this save: references to them are
  // left out of dictionaries and field lists.
  ObjectWriter(Document& doc, const headless::Database& db, std::function<bool(host::AcDbObjectId)> removed);

  // Returns whether the record changed.
  bool writeBack(RecordId id, const host::AcDbObject& object);
  // The tags of a new record for the object; nullopt, with `error` set, for a kind that
  // cannot be written without a record to start from.
  std::optional<std::vector<NewTag>> newRecord(const host::AcDbObject& object, std::string& error) const;

  // Whether a new record for the object belongs with the entities (ENTITIES or a block).
  static bool isEntity(const host::AcDbObject& object);

  // The attributes of a block reference that are written with it, in their order.
  std::vector<host::AcDbObjectId> attributesOf(const headless::BlockReference& reference) const;
  // The record that closes the attributes of a new block reference.
  std::vector<NewTag> sequenceEnd(const headless::BlockReference& reference, std::uint64_t handle) const;

 private:
  std::uint64_t handleOf(host::AcDbObjectId id) const;
  bool writeCommon(RecordId id, const host::AcDbObject& object);
  bool writeExtendedData(RecordId id, const host::AcDbObject& object);
  bool writeBody(RecordId id, const host::AcDbObject& object);
  bool writeEntity(RecordId id, const host::AcDbEntity& entity);
  bool writeProperties(RecordId id, const host::AcDbObject& object);
  bool writePolyline(RecordId id, const headless::Polyline& polyline);
  bool writeHostText(RecordId id, const host::AcDbObject& object, std::wstring_view text);
  bool writeDictionary(RecordId id, const host::AcDbObject& object);
  bool writeFieldList(RecordId id, const host::AcDbObject& object);
  void appendBody(std::vector<NewTag>& out, const host::AcDbObject& object) const;
  void appendBlockReference(std::vector<NewTag>& out, const headless::BlockReference& reference) const;
  void appendEntityCommon(std::vector<NewTag>& out, const host::AcDbEntity& entity) const;
  host::AcDbObjectId spaceOf(const host::AcDbObject& object) const;
  std::vector<NewTag> dictionaryEntries(const host::AcDbObject& dictionary, const std::vector<NewTag>* old,
                                        bool hardOwner) const;

  Document& doc_;
  const headless::Database& db_;
  std::function<bool(host::AcDbObjectId)> removed_;
};

}  // namespace corvane::dxf
