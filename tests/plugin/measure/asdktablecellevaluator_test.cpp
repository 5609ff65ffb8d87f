#include "plugin/measure/asdktablecellevaluator.h"

#include <gtest/gtest.h>

#include "host/acdbtable.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;
using host::AcDbField;
using host::AcValue;

TEST(AsdkTableCellEvaluator, ReadsCellsByContentAndDataType) {
  TestDrawing d;
  CCorvaneApp app(d.host);
  app.onInitialize();
  const auto table = d.addTable({{L"12.5", L"abc", L"7"}, {L"%<\\AcVar LUPREC>%", L"", L"x"}});
  const std::wstring h = d.host.handle(table).text();
  const std::wstring circle = d.host.handle(d.addCircle(1)).text();
  struct Case {
    std::wstring reference;
    int status;
    AcValue value;
  } const cases[] = {
      {L"Table(<" + h + L">).$A$1", AcDbField::kSuccess, AcValue(12.5)},
      {L"table(<" + h + L">).$b$1", AcDbField::kSuccess, AcValue(L"abc")},
      {L"Table(<" + h + L">).$C$1", AcDbField::kSuccess, AcValue(std::int32_t{7})},
      // The cell's field as it is: a text field around the variable, so its value is a text.
      {L"Table(<" + h + L">).$A$2", AcDbField::kSuccess, AcValue(L"4")},
      {L"Table(<" + h + L">).$B$2", AcDbField::kSuccess, AcValue(L"")},
      {L"Table(<" + h + L">).A1", AcDbField::kInvalidCode, AcValue()},
      {L"Table(<" + h + L">).$A$0", AcDbField::kInvalidCode, AcValue()},
      {L"Table(<" + h + L">).$D$1", AcDbField::kInvalidCode, AcValue()},   // past the last column
      {L"Table(<" + h + L">).$A$3", AcDbField::kInvalidCode, AcValue()},   // past the last row
      {L"Table(<FFFFF>).$A$1", AcDbField::kInvalidCode, AcValue()},
      {L"Table(<" + circle + L">).$A$1", AcDbField::kInvalidCode, AcValue()},  // not a table
  };
  for (const auto& c : cases) {
    const auto id = d.addField(L"%<\\TableCell " + c.reference + L">%");
    d.evaluateAll();
    EXPECT_EQ(d.field(id).evaluationStatus(), c.status) << c.reference.size();
    if (c.status != AcDbField::kSuccess) continue;
    AcValue value;
    d.field(id).getValue(value);
    EXPECT_EQ(value, c.value) << c.reference.size();
  }
  app.onUnload();
}

TEST(AsdkTableCellEvaluator, MissingOrWrongRecord) {
  TestDrawing d;
  AsdkTableCellEvaluator evaluator;
  auto& field = d.field(d.addField(L"%<\\TableCell Table(<1>).$A$1>%"));
  host::AcFdFieldValue value;
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value), AcDbField::kOtherError);
  field.putData(L"TableCell Data", AcValue(std::int32_t{3}));
  EXPECT_EQ(evaluator.evaluateField(&field, &d.db, value), AcDbField::kInvalidCode);
}

}  // namespace
}  // namespace corvane
