// The box every entity reports for itself, and block references for their blocks in place.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using corvane::testing::TestDrawing;
using host::Acad;
using host::AcGePoint3d;

constexpr double kPiValue = 3.14159265358979323846;

struct Box {
  double x0, y0, x1, y1;
};

void expectBox(TestDrawing& d, host::AcDbObjectId id, const Box& expected, const char* name) {
  host::AcDbObjectPointer<host::AcDbEntity> entity(d.host, id, host::AcDb::kForRead);
  ASSERT_TRUE(entity) << name;
  host::AcDbExtents box;
  ASSERT_EQ(entity->getGeomExtents(box), Acad::eOk) << name;
  EXPECT_NEAR(box.minPoint().x, expected.x0, 1e-9) << name;
  EXPECT_NEAR(box.minPoint().y, expected.y0, 1e-9) << name;
  EXPECT_NEAR(box.maxPoint().x, expected.x1, 1e-9) << name;
  EXPECT_NEAR(box.maxPoint().y, expected.y1, 1e-9) << name;
}

TEST(Extents, OfEachKind) {
  TestDrawing d;
  auto text = std::make_unique<Text>(Text::Point{1, 1, 0}, 2.0, L"abc");
  auto rotatedText = std::make_unique<Text>(Text::Point{0, 0, 0}, 1.0, L"ab");
  rotatedText->setRotation(kPiValue / 2);
  struct Case {
    const char* name;
    host::AcDbObjectId id;
    Box box;
  } const cases[] = {
      {"line", d.addLine({3, 4, 0}, {-1, 2, 0}), {-1, 2, 3, 4}},
      {"circle", d.addCircle(2), {-2, -2, 2, 2}},
      // radius 2 about (1,1) from 45 to 135 deg: ends at 1 -+ sqrt 2, top at y = 3
      {"arc over the top", d.addArc({1, 1, 0}, 2, kPiValue / 4, 3 * kPiValue / 4),
       {1 - std::sqrt(2.0), 1 + std::sqrt(2.0), 1 + std::sqrt(2.0), 3}},
      // the half turn from (0,0) to (2,0) dips to y = -1
      {"bulged polyline", d.addPolyline({{{0, 0}, 1.0}, {{2, 0}}, {{2, 3}}}, false), {0, -1, 2, 3}},
      {"hatch", d.addHatch({HatchLoop::edges({geometry::CircularArcEdge{{5, 5}, 1, 0, 360, true}})}), {4, 4, 6, 6}},
      // three characters of height 2, each as wide as high: 6 wide from (1,1)
      {"text", d.db.appendEntity(std::move(text)), {1, 1, 7, 3}},
      // turned a quarter: the two characters run up the y axis, the height to the left
      {"turned text", d.db.appendEntity(std::move(rotatedText)), {-1, 0, 0, 2}},
      // two lines of height 1 hang below the top-left location: 1 + 5/3 high, 4 wide
      {"mtext", d.addMText(L"ab\\Pcdef", {0, 10, 0}, 1.0), {0, 10 - 8.0 / 3, 4, 10}},
      {"viewport", d.db.appendEntity(std::make_unique<Viewport>(AcGePoint3d{5, 5, 0}, 4, 2)), {3, 4, 7, 6}},
      {"mleader", d.addMLeader(L"ab", {0, 0, 0}, 1.0), {0, -1, 2, 0}},
  };
  for (const auto& c : cases) expectBox(d, c.id, c.box, c.name);
}

TEST(Extents, MTextAttachmentMovesTheBox) {
  // One line "abcd" of height 1: a 4 x 1 box placed about the location (10, 10).
  struct Case {
    int attachment;
    Box box;
  } const cases[] = {
      {MText::kTopLeft, {10, 9, 14, 10}},      {MText::kTopCenter, {8, 9, 12, 10}},
      {MText::kMiddleRight, {6, 9.5, 10, 10.5}}, {MText::kBottomLeft, {10, 10, 14, 11}},
      {MText::kBottomRight, {6, 10, 10, 11}},
  };
  for (const auto& c : cases) {
    TestDrawing d;
    const auto id = d.addMText(L"{\\fArial|b1;abcd}", {10, 10, 0}, 1.0);
    d.db.get<MText>(id)->setAttachment(c.attachment);
    expectBox(d, id, c.box, std::to_string(c.attachment).c_str());
  }
}

