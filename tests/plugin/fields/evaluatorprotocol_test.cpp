#include <gtest/gtest.h>

#include <string>

#include "plugin/fields/asdkevaluatorloader.h"
#include "plugin/fields/asdkfieldevaluator.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;
using host::Acad;
using host::AcDbField;

// An evaluator on the shared protocol whose worker answers what the test tells it.
class ScriptedEvaluator : public AsdkFieldEvaluator<ScriptedEvaluator> {
 public:
  static constexpr std::size_t kRow = kExprRow;
  int evaluateField(AcDbField*, host::AcDbDatabase* db, host::AcFdFieldValue& value) {
    seenDb = db;
    if (status == AcDbField::kSuccess) value = host::AcFdFieldValue(answer);
    return status;
  }
  int status = AcDbField::kSuccess;
  double answer = 0.0;
  host::AcDbDatabase* seenDb = nullptr;
};

class RecordingResult : public host::AcFdFieldResult {
 public:
  Acad::ErrorStatus setFieldValue(const host::AcFdFieldValue& v) override {
    value = v;
    ++valueCalls;
    return Acad::eOk;
  }
  void setEvaluationStatus(int s, int e, std::wstring_view m) override {
    status = s;
    errorCode = e;
    message = m;
  }
  host::AcFdFieldValue value;
  int valueCalls = 0;
  int status = 0;
  int errorCode = -1;
  std::wstring message = L"unset";
};

headless::Field& fieldWithCode(TestDrawing& d, const std::wstring& code) { return d.field(d.addField(code)); }

TEST(EvaluatorProtocol, CompileStoresTheCodeWithoutItsFormat) {
  TestDrawing d;
  ScriptedEvaluator evaluator;
  auto& a = fieldWithCode(d, L"%<\\VxExpr (A1*2) \\f \"%lu2%pr3\">%");
  auto& b = fieldWithCode(d, L"%<\\VxExpr (A1*2)>%");
  RecordingResult result;
  EXPECT_EQ(evaluator.compile(&a, nullptr, &result), Acad::eOk);
  EXPECT_EQ(evaluator.compile(&b, &d.db, &result), Acad::eOk);
  host::AcValue ra, rb;
  ASSERT_EQ(a.getData(L"VxExpr Data", ra), Acad::eOk);
  ASSERT_EQ(b.getData(L"VxExpr Data", rb), Acad::eOk);
  EXPECT_EQ(ra, rb);
  std::wstring text;
  ASSERT_TRUE(ra.get(text));
  EXPECT_EQ(text, L"\\VxExpr (A1*2)");
  EXPECT_EQ(result.status, 0);  // a good compile reports no status
}

TEST(EvaluatorProtocol, EmptyCodeIsInvalidAndKeepsAnEarlierRecord) {
  TestDrawing d;
  ScriptedEvaluator evaluator;
  auto& field = fieldWithCode(d, L"%<\\VxExpr (1)>%");
  field.putData(L"VxExpr Data", host::AcValue(L"earlier"));
  field.restore(L"VxExpr", L"", {}, {});
  RecordingResult result;
  EXPECT_EQ(evaluator.compile(&field, nullptr, &result), Acad::eInvalidInput);
  EXPECT_EQ(result.status, AcDbField::kInvalidCode);
  EXPECT_EQ(result.errorCode, 0);
  EXPECT_EQ(result.message, L"");
  host::AcValue record;
  ASSERT_EQ(field.getData(L"VxExpr Data", record), Acad::eOk);
  EXPECT_EQ(record, host::AcValue(L"earlier"));
  EXPECT_EQ(evaluator.compile(nullptr, nullptr, &result), Acad::eInvalidInput);
}

