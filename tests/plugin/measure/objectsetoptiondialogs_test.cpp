// The option pages of the area and length fields and their object filter, worked as a user works them, against a
// drawing in memory.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "dialogrig.h"
#include "host/acdbfield.h"
#include "host/hostui.h"
#include "plugin/measure/asdkareaoptiondialog.h"
#include "plugin/measure/asdklengthoptiondialog.h"
#include "plugin/measure/cobjectfilterdialog.h"

namespace corvane {
namespace {

using headless::geometry::Vertex;
using host::AcDbField;
using host::AcDbObjectId;
using host::ResBuf;
using host::ResBufList;

// Layers 0, Walls, Doors; on them a circle of radius 1 (Walls), a closed 2 x 2 square polyline (0), a line 3-4-5 (0), a
// quarter arc of radius 2 (Walls) and a 10 x 10 hatch (Doors).
struct Drawing : testing::DialogRig {
  AcDbObjectId circle, square, line, arc, hatch;
  Drawing() {
    addLayer(L"Walls");
    addLayer(L"Doors");
    circle = put(std::make_unique<headless::Circle>(headless::Circle::Point{5, 5, 0}, 1.0), L"Walls");
    square = put(
        std::make_unique<headless::Polyline>(std::vector<Vertex>{{{0, 0}}, {{2, 0}}, {{2, 2}}, {{0, 2}}}, true), L"0");
    line = put(std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{3, 4, 0}), L"0");
    arc = put(std::make_unique<headless::Arc>(host::AcGePoint3d{}, 2.0, 0.0, std::numbers::pi / 2), L"Walls");
    hatch =
        put(std::make_unique<headless::Hatch>(L"SOLID", true,
                                              std::vector<headless::HatchLoop>{headless::HatchLoop::polyline(
                                                  {{{0, 0}}, {{10, 0}}, {{10, 10}}, {{0, 10}}},
                                                  headless::HatchLoop::kExternal | headless::HatchLoop::kOutermost)}),
            L"Doors");
  }
  std::vector<std::wstring> handles(std::initializer_list<AcDbObjectId> ids) {
    std::vector<std::wstring> out;
    for (const AcDbObjectId id : ids) out.push_back(handleOf(id));
    return out;
  }
};

// A filter dialog that the user fills in and confirms.
ShowModal<CObjectFilterDialog> confirm(std::function<void(CObjectFilterDialog&)> fill) {
  return [fill](CObjectFilterDialog& dialog) {
    fill(dialog);
    return dialog.onOK();
  };
}

void checkTypes(CObjectFilterDialog& dialog, int mask) {
  for (auto& box : dialog.types) box.checked = (box.bit & mask) != 0;
}

void uncheckLayer(CObjectFilterDialog& dialog, const std::wstring& name) {
  for (auto& item : dialog.layers) {
    if (item.name == name) item.checked = false;
  }
}

TEST(CObjectFilterDialog, ShowsTheOfferedTypesAndTheDrawingsLayers) {
  struct Case {
    int offered;
    int mask;
    std::vector<std::wstring> visible;
    std::vector<std::wstring> checked;
  } const cases[] = {
      {kAreaTypes, 82, {L"Polyline", L"Circle", L"Hatch"}, {L"Polyline", L"Circle", L"Hatch"}},
      {kLengthTypes, 51, {L"Line", L"Polyline", L"Circle", L"Arc"}, {L"Line", L"Polyline", L"Circle", L"Arc"}},
      {kAreaTypes, 16, {L"Polyline", L"Circle", L"Hatch"}, {L"Circle"}},
      {kLengthTypes, 33, {L"Line", L"Polyline", L"Circle", L"Arc"}, {L"Line", L"Arc"}},
  };
  for (const auto& c : cases) {
    Drawing d;
    CObjectFilterDialog dialog(d.dialogHost, d.registry, settings::kAreaField, c.offered);
    dialog.onInitDialog({SpaceScope::kOwnerSpace, c.mask, {L"Doors", L"0"}});
    std::vector<std::wstring> visible, checked;
    for (const auto& box : dialog.types) {
      if (box.visible) visible.push_back(box.caption);
      if (box.checked) checked.push_back(box.caption);
    }
    EXPECT_EQ(visible, c.visible) << c.offered;
    EXPECT_EQ(checked, c.checked) << c.mask;
    EXPECT_EQ(dialog.scope, SpaceScope::kOwnerSpace);
    EXPECT_EQ(dialog.layers, (CheckList{{L"0", true}, {L"Walls", false}, {L"Doors", true}}));
  }
}

TEST(CObjectFilterDialog, RefusesNoTypeAndOtherwiseTakesTheCheckedLayersInListOrder) {
  Drawing d;
  CObjectFilterDialog dialog(d.dialogHost, d.registry, settings::kLengthField, kLengthTypes);
  dialog.onInitDialog({SpaceScope::kAllSpaces, 51, {L"0"}});
  checkTypes(dialog, 0);
  EXPECT_FALSE(dialog.onOK());
  ASSERT_EQ(d.ui.boxes().size(), 1u);
  EXPECT_EQ(d.ui.boxes()[0].text, L"Invalid object types.");
  EXPECT_EQ(d.ui.boxes()[0].caption, L"Halvek Corvane");
  EXPECT_EQ(d.ui.boxes()[0].flags & host::MB_ICONMASK, host::MB_ICONINFORMATION);
  EXPECT_EQ(dialog.result().typeMask, 51);  // still the caller's

  dialog.onSelectAll();
  EXPECT_EQ(checkedNames(dialog.layers), (std::vector<std::wstring>{L"0", L"Walls", L"Doors"}));
  dialog.onDeselectAll();
  EXPECT_TRUE(checkedNames(dialog.layers).empty());
  dialog.layers[2].checked = true;
  dialog.layers[0].checked = true;
  checkTypes(dialog, kArcType | kLineType);
  dialog.scope = SpaceScope::kModelSpace;
  ASSERT_TRUE(dialog.onOK());
  EXPECT_EQ(dialog.result().scope, SpaceScope::kModelSpace);
  EXPECT_EQ(dialog.result().typeMask, 33);
  EXPECT_EQ(dialog.result().selectedLayers, (std::vector<std::wstring>{L"0", L"Doors"}));
  EXPECT_EQ(d.registry.getInt(settings::kLengthField, CObjectFilterDialog::kTypesValue, 0), 33);
  EXPECT_EQ(d.registry.getInt(settings::kLengthField, CObjectFilterDialog::kScopeValue, 0), 1);
}

// What each page makes of the units and precision it is given, with every layer selected.
TEST(ObjectSetOptionDialog, NewFieldsAndTheirCodesByUnitsAndPrecision) {
  struct Case {
    bool area;
    int lunits;
    std::optional<int> units;  // chosen after opening; none: as opened
    std::optional<int> precision;
    std::wstring code;
  } const cases[] = {
      {true, 2, {}, {}, L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2\">%"},
      {true, 4, {}, {}, L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2%ct4%qf1 SQ. FT.\">%"},
      {true, 2, 0, {}, L"%<\\AcArea Object(<*AllObjects*>)>%"},
      {true, 2, -1, {}, L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu6%qf1\">%"},
      {true, 2, 3, 2, L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2%ct4%qf1 SQ. FT.%pr2\">%"},
      {true, 2, 2, -1, L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2\">%"},
      {false, 4, {}, {}, L"%<\\AcLength Object(<*AllObjects*>) \\f \"%lu4\">%"},
      {false, 2, 5, 3, L"%<\\AcLength Object(<*AllObjects*>) \\f \"%lu5%pr3\">%"},
      {false, 2, -1, {}, L"%<\\AcLength Object(<*AllObjects*>) \\f \"%lu6\">%"},
      {false, 2, 0, {}, L"%<\\AcLength Object(<*AllObjects*>)>%"},
  };
  for (const auto& c : cases) {
    Drawing d;
    ASSERT_TRUE(d.dialogHost.setShortVar(L"LUNITS", c.lunits));
    AsdkAreaOptionDialog area(d.dialogHost, d.registry);
    AsdkLengthOptionDialog length(d.dialogHost, d.registry);
    ObjectSetOptionDialog& page = c.area ? static_cast<ObjectSetOptionDialog&>(area) : length;
    page.onInitDialog();
    EXPECT_EQ(page.choice.typeMask, c.area ? 82 : 51);
    EXPECT_EQ(page.choice.selectedLayers, (std::vector<std::wstring>{L"0", L"Walls", L"Doors"}));
    EXPECT_EQ(page.units.selectedItem(), c.lunits);
    EXPECT_FALSE(page.precision.enabled);
    if (c.units) {
      page.units.selectItem(*c.units);
      page.onUnitsChanged();
    }
    if (c.precision) {
      page.precision.selectItem(*c.precision);
      page.onPrecisionChanged();
    }
    EXPECT_EQ(page.fieldCode(), c.code);
  }
}

TEST(ObjectSetOptionDialog, PicksAddWhatPassesTheLayersAndThePagesTypesOnce) {
  struct Case {
    bool area;
    ResBufList filter;
    int mask;  // set through the filter dialog; 0: as opened
    std::vector<std::wstring> keptLayers;
    std::vector<AcDbObjectId(Drawing::*)> expected;
  };
  const ResBufList areaFilter{
      {-4, std::wstring(L"<or")},  {-4, std::wstring(L"<and")}, {0, std::wstring(L"CIRCLE")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"<and")}, {0, std::wstring(L"LWPOLYLINE")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"<and")}, {0, std::wstring(L"HATCH")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"or>")}};
  const ResBufList lengthFilter{
      {-4, std::wstring(L"<or")},  {-4, std::wstring(L"<and")}, {0, std::wstring(L"ARC")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"<and")}, {0, std::wstring(L"CIRCLE")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"<and")}, {0, std::wstring(L"LINE")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"<and")}, {0, std::wstring(L"LWPOLYLINE")},
      {-4, std::wstring(L"and>")}, {-4, std::wstring(L"or>")}};
  const std::vector<std::wstring> all{L"0", L"Walls", L"Doors"};
  const Case cases[] = {
      // The hatch passes the selection filter but never the area page's own test.
      {true, areaFilter, 0, all, {&Drawing::circle, &Drawing::square}},
      {true, areaFilter, kCircleType, all, {&Drawing::circle}},
      {true, areaFilter, 0, {L"0", L"Doors"}, {&Drawing::square}},
      {false, lengthFilter, 0, all, {&Drawing::circle, &Drawing::square, &Drawing::line, &Drawing::arc}},
      {false, lengthFilter, kLineType | kArcType, all, {&Drawing::line, &Drawing::arc}},
      {false, lengthFilter, 0, {L"Walls"}, {&Drawing::circle, &Drawing::arc}},
  };
  for (const auto& c : cases) {
    Drawing d;
    AsdkAreaOptionDialog area(d.dialogHost, d.registry);
    AsdkLengthOptionDialog length(d.dialogHost, d.registry);
    ObjectSetOptionDialog& page = c.area ? static_cast<ObjectSetOptionDialog&>(area) : length;
    page.onInitDialog();
    EXPECT_EQ(page.selectionFilter(), c.filter);
    ASSERT_TRUE(page.onObjectFilter(confirm([&](CObjectFilterDialog& f) {
      if (c.mask) checkTypes(f, c.mask);
      for (auto& item : f.layers)
        item.checked = std::find(c.keptLayers.begin(), c.keptLayers.end(), item.name) != c.keptLayers.end();
    })));
    d.answer(L"ALL\n\nALL\n\n");  // picked twice: nothing is listed twice
    EXPECT_EQ(page.onAddObjects(), host::RTNORM);
    EXPECT_EQ(page.onAddObjects(), host::RTNORM);
    std::vector<std::wstring> expected;
    for (const auto member : c.expected) expected.push_back(d.handleOf(d.*member));
    std::sort(expected.begin(), expected.end(), [&](const std::wstring& a, const std::wstring& b) {
      return std::stoul(a, nullptr, 16) < std::stoul(b, nullptr, 16);
    });
    EXPECT_EQ(page.choice.handles, expected);
    EXPECT_TRUE(page.choice.explicitObjects);
  }
}

