#include "plugin/measure/cblockfilterdialog.h"

#include <algorithm>

#include "host/hostui.h"
#include "plugin/fields/showmodal.h"

namespace corvane {

namespace {

constexpr const wchar_t* kOperators[] = {L"=", L"!=", L">", L">=", L"<", L"<="};

// The double quote ends a value of the field code, the broken bar divides its conditions.
bool holdsReserved(const std::wstring& text) { return text.find_first_of(L"\"\u00A6") != std::wstring::npos; }

}  // namespace

ComboList CBlockFilterDialog::operatorList() {
  ComboList list;
  int item = 0;
  for (const wchar_t* op : kOperators) list.add(op, item++);
  return list;
}

void CBlockFilterDialog::onInitDialog(const State& state) {
  result_ = state;
  layers.clear();
  for (std::wstring& name : host_.layerNames()) {
    const bool selected =
        std::find(state.selectedLayers.begin(), state.selectedLayers.end(), name) != state.selectedLayers.end();
    layers.push_back({std::move(name), selected});
  }
  attribute = state.attribute;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Condition& condition = state.conditions[i];
    rows[i].op = operatorList();
    bool found = false;
    for (int e = 0; e < rows[i].op.size() && !found; ++e) {
      if (rows[i].op.entries()[static_cast<std::size_t>(e)].text == condition.op) {
        rows[i].op.select(e);
        found = true;
      }
    }
    if (!found) rows[i].op.select(0);
    rows[i].tag = condition.tag;
    rows[i].value = condition.value;
  }
}

void CBlockFilterDialog::onCheckAll() {
  for (CheckItem& item : layers) item.checked = true;
}

void CBlockFilterDialog::onUncheckAll() {
  for (CheckItem& item : layers) item.checked = false;
}

bool CBlockFilterDialog::onOK() {
  State state;
  state.selectedLayers = checkedNames(layers);
  state.attribute = attribute;
  bool anyTag = false;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int selected = std::max(rows[i].op.selection(), 0);
    state.conditions[i] = {rows[i].op.entries().empty() ? std::wstring(L"=")
                                                        : rows[i].op.entries()[static_cast<std::size_t>(selected)].text,
                           rows[i].tag, rows[i].value};
    anyTag = anyTag || !rows[i].tag.empty();
    if (attribute && (holdsReserved(rows[i].tag) || holdsReserved(rows[i].value))) {
      host_.messageBox(kReservedCharacter, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
      return false;
    }
  }
  if (attribute && !anyTag) {
    host_.messageBox(kNoTag, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  result_ = std::move(state);
  return true;
}

}  // namespace corvane