TEST(EvaluatorProtocol, WorkerStatusDecidesValueAndResult) {
  struct Case {
    int workerStatus;
    int context;
    Acad::ErrorStatus expected;
    int valueCalls;
  } const cases[] = {
      {AcDbField::kSuccess, AcDbField::kDemand, Acad::eOk, 1},
      {AcDbField::kSuccess, AcDbField::kPreview, Acad::eOk, 1},  // preview is like any other context
      {AcDbField::kInvalidCode, AcDbField::kDemand, Acad::eInvalidInput, 0},
      {AcDbField::kOtherError, AcDbField::kPreview, Acad::eInvalidInput, 0},
      {AcDbField::kNotYetEvaluated, AcDbField::kDemand, Acad::eInvalidInput, 0},
  };
  for (const auto& c : cases) {
    TestDrawing d;
    ScriptedEvaluator evaluator;
    evaluator.status = c.workerStatus;
    evaluator.answer = 7.5;
    auto& field = fieldWithCode(d, L"%<\\VxExpr (1)>%");
    RecordingResult result;
    result.value = host::AcFdFieldValue(L"previous");
    EXPECT_EQ(evaluator.evaluate(&field, c.context, nullptr, &result), c.expected);
    EXPECT_EQ(evaluator.seenDb, &d.db);  // no database given: the field's own
    EXPECT_EQ(result.valueCalls, c.valueCalls);
    EXPECT_EQ(result.value, c.valueCalls ? host::AcFdFieldValue(7.5) : host::AcFdFieldValue(L"previous"));
    EXPECT_EQ(result.status, c.workerStatus);
    EXPECT_EQ(result.errorCode, 0);
  }
}

TEST(EvaluatorProtocol, DefinedObjectAcceptsNotYetEvaluated) {
  struct Pending : AsdkDefinedObjectEvaluator {
    int evaluateField(AcDbField*, host::AcDbDatabase*, host::AcFdFieldValue&) override {
      return AcDbField::kNotYetEvaluated;
    }
  };
  TestDrawing d;
  Pending evaluator;
  auto& field = fieldWithCode(d, L"%<\\AcDefinedObj x>%");
  RecordingResult result;
  EXPECT_EQ(evaluator.evaluate(&field, AcDbField::kDemand, &d.db, &result), Acad::eOk);
  EXPECT_EQ(result.status, AcDbField::kNotYetEvaluated);
  EXPECT_EQ(result.valueCalls, 0);
}

TEST(EvaluatorProtocol, FailingWorkerLeavesTheFieldsValueThroughTheEngine) {
  TestDrawing d;
  ScriptedEvaluator* scripted = nullptr;
  AsdkEvaluatorLoader loader([&scripted](std::size_t row) -> std::unique_ptr<host::AcFdFieldEvaluator> {
    if (row != kExprRow) return makeCorvaneEvaluator(row);
    auto evaluator = std::make_unique<ScriptedEvaluator>();
    scripted = evaluator.get();
    return evaluator;
  });
  d.host.engine().registerEvaluatorLoader(&loader);
  scripted->answer = 3.25;
  const auto id = d.addField(L"%<\\VxExpr (1)>%");
  d.evaluateAll();
  EXPECT_EQ(d.field(id).evaluationStatus(), AcDbField::kSuccess);
  EXPECT_EQ(d.field(id).getDisplayText(), L"3.250000");

  scripted->status = AcDbField::kOtherError;
  scripted->answer = 9;
  d.evaluateAll();
  host::AcValue value;
  d.field(id).getValue(value);
  EXPECT_EQ(value, host::AcValue(3.25));
  EXPECT_EQ(d.field(id).evaluationStatus(), AcDbField::kOtherError);

  // The format operation hands out the host's text of the value in a fresh copy.
  wchar_t* text = nullptr;
  ASSERT_EQ(scripted->format(&d.field(id), text), Acad::eOk);
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(text, L"3.250000");
  host::acutDelString(text);
  EXPECT_EQ(scripted->format(nullptr, text), Acad::eInvalidInput);
  EXPECT_EQ(text, nullptr);
  d.host.engine().unregisterEvaluatorLoader(&loader);
}

}  // namespace
}  // namespace corvane
