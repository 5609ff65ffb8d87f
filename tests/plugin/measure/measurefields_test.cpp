// Area and length fields over the entities of a drawing in memory, against values worked out
// by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "core/printf.h"
#include "host/acdbfield.h"
#include "plugin/measure/asdkareaevaluator.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;
using headless::geometry::Vertex;
using host::AcDbField;
using host::AcDbObjectId;
using std::numbers::pi;

constexpr double kTurn = 6.28318530718;  // the length field's full turn

// A drawing with the plug-in loaded, whose fields are evaluated on demand.
struct MeasureDrawing : TestDrawing {
  CCorvaneApp app{host};
  MeasureDrawing() { app.onInitialize(); }
  ~MeasureDrawing() { app.onUnload(); }

  std::wstring handleOf(AcDbObjectId id) { return host.handle(id).text(); }
  // An entity on a layer, in model space unless a space is given.
  template <typename T>
  AcDbObjectId put(std::unique_ptr<T> entity, std::wstring layer = L"0", AcDbObjectId space = {}) {
    entity->setLayer(std::move(layer));
    return db.appendEntity(std::move(entity), space);
  }
  // Evaluates a field with the code; its status and value.
  std::pair<int, double> measure(const std::wstring& code, std::wstring* message = nullptr) {
    const AcDbObjectId id = addField(code);
    evaluateAll();
    host::AcValue value;
    field(id).getValue(value);
    double real = 0.0;
    value.get(real);
    std::wstring said;
    const int status = field(id).evaluationStatus(nullptr, &said);
    if (message) *message = said;
    return {status, real};
  }
};

std::wstring area(const std::wstring& set) { return L"%<\\AcArea " + set + L">%"; }
std::wstring length(const std::wstring& set) { return L"%<\\AcLength " + set + L">%"; }

// A 2 x 2 square with its lower side bulged outwards into a half circle of radius 1.
std::vector<Vertex> bulgedSquare() { return {{{0, 0}, 1.0}, {{2, 0}}, {{2, 2}}, {{0, 2}}}; }

TEST(MeasureFields, EachKindAgainstHandWorkedValues) {
  MeasureDrawing d;
  using namespace headless;
  const std::wstring circle = d.handleOf(d.put(std::make_unique<Circle>(Circle::Point{5, 5, 0}, 1.0)));
  const std::wstring arc = d.handleOf(d.put(std::make_unique<Arc>(host::AcGePoint3d{}, 2.0, 0.0, pi / 2)));
  const std::wstring wrapped = d.handleOf(d.put(std::make_unique<Arc>(host::AcGePoint3d{}, 2.0, 1.5 * pi, 0.5 * pi)));
  const std::wstring still = d.handleOf(d.put(std::make_unique<Arc>(host::AcGePoint3d{}, 2.0, 1.0, 1.0)));
  const std::wstring line = d.handleOf(d.put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{3, 4, 0})));
  const std::wstring square =
      d.handleOf(d.put(std::make_unique<Polyline>(std::vector<Vertex>{{{0, 0}}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, true)));
  const std::wstring openSquare =
      d.handleOf(d.put(std::make_unique<Polyline>(std::vector<Vertex>{{{0, 0}}, {{1, 0}}, {{1, 1}}, {{0, 1}}}, false)));
  const std::wstring point = d.handleOf(d.put(std::make_unique<Polyline>(std::vector<Vertex>{{{4, 4}}}, true)));
  const std::wstring bulgedOut = d.handleOf(d.put(std::make_unique<Polyline>(bulgedSquare(), true)));
  auto inward = bulgedSquare();
  inward[0].bulge = -1.0;  // the half circle bites into the square
  const std::wstring bulgedIn = d.handleOf(d.put(std::make_unique<Polyline>(inward, true)));
  // A 10 x 10 hatch with a 2 x 3 island and a 1 x 1 hatch inside the island (filled again).
  const std::wstring hatch = d.handleOf(d.put(std::make_unique<Hatch>(
      L"SOLID", true,
      std::vector<HatchLoop>{
          HatchLoop::polyline({{{0, 0}}, {{10, 0}}, {{10, 10}}, {{0, 10}}}, HatchLoop::kExternal | HatchLoop::kOutermost),
          HatchLoop::polyline({{{1, 1}}, {{3, 1}}, {{3, 4}}, {{1, 4}}}, 0),
          HatchLoop::polyline({{{1.5, 1.5}}, {{2.5, 1.5}}, {{2.5, 2.5}}, {{1.5, 2.5}}}, 0)})));

  const double halfDisc = pi / 2;
  struct Case {
    std::wstring handle;
    double area;
    double length;
  } const cases[] = {
      {circle, pi, kTurn},
      {arc, pi - 2.0, pi},                                       // quarter disc less the triangle under the chord
      {wrapped, 2 * pi, 2 * (0.5 * pi - 1.5 * pi + kTurn)},  // the half disc past angle 0
      {still, 4 * pi, 0.0},  // equal angles: a whole circle to the host, no length to the field
      {line, 0.0, 5.0},
      {square, 1.0, 4.0},
      {openSquare, 1.0, 3.0},  // closed by its chord for the area; no closing side for the length
      {point, 0.0, 0.0},
      {bulgedOut, 4.0 + halfDisc, 6.0 + pi},
      {bulgedIn, 4.0 - halfDisc, 6.0 + pi},
      {hatch, 100.0 - 6.0 + 1.0, 0.0},
  };
  for (const Case& c : cases) {
    const auto [areaStatus, areaValue] = d.measure(area(L"Object(<" + c.handle + L">)"));
    EXPECT_EQ(areaStatus, AcDbField::kSuccess);
    EXPECT_NEAR(areaValue, c.area, 1e-9) << "area of " << std::string(c.handle.begin(), c.handle.end());
    const auto [lengthStatus, lengthValue] = d.measure(length(L"Object(<" + c.handle + L">)"));
    EXPECT_EQ(lengthStatus, AcDbField::kSuccess);
    EXPECT_NEAR(lengthValue, c.length, 1e-9) << "length of " << std::string(c.handle.begin(), c.handle.end());
  }
  // The full turn is the field's own constant, not the library's.
  EXPECT_EQ(d.measure(length(L"Object(<" + circle + L">)")).second, kTurn);
}

