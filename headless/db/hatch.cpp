#include "headless/db/hatch.h"

#include <array>
#include <cmath>
#include <limits>
#include <cstdint>
#include <span>
#include <vector>

namespace corvane::headless {

void Hatch::setPatternName(std::wstring name) {
  if (patternName_ != name) record_.modified = true;
  patternName_ = std::move(name);
}

void Hatch::setSolidFill(bool solid) {
  if (solidFill_ != solid) record_.modified = true;
  solidFill_ = solid;
}

void Hatch::setLoops(std::vector<HatchLoop> loops) {
  loops_ = std::move(loops);
  area_ = std::numeric_limits<double>::quiet_NaN();
  record_.modified = true;
}

void Hatch::appendLoop(HatchLoop loop) {
  loops_.push_back(std::move(loop));
  area_ = std::numeric_limits<double>::quiet_NaN();
  record_.modified = true;
}

void Hatch::setStyle(Style style) {
  if (style_ != style) {
    record_.modified = true;
    area_ = std::numeric_limits<double>::quiet_NaN();
  }
  style_ = style;
}

void Hatch::setElevation(double elevation) {
  if (elevation_ != elevation) record_.modified = true;
  elevation_ = elevation;
}

void Hatch::setNormal(host::AcGeVector3d normal) {
  if (!(normal_ == normal)) record_.modified = true;
  normal_ = normal;
}

host::Acad::ErrorStatus Hatch::getArea(double& area) const {
  if (!std::isnan(area_)) {
    area = area_;
    return host::Acad::eOk;
  }
  // Most hatches have one or two loops: their paths are looked at where they are.
  constexpr std::size_t kFew = 8;
  std::array<const geometry::Loop*, kFew> few{};
  std::vector<const geometry::Loop*> many;
  std::span<const geometry::Loop*> paths;
  if (loops_.size() <= kFew) {
    for (std::size_t i = 0; i < loops_.size(); ++i) few[i] = &loops_[i].path;
    paths = std::span<const geometry::Loop*>(few.data(), loops_.size());
  } else {
    for (const HatchLoop& loop : loops_) many.push_back(&loop.path);
    paths = many;
  }
  area = area_ = geometry::hatchArea(paths, style_);
  return host::Acad::eOk;
}

void Hatch::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  const geometry::Transform toWorld = transform * geometry::Transform::fromOcs(normal_);
  for (const HatchLoop& loop : loops_) geometry::addLoop(extents, toWorld, loop.path, elevation_);
}

std::optional<host::AcValue> Hatch::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Area")) {
    double area = 0.0;
    getArea(area);
    return host::AcValue(area);
  }
  if (core::equalsNoCase(name, L"PatternName")) return host::AcValue(patternName_);
  if (core::equalsNoCase(name, L"HatchStyle")) return host::AcValue(static_cast<std::int32_t>(style_));
  if (core::equalsNoCase(name, L"NumberOfLoops")) return host::AcValue(static_cast<std::int32_t>(loops_.size()));
  if (core::equalsNoCase(name, L"Elevation")) return host::AcValue(elevation_);
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
