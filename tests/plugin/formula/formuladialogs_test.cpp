// The formula page with its field-code and variable dialogs, worked as a user works them over a
// real drawing; the codes it builds are evaluated by the formula field itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/printf.h"
#include "core/utf8.h"
#include "host/acdbfield.h"
#include "host/acedprompts.h"
#include "host/hostui.h"
#include "plugin/fields/formatlists.h"
#include "plugin/formula/asdkformulaoptiondialog.h"
#include "plugin/formula/portformulapagehost.h"
#include "plugin/measure/dialogrig.h"

namespace corvane {
namespace {

using host::AcDbField;
using host::AcDbObjectId;
using host::AcValue;

constexpr double kRow = headless::Table::kDefaultRowHeight;
constexpr double kColumn = headless::Table::kDefaultColumnWidth;

// A drawing with the plug-in loaded and the formula page over it, its owner table shared with
// the application as the field dialog shares it.
struct Drawing : testing::DialogRig {
  PortFormulaPageHost pageHost{host, prompts, ui};
  AsdkFormulaOptionDialog page{pageHost, app.dialogOwnerTable(),
                               [this](AcDbObjectId table) { app.setDialogOwnerTable(table); }};
  Drawing() { page.onInitDialog(); }

  static std::wstring cellPoint(int row, int column) {
    return core::format(L"%g,%g", column * kColumn + kColumn / 2, -(row * kRow + kRow / 2));
  }
  // The field of a code that a text holds (the text's own field holds it as its child).
  AcDbObjectId inText(const std::wstring& code) { return field(addFieldText(code)).children().at(0); }
  // Its value, evaluated as the drawing evaluates it.
  AcValue placed(const std::wstring& code) {
    const AcDbObjectId id = inText(code);
    evaluateAll();
    AcValue value;
    field(id).getValue(value);
    return value;
  }
  void choose(ComboList& list, int item) { ASSERT_TRUE(list.selectItem(item)); }
  std::wstring boxText(std::size_t i) const { return i < ui.boxes().size() ? ui.boxes()[i].text : L"(no box)"; }
  std::wstring boxCaption(std::size_t i) const { return i < ui.boxes().size() ? ui.boxes()[i].caption : L"(no box)"; }
};

TEST(AsdkFormulaOptionDialog, StartsWithTheListsOfTheLanguage) {
  Drawing d;
  std::vector<ListEntry> units{{L"(none)", 0},      {L"Current units", -1}, {L"Decimal", 2},   {L"Architectural", 4},
                               {L"Engineering", 3}, {L"Fractional", 5},     {L"Scientific", 1}};
  EXPECT_EQ(d.page.units.entries(), units);
  EXPECT_EQ(d.page.units.selectedItem(), kUnitsNone);
  EXPECT_FALSE(d.page.precision.enabled);
  EXPECT_EQ(d.page.precision.size(), 0);
  const std::vector<std::wstring> functions{
      L"COS", L"IF",   L"LCASE", L"LEFT",  L"LOG", L"MAX",     L"MID",       L"MIN",        L"RIGHT",      L"ROUND",
      L"SIN", L"SQRT", L"TAN",   L"UCASE", L"SUM", L"ROUNDUP", L"ROUNDDOWN", L"SUBSTITUTE", L"ACAD_FIELD", L"VX_SELF"};
  EXPECT_EQ(d.page.functions, functions);
  EXPECT_EQ(d.page.ownerTableText(), L"");
}

TEST(AsdkFormulaOptionDialog, BuildsTheFieldCode) {
  struct Case {
    std::wstring expression;
    int units;
    std::optional<int> precision;
    std::wstring code;
  } const cases[] = {
      {L"=A1*2", kUnitsNone, {}, L"%<\\VxExpr (A1*2)>%"},
      {L"  = =A1+A2 \t ", kUnitsNone, {}, L"%<\\VxExpr (A1+A2)>%"},
      {L"A1 = 2", kUnitsNone, {}, L"%<\\VxExpr (A1 = 2)>%"},
      {L"1/3", 2, 3, L"%<\\VxExpr (1/3) \\f \"%lu2%pr3\">%"},
      {L"1/3", 2, kCurrentPrecision, L"%<\\VxExpr (1/3) \\f \"%lu2\">%"},
      {L"1/3", kUnitsCurrent, {}, L"%<\\VxExpr (1/3) \\f \"%lu6\">%"},
      {L"1/3", 4, 0, L"%<\\VxExpr (1/3) \\f \"%lu4%pr0\">%"},
      {L"1/3", 1, 8, L"%<\\VxExpr (1/3) \\f \"%lu1%pr8\">%"},
  };
  for (const auto& c : cases) {
    Drawing d;
    d.page.expression = c.expression;
    d.choose(d.page.units, c.units);
    d.page.onUnitsChanged();
    EXPECT_EQ(d.page.precision.enabled, c.units > 0) << c.code;
    if (c.precision) d.choose(d.page.precision, *c.precision);
    EXPECT_EQ(d.page.fieldCode(), c.code);
  }
}

TEST(AsdkFormulaOptionDialog, ReadsAnExistingFieldBack) {
  struct Case {
    std::wstring expression;
    int units;
    std::optional<int> precision;  // chosen; none keeps the list's first entry
    bool precisionEnabled;
    std::optional<int> selected;  // the precision entry read back
  } const cases[] = {
      {L"1/3", 2, 3, true, 3},
      {L"1/3", kUnitsCurrent, {}, false, {}},
      {L"1/3", 1, 0, true, 0},
      {L"10/4", 5, {}, true, kCurrentPrecision},
      {L"A1+1", kUnitsNone, {}, false, {}},
  };
  for (const auto& c : cases) {
    Drawing d;
    d.page.expression = c.expression;
    d.choose(d.page.units, c.units);
    d.page.onUnitsChanged();
    if (c.precision) d.choose(d.page.precision, *c.precision);
    const AcDbObjectId id = d.inText(d.page.fieldCode());
    d.evaluateAll();

    Drawing again;
    EXPECT_EQ(again.page.setFieldToEdit(d.field(id)), AcDbField::kSuccess);
    EXPECT_EQ(again.page.expression, c.expression);
    EXPECT_EQ(again.page.units.selectedItem(), c.units) << c.expression;
    EXPECT_EQ(again.page.precision.enabled, c.precisionEnabled) << c.expression;
    EXPECT_EQ(again.page.precision.selectedItem(), c.selected) << c.expression;
    EXPECT_EQ(again.page.fieldCode(), d.page.fieldCode());
  }
}

TEST(AsdkFormulaOptionDialog, AFieldThatShowsTextReadsBackWithoutUnits) {
  Drawing d;
  const AcDbObjectId id = d.inText(L"%<\\VxExpr (UCASE('ab')) \\f \"%lu2%pr3\">%");
  d.evaluateAll();
  EXPECT_EQ(d.page.setFieldToEdit(d.field(id)), AcDbField::kSuccess);
  EXPECT_EQ(d.page.expression, L"UCASE('ab')");
  EXPECT_EQ(d.page.units.selectedItem(), kUnitsNone);
  EXPECT_FALSE(d.page.precision.enabled);
  EXPECT_EQ(d.page.fieldCode(), L"%<\\VxExpr (UCASE('ab'))>%");
}

TEST(AsdkFormulaOptionDialog, RecordsThatDoNotRead) {
  Drawing d;
  headless::Field& bare = d.field(d.addField(L"%<\\VxExpr (1)>%"));
  EXPECT_EQ(d.page.setFieldToEdit(bare), AcDbField::kOtherError);
  bare.putData(L"VxExpr Data", AcValue(2.0));
  EXPECT_EQ(d.page.setFieldToEdit(bare), AcDbField::kInvalidCode);
  EXPECT_EQ(d.page.expression, L"");
}

TEST(AsdkFormulaOptionDialog, PicksTableCellsIntoTheExpression) {
  Drawing d;
  std::vector<std::wstring> row(30, L"1");
  d.addTable({row, row, row});
  d.pageHost.setShortVar(L"OSMODE", 4133);
  d.page.expression = L"+";
  d.page.caret = 0;
  d.answer(Drawing::cellPoint(2, 1));
  EXPECT_EQ(d.page.onPickCell(), host::RTNORM);
  EXPECT_EQ(d.page.expression, L"B3+");
  d.page.caret = std::wstring::npos;
  d.answer(Drawing::cellPoint(0, 27));
  d.page.onPickCell();
  EXPECT_EQ(d.page.expression, L"B3+AB1");
  d.answer(L"5000,5000");
  d.page.onPickCell();
  d.answer(L"^C");
  EXPECT_NE(d.page.onPickCell(), host::RTNORM);
  EXPECT_EQ(d.page.expression, L"B3+AB1");
  int osmode = 0;
  d.pageHost.getShortVar(L"OSMODE", osmode);
  EXPECT_EQ(osmode, 4133);
}

// The field-code dialog worked by a view that types the text and presses OK until it is taken.
ShowModal<CInsertFieldCodeDialog> typing(std::wstring text) {
  return [text](CInsertFieldCodeDialog& dialog) {
    dialog.text = text;
    return dialog.onOK();
  };
}

TEST(CInsertFieldCodeDialog, TakesOnlyAFieldThatIsNoFormula) {
  struct Case {
    std::wstring text;
    std::wstring message;  // empty: taken
  } const cases[] = {
      {L"%<\\VxExpr (1+1)>%", L"Cannot insert the VxExpr field."},
      {L"x %<\\VxExpr (1+1)>% y", L"Cannot insert the VxExpr field."},
      {L"plain text", L"Invalid field code."},
      {L"   ", L"Invalid field code."},
      {L"%<\\AcVar", L"Invalid field code."},
      {L"  %<\\AcVar LUPREC>%  ", L""},
  };
  for (const auto& c : cases) {
    Drawing d;
    CInsertFieldCodeDialog dialog(d.pageHost);
    dialog.text = c.text;
    EXPECT_EQ(dialog.onOK(), c.message.empty()) << c.text.size();
    if (c.message.empty()) {
      EXPECT_EQ(dialog.result(), L"%<\\AcVar LUPREC>%");
      EXPECT_TRUE(d.ui.boxes().empty());
    } else {
      EXPECT_EQ(d.box(), c.message);
      EXPECT_EQ(d.boxCaption(0), L"Corvane");
      EXPECT_EQ(d.ui.boxes()[0].flags, host::MB_OK | host::MB_ICONINFORMATION);
      EXPECT_EQ(dialog.result(), L"");
    }
  }
}

TEST(AsdkFormulaOptionDialog, EmbedsAFieldThatSurvivesAsAHandle) {
  Drawing d;
  const AcDbObjectId circle = d.addCircle(2.5);
  const std::wstring byId = core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).Radius>%%",
                                         static_cast<unsigned long long>(circle.asOldId()));
  d.page.expression = L"*2";
  d.page.caret = 0;
  ASSERT_TRUE(d.page.onInsertField(typing(byId)));

