#pragma once

#include "headless/db/shape.h"
#include "host/acdbviewport.h"

namespace corvane::headless {

// A viewport (VIEWPORT) of a paper-space layout.
class Viewport : public ShapeEntity<host::AcDbViewport> {
 public:
  Viewport() = default;
  Viewport(host::AcGePoint3d center, double width, double height, int number = 2)
      : center_(center), width_(width), height_(height), number_(number) {}
  std::wstring dxfName() const override { return L"VIEWPORT"; }
  std::wstring className() const override { return L"AcDbViewport"; }

  host::AcGePoint3d centerPoint() const override { return center_; }
  void setCenterPoint(host::AcGePoint3d center);
  double width() const override { return width_; }
  void setWidth(double width);
  double height() const override { return height_; }
  void setHeight(double height);
  int number() const override { return number_; }
  void setNumber(int number);
  host::AcGeVector3d viewDirection() const override { return viewDirection_; }
  void setViewDirection(host::AcGeVector3d direction);
  host::AcGePoint2d viewCenter() const override { return viewCenter_; }
  void setViewCenter(host::AcGePoint2d center);
  double viewHeight() const override { return viewHeight_; }
  void setViewHeight(double height);
  // Sheet units per model unit.
  double customScale() const noexcept { return viewHeight_ == 0.0 ? 0.0 : height_ / viewHeight_; }

  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  host::AcGePoint3d center_;
  double width_ = 0.0;
  double height_ = 0.0;
  int number_ = 2;
  host::AcGeVector3d viewDirection_{0, 0, 1};
  host::AcGePoint2d viewCenter_;
  double viewHeight_ = 1.0;
};

}  // namespace corvane::headless
