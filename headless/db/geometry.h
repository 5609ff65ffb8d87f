// Plane and space geometry of drawing entities, free of any database: areas and lengths of
// curves and hatch boundaries, and boxes around geometry under an affine map.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <variant>
#include <span>
#include <vector>

#include "host/acdbextents.h"
#include "host/acgecurve2d.h"
#include "host/acgepoint.h"

namespace corvane::headless::geometry {

using host::AcDbExtents;
using host::AcGePoint2d;
using host::AcGePoint3d;
using host::AcGeVector2d;
using host::AcGeVector3d;

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kTwoPi = 2.0 * kPi;

// The included angle of a counter-clockwise arc from one angle to another (radians), in
// (0, 2pi]: equal angles make a full turn, as an arc entity whose ends meet is a circle.
double ccwSweep(double startAngle, double endAngle) noexcept;
// An angle brought into [0, 2pi).
double normalizeAngle(double angle) noexcept;

// ---- polylines ------------------------------------------------------------------------------

// A vertex of a polyline or of a hatch's polyline boundary. The bulge is the tangent of a
// quarter of the included angle of the arc to the next vertex; positive bulges turn
// counter-clockwise, 0 is a straight segment.
struct Vertex {
  AcGePoint2d point;
  double bulge = 0.0;
  double startWidth = 0.0;
  double endWidth = 0.0;
  bool operator==(const Vertex&) const = default;
};

// The circle a bulged segment runs on: its start angle and its signed sweep (positive
// counter-clockwise).
// The circle a bulged segment lies on; nullopt as for bulgeArc.
struct BulgeCircle {
  AcGePoint2d center;
  double radius = 0.0;
};
std::optional<BulgeCircle> bulgeCircle(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept;
struct BulgeArc {
  AcGePoint2d center;
  double radius = 0.0;
  double startAngle = 0.0;
  double sweep = 0.0;
};
// Nullopt for a straight segment (bulge 0) and for one whose ends coincide.
std::optional<BulgeArc> bulgeArc(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept;
double segmentLength(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept;
// The segment's share of the closed outline's signed area, 1/2 * integral of (x dy - y dx):
// the chord's term plus the circular segment between chord and arc, signed by the bulge.
double segmentAreaTerm(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept;
// The same arc as the host's 2D arc type hands it out (angles counter-clockwise, end >= start).
host::AcGeCircArc2d toCircArc(const BulgeArc& arc) noexcept;

// Signed area of the polyline's closed outline (positive counter-clockwise). An open
// polyline is closed by a straight line from its last vertex to its first: the last vertex's
// bulge belongs to no segment then. Widths play no part.
double polylineSignedArea(const std::vector<Vertex>& vertices, bool closed) noexcept;
double polylineArea(const std::vector<Vertex>& vertices, bool closed) noexcept;
// Length along the segments; the closing segment counts only when closed.
double polylineLength(const std::vector<Vertex>& vertices, bool closed) noexcept;

// ---- circles and arcs -----------------------------------------------------------------------

// The area between an arc and its chord, for an included angle in [0, 2pi].
double circularSegmentArea(double radius, double sweep) noexcept;

// ---- hatch boundary edges -------------------------------------------------------------------
//
// Edges hold their numbers as a drawing file stores them: angles in degrees, and for an edge
// that runs clockwise the negated angles (the edge starts at -start and runs clockwise to
// -end). Elliptic edges store the angles of their end points seen from the major axis, not
// ellipse parameters.

struct LineEdge {
  AcGePoint2d start;
  AcGePoint2d end;
  bool operator==(const LineEdge&) const = default;
};

struct CircularArcEdge {
  AcGePoint2d center;
  double radius = 0.0;
  double startAngle = 0.0;  // degrees, as stored
  double endAngle = 0.0;
  bool counterClockwise = true;
  bool operator==(const CircularArcEdge&) const = default;
};

struct EllipticArcEdge {
  AcGePoint2d center;
  AcGeVector2d majorAxis;  // from the centre to the end of the major axis
  double ratio = 1.0;      // minor axis length over major axis length
  double startAngle = 0.0;  // degrees, as stored
  double endAngle = 0.0;
  bool counterClockwise = true;
  bool operator==(const EllipticArcEdge&) const = default;
};

struct SplineEdge {
  int degree = 3;
  bool rational = false;
  bool periodic = false;
  std::vector<double> knots;
  std::vector<AcGePoint2d> controlPoints;
  std::vector<double> weights;  // one per control point when rational
  std::vector<AcGePoint2d> fitPoints;
  std::optional<AcGeVector2d> startTangent;
  std::optional<AcGeVector2d> endTangent;
  bool operator==(const SplineEdge&) const = default;
};

using Edge = std::variant<LineEdge, CircularArcEdge, EllipticArcEdge, SplineEdge>;

// An edge's share of its loop's signed area (1/2 * integral of (x dy - y dx)), exact for
// every kind: splines are integrated span by span. A spline without usable control points and
// knots counts as its fit points joined.
double edgeAreaTerm(const Edge& edge);
double edgeLength(const Edge& edge);
// The edge as a chain of points, arcs and splines cut into short chords; the first point is
// the edge's start, the last its end.
std::vector<AcGePoint2d> flatten(const Edge& edge);
// Points of a spline: its B-spline evaluated over the knot domain, or its fit points joined
// when it has no usable control points and knots.
std::vector<AcGePoint2d> splinePoints(const SplineEdge& spline);
// Where an elliptic edge's stored end lies as an ellipse parameter (radians): the angle seen
// from the major axis turned into the parameter of the point at that angle, in the same turn.
double ellipseParameterOfAngle(double angle, double ratio) noexcept;

// ---- hatch loops ----------------------------------------------------------------------------

// One boundary loop: either a polyline (vertices with bulges; a loop always closes, and one
// not flagged closed does so with a straight segment) or a chain of edges.
struct Loop {
  bool isPolyline = false;
  bool closed = true;
  std::vector<Vertex> vertices;
  std::vector<Edge> edges;
};

double loopSignedArea(const Loop& loop);
std::vector<AcGePoint2d> flatten(const Loop& loop);

// How a hatch treats loops inside loops: 0 normal (fill alternates with depth), 1 outer (the
// outermost loops less the islands right inside them; deeper loops ignored), 2 ignore (the
// outermost loops only).
enum class HatchStyle : int { kNormal = 0, kOuter = 1, kIgnore = 2 };

// Each loop's depth: how many of the other loops enclose it (tested at a point on it).
std::vector<int> loopDepths(const std::vector<Loop>& loops);
std::vector<int> loopDepths(std::span<const Loop* const> loops);
// The filled area: loops of even depth add their area and loops of odd depth take theirs away,
// within the depths the style fills.
double hatchArea(const std::vector<Loop>& loops, HatchStyle style);
double hatchArea(std::span<const Loop* const> loops, HatchStyle style);

// Even-odd test of a point against a closed chain of points.
bool insidePolygon(const std::vector<AcGePoint2d>& polygon, const AcGePoint2d& point) noexcept;

// ---- affine maps and boxes ------------------------------------------------------------------

// p -> linear * p + translation, columns of `linear` being the images of the axes.
struct Transform {
  std::array<AcGeVector3d, 3> axes{AcGeVector3d{1, 0, 0}, AcGeVector3d{0, 1, 0}, AcGeVector3d{0, 0, 1}};
  AcGeVector3d translation;

  AcGePoint3d apply(const AcGePoint3d& p) const noexcept;
  AcGeVector3d applyLinear(const AcGeVector3d& v) const noexcept;
  // this after other: (this * other)(p) = this(other(p)).
  Transform operator*(const Transform& other) const noexcept;

  static Transform identity() noexcept { return {}; }
  static Transform translate(const AcGeVector3d& offset) noexcept;
  static Transform rotateZ(double angle) noexcept;
  static Transform scale(double sx, double sy, double sz) noexcept;
  // From an entity's object coordinate system (given by its extrusion direction) to world
  // coordinates, by the arbitrary-axis rule of drawing files.
  static Transform fromOcs(const AcGeVector3d& normal) noexcept;
};

// Adds the points of P(t) = center + u cos t + v sin t for t from t0 to t1 (t0 <= t1), mapped
// by the transform: the ends and each coordinate's turning points in between.
void addEllipticArc(AcDbExtents& extents, const Transform& transform, const AcGePoint3d& center,
                    const AcGeVector3d& u, const AcGeVector3d& v, double t0, double t1) noexcept;
void addPoint(AcDbExtents& extents, const Transform& transform, const AcGePoint3d& point) noexcept;
// The polyline's vertices and bulged segments at the elevation (object coordinates).
void addPolyline(AcDbExtents& extents, const Transform& transform, const std::vector<Vertex>& vertices, bool closed,
                 double elevation) noexcept;
// A hatch loop's edges at the elevation (object coordinates).
void addLoop(AcDbExtents& extents, const Transform& transform, const Loop& loop, double elevation);

// A rectangle [x0, x1] x [y0, y1] in a frame turned by the rotation about the origin.
void addRectangle(AcDbExtents& extents, const Transform& transform, const AcGePoint3d& origin, double rotation,
                  double x0, double y0, double x1, double y1) noexcept;

// Texts are measured without their fonts: each character counts as wide as the text is high,
// times the width factor. Good enough to tell where a text lies, not to fit a frame to it.
double estimatedTextWidth(std::wstring_view line, double height, double widthFactor = 1.0) noexcept;

}  // namespace corvane::headless::geometry
