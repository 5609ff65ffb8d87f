// A range of table cells picked from the script: the table, then two corner cells.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "headless/db/line.h"
#include "headless/db/table.h"
#include "host/acedprompts.h"
#include "support/editorsession.h"

namespace corvane::headless {
namespace {

using host::AcCellRange;

struct RangeRig : testing::EditorSession {
  host::AcDbObjectId table;
  host::AcDbObjectId line;

  // "@T" in the script picks the table of 3 rows and 4 columns, "@L" a line.
  explicit RangeRig(std::wstring script) {
    table = db.appendEntity(std::make_unique<Table>(3, 4));
    line = db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}));
    replace(script, L"@T", table);
    replace(script, L"@L", line);
    session.script() = Script(script);
  }
  void replace(std::wstring& script, std::wstring_view mark, host::AcDbObjectId id) {
    const std::wstring pick = L"(handent \"" + host.handle(id).text() + L"\")";
    for (auto at = script.find(mark); at != std::wstring::npos; at = script.find(mark, at + pick.size()))
      script.replace(at, mark.size(), pick);
  }
};

TEST(TableCellRange, PickedFromTheScript) {
  const host::ResBufList tablesOnly{{0, std::wstring(L"ACAD_TABLE")}};
  struct Case {
    const wchar_t* name;
    const wchar_t* script;
    bool filtered;
    int status;
    AcCellRange range;  // when the status is RTNORM
    std::vector<const wchar_t*> said;
  } const cases[] = {
      {L"corners top-left, bottom-right", L"@T\n1,2\n3,4\n", true, host::RTNORM, {0, 1, 2, 3}, {}},
      {L"corners the other way round", L"@T\n3,4\n1,2\n", true, host::RTNORM, {0, 1, 2, 3}, {}},
      {L"corners on the other diagonal", L"@T\n1,4\n3,1\n", true, host::RTNORM, {0, 0, 2, 3}, {}},
      {L"Enter for the last cell", L"@T\n2,3\n\n", true, host::RTNORM, {1, 2, 1, 2}, {}},
      {L"blanks around the numbers", L"@T\n 2 , 1 \n2,1\n", true, host::RTNORM, {1, 0, 1, 0}, {}},
      {L"answers that name no cell are asked again",
       L"@T\nx\n\n1\n1,2,3\n-1,1\n0,1\n4,1\n1,5\n1,1\n3,4\n",
       true,
       host::RTNORM,
       {0, 0, 2, 3},
       {L"Requires a cell as row,column.", L"The table has no cell in row 0, column 1.",
        L"The table has no cell in row 4, column 1.", L"The table has no cell in row 1, column 5."}},
      {L"a line refused by the filter",
       L"@L\n@T\n1,1\n1,1\n",
       true,
       host::RTNORM,
       {0, 0, 0, 0},
       {L"1 found, 1 was filtered out."}},
      {L"a line without a filter",
       L"@L\n@T\n1,1\n1,1\n",
       false,
       host::RTNORM,
       {0, 0, 0, 0},
       {L"The object is not a table."}},
      {L"a handle of nothing", L"(handent \"FFFF\")\n^C\n", true, host::RTCAN, {}, {L"*Invalid selection*"}},
      {L"a point", L"3,4\n^C\n", true, host::RTCAN, {}, {L"picks objects by handle"}},
      {L"Enter picks nothing", L"\n", true, host::RTERROR, {}, {}},
      {L"cancelled at the table", L"^C\n", true, host::RTCAN, {}, {L"*Cancel*"}},
      {L"cancelled at the first cell", L"@T\n^C\n", true, host::RTCAN, {}, {L"*Cancel*"}},
      {L"the script ends at the last cell", L"@T\n1,1\n", true, host::RTCAN, {}, {L"*Cancel*"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(std::wstring(c.name)));
    RangeRig rig(c.script);
    host::AcDbObjectId picked;
    AcCellRange range{-1, -1, -1, -1};
    const int status =
        rig.session.prompts().getTableCellRange(L"\nCells: ", c.filtered ? &tablesOnly : nullptr, picked, range);
    EXPECT_EQ(status, c.status) << ::testing::PrintToString(rig.out);
    if (status == host::RTNORM) {
      EXPECT_EQ(picked, rig.table);
      EXPECT_EQ(range, c.range);
    } else {
      EXPECT_TRUE(picked.isNull());
      EXPECT_EQ(range, (AcCellRange{-1, -1, -1, -1}));
    }
    for (const wchar_t* text : c.said) EXPECT_NE(rig.out.find(text), std::wstring::npos) << text;
    EXPECT_TRUE(rig.session.script().empty());
  }
}

TEST(TableCellRange, PromptsAndAnswersOnTheCommandLine) {
  RangeRig rig(L"@T\n1,2\n\n");
  host::AcDbObjectId picked;
  AcCellRange range;
  ASSERT_EQ(rig.session.prompts().getTableCellRange(L"\nCells: ", nullptr, picked, range), host::RTNORM);
  EXPECT_EQ(rig.out, L"\nCells: (handent \"" + rig.host.handle(rig.table).text() +
                         L"\")\nFirst cell of the range (row,column): 1,2\nLast cell of the range (row,column) "
                         L"<first cell>: ");
}

}  // namespace
}  // namespace corvane::headless
