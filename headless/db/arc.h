#pragma once

#include <limits>

#include "headless/db/curve.h"
#include "host/acdbarc.h"

namespace corvane::headless {

// A circular arc (ARC). Centre and angles are in the arc's object coordinate system, given by
// its normal; that is the world's for the default normal (0, 0, 1). Angles in radians.
class Arc : public CurveEntity<host::AcDbArc> {
 public:
  Arc() = default;
  Arc(host::AcGePoint3d center, double radius, double startAngle, double endAngle)
      : center_(center), radius_(radius), startAngle_(startAngle), endAngle_(endAngle) {}
  std::wstring dxfName() const override { return L"ARC"; }
  std::wstring className() const override { return L"AcDbArc"; }

  host::AcGePoint3d center() const override;  // in world coordinates
  const host::AcGePoint3d& ocsCenter() const noexcept { return center_; }
  double radius() const override { return radius_; }
  double startAngle() const override { return startAngle_; }
  double endAngle() const override { return endAngle_; }
  const host::AcGeVector3d& normal() const noexcept { return normal_; }
  void setCenter(host::AcGePoint3d ocsCenter);
  void setRadius(double radius);
  void setStartAngle(double angle);
  void setEndAngle(double angle);
  void setNormal(host::AcGeVector3d normal);

  // The included angle, in (0, 2pi]: ends that meet make a full turn.
  double sweep() const noexcept;
  double length() const noexcept { return radius_ * sweep(); }

  bool isClosed() const override { return false; }
  // The segment between the arc and its chord.
  host::Acad::ErrorStatus getArea(double& area) const override;
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  // The parameter is the angle, as the end angles are.
  double startParam() const noexcept override { return startAngle_; }
  double endParam() const noexcept override { return startAngle_ + sweep(); }
  double distanceAt(double param) const noexcept override { return radius_ * (param - startAngle_); }

  host::AcGePoint3d center_;
  double radius_ = 1.0;
  double startAngle_ = 0.0;
  double endAngle_ = geometry::kPi;
  // The area once worked out; NaN until then and after the radius or an angle changes.
  mutable double area_ = std::numeric_limits<double>::quiet_NaN();
  host::AcGeVector3d normal_{0, 0, 1};
};

}  // namespace corvane::headless
