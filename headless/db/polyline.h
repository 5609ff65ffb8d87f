#pragma once

#include <limits>
#include <memory>
#include <vector>

#include "headless/db/geometry.h"
#include "headless/db/curve.h"
#include "host/acdbpolyline.h"

namespace corvane::headless {

// A lightweight polyline (LWPOLYLINE): 2D vertices in its object coordinate system at one
// elevation, each with the bulge and widths of the segment it starts.
class Polyline final : public CurveEntity<host::AcDbPolyline> {
 public:
  using Vertex = geometry::Vertex;
  Polyline() = default;
  Polyline(std::vector<Vertex> vertices, bool closed, double elevation = 0.0)
      : vertices_(std::move(vertices)), closed_(closed), elevation_(elevation) {}
  Polyline& operator=(const Polyline&) = delete;
  std::wstring dxfName() const override { return L"LWPOLYLINE"; }
  std::wstring className() const override { return L"AcDbPolyline"; }

  const std::vector<Vertex>& vertices() const noexcept { return vertices_; }
  void prefetchContents(int stage) const noexcept override {
    if (stage == 1 && !vertices_.empty()) __builtin_prefetch(vertices_.data());
  }
  void setVertices(std::vector<Vertex> vertices);
  void addVertex(Vertex vertex);
  void setClosed(bool closed);
  double elevation() const override { return elevation_; }
  void setElevation(double elevation);
  double constantWidth() const noexcept { return constantWidth_; }
  void setConstantWidth(double width);
  const host::AcGeVector3d& normal() const noexcept { return normal_; }
  void setNormal(host::AcGeVector3d normal);
  double length() const noexcept { return geometry::polylineLength(vertices_, closed_); }

  unsigned int numVerts() const override { return static_cast<unsigned int>(vertices_.size()); }
  SegType segType(unsigned int index) const override;
  host::Acad::ErrorStatus getLineSegAt(unsigned int index, host::AcGeLineSeg2d& segment) const override;
  host::Acad::ErrorStatus getArcSegAt(unsigned int index, host::AcGeCircArc2d& arc) const override;
  host::Acad::ErrorStatus getPointAt(unsigned int index, host::AcGePoint2d& point) const override;
  host::Acad::ErrorStatus getBulgeAt(unsigned int index, double& bulge) const override;

  bool isClosed() const override { return closed_; }
  // The area of the closed outline; an open polyline closes with a straight segment.
  host::Acad::ErrorStatus getArea(double& area) const override;
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  // Parameters run from 0 at the first vertex through 1 at the second and so on.
  double startParam() const noexcept override { return 0.0; }
  double endParam() const noexcept override { return static_cast<double>(segmentCount()); }
  double distanceAt(double param) const noexcept override;

  std::size_t segmentCount() const noexcept;
  void forgetWorkedOut() noexcept;


  std::vector<Vertex> vertices_;
  // The area once worked out; NaN until then and after the vertices or closing change.
  mutable double area_ = std::numeric_limits<double>::quiet_NaN();
  // Every arc segment as the host hands it out, worked out at the first arc asked for: the
  // arc tangents and the circle are most of what a length costs, and fields measure the same
  // polylines again and again. A segment that is no arc keeps a radius of 0. Null until then
  // and after the vertices or closing change.
  struct KeptArc {
    host::AcGePoint2d center;
    double radius;
    double start;
    double end;
  };
  // A copy of the polyline works its arcs out anew.
  struct KeptArcs {
    std::unique_ptr<KeptArc[]> arcs;
    KeptArcs() = default;
    KeptArcs(const KeptArcs&) noexcept {}
    KeptArcs(KeptArcs&&) noexcept = default;
    KeptArcs& operator=(const KeptArcs&) noexcept {
      arcs.reset();
      return *this;
    }
    KeptArcs& operator=(KeptArcs&&) noexcept = default;
    ~KeptArcs() = default;
  };
  void keepArcs() const;
  mutable KeptArcs keptArcs_;
  bool closed_ = false;
  double elevation_ = 0.0;
  double constantWidth_ = 0.0;
  host::AcGeVector3d normal_{0, 0, 1};
};

}  // namespace corvane::headless
