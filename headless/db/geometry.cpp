#include "headless/db/geometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvane::headless::geometry {

namespace {

constexpr double kDegree = kPi / 180.0;
// Arcs and ellipses are cut into chords of at most this angle where a chain of points is
// needed (island tests, spline-free boundaries); areas and lengths of arcs stay exact.
constexpr double kFlatteningStep = kTwoPi / 256.0;
constexpr int kSplineSamplesPerSpan = 64;
// Beyond any degree a drawing program writes; evaluation cost grows with its square.
constexpr int kMaxSplineDegree = 25;

double cross(const AcGePoint2d& a, const AcGePoint2d& b) noexcept { return a.x * b.y - a.y * b.x; }
double cross(const AcGeVector2d& a, const AcGeVector2d& b) noexcept { return a.x * b.y - a.y * b.x; }

AcGeVector3d crossProduct(const AcGeVector3d& a, const AcGeVector3d& b) noexcept {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

AcGeVector3d normalized(const AcGeVector3d& v) noexcept {
  const double length = v.length();
  if (length == 0.0) return {0, 0, 1};
  return {v.x / length, v.y / length, v.z / length};
}

// An ellipse (a circle being one) in the plane: P(t) = center + major cos t + minor sin t,
// run from t0 to t1, t1 < t0 meaning clockwise.
struct PlaneEllipse {
  AcGePoint2d center;
  AcGeVector2d major;
  AcGeVector2d minor;
  double t0 = 0.0;
  double t1 = 0.0;

  AcGePoint2d at(double t) const noexcept {
    return {center.x + major.x * std::cos(t) + minor.x * std::sin(t),
            center.y + major.y * std::cos(t) + minor.y * std::sin(t)};
  }
  double areaTerm() const noexcept {
    const AcGePoint2d a = at(t0);
    const AcGePoint2d b = at(t1);
    const AcGePoint2d chord{b.x - a.x, b.y - a.y};
    return 0.5 * (cross(center, chord) + cross(major, minor) * (t1 - t0));
  }
  double length() const noexcept {
    // Composite Simpson over the speed |P'(t)|, fine enough to be exact to the last digits
    // that matter for any ellipse a drawing holds.
    const int n = 512;
    const double h = (t1 - t0) / n;
    auto speed = [this](double t) {
      return std::hypot(-major.x * std::sin(t) + minor.x * std::cos(t), -major.y * std::sin(t) + minor.y * std::cos(t));
    };
    double sum = speed(t0) + speed(t1);
    for (int i = 1; i < n; ++i) sum += speed(t0 + i * h) * (i % 2 == 1 ? 4.0 : 2.0);
    return std::abs(sum * h / 3.0);
  }
  std::vector<AcGePoint2d> points() const {
    const double steps = std::ceil(std::abs(t1 - t0) / kFlatteningStep);
    const int n = std::isfinite(steps) ? std::clamp(static_cast<int>(std::min(steps, 1024.0)), 1, 1024) : 1;
    std::vector<AcGePoint2d> result;
    result.reserve(static_cast<std::size_t>(n) + 1);
    for (int i = 0; i <= n; ++i) result.push_back(at(t0 + (t1 - t0) * i / n));
    return result;
  }
};

// The stored angles of an edge turned into its run of parameters: counter-clockwise edges
// run up from start to end, clockwise ones down from -start to -end.
// A run never exceeds a full turn, whatever numbers a file holds.
void orientRun(double& t0, double& t1, bool counterClockwise) noexcept {
  double d = t1 - t0;
  if (!std::isfinite(d)) {
    t1 = t0;
    return;
  }
  if (counterClockwise) {
    if (d > kTwoPi) d = kTwoPi;
    if (d < 0.0) d = std::fmod(d, kTwoPi) + kTwoPi;
  } else {
    if (d < -kTwoPi) d = -kTwoPi;
    if (d > 0.0) d = std::fmod(d, kTwoPi) - kTwoPi;
  }
  t1 = t0 + d;
}

PlaneEllipse toEllipse(const CircularArcEdge& edge) noexcept {
  const double sign = edge.counterClockwise ? 1.0 : -1.0;
  PlaneEllipse e{edge.center, {edge.radius, 0.0}, {0.0, edge.radius}, sign * edge.startAngle * kDegree,
                 sign * edge.endAngle * kDegree};
  orientRun(e.t0, e.t1, edge.counterClockwise);
  return e;
}

PlaneEllipse toEllipse(const EllipticArcEdge& edge) noexcept {
  const double sign = edge.counterClockwise ? 1.0 : -1.0;
  // The stored angles are measured from the major axis; the parameter works in the same
  // frame, so the axis direction itself does not enter.
  PlaneEllipse e{edge.center,
                 edge.majorAxis,
                 {-edge.majorAxis.y * edge.ratio, edge.majorAxis.x * edge.ratio},
                 ellipseParameterOfAngle(sign * edge.startAngle * kDegree, edge.ratio),
                 ellipseParameterOfAngle(sign * edge.endAngle * kDegree, edge.ratio)};
  orientRun(e.t0, e.t1, edge.counterClockwise);
  return e;
}

double chainAreaTerm(const std::vector<AcGePoint2d>& points) noexcept {
  double sum = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) sum += 0.5 * cross(points[i - 1], points[i]);
  return sum;
}

double chainLength(const std::vector<AcGePoint2d>& points) noexcept {
  double sum = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) sum += points[i - 1].distanceTo(points[i]);
  return sum;
}

