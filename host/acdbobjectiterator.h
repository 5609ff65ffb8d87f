// Forward walks over the ids an object holds: a block's entities, a table's records, a block
// reference's attributes. Each walk works on the ids as they were when it began, leaving out
// those already erased.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "host/errorstatus.h"
#include "host/objectid.h"

namespace corvane::host {

class AcDbObjectIterator {
 public:
  AcDbObjectIterator() = default;
  explicit AcDbObjectIterator(std::vector<AcDbObjectId> ids) : ids_(std::move(ids)) {}

  bool done() const noexcept { return next_ >= ids_.size(); }
  void step() noexcept {
    if (!done()) ++next_;
  }
  // The current id; null once the walk is done.
  AcDbObjectId objectId() const noexcept { return done() ? AcDbObjectId() : ids_[next_]; }
  void start() noexcept { next_ = 0; }
  // The id `ahead` places after the current one; null past the end.
  AcDbObjectId peek(std::size_t ahead) const noexcept {
    return next_ + ahead < ids_.size() ? ids_[next_ + ahead] : AcDbObjectId();
  }

 private:
  std::vector<AcDbObjectId> ids_;
  std::size_t next_ = 0;
};

// The records of a symbol table.
class AcDbSymbolTableIterator : public AcDbObjectIterator {
 public:
  using AcDbObjectIterator::AcDbObjectIterator;
  Acad::ErrorStatus getRecordId(AcDbObjectId& id) const noexcept {
    if (done()) return Acad::eInvalidIndex;
    id = objectId();
    return Acad::eOk;
  }
};

// The entities of a block table record, in drawing order.
class AcDbBlockTableRecordIterator : public AcDbObjectIterator {
 public:
  using AcDbObjectIterator::AcDbObjectIterator;
  Acad::ErrorStatus getEntityId(AcDbObjectId& id) const noexcept {
    if (done()) return Acad::eInvalidIndex;
    id = objectId();
    return Acad::eOk;
  }
};

}  // namespace corvane::host