  std::wstring plain;
  for (const wchar_t ch : d.page.expression) {
    if (ch != L'\x1F') plain += ch;
  }
  EXPECT_EQ(plain, L"ACAD_FIELD('%<\\AcObjProp Object(%<\\_ObjHandle " + d.handleOf(circle) + L">%).Radius>%')*2");
  EXPECT_EQ(d.page.expression.size(), plain.size() + plain.size() - 17);  // a separator between every two of the code
  EXPECT_EQ(d.placed(d.page.fieldCode()), AcValue(std::int32_t{5}));

  d.page.expression = L"";
  EXPECT_FALSE(d.page.onInsertField(typing(L"%<\\VxExpr (2)>%")));
  EXPECT_EQ(d.page.expression, L"");
}

// The variable dialog worked by a view: the name and code typed, then Add.
bool add(CAddFieldCodeVarDialog& dialog, std::wstring name, std::wstring code) {
  dialog.name = std::move(name);
  dialog.fieldCode = std::move(code);
  return dialog.onAdd();
}

TEST(CAddFieldCodeVarDialog, RefusesNamesAndCodes) {
  const std::wstring characters =
      L"The variable name can't contain the blank space and any of the following characters: \n/\\\"': *?<>|%,;(){}[]&";
  struct Case {
    std::wstring name;
    std::wstring code;
    std::wstring message;
  } const cases[] = {
      {L"Width 2", L"%<\\AcVar LUPREC>%", characters},
      {L"a(b)", L"%<\\AcVar LUPREC>%", characters},
      {L"a&b", L"%<\\AcVar LUPREC>%", characters},
      {L"w%", L"%<\\AcVar LUPREC>%", characters},
      {L"2nd", L"%<\\AcVar LUPREC>%", L"The first character of the variable name must be an alphabet."},
      {L"_x", L"%<\\AcVar LUPREC>%", L"The first character of the variable name must be an alphabet."},
      {L"", L"%<\\AcVar LUPREC>%", L"The variable name is empty."},
      {L"  \t", L"%<\\AcVar LUPREC>%", L"The variable name is empty."},
      {L"Width", L"", L"Invalid Field Code."},
      {L"Width", L"  ", L"Invalid Field Code."},
  };
  for (const auto& c : cases) {
    Drawing d;
    CAddFieldCodeVarDialog dialog(d.pageHost);
    dialog.onInitDialog();
    EXPECT_FALSE(add(dialog, c.name, c.code)) << c.name.size();
    EXPECT_EQ(d.box(), c.message);
    EXPECT_EQ(d.boxCaption(0), L"Corvane");
    EXPECT_TRUE(dialog.rows.empty());
  }
  // The message names exactly 21 characters after its line break.
  EXPECT_EQ(characters.size() - characters.find(L'\n') - 1, 21u);
}

