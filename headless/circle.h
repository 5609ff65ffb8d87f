#pragma once

#include <array>

#include "headless/entity.h"
#include "host/acdbobject.h"

namespace corvane::headless {

class Circle : public EntityImpl<host::AcDbEntity> {
 public:
  using Point = std::array<double, 3>;
  Circle() = default;
  Circle(Point center, double radius) : center_(center), radius_(radius) {}
  std::wstring dxfName() const override { return L"CIRCLE"; }
  std::wstring className() const override { return L"AcDbCircle"; }

  const Point& center() const noexcept { return center_; }
  double radius() const noexcept { return radius_; }

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  Point center_{};
  double radius_ = 1.0;
};

}  // namespace corvane::headless