TEST(MeasureFields, TypeMasksAndLayersNarrowTheSet) {
  MeasureDrawing d;
  using namespace headless;
  d.put(std::make_unique<Circle>(Circle::Point{}, 1.0), L"Walls");                                     // pi, 2pi
  d.put(std::make_unique<Arc>(host::AcGePoint3d{}, 1.0, 0.0, pi), L"WALLS");                           // pi/2, pi
  d.put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{0, 7, 0}), L"Walls");                 // 0, 7
  d.put(std::make_unique<Polyline>(std::vector<Vertex>{{{0, 0}}, {{3, 0}}, {{3, 3}}}, true), L"Doors");  // 4.5, 3+3+sqrt18
  d.put(std::make_unique<Hatch>(L"SOLID", true,
                                std::vector<HatchLoop>{HatchLoop::polyline({{{0, 0}}, {{2, 0}}, {{2, 2}}, {{0, 2}}})}),
        L"Doors");  // 4, 0
  const double triangle = 6.0 + std::sqrt(18.0);
  struct Case {
    std::wstring set;
    double area;
    double length;
  } const cases[] = {
      {L"Object(<*AllObjects*>)", pi + pi / 2 + 4.5 + 4.0, kTurn + pi + 7.0 + triangle},
      {LR"~(Object(<*AllObjects*>) \objtype "82")~", pi + 4.5 + 4.0, kTurn + triangle},
      {LR"~(Object(<*AllObjects*>) \objtype "64")~", 4.0, 0.0},
      {LR"~(Object(<*AllObjects*>) \objtype "1")~", 0.0, 7.0},
      {LR"~(Object(<*AllObjects*>) \objtype "32")~", pi / 2, pi},
      {LR"~(Object(<*AllObjects*>) \objtype "abc")~", pi + pi / 2 + 4.5 + 4.0, kTurn + pi + 7.0 + triangle},  // no digits: all
      // Layer names match exactly: "WALLS" is not "Walls".
      {LR"~(Object(<*AllObjects*>) \layer "Walls")~", pi, kTurn + 7.0},
      {LR"~(Object(<*AllObjects*>) \layer "WALLS;;Doors")~", pi / 2 + 4.5 + 4.0, pi + triangle},
      {LR"~(Object(<*AllObjects*>) \layer "")~", pi + pi / 2 + 4.5 + 4.0, kTurn + pi + 7.0 + triangle},
      {LR"~(Object(<*AllObjects*>) \objtype "16" \layer "Walls;Doors")~", pi, kTurn},
      {LR"~(Object(<*AllObjects*>) \layer "Doors" \objtype "2")~", 4.5, triangle},
  };
  for (const Case& c : cases) {
    const std::string shown(c.set.begin(), c.set.end());
    const auto [areaStatus, areaValue] = d.measure(area(c.set));
    EXPECT_EQ(areaStatus, AcDbField::kSuccess) << shown;
    EXPECT_NEAR(areaValue, c.area, 1e-9) << shown;
    const auto [lengthStatus, lengthValue] = d.measure(length(c.set));
    EXPECT_EQ(lengthStatus, AcDbField::kSuccess) << shown;
    EXPECT_NEAR(lengthValue, c.length, 1e-9) << shown;
  }
}