TEST(ObjectSetOptionDialog, ThePreviewFollowsEachChange) {
  Drawing d;
  AsdkAreaOptionDialog page(d.dialogHost, d.registry);
  page.onInitDialog();
  page.units.selectItem(2);
  page.onUnitsChanged();
  page.precision.selectItem(2);
  page.onPrecisionChanged();
  // Every space: circle, square, the arc's segment (quarter circle less its triangle) and the hatch.
  EXPECT_NEAR(page.value(), std::numbers::pi + 4.0 + (std::numbers::pi - 2.0) + 100.0, 1e-9);
  EXPECT_EQ(page.previewText(), L"108.28");

  d.answer(L"(handent \"" + d.handleOf(d.circle) + L"\")\n(handent \"" + d.handleOf(d.square) + L"\")\n\n");
  ASSERT_EQ(page.onAddObjects(), host::RTNORM);
  EXPECT_EQ(page.fieldCode(),
            L"%<\\AcArea Object(<" + d.handleOf(d.circle) + L";" + d.handleOf(d.square) + L">) \\f \"%lu2%pr2\">%");
  EXPECT_EQ(page.previewText(), L"7.14");

  page.selectedHandles = {0};
  page.onRemoveObjects();
  EXPECT_EQ(page.choice.handles, d.handles({d.square}));
  EXPECT_EQ(page.previewText(), L"4.00");

  page.selectedHandles = {0};
  page.onRemoveObjects();  // the list empty: the whole drawing again
  EXPECT_FALSE(page.choice.explicitObjects);
  EXPECT_EQ(page.previewText(), L"108.28");

  // No layer checked: every layer is measured, but only the page's types, so the arc drops out.
  ASSERT_TRUE(page.onObjectFilter(confirm([](CObjectFilterDialog& f) { f.onDeselectAll(); })));
  EXPECT_EQ(page.fieldCode(), L"%<\\AcArea Object(<*AllObjects*>) \\objtype \"82\" \\f \"%lu2%pr2\">%");
  EXPECT_EQ(page.previewText(), L"107.14");
}

