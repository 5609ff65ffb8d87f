// The "Block Filter" dialog of the block count field: the layers the counted insertions lie
// on, and up to two comparisons of an attribute (or dynamic property) with a value.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "plugin/fields/combolist.h"
#include "plugin/measure/cobjectfilterdialog.h"
#include "plugin/measure/dialoghost.h"

namespace corvane {

class CBlockFilterDialog {
 public:
  struct Condition {
    std::wstring op = L"=";
    std::wstring tag;
    std::wstring value;
    bool operator==(const Condition&) const = default;
  };
  struct State {
    std::vector<std::wstring> selectedLayers;  // none: every layer
    bool attribute = false;
    std::array<Condition, 2> conditions;
    bool operator==(const State&) const = default;
  };
  // One row of the dialog: the operator list, "Tag:" and "Value:".
  struct Row {
    ComboList op;
    std::wstring tag;
    std::wstring value;
  };

  static constexpr const wchar_t* kCaption = L"Block Filter";
  static constexpr const wchar_t* kNoTag = L"Enter the tag of the attribute to compare.";
  static constexpr const wchar_t* kReservedCharacter =
      L"A tag or value may not hold a double quote or a broken bar (\u00A6).";

  explicit CBlockFilterDialog(DialogHost& host) : host_(host) {}

  // Every layer of the drawing, those of the state checked; the rows from its conditions.
  void onInitDialog(const State& state);

  // The controls; the rows are enabled only while "Attribute" is checked.
  CheckList layers;
  bool attribute = false;
  std::array<Row, 2> rows;

  void onCheckAll();
  void onUncheckAll();
  bool rowsEnabled() const noexcept { return attribute; }
  // With "Attribute" checked a tag must be given in a row, and no tag or value may hold a
  // character the field code reserves; otherwise a message and the dialog stays open.
  bool onOK();
  const State& result() const noexcept { return result_; }

  // "=", "!=", ">", ">=", "<", "<=".
  static ComboList operatorList();

 private:
  DialogHost& host_;
  State result_;
};

}  // namespace corvane