TEST(CAddFieldCodeVarDialog, UpdatesANameOfAnyCaseOnlyWhenAsked) {
  Drawing d;
  CAddFieldCodeVarDialog dialog(d.pageHost);
  dialog.onInitDialog();
  ASSERT_TRUE(add(dialog, L" width ", L"%<\\AcVar LUPREC>%"));
  ASSERT_TRUE(add(dialog, L"Depth", L"%<\\AcVar LUNITS>%"));
  EXPECT_TRUE(d.ui.boxes().empty());

  d.answer(L"[No]");
  EXPECT_FALSE(add(dialog, L"WIDTH", L"%<\\AcVar DIMZIN>%"));
  d.answer(L"[Yes]");
  EXPECT_TRUE(add(dialog, L"WIDTH", L"%<\\AcVar DIMZIN>%"));
  ASSERT_EQ(d.ui.boxes().size(), 2u);
  for (const auto& box : d.ui.boxes()) {
    EXPECT_EQ(box.text, L"A variable you specified already exists. Do you want to update it?");
    EXPECT_EQ(box.caption, L"Corvane");
  }
  EXPECT_EQ(dialog.rows,
            (std::vector<FormulaVariable>{{L"width", L"%<\\AcVar DIMZIN>%"}, {L"Depth", L"%<\\AcVar LUNITS>%"}}));
}

