#include "plugin/shell/asdkcustomoptiondialoghook.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/editor/osservices.h"

namespace corvane {
namespace {

TEST(AsdkCustomOptionDialogHook, NamesItsCategoryAndFieldsInTheSystemsLanguage) {
  const std::vector<unsigned> ids = {72344, 72343, 72342, 72341, 72340, 72339, 72346, 72347};
  const std::vector<std::wstring> english = {L"VX Objects Length", L"VX Objects Area", L"VX Block Count",
                                             L"VX Text File",      L"VX Excel Cell",   L"VX Table Cell",
                                             L"VX Formula",        L"VX Defined Object"};
  const std::vector<std::wstring> japanese = {
      L"VX \u30aa\u30d6\u30b8\u30a7\u30af\u30c8\u306e\u9577\u3055",  // VX オブジェクトの長さ
      L"VX \u30aa\u30d6\u30b8\u30a7\u30af\u30c8\u306e\u9762\u7a4d",  // VX オブジェクトの面積
      L"VX \u30d6\u30ed\u30c3\u30af\u306e\u6570",                    // VX ブロックの数
      L"VX \u30c6\u30ad\u30b9\u30c8\u30d5\u30a1\u30a4\u30eb",        // VX テキストファイル
      L"VX Excel\u306e\u30bb\u30eb",                                  // VX Excelのセル
      L"VX \u8868\u306e\u30bb\u30eb",                                 // VX 表のセル
      L"VX \u8a08\u7b97\u5f0f",                                       // VX 計算式
      L"VX \u5b9a\u7fa9\u3055\u308c\u305f\u30aa\u30d6\u30b8\u30a7\u30af\u30c8",  // VX 定義されたオブジェクト
  };
  struct Case {
    int language;
    int category;
    std::vector<std::wstring> names;
    std::vector<unsigned> ids;
  } const cases[] = {
      {host::kLangEnglishUS, 72345, english, ids},
      {host::kLangEnglishUS, -1, english, ids},
      {host::kLangJapanese, 72345, japanese, ids},
      {host::kLangJapanese, -1, japanese, ids},
      {host::kLangEnglishUS, 72344, {}, {}},  // a field id is no category
      {host::kLangEnglishUS, 0, {}, {}},
      {2052, 72345, english, ids},  // another language without a translation
  };
  for (const auto& c : cases) {
    headless::OsServices system(L"corvane");
    system.setSystemDefaultLangId(c.language);
    AsdkCustomOptionDialogHook hook(&system);
    std::vector<std::wstring> names{L"host's own"};
    std::vector<unsigned> got{1};
    bool sort = false;
    EXPECT_TRUE(hook.GetFieldNames(c.category, names, got, sort));
    // Appended after what the dialog had.
    std::vector<std::wstring> expectedNames{L"host's own"};
    expectedNames.insert(expectedNames.end(), c.names.begin(), c.names.end());
    std::vector<unsigned> expectedIds{1};
    expectedIds.insert(expectedIds.end(), c.ids.begin(), c.ids.end());
    EXPECT_EQ(names, expectedNames) << c.language << " " << c.category;
    EXPECT_EQ(got, expectedIds) << c.language << " " << c.category;
    EXPECT_EQ(sort, !c.names.empty());
  }
}

TEST(AsdkCustomOptionDialogHook, EvaluatorIdsAndCategory) {
  AsdkCustomOptionDialogHook hook(nullptr);
  std::vector<std::wstring> ids{L"AcVar"};
  EXPECT_EQ(hook.GetEvaluatorIds(ids), 9);
  EXPECT_EQ(ids, (std::vector<std::wstring>{L"AcVar", L"AcArea", L"AcLength", L"AcBlockCount", L"TextField",
                                            L"ExcelCell", L"TableCell", L"VxExpr", L"AcDefinedObj"}));
  std::vector<std::wstring> names;
  std::vector<unsigned> categoryIds;
  EXPECT_TRUE(hook.GetCategories(names, categoryIds));
  EXPECT_EQ(names, std::vector<std::wstring>{L"Corvane"});
  EXPECT_EQ(categoryIds, std::vector<unsigned>{72345});
  // Without a system to ask, the names are the default ones.
  std::vector<std::wstring> fieldNames;
  std::vector<unsigned> fieldIds;
  bool sort = false;
  hook.GetFieldNames(-1, fieldNames, fieldIds, sort);
  ASSERT_EQ(fieldNames.size(), 8u);
  EXPECT_EQ(fieldNames[6], L"VX Formula");
}

}  // namespace
}  // namespace corvane
