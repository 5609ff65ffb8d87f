// Curves and hatches as the plug-in reaches them: through the port, opened from the drawing.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "host/acdbarc.h"
#include "host/acdbcircle.h"
#include "host/acdbhatch.h"
#include "host/acdbline.h"
#include "headless/db/geometry.h"
#include "headless/db/polyline.h"
#include "host/acdbpolyline.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using corvane::testing::TestDrawing;
using geometry::Vertex;
using host::AcDbPolyline;
using host::Acad;

constexpr double kPiValue = 3.14159265358979323846;
const double kQuarter = std::tan(kPiValue / 8);  // bulge of a quarter turn

std::vector<Vertex> unitSquare() { return {{{0, 0}}, {{1, 0}}, {{1, 1}}, {{0, 1}}}; }

double areaOf(TestDrawing& d, host::AcDbObjectId id) {
  host::AcDbObjectPointer<host::AcDbCurve> curve(d.host, id, host::AcDb::kForRead);
  EXPECT_TRUE(curve);
  double area = -1;
  EXPECT_EQ(curve->getArea(area), Acad::eOk);
  return area;
}

double lengthOf(TestDrawing& d, host::AcDbObjectId id) {
  host::AcDbObjectPointer<host::AcDbCurve> curve(d.host, id, host::AcDb::kForRead);
  EXPECT_TRUE(curve);
  double end = 0, length = -1;
  EXPECT_EQ(curve->getEndParam(end), Acad::eOk);
  EXPECT_EQ(curve->getDistAtParam(end, length), Acad::eOk);
  return length;
}

TEST(Curves, AreaAndLengthOfEveryCurve) {
  TestDrawing d;
  struct Case {
    const char* name;
    host::AcDbObjectId id;
    double area, length;
  } const cases[] = {
      // pi r^2 and 2 pi r
      {"circle r2", d.addCircle(2), 4 * kPiValue, 4 * kPiValue},
      // an arc's area is the segment cut off by its chord: r^2/2 (theta - sin theta) = 2 (pi/2 - 1)
      {"quarter arc r2", d.addArc({0, 0, 0}, 2, 0, kPiValue / 2), kPiValue - 2, kPiValue},
      // from 3pi/2 to pi/2 the arc passes 0: a half turn, half disc of r2 = 2 pi
      {"arc through zero", d.addArc({5, 5, 0}, 2, 1.5 * kPiValue, 0.5 * kPiValue), 2 * kPiValue, 2 * kPiValue},
      // ends that meet make a whole circle
      {"closed arc", d.addArc({0, 0, 0}, 1, 1.0, 1.0), kPiValue, 2 * kPiValue},
      {"line 3-4-5", d.addLine({0, 0, 0}, {3, 4, 0}), 0.0, 5.0},
      {"closed square", d.addPolyline(unitSquare(), true), 1.0, 4.0},
      // open: the area of the closed outline, the length without the closing side
      {"open square", d.addPolyline(unitSquare(), false), 1.0, 3.0},
      {"bulge circle", d.addPolyline({{{0, 0}, 1.0}, {{2, 0}, 1.0}}, true), kPiValue, 2 * kPiValue},
      // open, the last bulge belongs to no segment: a half turn, closed by its chord for the area
      {"open half circle", d.addPolyline({{{0, 0}, 1.0}, {{2, 0}, 1.0}}, false), kPiValue / 2, kPiValue},
      {"3-4-5 triangle", d.addPolyline({{{0, 0}}, {{3, 0}}, {{3, 4}}}, true), 6.0, 12.0},
      {"one vertex", d.addPolyline({{{1, 1}}}, false), 0.0, 0.0},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(areaOf(d, c.id), c.area, 1e-12) << c.name;
    EXPECT_NEAR(lengthOf(d, c.id), c.length, 1e-12) << c.name;
  }
}

