// Moving entities: every kind whose geometry the database models ends up with its box moved by
// exactly the displacement, object coordinate systems and attributes included.
#include "headless/db/displacement.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "headless/db/proxyobject.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using host::AcDbObjectId;
using host::AcGePoint3d;
using host::AcGeVector3d;
using testing::TestDrawing;

void expectNear(const AcGePoint3d& actual, const AcGePoint3d& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-9);
  EXPECT_NEAR(actual.y, expected.y, 1e-9);
  EXPECT_NEAR(actual.z, expected.z, 1e-9);
}

TEST(Displacement, EachKindsBoxMovesByTheDisplacement) {
  const AcGeVector3d offset{10.0, -4.0, 2.5};
  struct Case {
    const char* kind;
    std::function<AcDbObjectId(TestDrawing&)> make;
  } const cases[] = {
      {"line",
       [](TestDrawing& d) {
         return d.addLine({1, 2, 0}, {4, 6, 1});
       }},
      {"circle", [](TestDrawing& d) { return d.addCircle(2.0); }},
      {"tilted circle",
       [](TestDrawing& d) {
         const AcDbObjectId id = d.addCircle(1.5);
         d.db.get<Circle>(id)->setNormal({1.0, 1.0, 1.0});
         return id;
       }},
      {"arc",
       [](TestDrawing& d) {
         return d.addArc({1, 1, 0}, 2.0, 0.3, 2.0);
       }},
      {"polyline",
       [](TestDrawing& d) {
         return d.addPolyline({{{0, 0}, 0.5}, {{3, 0}}, {{3, 2}}}, true);
       }},
      {"hatch with edges",
       [](TestDrawing& d) {
         return d.addHatch({HatchLoop::edges(
             {geometry::LineEdge{{0, 0}, {4, 0}}, geometry::CircularArcEdge{{4, 2}, 2.0, 270.0, 90.0, true},
              geometry::LineEdge{{4, 4}, {0, 4}}, geometry::LineEdge{{0, 4}, {0, 0}}})});
       }},
      {"text", [](TestDrawing& d) { return d.addText(L"abc"); }},
      {"multiline text",
       [](TestDrawing& d) {
         return d.addMText(L"one\\Ptwo", {3, 3, 0}, 0.5);
       }},
      {"table",
       [](TestDrawing& d) {
         return d.addTable({{L"1", L"2"}}, {5, 5, 0});
       }},
      {"multileader",
       [](TestDrawing& d) {
         const AcDbObjectId id = d.addMLeader(L"note", {2, 2, 0});
         d.db.get<MLeader>(id)->addLeaderLine({{0, 0, 0}, {2, 2, 0}});
         return id;
       }},
      {"block reference with an attribute",
       [](TestDrawing& d) {
         const AcDbObjectId block = d.addBlock(L"Box");
         d.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 1, 0}), block);
         const AcDbObjectId reference = d.addBlockReference(block, {3, 3, 0});
         d.addAttribute(reference, L"TAG", L"value");
         return reference;
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.kind);
    TestDrawing d;
    const AcDbObjectId id = c.make(d);
    ASSERT_TRUE(isDisplaceable(d.db, id));
    host::AcDbExtents before, after;
    ASSERT_EQ(d.db.get<host::AcDbEntity>(id)->getGeomExtents(before), host::Acad::eOk);
    ASSERT_TRUE(displace(d.db, id, offset));
    ASSERT_EQ(d.db.get<host::AcDbEntity>(id)->getGeomExtents(after), host::Acad::eOk);
    const AcGePoint3d low = before.minPoint(), high = before.maxPoint();
    expectNear(after.minPoint(), {low.x + offset.x, low.y + offset.y, low.z + offset.z});
    expectNear(after.maxPoint(), {high.x + offset.x, high.y + offset.y, high.z + offset.z});
    if (const auto* reference = d.db.get<BlockReference>(id)) {
      const auto* attribute = d.db.get<Attribute>(reference->attributeIds().at(0));
      expectNear(attribute->position(), {offset.x, offset.y, offset.z});
    }
  }
}

TEST(Displacement, KindsWithoutModelledGeometryAreLeftAlone) {
  TestDrawing d;
  const auto kind = std::make_shared<const ProxyKind>(ProxyKind{L"SOLID", L"AcDbTrace"});
  const AcDbObjectId proxy = d.db.appendEntity(std::make_unique<ProxyEntity>(kind));
  EXPECT_FALSE(isDisplaceable(d.db, proxy));
  EXPECT_FALSE(displace(d.db, proxy, {1, 0, 0}));
  EXPECT_FALSE(displace(d.db, d.db.namedObjectsDictionaryId(), {1, 0, 0}));
}

}  // namespace
}  // namespace corvane::headless