TEST(CAddFieldCodeVarDialog, RemovesSelectedRowsOnlyWhenAsked) {
  Drawing d;
  CAddFieldCodeVarDialog dialog(d.pageHost);
  dialog.onInitDialog();
  for (const wchar_t* name : {L"a", L"b", L"c"}) add(dialog, name, L"1");
  EXPECT_FALSE(dialog.onRemove());
  dialog.selectedRows = {2, 0, 2};
  d.answer(L"[No]");
  EXPECT_FALSE(dialog.onRemove());
  EXPECT_EQ(dialog.rows.size(), 3u);
  d.answer(L"[Yes]");
  EXPECT_TRUE(dialog.onRemove());
  EXPECT_EQ(dialog.rows, (std::vector<FormulaVariable>{{L"b", L"1"}}));
  const std::vector<std::wstring> said{L"Please select a item first.", L"Are you sure you want to remove the item(s)?",
                                       L"Are you sure you want to remove the item(s)?"};
  ASSERT_EQ(d.ui.boxes().size(), said.size());
  for (std::size_t i = 0; i < said.size(); ++i) {
    EXPECT_EQ(d.boxText(i), said[i]);
    EXPECT_EQ(d.boxCaption(i), L"Halvek Corvane");
  }
}

TEST(CAddFieldCodeVarDialog, VariablesStayWithTheDrawingAndFormulasReadThem) {
  Drawing d;
  const std::wstring longCode = L"%<\\AcVar LUPREC>%" + std::wstring(600, L'x');
  ASSERT_TRUE(d.page.onVariables([&](CAddFieldCodeVarDialog& dialog) {
    return add(dialog, L"Width", L"%<\\AcVar LUPREC>%") && add(dialog, L"Note", longCode) &&
           add(dialog, L"Half", L"%<\\VxExpr (0.5)>%") && dialog.onOK();
  }));
  ASSERT_TRUE(d.page.onVariables([&](CAddFieldCodeVarDialog& dialog) {
    EXPECT_EQ(dialog.rows,
              (std::vector<FormulaVariable>{
                  {L"Width", L"%<\\AcVar LUPREC>%"}, {L"Note", longCode}, {L"Half", L"%<\\VxExpr (0.5)>%"}}));
    return true;
  }));
  int luprec = 0;
  d.pageHost.getShortVar(L"LUPREC", luprec);
  EXPECT_EQ(d.placed(L"%<\\VxExpr (width*2+1)>%"), AcValue(std::int32_t{luprec * 2 + 1}));
  EXPECT_EQ(d.placed(L"%<\\VxExpr (Half*3)>%"), AcValue(1.5));
  // A name no dialog bound is still a system variable.
  EXPECT_EQ(d.placed(L"%<\\VxExpr (LUPREC+1)>%"), AcValue(std::int32_t{luprec + 1}));

  // Cancelling the dialog keeps what the drawing holds.
  EXPECT_FALSE(d.page.onVariables([](CAddFieldCodeVarDialog& dialog) {
    dialog.selectedRows = {0, 1, 2};
    return false;
  }));
  EXPECT_EQ(d.placed(L"%<\\VxExpr (Width)>%"), AcValue(std::int32_t{luprec}));
}