TEST(Curves, DistanceAtParameter) {
  TestDrawing d;
  const auto square = d.addPolyline(unitSquare(), true);
  // a half turn of radius 1 then a straight side of 2
  const auto mixed = d.addPolyline({{{0, 0}, 1.0}, {{2, 0}}, {{2, 2}}}, false);
  const auto arc = d.addArc({0, 0, 0}, 2, kPiValue / 2, kPiValue);
  const auto line = d.addLine({0, 0, 0}, {3, 4, 0});
  const auto circle = d.addCircle(2);
  struct Case {
    const char* name;
    host::AcDbObjectId id;
    double param;
    Acad::ErrorStatus status;
    double dist;
  } const cases[] = {
      {"square start", square, 0.0, Acad::eOk, 0.0},
      {"square mid side", square, 1.5, Acad::eOk, 1.5},
      {"square end", square, 4.0, Acad::eOk, 4.0},
      {"square past end", square, 4.5, Acad::eInvalidInput, 0.0},
      {"square before start", square, -0.5, Acad::eInvalidInput, 0.0},
      // a parameter half way along the half turn is a quarter turn: pi/2
      {"half way round", mixed, 0.5, Acad::eOk, kPiValue / 2},
      {"after the turn", mixed, 1.5, Acad::eOk, kPiValue + 1},
      // an arc's parameter is its angle: a quarter of pi/2 into it, radius 2
      {"arc", arc, kPiValue / 2 + kPiValue / 8, Acad::eOk, kPiValue / 4},
      {"arc before start", arc, 0.0, Acad::eInvalidInput, 0.0},
      // a line's parameter is the distance; a rounding error past an end is the end
      {"line mid", line, 2.5, Acad::eOk, 2.5},
      {"line a hair past its end", line, 5.0 + 1e-12, Acad::eOk, 5.0},
      {"line past its end", line, 5.001, Acad::eInvalidInput, 0.0},
      {"circle a hair before its start", circle, -1e-12, Acad::eOk, 0.0},
      {"circle full turn", circle, 2 * kPiValue, Acad::eOk, 4 * kPiValue},
      {"circle past a full turn", circle, 2 * kPiValue + 0.01, Acad::eInvalidInput, 0.0},
  };
  for (const auto& c : cases) {
    host::AcDbObjectPointer<host::AcDbCurve> curve(d.host, c.id, host::AcDb::kForRead);
    double dist = 0;
    EXPECT_EQ(curve->getDistAtParam(c.param, dist), c.status) << c.name;
    if (c.status == Acad::eOk) {
      EXPECT_NEAR(dist, c.dist, 1e-12) << c.name;
    }
  }
}

