// An axis-aligned box around drawing geometry, empty until a point is added.
#pragma once

#include <algorithm>

#include "host/acgepoint.h"

namespace corvane::host {

class AcDbExtents {
 public:
  AcDbExtents() = default;
  AcDbExtents(const AcGePoint3d& a, const AcGePoint3d& b) { set(a, b); }

  bool isEmpty() const noexcept { return empty_; }
  AcGePoint3d minPoint() const noexcept { return min_; }
  AcGePoint3d maxPoint() const noexcept { return max_; }

  // The box with these two corners, whichever way round they are given.
  void set(const AcGePoint3d& a, const AcGePoint3d& b) noexcept {
    min_ = {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
    max_ = {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
    empty_ = false;
  }
  void addPoint(const AcGePoint3d& p) noexcept {
    if (empty_) {
      min_ = max_ = p;
      empty_ = false;
      return;
    }
    min_ = {std::min(min_.x, p.x), std::min(min_.y, p.y), std::min(min_.z, p.z)};
    max_ = {std::max(max_.x, p.x), std::max(max_.y, p.y), std::max(max_.z, p.z)};
  }
  void addExt(const AcDbExtents& other) noexcept {
    if (other.empty_) return;
    addPoint(other.min_);
    addPoint(other.max_);
  }

 private:
  AcGePoint3d min_;
  AcGePoint3d max_;
  bool empty_ = true;
};

}  // namespace corvane::host