// A function, a variable and an embedded field put in one after another build one formula,
// each at the caret the one before left, and the field placed with it evaluates.
TEST(AsdkFormulaOptionDialog, InsertionsBuildTheFormulaAtTheCaret) {
  Drawing d;
  ASSERT_TRUE(d.page.onVariables([&](CAddFieldCodeVarDialog& dialog) {
    return add(dialog, L"Half", L"%<\\VxExpr (0.5)>%") && dialog.onOK();
  }));
  const auto round = std::find(d.page.functions.begin(), d.page.functions.end(), L"ROUND");
  ASSERT_NE(round, d.page.functions.end());
  ASSERT_TRUE(d.page.onInsertFunction(static_cast<std::size_t>(round - d.page.functions.begin())));
  EXPECT_EQ(d.page.expression, L"ROUND()");
  ASSERT_TRUE(d.page.onInsertVariable(L"HALF"));  // spelled as defined
  d.page.expression.insert(d.page.caret, L"*");
  ++d.page.caret;
  ASSERT_TRUE(d.page.onInsertField([](CInsertFieldCodeDialog& dialog) {
    dialog.text = L"%<\\AcVar LUPREC>%";
    return dialog.onOK();
  }));
  d.page.expression.insert(d.page.caret, L",1");
  EXPECT_EQ(d.page.expression.substr(0, 11), L"ROUND(Half*") << core::toUtf8(d.page.expression);
  EXPECT_EQ(d.page.expression.substr(d.page.expression.size() - 3), L",1)");
  int luprec = 0;
  d.pageHost.getShortVar(L"LUPREC", luprec);
  const AcValue value = d.placed(d.page.fieldCode());
  double real = 0.0;
  std::int32_t whole = 0;
  if (value.get(whole)) real = whole;
  ASSERT_TRUE(value.get(real) || value.get(whole)) << core::toUtf8(d.page.fieldCode());
  EXPECT_DOUBLE_EQ(real, std::round(luprec * 0.5 * 10) / 10);

  // Refusals change nothing.
  const std::wstring before = d.page.expression;
  EXPECT_FALSE(d.page.onInsertFunction(d.page.functions.size()));
  EXPECT_FALSE(d.page.onInsertVariable(L"Width"));
  EXPECT_EQ(d.page.expression, before);
}

