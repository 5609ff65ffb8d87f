// Forward walks over the ids an object holds: a block's entities, a table's records, a block
// reference's attributes. Each walk works on the ids as they were when it began, leaving out
// those already erased.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "host/errorstatus.h"
#include "host/objectid.h"

namespace corvane::host {

class AcDbObjectIterator {
 public:
  AcDbObjectIterator() = default;
  explicit AcDbObjectIterator(std::vector<AcDbObjectId> ids) : size_(ids.size()) {
    if (size_ <= kInside) {
      std::copy(ids.begin(), ids.end(), inside_.begin());
    } else {
      outside_ = std::move(ids);
    }
  }
  // Adds an id at the end, for a walk built id by id. A few ids (a block reference's
  // attributes) are kept in the iterator itself, without an allocation.
  void append(AcDbObjectId id) {
    if (size_ < kInside) {
      inside_[size_++] = id;
      return;
    }
    if (size_ == kInside) outside_.assign(inside_.begin(), inside_.end());
    outside_.push_back(id);
    ++size_;
  }

  bool done() const noexcept { return next_ >= size_; }
  void step() noexcept {
    if (!done()) ++next_;
  }
  // The current id; null once the walk is done.
  AcDbObjectId objectId() const noexcept { return done() ? AcDbObjectId() : at(next_); }
  void start() noexcept { next_ = 0; }
  // The id `ahead` places after the current one; null past the end.
  AcDbObjectId peek(std::size_t ahead) const noexcept {
    return next_ + ahead < size_ ? at(next_ + ahead) : AcDbObjectId();
  }

 private:
  static constexpr std::size_t kInside = 4;
  AcDbObjectId at(std::size_t i) const noexcept { return size_ <= kInside ? inside_[i] : outside_[i]; }

  std::array<AcDbObjectId, kInside> inside_{};  // all the ids while there are at most kInside
  std::vector<AcDbObjectId> outside_;           // all the ids once there are more
  std::size_t size_ = 0;
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
