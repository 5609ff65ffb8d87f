// The 2D segments a polyline hands out: straight segments and circular arcs.
#pragma once

#include <cmath>

#include "host/acgepoint.h"

namespace corvane::host {

class AcGeLineSeg2d {
 public:
  AcGeLineSeg2d() = default;
  AcGeLineSeg2d(AcGePoint2d start, AcGePoint2d end) : start_(start), end_(end) {}
  AcGePoint2d startPoint() const noexcept { return start_; }
  AcGePoint2d endPoint() const noexcept { return end_; }
  double length() const noexcept { return start_.distanceTo(end_); }

 private:
  AcGePoint2d start_;
  AcGePoint2d end_;
};

// A circular arc. Its angles are counter-clockwise from the x axis, with startAng in [0, 2pi)
// and endAng = startAng + the included angle, so endAng - startAng is never negative. A
// clockwise arc is the same point set run the other way: it starts at endAng and ends at
// startAng.
class AcGeCircArc2d {
 public:
  AcGeCircArc2d() = default;
  AcGeCircArc2d(AcGePoint2d center, double radius, double startAng, double endAng, bool clockWise)
      : center_(center), radius_(radius), startAng_(startAng), endAng_(endAng), clockWise_(clockWise) {}

  AcGePoint2d center() const noexcept { return center_; }
  double radius() const noexcept { return radius_; }
  double startAng() const noexcept { return startAng_; }
  double endAng() const noexcept { return endAng_; }
  bool isClockWise() const noexcept { return clockWise_; }
  AcGePoint2d startPoint() const noexcept { return pointAt(clockWise_ ? endAng_ : startAng_); }
  AcGePoint2d endPoint() const noexcept { return pointAt(clockWise_ ? startAng_ : endAng_); }
  double length() const noexcept { return radius_ * (endAng_ - startAng_); }

 private:
  AcGePoint2d pointAt(double angle) const noexcept {
    return {center_.x + radius_ * std::cos(angle), center_.y + radius_ * std::sin(angle)};
  }

  AcGePoint2d center_;
  double radius_ = 0.0;
  double startAng_ = 0.0;
  double endAng_ = 0.0;
  bool clockWise_ = false;
};

}  // namespace corvane::host
