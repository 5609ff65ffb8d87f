#include "plugin/measure/tablecellreference.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(TableCellReference, ReadsReferencesAsTheFieldDoes) {
  struct Case {
    const wchar_t* text;
    bool ok;
    const wchar_t* handle;
    int row, column;
  } const cases[] = {
      {L"Table(<2A5>).$B$3", true, L"2A5", 2, 1},
      {L"table(<2a5>).$b$3", true, L"2A5", 2, 1},   // upper-cased first
      {L"Table(<2A5>).$AA$10", true, L"2A5", 9, 26},
      {L"Table(2A5).$A$1", true, L"2A5", 0, 0},     // the angle brackets are optional
      {L"Table(<<2A5>>).$Z$99 ", true, L"2A5", 98, 25},
      {L"Table(<2A5>).$ABX12", true, L"2A5", 11, 27},  // the character after two letters is not looked at
      {L"Table(<2A5>).$AB4", false, L"", 0, 0},        // ... so the row digit is skipped
      {L"Table(<2A5>).B3", false, L"", 0, 0},       // no "$"
      {L"Table(<2A5>).$B$0", false, L"", 0, 0},     // row below 1
      {L"Table(<2A5>).$1$3", false, L"", 0, 0},     // a digit where a letter belongs
      {L"Table(<2A5>).$B", false, L"", 0, 0},
      {L"Table(<2A5>).", false, L"", 0, 0},
      {L"Tabel(<2A5>).$B$3", false, L"", 0, 0},
      {L"Table(<2-5>).$B$3", false, L"", 0, 0},
      {L"", false, L"", 0, 0},
  };
  for (const auto& c : cases) {
    const auto parsed = ParseTableCellReference(c.text);
    ASSERT_EQ(parsed.has_value(), c.ok) << std::wstring(c.text).size();
    if (!parsed) continue;
    EXPECT_EQ(parsed->handle, c.handle);
    EXPECT_EQ(parsed->row, c.row) << std::wstring(c.text).size();
    EXPECT_EQ(parsed->column, c.column) << std::wstring(c.text).size();
  }
}

TEST(TableCellReference, NamesCellsAndRoundTrips) {
  EXPECT_EQ(AbsoluteCellName(4, 28), L"$AB$4");
  EXPECT_EQ(AbsoluteCellName(3, 2), L"$B$3");
  EXPECT_EQ(AbsoluteCellName(1, 26), L"$Z$1");
  EXPECT_EQ(AbsoluteCellName(1, 27), L"$AA$1");
  EXPECT_EQ(AbsoluteCellName(1, 702), L"$ZZ$1");
  EXPECT_EQ(TableCellReferenceText(L"2A5", 3, 2), L"Table(<2A5>).$B$3");
  for (int column = 1; column <= 702; column += 7) {
    for (const int row : {1, 9, 10, 4096}) {
      const auto parsed = ParseTableCellReference(TableCellReferenceText(L"1F", row, column));
      ASSERT_TRUE(parsed.has_value()) << column;
      EXPECT_EQ(parsed->row, row - 1);
      EXPECT_EQ(parsed->column, column - 1);
    }
  }
}

}  // namespace
}  // namespace corvane
