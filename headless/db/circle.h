#pragma once

#include <array>

#include "headless/db/curve.h"
#include "host/acdbcircle.h"

namespace corvane::headless {

class Circle : public CurveEntity<host::AcDbCircle> {
 public:
  using Point = std::array<double, 3>;
  Circle() = default;
  Circle(Point center, double radius) : center_(center), radius_(radius) {}
  std::wstring dxfName() const override { return L"CIRCLE"; }
  std::wstring className() const override { return L"AcDbCircle"; }

  // The centre is kept in the circle's object coordinate system, given by its normal; that is
  // the world's for the default normal (0, 0, 1).
  host::AcGePoint3d center() const override;  // in world coordinates
  host::AcGePoint3d ocsCenter() const noexcept { return host::AcGePoint3d::fromArray(center_); }
  void setOcsCenter(host::AcGePoint3d center) {
    if (center.asArray() != center_) record_.modified = true;
    center_ = center.asArray();
  }
  double radius() const override { return radius_; }
  const host::AcGeVector3d& normal() const noexcept { return normal_; }
  void setNormal(host::AcGeVector3d normal);

  bool isClosed() const override { return true; }
  host::Acad::ErrorStatus getArea(double& area) const override;
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  // The parameter is the angle from the x axis.
  double startParam() const noexcept override { return 0.0; }
  double endParam() const noexcept override { return geometry::kTwoPi; }
  double distanceAt(double param) const noexcept override { return radius_ * param; }

  Point center_{};
  double radius_ = 1.0;
  host::AcGeVector3d normal_{0, 0, 1};
};

}  // namespace corvane::headless
