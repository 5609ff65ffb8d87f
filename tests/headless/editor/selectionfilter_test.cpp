// Selection sets through filters with logical operators, and filters that do not read.
#include "headless/editor/selectionfilter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/db/arc.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/line.h"
#include "headless/editor/editorprompts.h"
#include "headless/hostapplication.h"

namespace corvane::headless {
namespace {

using namespace host;

ResBuf op(const wchar_t* text) { return {-4, std::wstring(text)}; }
ResBuf type(const wchar_t* text) { return {0, std::wstring(text)}; }
ResBuf layer(const wchar_t* text) { return {8, std::wstring(text)}; }

struct Rig {
  HostApplication host;
  Database db{host};
  Script script;
  std::wstring out;
  EditorPrompts prompts{script, host, [this](std::wstring_view t) { out += t; }};
  AcDbObjectId circleOnWalls, lineOn0, arcOnWalls, circleOnDoors;

  Rig() {
    host.setWorkingDatabase(&db);
    circleOnWalls = put(std::make_unique<Circle>(Circle::Point{0, 0, 0}, 1.0), L"Walls");
    lineOn0 = put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}), L"0");
    arcOnWalls = put(std::make_unique<Arc>(AcGePoint3d{}, 1.0, 0.0, 1.0), L"Walls");
    circleOnDoors = put(std::make_unique<Circle>(Circle::Point{5, 0, 0}, 2.0), L"Doors");
  }
  template <typename T>
  AcDbObjectId put(std::unique_ptr<T> entity, const wchar_t* on) {
    entity->setLayer(on);
    return db.appendEntity(std::move(entity));
  }
};

TEST(SelectionFilter, LogicalOperatorsCombineTypeAndLayerTests) {
  Rig rig;
  const auto c1 = rig.circleOnWalls, l1 = rig.lineOn0, a1 = rig.arcOnWalls, c2 = rig.circleOnDoors;
  struct Case {
    const char* what;
    ResBufList filter;
    std::vector<AcDbObjectId> expected;
  } const cases[] = {
      {"or of ands, as the area page asks",
       {op(L"<or"), op(L"<and"), type(L"CIRCLE"), op(L"and>"), op(L"<and"), type(L"LINE"), op(L"and>"), op(L"or>")},
       {c1, l1, c2}},
      {"or of plain tests", {op(L"<OR"), type(L"ARC"), type(L"LINE"), op(L"OR>")}, {l1, a1}},
      {"and inside or",
       {op(L"<or"), op(L"<and"), type(L"CIRCLE"), layer(L"Doors"), op(L"and>"), type(L"LINE"), op(L"or>")},
       {l1, c2}},
      {"not", {op(L"<not"), layer(L"Walls"), op(L"not>")}, {l1, c2}},
      {"not of an or", {op(L"<not"), op(L"<or"), type(L"LINE"), type(L"ARC"), op(L"or>"), op(L"not>")}, {c1, c2}},
      {"xor: a circle or on Walls, not both", {op(L"<xor"), type(L"CIRCLE"), layer(L"Walls"), op(L"xor>")}, {a1, c2}},
      {"outside the operators every item must hold",
       {type(L"CIRCLE"), op(L"<or"), layer(L"Doors"), layer(L"0"), op(L"or>")},
       {c2}},
      {"nothing passes", {op(L"<and"), type(L"LINE"), layer(L"Walls"), op(L"and>")}, {}},
  };
  for (const auto& c : cases) {
    std::vector<AcDbObjectId> ids;
    const int rc = rig.prompts.ssGet(L"X", &c.filter, ids);
    EXPECT_EQ(rc, c.expected.empty() ? RTERROR : RTNORM) << c.what;
    EXPECT_EQ(ids, c.expected) << c.what;
    // Picked by a script, the same pass, and only they are counted as found.
    std::vector<AcDbObjectId> picked;
    rig.out.clear();
    rig.script.append(L"ALL\n\n");
    EXPECT_EQ(rig.prompts.ssGet(L"", &c.filter, picked), rc) << c.what;
    EXPECT_EQ(picked, c.expected) << c.what;
    EXPECT_NE(rig.out.find(L"\n" + std::to_wstring(c.expected.size()) + L" found"), std::wstring::npos) << c.what;
  }
}

TEST(SelectionFilter, OperatorsThatDoNotNestAreRefusedWithTheirPlace) {
  struct Case {
    ResBufList filter;
    std::wstring message;
  } const cases[] = {
      {{op(L"<or"), type(L"LINE")}, L"\nSelection filter item 1: \"<or\" has no closing \"or>\"."},
      {{type(L"LINE"), op(L"and>")}, L"\nSelection filter item 2: \"and>\" closes no \"<and\"."},
      {{op(L"<or"), op(L"<and"), type(L"LINE"), op(L"or>"), op(L"and>")},
       L"\nSelection filter item 4: \"or>\" closes the \"<and\" of item 2."},
      {{op(L"<not"), type(L"LINE"), type(L"ARC"), op(L"not>")},
       L"\nSelection filter item 1: \"<not\" ... \"not>\" needs exactly one operand, not 2."},
      {{op(L"<xor"), type(L"LINE"), op(L"xor>")},
       L"\nSelection filter item 1: \"<xor\" ... \"xor>\" needs exactly two operands, not 1."},
      {{op(L"<or"), op(L"or>")}, L"\nSelection filter item 1: \"<or\" ... \"or>\" needs at least one operand, not 0."},
      {{op(L"<nand"), type(L"LINE"), op(L"nand>")}, L"\nSelection filter item 1: \"<nand\" is no logical operator."},
      {{ResBuf{-4, std::int32_t{1}}}, L"\nSelection filter item 1: \"\" is no logical operator."},
      {{ResBuf{0, 1.5}}, L"\nSelection filter item 1: group code 0 needs a text value."},
      {{op(L"<or"), ResBuf{62, std::int32_t{1}}, op(L"or>")},
       L"\nSelection filters on group code 62 are not available in this host."},
  };
  for (const auto& c : cases) {
    Rig rig;
    std::vector<AcDbObjectId> ids{rig.lineOn0};
    EXPECT_EQ(rig.prompts.ssGet(L"X", &c.filter, ids), RTERROR);
    EXPECT_EQ(rig.out, c.message);
    EXPECT_EQ(ids, std::vector<AcDbObjectId>{rig.lineOn0});  // the caller's list is left alone
  }
}

}  // namespace
}  // namespace corvane::headless