void appendPoint(std::vector<AcGePoint2d>& chain, const AcGePoint2d& p) {
  if (chain.empty() || !(chain.back() == p)) chain.push_back(p);
}

void appendChain(std::vector<AcGePoint2d>& chain, const std::vector<AcGePoint2d>& part) {
  for (const AcGePoint2d& p : part) appendPoint(chain, p);
}

bool usableSpline(const SplineEdge& s) noexcept {
  const std::size_t n = s.controlPoints.size();
  if (s.degree < 1 || s.degree > kMaxSplineDegree || n <= static_cast<std::size_t>(s.degree)) return false;
  if (s.knots.size() != n + static_cast<std::size_t>(s.degree) + 1) return false;
  if (s.rational && s.weights.size() != n) return false;
  if (!std::is_sorted(s.knots.begin(), s.knots.end())) return false;
  return s.knots[static_cast<std::size_t>(s.degree)] < s.knots[n];
}

// A B-spline in homogeneous coordinates (x w, y w, w): a polynomial spline even when the
// curve is rational, so that its derivative is one too.
using Homogeneous = std::array<double, 3>;
struct HomogeneousSpline {
  std::size_t degree = 0;
  std::vector<double> knots;
  std::vector<Homogeneous> control;
};

HomogeneousSpline homogeneous(const SplineEdge& s) {
  HomogeneousSpline h{static_cast<std::size_t>(s.degree), s.knots, {}};
  h.control.reserve(s.controlPoints.size());
  for (std::size_t i = 0; i < s.controlPoints.size(); ++i) {
    const double w = s.rational ? s.weights[i] : 1.0;
    h.control.push_back({s.controlPoints[i].x * w, s.controlPoints[i].y * w, w});
  }
  return h;
}

// The derivative: degree one less, control points p (P[i+1] - P[i]) / (u[i+p+1] - u[i+1]), the
// knot vector without its first and last knot. Its span k - 1 lies over the spline's span k.
HomogeneousSpline derivative(const HomogeneousSpline& h) {
  const std::size_t p = h.degree;
  HomogeneousSpline d{p - 1, std::vector<double>(h.knots.begin() + 1, h.knots.end() - 1), {}};
  for (std::size_t i = 0; i + 1 < h.control.size(); ++i) {
    const double span = h.knots[i + p + 1] - h.knots[i + 1];
    const double f = span == 0.0 ? 0.0 : static_cast<double>(p) / span;
    d.control.push_back({f * (h.control[i + 1][0] - h.control[i][0]), f * (h.control[i + 1][1] - h.control[i][1]),
                         f * (h.control[i + 1][2] - h.control[i][2])});
  }
  return d;
}

