// What a deep clone made of what: each pair names a source object (the key) and the object it
// became (the value). A copy inside one drawing has the same source and destination database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "host/errorstatus.h"
#include "host/objectid.h"

namespace corvane::host {

class AcDbDatabase;

class AcDbIdPair {
 public:
  AcDbIdPair() = default;
  // `isPrimary`: the object was one of those asked for, not one cloned because an object
  // owned it.
  AcDbIdPair(AcDbObjectId key, AcDbObjectId value, bool isCloned, bool isPrimary = false, bool isOwnerXlated = true)
      : key_(key), value_(value), cloned_(isCloned), primary_(isPrimary), ownerXlated_(isOwnerXlated) {}

  AcDbObjectId key() const noexcept { return key_; }
  AcDbObjectId value() const noexcept { return value_; }
  bool isCloned() const noexcept { return cloned_; }
  bool isPrimary() const noexcept { return primary_; }
  bool isOwnerXlated() const noexcept { return ownerXlated_; }
  void setKey(AcDbObjectId key) noexcept { key_ = key; }
  void setValue(AcDbObjectId value) noexcept { value_ = value; }

 private:
  AcDbObjectId key_;
  AcDbObjectId value_;
  bool cloned_ = false;
  bool primary_ = false;
  bool ownerXlated_ = true;
};

class AcDbIdMapping {
 public:
  AcDbIdMapping() = default;
  AcDbIdMapping(AcDbDatabase* origDb, AcDbDatabase* destDb) : origDb_(origDb), destDb_(destDb) {}

  // Adds the pair, or replaces the one with the same key (which keeps its place).
  Acad::ErrorStatus assign(const AcDbIdPair& pair);
  // Fills in the pair of the key the given pair holds; false when the key has none.
  bool compute(AcDbIdPair& pair) const;

  // eNoDatabase while the mapping does not know the database.
  Acad::ErrorStatus origDb(AcDbDatabase*& db) const;
  Acad::ErrorStatus destDb(AcDbDatabase*& db) const;
  void setOrigDb(AcDbDatabase* db) noexcept { origDb_ = db; }
  void setDestDb(AcDbDatabase* db) noexcept { destDb_ = db; }

  std::size_t size() const noexcept { return pairs_.size(); }
  const AcDbIdPair& pairAt(std::size_t index) const { return pairs_.at(index); }

 private:
  std::vector<AcDbIdPair> pairs_;  // in the order they were assigned
  std::unordered_map<std::uint64_t, std::size_t> byKey_;
  AcDbDatabase* origDb_ = nullptr;
  AcDbDatabase* destDb_ = nullptr;
};

// Walks a mapping's pairs in the order they were assigned.
class AcDbIdMappingIter {
 public:
  explicit AcDbIdMappingIter(const AcDbIdMapping& mapping) : mapping_(mapping) {}

  void start() noexcept { index_ = 0; }
  bool done() const noexcept { return index_ >= mapping_.size(); }
  void next() noexcept { ++index_; }
  // False once the walk is done.
  bool getMap(AcDbIdPair& pair) const;

 private:
  const AcDbIdMapping& mapping_;
  std::size_t index_ = 0;
};

}  // namespace corvane::host