TEST(ObjectSetOptionDialog, TheObjectFilterPrunesTheListFromTheLast) {
  struct Case {
    const char* what;
    int mask;
    std::vector<std::wstring> uncheck;
    bool eraseLine;
    std::vector<AcDbObjectId(Drawing::*)> kept;
    std::wstring options;
  } const cases[] = {
      {"nothing changed", 0, {}, false, {&Drawing::circle, &Drawing::square, &Drawing::line, &Drawing::arc}, L""},
      {"a layer left out", 0, {L"Walls"}, false, {&Drawing::square, &Drawing::line}, L""},
      {"types narrowed", kPolylineType | kCircleType, {}, false, {&Drawing::circle, &Drawing::square}, L""},
      {"a stale handle", 0, {}, true, {&Drawing::circle, &Drawing::square, &Drawing::arc}, L""},
  };
  for (const auto& c : cases) {
    Drawing d;
    AsdkLengthOptionDialog page(d.dialogHost, d.registry);
    page.onInitDialog();
    d.answer(L"ALL\n\n");
    ASSERT_EQ(page.onAddObjects(), host::RTNORM);
    if (c.eraseLine) {
      host::AcDbObjectPointer<host::AcDbObject> line(d.host, d.line, host::AcDb::kForWrite);
      ASSERT_EQ(line->erase(), host::Acad::eOk);
    }
    ASSERT_TRUE(page.onObjectFilter(confirm([&](CObjectFilterDialog& f) {
      if (c.mask) checkTypes(f, c.mask);
      for (const auto& name : c.uncheck) uncheckLayer(f, name);
    })));
    std::vector<std::wstring> kept;
    for (const auto member : c.kept) kept.push_back(d.handleOf(d.*member));
    EXPECT_EQ(page.choice.handles, kept) << c.what;
  }

  // Cancelled: the page's state is as it was.
  Drawing d;
  AsdkAreaOptionDialog page(d.dialogHost, d.registry);
  page.onInitDialog();
  EXPECT_FALSE(page.onObjectFilter([](CObjectFilterDialog& f) {
    f.onDeselectAll();
    checkTypes(f, kHatchType);
    return false;
  }));
  EXPECT_EQ(page.choice.typeMask, 82);
  EXPECT_EQ(page.choice.selectedLayers.size(), 3u);
}