// De Boor's algorithm for the knot span [k, k + 1).
Homogeneous deBoor(const HomogeneousSpline& h, std::size_t k, double u) {
  const std::size_t p = h.degree;
  std::array<Homogeneous, kMaxSplineDegree + 1> d{};
  for (std::size_t j = 0; j <= p; ++j) d[j] = h.control[j + k - p];
  for (std::size_t r = 1; r <= p; ++r) {
    for (std::size_t j = p; j >= r; --j) {
      const std::size_t i = j + k - p;
      const double denominator = h.knots[i + p - r + 1] - h.knots[i];
      const double alpha = denominator == 0.0 ? 0.0 : (u - h.knots[i]) / denominator;
      for (std::size_t c = 0; c < 3; ++c) d[j][c] = (1.0 - alpha) * d[j - 1][c] + alpha * d[j][c];
    }
  }
  return d[p];
}

AcGePoint2d toPoint(const Homogeneous& h) noexcept {
  const double w = h[2] == 0.0 ? 1.0 : h[2];
  return {h[0] / w, h[1] / w};
}

// Gauss-Legendre nodes and weights of order 8 on [-1, 1] (the positive half): exact for
// polynomials up to degree 15, which covers the area integrand of every polynomial spline up
// to degree 8.
constexpr std::array<double, 4> kGaussNodes{0.1834346424956498, 0.5255324099163290, 0.7966664774136267,
                                           0.9602898564975363};
constexpr std::array<double, 4> kGaussWeights{0.3626837833783620, 0.3137066458778873, 0.2223810344533745,
                                             0.1012285362903763};
// Each knot span is cut into this many pieces, for rational splines and for lengths, whose
// integrands are no polynomials.
constexpr int kGaussPieces = 8;

// Integrates f(point, derivative) over the spline's domain, in homogeneous coordinates.
template <typename F>
double integrateSpline(const SplineEdge& spline, F f) {
  const HomogeneousSpline h = homogeneous(spline);
  const HomogeneousSpline d = derivative(h);
  const std::size_t p = h.degree;
  double sum = 0.0;
  for (std::size_t k = p; k < h.control.size(); ++k) {
    const double a = h.knots[k];
    const double b = h.knots[k + 1];
    if (!(a < b)) continue;
    const double piece = (b - a) / kGaussPieces;
    for (int q = 0; q < kGaussPieces; ++q) {
      const double middle = a + piece * (q + 0.5);
      for (std::size_t g = 0; g < kGaussNodes.size(); ++g) {
        for (const double side : {-1.0, 1.0}) {
          const double u = middle + side * kGaussNodes[g] * piece / 2;
          sum += kGaussWeights[g] * piece / 2 * f(deBoor(h, k, u), deBoor(d, k - 1, u));
        }
      }
    }
  }
  return sum;
}

// 1/2 (x y' - y x') of the curve x = X/W, y = Y/W is 1/2 (X Y' - Y X') / W^2.
double splineAreaTerm(const SplineEdge& spline) {
  return integrateSpline(spline, [](const Homogeneous& c, const Homogeneous& dc) {
    return c[2] == 0.0 ? 0.0 : 0.5 * (c[0] * dc[1] - c[1] * dc[0]) / (c[2] * c[2]);
  });
}

// |C'| with C' = (X' W - X W', Y' W - Y W') / W^2.
double splineLength(const SplineEdge& spline) {
  return integrateSpline(spline, [](const Homogeneous& c, const Homogeneous& dc) {
    if (c[2] == 0.0) return 0.0;
    return std::hypot(dc[0] * c[2] - c[0] * dc[2], dc[1] * c[2] - c[1] * dc[2]) / (c[2] * c[2]);
  });
}

void addXY(AcDbExtents& extents, const Transform& transform, const AcGePoint2d& p, double z) noexcept {
  extents.addPoint(transform.apply({p.x, p.y, z}));
}

}  // namespace

double normalizeAngle(double angle) noexcept {
  // Most angles are at most one turn off; for them the remainder is one addition.
  if (angle >= 0.0 && angle < kTwoPi) return angle;
  if (angle < 0.0 && angle >= -kTwoPi) {
    const double r = angle + kTwoPi;
    return r >= kTwoPi ? 0.0 : r;
  }
  double r = std::fmod(angle, kTwoPi);
  if (r < 0.0) r += kTwoPi;
  if (r >= kTwoPi) r = 0.0;
  return r;
}

