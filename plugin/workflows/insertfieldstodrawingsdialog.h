// The dialog of the insert fields command: rules that give the attributes of a block a field,
// and the drawings that receive them, both kept in the settings between uses.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

namespace host {
class HostUi;
}  // namespace host

class CRegistry;

// The key of a rule, as the settings name it and the run looks it up: "<block>*<tag>".
std::wstring RuleKey(std::wstring_view blockName, std::wstring_view tag);

// A row of the rules list. The fourth column holds a code confirmed over an existing row; the
// row keeps showing and passing its own code in this run.
struct InsertFieldRule {
  std::wstring blockName;
  std::wstring tag;
  std::wstring code;
  std::wstring replacement;
  bool operator==(const InsertFieldRule&) const = default;
};

// What OK hands to the command: field codes by rule key (exact keys; a later row with the same
// key wins) and the drawings in list order.
struct InsertFieldsRun {
  std::map<std::wstring, std::wstring> codes;
  std::vector<std::wstring> drawings;
};

class CInsertFieldsToDrawingsDialog {
 public:
  CInsertFieldsToDrawingsDialog(CRegistry& registry, host::HostUi& ui);

  // Opening: the block names of the current drawing for the combo box, and both lists as the
  // settings keep them.
  void OnInitDialog(std::vector<std::wstring> blockNames);

  // The controls.
  std::wstring blockName;
  std::wstring tag;
  std::wstring fieldCode;

  const std::vector<std::wstring>& blockNames() const noexcept { return blockNames_; }
  const std::vector<InsertFieldRule>& rules() const noexcept { return rules_; }
  const std::vector<std::wstring>& drawings() const noexcept { return drawings_; }

  // Add: checks the three boxes, then inserts the row in sorted place or, once the user has
  // been told, puts the code over an existing row's. False when nothing was added.
  bool OnAddRule();
  // Removes the row after asking; false when the user said no or there is no such row.
  bool OnRemoveRule(std::size_t row);
  // The files chosen in the file dialog: the drawings among them join the list.
  void OnAddDrawings(const std::vector<std::wstring>& chosen);
  // Removes the rows after asking; false when the user said no or none of them exists.
  bool OnRemoveDrawings(std::vector<std::size_t> rows);
  // OK: builds the run from the visible columns.
  void OnOK();
  const InsertFieldsRun& run() const noexcept { return run_; }

 private:
  int message(std::wstring_view text, unsigned flags);
  void loadRules();
  void loadDrawings();

  CRegistry& registry_;
  host::HostUi& ui_;
  std::vector<std::wstring> blockNames_;
  std::vector<InsertFieldRule> rules_;
  std::vector<std::wstring> drawings_;
  InsertFieldsRun run_;
};

}  // namespace corvane