TEST(ObjectSetOptionDialog, ExistingFieldsOpenAsTheyWereWritten) {
  struct Case {
    bool area;
    std::wstring code;
    SpaceScope scope;
    int mask;
    std::vector<std::wstring> layers;
    std::optional<int> units;
    std::optional<int> precision;
    std::wstring rebuilt = {};  // the code built again, when it differs
  } const cases[] = {
      // clang-format off
      {true, L"%<\\AcArea Object(<*MSPObjects*>) \\objtype \"64\" \\layer \"Walls\" \\f \"%lu2%pr3%ct8[2.54]%zs8\">%",
       SpaceScope::kModelSpace, 64, {L"Walls"}, 2, 3},
      {true, L"%<\\AcArea Object(<*OSPObjects*>) \\layer \"0;Doors\" \\f \"%lu6%qf1\">%",
       SpaceScope::kOwnerSpace, 82, {L"0", L"Doors"}, -1, {},
       // Without a type mask the page writes its own.
       L"%<\\AcArea Object(<*OSPObjects*>) \\objtype \"82\" \\layer \"0;Doors\" \\f \"%lu6%qf1\">%"},
      {true, L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2%ct4%qf1 SQ. FT.%pr1\">%",
       SpaceScope::kAllSpaces, 82, {L"0", L"Walls", L"Doors"}, 4, 1},
      {true, L"%<\\AcArea Object(<*AllObjects*>)>%", SpaceScope::kAllSpaces, 82, {L"0", L"Walls", L"Doors"}, 0, {}},
      {false, L"%<\\AcLength Object(<*AllObjects*>) \\objtype \"1\" \\layer \"0\" \\f \"%lu4%pr2%ps[L=,]%zs2\">%",
       SpaceScope::kAllSpaces, 1, {L"0"}, 4, 2},
      {false, L"%<\\AcLength Object(<*MSPObjects*>) \\f \"%lu6\">%", SpaceScope::kModelSpace, 51,
       {L"0", L"Walls", L"Doors"}, -1, {}},
      // clang-format on
  };
  for (const auto& c : cases) {
    Drawing d;
    d.dialogHost.setShortVar(L"LUNITS", 3);
    const AcDbObjectId id = d.addField(c.code);
    d.evaluateAll();
    AsdkAreaOptionDialog area(d.dialogHost, d.registry);
    AsdkLengthOptionDialog length(d.dialogHost, d.registry);
    ObjectSetOptionDialog& page = c.area ? static_cast<ObjectSetOptionDialog&>(area) : length;
    ASSERT_EQ(page.setFieldToEdit(d.field(id)), AcDbField::kSuccess) << page.message();
    EXPECT_EQ(page.choice.scope, c.scope);
    EXPECT_EQ(page.choice.typeMask, c.mask);
    EXPECT_EQ(page.choice.selectedLayers, c.layers);
    EXPECT_EQ(page.units.selectedItem(), c.units);
    EXPECT_EQ(page.precision.selectedItem(), c.precision);
    EXPECT_EQ(page.previewText(), d.field(id).getDisplayText());
    EXPECT_EQ(page.fieldCode(), c.rebuilt.empty() ? c.code : c.rebuilt);  // opened and built again
  }
}

