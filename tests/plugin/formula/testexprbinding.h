// A binding over plain maps, for tests of the formula engine: it plays a drawing with one
// table or one block reference, a few objects with properties and some system variables, and
// records what the engine asked for.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/textutil.h"
#include "plugin/formula/exprbinding.h"

namespace corvane::testing {

class TestExprBinding : public ExprBinding {
 public:
  // Rows of cells; binding a table makes bare names look only there.
  std::optional<std::vector<std::vector<std::wstring>>> table;
  std::optional<std::map<std::wstring, std::wstring>> selfBlock;  // dynamic properties, upper-case names
  std::map<std::wstring, std::wstring> systemVariables;            // upper-case names
  std::map<std::pair<std::wstring, std::wstring>, std::wstring> properties;  // (handle, upper-case property)
  std::map<std::wstring, std::wstring> fieldValues;                // field code -> value
  std::map<std::pair<std::wstring, std::wstring>, double> blockSums;  // (block, property)
  std::vector<std::wstring> asked;                                 // every lookup, in order

  bool HasOwnerTable() const override { return table.has_value(); }
  int OwnerTableRows() const override { return table ? static_cast<int>(table->size()) : 0; }
  int OwnerTableColumns() const override { return table && !table->empty() ? static_cast<int>((*table)[0].size()) : 0; }
  std::optional<std::wstring> OwnerTableCell(int row, int column) override {
    asked.push_back(L"cell " + std::to_wstring(row) + L"," + std::to_wstring(column));
    return (*table).at(static_cast<std::size_t>(row - 1)).at(static_cast<std::size_t>(column - 1));
  }
  std::optional<std::wstring> ObjectProperty(std::wstring_view handle, std::wstring_view property) override {
    asked.push_back(L"property " + std::wstring(handle) + L"!" + std::wstring(property));
    return find(properties, std::pair<std::wstring, std::wstring>(handle, core::toUpper(property)));
  }
  std::optional<std::wstring> SystemVariable(std::wstring_view name) override {
    asked.push_back(L"sysvar " + std::wstring(name));
    return find(systemVariables, core::toUpper(name));
  }
  bool HasSelfBlock() const override { return selfBlock.has_value(); }
  std::optional<std::wstring> SelfBlockProperty(std::wstring_view property) override {
    asked.push_back(L"self " + std::wstring(property));
    return find(*selfBlock, core::toUpper(property));
  }
  std::wstring EvaluateFieldCode(std::wstring_view code) override {
    asked.push_back(L"field " + std::wstring(code));
    return find(fieldValues, std::wstring(code)).value_or(L"####");
  }
  double SumBlockProperty(std::wstring_view block, std::wstring_view property) override {
    asked.push_back(L"sum " + std::wstring(block) + L"." + std::wstring(property));
    const auto it = blockSums.find({std::wstring(block), std::wstring(property)});
    return it == blockSums.end() ? 0.0 : it->second;
  }

 private:
  template <typename Map, typename Key>
  static std::optional<std::wstring> find(const Map& map, const Key& key) {
    const auto it = map.find(key);
    if (it == map.end()) return std::nullopt;
    return it->second;
  }
};

}  // namespace corvane::testing
