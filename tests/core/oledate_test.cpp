#include "core/oledate.h"

#include <gtest/gtest.h>

#include <limits>

namespace corvane::core {
namespace {

TEST(OleDate, KnownDaysBothWays) {
  // Serials from the system's documented examples and the epoch's neighbours.
  const struct {
    DateTimeParts parts;
    double date;
  } cases[] = {
      {{1899, 12, 30, 0, 0, 0}, 0.0},
      {{1899, 12, 31, 0, 0, 0}, 1.0},
      {{1900, 1, 1, 0, 0, 0}, 2.0},
      {{1900, 3, 1, 0, 0, 0}, 61.0},  // no 1900-02-29 here, unlike the spreadsheet serials
      {{1899, 12, 29, 6, 0, 0}, -1.25},
      {{1970, 1, 1, 0, 0, 0}, 25569.0},
      {{2000, 2, 29, 12, 0, 0}, 36585.5},
      {{2026, 11, 24, 18, 0, 0}, 46350.75},
      {{9999, 12, 31, 0, 0, 0}, 2958465.0},
      {{100, 1, 1, 0, 0, 0}, -657434.0},
  };
  for (const auto& c : cases) {
    const auto date = toOleDate(c.parts);
    ASSERT_TRUE(date) << c.date;
    EXPECT_DOUBLE_EQ(*date, c.date);
    EXPECT_EQ(fromOleDate(c.date), c.parts) << c.date;
  }
}

TEST(OleDate, RefusesWhatIsNoDate) {
  const DateTimeParts bad[] = {{2023, 2, 29, 0, 0, 0}, {1900, 2, 29, 0, 0, 0}, {2024, 13, 1, 0, 0, 0},
                               {2024, 1, 1, 24, 0, 0}, {99, 12, 31, 0, 0, 0},  {10000, 1, 1, 0, 0, 0}};
  for (const auto& parts : bad) EXPECT_FALSE(toOleDate(parts)) << parts.year << '-' << parts.month << '-' << parts.day;
  EXPECT_FALSE(fromOleDate(2958466.0));
  EXPECT_FALSE(fromOleDate(-657435.0));
  EXPECT_FALSE(fromOleDate(std::numeric_limits<double>::quiet_NaN()));
}

TEST(OleDate, SecondsRoundIntoTheNextDay) {
  EXPECT_EQ(fromOleDate(1.0 - 1e-9), (DateTimeParts{1899, 12, 31, 0, 0, 0}));
  EXPECT_EQ(fromOleDate(-1.0 - (1.0 - 1e-9)), (DateTimeParts{1899, 12, 30, 0, 0, 0}));
  EXPECT_EQ(fromOleDate(0.5 + 0.4 / 86400), (DateTimeParts{1899, 12, 30, 12, 0, 0}));
}

TEST(OleDate, UnixSecondsMeetTheSameDays) {
  const std::int64_t seconds[] = {0, 86399, -1, 1'700'000'000, -2'208'988'800 /* 1900-01-01 */};
  for (const std::int64_t s : seconds) EXPECT_EQ(unixFromOleDate(oleDateFromUnix(s)), s) << s;
  EXPECT_DOUBLE_EQ(oleDateFromUnix(-2'208'988'800), 2.0);
  EXPECT_DOUBLE_EQ(oleDateFromUnix(43200), 25569.5);
}

}  // namespace
}  // namespace corvane::core
