// Block count fields over a drawing with plain, dynamic, hidden and nested insertions.
#include <gtest/gtest.h>

#include "headless/db/blockreference.h"
#include "host/acdbfield.h"
#include "plugin/measure/asdkblockcountevaluator.h"
#include "plugin/measure/blockcount.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;
using headless::BlockReference;
using host::AcDbField;
using host::AcDbObjectId;
using host::AcGePoint3d;

// Model space: doors at (1,1) WIDTH "10.0", (20,20) WIDTH "ABC", (9.5,9.5) half out of the
// 10 x 10 window, a hidden one, a variant of the dynamic door at (2,2) with Width 0.9 on layer
// "a-door", a window, two units of two doors each and a floor holding one more unit. A sheet
// holds one more door at (1,1). Every block is a unit square from its base point.
struct Doors : TestDrawing {
  CCorvaneApp app{host};
  AcDbObjectId sheet;
  Doors() {
    app.onInitialize();
    sheet = addLayout(L"Sheet");
    const AcDbObjectId door = square(addBlock(L"Door"));
    db.get<headless::BlockTableRecord>(door)->setDynamicBlock(true);
    const AcDbObjectId variant = square(addDynamicVariant(door, L"*U7"));
    const AcDbObjectId window = square(addBlock(L"Window"));
    const AcDbObjectId unit = addBlock(L"Unit");
    const AcDbObjectId floor = addBlock(L"Floor");

    addAttribute(place(door, {1, 1, 0}, L"A-DOOR"), L"WIDTH", L"10.0");
    addAttribute(place(door, {20, 20, 0}, L"A-DOOR"), L"WIDTH", L"ABC");
    place(door, {9.5, 9.5, 0}, L"A-DOOR");
    db.get<BlockReference>(place(door, {3, 3, 0}, L"A-DOOR"))->setVisible(false);
    db.get<BlockReference>(place(variant, {2, 2, 0}, L"a-door"))
        ->setDynamicProperties({{L"Width", host::AcValue(0.9)}});
    place(window, {3, 3, 0}, L"A-WIN");
    place(door, {0, 0, 0}, L"0", unit);
    place(door, {2, 0, 0}, L"0", unit);
    place(unit, {50, 50, 0});
    place(unit, {60, 60, 0});
    place(unit, {0, 0, 0}, L"0", floor);
    place(floor, {100, 100, 0});
    place(door, {1, 1, 0}, L"0", sheet);
  }
  ~Doors() { app.onUnload(); }

  AcDbObjectId square(AcDbObjectId block) {
    db.appendEntity(std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{1, 1, 0}),
                    block);
    return block;
  }
  AcDbObjectId place(AcDbObjectId block, AcGePoint3d at, std::wstring layer = L"0", AcDbObjectId space = {}) {
    const AcDbObjectId id = addBlockReference(block, at, {}, 0.0, space);
    db.get<BlockReference>(id)->setLayer(std::move(layer));
    return id;
  }
  // The status, count and message of a field with the code.
  struct Counted {
    int status;
    std::int32_t count;
    std::wstring message;
  };
  Counted count(const std::wstring& arguments) {
    const AcDbObjectId id = addField(L"%<\\AcBlockCount " + arguments + L">%");
    evaluateAll();
    Counted counted{field(id).evaluationStatus(nullptr, nullptr), -1, {}};
    field(id).evaluationStatus(nullptr, &counted.message);
    host::AcValue value;
    field(id).getValue(value);
    value.get(counted.count);
    return counted;
  }
};

