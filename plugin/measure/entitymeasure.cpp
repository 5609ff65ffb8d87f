#include "plugin/measure/entitymeasure.h"

#include "host/acdbarc.h"
#include "host/acdbcircle.h"
#include "host/acdbhatch.h"
#include "host/acdbline.h"
#include "host/acdbpolyline.h"
#include "plugin/measure/objectset.h"

namespace corvane {

namespace {

constexpr double kFullTurn = 6.28318530718;
constexpr double kWrapThreshold = -0.0001;

bool takes(int typeMask, int type) noexcept { return typeMask == 0 || (typeMask & type) != 0; }

double curveArea(const host::AcDbCurve& curve) {
  double area = 0.0;
  return curve.getArea(area) == host::Acad::eOk ? area : 0.0;
}

double polylineLength(const host::AcDbPolyline& polyline) {
  double length = 0.0;
  const unsigned int count = polyline.numVerts();
  for (unsigned int i = 0; i < count; ++i) {
    switch (polyline.segType(i)) {
      case host::AcDbPolyline::kLine: {
        host::AcGeLineSeg2d segment;
        if (polyline.getLineSegAt(i, segment) == host::Acad::eOk) length += segment.length();
        break;
      }
      case host::AcDbPolyline::kArc: {
        host::AcGeCircArc2d arc;
        if (polyline.getArcSegAt(i, arc) == host::Acad::eOk) length += arc.radius() * (arc.endAng() - arc.startAng());
        break;
      }
      default: break;
    }
  }
  return length;
}

// The entity as a T when it is a kind of T, by its class descriptor (the walks meet a million
// entities, and a descriptor test is a few pointer steps where a cast searches type names).
template <typename T>
const T* kindOf(const host::AcDbEntity& entity, const host::AcRxClass* own) noexcept {
  return own->isDerivedFrom(T::desc()) ? static_cast<const T*>(&entity) : nullptr;
}

}  // namespace

double entityArea(const host::AcDbEntity& entity, int typeMask) {
  const host::AcRxClass* own = entity.isA();
  if (takes(typeMask, kArcType)) {
    if (const auto* arc = kindOf<host::AcDbArc>(entity, own)) return curveArea(*arc);
  }
  if (takes(typeMask, kCircleType)) {
    if (const auto* circle = kindOf<host::AcDbCircle>(entity, own)) return curveArea(*circle);
  }
  if (takes(typeMask, kPolylineType)) {
    if (const auto* polyline = kindOf<host::AcDbPolyline>(entity, own)) return curveArea(*polyline);
  }
  if (takes(typeMask, kHatchType)) {
    if (const auto* hatch = kindOf<host::AcDbHatch>(entity, own)) {
      double area = 0.0;
      return hatch->getArea(area) == host::Acad::eOk ? area : 0.0;
    }
  }
  return 0.0;
}

double entityLength(const host::AcDbEntity& entity, int typeMask) {
  const host::AcRxClass* own = entity.isA();
  if (takes(typeMask, kArcType)) {
    if (const auto* arc = kindOf<host::AcDbArc>(entity, own)) {
      double sweep = arc->endAngle() - arc->startAngle();
      if (!(sweep > kWrapThreshold)) sweep += kFullTurn;
      return arc->radius() * sweep;
    }
  }
  if (takes(typeMask, kCircleType)) {
    if (const auto* circle = kindOf<host::AcDbCircle>(entity, own)) return circle->radius() * kFullTurn;
  }
  if (takes(typeMask, kPolylineType)) {
    if (const auto* polyline = kindOf<host::AcDbPolyline>(entity, own)) return polylineLength(*polyline);
  }
  if (takes(typeMask, kLineType)) {
    if (const auto* line = kindOf<host::AcDbLine>(entity, own)) return line->startPoint().distanceTo(line->endPoint());
  }
  return 0.0;
}

}  // namespace corvane