TEST(MeasureFields, SpacesAndExplicitLists) {
  MeasureDrawing d;
  using namespace headless;
  const AcDbObjectId sheetA = d.addLayout(L"A");
  const AcDbObjectId sheetB = d.addLayout(L"B");
  const AcDbObjectId model = d.put(std::make_unique<Circle>(Circle::Point{}, 1.0));                 // length 2pi
  d.put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{10, 0, 0}), L"0", sheetA);           // 10
  d.put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{100, 0, 0}), L"0", sheetB);          // 100
  const AcDbObjectId block = d.addBlock(L"Part");
  d.put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1000, 0, 0}), L"0", block);          // in no space
  const AcDbObjectId erased = d.put(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{5, 0, 0}));
  const std::wstring erasedHandle = d.handleOf(erased);
  d.db.get<Line>(erased)->record().erased = true;

  // A field in a text on sheet B measures the owner space B.
  const AcDbObjectId text = d.db.appendEntity(std::make_unique<Text>(Text::Point{}, 0.2, L""), sheetB);
  const AcDbObjectId onSheet = headless::attachField(d.db, text, length(L"Object(<*OSPObjects*>)"));
  const AcDbObjectId inModel = d.addFieldText(length(L"Object(<*osPobjects*>)"));
  d.evaluateAll();
  host::AcValue value;
  double real = 0;
  // A text's field holds the length field as its child.
  d.field(d.field(onSheet).getChild(0)).getValue(value);
  EXPECT_TRUE(value.get(real) && real == 100.0);
  d.field(d.field(inModel).getChild(0)).getValue(value);
  EXPECT_TRUE(value.get(real) && real == kTurn);

  const std::wstring circle = d.handleOf(model);
  struct Case {
    std::wstring set;
    double length;
  } const cases[] = {
      {L"Object(<*AllObjects*>)", kTurn + 10 + 100},
      {L"Object(<*Everything*>)", kTurn + 10 + 100},  // any other set name means every space
      {L"Object(<*mspobjects*>)", kTurn},
      {L"Object(<*OSPObjects*>)", 0.0},  // a field in no text is in no space
      {L"Object(<" + circle + L";;" + circle + L";>)", 2 * kTurn},  // listed twice, counted twice
      {L"Object(<" + circle + L";FFFFF;" + erasedHandle + L";zz>)", kTurn},  // stale, erased and bad handles add 0
      {L"Object(<>)", 0.0},
      {L"Object(<" + circle, kTurn},  // unbalanced: the ends are trimmed character by character
  };
  for (const Case& c : cases) {
    const auto [status, result] = d.measure(length(c.set));
    EXPECT_EQ(status, AcDbField::kSuccess) << std::string(c.set.begin(), c.set.end());
    EXPECT_DOUBLE_EQ(result, c.length) << std::string(c.set.begin(), c.set.end());
  }
}

TEST(MeasureFields, BadSetsGiveInvalidCodeWithAReason) {
  MeasureDrawing d;
  struct Case {
    std::wstring set;
    int status;
    std::wstring message;
  } const cases[] = {
      {L"Objects(<1A>)", AcDbField::kInvalidCode, L"The object set does not begin with \"Object(\"."},
      {L"object(<*AllObjects*>)", AcDbField::kSuccess, L""},
      {LR"~(Object(<*AllObjects*>) \layr "Walls")~", AcDbField::kInvalidCode, LR"~(Unknown option \layr.)~"},
      {LR"~(Object(<*AllObjects*>) \layer "Walls)~", AcDbField::kInvalidCode,
       LR"~(The value of option \layer has no closing double quote.)~"},
      {LR"~(Object(<*AllObjects*>) \)~", AcDbField::kInvalidCode, LR"~(A backslash without an option name at "\".)~"},
      {LR"~(Object(<*AllObjects*>) \objtype "2" junk)~", AcDbField::kInvalidCode,
       LR"~(Expected an option (a backslash and a name) at "junk".)~"},
  };
  for (const Case& c : cases) {
    std::wstring message;
    EXPECT_EQ(d.measure(area(c.set), &message).first, c.status) << std::string(c.set.begin(), c.set.end());
    EXPECT_EQ(message, c.message) << std::string(c.set.begin(), c.set.end());
  }

  // The data record itself: missing, or not a text.
  AsdkAreaEvaluator evaluator;
  auto& field = d.field(d.addField(area(L"Object(<*AllObjects*>)")));
  host::AcFdFieldValue value;
  std::wstring message;
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value, message), AcDbField::kOtherError);
  field.putData(L"AcArea Data", host::AcValue(std::int32_t{3}));
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value, message), AcDbField::kInvalidCode);
}

}  // namespace
}  // namespace corvane