TEST(Curves, PolylineSegments) {
  TestDrawing d;
  const auto open = d.addPolyline({{{0, 0}}, {{1, 0}, kQuarter}, {{2, 1}}, {{2, 1}}, {{3, 1}}}, false);
  const auto closed = d.addPolyline(unitSquare(), true);
  const auto single = d.addPolyline({{{4, 4}}}, false);
  const auto empty = d.addPolyline({}, false);
  struct Case {
    host::AcDbObjectId id;
    unsigned int index;
    AcDbPolyline::SegType type;
  } const cases[] = {
      {open, 0, AcDbPolyline::kLine},
      {open, 1, AcDbPolyline::kArc},
      {open, 2, AcDbPolyline::kCoincident},  // (2,1) twice
      {open, 3, AcDbPolyline::kLine},
      {open, 4, AcDbPolyline::kPoint},  // the last vertex of an open polyline starts nothing
      {open, 5, AcDbPolyline::kEmpty},
      {closed, 3, AcDbPolyline::kLine},  // closing side
      {closed, 4, AcDbPolyline::kEmpty},
      {single, 0, AcDbPolyline::kPoint},
      {empty, 0, AcDbPolyline::kEmpty},
  };
  for (const auto& c : cases) {
    host::AcDbObjectPointer<AcDbPolyline> pline(d.host, c.id, host::AcDb::kForRead);
    EXPECT_EQ(pline->segType(c.index), c.type) << c.index;
  }

  host::AcDbObjectPointer<AcDbPolyline> pline(d.host, open, host::AcDb::kForRead);
  host::AcGeLineSeg2d line;
  host::AcGeCircArc2d arc;
  EXPECT_EQ(pline->getLineSegAt(0, line), Acad::eOk);
  EXPECT_EQ(line.length(), 1.0);
  EXPECT_EQ(pline->getLineSegAt(1, line), Acad::eWrongObjectType);
  EXPECT_EQ(pline->getArcSegAt(0, arc), Acad::eWrongObjectType);
  EXPECT_EQ(pline->getLineSegAt(9, line), Acad::eInvalidIndex);
  // (1,0) to (2,1) a quarter turn counter-clockwise: about (1,1), from -pi/2 (3pi/2) to 2pi
  ASSERT_EQ(pline->getArcSegAt(1, arc), Acad::eOk);
  EXPECT_NEAR(arc.center().x, 1, 1e-12);
  EXPECT_NEAR(arc.center().y, 1, 1e-12);
  EXPECT_NEAR(arc.radius(), 1, 1e-12);
  EXPECT_NEAR(arc.startAng(), 1.5 * kPiValue, 1e-12);
  EXPECT_NEAR(arc.endAng(), 2 * kPiValue, 1e-12);
  EXPECT_FALSE(arc.isClockWise());
  host::AcGePoint2d point;
  EXPECT_EQ(pline->getPointAt(4, point), Acad::eOk);
  EXPECT_EQ(point, (host::AcGePoint2d{3, 1}));
  double bulge = 0;
  EXPECT_EQ(pline->getBulgeAt(1, bulge), Acad::eOk);
  EXPECT_EQ(bulge, kQuarter);
  EXPECT_EQ(pline->getBulgeAt(5, bulge), Acad::eInvalidIndex);
}

// The length a caller adds up from segments (line lengths and arc radius times end angle
// minus start angle) is the polyline's own length, clockwise arcs included.
TEST(Curves, SegmentsAddUpToTheLength) {
  TestDrawing d;
  const std::vector<std::vector<Vertex>> shapes{
      {{{0, 0}, -kQuarter}, {{1, 1}, 0.5}, {{3, 1}}, {{3, 3}, -2.0}, {{0, 3}}},
      {{{0, 0}, 1.0}, {{2, 0}, -1.0}, {{4, 0}}},
  };
  for (const bool closed : {false, true}) {
    for (const auto& vertices : shapes) {
      const auto id = d.addPolyline(vertices, closed);
      host::AcDbObjectPointer<AcDbPolyline> pline(d.host, id, host::AcDb::kForRead);
      double sum = 0;
      for (unsigned int i = 0; i < pline->numVerts(); ++i) {
        if (pline->segType(i) == AcDbPolyline::kLine) {
          host::AcGeLineSeg2d line;
          pline->getLineSegAt(i, line);
          sum += line.length();
        } else if (pline->segType(i) == AcDbPolyline::kArc) {
          host::AcGeCircArc2d arc;
          pline->getArcSegAt(i, arc);
          EXPECT_GE(arc.endAng(), arc.startAng());
          sum += arc.radius() * (arc.endAng() - arc.startAng());
        }
      }
      EXPECT_NEAR(sum, lengthOf(d, id), 1e-12) << closed;
    }
  }
}

