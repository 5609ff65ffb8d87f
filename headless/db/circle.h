#pragma once

#include <array>

#include "headless/db/entity.h"
#include "headless/db/shape.h"
#include "host/acdbcircle.h"

namespace corvane::headless {

class Circle : public EntityImpl<host::AcDbCircle>, public Shape {
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
  double radius() const override { return radius_; }
  const host::AcGeVector3d& normal() const noexcept { return normal_; }
  void setNormal(host::AcGeVector3d normal);

  bool isClosed() const override { return true; }
  // The parameter is the angle from the x axis.
  host::Acad::ErrorStatus getStartParam(double& param) const override;
  host::Acad::ErrorStatus getEndParam(double& param) const override;
  host::Acad::ErrorStatus getDistAtParam(double param, double& dist) const override;
  host::Acad::ErrorStatus getArea(double& area) const override;
  host::Acad::ErrorStatus getGeomExtents(host::AcDbExtents& extents) const override { return extentsOf(*this, extents); }
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  Point center_{};
  double radius_ = 1.0;
  host::AcGeVector3d normal_{0, 0, 1};
};

}  // namespace corvane::headless
