#include "plugin/formula/celladdress.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvane {
namespace {

TEST(CellAddress, ParsesColumnLettersAndRowDigits) {
  struct Case {
    const wchar_t* text;
    int row;  // 0: not an address
    int column;
  } const cases[] = {
      {L"A1", 1, 1},      {L"$A$1", 1, 1},    {L"$A1", 1, 1},     {L"A$1", 1, 1},
      {L"$B$12", 12, 2},  {L"Z9", 9, 26},     {L"AA3", 3, 27},    {L"AB2", 2, 28},
      {L"BA1", 1, 53},    {L"ZZ1", 1, 702},   {L"A007", 7, 1},
      {L"a1", 1, 33},  // lower case passes the letter test but counts from "A"
      {L"A", 0, 0},       {L"1", 0, 0},       {L"", 0, 0},        {L"1A", 0, 0},
      {L"A1B", 0, 0},     {L"AAA1", 0, 0},    {L"$1", 0, 0},      {L"A$", 0, 0},
      {L"AB", 0, 0},      {L"A 1", 0, 0},     {L"A1 ", 0, 0},     {L"A-1", 0, 0},
      {L"$$A1", 0, 0},    {L"A$$1", 0, 0},    {L"\u00c91", 0, 0},
  };
  for (const auto& c : cases) {
    const auto address = ParseCellAddress(c.text);
    ASSERT_EQ(address.has_value(), c.row != 0) << c.text;
    if (!address) continue;
    EXPECT_EQ(address->row, c.row) << c.text;
    EXPECT_EQ(address->column, c.column) << c.text;
  }
}

TEST(CellAddress, ParsesRangesOfTwoAddresses) {
  struct Case {
    const wchar_t* text;
    bool valid;
    int row1, column1, row2, column2;
  } const cases[] = {
      {L"A1:B3", true, 1, 1, 3, 2},   {L"$C$2:A1", true, 2, 3, 1, 1}, {L"AA10:AB11", true, 10, 27, 11, 28},
      {L"A1:B", false, 0, 0, 0, 0},   {L":A1", false, 0, 0, 0, 0},    {L"A1:", false, 0, 0, 0, 0},
      {L"A1:B2:C3", false, 0, 0, 0, 0}, {L"A1::B2", false, 0, 0, 0, 0}, {L"A1", false, 0, 0, 0, 0},
  };
  for (const auto& c : cases) {
    const auto range = ParseCellRange(c.text);
    ASSERT_EQ(range.has_value(), c.valid) << c.text;
    if (!range) continue;
    EXPECT_EQ(range->first.row, c.row1) << c.text;
    EXPECT_EQ(range->first.column, c.column1) << c.text;
    EXPECT_EQ(range->last.row, c.row2) << c.text;
    EXPECT_EQ(range->last.column, c.column2) << c.text;
  }
}

TEST(CellAddress, NamesWhatIsWrongWithAMistypedAddressOrRange) {
  struct Case {
    const wchar_t* text;
    const wchar_t* address;  // CellAddressProblem; empty: none
    const wchar_t* range;    // CellRangeProblem; empty: none
  } const cases[] = {
      {L"A1", L"", L""},  {L"$ZZ$9", L"", L""},  {L"A1:$B$2", L"", L""},  {L"C3:A1", L"", L""},
      {L"ZZZ9", L"Cell address [ZZZ9] has more than two column letters.", L""},
      {L"A0", L"Cell address [A0] has row 0; rows start at 1.", L""},
      {L"$b$000", L"Cell address [$b$000] has row 0; rows start at 1.", L""},
      // Not written as an address or a range: names and texts of their own.
      {L"USER", L"", L""},  {L"1A", L"", L""},  {L"A1B", L"", L""},  {L"12:30", L"", L""},  {L"", L"", L""},
      {L"A1:ZZZ999999", L"", L"Cell address [ZZZ999999] has more than two column letters."},
      {L"A0:B2", L"", L"Cell address [A0] has row 0; rows start at 1."},
      {L"A1:", L"", L"Cell range [A1:] has no cell address after its \":\"."},
      {L":$B3", L"", L"Cell range [:$B3] has no cell address before its \":\"."},
      {L"A1:B2:C3", L"", L"Cell range [A1:B2:C3] has more than one \":\"."},
      {L"A1:12", L"", L"Cell address [12] has no column letters."},
      {L"A:B2", L"", L"Cell address [A] has no row number."},
      {L"A1B:C2", L"", L"Cell address [A1B] does not end with its row number."},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CellAddressProblem(c.text).value_or(L""), c.address) << c.text;
    EXPECT_EQ(CellRangeProblem(c.text).value_or(L""), c.range) << c.text;
  }
}

}  // namespace
}  // namespace corvane

namespace corvane {
namespace {

class MessageLog : public host::HostUi {
 public:
  std::vector<std::wstring> shown;
  int messageBox(std::wstring_view text, std::wstring_view caption, unsigned /*flags*/) override {
    shown.push_back(std::wstring(caption) + L": " + std::wstring(text));
    return host::IDOK;
  }
  int setStatusBarProgressMeter(std::wstring_view, int, int) override { return -1; }
  int setStatusBarProgressMeterPos(int) override { return 0; }
  void restoreStatusBar() override {}
};

TEST(CellAddress, FormatsRowAndColumnAndRefusesThoseBelowOne) {
  struct Case {
    int row;
    int column;
    const wchar_t* text;  // empty: refused with a message
  } const cases[] = {
      {1, 1, L"A1"},     {3, 26, L"Z3"},    {3, 27, L"AA3"},   {3, 28, L"AB3"},   {12, 52, L"AZ12"},
      {1, 53, L"BA1"},   {7, 702, L"ZZ7"},  {1, 703, L"[A1"},  // past "ZZ" the first letter runs on
      {0, 1, L""},       {1, 0, L""},       {-4, 2, L""},      {2, -1, L""},
  };
  for (const auto& c : cases) {
    MessageLog ui;
    EXPECT_EQ(FormatCellAddress(c.row, c.column, ui), c.text) << c.row << "," << c.column;
    const std::vector<std::wstring> expected =
        *c.text ? std::vector<std::wstring>{}
                : std::vector<std::wstring>{L"Halvek Corvane: The row index and column index should be a positive number."};
    EXPECT_EQ(ui.shown, expected) << c.row << "," << c.column;
  }
  // Every address formatted reads back as the same cell.
  MessageLog ui;
  for (const int column : {1, 2, 25, 26, 27, 51, 52, 53, 701, 702}) {
    const auto address = ParseCellAddress(FormatCellAddress(9, column, ui));
    ASSERT_TRUE(address) << column;
    EXPECT_EQ(address->column, column);
    EXPECT_EQ(address->row, 9);
  }
}

}  // namespace
}  // namespace corvane
