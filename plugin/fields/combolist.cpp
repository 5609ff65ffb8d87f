#include "plugin/fields/combolist.h"

namespace corvane {

bool ComboList::selectItem(int item) noexcept {
  for (int i = 0; i < size(); ++i) {
    if (entries_[static_cast<std::size_t>(i)].item == item) {
      selection_ = i;
      return true;
    }
  }
  return false;
}

std::optional<int> ComboList::selectedItem() const noexcept {
  if (selection_ < 0) return std::nullopt;
  return entries_[static_cast<std::size_t>(selection_)].item;
}

}  // namespace corvane