TEST(ObjectSetOptionDialog, AnExplicitListOpensInTheListAndKeepsItsValue) {
  Drawing d;
  const std::wstring code = L"%<\\AcLength Object(<" + d.handleOf(d.line) + L";;" + d.handleOf(d.arc) + L">)>%";
  const AcDbObjectId id = d.addField(code);
  d.evaluateAll();
  AsdkLengthOptionDialog page(d.dialogHost, d.registry);
  ASSERT_EQ(page.setFieldToEdit(d.field(id)), AcDbField::kSuccess);
  EXPECT_TRUE(page.choice.explicitObjects);
  EXPECT_EQ(page.choice.handles, d.handles({d.line, d.arc}));
  EXPECT_NEAR(page.value(), 5.0 + std::numbers::pi, 1e-9);
  EXPECT_EQ(page.fieldCode(), L"%<\\AcLength Object(<" + d.handleOf(d.line) + L";" + d.handleOf(d.arc) + L">)>%");
}

TEST(ObjectSetOptionDialog, DataThatDoesNotReadIsReportedAndTheNewStateKept) {
  struct Case {
    std::wstring code;
    std::optional<host::AcValue> data;  // replaces the record after evaluation
    int status;
    std::wstring message;
  } const cases[] = {
      {L"%<\\AcVar Date>%", {}, AcDbField::kOtherError, L"The field has no \"AcArea Data\" record."},
      {L"%<\\AcArea Object(<*AllObjects*>)>%", host::AcValue(2.5), AcDbField::kInvalidCode,
       L"The \"AcArea Data\" record of the field is not a text."},
      {L"%<\\AcArea Objects(<1A>)>%", {}, AcDbField::kInvalidCode, L"The object set does not begin with \"Object(\"."},
      {L"%<\\AcArea Object(<*AllObjects*>) \\colour \"red\">%",
       {},
       AcDbField::kInvalidCode,
       L"Unknown option \\colour."},
      {L"%<\\AcArea Object(<*AllObjects*>)>%", host::AcValue(std::wstring(L"Object(<*AllObjects*>) \\layer \"A")),
       AcDbField::kInvalidCode, L"The value of option \\layer has no closing double quote."},
  };
  for (const auto& c : cases) {
    Drawing d;
    const AcDbObjectId id = d.addField(c.code);
    d.evaluateAll();
    if (c.data) d.field(id).setData(L"AcArea Data", *c.data);
    AsdkAreaOptionDialog page(d.dialogHost, d.registry);
    EXPECT_EQ(page.setFieldToEdit(d.field(id)), c.status);
    EXPECT_EQ(page.message(), c.message);
    EXPECT_EQ(page.choice.typeMask, 82);
    EXPECT_EQ(page.fieldCode(), L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2\">%");
  }
}

