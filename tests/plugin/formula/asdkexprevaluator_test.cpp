#include "plugin/formula/asdkexprevaluator.h"

#include <gtest/gtest.h>

#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;
using host::AcDbField;
using host::AcValue;

TEST(FormulaResultValue, TypesTheEnginesText) {
  struct Case {
    std::wstring result, format;
    AcValue expected;
  } const cases[] = {
      {L"12", L"", AcValue(std::int32_t{12})},
      {L"12.000001", L"", AcValue(std::int32_t{12})},  // within 1e-5 of its integer
      {L"-3.99999", L"", AcValue(-3.99999)},
      {L"12.5", L"", AcValue(12.5)},
      {L"1E+06", L"", AcValue(1e6)},                   // leading integer 1: a double
      {L"abc", L"", AcValue(L"abc")},
      {L"", L"", AcValue(L" ")},
      {L"\x13", L"", AcValue(L" ")},          // an empty literal
      {L"\x13" L"12", L"%lu2", AcValue(L"12")},  // the literal '12' stays a text
      {L"\x13" L"abc", L"", AcValue(L"abc")},
      {L"divider is 0.", L"%lu2", AcValue(L"divider is 0.")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FormulaResultValue(c.result, c.format), c.expected) << c.result.size();
  }
  AcValue formatted = FormulaResultValue(L"8", L"%lu2%pr2");
  EXPECT_EQ(formatted.getFormat(), L"%lu2%pr2");
  EXPECT_EQ(FormulaResultValue(L"x", L"%lu2%pr2").getFormat(), L"");  // texts carry no format
}

TEST(FormulaExpressionOf, TakesWhatStandsBetweenTheParentheses) {
  EXPECT_EQ(FormulaExpressionOf(L"\\VxExpr (A1*2)"), L"A1*2");
  EXPECT_EQ(FormulaExpressionOf(L"\\VxExpr ((1+2)*(3))"), L"(1+2)*(3)");
  EXPECT_EQ(FormulaExpressionOf(L"\\VxExpr 1+2"), L"1+2");
  EXPECT_EQ(FormulaExpressionOf(L"\\VxExpr"), L"");
}

TEST(AsdkExprEvaluator, EvaluatesThroughTheFieldEngine) {
  TestDrawing d;
  CCorvaneApp app(d.host);
  app.onInitialize();
  const std::wstring handle = d.host.handle(d.addCircle(1.25)).text();
  struct Case {
    std::wstring code;
    std::wstring display;
  } const cases[] = {
      {L"%<\\VxExpr (LUPREC*2) \\f \"%lu2%pr2\">%", L"8.00"},
      {L"%<\\VxExpr (" + handle + L"!Radius*4)>%", L"5"},
      {L"%<\\VxExpr (ROUND(2.346,2))>%", L"2.350000"},
      {L"%<\\VxExpr (1/0)>%", L"divider is 0."},
      {L"%<\\VxExpr (UCASE('ab') & '-' & %<\\AcVar LUNITS>%)>%", L"AB-2"},
      {L"%<\\VxExpr ('')>%", L" "},
  };
  for (const auto& c : cases) {
    const auto id = d.addField(c.code);
    d.evaluateAll();
    EXPECT_EQ(d.field(id).evaluationStatus(), AcDbField::kSuccess) << c.code.size();
    EXPECT_EQ(d.field(id).getDisplayText(), c.display) << c.code.size();
  }
  app.onUnload();
}

TEST(AsdkExprEvaluator, RecordProblemsAreFieldFailures) {
  TestDrawing d;
  AsdkExprEvaluator evaluator;
  auto& field = d.field(d.addField(L"%<\\VxExpr (1)>%"));
  host::AcFdFieldValue value(L"kept");
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value), AcDbField::kOtherError);  // not compiled: no record
  field.putData(L"VxExpr Data", AcValue(2.0));
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value), AcDbField::kInvalidCode);
  EXPECT_EQ(value, host::AcFdFieldValue(L"kept"));
}

}  // namespace
}  // namespace corvane

