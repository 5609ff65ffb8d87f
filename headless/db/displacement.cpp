#include "headless/db/displacement.h"

#include <variant>
#include <vector>

#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blockreference.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/geometry.h"
#include "headless/db/hatch.h"
#include "headless/db/line.h"
#include "headless/db/mleader.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/viewport.h"

namespace corvane::headless {

using host::AcGePoint2d;
using host::AcGePoint3d;
using host::AcGeVector3d;

namespace {

AcGePoint3d moved(const AcGePoint3d& p, const AcGeVector3d& d) { return {p.x + d.x, p.y + d.y, p.z + d.z}; }
AcGePoint2d moved(const AcGePoint2d& p, const AcGeVector3d& d) { return {p.x + d.x, p.y + d.y}; }

// The world displacement in the object coordinate system of the normal: the arbitrary-axis
// frame is orthonormal, so its transpose takes world vectors into it.
AcGeVector3d inOcs(const AcGeVector3d& d, const AcGeVector3d& normal) {
  const auto axes = geometry::Transform::fromOcs(normal).axes;
  const auto dot = [&d](const AcGeVector3d& a) { return a.x * d.x + a.y * d.y + a.z * d.z; };
  return {dot(axes[0]), dot(axes[1]), dot(axes[2])};
}

void moveVertices(std::vector<geometry::Vertex>& vertices, const AcGeVector3d& d) {
  for (auto& vertex : vertices) vertex.point = moved(vertex.point, d);
}

void moveEdge(geometry::Edge& edge, const AcGeVector3d& d) {
  if (auto* line = std::get_if<geometry::LineEdge>(&edge)) {
    line->start = moved(line->start, d);
    line->end = moved(line->end, d);
  } else if (auto* arc = std::get_if<geometry::CircularArcEdge>(&edge)) {
    arc->center = moved(arc->center, d);
  } else if (auto* ellipse = std::get_if<geometry::EllipticArcEdge>(&edge)) {
    ellipse->center = moved(ellipse->center, d);
  } else if (auto* spline = std::get_if<geometry::SplineEdge>(&edge)) {
    for (auto& point : spline->controlPoints) point = moved(point, d);
    for (auto& point : spline->fitPoints) point = moved(point, d);
  }
}

template <typename TextKind>
bool moveText(host::AcDbObject* object, const AcGeVector3d& d) {
  auto* text = dynamic_cast<TextKind*>(object);
  if (!text) return false;
  text->setPosition(moved(text->position(), d));
  return true;
}

bool moveCurve(host::AcDbObject* object, const AcGeVector3d& d) {
  if (auto* line = dynamic_cast<Line*>(object)) {
    line->setEnds(moved(AcGePoint3d::fromArray(line->start()), d), moved(AcGePoint3d::fromArray(line->end()), d));
  } else if (auto* circle = dynamic_cast<Circle*>(object)) {
    circle->setOcsCenter(moved(circle->ocsCenter(), inOcs(d, circle->normal())));
  } else if (auto* arc = dynamic_cast<Arc*>(object)) {
    arc->setCenter(moved(arc->ocsCenter(), inOcs(d, arc->normal())));
  } else if (auto* polyline = dynamic_cast<Polyline*>(object)) {
    const AcGeVector3d local = inOcs(d, polyline->normal());
    auto vertices = polyline->vertices();
    moveVertices(vertices, local);
    polyline->setVertices(std::move(vertices));
    polyline->setElevation(polyline->elevation() + local.z);
  } else {
    return false;
  }
  return true;
}

bool moveArea(host::AcDbObject* object, const AcGeVector3d& d) {
  auto* hatch = dynamic_cast<Hatch*>(object);
  if (!hatch) return false;
  const AcGeVector3d local = inOcs(d, hatch->normal());
  auto loops = hatch->loops();
  for (auto& loop : loops) {
    moveVertices(loop.path.vertices, local);
    for (auto& edge : loop.path.edges) moveEdge(edge, local);
  }
  hatch->setLoops(std::move(loops));
  hatch->setElevation(hatch->elevation() + local.z);
  return true;
}

bool moveAnnotation(host::AcDbObject* object, const AcGeVector3d& d) {
  if (auto* mtext = dynamic_cast<MText*>(object)) {
    mtext->setLocation(moved(mtext->location(), d));
  } else if (auto* table = dynamic_cast<Table*>(object)) {
    table->setPosition(moved(table->position(), d));
  } else if (auto* leader = dynamic_cast<MLeader*>(object)) {
    leader->setTextLocation(moved(leader->textLocation(), d));
    auto lines = leader->leaderLines();
    for (auto& line : lines)
      for (auto& point : line) point = moved(point, d);
    leader->setLeaderLines(std::move(lines));
  } else if (auto* viewport = dynamic_cast<Viewport*>(object)) {
    viewport->setCenterPoint(moved(viewport->centerPoint(), d));
  } else {
    return moveText<Text>(object, d) || moveText<Attribute>(object, d) || moveText<AttributeDefinition>(object, d);
  }
  return true;
}

bool moveReference(Database& db, host::AcDbObject* object, const AcGeVector3d& d) {
  auto* reference = dynamic_cast<BlockReference*>(object);
  if (!reference) return false;
  reference->setPosition(moved(reference->position(), inOcs(d, reference->normal())));
  for (const auto attribute : reference->attributeIds()) displace(db, attribute, d);
  return true;
}

bool moveEntity(Database& db, host::AcDbObject* object, const AcGeVector3d& d) {
  return moveCurve(object, d) || moveArea(object, d) || moveAnnotation(object, d) || moveReference(db, object, d);
}

}  // namespace

bool isDisplaceable(const Database& db, host::AcDbObjectId entity) {
  const host::AcDbObject* object = db.lookup(entity);
  return dynamic_cast<const Line*>(object) || dynamic_cast<const Circle*>(object) || dynamic_cast<const Arc*>(object) ||
         dynamic_cast<const Polyline*>(object) || dynamic_cast<const Hatch*>(object) ||
         dynamic_cast<const MText*>(object) || dynamic_cast<const Table*>(object) ||
         dynamic_cast<const MLeader*>(object) || dynamic_cast<const Viewport*>(object) ||
         dynamic_cast<const Text*>(object) || dynamic_cast<const Attribute*>(object) ||
         dynamic_cast<const AttributeDefinition*>(object) || dynamic_cast<const BlockReference*>(object);
}

bool displace(Database& db, host::AcDbObjectId entity, const AcGeVector3d& offset) {
  host::AcDbObject* object = db.lookup(entity);
  return object && moveEntity(db, object, offset);
}

}  // namespace corvane::headless
