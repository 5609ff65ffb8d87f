// The code of an Excel cell field: what it names, how the dialog writes it and how its "\MID"
// option cuts the cell's text.
#include "plugin/linked/excelcellcode.h"

#include <gtest/gtest.h>

#include <string>

#include "core/utf8.h"

namespace corvane {
namespace {

TEST(ExcelCellCode, ReferencesSplitFromTheRight) {
  const struct {
    const wchar_t* reference;
    ExcelCellReference split;
  } cases[] = {
      {L"C:\\Books\\a.xlsx:Sheet 1:$C$7", {L"C:\\Books\\a.xlsx", L"Sheet 1", L"$C$7"}},
      {L"/site/prices.xlsx:Prices:Supplier", {L"/site/prices.xlsx", L"Prices", L"Supplier"}},
      {L"https://host/b.xlsx:S:$A$1", {L"https://host/b.xlsx", L"S", L"$A$1"}},
      {L"prices.xlsx::$A$1", {L"prices.xlsx", L"", L"$A$1"}},
      {L"Sheet1:$A$1", {L"", L"Sheet1", L"$A$1"}},
      {L"$A$1", {L"", L"", L"$A$1"}},
      {L":$A$1", {L"", L"", L"$A$1"}},
      {L"", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(SplitExcelCellReference(c.reference), c.split) << core::toUtf8(c.reference);

  EXPECT_EQ(QuotedReference(L"\\ExcelCell \"a.xlsx:S:$B$2\" \\MID(2,3)"), L"a.xlsx:S:$B$2");
  EXPECT_EQ(QuotedReference(L"\\ExcelCell \"\""), L"");
  EXPECT_EQ(QuotedReference(L"\\ExcelCell \"a.xlsx:S:$B$2"), std::nullopt);
  EXPECT_EQ(QuotedReference(L"\\ExcelCell "), std::nullopt);
}

TEST(ExcelCellCode, BuildersWriteWhatTheFieldReads) {
  EXPECT_EQ(EmptyExcelCellCode(), L"%<\\ExcelCell >%");
  EXPECT_EQ(ExcelCellCodeByName(L"wb", L"ws", L"Name", 2, 3), L"%<\\ExcelCell \"wb:ws:Name\" \\MID(2,3)>%");
  EXPECT_EQ(ExcelCellCodeByAddress(L"wb", L"ws", L"AB", 12), L"%<\\ExcelCell \"wb:ws:$AB$12\">%");
  EXPECT_EQ(ExcelCellCodeByAddress(L"C:\\Books\\a.xlsx", L"Sheet 1", L"C", 7, 3, 0),
            L"%<\\ExcelCell \"C:\\Books\\a.xlsx:Sheet 1:$C$7\" \\MID(3,)>%");

  const struct {
    int start, length;
    const wchar_t* option;
  } options[] = {{3, 0, L" \\MID(3,)"},  {0, 4, L" \\MID(,4)"}, {2, 5, L" \\MID(2,5)"},
                 {-1, 4, L" \\MID(,4)"}, {0, 0, L""},           {-2, -1, L""}};
  for (const auto& o : options) EXPECT_EQ(MidOptionText(o.start, o.length), o.option) << o.start << "," << o.length;

  // A code built by the dialog is split back into its parts and cut by its own option.
  const std::wstring code = ExcelCellCodeByAddress(L"C:\\Books\\a.xlsx", L"Sheet 1", L"C", 7, 2, 3);
  const auto quoted = QuotedReference(code);
  ASSERT_TRUE(quoted);
  EXPECT_EQ(SplitExcelCellReference(*quoted), (ExcelCellReference{L"C:\\Books\\a.xlsx", L"Sheet 1", L"$C$7"}));
  EXPECT_EQ(ApplyMidOption(L"ABCDEF", code), L"BCD");
}

TEST(ExcelCellCode, MidOptionCutsTheText) {
  const std::wstring nbsp(1, L'\u00A0');
  const struct {
    const wchar_t* text;
    const wchar_t* code;
    std::wstring cut;
  } cases[] = {
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(2,)", L"BCDEF"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(2,3)", L"BCD"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(0,3)", L"ABC"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(,2)", L"AB"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(1,)", L"ABCDEF"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(6,)", L"F"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(2,100)", L"BCDEF"},
      {L"ABCDEF", L"\"b:s:$A$1\"", L"ABCDEF"},
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(7,)", nbsp},  // starts past the end
      {L"ABCDEF", L"\"b:s:$A$1\" \\MID(9,2)", nbsp},
      {L"", L"\"b:s:$A$1\"", nbsp},
      {L"", L"\"b:s:$A$1\" \\MID(2,3)", nbsp},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ApplyMidOption(c.text, c.code), c.cut) << core::toUtf8(c.text) << " " << core::toUtf8(c.code);
  }
}

}  // namespace
}  // namespace corvane