namespace corvane {
namespace {

TEST(AsdkExprEvaluator, BindsTheTableItStandsIn) {
  TestDrawing d;
  CCorvaneApp app(d.host);
  app.onInitialize();
  const auto table = d.addTable({{L"2", L"3", L"abc"},
                                 {L"4.5", L"", L""},
                                 {L"%<\\VxExpr (A1*2)>%", L"%<\\VxExpr (SUM(A1:B2))>%",
                                  L"%<\\VxExpr (MAX(A1:A2) & '|' & $C$1 & '|' & AB1)>%"}});
  d.evaluateAll();
  auto& cells = d.table(table);
  EXPECT_EQ(cells.textString(2, 0), L"4");
  EXPECT_EQ(cells.textString(2, 1), L"9.500000");  // a real with no format, as the host shows it
  EXPECT_EQ(cells.textString(2, 2), L"4.5|abc|AB1");  // a cell past the table stays a name

  // A loose field has no table; one placed nowhere takes the table the dialog chose.
  const auto loose = d.addFieldText(L"%<\\VxExpr (A1+1)>%");
  host::AcDbObjectId chosen;
  AsdkExprEvaluator evaluator(&chosen);
  auto& unplaced = d.field(d.addField(L"%<\\VxExpr (A1)>%"));
  evaluator.compile(&unplaced, &d.db, nullptr);
  host::AcFdFieldValue value;
  ASSERT_EQ(evaluator.evaluateField(&unplaced, &d.db, value), AcDbField::kSuccess);
  EXPECT_EQ(value, host::AcFdFieldValue(L"A1"));  // no table: "A1" is a plain name
  chosen = table;
  ASSERT_EQ(evaluator.evaluateField(&unplaced, &d.db, value), AcDbField::kSuccess);
  EXPECT_EQ(value, host::AcFdFieldValue(std::int32_t{2}));
  d.evaluateAll();
  EXPECT_EQ(d.field(loose).getDisplayText(), L"#VAL!");  // a text field's own context binds no table
  app.onUnload();
}

// The evaluator keeps what it parsed between evaluations: a cell read again after an edit,
// and a formula whose text or format changed, must show what they are now.
TEST(AsdkExprEvaluator, RecomputesWhatChangedBetweenEvaluations) {
  TestDrawing d;
  CCorvaneApp app(d.host);
  app.onInitialize();
  const auto table = d.addTable({{L"2"}, {L"%<\\VxExpr (A1*10)>%"}});
  struct Step {
    std::wstring a1, formula;  // empty: left as it is
    std::wstring shown;
  } const steps[] = {
      {L"", L"", L"20"},
      {L"3", L"", L"30"},
      {L"", L"%<\\VxExpr (A1*100)>%", L"300"},
      {L"", L"%<\\VxExpr (a1*100)>%", L"300"},
      {L"4", L"%<\\VxExpr (A1 *100) \\f \"%lu2%pr2\">%", L"400.00"},
      {L"", L"%<\\VxExpr (A1*10)>%", L"40"},
      {L"3", L"%<\\VxExpr (A1-10)>%", L"-7"},
      {L"x", L"%<\\VxExpr (A1+1)>%", L"#VAL!"},
      {L"5", L"", L"6"},
  };
  for (const auto& step : steps) {
    {
      host::AcDbObjectPointer<host::AcDbTable> cells(d.host, table, host::AcDb::kForWrite);
      const int options = host::AcValueOptions::kConvertTextToValue | host::AcValueOptions::kParseTextForFieldCode;
      if (!step.a1.empty()) cells->setValue(0, 0, step.a1, options);
      if (!step.formula.empty()) cells->setValue(1, 0, step.formula, options);
    }
    d.evaluateAll();
    EXPECT_EQ(d.table(table).textString(1, 0), step.shown) << step.formula.size() << " " << step.a1.size();
  }
  app.onUnload();
}

TEST(AsdkExprEvaluator, BindsTheBlockReferenceItStandsIn) {
  TestDrawing d;
  CCorvaneApp app(d.host);
  app.onInitialize();
  const auto door = d.addBlock(L"DOOR");
  d.db.get<headless::BlockTableRecord>(door)->setDynamicBlock(true);
  const auto reference = d.addBlockReference(door);
  d.db.get<headless::BlockReference>(reference)->setDynamicProperties(
      {host::AcDbDynBlockReferenceProperty(L"Width", AcValue(0.9))});
  const auto attribute = d.addAttribute(reference, L"W", L"");
  const auto field = headless::attachField(d.db, attribute, L"%<\\VxExpr (VX_SELF('Width')*1000)>%");
  // Within a text field the formula's owner is that field, and the walk goes on past it.
  const auto within = d.addAttribute(reference, L"WT", L"");
  const auto text = headless::attachField(d.db, within, L"W=%<\\VxExpr (VX_SELF('Width')*1000)>% mm");
  d.evaluateAll();
  EXPECT_EQ(d.field(field).getDisplayText(), L"900");
  EXPECT_EQ(d.field(text).getDisplayText(), L"W=900 mm");
  app.onUnload();
}

}  // namespace
}  // namespace corvane