// Arc segments are worked out once and kept. What is kept must be, to the last bit, what the
// vertices give afresh, and must follow the vertices and the closing when they change.
TEST(Curves, KeptArcSegmentsMatchFreshOnesAndFollowChanges) {
  TestDrawing d;
  const std::vector<Vertex> first{{{0, 0}, -kQuarter}, {{1, 1}, 0.5}, {{3, 1}}, {{3, 3}, -2.0}, {{0.1, 3.7}, 0.3}};
  const std::vector<Vertex> second{{{0, 0}, 1.0}, {{2, 0}, -0.7}, {{4, 0.5}, 0.2}};
  const auto id = d.addPolyline(first, false);
  auto* pline = d.db.get<headless::Polyline>(id);
  const auto expectFresh = [&](const char* when) {
    const auto& vertices = pline->vertices();
    for (unsigned int i = 0; i < vertices.size(); ++i) {
      host::AcGeCircArc2d kept;
      if (pline->getArcSegAt(i, kept) != Acad::eOk) {
        EXPECT_NE(pline->segType(i), AcDbPolyline::kArc) << when << " " << i;
        continue;
      }
      const auto bulged =
          geometry::bulgeArc(vertices[i].point, vertices[(i + 1) % vertices.size()].point, vertices[i].bulge);
      ASSERT_TRUE(bulged) << when << " " << i;
      const host::AcGeCircArc2d fresh = geometry::toCircArc(*bulged);
      EXPECT_EQ(kept.startAng(), fresh.startAng()) << when << " " << i;
      EXPECT_EQ(kept.endAng(), fresh.endAng()) << when << " " << i;
      EXPECT_EQ(kept.radius(), fresh.radius()) << when << " " << i;
      EXPECT_EQ(kept.center(), fresh.center()) << when << " " << i;
      EXPECT_EQ(kept.isClockWise(), fresh.isClockWise()) << when << " " << i;
    }
  };
  expectFresh("open");
  pline->setClosed(true);  // the bulged closing segment appears
  expectFresh("closed");
  pline->setVertices(second);
  expectFresh("new vertices");
  pline->addVertex({{1, -3}, -0.4});
  expectFresh("added vertex");
  host::AcGeCircArc2d arc;
  EXPECT_EQ(pline->getArcSegAt(3, arc), Acad::eOk);  // the added vertex closes with an arc
}

TEST(Curves, ClosednessAndClassesThroughThePort) {
  TestDrawing d;
  const auto arcId = d.addArc({1, 2, 0}, 3, 0.25, 1.25);
  host::AcDbObjectPointer<host::AcDbArc> arc(d.host, arcId, host::AcDb::kForRead);
  EXPECT_FALSE(arc->isClosed());
  const auto circleId = d.addCircle(2);
  host::AcDbObjectPointer<host::AcDbCircle> circle(d.host, circleId, host::AcDb::kForRead);
  EXPECT_TRUE(circle->isClosed());
  EXPECT_EQ(host::acutDistance({1, 2, 3}, {4, 6, 3}), 5.0);
  // An arc is no circle: the class tests of the measuring fields tell them apart.
  host::AcDbObjectPointer<host::AcDbCircle> notACircle(d.host, arcId, host::AcDb::kForRead);
  EXPECT_EQ(notACircle.openStatus(), Acad::eNotThatKindOfClass);
}

TEST(Curves, ArcOfAMirroredSystem) {
  // Normal (0,0,-1): the object system's x axis is the world's -x. Centre (2,0) in it is
  // (-2,0) in the world; the quarter from 0 to pi/2 spans object x 2..3 and y 0..1, i.e.
  // world x -3..-2.
  TestDrawing d;
  auto arc = std::make_unique<Arc>(host::AcGePoint3d{2, 0, 0}, 1, 0, kPiValue / 2);
  arc->setNormal({0, 0, -1});
  const auto id = d.db.appendEntity(std::move(arc));
  host::AcDbObjectPointer<host::AcDbArc> open(d.host, id, host::AcDb::kForRead);
  EXPECT_EQ(open->center(), (host::AcGePoint3d{-2, 0, 0}));
  host::AcDbExtents box;
  ASSERT_EQ(open->getGeomExtents(box), Acad::eOk);
  EXPECT_NEAR(box.minPoint().x, -3, 1e-12);
  EXPECT_NEAR(box.maxPoint().x, -2, 1e-12);
  EXPECT_NEAR(box.maxPoint().y, 1, 1e-12);
  double area = 0;
  open->getArea(area);
  EXPECT_NEAR(area, (kPiValue / 2 - 1) / 2, 1e-12);  // 1/2 (pi/2 - 1), mirroring changes nothing
}

