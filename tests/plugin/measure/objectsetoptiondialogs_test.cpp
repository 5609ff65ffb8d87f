// The option pages of the area and length fields and their object filter, worked as a user works them, against a
// drawing in memory.
#include <gtest/gtest.h>

#include <numbers>

#include "dialogrig.h"
#include "host/acdbfield.h"
#include "host/hostui.h"
#include "plugin/measure/asdkareaoptiondialog.h"
#include "plugin/measure/asdklengthoptiondialog.h"
#include "plugin/measure/cobjectfilterdialog.h"

namespace corvane {
namespace {

using host::AcDbField;
using host::AcDbObjectId;
using host::ResBufList;
using std::numbers::pi;

// Layers 0, Walls, Doors; on them a circle of radius 1 (Walls), a closed 2 x 2 square polyline (0), a line 3-4-5 (0), a
// quarter arc of radius 2 (Walls) and a 10 x 10 hatch (Doors); an area and a length page over them.
struct Drawing : testing::DialogRig {
  AcDbObjectId circle, square, line, arc, hatch;
  AsdkAreaOptionDialog areaPage{dialogHost, registry};
  AsdkLengthOptionDialog lengthPage{dialogHost, registry};
  Drawing() {
    addLayer(L"Walls");
    addLayer(L"Doors");
    circle = addCircle(1.0, L"Walls");
    square = addPolyline({{{0, 0}}, {{2, 0}}, {{2, 2}}, {{0, 2}}}, true);
    line = addLine({0, 0, 0}, {3, 4, 0});
    arc = put(std::make_unique<headless::Arc>(host::AcGePoint3d{}, 2.0, 0.0, pi / 2), L"Walls");
    const int outer = headless::HatchLoop::kExternal | headless::HatchLoop::kOutermost;
    hatch = put(std::make_unique<headless::Hatch>(
                    L"SOLID", true,
                    std::vector{headless::HatchLoop::polyline({{{0, 0}}, {{10, 0}}, {{10, 10}}, {{0, 10}}}, outer)}),
                L"Doors");
  }
  ObjectSetOptionDialog& page(bool area) { return area ? static_cast<ObjectSetOptionDialog&>(areaPage) : lengthPage; }
  std::vector<std::wstring> handles(std::vector<AcDbObjectId Drawing::*> members) {
    std::vector<std::wstring> out;
    for (const auto member : members) out.push_back(handleOf(this->*member));
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

host::ResBuf op(const wchar_t* text) { return {-4, std::wstring(text)}; }
host::ResBuf type(const wchar_t* text) { return {0, std::wstring(text)}; }

TEST(CObjectFilterDialog, ShowsTheOfferedTypesAndTheDrawingsLayers) {
  struct Case {
    int offered, mask;
    std::vector<std::wstring> visible, checked;
  } const cases[] = {
      {kAreaTypes, 16, {L"Polyline", L"Circle", L"Hatch"}, {L"Circle"}},
      {kLengthTypes, 33, {L"Line", L"Polyline", L"Circle", L"Arc"}, {L"Line", L"Arc"}},
  };
  Drawing d;
  for (const auto& c : cases) {
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
  EXPECT_EQ(d.box(), L"Invalid object types.");
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

// A new field measures every layer and the page's own types, in the drawing's units; the precision list waits for a
// choice of units. Other units and precisions are the format lists' own cases.
TEST(ObjectSetOptionDialog, NewFieldsTakeTheDrawingsUnitsEveryLayerAndThePagesTypes) {
  Drawing d;
  ASSERT_TRUE(d.dialogHost.setShortVar(L"LUNITS", 4));
  for (const bool area : {true, false}) {
    ObjectSetOptionDialog& page = d.page(area);
    page.onInitDialog();
    EXPECT_EQ(page.choice.typeMask, area ? 82 : 51);
    EXPECT_EQ(page.choice.selectedLayers, (std::vector<std::wstring>{L"0", L"Walls", L"Doors"}));
    EXPECT_EQ(page.units.selectedItem(), 4);
    EXPECT_FALSE(page.precision.enabled);
    EXPECT_EQ(page.fieldCode(), area ? L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2%ct4%qf1 SQ. FT.\">%"
                                     : L"%<\\AcLength Object(<*AllObjects*>) \\f \"%lu4\">%");
  }
}

TEST(ObjectSetOptionDialog, PicksAddWhatPassesTheLayersAndThePagesTypesOnce) {
  struct Case {
    bool area;
    ResBufList filter;
    int mask;  // set through the filter dialog; 0: as opened
    std::vector<std::wstring> keptLayers;
    std::vector<AcDbObjectId Drawing::*> expected;
  } const cases[] = {
      // The hatch passes the selection filter but never the area page's own test.
      {true,
       {op(L"<or"), op(L"<and"), type(L"CIRCLE"), op(L"and>"), op(L"<and"), type(L"LWPOLYLINE"), op(L"and>"),
        op(L"<and"), type(L"HATCH"), op(L"and>"), op(L"or>")},
       0, {L"0", L"Walls", L"Doors"}, {&Drawing::circle, &Drawing::square}},
      {true, {}, kCircleType, {L"0", L"Walls", L"Doors"}, {&Drawing::circle}},
      {false,
       {op(L"<or"), op(L"<and"), type(L"ARC"), op(L"and>"), op(L"<and"), type(L"CIRCLE"), op(L"and>"), op(L"<and"),
        type(L"LINE"), op(L"and>"), op(L"<and"), type(L"LWPOLYLINE"), op(L"and>"), op(L"or>")},
       0, {L"Walls"}, {&Drawing::circle, &Drawing::arc}},
  };
  for (const auto& c : cases) {
    Drawing d;
    ObjectSetOptionDialog& page = d.page(c.area);
    page.onInitDialog();
    if (!c.filter.empty()) {
      EXPECT_EQ(page.selectionFilter(), c.filter);
    }
    ASSERT_TRUE(page.onObjectFilter(confirm([&](CObjectFilterDialog& f) {
      if (c.mask) checkTypes(f, c.mask);
      for (auto& item : f.layers)
        item.checked = std::find(c.keptLayers.begin(), c.keptLayers.end(), item.name) != c.keptLayers.end();
    })));
    d.answer(L"ALL\n\nALL\n\n");  // picked twice: nothing is listed twice
    EXPECT_EQ(page.onAddObjects(), host::RTNORM);
    EXPECT_EQ(page.onAddObjects(), host::RTNORM);
    EXPECT_EQ(page.choice.handles, d.handles(c.expected));
    EXPECT_TRUE(page.choice.explicitObjects);
  }
}

TEST(ObjectSetOptionDialog, ThePreviewFollowsEachChange) {
  Drawing d;
  AsdkAreaOptionDialog& page = d.areaPage;
  page.onInitDialog();
  page.units.selectItem(2);
  page.onUnitsChanged();
  page.precision.selectItem(2);
  page.onPrecisionChanged();
  // Every space: circle, square, the arc's segment (quarter circle less its triangle) and the hatch.
  EXPECT_NEAR(page.value(), pi + 4.0 + (pi - 2.0) + 100.0, 1e-9);
  EXPECT_EQ(page.previewText(), L"108.28");

  d.answer(L"(handent \"" + d.handleOf(d.circle) + L"\")\n(handent \"" + d.handleOf(d.square) + L"\")\n\n");
  ASSERT_EQ(page.onAddObjects(), host::RTNORM);
  EXPECT_EQ(page.fieldCode(),
            L"%<\\AcArea Object(<" + d.handleOf(d.circle) + L";" + d.handleOf(d.square) + L">) \\f \"%lu2%pr2\">%");
  EXPECT_EQ(page.previewText(), L"7.14");

  page.selectedHandles = {0};
  page.onRemoveObjects();
  EXPECT_EQ(page.choice.handles, d.handles({&Drawing::square}));
  EXPECT_EQ(page.previewText(), L"4.00");

  page.selectedHandles = {0};
  page.onRemoveObjects();  // the list empty: the whole drawing again
  EXPECT_FALSE(page.choice.explicitObjects);
  EXPECT_EQ(page.previewText(), L"108.28");

  // No layer checked: every layer is measured, but only the page's types, so the arc drops out.
  ASSERT_TRUE(page.onObjectFilter(confirm([](CObjectFilterDialog& f) { f.onDeselectAll(); })));
  EXPECT_EQ(page.fieldCode(), L"%<\\AcArea Object(<*AllObjects*>) \\objtype \"82\" \\f \"%lu2%pr2\">%");
  EXPECT_EQ(page.previewText(), L"107.14");

  // Cancelled: the page's state is as it was.
  EXPECT_FALSE(page.onObjectFilter([](CObjectFilterDialog& f) {
    checkTypes(f, kHatchType);
    return false;
  }));
  EXPECT_EQ(page.choice.typeMask, 82);
}

TEST(ObjectSetOptionDialog, TheObjectFilterPrunesTheListFromTheLast) {
  struct Case {
    int mask;
    std::wstring uncheck;
    bool eraseLine;
    std::vector<AcDbObjectId Drawing::*> kept;
  } const cases[] = {
      {0, L"Walls", false, {&Drawing::square, &Drawing::line}},
      {kPolylineType | kCircleType, L"", false, {&Drawing::circle, &Drawing::square}},
      {0, L"", true, {&Drawing::circle, &Drawing::square, &Drawing::arc}},  // a stale handle
  };
  for (const auto& c : cases) {
    Drawing d;
    d.lengthPage.onInitDialog();
    d.answer(L"ALL\n\n");
    ASSERT_EQ(d.lengthPage.onAddObjects(), host::RTNORM);
    if (c.eraseLine) {
      host::AcDbObjectPointer<host::AcDbObject> line(d.host, d.line, host::AcDb::kForWrite);
      ASSERT_EQ(line->erase(), host::Acad::eOk);
    }
    ASSERT_TRUE(d.lengthPage.onObjectFilter(confirm([&](CObjectFilterDialog& f) {
      if (c.mask) checkTypes(f, c.mask);
      for (auto& item : f.layers) item.checked = item.checked && item.name != c.uncheck;
    })));
    EXPECT_EQ(d.lengthPage.choice.handles, d.handles(c.kept)) << c.mask;
  }
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
      // clang-format on
  };
  for (const auto& c : cases) {
    Drawing d;
    d.dialogHost.setShortVar(L"LUNITS", 3);
    const AcDbObjectId id = d.addField(c.code);
    d.evaluateAll();
    ObjectSetOptionDialog& page = d.page(c.area);
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
  const std::wstring line = d.handleOf(d.line), arc = d.handleOf(d.arc);
  const AcDbObjectId id = d.addField(L"%<\\AcLength Object(<" + line + L";;" + arc + L">)>%");
  d.evaluateAll();
  ASSERT_EQ(d.lengthPage.setFieldToEdit(d.field(id)), AcDbField::kSuccess);
  EXPECT_TRUE(d.lengthPage.choice.explicitObjects);
  EXPECT_EQ(d.lengthPage.choice.handles, (std::vector{line, arc}));
  EXPECT_NEAR(d.lengthPage.value(), 5.0 + pi, 1e-9);
  EXPECT_EQ(d.lengthPage.fieldCode(), L"%<\\AcLength Object(<" + line + L";" + arc + L">)>%");
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
      {L"%<\\AcArea Object(<*AllObjects*>) \\colour \"red\">%", {}, AcDbField::kInvalidCode,
       L"Unknown option \\colour."},
  };
  for (const auto& c : cases) {
    Drawing d;
    const AcDbObjectId id = d.addField(c.code);
    d.evaluateAll();
    if (c.data) d.field(id).setData(L"AcArea Data", *c.data);
    EXPECT_EQ(d.areaPage.setFieldToEdit(d.field(id)), c.status);
    EXPECT_EQ(d.areaPage.message(), c.message);
    EXPECT_EQ(d.areaPage.choice.typeMask, 82);
    EXPECT_EQ(d.areaPage.fieldCode(), L"%<\\AcArea Object(<*AllObjects*>) \\f \"%lu2\">%");
  }
}

TEST(ObjectSetOptionDialog, AdditionalFormatTakesFactorAffixesAndZerosBack) {
  Drawing d;
  AsdkLengthOptionDialog& page = d.lengthPage;
  page.onInitDialog();
  page.units.selectItem(2);
  page.onUnitsChanged();
  page.precision.selectItem(3);
  page.onPrecisionChanged();
  ASSERT_NEAR(page.value(), 6.28318530718 + 8.0 + 5.0 + pi, 1e-9);
  page.additional.decimalSeparator = 44;  // not shown by the dialog, kept by the page
  ASSERT_TRUE(page.onAdditionalFormat([](CAdditionalFormatDialog& f) {
    f.conversionFactor = L"2";
    f.prefix = L"L=";
    f.suffix = L" m";
    f.trailing.checked = true;
    return f.onOK();
  }));
  EXPECT_EQ(page.formatString(), L"%lu2%pr3%ps[L=, m]%ct8[2]%ds44%zs8");
  EXPECT_EQ(page.previewText(), L"L=44,85 m");  // 44.8496 to three places, the trailing zero left out

  const std::wstring before = page.fieldCode();
  EXPECT_FALSE(page.onAdditionalFormat([](CAdditionalFormatDialog& f) {
    f.prefix = L"X";
    return false;
  }));
  EXPECT_EQ(page.fieldCode(), before);
}

}  // namespace
}  // namespace corvane
