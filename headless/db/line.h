#pragma once

#include <array>

#include "headless/db/curve.h"
#include "host/acdbline.h"

namespace corvane::headless {

class Line : public CurveEntity<host::AcDbLine> {
 public:
  using Point = std::array<double, 3>;
  Line() = default;
  Line(Point start, Point end) : start_(start), end_(end) {}
  std::wstring dxfName() const override { return L"LINE"; }
  std::wstring className() const override { return L"AcDbLine"; }

  const Point& start() const noexcept { return start_; }
  const Point& end() const noexcept { return end_; }
  void setEnds(Point start, Point end) {
    if (start != start_ || end != end_) record_.modified = true;
    start_ = start;
    end_ = end;
  }
  double length() const noexcept;

  host::AcGePoint3d startPoint() const override { return host::AcGePoint3d::fromArray(start_); }
  host::AcGePoint3d endPoint() const override { return host::AcGePoint3d::fromArray(end_); }
  bool isClosed() const override { return false; }
  // Closed by itself, a line encloses nothing.
  host::Acad::ErrorStatus getArea(double& area) const override;
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  // The parameter is the distance from the start.
  double startParam() const noexcept override { return 0.0; }
  double endParam() const noexcept override { return length(); }
  double distanceAt(double param) const noexcept override { return param; }

  Point start_{};
  Point end_{};
};

}  // namespace corvane::headless