TEST(Curves, CircleOfAMirroredSystem) {
  // Centre (3,1) in the system of normal (0,0,-1) is (-3,1) in the world.
  TestDrawing d;
  auto circle = std::make_unique<Circle>(Circle::Point{3, 1, 0}, 2.0);
  circle->setNormal({0, 0, -1});
  const auto id = d.db.appendEntity(std::move(circle));
  host::AcDbObjectPointer<host::AcDbCircle> open(d.host, id, host::AcDb::kForRead);
  EXPECT_EQ(open->center(), (host::AcGePoint3d{-3, 1, 0}));
  EXPECT_EQ(d.db.get<Circle>(id)->ocsCenter(), (host::AcGePoint3d{3, 1, 0}));
  host::AcDbExtents box;
  ASSERT_EQ(open->getGeomExtents(box), Acad::eOk);
  EXPECT_NEAR(box.minPoint().x, -5, 1e-12);
  EXPECT_NEAR(box.maxPoint().x, -1, 1e-12);
  EXPECT_NEAR(box.minPoint().y, -1, 1e-12);
  EXPECT_NEAR(box.maxPoint().y, 3, 1e-12);
}

TEST(Curves, HatchAreaThroughThePort) {
  TestDrawing d;
  auto square = [](double x, double y, double side, int flags) {
    return HatchLoop::polyline({{{x, y}}, {{x + side, y}}, {{x + side, y + side}}, {{x, y + side}}}, flags);
  };
  const std::vector<HatchLoop> loops{
      square(0, 0, 10, HatchLoop::kExternal | HatchLoop::kOutermost),
      square(3, 3, 4, 0),
      HatchLoop::edges({geometry::CircularArcEdge{{5, 5}, 1, 0, 360, true}}, 0),
  };
  struct Case {
    Hatch::Style style;
    double area;
  } const cases[] = {
      // 100 less the 16 square, and the circle inside that square filled again: 84 + pi
      {Hatch::Style::kNormal, 84 + kPiValue},
      {Hatch::Style::kOuter, 84},
      {Hatch::Style::kIgnore, 100},
  };
  for (const auto& c : cases) {
    const auto id = d.addHatch(loops, c.style);
    host::AcDbObjectPointer<host::AcDbHatch> hatch(d.host, id, host::AcDb::kForRead);
    double area = 0;
    EXPECT_EQ(hatch->getArea(area), Acad::eOk);
    EXPECT_NEAR(area, c.area, 1e-9) << static_cast<int>(c.style);
    EXPECT_TRUE(hatch->isSolidFill());
    EXPECT_EQ(hatch->patternName(), L"SOLID");
  }
}

