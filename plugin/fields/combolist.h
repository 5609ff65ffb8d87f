// A drop-down list of a dialog: texts with item values, a selection, and whether it is enabled
// and shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

struct ListEntry {
  std::wstring text;
  int item = 0;
  bool operator==(const ListEntry&) const = default;
};

class ComboList {
 public:
  ComboList() = default;
  explicit ComboList(std::vector<ListEntry> entries) : entries_(std::move(entries)) {}

  const std::vector<ListEntry>& entries() const noexcept { return entries_; }
  void clear() noexcept {
    entries_.clear();
    selection_ = -1;
  }
  void add(std::wstring text, int item) { entries_.push_back({std::move(text), item}); }

  // -1 when nothing is selected.
  int selection() const noexcept { return selection_; }
  void select(int index) noexcept { selection_ = index >= 0 && index < size() ? index : -1; }
  // Selects the first entry with the item value; false (selection unchanged) when none has it.
  bool selectItem(int item) noexcept;
  std::optional<int> selectedItem() const noexcept;

  int size() const noexcept { return static_cast<int>(entries_.size()); }
  bool enabled = true;
  bool visible = true;

 private:
  std::vector<ListEntry> entries_;
  int selection_ = -1;
};

}  // namespace corvane
