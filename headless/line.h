#pragma once

#include <array>

#include "headless/entity.h"
#include "host/acdbobject.h"

namespace corvane::headless {

class Line : public EntityImpl<host::AcDbEntity> {
 public:
  using Point = std::array<double, 3>;
  Line() = default;
  Line(Point start, Point end) : start_(start), end_(end) {}
  std::wstring dxfName() const override { return L"LINE"; }
  std::wstring className() const override { return L"AcDbLine"; }

  const Point& start() const noexcept { return start_; }
  const Point& end() const noexcept { return end_; }
  double length() const noexcept;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  Point start_{};
  Point end_{};
};

}  // namespace corvane::headless
