#include "headless/db/polyline.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace corvane::headless {

using host::Acad;

void Polyline::setVertices(std::vector<Vertex> vertices) {
  if (vertices_ != vertices) record_.modified = true;
  vertices_ = std::move(vertices);
  forgetWorkedOut();
}

void Polyline::addVertex(Vertex vertex) {
  vertices_.push_back(vertex);
  forgetWorkedOut();
  record_.modified = true;
}

void Polyline::setClosed(bool closed) {
  if (closed_ != closed) {
    record_.modified = true;
    forgetWorkedOut();
  }
  closed_ = closed;
}

void Polyline::setElevation(double elevation) {
  if (elevation_ != elevation) record_.modified = true;
  elevation_ = elevation;
}

void Polyline::setConstantWidth(double width) {
  if (constantWidth_ != width) record_.modified = true;
  constantWidth_ = width;
}

void Polyline::setNormal(host::AcGeVector3d normal) {
  if (!(normal_ == normal)) record_.modified = true;
  normal_ = normal;
}

void Polyline::forgetWorkedOut() noexcept {
  area_ = std::numeric_limits<double>::quiet_NaN();
  keptArcs_.arcs.reset();
}

std::size_t Polyline::segmentCount() const noexcept {
  const std::size_t n = vertices_.size();
  if (n < 2) return 0;
  return closed_ ? n : n - 1;
}

Polyline::SegType Polyline::segType(unsigned int index) const {
  const std::size_t n = vertices_.size();
  if (index >= n) return kEmpty;
  if (index >= segmentCount()) return kPoint;
  const Vertex& from = vertices_[index];
  const Vertex& to = vertices_[index + 1 == n ? 0 : index + 1];
  if (from.point == to.point) return kCoincident;
  return from.bulge == 0.0 ? kLine : kArc;
}

Acad::ErrorStatus Polyline::getLineSegAt(unsigned int index, host::AcGeLineSeg2d& segment) const {
  if (index >= vertices_.size()) return Acad::eInvalidIndex;
  if (segType(index) != kLine) return Acad::eWrongObjectType;
  segment = host::AcGeLineSeg2d(vertices_[index].point, vertices_[index + 1 == vertices_.size() ? 0 : index + 1].point);
  return Acad::eOk;
}

void Polyline::keepArcs() const {
  // The same arithmetic as one arc alone, so a kept arc is the one a fresh one would be.
  const std::size_t n = vertices_.size();
  keptArcs_.arcs = std::make_unique<KeptArc[]>(n);
  for (std::size_t i = 0; i < n; ++i) {
    const auto bulged = segType(static_cast<unsigned int>(i)) == kArc
                            ? geometry::bulgeArc(vertices_[i].point, vertices_[i + 1 == n ? 0 : i + 1].point,
                                                 vertices_[i].bulge)
                            : std::nullopt;
    if (!bulged) {
      keptArcs_.arcs[i] = {{0.0, 0.0}, 0.0, 0.0, 0.0};
      continue;
    }
    const host::AcGeCircArc2d worked = geometry::toCircArc(*bulged);
    keptArcs_.arcs[i] = {worked.center(), worked.radius(), worked.startAng(), worked.endAng()};
  }
}

Acad::ErrorStatus Polyline::getArcSegAt(unsigned int index, host::AcGeCircArc2d& arc) const {
  if (index >= vertices_.size()) return Acad::eInvalidIndex;
  if (!keptArcs_.arcs) keepArcs();
  const KeptArc& kept = keptArcs_.arcs[index];
  // Only an arc segment keeps a radius: a bulge so small that its circle cannot be worked out
  // is no arc either.
  if (!(kept.radius > 0.0)) return Acad::eWrongObjectType;
  arc = host::AcGeCircArc2d(kept.center, kept.radius, kept.start, kept.end, vertices_[index].bulge < 0);
  return Acad::eOk;
}

Acad::ErrorStatus Polyline::getPointAt(unsigned int index, host::AcGePoint2d& point) const {
  if (index >= vertices_.size()) return Acad::eInvalidIndex;
  point = vertices_[index].point;
  return Acad::eOk;
}

Acad::ErrorStatus Polyline::getBulgeAt(unsigned int index, double& bulge) const {
  if (index >= vertices_.size()) return Acad::eInvalidIndex;
  bulge = vertices_[index].bulge;
  return Acad::eOk;
}

double Polyline::distanceAt(double param) const noexcept {
  const std::size_t n = vertices_.size();
  double dist = 0.0;
  std::size_t i = 0;
  for (; static_cast<double>(i + 1) <= param; ++i) {
    dist += geometry::segmentLength(vertices_[i].point, vertices_[(i + 1) % n].point, vertices_[i].bulge);
  }
  const double fraction = param - static_cast<double>(i);
  // Along a bulged segment the parameter grows with the angle, so with the length too.
  if (fraction > 0.0) {
    dist += fraction * geometry::segmentLength(vertices_[i].point, vertices_[(i + 1) % n].point, vertices_[i].bulge);
  }
  return dist;
}

Acad::ErrorStatus Polyline::getArea(double& area) const {
  if (std::isnan(area_)) area_ = geometry::polylineArea(vertices_, closed_);
  area = area_;
  return Acad::eOk;
}

void Polyline::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  geometry::addPolyline(extents, transform * geometry::Transform::fromOcs(normal_), vertices_, closed_, elevation_);
}

std::optional<host::AcValue> Polyline::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Area")) return host::AcValue(geometry::polylineArea(vertices_, closed_));
  if (core::equalsNoCase(name, L"Length")) return host::AcValue(length());
  if (core::equalsNoCase(name, L"Closed")) return host::AcValue(std::int32_t{closed_ ? 1 : 0});
  if (core::equalsNoCase(name, L"Elevation")) return host::AcValue(elevation_);
  if (core::equalsNoCase(name, L"ConstantWidth")) return host::AcValue(constantWidth_);
  if (core::equalsNoCase(name, L"NumberOfVertices")) return host::AcValue(static_cast<std::int32_t>(vertices_.size()));
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
