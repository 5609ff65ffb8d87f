#include "plugin/workflows/insertfieldstodrawingsdialog.h"

#include <algorithm>

#include "core/printf.h"
#include "core/textutil.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"
#include "plugin/support/cregistry.h"

namespace corvane {

namespace {

constexpr const wchar_t* kRulesSection = L"Corvane\\BlockAttFields";
constexpr const wchar_t* kDrawingsSection = L"Corvane\\InsertFieldsDrawings";

// The list's order: by block name, then by tag, neither minding case.
bool sortsBefore(const InsertFieldRule& a, const InsertFieldRule& b) noexcept {
  if (const int byBlock = core::compareNoCase(a.blockName, b.blockName); byBlock != 0) return byBlock < 0;
  return core::compareNoCase(a.tag, b.tag) < 0;
}

// The drawing files of the host; this one reads DXF files as well as DWG ones.
bool isDrawingFile(std::wstring_view path) {
  const std::wstring_view name = core::fileNameOf(path);
  const std::size_t dot = name.rfind(L'.');
  if (dot == std::wstring_view::npos) return false;
  const std::wstring_view extension = name.substr(dot);
  return core::equalsNoCase(extension, L".dwg") || core::equalsNoCase(extension, L".dxf");
}

}  // namespace

std::wstring RuleKey(std::wstring_view blockName, std::wstring_view tag) {
  return core::format(L"%s*%s", blockName, tag);
}

CInsertFieldsToDrawingsDialog::CInsertFieldsToDrawingsDialog(CRegistry& registry, host::HostUi& ui)
    : registry_(registry), ui_(ui) {}

void CInsertFieldsToDrawingsDialog::OnInitDialog(std::vector<std::wstring> blockNames) {
  blockNames_ = std::move(blockNames);
  loadRules();
  loadDrawings();
}

void CInsertFieldsToDrawingsDialog::loadRules() {
  rules_.clear();
  for (const std::wstring& key : registry_.valueNames(kRulesSection)) {
    // Block names hold no "*" but anonymous ones, which begin with it.
    const std::size_t star = key.find(L'*', 1);
    if (star == std::wstring::npos) continue;
    InsertFieldRule rule{key.substr(0, star), key.substr(star + 1), registry_.getString(kRulesSection, key, L""), {}};
    rules_.insert(std::upper_bound(rules_.begin(), rules_.end(), rule, sortsBefore), std::move(rule));
  }
}

void CInsertFieldsToDrawingsDialog::loadDrawings() { drawings_ = registry_.valueNames(kDrawingsSection); }

int CInsertFieldsToDrawingsDialog::message(std::wstring_view text, unsigned flags) {
  return ui_.messageBox(text, kMessageCaption, flags);
}

bool CInsertFieldsToDrawingsDialog::OnAddRule() {
  const bool knownBlock = std::any_of(blockNames_.begin(), blockNames_.end(),
                                      [&](const std::wstring& name) { return core::equalsNoCase(name, blockName); });
  const wchar_t* refusal = blockName.empty() || !knownBlock ? L"Invalid block name."
                           : tag.empty()                    ? L"Invalid attribute tag."
                           : fieldCode.empty()              ? L"Invalid field code."
                                                            : nullptr;
  if (refusal) {
    message(refusal, host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  InsertFieldRule rule{blockName, tag, fieldCode, {}};
  const auto same = std::find_if(rules_.begin(), rules_.end(), [&](const InsertFieldRule& row) {
    return core::equalsNoCase(row.blockName, blockName) && core::equalsNoCase(row.tag, tag);
  });
  if (same == rules_.end()) {
    registry_.writeString(kRulesSection, RuleKey(blockName, tag), fieldCode);
    rules_.insert(std::upper_bound(rules_.begin(), rules_.end(), rule, sortsBefore), std::move(rule));
    return true;
  }
  const int answer =
      message(core::format(L"%s.%s already has a field. Are you sure you want to replace it?", blockName, tag),
              host::MB_OK | host::MB_ICONINFORMATION);
  if (answer != host::IDOK) return false;
  // The new code goes beside the shown one: this run keeps the old, the next opening shows the new.
  same->replacement = fieldCode;
  registry_.writeString(kRulesSection, RuleKey(same->blockName, same->tag), fieldCode);
  return true;
}

bool CInsertFieldsToDrawingsDialog::OnRemoveRule(std::size_t row) {
  if (row >= rules_.size()) return false;
  if (message(L"Are you sure you want to remove this item?", host::MB_YESNO | host::MB_ICONQUESTION) != host::IDYES) {
    return false;
  }
  registry_.removeValue(kRulesSection, RuleKey(rules_[row].blockName, rules_[row].tag));
  rules_.erase(rules_.begin() + static_cast<std::ptrdiff_t>(row));
  return true;
}

void CInsertFieldsToDrawingsDialog::OnAddDrawings(const std::vector<std::wstring>& chosen) {
  for (const std::wstring& path : chosen) {
    if (!isDrawingFile(path)) continue;
    // The settings name a drawing once; so does the list.
    const bool listed = std::any_of(drawings_.begin(), drawings_.end(),
                                    [&](const std::wstring& drawing) { return core::equalsNoCase(drawing, path); });
    if (listed) continue;
    drawings_.push_back(path);
    registry_.writeString(kDrawingsSection, path, L"");
  }
}

bool CInsertFieldsToDrawingsDialog::OnRemoveDrawings(std::vector<std::size_t> rows) {
  rows.erase(std::remove_if(rows.begin(), rows.end(), [&](std::size_t row) { return row >= drawings_.size(); }),
             rows.end());
  if (rows.empty()) return false;
  if (message(L"Are you sure you want to remove the selected item(s)?", host::MB_YESNO | host::MB_ICONQUESTION) !=
      host::IDYES) {
    return false;
  }
  // From the bottom up, so that the rows still to go keep their numbers.
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    registry_.removeValue(kDrawingsSection, drawings_[*row]);
    drawings_.erase(drawings_.begin() + static_cast<std::ptrdiff_t>(*row));
  }
  return true;
}

void CInsertFieldsToDrawingsDialog::OnOK() {
  run_ = {};
  for (const InsertFieldRule& rule : rules_) run_.codes[RuleKey(rule.blockName, rule.tag)] = rule.code;
  run_.drawings = drawings_;
}

}  // namespace corvane
