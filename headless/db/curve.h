// The part the curves share: their parameters run from startParam() to endParam(), and the
// distance along the curve grows with them.
#pragma once

#include <algorithm>

#include "headless/db/shape.h"

namespace corvane::headless {

template <typename Interface>
class CurveEntity : public ShapeEntity<Interface> {
 public:
  host::Acad::ErrorStatus getStartParam(double& param) const override {
    param = startParam();
    return host::Acad::eOk;
  }
  host::Acad::ErrorStatus getEndParam(double& param) const override {
    param = endParam();
    return host::Acad::eOk;
  }
  // A parameter a rounding error past an end counts as that end.
  host::Acad::ErrorStatus getDistAtParam(double param, double& dist) const override {
    const double start = startParam();
    const double end = endParam();
    if (param < start - kParamTolerance || param > end + kParamTolerance) return host::Acad::eInvalidInput;
    dist = distanceAt(std::clamp(param, start, end));
    return host::Acad::eOk;
  }

 protected:
  static constexpr double kParamTolerance = 1e-9;
  virtual double startParam() const noexcept = 0;
  virtual double endParam() const noexcept = 0;
  // The distance from the start, for a parameter between the two ends.
  virtual double distanceAt(double param) const noexcept = 0;
};

}  // namespace corvane::headless
