#include "xlsx/sheet/cellref.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvane::xlsx {
namespace {

TEST(CellRef, ReadsTextIntoRowAndColumn) {
  const struct {
    const char* text;
    std::optional<CellRef> ref;
  } cases[] = {
      {"A1", CellRef{1, 1}},      {"AB12", CellRef{12, 28}},      {"$AB$12", CellRef{12, 28}},
      {"Z9", CellRef{9, 26}},     {"AA1", CellRef{1, 27}},        {"XFD1048576", CellRef{1048576, 16384}},
      {"$A1", CellRef{1, 1}},     {"A$1", CellRef{1, 1}},         {"XFE1", std::nullopt},
      {"A1048577", std::nullopt}, {"A0", std::nullopt},           {"A01", std::nullopt},
      {"a1", std::nullopt},       {"1A", std::nullopt},           {"A", std::nullopt},
      {"", std::nullopt},         {"A1 ", std::nullopt},          {"$$A1", std::nullopt},
      {"AAAAA1", std::nullopt},   {"A99999999999", std::nullopt}, {"A-1", std::nullopt},
  };
  for (const auto& [text, ref] : cases) EXPECT_EQ(parseCellRef(text), ref) << text;
}

TEST(CellRef, WritesEveryColumnBackAsItWasRead) {
  for (std::uint32_t column = 1; column <= kMaxColumn; ++column) {
    const std::string text = cellRefText({7, column});
    ASSERT_EQ(parseCellRef(text), (CellRef{7, column})) << text;
  }
  EXPECT_EQ(cellRefText({12, 28}, true), "$AB$12");
  EXPECT_EQ(cellRefText({0, 1}), "");
  EXPECT_EQ(cellRefText({1, kMaxColumn + 1}), "");
}

TEST(CellRef, ReadsRangesWithOrderedCorners) {
  const struct {
    const char* text;
    std::optional<CellRange> range;
  } cases[] = {
      {"A1:C3", CellRange{{1, 1}, {3, 3}}},
      {"C3:A1", CellRange{{1, 1}, {3, 3}}},
      {"C1:A3", CellRange{{1, 1}, {3, 3}}},
      {"B2", CellRange{{2, 2}, {2, 2}}},
      {"$A$1:$B$2", CellRange{{1, 1}, {2, 2}}},
      {"A1:", std::nullopt},
      {":A1", std::nullopt},
      {"A1:B2:C3", std::nullopt},
  };
  for (const auto& [text, range] : cases) EXPECT_EQ(parseCellRange(text), range) << text;
  EXPECT_EQ(cellRangeText({{1, 1}, {3, 3}}), "A1:C3");
  EXPECT_EQ(cellRangeText({{2, 2}, {2, 2}}), "B2");
}

}  // namespace
}  // namespace corvane::xlsx