TEST(Extents, BlockReferencesPlaceTheirBlocks) {
  TestDrawing d;
  // A block with base point (1,1): a line from (1,1) to (3,1) and a unit circle about (2,3).
  // Less the base point the block spans x 0..2, y 0..3.
  const auto block = d.addBlock(L"Part", 0, {1, 1, 0});
  d.db.appendEntity(std::make_unique<Line>(Line::Point{1, 1, 0}, Line::Point{3, 1, 0}), block);
  d.db.appendEntity(std::make_unique<Circle>(Circle::Point{2, 3, 0}, 1.0), block);
  // A block holding two placements of Part: at (10,0), and at (0,10) turned a quarter.
  const auto outer = d.addBlock(L"Pair");
  d.addBlockReference(block, {10, 0, 0}, {}, 0.0, outer);
  d.addBlockReference(block, {0, 10, 0}, {}, kPiValue / 2, outer);
  struct Case {
    const char* name;
    host::AcDbObjectId id;
    Box box;
  } const cases[] = {
      {"plain", d.addBlockReference(block, {5, 5, 0}), {5, 5, 7, 8}},
      // x scaled by 2, y by 3: x 0..4, y 0..9
      {"scaled", d.addBlockReference(block, {0, 0, 0}, {2, 3, 1}), {0, 0, 4, 9}},
      // a quarter turn maps (x, y) to (-y, x): x -3..0, y 0..2
      {"turned", d.addBlockReference(block, {0, 0, 0}, {}, kPiValue / 2), {-3, 0, 0, 2}},
      // mirrored in x: x -2..0
      {"mirrored", d.addBlockReference(block, {0, 0, 0}, {-1, 1, 1}), {-2, 0, 0, 3}},
      // Pair's first part spans x 10..12, y 0..3; its turned part x -3..0, y 10..12; Pair
      // itself placed at (100, 100)
      {"nested", d.addBlockReference(outer, {100, 100, 0}), {97, 100, 112, 112}},
  };
  for (const auto& c : cases) expectBox(d, c.id, c.box, c.name);
}

TEST(Extents, AttributesOfAReference) {
  TestDrawing d;
  const auto block = d.addBlock(L"Tagged");
  d.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 1, 0}), block);
  // The definition itself takes no room in a reference; only a constant one shows.
  d.addAttributeDefinition(block, L"NAME", L"longer than the block");
  const auto reference = d.addBlockReference(block);
  expectBox(d, reference, {0, 0, 1, 1}, "definition only");

  // A visible attribute at (0,5), height 0.2, five characters: 1 wide.
  const auto attribute = d.addAttribute(reference, L"NAME", L"abcde");
  d.db.get<Attribute>(attribute)->setPosition({0, 5, 0});
  expectBox(d, reference, {0, 0, 1, 5.2}, "with attribute");
  d.db.get<Attribute>(attribute)->setFlags(Attribute::kInvisible);
  expectBox(d, reference, {0, 0, 1, 1}, "invisible attribute");

  const auto constant = d.addAttributeDefinition(block, L"FIXED", L"x", AttributeDefinition::kConstant);
  d.db.get<AttributeDefinition>(constant)->setPosition({-3, 0, 0});
  expectBox(d, reference, {-3, 0, 1, 1}, "constant definition");
}

TEST(Extents, SelfHoldingBlockEnds) {
  TestDrawing d;
  const auto block = d.addBlock(L"Loop");
  d.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}), block);
  d.addBlockReference(block, {1, 0, 0}, {}, 0.0, block);  // the block holds itself
  const auto reference = d.addBlockReference(block);
  host::AcDbObjectPointer<host::AcDbEntity> entity(d.host, reference, host::AcDb::kForRead);
  host::AcDbExtents box;
  ASSERT_EQ(entity->getGeomExtents(box), Acad::eOk);
  // Each level shifts by 1; the walk stops after a bounded number of levels.
  EXPECT_GT(box.maxPoint().x, 10);
  EXPECT_LT(box.maxPoint().x, 100);
}

TEST(Extents, NothingToMeasure) {
  TestDrawing d;
  const auto empty = d.addBlock(L"Empty");
  const auto reference = d.addBlockReference(empty);
  const auto emptyHatch = d.addHatch({});
  for (const auto id : {reference, emptyHatch}) {
    host::AcDbObjectPointer<host::AcDbEntity> entity(d.host, id, host::AcDb::kForRead);
    host::AcDbExtents box;
    EXPECT_EQ(entity->getGeomExtents(box), Acad::eInvalidExtents);
  }
}

}  // namespace
}  // namespace corvane::headless
