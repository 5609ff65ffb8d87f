#include "headless/db/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace corvane::headless::geometry {
namespace {

constexpr double kPiValue = 3.14159265358979323846;
// The bulge of a quarter turn: tan(90 deg / 4).
const double kQuarter = std::tan(kPiValue / 8);

TEST(Geometry, SweepRunsCounterClockwiseAndEqualEndsMakeAFullTurn) {
  struct Case {
    double start, end, sweep;
  } const cases[] = {
      {0, kPiValue / 2, kPiValue / 2},
      {3 * kPiValue / 2, kPiValue / 2, kPiValue},  // through angle 0
      {1.0, 1.0, 2 * kPiValue},
      {0, 2 * kPiValue, 2 * kPiValue},
      {-kPiValue / 2, kPiValue / 2, kPiValue},
  };
  for (const auto& c : cases) EXPECT_NEAR(ccwSweep(c.start, c.end), c.sweep, 1e-12) << c.start << " " << c.end;
}

TEST(Geometry, BulgedSegmentsLieOnTheRightCircle) {
  struct Case {
    AcGePoint2d from, to;
    double bulge;
    AcGePoint2d center;
    double radius, sweep;
  } const cases[] = {
      // bulge 1 is a half turn: the centre is the chord's middle
      {{0, 0}, {2, 0}, 1.0, {1, 0}, 1.0, kPiValue},
      {{0, 0}, {2, 0}, -1.0, {1, 0}, 1.0, -kPiValue},
      // a quarter turn from (1,0) to (0,1) counter-clockwise runs about the origin
      {{1, 0}, {0, 1}, kQuarter, {0, 0}, 1.0, kPiValue / 2},
      // the same ends clockwise: a quarter turn about (1,1)
      {{1, 0}, {0, 1}, -kQuarter, {1, 1}, 1.0, -kPiValue / 2},
  };
  for (const auto& c : cases) {
    const auto arc = bulgeArc(c.from, c.to, c.bulge);
    ASSERT_TRUE(arc.has_value());
    EXPECT_NEAR(arc->center.x, c.center.x, 1e-12);
    EXPECT_NEAR(arc->center.y, c.center.y, 1e-12);
    EXPECT_NEAR(arc->radius, c.radius, 1e-12);
    EXPECT_NEAR(arc->sweep, c.sweep, 1e-12);
  }
  EXPECT_FALSE(bulgeArc({0, 0}, {1, 0}, 0.0).has_value());
  EXPECT_FALSE(bulgeArc({1, 1}, {1, 1}, 1.0).has_value());
}

TEST(Geometry, ClockwiseArcIsListedFromItsCounterClockwiseStart) {
  // From (1,0) clockwise a quarter turn about (1,1) to (0,1): start angle -pi/2, end -pi. The
  // counter-clockwise reading of the same points runs from pi (at (0,1)) to 3pi/2 (at (1,0)).
  const auto arc = toCircArc(*bulgeArc({1, 0}, {0, 1}, -kQuarter));
  EXPECT_TRUE(arc.isClockWise());
  EXPECT_NEAR(arc.startAng(), kPiValue, 1e-12);
  EXPECT_NEAR(arc.endAng(), 1.5 * kPiValue, 1e-12);
  EXPECT_NEAR(arc.startPoint().x, 1.0, 1e-12);
  EXPECT_NEAR(arc.startPoint().y, 0.0, 1e-12);
  EXPECT_NEAR(arc.endPoint().x, 0.0, 1e-12);
  EXPECT_NEAR(arc.endPoint().y, 1.0, 1e-12);
  EXPECT_NEAR(arc.length(), kPiValue / 2, 1e-12);
}

std::vector<Vertex> square(double side) { return {{{0, 0}}, {{side, 0}}, {{side, side}}, {{0, side}}}; }

TEST(Geometry, PolylineAreaOfTheClosedOutline) {
  struct Case {
    const char* name;
    std::vector<Vertex> vertices;
    bool closed;
    double area;
  } const cases[] = {
      {"closed unit square", square(1), true, 1.0},
      // an open polyline is closed by a straight line: the same square
      {"open unit square", square(1), false, 1.0},
      // three corners of a 2x2 square, open: the triangle 2*2/2
      {"open three corners", {{{0, 0}}, {{2, 0}}, {{2, 2}}}, false, 2.0},
      // clockwise order gives the same area
      {"clockwise square", {{{0, 0}}, {{0, 3}}, {{3, 3}}, {{3, 0}}}, true, 9.0},
      // two half turns of radius 1: the unit circle, pi
      {"bulge circle", {{{0, 0}, 1.0}, {{2, 0}, 1.0}}, true, kPiValue},
      // open, the last bulge belongs to no segment: the chord closes a half disc, pi/2
      {"open half circle", {{{0, 0}, 1.0}, {{2, 0}, 1.0}}, false, kPiValue / 2},
      // square with its bottom side bulged by a half circle of radius 1/2: counter-clockwise
      // from (0,0) to (1,0) it dips below, outwards: 1 + pi/8
      {"square with outer half disc", {{{0, 0}, 1.0}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, true, 1 + kPiValue / 8},
      // clockwise it rises into the square: 1 - pi/8
      {"square with inner half disc", {{{0, 0}, -1.0}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, true, 1 - kPiValue / 8},
      // a quarter disc of radius 1: two radii and a quarter turn, pi/4
      {"quarter disc", {{{0, 0}}, {{1, 0}, kQuarter}, {{0, 1}}}, true, kPiValue / 4},
      {"one vertex", {{{5, 5}}}, true, 0.0},
      {"no vertices", {}, false, 0.0},
      // widths play no part
      {"wide square", {{{0, 0}, 0, 0.5, 0.5}, {{1, 0}, 0, 0.5, 0.5}, {{1, 1}}, {{0, 1}}}, true, 1.0},
  };
  for (const auto& c : cases) EXPECT_NEAR(polylineArea(c.vertices, c.closed), c.area, 1e-12) << c.name;
}

TEST(Geometry, CircularSegmentBetweenArcAndChord) {
  struct Case {
    double radius, sweep, area;
  } const cases[] = {
      {2.0, kPiValue / 2, kPiValue - 2},      // 4/2 * (pi/2 - 1)
      {1.0, kPiValue, kPiValue / 2},          // half disc
      {1.0, 2 * kPiValue, kPiValue},          // the whole circle
      {3.0, 0.0, 0.0},
  };
  for (const auto& c : cases) EXPECT_NEAR(circularSegmentArea(c.radius, c.sweep), c.area, 1e-12);
}

TEST(Geometry, EllipseParameterOfAStoredAngle) {
  // The point at polar angle a on x = 2 cos t, y = sin t has tan t = 2 tan a.
  struct Case {
    double angle, ratio, parameter;
  } const cases[] = {
      {kPiValue / 4, 0.5, std::atan(2.0)},
      {-kPiValue / 4, 0.5, -std::atan(2.0)},
      {3 * kPiValue / 4, 0.5, kPiValue - std::atan(2.0)},
      {kPiValue / 2, 0.5, kPiValue / 2},
      {2 * kPiValue, 0.5, 2 * kPiValue},  // the end of a full ellipse stays a full turn away
      {kPiValue / 3, 1.0, kPiValue / 3},  // a circle's parameter is its angle
  };
  for (const auto& c : cases) EXPECT_NEAR(ellipseParameterOfAngle(c.angle, c.ratio), c.parameter, 1e-12) << c.angle;
}

Loop edgeLoop(std::vector<Edge> edges) { return Loop{false, true, {}, std::move(edges)}; }

// Degree 1 through the corners of the unit square and back to the first.
SplineEdge squareSpline() {
  SplineEdge spline;
  spline.degree = 1;
  spline.knots = {0, 0, 1, 2, 3, 4, 4};
  spline.controlPoints = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
  return spline;
}

TEST(Geometry, EdgeLoopAreas) {
  const AcGePoint2d center{2, 3};
  struct Case {
    const char* name;
    Loop loop;
    double area;
  } const cases[] = {
      {"full circle edge", edgeLoop({CircularArcEdge{{5, 5}, 1.0, 0, 360, true}}), kPiValue},
      // upper half circle and its diameter: pi/2
      {"half disc", edgeLoop({CircularArcEdge{{0, 0}, 1.0, 0, 180, true}, LineEdge{{-1, 0}, {1, 0}}}), kPiValue / 2},
      // Quarter disc about (2,3) run clockwise: radius up, clockwise arc from (2,4) to (3,3),
      // radius back. Stored clockwise angles are negated: from 90 deg to 0 deg is stored as
      // start -90 (270) and end 0 (360). pi/4.
      {"clockwise quarter disc",
       edgeLoop({LineEdge{center, {2, 4}}, CircularArcEdge{center, 1.0, 270, 360, false}, LineEdge{{3, 3}, center}}),
       kPiValue / 4},
      // the arc's stored end below its start: it passes 0 deg. Three quarters of a disc: 3pi/4
      {"arc through zero",
       edgeLoop({LineEdge{{0, 0}, {0, 1}}, CircularArcEdge{{0, 0}, 1.0, 90, 0, true}, LineEdge{{1, 0}, {0, 0}}}),
       3 * kPiValue / 4},
      // a full ellipse with semi-axes 2 and 1: 2pi, whichever way the major axis points
      {"full ellipse", edgeLoop({EllipticArcEdge{{1, 1}, {2, 0}, 0.5, 0, 360, true}}), 2 * kPiValue},
      {"turned ellipse", edgeLoop({EllipticArcEdge{{1, 1}, {0, 2}, 0.5, 0, 360, true}}), 2 * kPiValue},
      // A sector of that ellipse from its major axis to polar angle 45 deg. The sector of an
      // ellipse from parameter 0 to t is a*b*t/2, and t = atan(2): atan(2) in all.
      {"ellipse sector",
       edgeLoop({LineEdge{{0, 0}, {2, 0}}, EllipticArcEdge{{0, 0}, {2, 0}, 0.5, 0, 45, true},
                 LineEdge{{2 / std::sqrt(5.0), 2 / std::sqrt(5.0)}, {0, 0}}}),
       std::atan(2.0)},
      {"clockwise ellipse", edgeLoop({EllipticArcEdge{{0, 0}, {2, 0}, 0.5, 0, 360, false}}), 2 * kPiValue},
      // an edge never runs more than one turn
      {"two turns count once", edgeLoop({CircularArcEdge{{0, 0}, 1.0, 0, 720, true}}), kPiValue},
      {"two turns back count once", edgeLoop({CircularArcEdge{{0, 0}, 1.0, 720, 0, false}}), kPiValue},
  };
  for (const auto& c : cases) EXPECT_NEAR(std::abs(loopSignedArea(c.loop)), c.area, 1e-9) << c.name;
}

TEST(Geometry, EdgeLengths) {
  struct Case {
    const char* name;
    Edge edge;
    double length;
  } const cases[] = {
      {"line 3-4-5", LineEdge{{1, 1}, {4, 5}}, 5.0},
      {"circle r2", CircularArcEdge{{7, 7}, 2.0, 0, 360, true}, 4 * kPiValue},
      // 30 to 120 deg is a quarter turn of radius 4: 2 pi
      {"quarter r4", CircularArcEdge{{0, 0}, 4.0, 30, 120, true}, 2 * kPiValue},
      {"clockwise quarter r4", CircularArcEdge{{0, 0}, 4.0, 30, 120, false}, 2 * kPiValue},
      // The perimeter of the ellipse with semi-axes 2 and 1 is 4 a E(e), e^2 = 3/4, a = 2,
      // E = 1.2110560275684594 (complete elliptic integral of the second kind).
      {"ellipse 2 x 1", EllipticArcEdge{{0, 0}, {0, -2}, 0.5, 0, 360, true}, 8 * 1.2110560275684594},
      // half of it, from the major axis to the opposite end
      {"half ellipse", EllipticArcEdge{{0, 0}, {2, 0}, 0.5, 0, 180, true}, 4 * 1.2110560275684594},
      {"degree 1 spline", squareSpline(), 4.0},
  };
  for (const auto& c : cases) EXPECT_NEAR(edgeLength(c.edge), c.length, 1e-9) << c.name;
}

TEST(Geometry, SplineEdges) {
  SplineEdge parabola;  // a quadratic Bezier arch from (0,0) over (1,2) to (2,0), peak (1,1)
  parabola.degree = 2;
  parabola.knots = {0, 0, 0, 1, 1, 1};
  parabola.controlPoints = {{0, 0}, {1, 2}, {2, 0}};

  SplineEdge quarter;  // the rational quadratic of a quarter circle of radius 1
  quarter.degree = 2;
  quarter.rational = true;
  quarter.knots = {0, 0, 0, 1, 1, 1};
  quarter.controlPoints = {{1, 0}, {1, 1}, {0, 1}};
  quarter.weights = {1, std::sqrt(0.5), 1};

  SplineEdge fitted;  // no control points: the fit points are joined
  fitted.fitPoints = {{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};

  struct Case {
    const char* name;
    Loop loop;
    double area, tolerance;
  } const cases[] = {
      {"degree 1", edgeLoop({squareSpline()}), 1.0, 1e-12},
      // a parabolic segment is 2/3 of chord times height: 2/3 * 2 * 1
      {"parabola", edgeLoop({parabola, LineEdge{{2, 0}, {0, 0}}}), 4.0 / 3, 1e-12},
      {"rational quarter circle", edgeLoop({LineEdge{{0, 0}, {1, 0}}, quarter, LineEdge{{0, 1}, {0, 0}}}),
       kPiValue / 4, 1e-12},
      {"fit points", edgeLoop({fitted}), 4.0, 1e-12},
  };
  for (const auto& c : cases) EXPECT_NEAR(std::abs(loopSignedArea(c.loop)), c.area, c.tolerance) << c.name;

  // The arch is y = 2x - x^2 over 0..2: its length is the integral of sqrt(1 + s^2) for s
  // from 0 to 2, sqrt 5 + asinh(2) / 2.
  EXPECT_NEAR(edgeLength(parabola), std::sqrt(5.0) + std::asinh(2.0) / 2, 1e-12);
  EXPECT_NEAR(edgeLength(quarter), kPiValue / 2, 1e-12);
  // Every point of the quarter lies on the unit circle.
  for (const auto& p : splinePoints(quarter)) EXPECT_NEAR(std::hypot(p.x, p.y), 1.0, 1e-12);
  // A knot vector of the wrong length falls back to the control points.
  SplineEdge broken = parabola;
  broken.knots.pop_back();
  EXPECT_EQ(splinePoints(broken), broken.controlPoints);
}

Loop squareLoop(double x, double y, double side) {
  return Loop{true, true, {{{x, y}}, {{x + side, y}}, {{x + side, y + side}}, {{x, y + side}}}, {}};
}

TEST(Geometry, HatchIslandsByStyle) {
  // A 10x10 square holding a 4x4 island that holds a 2x2 square: 100, 16 and 4.
  const std::vector<Loop> nested{squareLoop(0, 0, 10), squareLoop(3, 3, 4), squareLoop(4, 4, 2)};
  EXPECT_EQ(loopDepths(nested), (std::vector<int>{0, 1, 2}));
  // The loops may come in any order.
  const std::vector<Loop> shuffled{squareLoop(4, 4, 2), squareLoop(0, 0, 10), squareLoop(3, 3, 4)};
  EXPECT_EQ(loopDepths(shuffled), (std::vector<int>{2, 0, 1}));

  const Loop circleIsland = edgeLoop({CircularArcEdge{{5, 5}, 1.0, 0, 360, true}});
  struct Case {
    const char* name;
    std::vector<Loop> loops;
    HatchStyle style;
    double area;
  } const cases[] = {
      {"normal alternates", nested, HatchStyle::kNormal, 100 - 16 + 4},
      {"normal in any order", shuffled, HatchStyle::kNormal, 100 - 16 + 4},
      {"outer ignores the deeper square", nested, HatchStyle::kOuter, 100 - 16},
      {"ignore fills the outline", nested, HatchStyle::kIgnore, 100},
      {"two outlines side by side", {squareLoop(0, 0, 1), squareLoop(5, 0, 2)}, HatchStyle::kNormal, 1 + 4},
      {"round island", {squareLoop(0, 0, 10), circleIsland}, HatchStyle::kNormal, 100 - kPiValue},
      {"no loops", {}, HatchStyle::kNormal, 0},
  };
  for (const auto& c : cases) EXPECT_NEAR(hatchArea(c.loops, c.style), c.area, 1e-9) << c.name;
}

TEST(Geometry, OpenPolylineLoopClosesStraight) {
  // A hatch path not flagged closed: the last vertex's bulge is not used.
  Loop open{true, false, {{{0, 0}, 1.0}, {{2, 0}, 1.0}}, {}};
  EXPECT_NEAR(std::abs(loopSignedArea(open)), kPiValue / 2, 1e-12);
  open.closed = true;
  EXPECT_NEAR(std::abs(loopSignedArea(open)), kPiValue, 1e-12);
}

TEST(Geometry, TransformsCompose) {
  // Turn a quarter, then move by (10, 0): (1, 0, 0) goes to (0, 1, 0) and then (10, 1, 0).
  const Transform t = Transform::translate({10, 0, 0}) * Transform::rotateZ(kPiValue / 2);
  const AcGePoint3d p = t.apply({1, 0, 0});
  EXPECT_NEAR(p.x, 10, 1e-12);
  EXPECT_NEAR(p.y, 1, 1e-12);
  // The object system of a downward normal mirrors x: its x axis is (-1, 0, 0).
  const AcGePoint3d mirrored = Transform::fromOcs({0, 0, -1}).apply({2, 3, 4});
  EXPECT_NEAR(mirrored.x, -2, 1e-12);
  EXPECT_NEAR(mirrored.y, 3, 1e-12);
  EXPECT_NEAR(mirrored.z, -4, 1e-12);
}

TEST(Geometry, ArcExtentsReachTheAxesTheyPass) {
  struct Case {
    const char* name;
    double t0, t1;
    AcGePoint3d min, max;
  } const cases[] = {
      // radius 2 about (1,1)
      {"full circle", 0, 2 * kPiValue, {-1, -1, 0}, {3, 3, 0}},
      {"first quadrant", 0, kPiValue / 2, {1, 1, 0}, {3, 3, 0}},
      // from 45 to 135 deg: passes the top, ends at x = 1 -+ sqrt 2
      {"over the top", kPiValue / 4, 3 * kPiValue / 4, {1 - std::sqrt(2.0), 1 + std::sqrt(2.0), 0}, {1 + std::sqrt(2.0), 3, 0}},
      // from 270 through 360 to 450 deg: the right half
      {"through zero", 1.5 * kPiValue, 2.5 * kPiValue, {1, -1, 0}, {3, 3, 0}},
  };
  for (const auto& c : cases) {
    AcDbExtents box;
    addEllipticArc(box, Transform::identity(), {1, 1, 0}, {2, 0, 0}, {0, 2, 0}, c.t0, c.t1);
    EXPECT_NEAR(box.minPoint().x, c.min.x, 1e-12) << c.name;
    EXPECT_NEAR(box.minPoint().y, c.min.y, 1e-12) << c.name;
    EXPECT_NEAR(box.maxPoint().x, c.max.x, 1e-12) << c.name;
    EXPECT_NEAR(box.maxPoint().y, c.max.y, 1e-12) << c.name;
  }
  // Stretched to an ellipse by the map: x half-width 6, y half-width 2.
  AcDbExtents stretched;
  addEllipticArc(stretched, Transform::scale(3, 1, 1), {0, 0, 0}, {2, 0, 0}, {0, 2, 0}, 0, 2 * kPiValue);
  EXPECT_NEAR(stretched.minPoint().x, -6, 1e-12);
  EXPECT_NEAR(stretched.maxPoint().y, 2, 1e-12);
}

TEST(Geometry, NumbersFarOutEndQuickly) {
  // Angles a damaged file may hold: the work stays within one turn and ends.
  const Loop loop = edgeLoop({CircularArcEdge{{0, 0}, 1.0, 1e300, -1e300, true},
                              CircularArcEdge{{0, 0}, 1.0, 1e20, 1e20 + 720, false},
                              EllipticArcEdge{{0, 0}, {2, 0}, 0.5, std::nan(""), 1e18, true}});
  EXPECT_LE(flatten(loop).size(), 3u * 1025);
  AcDbExtents box;
  addLoop(box, Transform::identity(), loop, 0.0);
  addEllipticArc(box, Transform::identity(), {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, 1e20, 1e20 + 1);
  EXPECT_FALSE(box.isEmpty());
  EXPECT_LE(box.maxPoint().x, 1.0 + 1e-12);
  EXPECT_GE(hatchArea({loop}, HatchStyle::kNormal), 0.0);
}

TEST(Geometry, LoopExtents) {
  // The clockwise quarter arc about (2,3) from (2,4) to (3,3): the box of the quarter disc, not
  // of the quarter its stored angles would give read counter-clockwise.
  const Loop loop = edgeLoop({LineEdge{{2, 3}, {2, 4}}, CircularArcEdge{{2, 3}, 1.0, 270, 360, false},
                              LineEdge{{3, 3}, {2, 3}}});
  AcDbExtents box;
  addLoop(box, Transform::identity(), loop, 5.0);
  EXPECT_NEAR(box.minPoint().x, 2, 1e-12);
  EXPECT_NEAR(box.minPoint().y, 3, 1e-12);
  EXPECT_NEAR(box.maxPoint().x, 3, 1e-12);
  EXPECT_NEAR(box.maxPoint().y, 4, 1e-12);
  EXPECT_NEAR(box.minPoint().z, 5, 1e-12);
}

}  // namespace
}  // namespace corvane::headless::geometry
