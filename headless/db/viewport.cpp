#include "headless/db/viewport.h"

#include <cstdint>

namespace corvane::headless {

void Viewport::setCenterPoint(host::AcGePoint3d center) {
  if (!(center_ == center)) record_.modified = true;
  center_ = center;
}

void Viewport::setWidth(double width) {
  if (width_ != width) record_.modified = true;
  width_ = width;
}

void Viewport::setHeight(double height) {
  if (height_ != height) record_.modified = true;
  height_ = height;
}

void Viewport::setNumber(int number) {
  if (number_ != number) record_.modified = true;
  number_ = number;
}

void Viewport::setViewDirection(host::AcGeVector3d direction) {
  if (!(viewDirection_ == direction)) record_.modified = true;
  viewDirection_ = direction;
}

void Viewport::setViewCenter(host::AcGePoint2d center) {
  if (!(viewCenter_ == center)) record_.modified = true;
  viewCenter_ = center;
}

void Viewport::setViewHeight(double height) {
  if (viewHeight_ != height) record_.modified = true;
  viewHeight_ = height;
}

void Viewport::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  geometry::addRectangle(extents, transform, center_, 0.0, -width_ / 2, -height_ / 2, width_ / 2, height_ / 2);
}

std::optional<host::AcValue> Viewport::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Center")) return host::AcValue(center_.asArray());
  if (core::equalsNoCase(name, L"Width")) return host::AcValue(width_);
  if (core::equalsNoCase(name, L"Height")) return host::AcValue(height_);
  if (core::equalsNoCase(name, L"CustomScale")) return host::AcValue(customScale());
  if (core::equalsNoCase(name, L"Number")) return host::AcValue(static_cast<std::int32_t>(number_));
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
