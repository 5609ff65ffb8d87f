// The geometry side of a headless entity: its box seen through an affine map. A block
// reference asks it of the entities of its block, mapped into the reference's place.
#pragma once

#include "headless/db/entity.h"
#include "headless/db/geometry.h"
#include "host/acdbextents.h"
#include "host/errorstatus.h"

namespace corvane::headless {

class Shape {
 public:
  virtual ~Shape() = default;
  virtual void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const = 0;
};

// The box of a shape in world coordinates, as getGeomExtents reports it.
inline host::Acad::ErrorStatus extentsOf(const Shape& shape, host::AcDbExtents& extents) {
  host::AcDbExtents box;
  shape.addExtents(box, geometry::Transform::identity());
  if (box.isEmpty()) return host::Acad::eInvalidExtents;
  extents = box;
  return host::Acad::eOk;
}

// An entity with a shape: its extents are its shape's box.
template <typename Interface>
class ShapeEntity : public EntityImpl<Interface>, public Shape {
 public:
  host::Acad::ErrorStatus getGeomExtents(host::AcDbExtents& extents) const override { return extentsOf(*this, extents); }
};

}  // namespace corvane::headless
