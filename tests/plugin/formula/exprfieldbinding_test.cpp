#include "plugin/formula/exprfieldbinding.h"

#include <gtest/gtest.h>

#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
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

namespace corvane {
namespace {

using corvane::testing::TestDrawing;

void setWidth(TestDrawing& d, host::AcDbObjectId reference, double width) {
  d.db.get<headless::BlockReference>(reference)->setDynamicProperties(
      {host::AcDbDynBlockReferenceProperty(L"Width", host::AcValue(width))});
}

TEST(ExprFieldBinding, BlockSumsAndTheSelfBlock) {
  TestDrawing d;
  const auto door = d.addBlock(L"DOOR");
  d.db.get<headless::BlockTableRecord>(door)->setDynamicBlock(true);
  const auto plain = d.addBlockReference(door);
  setWidth(d, plain, 30);
  const auto variant = d.addDynamicVariant(door, L"*U7");
  const auto changed = d.addBlockReference(variant);
  setWidth(d, changed, 40.5);
  const auto erased = d.addBlockReference(variant);
  setWidth(d, erased, 1000);
  auto* gone = d.db.get<headless::BlockReference>(erased);
  gone->record().writeOpen = true;
  ASSERT_EQ(gone->erase(), host::Acad::eOk);
  gone->record().writeOpen = false;
  // An ordinary block whose references carry an attribute.
  const auto tag = d.addBlock(L"TAG");
  for (const wchar_t* qty : {L"2", L"5", L"x"}) d.addAttribute(d.addBlockReference(tag), L"QTY", qty);

  ExprFieldBinding binding(d.host);
  struct Case {
    std::wstring formula, expected;
  } const cases[] = {
      {L"SUM(DOOR.Width)", L"70.5"},  // the erased reference does not count
      {L"SUM(door.width)", L"70.5"},
      {L"SUM(TAG.QTY)", L"7"},
      {L"SUM(NOBLOCK.Width)", L"0"},
  };
  for (const auto& c : cases) EXPECT_EQ(run(binding, c.formula), c.expected) << c.formula;

  EXPECT_FALSE(binding.HasSelfBlock());
  binding.bindSelfBlock(changed);
  EXPECT_TRUE(binding.HasSelfBlock());
  EXPECT_EQ(binding.SelfBlockProperty(L"width"), std::optional<std::wstring>(L"40.500000"));
  EXPECT_EQ(binding.SelfBlockProperty(L"Height"), std::nullopt);
  EXPECT_EQ(run(binding, L"VX_SELF('Width')*2"), L"81");
}

}  // namespace
}  // namespace corvane
