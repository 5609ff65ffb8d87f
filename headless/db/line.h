#pragma once

#include <array>

#include "headless/db/entity.h"
#include "headless/db/shape.h"
#include "host/acdbline.h"

namespace corvane::headless {

class Line : public EntityImpl<host::AcDbLine>, public Shape {
 public:
  using Point = std::array<double, 3>;
  Line() = default;
  Line(Point start, Point end) : start_(start), end_(end) {}
  std::wstring dxfName() const override { return L"LINE"; }
  std::wstring className() const override { return L"AcDbLine"; }

  const Point& start() const noexcept { return start_; }
  const Point& end() const noexcept { return end_; }
  double length() const noexcept;

  host::AcGePoint3d startPoint() const override { return host::AcGePoint3d::fromArray(start_); }
  host::AcGePoint3d endPoint() const override { return host::AcGePoint3d::fromArray(end_); }
  bool isClosed() const override { return false; }
  // The parameter is the distance from the start.
  host::Acad::ErrorStatus getStartParam(double& param) const override;
  host::Acad::ErrorStatus getEndParam(double& param) const override;
  host::Acad::ErrorStatus getDistAtParam(double param, double& dist) const override;
  // Closed by itself, a line encloses nothing.
  host::Acad::ErrorStatus getArea(double& area) const override;
  host::Acad::ErrorStatus getGeomExtents(host::AcDbExtents& extents) const override { return extentsOf(*this, extents); }
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  Point start_{};
  Point end_{};
};

}  // namespace corvane::headless
