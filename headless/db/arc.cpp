#include "headless/db/arc.h"

#include <algorithm>
#include <cmath>

namespace corvane::headless {

using host::Acad;

host::AcGePoint3d Arc::center() const { return geometry::Transform::fromOcs(normal_).apply(center_); }

void Arc::setCenter(host::AcGePoint3d ocsCenter) {
  if (!(center_ == ocsCenter)) record_.modified = true;
  center_ = ocsCenter;
}

void Arc::setRadius(double radius) {
  if (radius_ != radius) {
    record_.modified = true;
    area_ = std::numeric_limits<double>::quiet_NaN();
  }
  radius_ = radius;
}

void Arc::setStartAngle(double angle) {
  if (startAngle_ != angle) {
    record_.modified = true;
    area_ = std::numeric_limits<double>::quiet_NaN();
  }
  startAngle_ = angle;
}

void Arc::setEndAngle(double angle) {
  if (endAngle_ != angle) {
    record_.modified = true;
    area_ = std::numeric_limits<double>::quiet_NaN();
  }
  endAngle_ = angle;
}

void Arc::setNormal(host::AcGeVector3d normal) {
  if (!(normal_ == normal)) record_.modified = true;
  normal_ = normal;
}

double Arc::sweep() const noexcept { return geometry::ccwSweep(startAngle_, endAngle_); }

Acad::ErrorStatus Arc::getArea(double& area) const {
  if (std::isnan(area_)) area_ = geometry::circularSegmentArea(radius_, sweep());
  area = area_;
  return Acad::eOk;
}

void Arc::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  geometry::addEllipticArc(extents, transform * geometry::Transform::fromOcs(normal_), center_, {radius_, 0, 0},
                           {0, radius_, 0}, startAngle_, startAngle_ + sweep());
}

std::optional<host::AcValue> Arc::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Radius")) return host::AcValue(radius_);
  if (core::equalsNoCase(name, L"Center")) return host::AcValue(center().asArray());
  if (core::equalsNoCase(name, L"StartAngle")) return host::AcValue(startAngle_);
  if (core::equalsNoCase(name, L"EndAngle")) return host::AcValue(endAngle_);
  if (core::equalsNoCase(name, L"TotalAngle")) return host::AcValue(sweep());
  if (core::equalsNoCase(name, L"ArcLength") || core::equalsNoCase(name, L"Length")) return host::AcValue(length());
  if (core::equalsNoCase(name, L"Area")) {
    double area = 0.0;
    getArea(area);
    return host::AcValue(area);
  }
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
