// The plug-in's part of the host's field dialog: the category "Corvane" and its eight field
// names, in the system's language where there is a translation.
#pragma once

#include <string>
#include <vector>

#include "host/acfdui.h"
#include "host/hostsystem.h"

namespace corvane {

class AsdkCustomOptionDialogHook : public host::CAcFdUiFieldDialogHook {
 public:
  static constexpr unsigned kCategoryId = 72345;
  static constexpr const wchar_t* kCategoryName = L"Corvane";

  // Without a system the names are the default ones.
  explicit AsdkCustomOptionDialogHook(const host::HostSystem* system) : system_(system) {}

  int GetEvaluatorIds(std::vector<std::wstring>& ids) override;
  bool GetCategories(std::vector<std::wstring>& names, std::vector<unsigned>& ids) override;
  bool GetFieldNames(int categoryId, std::vector<std::wstring>& names, std::vector<unsigned>& ids,
                     bool& sort) override;

 private:
  const host::HostSystem* system_;
};

}  // namespace corvane
