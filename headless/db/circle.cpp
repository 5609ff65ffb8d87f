#include "headless/db/circle.h"

#include <cmath>

namespace corvane::headless {

using host::Acad;

host::AcGePoint3d Circle::center() const {
  return geometry::Transform::fromOcs(normal_).apply(host::AcGePoint3d::fromArray(center_));
}

void Circle::setNormal(host::AcGeVector3d normal) {
  if (!(normal_ == normal)) record_.modified = true;
  normal_ = normal;
}

Acad::ErrorStatus Circle::getArea(double& area) const {
  area = M_PI * radius_ * radius_;
  return Acad::eOk;
}

void Circle::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  geometry::addEllipticArc(extents, transform * geometry::Transform::fromOcs(normal_),
                           host::AcGePoint3d::fromArray(center_), {radius_, 0, 0}, {0, radius_, 0}, 0.0,
                           geometry::kTwoPi);
}

std::optional<host::AcValue> Circle::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Radius")) return host::AcValue(radius_);
  if (core::equalsNoCase(name, L"Diameter")) return host::AcValue(2 * radius_);
  if (core::equalsNoCase(name, L"Circumference")) return host::AcValue(2 * M_PI * radius_);
  if (core::equalsNoCase(name, L"Area")) return host::AcValue(M_PI * radius_ * radius_);
  if (core::equalsNoCase(name, L"Center")) return host::AcValue(center().asArray());
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
