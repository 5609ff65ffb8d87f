// The engine against a drawing: names reach the binding, found values are kept, and each kind
// of context (none, an owner table, a self block) looks names up in its own place.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/formula/exprengine.h"
#include "testexprbinding.h"
#include "tokentext.h"

namespace corvane {
namespace {

using testing::shown;
using testing::TestExprBinding;

struct Case {
  const wchar_t* expression;
  bool ok;
  const wchar_t* result;
};

void expectAll(TestExprBinding& binding, const std::vector<Case>& cases) {
  for (const auto& c : cases) {
    ExprEngine engine(c.expression, binding);
    std::wstring result;
    EXPECT_EQ(engine.Evaluate(result), c.ok) << c.expression;
    EXPECT_EQ(shown(result), c.result) << c.expression;
  }
}

TEST(ExprBinding, SystemVariablesAndObjectPropertiesWithoutOwner) {
  TestExprBinding binding;
  binding.systemVariables = {{L"X", L"12"},     {L"LUNITS", L"2"}, {L"LARGE", L"1E+05"},
                             {L"BLANK", L""},   {L"!Q", L"7"},     {L"USERI1", L"5"}};
  binding.properties = {{{L"1F", L"RADIUS"}, L"2.5"}, {{L"1F", L"LAYER"}, L"Walls"}};
  expectAll(binding, {
                         {L"x", true, L"12"},
                         {L"X+1", true, L"13"},
                         {L"LUNITS*2", true, L"4"},
                         {L"x>=10", true, L"TRUE"},
                         {L"IF(x>=10,'big','small')", true, L"big"},
                         {L"IF(x>=20,'big','small')", true, L"small"},
                         {L"IF(x>=10,'LUnits','small')", true, L"2"},  // arguments are looked up even when quoted
                         {L"LARGE+1", true, L"100001"},  // a variable's "E+" text is numeric
                         {L"-(LARGE)", true, L"-1E+05"},
                         {L"'X'&''", true, L"12"},
                         {L"unknown", true, L"unknown"},
                         {L"unknown+1", false, L"#VAL!"},
                         {L"UCASE(blank)", false, L"Variable [blank] not defined"},
                         {L"1f!radius*2", true, L"5"},
                         {L"1F!Layer & '/' & 1F!Radius", true, L"Walls/2.5"},
                         {L"2A!Radius", true, L"2A!Radius"},
                         {L"!q", true, L"7"},  // "!" first: asked as a system variable
                         {L"VX_SELF('W')", false, L"Variable [_SELFBLOCK.W] not defined"},
                         // Without a table a name shaped like an address may be a variable; a range is none.
                         {L"useri1*2", true, L"10"},
                         {L"SUM(A1:ZZZ999999)", false, L"Cell address [ZZZ999999] has more than two column letters."},
                         {L"'Total:' & x", true, L"Total:12"},  // a made text with a ":" is no range
                         {L"'room A:ZZZ1' & ''", true, L"room A:ZZZ1"},  // nor is a quoted one
                     });
}

TEST(ExprBinding, FoundValuesAreKeptAndNamesAskedUpperCase) {
  TestExprBinding binding;
  binding.systemVariables = {{L"X", L"3"}};
  ExprEngine engine(L"x + X * x & y & y", binding);
  std::wstring result;
  ASSERT_TRUE(engine.Evaluate(result));
  EXPECT_EQ(result, L"12yy");
  // "x" is asked once; "y", never found, each time it is consumed, and so are the texts made
  // from it; numbers never reach the binding.
  EXPECT_EQ(binding.asked,
            (std::vector<std::wstring>{L"sysvar X", L"sysvar Y", L"sysvar Y", L"sysvar 12Y", L"sysvar 12YY"}));
  binding.asked.clear();
  EXPECT_TRUE(engine.IsVariable(L"x"));
  EXPECT_EQ(engine.VariableValue(L"x"), L"3");
  EXPECT_FALSE(engine.IsVariable(L"12"));
  EXPECT_FALSE(engine.IsVariable(L"ABS"));  // function names are never variables
  EXPECT_FALSE(engine.IsVariable(L":"));    // nor any piece of an operator table
  EXPECT_FALSE(engine.IsVariable(L"&"));
  EXPECT_FALSE(engine.IsVariable(L""));
  EXPECT_TRUE(binding.asked.empty());
}

TEST(ExprBinding, OwnerTableCellsAndRanges) {
  TestExprBinding binding;
  binding.table = std::vector<std::vector<std::wstring>>{{L"1", L"2", L"3"}, {L"4", L"5", L"6"}, {L"", L"x", L"7,8"}};
  binding.systemVariables = {{L"X", L"12"}};
  expectAll(binding, {
                         {L"A1", true, L"1"},
                         {L"$B$2", true, L"5"},
                         {L"c1*2", true, L"6"},
                         {L"A1+B2", true, L"6"},
                         {L"A2&B3", true, L"4x"},
                         {L"SUM(A1:C2)", true, L"21"},
                         {L"SUM(C2:A1)", true, L"21"},       // corners in any order
                         {L"SUM(A1:Z99)", true, L"36"},      // clipped; "" and "x" are 0, "7,8" two items
                         {L"SUM(A1:A2)", true, L"5"},
                         {L"AVG(A1:C1)", true, L"6"},        // divided by the number of arguments
                         {L"AVG(A1:C1,A2)", true, L"5"},
                         {L"MAX(A1:C2)", true, L"6"},
                         {L"MIN(B1:C2)", true, L"2"},
                         {L"SUM(C3)", true, L"7"},           // one cell is one number: "7,8" reads as 7
                         {L"SUM(C3:C3)", true, L"15"},
                         {L"SUM(A1)", true, L"1"},
                         {L"A1:B1", true, L"{list}1,2"},
                         {L"A3:B3", true, L"{list},x"},  // an empty first cell still has its place
                         {L"SUM(A3:B3,A1)", true, L"1"},
                         {L"A4", true, L"A4"},               // outside the table: not found
                         {L"D1", true, L"D1"},
                         {L"SUM(D1:E2)", false, L"SUM requires at least two operands."},
                         {L"UCASE(A3)", false, L"Variable [A3] not defined"},  // an empty cell
                         {L"x", true, L"x"},                 // with a table, system variables are not asked
                         // Mistyped references name the bad address instead of going on as text.
                         {L"SUM(A1:ZZZ9)", false, L"Cell address [ZZZ9] has more than two column letters."},
                         {L"SUM(a0:b2)", false, L"Cell address [a0] has row 0; rows start at 1."},
                         {L"AVG(A1:)", false, L"Cell range [A1:] has no cell address after its \":\"."},
                         {L"ABC1+1", false, L"Cell address [ABC1] has more than two column letters."},
                         {L"A0 & '!'", false, L"Cell address [A0] has row 0; rows start at 1."},
                         {L"12:30", true, L"12:30"},
                     });
}

TEST(ExprBinding, SelfBlockProperties) {
  TestExprBinding binding;
  binding.selfBlock = std::map<std::wstring, std::wstring>{{L"WIDTH", L"900"}, {L"NAME", L""}};
  binding.systemVariables = {{L"X", L"12"}};
  expectAll(binding, {
                         {L"VX_SELF('Width')", true, L"900"},
                         {L"vx_self('width')/2", true, L"450"},
                         {L"_SELFBLOCK.Width/2", true, L"450"},
                         {L"_selfblock.width & 'mm'", true, L"900mm"},
                         {L"VX_SELF('Depth')", false, L"Variable [_SELFBLOCK.DEPTH] not defined"},
                         {L"_SELFBLOCK.Depth*1", false, L"Variable [_SELFBLOCK.DEPTH] not defined"},
                         {L"VX_SELF('Name')", true, L""},
                         {L"x", true, L"12"},  // other names still reach the system variables
                     });
}

TEST(ExprBinding, EmbeddedFieldsAndBlockSums) {
  TestExprBinding binding;
  binding.fieldValues = {{L"%<\\AcVar LUNITS>%", L"2"}};
  binding.blockSums = {{{L"Door", L"Width"}, 1500.0}};
  // The dialog weaves U+001F between the characters of an embedded field code.
  std::wstring woven;
  for (const wchar_t c : std::wstring(L"%<\\AcVar LUNITS>%")) {
    if (!woven.empty()) woven += L'\x1F';
    woven += c;
  }
  const std::wstring acadField = L"ACAD_FIELD('" + woven + L"')";
  const std::wstring unknownField = L"ACAD_FIELD('%\x1F<x')";
  const std::wstring leadingSpacerOnly = L"ACAD_FIELD('\x1F" L"abc')";
  const std::wstring timesTwo = acadField + L"*2";
  expectAll(binding, {
                         {acadField.c_str(), true, L"2"},
                         {timesTwo.c_str(), true, L"4"},
                         {unknownField.c_str(), true, L"####"},
                         {leadingSpacerOnly.c_str(), true, L"\x1F" L"abc"},
                         {L"ACAD_FIELD('%<\\AcVar LUNITS>%')", true, L"%<\\AcVar LUNITS>%"},
                         {L"SUM('Door.Width')", true, L"1500"},
                         {L"SUM('Door.Width')/3", true, L"500"},
                         {L"SUM(1.5)", true, L"0"},  // a "." after the first character: block "1", property "5"
                         {L"SUM('.5',1)", true, L"1.5"},
                     });
  std::vector<std::wstring> asked;  // final values are also tried as system variables; leave those out
  for (const auto& question : binding.asked) {
    if (!question.starts_with(L"sysvar ")) asked.push_back(question);
  }
  EXPECT_EQ(asked, (std::vector<std::wstring>{L"field %<\\AcVar LUNITS>%", L"field %<\\AcVar LUNITS>%",
                                                        L"field %<x", L"sum Door.Width", L"sum Door.Width",
                                                        L"sum 1.5"}));
}

}  // namespace
}  // namespace corvane
