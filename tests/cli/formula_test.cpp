// Runs the built corvane program's formula command and checks what it prints.
#include <gtest/gtest.h>

#include "support/clirun.h"

#include <string>
#include <vector>

namespace {

using corvane::testing::CommandRun;

CommandRun run(const std::vector<std::string>& args) {
  const corvane::testing::RunFolder folder;
  return corvane::testing::runCorvane(args, folder);
}

TEST(FormulaCommand, PrintsOneLinePerExpression) {
  struct Case {
    std::vector<std::string> args;
    std::string out;
  } const cases[] = {
      {{"formula", "1+2*3", "ROUND(2.346,2)", "2^3^2"}, "7\n2.35\n64\n"},
      {{"formula", "IF(1>2,'yes','no') & '!'"}, "no!\n"},
      // Failures print their message like any value.
      {{"formula", "(1", "1/0", "1&&1", ""},
       "Unbalanced parenthesis.\ndivider is 0.\nLogical operator requires LHS & RHS of boolean type.\n"
       "Unable to tokanize the expression.\n"},
      // Control characters, the engine's markers among them, are written as \uXXXX.
      {{"formula", "'abc'", "'a\tb'"}, "\\u0013abc\n\\u0013a\\u0009b\n"},
      {{"formula", "--postfix", "2*-ABS(3)", "IF(x>=10,'big','small')"},
       "2, \\u0001, \\u001B, 3, ABS, *\n\\u001B, x, 10, >=, \\u0013big, \\u0013small, IF\n"},
      {{"formula", "--postfix", "1+", "1+2)"}, "1, +\nUnbalanced parenthesis.\n"},
      {{"formula", "--", "-5*2", "-ABS(3)"}, "-10\n#VALUE!\n"},
      {{"formula", "-5*2"}, "-10\n"},  // a negative number is no option
      // No drawing: system variables have a new drawing's values; cells and objects are not found.
      {{"formula", "LUNITS*2", "luprec", "CLAYER & '|' & DIMZIN"}, "4\n4\n0|0\n"},
      // Real-valued variables and embedded field codes go through the host's own fields.
      {{"formula", "LTSCALE*2", "ACAD_FIELD('%\x1f<\x1f\\\x1f""AcVar LUPREC>\x1f%')*3"}, "2\n12\n"},
      {{"formula", "A1", "1F!Radius", "x"}, "A1\n1F!Radius\nx\n"},
      {{"formula", "UCASE('\xc3\xa9t\xc3\xa9')"}, "\xc3\x89T\xc3\x89\n"},
      // A mistyped range names its bad address, with or without a table.
      {{"formula", "SUM(A1:ZZZ999999)", "SUM(A0:B2)", "SUM(B2:)"},
       "Cell address [ZZZ999999] has more than two column letters.\n"
       "Cell address [A0] has row 0; rows start at 1.\nCell range [B2:] has no cell address after its \":\".\n"},
  };
  for (const auto& c : cases) {
    const CommandRun r = run(c.args);
    EXPECT_EQ(r.exitCode, 0) << c.args[1];
    EXPECT_EQ(r.out, c.out) << c.args[1];
  }
}

TEST(FormulaCommand, BadUsageExitsWithTwo) {
  const std::vector<std::vector<std::string>> cases = {
      {"formula"},
      {"formula", "--postfix"},
      {"formula", "--bogus", "1"},
      {"formula", "-ABS(3)"},  // taken for options without "--"
      {"formula", "--table", "9C", "A1"},  // a table needs its drawing
  };
  for (const auto& args : cases) {
    const CommandRun r = run(args);
    EXPECT_EQ(r.exitCode, 2) << args.back();
    EXPECT_EQ(r.out, "") << args.back();
  }
}

TEST(FormulaCommand, BindsATableOfADrawing) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const std::string sample = corvane::testing::sampleDrawing("ezdxf-acad_table_simple.dxf").string();
  // The sample's table (handle 9C): "Title" over the numbers 1 to 6 in two rows of three.
  const CommandRun bound = run({"formula", "--drawing", sample, "--table", "9C", "--", "A2+B3", "SUM(A2:C3)",
                                "AVG(A2:C2)", "A1 & '!'", "LUNITS", "SUM(C3:A2)", "SUM(A2:AAA3)", "A0*2"});
  EXPECT_EQ(bound.exitCode, 0);
  // AVG divides by its arguments (one range), not by the cells; with a table bound, a bare name
  // is a property of the table, so the system variable is not asked for.
  EXPECT_EQ(bound.out, "6\n21\n6\nTitle!\nLUNITS\n21\nCell address [AAA3] has more than two column letters.\n"
                       "Cell address [A0] has row 0; rows start at 1.\n");
  for (const char* handle : {"1", "ZZ", "9D"}) {
    const CommandRun wrong = run({"formula", "--drawing", sample, "--table", handle, "A1"});
    EXPECT_EQ(wrong.exitCode, 1) << handle;
    EXPECT_EQ(wrong.out, "") << handle;
  }
  EXPECT_EQ(run({"formula", "--drawing", "no-such-drawing.dxf", "A1"}).exitCode, 1);
}

}  // namespace