TEST(AsdkFormulaOptionDialog, PreviewAsksForTheOwnerTableOfAFormulaPlacedNowhere) {
  Drawing d;
  const AcDbObjectId table = d.addTable({{L"12.5", L"abc"}});
  const AcDbObjectId circle = d.addCircle(1);
  d.page.expression = L"=A1*2";

  d.answer(L"^C");
  EXPECT_FALSE(d.page.onPreview());
  d.answer(L"(handent \"" + d.handleOf(circle) + L"\")");
  EXPECT_FALSE(d.page.onPreview());
  EXPECT_EQ(d.page.previewText(), L"");
  EXPECT_TRUE(d.app.dialogOwnerTable().isNull());

  d.answer(L"(handent \"" + d.handleOf(table) + L"\")");
  EXPECT_TRUE(d.page.onPreview());
  EXPECT_EQ(d.app.dialogOwnerTable(), table);
  EXPECT_EQ(d.page.ownerTableText(), d.handleOf(table));
  EXPECT_EQ(d.page.previewText(), L"25");

  const std::vector<std::wstring> said{
      L"Cannot get the owner table of the field. Please select the owner table.",
      L"Cannot get the owner table of the field. Please select the owner table.",
      core::format(L"Invalid table: %s.", host::acadErrorStatusText(host::Acad::eNotThatKindOfClass)),
      L"Cannot get the owner table of the field. Please select the owner table."};
  ASSERT_EQ(d.ui.boxes().size(), said.size());
  for (std::size_t i = 0; i < said.size(); ++i) {
    EXPECT_EQ(d.boxText(i), said[i]);
    EXPECT_EQ(d.boxCaption(i), L"Corvane");
  }
  EXPECT_NE(d.said.find(L"Select the owner table of the field."), std::wstring::npos);

  // Chosen once, the table serves the next preview and the next page without asking.
  d.page.expression = L"B1";
  d.choose(d.page.units, 2);
  d.page.onUnitsChanged();
  EXPECT_TRUE(d.page.onPreview());
  EXPECT_EQ(d.page.previewText(), L"abc");
  EXPECT_EQ(d.page.units.selectedItem(), kUnitsNone);
  EXPECT_FALSE(d.page.precision.enabled);
  AsdkFormulaOptionDialog next(d.pageHost, d.app.dialogOwnerTable(), nullptr);
  next.onInitDialog();
  EXPECT_EQ(next.ownerTableText(), d.handleOf(table));
  EXPECT_EQ(d.ui.boxes().size(), said.size());
}

}  // namespace
}  // namespace corvane
