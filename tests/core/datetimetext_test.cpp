// Date-times as the time stamps of linked files keep them, and local file times.
#include "core/datetimetext.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "core/oledate.h"
#include "core/utf8.h"

namespace corvane::core {
namespace {

double ole(const DateTimeParts& parts) { return *toOleDate(parts); }

TEST(DateTimeText, WritesMonthDayYearAndATwelveHourClock) {
  const struct {
    DateTimeParts parts;
    const wchar_t* text;
  } cases[] = {
      {{2026, 11, 24, 20, 46, 30}, L"11/24/2026 8:46:30 PM"},
      {{2026, 1, 2, 0, 5, 0}, L"1/2/2026 12:05:00 AM"},
      {{2026, 1, 2, 12, 0, 9}, L"1/2/2026 12:00:09 PM"},
      {{2026, 1, 2, 11, 59, 59}, L"1/2/2026 11:59:59 AM"},
      {{2026, 1, 2, 0, 0, 0}, L"1/2/2026"},  // midnight sharp shows no time
      {{1899, 12, 29, 6, 0, 0}, L"12/29/1899 6:00:00 AM"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(dateTimeText(ole(c.parts)), c.text);
    const auto back = parseDateTimeText(c.text);
    ASSERT_TRUE(back) << toUtf8(c.text);
    EXPECT_DOUBLE_EQ(*back, ole(c.parts)) << toUtf8(c.text);
  }
  // To the nearest second.
  EXPECT_EQ(dateTimeText(ole({2026, 11, 24, 20, 46, 30}) + 0.6 / 86400), L"11/24/2026 8:46:31 PM");
  EXPECT_EQ(dateTimeText(1e9), L"");
}

TEST(DateTimeText, ReadsBothFormsAndRefusesTheRest) {
  const double evening = ole({2026, 11, 24, 20, 46, 30});
  const struct {
    const wchar_t* text;
    std::optional<double> date;
  } cases[] = {
      {L"  11/24/2026 8:46:30 pm ", evening},
      {L"11/24/2026 20:46:30", evening},
      {L"2026-11-24T20:46:30", evening},
      {L"2026-11-24 20:46:30", evening},
      {L"2026-11-24 20:46", ole({2026, 11, 24, 20, 46, 0})},
      {L"11/24/2026 12:00 AM", ole({2026, 11, 24, 0, 0, 0})},
      {L"2026-11-24", ole({2026, 11, 24, 0, 0, 0})},
      {L"11/24/2026 13:00 PM", std::nullopt},
      {L"11/24/2026 8:46:30 XM", std::nullopt},
      {L"2/30/2024", std::nullopt},
      {L"24.11.2026", std::nullopt},
      {L"11/24/2026 8:", std::nullopt},
      {L"11/24/2026 8:46:30 PM and more", std::nullopt},
      {L"", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(parseDateTimeText(c.text), c.date) << toUtf8(c.text);

  // Any time, written and read again, is the same second.
  for (double date = 36000.0; date < 50000.0; date += 977.123456) {
    const auto back = parseDateTimeText(dateTimeText(date));
    ASSERT_TRUE(back) << date;
    EXPECT_NEAR(*back, date, 0.5 / 86400) << date;
  }
}

TEST(LocalOleDate, KeepsTheFractionOfTheSecond) {
  const char* saved = std::getenv("TZ");
  const std::string before = saved ? saved : "";
  ::setenv("TZ", "UTC", 1);
  ::tzset();
  const auto epoch = localOleDate(0, 500'000'000);
  const auto later = localOleDate(86400 * 3 + 3600, 250'000'000);
  const auto early = localOleDate(-2209226400, 500'000'000);  // 1899-12-29 06:00 UTC
  if (saved) {
    ::setenv("TZ", before.c_str(), 1);
  } else {
    ::unsetenv("TZ");
  }
  ::tzset();
  ASSERT_TRUE(epoch && later && early);
  EXPECT_DOUBLE_EQ(*epoch, 25569.0 + 0.5 / 86400);
  EXPECT_DOUBLE_EQ(*later, 25572.0 + 3600.25 / 86400);
  // Before the OLE epoch the time of day counts away from zero.
  EXPECT_DOUBLE_EQ(*early, -1.25 - 0.5 / 86400);
}

}  // namespace
}  // namespace corvane::core
