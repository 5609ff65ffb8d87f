#include "plugin/formula/exprfieldbinding.h"

#include <gtest/gtest.h>

#include "plugin/fields/fieldreferences.h"
#include "plugin/formula/exprengine.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;

std::wstring run(ExprBinding& binding, const std::wstring& formula) {
  ExprEngine engine(formula, binding);
  std::wstring result;
  engine.Evaluate(result);
  return result;
}

TEST(ExprFieldBinding, ReadsTheDrawingThroughTheHost) {
  TestDrawing d;
  const auto circle = d.addCircle(2.5, L"Walls");
  const std::wstring handle = d.host.handle(circle).text();
  const std::wstring embedded =
      FieldToFormulaArgument(d.host, L"%<\\AcObjProp Object(" + TestDrawing::idReference(circle) + L").Diameter>%");
  ExprFieldBinding binding(d.host);
  struct Case {
    std::wstring formula, expected;
  } const cases[] = {
      {handle + L"!Radius*2", L"5"},
      {handle + L"!Layer", L"Walls"},
      {L"LUPREC+LUNITS", L"6"},
      {L"LTSCALE*3", L"3"},
      {embedded + L"+1", L"6"},
      {L"ACAD_FIELD('%\x1f<\x1f\\\x1f" L"NoSuch 1>\x1f%')", L"####"},
      {L"FFFFF!Radius", L"FFFFF!Radius"},  // no such object: the name stays a plain text
  };
  for (const auto& c : cases) EXPECT_EQ(run(binding, c.formula), c.expected) << c.formula.size();
}

TEST(ExprFieldBinding, EmbeddedCodesFollowTheHostsRules) {
  TestDrawing d;
  ExprFieldBinding binding(d.host);
  EXPECT_EQ(binding.EvaluateFieldCode(L"x"), L"####");
  EXPECT_EQ(binding.EvaluateFieldCode(L"no field here"), L"no field here");
  EXPECT_EQ(binding.EvaluateFieldCode(L"%<\\AcVar LUPREC>%"), L"4");
  EXPECT_EQ(binding.SystemVariable(L"NOSUCHVAR"), std::nullopt);
  const auto objects = d.db.objectIds().size();
  binding.SystemVariable(L"LUNITS");
  EXPECT_EQ(d.db.objectIds().size(), objects);  // the temporary field is gone again
}

}  // namespace
}  // namespace corvane
