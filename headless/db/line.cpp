#include "headless/db/line.h"

#include <cmath>

namespace corvane::headless {

using host::Acad;

double Line::length() const noexcept {
  return std::hypot(end_[0] - start_[0], end_[1] - start_[1], end_[2] - start_[2]);
}

Acad::ErrorStatus Line::getArea(double& area) const {
  area = 0.0;
  return Acad::eOk;
}

void Line::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  geometry::addPoint(extents, transform, startPoint());
  geometry::addPoint(extents, transform, endPoint());
}

std::optional<host::AcValue> Line::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Length")) return host::AcValue(length());
  if (core::equalsNoCase(name, L"StartPoint")) return host::AcValue(start_);
  if (core::equalsNoCase(name, L"EndPoint")) return host::AcValue(end_);
  if (core::equalsNoCase(name, L"Angle")) {
    const double angle = std::atan2(end_[1] - start_[1], end_[0] - start_[0]);
    return host::AcValue(angle < 0 ? angle + 2 * M_PI : angle);
  }
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