TEST(BlockCount, CountsWhatEachFilterLetsThrough) {
  Doors d;
  const std::wstring model = d.host.handle(d.db.modelSpaceId()).text();
  const std::wstring paper = d.host.handle(d.sheet).text();
  struct Case {
    std::wstring arguments;
    std::int32_t count;
  } const cases[] = {
      // Four doors in model space (the hidden one left out, the variant counted as a door), one
      // on the sheet.
      {LR"("Door")", 5},
      {LR"("door")", 0},  // names match exactly
      {LR"("Door;Window")", 6},
      {LR"(Door)", 5},
      {LR"(Door;;Window \nested)", 12},
      // Nested: each door in a unit is placed twice directly and once through the floor.
      {LR"("Door" \nested)", 11},
      {LR"("Unit" \nested)", 3},
      {LR"("Door" \layer "A-DOOR")", 3},
      {LR"("Door" \layer "A-DOOR;a-door")", 4},
      // Attributes compare as numbers for the ordering operators and as texts otherwise.
      {LR"("Door" \op ">=" \tag "width" \value "10")", 1},
      {LR"("Door" \op "=" \tag "WIDTH" \value "10")", 0},
      {LR"("Door" \op "=" \tag "WIDTH" \value "10.0")", 1},
      {LR"("Door" \op "!=" \tag "WIDTH" \value "abc")", 2},  // 10.0 and the variant's 0.9
      {LR"("Door" \op "<" \tag "Width" \value "1")", 2},     // "ABC" reads as 0
      {LR"("Door" \op ">" \tag "Width" \value "0.9")", 1},
      {LR"("Door" \op ">=¦<=" \tag "WIDTH¦WIDTH" \value "5¦20")", 1},  // every condition must hold
      {LR"("Door" \op ">=¦<=" \tag "WIDTH¦WIDTH" \value "5¦8")", 0},
      // Window: both corners of the extents inside; the door at (9.5,9.5) is inside in x, not in y.
      {LR"("Door" \Space()" + model + LR"() \Window(0,0,0:11,10,0))", 2},
      {LR"("Door" \nested \Space()" + model + LR"() \Window(10,10,5:0,0,-5))", 2},
      {LR"("Door" \Space()" + paper + LR"() \Window(0,0,0:10,10,0))", 1},
      {LR"("Door" \Space(FFFFF) \Window(0,0,0:10,10,0))", 0},
      {LR"("Door" \Space() \Window(0,0,0:10,10,0))", 5},  // no space: no window
      {LR"("Door" \Space()" + model + LR"() \Window(a,b,c:10,10,0))", 5},  // corners that do not read
      {LR"()", 0},
      {LR"("")", 0},
  };
  for (const Case& c : cases) {
    const auto counted = d.count(c.arguments);
    const std::string shown(c.arguments.begin(), c.arguments.end());
    EXPECT_EQ(counted.status, AcDbField::kSuccess) << shown;
    EXPECT_EQ(counted.count, c.count) << shown;
  }
}

TEST(BlockCount, BadCodesSayWhy) {
  Doors d;
  struct Case {
    std::wstring arguments;
    std::wstring message;
  } const cases[] = {
      {LR"("Door" \nestd)", LR"(Unknown option \nestd.)"},
      {LR"("Door" \Window(0,0,0:1,1,1)", LR"(The value of option \Window has no closing parenthesis.)"},
      {LR"("Door" nested)", LR"(Expected an option (a backslash and a name) at "nested".)"},
  };
  for (const Case& c : cases) {
    const auto counted = d.count(c.arguments);
    EXPECT_EQ(counted.status, AcDbField::kInvalidCode) << std::string(c.arguments.begin(), c.arguments.end());
    EXPECT_EQ(counted.message, c.message);
  }
  AsdkBlockCountEvaluator evaluator;
  auto& field = d.field(d.addField(L"%<\\AcBlockCount \"Door\">%"));
  host::AcFdFieldValue value;
  std::wstring message;
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value, message), AcDbField::kOtherError);
  field.putData(L"AcBlockCount Data", host::AcValue(2.0));
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value, message), AcDbField::kInvalidCode);
}

TEST(BlockCount, ABlockThatHoldsItselfEndsTheNestedWalk) {
  Doors d;
  const AcDbObjectId loop = d.addBlock(L"Loop");
  d.place(loop, {0, 0, 0}, L"0", loop);
  AcDbObjectId door;
  d.db.get<host::AcDbBlockTable>(d.db.blockTableId())->getAt(L"Door", door);
  d.place(door, {0, 0, 0}, L"0", loop);
  d.place(loop, {200, 200, 0});
  // The door in the loop is placed once through the loop's one placement in model space.
  EXPECT_EQ(d.count(LR"("Door" \nested)").count, 12);
}

}  // namespace
}  // namespace corvane
