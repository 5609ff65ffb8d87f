#include "plugin/fields/asdkevaluatorloader.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "plugin/formula/asdkexprevaluator.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/linked/asdktextfileevaluator.h"
#include "plugin/measure/asdkareaevaluator.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

TEST(AsdkEvaluatorLoader, LooksIdsUpWithoutRegardToCase) {
  AsdkEvaluatorLoader loader(makeCorvaneEvaluator);
  struct Case {
    const wchar_t* id;
    std::ptrdiff_t row;  // -1: none
  } const cases[] = {
      {L"AcArea", kAreaRow},         {L"acarea", kAreaRow},       {L"ACAREA", kAreaRow},
      {L"AcAreas", -1},              {L"", -1},                   {L"AcAre", -1},
      {L"textfield", kTextFileRow},  {L"VXEXPR", kExprRow},       {L"AcDefinedObj", kDefinedObjectRow},
      {L"AcLength", kLengthRow},     {L"AcBlockCount", kBlockCountRow}, {L"TableCell", kTableCellRow},
      {L"ExcelCell", kExcelCellRow}, {L"TextFile", -1},           {L"AcVar", -1},
  };
  for (const auto& c : cases) {
    host::AcFdFieldEvaluator* expected = c.row < 0 ? nullptr : loader.evaluatorAt(static_cast<std::size_t>(c.row));
    EXPECT_EQ(loader.getEvaluator(c.id), expected) << std::wstring(c.id).size();
    const wchar_t* id = c.id;
    EXPECT_EQ(loader.findEvaluator(nullptr, id), expected);
    EXPECT_EQ(id, c.id);  // the id passed in is not changed
  }
  const wchar_t* none = nullptr;
  EXPECT_EQ(loader.findEvaluator(nullptr, none), nullptr);

  // Each row holds the class of its table entry, which reports its own id.
  EXPECT_NE(dynamic_cast<AsdkAreaEvaluator*>(loader.evaluatorAt(kAreaRow)), nullptr);
  EXPECT_NE(dynamic_cast<AsdkTextFileEvaluator*>(loader.evaluatorAt(kTextFileRow)), nullptr);
  EXPECT_NE(dynamic_cast<AsdkExprEvaluator*>(loader.evaluatorAt(kExprRow)), nullptr);
  EXPECT_STREQ(dynamic_cast<AsdkTextFileEvaluator*>(loader.evaluatorAt(kTextFileRow))->typeId(), L"TextField");
  EXPECT_STREQ(dynamic_cast<AsdkDefinedObjectEvaluator*>(loader.evaluatorAt(kDefinedObjectRow))->typeId(),
               L"AcDefinedObj");
}

TEST(AsdkEvaluatorLoader, MakesAndDeletesInTableOrder) {
  std::vector<std::string> log;
  struct Tracked : host::AcFdFieldEvaluator {
    Tracked(std::vector<std::string>& l, std::size_t r) : log(l), row(r) { log.push_back("make " + std::to_string(row)); }
    ~Tracked() override { log.push_back("delete " + std::to_string(row)); }
    std::vector<std::string>& log;
    std::size_t row;
  };
  {
    AsdkEvaluatorLoader loader([&log](std::size_t row) { return std::make_unique<Tracked>(log, row); });
  }
  std::vector<std::string> expected;
  for (int i = 0; i < 8; ++i) expected.push_back("make " + std::to_string(i));
  for (int i = 0; i < 8; ++i) expected.push_back("delete " + std::to_string(i));
  EXPECT_EQ(log, expected);
}

// Services that count how often the plug-in reaches for the field engine.
class CountingHost : public headless::HostApplication {
 public:
  host::AcFdFieldEngine* fieldEngine() override {
    ++engineCalls;
    return HostApplication::fieldEngine();
  }
  int engineCalls = 0;
};

TEST(CCorvaneApp, RegistersFieldServicesOnceAndUnloadsOnlyWhatItRegistered) {
  CountingHost host;
  {
    CCorvaneApp app(host);
    app.onUnload();  // initialisation never ran
    EXPECT_EQ(host.engineCalls, 0);
    EXPECT_FALSE(app.fieldServicesRegistered());
  }
  CCorvaneApp app(host);  // outside an editor: the field services and nothing else
  app.onInitialize();
  EXPECT_TRUE(app.fieldServicesRegistered());
  EXPECT_FALSE(app.commandsRegistered());
  EXPECT_FALSE(app.registry().isSetUp());
  EXPECT_EQ(host.engine().loaderCount(), 1u);
  EXPECT_EQ(host.engine().reactorCount(), 1u);
  EXPECT_EQ(host.engine().findEvaluator(L"acblockcount"), app.loader().evaluatorAt(kBlockCountRow));
  app.onUnload();
  EXPECT_EQ(host.engine().loaderCount(), 0u);
  EXPECT_EQ(host.engine().reactorCount(), 0u);
  EXPECT_EQ(host.engine().findEvaluator(L"AcBlockCount"), nullptr);
}

}  // namespace
}  // namespace corvane
