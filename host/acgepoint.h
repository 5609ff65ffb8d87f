// Points, vectors and scale factors of drawing geometry, as plain values.
#pragma once

#include <array>
#include <cmath>

namespace corvane::host {

struct AcGePoint2d {
  double x = 0.0;
  double y = 0.0;
  double distanceTo(const AcGePoint2d& other) const noexcept {
    const double dx = other.x - x, dy = other.y - y;
    return std::sqrt(dx * dx + dy * dy);
  }
  bool operator==(const AcGePoint2d&) const = default;
};

struct AcGeVector2d {
  double x = 0.0;
  double y = 0.0;
  double length() const noexcept { return std::hypot(x, y); }
  bool operator==(const AcGeVector2d&) const = default;
};

struct AcGePoint3d {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  // The form values and object properties carry points in.
  std::array<double, 3> asArray() const noexcept { return {x, y, z}; }
  operator std::array<double, 3>() const noexcept { return asArray(); }
  static AcGePoint3d fromArray(const std::array<double, 3>& p) noexcept { return {p[0], p[1], p[2]}; }
  double distanceTo(const AcGePoint3d& other) const noexcept {
    const double dx = other.x - x, dy = other.y - y, dz = other.z - z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
  }
  bool operator==(const AcGePoint3d&) const = default;
};

struct AcGeVector3d {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double length() const noexcept { return std::hypot(x, y, z); }
  bool operator==(const AcGeVector3d&) const = default;
};

struct AcGeScale3d {
  double sx = 1.0;
  double sy = 1.0;
  double sz = 1.0;
  bool operator==(const AcGeScale3d&) const = default;
};

// The distance between two points, as the host's utility call measures it.
inline double acutDistance(const AcGePoint3d& a, const AcGePoint3d& b) noexcept { return a.distanceTo(b); }

}  // namespace corvane::host
