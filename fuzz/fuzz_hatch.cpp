// Hatch boundaries and polylines from arbitrary numbers, as a damaged drawing may hold them:
// areas, lengths and boxes must come out without hanging, and a hatch's area is never
// negative.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "headless/db/geometry.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using namespace corvane::headless::geometry;

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool more() const { return at_ < size_; }
  uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  // Small numbers most of the time, so that shapes are mostly sensible; any bits otherwise.
  double number() {
    const uint8_t kind = byte();
    if (kind % 4 != 0) return static_cast<int8_t>(byte()) / 4.0;
    double value = 0;
    if (at_ + sizeof value <= size_) std::memcpy(&value, data_ + at_, sizeof value);
    at_ += sizeof value;
    return value;
  }
  AcGePoint2d point() { return {number(), number()}; }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

Edge readEdge(Reader& in) {
  switch (in.byte() % 4) {
    case 0:
      return LineEdge{in.point(), in.point()};
    case 1:
      return CircularArcEdge{in.point(), in.number(), in.number(), in.number(), in.byte() % 2 == 0};
    case 2:
      return EllipticArcEdge{in.point(), {in.number(), in.number()}, in.number(), in.number(), in.number(),
                             in.byte() % 2 == 0};
    default: {
      SplineEdge spline;
      spline.degree = in.byte() % 8;
      spline.rational = in.byte() % 2 == 0;
      const int points = in.byte() % 16;
      for (int i = 0; i < points; ++i) spline.controlPoints.push_back(in.point());
      const int knots = points + spline.degree + 1 - in.byte() % 2;
      for (int i = 0; i < knots; ++i) spline.knots.push_back(in.byte() % 4 == 0 ? in.number() : i / 2);
      if (spline.rational) {
        for (int i = 0; i < points; ++i) spline.weights.push_back(in.number());
      }
      const int fits = in.byte() % 8;
      for (int i = 0; i < fits; ++i) spline.fitPoints.push_back(in.point());
      return spline;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in(data, size);
  std::vector<Loop> loops;
  while (in.more() && loops.size() < 8) {
    Loop loop;
    loop.isPolyline = in.byte() % 2 == 0;
    loop.closed = in.byte() % 4 != 0;
    const int count = in.byte() % 16;
    for (int i = 0; i < count; ++i) {
      if (loop.isPolyline) {
        loop.vertices.push_back({in.point(), in.number()});
      } else {
        loop.edges.push_back(readEdge(in));
      }
    }
    loops.push_back(std::move(loop));
  }
  for (const HatchStyle style : {HatchStyle::kNormal, HatchStyle::kOuter, HatchStyle::kIgnore}) {
    const double area = hatchArea(loops, style);
    if (!(area >= 0.0)) std::abort();
  }
  AcDbExtents box;
  const Transform turned = Transform::rotateZ(0.5) * Transform::fromOcs({0, 0, -1});
  for (const Loop& loop : loops) {
    addLoop(box, turned, loop, 1.0);
    (void)polylineArea(loop.vertices, loop.closed);
    (void)polylineLength(loop.vertices, loop.closed);
    addPolyline(box, turned, loop.vertices, loop.closed, 0.0);
    for (const Edge& edge : loop.edges) (void)edgeLength(edge);
  }
  return 0;
}