TEST(ObjectSetOptionDialog, AdditionalFormatTakesFactorAffixesAndZerosBack) {
  Drawing d;
  AsdkLengthOptionDialog page(d.dialogHost, d.registry);
  page.onInitDialog();
  page.units.selectItem(2);
  page.onUnitsChanged();
  page.precision.selectItem(3);
  page.onPrecisionChanged();
  ASSERT_NEAR(page.value(), 6.28318530718 + 8.0 + 5.0 + std::numbers::pi, 1e-9);
  page.additional.decimalSeparator = 44;  // not shown by the dialog, kept by the page
  ASSERT_TRUE(page.onAdditionalFormat([](CAdditionalFormatDialog& f) {
    f.conversionFactor = L"2";
    f.prefix = L"L=";
    f.suffix = L" m";
    f.trailing.checked = true;
    return f.onOK();
  }));
  EXPECT_EQ(page.additional.conversionFactor, 2.0);
  EXPECT_EQ(page.additional.decimalSeparator, 44);
  EXPECT_EQ(page.formatString(), L"%lu2%pr3%ps[L=, m]%ct8[2]%ds44%zs8");
  EXPECT_EQ(page.previewText(),
            L"L=44,85 m");  // 44.8496 to three places, the trailing zero left out

  const std::wstring before = page.fieldCode();
  EXPECT_FALSE(page.onAdditionalFormat([](CAdditionalFormatDialog& f) {
    f.prefix = L"X";
    return false;
  }));
  EXPECT_EQ(page.fieldCode(), before);
}

}  // namespace
}  // namespace corvane
