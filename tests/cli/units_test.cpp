// The rtos and format commands of the corvane program.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/clirun.h"

namespace {

using corvane::testing::CommandRun;

CommandRun corvane(const std::vector<std::string>& args) {
  const corvane::testing::RunFolder folder;
  return corvane::testing::runCorvane(args, folder);
}

std::string describe(const std::vector<std::string>& args) {
  std::string text;
  for (const auto& a : args) text += " " + a;
  return text;
}

// The conversions themselves are the formatter's and its tables'; here each option of the two
// commands reaches them once and the answer comes back as one line.
TEST(UnitsCommands, PrintOneLine) {
  struct Case {
    std::vector<std::string> args;
    const char* line;
  };
  const Case cases[] = {
      {{"rtos", "17.5", "4", "2"}, "1'-5 1/2\""},
      {{"rtos", "--unitmode", "1", "17.5", "4", "2"}, "1'5-1/2\""},
      {{"rtos", "--dimzin", "12", "--", "-0.23", "2", "3"}, "-.23"},
      {{"rtos", "-17.5", "4", "2"}, "-1'-5 1/2\""},
      {{"format", "6.6875", ""}, "6.687500"},  // the default display, as the diagnostic command prints it
      {{"format", "6.6875", "%lu2%pr2"}, "6.69"},
      {{"format", "--lunits", "4", "--luprec", "4", "--dimzin", "1", "6.6875", "%lu6"}, "0'-6 11/16\""},
      {{"format", "--luprec", "3", "--dimzin", "8", "12.5", "%lu6"}, "12.5"},
      {{"format", "2500000", "%lu2%pr2%ps[,m\xc2\xb2]%ct8[1e-6]"}, "2.50m\xc2\xb2"},
      {{"format", "--", "-0.5", "%lu4%pr2"}, "-0'-0 1/2\""},
  };
  for (const auto& c : cases) {
    const CommandRun run = corvane(c.args);
    EXPECT_EQ(run.exitCode, 0) << describe(c.args);
    EXPECT_EQ(run.out, std::string(c.line) + "\n") << describe(c.args);
  }
}

TEST(UnitsCommands, BadUsageExitsWithTwoAndPrintsNothing) {
  const std::vector<std::string> cases[] = {
      {"rtos", "17.5", "6", "2"},
      {"rtos", "17.5", "0", "2"},
      {"rtos", "17.5", "2", "9"},
      {"rtos", "17.5", "2"},
      {"rtos", "abc", "2", "2"},
      {"rtos", "1.5x", "2", "2"},
      {"rtos", "nan", "2", "2"},
      {"rtos", "1e999", "2", "2"},
      {"rtos", "--dimzin", "16", "1", "2", "2"},
      {"rtos", "--unitmode", "2", "1", "2", "2"},
      {"rtos", "1e308", "4", "8"},  // too large to count in 1/256
      {"format", "6.6875"},
      {"format", "x", "%lu2"},
      {"format", "--lunits", "6", "1", "%lu2"},
      {"format", "--luprec", "9", "1", "%lu2"},
      {"format", "1", "%lu2", "extra"},
  };
  for (const auto& args : cases) {
    const CommandRun run = corvane(args);
    EXPECT_EQ(run.exitCode, 2) << describe(args);
    EXPECT_EQ(run.out, "") << describe(args);
  }
}

}  // namespace
