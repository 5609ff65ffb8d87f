#include "plugin/shell/asdkcustomoptiondialoghook.h"

namespace corvane {

namespace {

struct FieldRow {
  unsigned id;
  const wchar_t* name;
  const wchar_t* japaneseName;
};

// In the order the names are given to the dialog.
constexpr FieldRow kFields[] = {
    {72344, L"VX Objects Length", L"VX \u30aa\u30d6\u30b8\u30a7\u30af\u30c8\u306e\u9577\u3055"},
    {72343, L"VX Objects Area", L"VX \u30aa\u30d6\u30b8\u30a7\u30af\u30c8\u306e\u9762\u7a4d"},
    {72342, L"VX Block Count", L"VX \u30d6\u30ed\u30c3\u30af\u306e\u6570"},
    {72341, L"VX Text File", L"VX \u30c6\u30ad\u30b9\u30c8\u30d5\u30a1\u30a4\u30eb"},
    {72340, L"VX Excel Cell", L"VX Excel\u306e\u30bb\u30eb"},
    {72339, L"VX Table Cell", L"VX \u8868\u306e\u30bb\u30eb"},
    {72346, L"VX Formula", L"VX \u8a08\u7b97\u5f0f"},
    {72347, L"VX Defined Object", L"VX \u5b9a\u7fa9\u3055\u308c\u305f\u30aa\u30d6\u30b8\u30a7\u30af\u30c8"},
};

// Not the loader's order; the dialog asks in this one.
constexpr const wchar_t* kEvaluatorIds[] = {L"AcArea",    L"AcLength",  L"AcBlockCount", L"TextField",
                                            L"ExcelCell", L"TableCell", L"VxExpr",       L"AcDefinedObj"};

}  // namespace

int AsdkCustomOptionDialogHook::GetEvaluatorIds(std::vector<std::wstring>& ids) {
  for (const wchar_t* id : kEvaluatorIds) ids.emplace_back(id);
  return static_cast<int>(ids.size());
}

bool AsdkCustomOptionDialogHook::GetCategories(std::vector<std::wstring>& names, std::vector<unsigned>& ids) {
  names.emplace_back(kCategoryName);
  ids.push_back(kCategoryId);
  return true;
}

bool AsdkCustomOptionDialogHook::GetFieldNames(int categoryId, std::vector<std::wstring>& names,
                                               std::vector<unsigned>& ids, bool& sort) {
  if (categoryId != static_cast<int>(kCategoryId) && categoryId != -1) return true;
  for (const auto& row : kFields) {
    // The language is asked for each name, as the dialog's own code does.
    const bool japanese = system_ && system_->systemDefaultLangId() == host::kLangJapanese;
    names.emplace_back(japanese ? row.japaneseName : row.name);
    ids.push_back(row.id);
  }
  sort = true;
  return true;
}

}  // namespace corvane
