#include "headless/db/xdatalist.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane::headless {
namespace {

using host::ResBuf;
using host::ResBufList;

const ResBufList kApp = {{1001, std::wstring(L"APP")}, {1070, std::int32_t{3}}};
const ResBufList kOther = {{1001, std::wstring(L"OTHER")}, {1000, std::wstring(L"x")}};

// The list reads as what was put in, copies are independent of their source, and an empty
// list reads as empty whichever way it became so.
TEST(XDataList, ReadsAsWhatWasPutInAndCopiesStandAlone) {
  struct Case {
    const char* name;
    ResBufList first;
    ResBufList second;  // put in after the first
  } const cases[] = {
      {"nothing", {}, {}},
      {"one application", kApp, kApp},
      {"replaced", kApp, kOther},
      {"emptied", kApp, {}},
      {"filled later", {}, kOther},
  };
  for (const Case& c : cases) {
    XDataList list;
    EXPECT_TRUE(list.empty()) << c.name;
    list = c.first;
    EXPECT_EQ(list.list(), c.first) << c.name;
    const XDataList copy = list;  // of the first
    list = c.second;
    EXPECT_EQ(list.list(), c.second) << c.name;
    EXPECT_EQ(list.size(), c.second.size()) << c.name;
    EXPECT_TRUE(list == c.second) << c.name;
    EXPECT_EQ(copy.list(), c.first) << c.name;
    EXPECT_EQ(list == copy, c.first == c.second) << c.name;
    ResBufList walked(list.begin(), list.end());
    EXPECT_EQ(walked, c.second) << c.name;
  }
}

TEST(XDataList, EditsReachTheListAndNotItsCopies) {
  XDataList list;
  list = kApp;
  XDataList copy = list;
  list.back().value = std::int32_t{9};
  list.edit().push_back({1000, std::wstring(L"more")});
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(std::get<std::int32_t>(list[1].value), 9);
  EXPECT_EQ(std::get<std::wstring>(list[2].value), L"more");
  EXPECT_EQ(copy.list(), kApp);
  XDataList fresh;
  fresh.edit().push_back({1001, std::wstring(L"NEW")});
  EXPECT_EQ(fresh.size(), 1u);
}

}  // namespace
}  // namespace corvane::headless
