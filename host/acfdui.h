// The host's field dialog as far as a plug-in extends it: a dialog hook supplies categories
// and field names, and the field manager keeps the hooks that are registered.
#pragma once

#include <string>
#include <vector>

namespace corvane::host {

class CAcFdUiFieldDialogHook {
 public:
  virtual ~CAcFdUiFieldDialogHook() = default;
  // Appends the evaluator ids whose fields the hook edits; returns the list's size.
  virtual int GetEvaluatorIds(std::vector<std::wstring>& ids) = 0;
  virtual bool GetCategories(std::vector<std::wstring>& names, std::vector<unsigned>& ids) = 0;
  // Field names of a category; category -1 asks for every category.
  virtual bool GetFieldNames(int categoryId, std::vector<std::wstring>& names, std::vector<unsigned>& ids,
                             bool& sort) = 0;
};

class CAcFdUiFieldManager {
 public:
  virtual ~CAcFdUiFieldManager() = default;
  virtual bool RegisterFieldDialogHook(CAcFdUiFieldDialogHook* hook) = 0;
  virtual bool UnregisterFieldDialogHook(CAcFdUiFieldDialogHook* hook) = 0;
};

}  // namespace corvane::host
