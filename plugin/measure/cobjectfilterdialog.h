// The "Object Filter" dialog of the area and length fields: which spaces, which entity types
// and which layers the field measures.
#pragma once

#include <string>
#include <vector>

#include "plugin/measure/dialoghost.h"
#include "plugin/measure/objectset.h"
#include "plugin/support/cregistry.h"

namespace corvane {

// A check list of names: the layers of the filter dialogs, the blocks of the block count.
struct CheckItem {
  std::wstring name;
  bool checked = false;
  bool operator==(const CheckItem&) const = default;
};
using CheckList = std::vector<CheckItem>;

// The names checked, in list order.
std::vector<std::wstring> checkedNames(const CheckList& list);

class CObjectFilterDialog {
 public:
  struct State {
    SpaceScope scope = SpaceScope::kAllSpaces;
    int typeMask = 0;
    std::vector<std::wstring> selectedLayers;
  };

  struct TypeBox {
    const wchar_t* caption;
    int bit;  // 0 for the solid box, which stands for no type
    bool checked = false;
    bool visible = false;
  };

  static constexpr const wchar_t* kCaption = L"Object Filter";
  static constexpr const wchar_t* kInvalidTypes = L"Invalid object types.";
  // Where the last choices are kept, below the dialog's section.
  static constexpr const wchar_t* kScopeValue = L"SpaceScope";
  static constexpr const wchar_t* kTypesValue = L"ObjectTypes";

  // `settingsKey` is the section of the calling field ("Corvane\AreaField"); `offeredMask` the
  // types it measures (82 area, 51 length).
  CObjectFilterDialog(DialogHost& host, CRegistry& registry, std::wstring settingsKey, int offeredMask);

  // Fills the controls from the caller's state: every layer of the drawing, those of the state
  // checked; only the offered type boxes shown.
  void onInitDialog(const State& state);

  // The controls.
  SpaceScope scope = SpaceScope::kAllSpaces;  // "All spaces", "Model space only", "Owner space only"
  std::vector<TypeBox> types;                 // in the order of their bits, the solid box last
  CheckList layers;

  void onSelectAll();
  void onDeselectAll();
  // With no type checked shows "Invalid object types." and returns false (the dialog stays
  // open); otherwise takes the state from the controls and keeps the choice in the settings.
  bool onOK();
  // The state on OK; the caller's state stays as it was when the dialog is cancelled.
  const State& result() const noexcept { return result_; }

  const std::wstring& settingsKey() const noexcept { return settingsKey_; }
  int offeredMask() const noexcept { return offeredMask_; }

 private:
  DialogHost& host_;
  CRegistry& registry_;
  std::wstring settingsKey_;
  int offeredMask_;
  State result_;
};

}  // namespace corvane
