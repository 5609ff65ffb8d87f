// The id table that every open database of one host shares: an object id names one object of
// one database for as long as the object lives, and is never given again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/acdbobject.h"

namespace corvane::headless {

class Database;
class HeadlessObject;

class ObjectTable {
 public:
  // `headless` is part of `object`; both are held by `db`, which drops the id when the object goes.
  host::AcDbObjectId add(Database& db, host::AcDbObject& object, HeadlessObject& headless);
  void remove(host::AcDbObjectId id) noexcept;
  // Room for that many more objects, so that a drawing read whole does not grow the table by
  // doubling, with the old and the new table held at once.
  void reserve(std::size_t count) { slots_.reserve(slots_.size() + count); }

  bool isValid(host::AcDbObjectId id) const noexcept { return slot(id) != nullptr; }
  bool isErased(host::AcDbObjectId id) const noexcept;
  host::AcDbHandle handle(host::AcDbObjectId id) const noexcept;
  Database* database(host::AcDbObjectId id) const noexcept {
    const Slot* s = slot(id);
    return s ? s->db : nullptr;
  }
  // The object behind an id without opening it (headless code only); null for invalid ids.
  // Loading and saving ask this for every object, so it stays in the header.
  host::AcDbObject* lookup(host::AcDbObjectId id) const noexcept {
    const Slot* s = slot(id);
    return s ? s->object : nullptr;
  }
  HeadlessObject* lookupHeadless(host::AcDbObjectId id) const noexcept {
    const Slot* s = slot(id);
    return s ? s->headless : nullptr;
  }

 private:
  struct Slot {
    Database* db = nullptr;
    host::AcDbObject* object = nullptr;
    HeadlessObject* headless = nullptr;
  };
  const Slot* slot(host::AcDbObjectId id) const noexcept {
    if (id.asOldId() < kFirstId) return nullptr;
    const std::uint64_t index = id.asOldId() - kFirstId;
    if (index >= slots_.size() || !slots_[index].object) return nullptr;
    return &slots_[index];
  }

  // Ids start high so that an id is never mistaken for a handle or an index, and stay below
  // 2^31 because the host's own id texts are read back with 32-bit conversions.
  static constexpr std::uint64_t kFirstId = 0x10000000;
  std::vector<Slot> slots_;
};

}  // namespace corvane::headless