double ccwSweep(double startAngle, double endAngle) noexcept {
  double d = std::fmod(endAngle - startAngle, kTwoPi);
  if (d <= 0.0) d += kTwoPi;
  return d;
}

std::optional<BulgeCircle> bulgeCircle(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept {
  const double chord = from.distanceTo(to);
  if (bulge == 0.0 || chord == 0.0) return std::nullopt;
  const AcGePoint2d middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
  const AcGeVector2d left{-(to.y - from.y) / chord, (to.x - from.x) / chord};
  // With b = tan(sweep / 4): tan(sweep / 2) = 2b / (1 - b^2) and sin(sweep / 2) = 2b / (1 + b^2).
  const double offset = chord * (1.0 - bulge * bulge) / (4.0 * bulge);
  BulgeCircle circle;
  circle.center = {middle.x + left.x * offset, middle.y + left.y * offset};
  circle.radius = chord * (1.0 + bulge * bulge) / (4.0 * std::abs(bulge));
  return circle;
}

std::optional<BulgeArc> bulgeArc(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept {
  const auto circle = bulgeCircle(from, to, bulge);
  if (!circle) return std::nullopt;
  BulgeArc arc;
  arc.center = circle->center;
  arc.radius = circle->radius;
  arc.startAngle = std::atan2(from.y - arc.center.y, from.x - arc.center.x);
  arc.sweep = 4.0 * std::atan(bulge);
  return arc;
}

double segmentLength(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept {
  const auto arc = bulgeArc(from, to, bulge);
  return arc ? arc->radius * std::abs(arc->sweep) : from.distanceTo(to);
}

double segmentAreaTerm(const AcGePoint2d& from, const AcGePoint2d& to, double bulge) noexcept {
  const double chordTerm = 0.5 * cross(from, to);
  const double dx = to.x - from.x, dy = to.y - from.y;
  const double chordSquared = dx * dx + dy * dy;
  if (bulge == 0.0 || chordSquared == 0.0) return chordTerm;
  // The circular segment between chord and arc, from the bulge alone: with b = tan(sweep / 4),
  // sin(sweep / 2) = 2b / (1 + b^2) gives the radius, and sin(sweep) = 4b (1 - b^2) / (1 + b^2)^2.
  const double b = std::abs(bulge);
  const double onePlus = 1.0 + b * b;
  const double sweep = 4.0 * std::atan(b);
  const double radiusSquared = chordSquared * onePlus * onePlus / (16.0 * b * b);
  const double segment = radiusSquared / 2 * (sweep - 4.0 * b * (1.0 - b * b) / (onePlus * onePlus));
  return chordTerm + (bulge > 0 ? segment : -segment);
}

host::AcGeCircArc2d toCircArc(const BulgeArc& arc) noexcept {
  const bool clockWise = arc.sweep < 0;
  // A clockwise arc is listed from where the same points start counter-clockwise.
  const double start = normalizeAngle(clockWise ? arc.startAngle + arc.sweep : arc.startAngle);
  return host::AcGeCircArc2d(arc.center, arc.radius, start, start + std::abs(arc.sweep), clockWise);
}

double polylineSignedArea(const std::vector<Vertex>& vertices, bool closed) noexcept {
  const std::size_t n = vertices.size();
  if (n < 2) return 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    sum += segmentAreaTerm(vertices[i].point, vertices[i + 1].point, vertices[i].bulge);
  }
  // The closing segment: bulged only when the polyline is closed.
  return sum + segmentAreaTerm(vertices[n - 1].point, vertices[0].point, closed ? vertices[n - 1].bulge : 0.0);
}

double polylineArea(const std::vector<Vertex>& vertices, bool closed) noexcept {
  return std::abs(polylineSignedArea(vertices, closed));
}

double polylineLength(const std::vector<Vertex>& vertices, bool closed) noexcept {
  const std::size_t n = vertices.size();
  if (n < 2) return 0.0;
  double sum = 0.0;
  const std::size_t segments = closed ? n : n - 1;
  for (std::size_t i = 0; i < segments; ++i) {
    sum += segmentLength(vertices[i].point, vertices[(i + 1) % n].point, vertices[i].bulge);
  }
  return sum;
}

double circularSegmentArea(double radius, double sweep) noexcept {
  return radius * radius / 2 * (sweep - std::sin(sweep));
}

double ellipseParameterOfAngle(double angle, double ratio) noexcept {
  if (ratio <= 0.0) return angle;
  double t = std::atan2(std::sin(angle) / ratio, std::cos(angle));
  // Angle and parameter share a quadrant, so the nearest turn is the right one.
  t += kTwoPi * std::round((angle - t) / kTwoPi);
  return t;
}

std::vector<AcGePoint2d> splinePoints(const SplineEdge& spline) {
  if (!usableSpline(spline)) return spline.fitPoints.size() >= 2 ? spline.fitPoints : spline.controlPoints;
  const HomogeneousSpline h = homogeneous(spline);
  std::vector<AcGePoint2d> points;
  for (std::size_t k = h.degree; k < h.control.size(); ++k) {
    const double a = h.knots[k];
    const double b = h.knots[k + 1];
    if (!(a < b)) continue;
    for (int i = points.empty() ? 0 : 1; i <= kSplineSamplesPerSpan; ++i) {
      points.push_back(toPoint(deBoor(h, k, a + (b - a) * i / kSplineSamplesPerSpan)));
    }
  }
  return points;
}

std::vector<AcGePoint2d> flatten(const Edge& edge) {
  if (const auto* line = std::get_if<LineEdge>(&edge)) return {line->start, line->end};
  if (const auto* arc = std::get_if<CircularArcEdge>(&edge)) return toEllipse(*arc).points();
  if (const auto* ellipse = std::get_if<EllipticArcEdge>(&edge)) return toEllipse(*ellipse).points();
  return splinePoints(std::get<SplineEdge>(edge));
}

double edgeAreaTerm(const Edge& edge) {
  if (const auto* line = std::get_if<LineEdge>(&edge)) return 0.5 * cross(line->start, line->end);
  if (const auto* arc = std::get_if<CircularArcEdge>(&edge)) return toEllipse(*arc).areaTerm();
  if (const auto* ellipse = std::get_if<EllipticArcEdge>(&edge)) return toEllipse(*ellipse).areaTerm();
  const auto& spline = std::get<SplineEdge>(edge);
  return usableSpline(spline) ? splineAreaTerm(spline) : chainAreaTerm(splinePoints(spline));
}

double edgeLength(const Edge& edge) {
  if (const auto* line = std::get_if<LineEdge>(&edge)) return line->start.distanceTo(line->end);
  if (const auto* arc = std::get_if<CircularArcEdge>(&edge)) {
    const PlaneEllipse e = toEllipse(*arc);
    return arc->radius * std::abs(e.t1 - e.t0);
  }
  if (const auto* ellipse = std::get_if<EllipticArcEdge>(&edge)) return toEllipse(*ellipse).length();
  const auto& spline = std::get<SplineEdge>(edge);
  return usableSpline(spline) ? splineLength(spline) : chainLength(splinePoints(spline));
}

double loopSignedArea(const Loop& loop) {
  if (loop.isPolyline) return polylineSignedArea(loop.vertices, loop.closed);
  double sum = 0.0;
  for (const Edge& edge : loop.edges) sum += edgeAreaTerm(edge);
  return sum;
}

std::vector<AcGePoint2d> flatten(const Loop& loop) {
  std::vector<AcGePoint2d> chain;
  if (loop.isPolyline) {
    const std::size_t n = loop.vertices.size();
    for (std::size_t i = 0; i < n; ++i) {
      const Vertex& v = loop.vertices[i];
      const Vertex& next = loop.vertices[(i + 1) % n];
      const double bulge = (i + 1 == n && !loop.closed) ? 0.0 : v.bulge;
      if (const auto arc = bulgeArc(v.point, next.point, bulge)) {
        const PlaneEllipse e{arc->center, {arc->radius, 0}, {0, arc->radius}, arc->startAngle,
                             arc->startAngle + arc->sweep};
        appendChain(chain, e.points());
      } else {
        appendPoint(chain, v.point);
        appendPoint(chain, next.point);
      }
    }
  } else {
    for (const Edge& edge : loop.edges) appendChain(chain, flatten(edge));
  }
  return chain;
}

namespace {

// The point-in-polygon test by crossings, over any list of points read through `at`.
template <typename Points, typename At>
bool insideRing(const Points& polygon, At at, const AcGePoint2d& point) noexcept {
  bool inside = false;
  const std::size_t n = polygon.size();
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    const AcGePoint2d& a = at(polygon[i]);
    const AcGePoint2d& b = at(polygon[j]);
    if ((a.y > point.y) != (b.y > point.y) && point.x < a.x + (point.y - a.y) * (b.x - a.x) / (b.y - a.y)) {
      inside = !inside;
    }
  }
  return inside;
}

// A point on a loop away from its corners, where loops that touch meet least often: the middle
// of its first edge that has a length.
template <typename Points, typename At>
AcGePoint2d probeOf(const Points& ring, At at) noexcept {
  for (std::size_t k = 1; k < ring.size(); ++k) {
    const AcGePoint2d& a = at(ring[k - 1]);
    const AcGePoint2d& b = at(ring[k]);
    if (!(a == b)) return {(a.x + b.x) / 2, (a.y + b.y) / 2};
  }
  return at(ring.front());
}

const AcGePoint2d& itself(const AcGePoint2d& p) noexcept { return p; }
const AcGePoint2d& pointOf(const Vertex& v) noexcept { return v.point; }

bool isStraight(const Loop& loop) noexcept {
  if (!loop.isPolyline) return false;
  for (const Vertex& v : loop.vertices) {
    if (v.bulge != 0.0) return false;
  }
  return true;
}

// How many other loops hold each loop, into `depths`. Straight loops are their own polygons;
// others are flattened first, with a box around each to spare most point tests.
void rankLoops(std::span<const Loop* const> loops, std::span<int> depths) {
  std::fill(depths.begin(), depths.end(), 0);
  if (loops.size() < 2) return;
  if (std::all_of(loops.begin(), loops.end(), [](const Loop* loop) { return isStraight(*loop); })) {
    for (std::size_t i = 0; i < loops.size(); ++i) {
      const std::vector<Vertex>& own = loops[i]->vertices;
      if (own.empty()) continue;
      const AcGePoint2d probe = probeOf(own, pointOf);
      for (std::size_t j = 0; j < loops.size(); ++j) {
        const std::vector<Vertex>& other = loops[j]->vertices;
        if (j != i && other.size() >= 3 && insideRing(other, pointOf, probe)) ++depths[i];
      }
    }
    return;
  }
  std::vector<std::vector<AcGePoint2d>> chains;
  chains.reserve(loops.size());
  for (const Loop* loop : loops) chains.push_back(flatten(*loop));
  std::vector<std::array<double, 4>> boxes;
  boxes.reserve(chains.size());
  for (const auto& chain : chains) {
    std::array<double, 4> box{0, 0, -1, -1};
    for (std::size_t k = 0; k < chain.size(); ++k) {
      const AcGePoint2d& p = chain[k];
      box = k == 0 ? std::array<double, 4>{p.x, p.y, p.x, p.y}
                   : std::array<double, 4>{std::min(box[0], p.x), std::min(box[1], p.y), std::max(box[2], p.x),
                                           std::max(box[3], p.y)};
    }
    boxes.push_back(box);
  }
  auto inBox = [](const std::array<double, 4>& box, const AcGePoint2d& p) {
    return p.x >= box[0] && p.x <= box[2] && p.y >= box[1] && p.y <= box[3];
  };
  for (std::size_t i = 0; i < loops.size(); ++i) {
    if (chains[i].empty()) continue;
    const AcGePoint2d probe = probeOf(chains[i], itself);
    for (std::size_t j = 0; j < loops.size(); ++j) {
      if (j != i && chains[j].size() >= 3 && inBox(boxes[j], probe) && insideRing(chains[j], itself, probe)) {
        ++depths[i];
      }
    }
  }
}

}  // namespace

bool insidePolygon(const std::vector<AcGePoint2d>& polygon, const AcGePoint2d& point) noexcept {
  return insideRing(polygon, itself, point);
}

std::vector<int> loopDepths(const std::vector<Loop>& loops) {
  std::vector<const Loop*> pointers;
  pointers.reserve(loops.size());
  for (const Loop& loop : loops) pointers.push_back(&loop);
  return loopDepths(pointers);
}

std::vector<int> loopDepths(std::span<const Loop* const> loops) {
  std::vector<int> depths(loops.size(), 0);
  rankLoops(loops, depths);
  return depths;
}

double hatchArea(const std::vector<Loop>& loops, HatchStyle style) {
  std::vector<const Loop*> pointers;
  pointers.reserve(loops.size());
  for (const Loop& loop : loops) pointers.push_back(&loop);
  return hatchArea(pointers, style);
}

double hatchArea(std::span<const Loop* const> loops, HatchStyle style) {
  // The depths of a few loops, the common hatch, stay off the heap.
  constexpr std::size_t kFew = 8;
  std::array<int, kFew> few{};
  std::vector<int> many(loops.size() > kFew ? loops.size() : 0);
  const std::span<int> depths = loops.size() > kFew ? std::span<int>(many) : std::span<int>(few.data(), loops.size());
  rankLoops(loops, depths);
  const int deepest = style == HatchStyle::kIgnore ? 0 : style == HatchStyle::kOuter ? 1 : -1;
  double total = 0.0;
  for (std::size_t i = 0; i < loops.size(); ++i) {
    if (deepest >= 0 && depths[i] > deepest) continue;
    const double area = std::abs(loopSignedArea(*loops[i]));
    total += depths[i] % 2 == 0 ? area : -area;
  }
  return std::max(0.0, total);
}

AcGeVector3d Transform::applyLinear(const AcGeVector3d& v) const noexcept {
  return {axes[0].x * v.x + axes[1].x * v.y + axes[2].x * v.z, axes[0].y * v.x + axes[1].y * v.y + axes[2].y * v.z,
          axes[0].z * v.x + axes[1].z * v.y + axes[2].z * v.z};
}

AcGePoint3d Transform::apply(const AcGePoint3d& p) const noexcept {
  const AcGeVector3d v = applyLinear({p.x, p.y, p.z});
  return {v.x + translation.x, v.y + translation.y, v.z + translation.z};
}

Transform Transform::operator*(const Transform& other) const noexcept {
  Transform result;
  for (std::size_t k = 0; k < 3; ++k) result.axes[k] = applyLinear(other.axes[k]);
  const AcGePoint3d t = apply({other.translation.x, other.translation.y, other.translation.z});
  result.translation = {t.x, t.y, t.z};
  return result;
}

Transform Transform::translate(const AcGeVector3d& offset) noexcept {
  Transform t;
  t.translation = offset;
  return t;
}

Transform Transform::rotateZ(double angle) noexcept {
  Transform t;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  t.axes[0] = {c, s, 0};
  t.axes[1] = {-s, c, 0};
  return t;
}

Transform Transform::scale(double sx, double sy, double sz) noexcept {
  Transform t;
  t.axes[0] = {sx, 0, 0};
  t.axes[1] = {0, sy, 0};
  t.axes[2] = {0, 0, sz};
  return t;
}

Transform Transform::fromOcs(const AcGeVector3d& normal) noexcept {
  const AcGeVector3d n = normalized(normal);
  constexpr double kLimit = 1.0 / 64.0;
  const AcGeVector3d reference = (std::abs(n.x) < kLimit && std::abs(n.y) < kLimit) ? AcGeVector3d{0, 1, 0}
                                                                                  : AcGeVector3d{0, 0, 1};
  const AcGeVector3d ax = normalized(crossProduct(reference, n));
  const AcGeVector3d ay = normalized(crossProduct(n, ax));
  Transform t;
  t.axes = {ax, ay, n};
  return t;
}

void addPoint(AcDbExtents& extents, const Transform& transform, const AcGePoint3d& point) noexcept {
  extents.addPoint(transform.apply(point));
}

void addEllipticArc(AcDbExtents& extents, const Transform& transform, const AcGePoint3d& center,
                    const AcGeVector3d& u, const AcGeVector3d& v, double t0, double t1) noexcept {
  if (!std::isfinite(t0) || !std::isfinite(t1)) return;
  if (t1 < t0) std::swap(t0, t1);
  // Far from zero the parameters lose their fraction: work within one turn of it.
  const double run = std::min(t1 - t0, kTwoPi);
  t0 = std::fmod(t0, kTwoPi);
  t1 = t0 + run;
  const AcGePoint3d c = transform.apply(center);
  const AcGeVector3d tu = transform.applyLinear(u);
  const AcGeVector3d tv = transform.applyLinear(v);
  auto at = [&](double t) {
    const double ct = std::cos(t);
    const double st = std::sin(t);
    return AcGePoint3d{c.x + tu.x * ct + tv.x * st, c.y + tu.y * ct + tv.y * st, c.z + tu.z * ct + tv.z * st};
  };
  extents.addPoint(at(t0));
  extents.addPoint(at(t1));
  // Each coordinate turns where -u sin t + v cos t vanishes: t = atan2(v, u) + m pi.
  const std::array<std::array<double, 2>, 3> coefficients{{{tu.x, tv.x}, {tu.y, tv.y}, {tu.z, tv.z}}};
  for (const auto& [a, b] : coefficients) {
    if (a == 0.0 && b == 0.0) continue;
    const double base = std::atan2(b, a);
    const double first = std::ceil((t0 - base) / kPi);
    for (int k = 0; k < 4 && base + (first + k) * kPi <= t1; ++k) extents.addPoint(at(base + (first + k) * kPi));
  }
}

void addPolyline(AcDbExtents& extents, const Transform& transform, const std::vector<Vertex>& vertices, bool closed,
                 double elevation) noexcept {
  const std::size_t n = vertices.size();
  for (std::size_t i = 0; i < n; ++i) {
    addXY(extents, transform, vertices[i].point, elevation);
    if (i + 1 == n && !closed) break;
    const auto arc = bulgeArc(vertices[i].point, vertices[(i + 1) % n].point, vertices[i].bulge);
    if (!arc) continue;
    addEllipticArc(extents, transform, {arc->center.x, arc->center.y, elevation}, {arc->radius, 0, 0},
                   {0, arc->radius, 0}, arc->startAngle, arc->startAngle + arc->sweep);
  }
}

void addLoop(AcDbExtents& extents, const Transform& transform, const Loop& loop, double elevation) {
  if (loop.isPolyline) {
    addPolyline(extents, transform, loop.vertices, loop.closed, elevation);
    return;
  }
  for (const Edge& edge : loop.edges) {
    if (const auto* line = std::get_if<LineEdge>(&edge)) {
      addXY(extents, transform, line->start, elevation);
      addXY(extents, transform, line->end, elevation);
      continue;
    }
    const CircularArcEdge* arc = std::get_if<CircularArcEdge>(&edge);
    const EllipticArcEdge* ellipticArc = std::get_if<EllipticArcEdge>(&edge);
    if (arc || ellipticArc) {
      const PlaneEllipse e = arc ? toEllipse(*arc) : toEllipse(*ellipticArc);
      addEllipticArc(extents, transform, {e.center.x, e.center.y, elevation}, {e.major.x, e.major.y, 0},
                     {e.minor.x, e.minor.y, 0}, e.t0, e.t1);
      continue;
    }
    for (const AcGePoint2d& p : splinePoints(std::get<SplineEdge>(edge))) addXY(extents, transform, p, elevation);
  }
}

void addRectangle(AcDbExtents& extents, const Transform& transform, const AcGePoint3d& origin, double rotation,
                  double x0, double y0, double x1, double y1) noexcept {
  const Transform frame = transform * Transform::translate({origin.x, origin.y, origin.z}) * Transform::rotateZ(rotation);
  for (const double x : {x0, x1}) {
    for (const double y : {y0, y1}) extents.addPoint(frame.apply({x, y, 0}));
  }
}

double estimatedTextWidth(std::wstring_view line, double height, double widthFactor) noexcept {
  return static_cast<double>(line.size()) * height * widthFactor;
}

}  // namespace corvane::headless::geometry