// Areas are kept once worked out; every change of the geometry they come from starts afresh.
TEST(Curves, KeptAreasFollowEveryChange) {
  Polyline polyline({{{0, 0}}, {{2, 0}}, {{2, 2}}}, false);
  Hatch hatch(L"SOLID", true, {HatchLoop::polyline({{{0, 0}}, {{4, 0}}, {{4, 4}}, {{0, 4}}})});
  const auto areaOf = [](const auto& entity) {
    double area = -1;
    entity.getArea(area);
    return area;
  };
  EXPECT_DOUBLE_EQ(areaOf(polyline), 2.0);
  polyline.addVertex({{0, 2}});
  EXPECT_DOUBLE_EQ(areaOf(polyline), 4.0);
  polyline.setVertices({{{0, 0}, 1.0}, {{2, 0}}});  // a half circle closed by its chord
  EXPECT_NEAR(areaOf(polyline), kPiValue / 2, 1e-12);
  polyline.setClosed(true);  // the closing segment is straight: the same area
  polyline.setVertices({{{0, 0}}, {{2, 0}, 1.0}});
  EXPECT_NEAR(areaOf(polyline), kPiValue / 2, 1e-12);
  polyline.setClosed(false);  // the bulge of the last vertex no longer counts
  EXPECT_DOUBLE_EQ(areaOf(polyline), 0.0);

  EXPECT_DOUBLE_EQ(areaOf(hatch), 16.0);
  hatch.appendLoop(HatchLoop::polyline({{{1, 1}}, {{2, 1}}, {{2, 2}}, {{1, 2}}}, 0));
  EXPECT_DOUBLE_EQ(areaOf(hatch), 15.0);
  hatch.setStyle(Hatch::Style::kIgnore);
  EXPECT_DOUBLE_EQ(areaOf(hatch), 16.0);
  hatch.setLoops({HatchLoop::polyline({{{0, 0}}, {{1, 0}}, {{1, 1}}, {{0, 1}}})});
  EXPECT_DOUBLE_EQ(areaOf(hatch), 1.0);

  // An arc's segment: r^2 / 2 (sweep - sin sweep), after each change that moves it.
  Arc arc({5, 5, 0}, 2.0, 0.0, kPiValue / 2);
  const auto segment = [](double radius, double sweep) { return radius * radius / 2 * (sweep - std::sin(sweep)); };
  EXPECT_NEAR(areaOf(arc), segment(2.0, kPiValue / 2), 1e-12);
  struct Change {
    const char* what;
    void (*apply)(Arc&);
    double radius, sweep;
  } const changes[] = {
      {"radius", [](Arc& a) { a.setRadius(1.0); }, 1.0, kPiValue / 2},
      {"end angle", [](Arc& a) { a.setEndAngle(kPiValue); }, 1.0, kPiValue},
      {"start angle", [](Arc& a) { a.setStartAngle(kPiValue / 2); }, 1.0, kPiValue / 2},
      {"centre, which keeps it", [](Arc& a) { a.setCenter({-3, 0, 0}); }, 1.0, kPiValue / 2},
  };
  for (const Change& c : changes) {
    c.apply(arc);
    EXPECT_NEAR(areaOf(arc), segment(c.radius, c.sweep), 1e-12) << c.what;
  }
}

TEST(Curves, PropertiesAsFieldsReadThem) {
  TestDrawing d;
  d.addLayer(L"Walls");
  const auto pline = d.addPolyline(unitSquare(), false);
  d.db.get<Polyline>(pline)->setLayer(L"Walls");
  const auto arc = d.addArc({0, 0, 0}, 2, 0, kPiValue / 2);
  const auto hatch = d.addHatch({HatchLoop::polyline(unitSquare())});
  const std::wstring pref = L"%<\\AcObjProp Object(" + TestDrawing::idReference(pline) + L").";
  const std::wstring aref = L"%<\\AcObjProp Object(" + TestDrawing::idReference(arc) + L").";
  const std::wstring href = L"%<\\AcObjProp Object(" + TestDrawing::idReference(hatch) + L").";
  struct Case {
    std::wstring code;
    std::wstring display;
  } const cases[] = {
      {pref + L"Area>%", L"1.000000"},
      {pref + L"Length>%", L"3.000000"},
      {pref + L"Closed>%", L"0"},
      {pref + L"Layer>%", L"Walls"},
      {aref + L"ArcLength>%", L"3.141593"},
      {aref + L"Radius>%", L"2.000000"},
      {aref + L"TotalAngle>%", L"1.570796"},
      {href + L"Area>%", L"1.000000"},
      {href + L"PatternName>%", L"SOLID"},
  };
  for (const auto& c : cases) {
    const auto id = d.addField(c.code);
    d.host.engine().evaluateFields(&d.db, {id}, host::AcDbField::kDemand);
    EXPECT_EQ(d.field(id).getDisplayText(), c.display) << std::string(c.code.begin(), c.code.end());
  }
}

}  // namespace
}  // namespace corvane::headless
