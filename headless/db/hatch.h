#pragma once

#include <limits>
#include <string>
#include <vector>

#include "headless/db/geometry.h"
#include "headless/db/shape.h"
#include "host/acdbhatch.h"

namespace corvane::headless {

// One boundary path of a hatch with the path flags of drawing files.
struct HatchLoop {
  enum Flags : int { kExternal = 1, kPolyline = 2, kDerived = 4, kTextbox = 8, kOutermost = 16 };
  int flags = 0;
  geometry::Loop path;

  static HatchLoop polyline(std::vector<geometry::Vertex> vertices, int flags = kExternal, bool closed = true) {
    return {flags | kPolyline, geometry::Loop{true, closed, std::move(vertices), {}}};
  }
  static HatchLoop edges(std::vector<geometry::Edge> edges, int flags = kExternal) {
    return {flags & ~kPolyline, geometry::Loop{false, true, {}, std::move(edges)}};
  }
};

// A hatch (HATCH): boundary loops in its object coordinate system at one elevation, a
// pattern and the style that decides which nested loops are filled.
class Hatch : public ShapeEntity<host::AcDbHatch> {
 public:
  using Style = geometry::HatchStyle;
  Hatch() = default;
  Hatch(std::wstring patternName, bool solidFill, std::vector<HatchLoop> loops, Style style = Style::kNormal)
      : patternName_(std::move(patternName)), solidFill_(solidFill), loops_(std::move(loops)), style_(style) {}
  std::wstring dxfName() const override { return L"HATCH"; }
  std::wstring className() const override { return L"AcDbHatch"; }

  std::wstring patternName() const override { return patternName_; }
  void setPatternName(std::wstring name);
  bool isSolidFill() const override { return solidFill_; }
  void setSolidFill(bool solid);
  const std::vector<HatchLoop>& loops() const noexcept { return loops_; }
  void prefetchContents(int stage) const noexcept override {
    if (loops_.empty()) return;
    if (stage == 1) __builtin_prefetch(loops_.data());
    for (std::size_t i = 0; stage == 2 && i < loops_.size() && i < 2; ++i) {
      if (!loops_[i].path.vertices.empty()) __builtin_prefetch(loops_[i].path.vertices.data());
    }
  }
  void setLoops(std::vector<HatchLoop> loops);
  void appendLoop(HatchLoop loop);
  Style style() const noexcept { return style_; }
  void setStyle(Style style);
  double elevation() const noexcept { return elevation_; }
  void setElevation(double elevation);
  const host::AcGeVector3d& normal() const noexcept { return normal_; }
  void setNormal(host::AcGeVector3d normal);

  host::Acad::ErrorStatus getArea(double& area) const override;
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::wstring patternName_ = L"SOLID";
  bool solidFill_ = true;
  std::vector<HatchLoop> loops_;
  Style style_ = Style::kNormal;
  // The filled area once worked out; NaN until then and after the loops or style change.
  mutable double area_ = std::numeric_limits<double>::quiet_NaN();
  double elevation_ = 0.0;
  host::AcGeVector3d normal_{0, 0, 1};
};

}  // namespace corvane::headless
