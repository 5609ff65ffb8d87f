#include "plugin/formula/caddfieldcodevardialog.h"

#include <algorithm>

#include "core/printf.h"
#include "core/textutil.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"

namespace corvane {

namespace {

bool isLetter(wchar_t c) noexcept { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

}  // namespace

void CAddFieldCodeVarDialog::onInitDialog() {
  rows = host_.variables();
  selectedRows.clear();
  name.clear();
  fieldCode.clear();
}

void CAddFieldCodeVarDialog::say(const std::wstring& text, const wchar_t* caption) {
  host_.messageBox(text, caption, host::MB_OK | host::MB_ICONINFORMATION);
}

bool CAddFieldCodeVarDialog::onAdd() {
  const std::wstring trimmedName = core::trim(name);
  if (trimmedName.empty()) {
    say(L"The variable name is empty.", kCaption);
    return false;
  }
  if (!isLetter(trimmedName.front())) {
    say(L"The first character of the variable name must be an alphabet.", kCaption);
    return false;
  }
  if (trimmedName.find_first_of(kReservedCharacters) != std::wstring::npos) {
    say(core::format(L"The variable name can't contain the blank space and any of the following characters: \n%s",
                     kReservedCharacters),
        kCaption);
    return false;
  }
  const std::wstring code = core::trim(fieldCode);
  if (code.empty()) {
    say(L"Invalid Field Code.", kCaption);
    return false;
  }
  const auto existing = std::find_if(
      rows.begin(), rows.end(), [&](const FormulaVariable& row) { return core::equalsNoCase(row.name, trimmedName); });
  if (existing == rows.end()) {
    rows.push_back({trimmedName, code});
    return true;
  }
  if (host_.messageBox(L"A variable you specified already exists. Do you want to update it?", kCaption,
                       host::MB_YESNO | host::MB_ICONQUESTION) != host::IDYES) {
    return false;
  }
  existing->fieldCode = code;
  return true;
}

bool CAddFieldCodeVarDialog::onRemove() {
  std::vector<int> chosen;
  for (const int row : selectedRows) {
    if (row >= 0 && row < static_cast<int>(rows.size())) chosen.push_back(row);
  }
  if (chosen.empty()) {
    say(L"Please select a item first.", kMessageCaption);
    return false;
  }
  if (host_.messageBox(L"Are you sure you want to remove the item(s)?", kMessageCaption,
                       host::MB_YESNO | host::MB_ICONQUESTION) != host::IDYES) {
    return false;
  }
  std::sort(chosen.begin(), chosen.end());
  chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
  for (auto at = chosen.rbegin(); at != chosen.rend(); ++at) rows.erase(rows.begin() + *at);
  selectedRows.clear();
  return true;
}

bool CAddFieldCodeVarDialog::onOK() {
  const host::Acad::ErrorStatus es = host_.setVariables(rows);
  if (es == host::Acad::eOk) return true;
  say(core::format(L"The variables could not be kept with the drawing: %s.", host::acadErrorStatusText(es)),
      kMessageCaption);
  return false;
}

}  // namespace corvane
