#include "plugin/measure/cobjectfilterdialog.h"

#include <algorithm>

#include "host/hostui.h"
#include "plugin/fields/showmodal.h"

namespace corvane {

std::vector<std::wstring> checkedNames(const CheckList& list) {
  std::vector<std::wstring> names;
  for (const CheckItem& item : list) {
    if (item.checked) names.push_back(item.name);
  }
  return names;
}

CObjectFilterDialog::CObjectFilterDialog(DialogHost& host, CRegistry& registry, std::wstring settingsKey,
                                         int offeredMask)
    : host_(host), registry_(registry), settingsKey_(std::move(settingsKey)), offeredMask_(offeredMask) {
  types = {{L"Line", kLineType},   {L"Polyline", kPolylineType},  {L"MText", kMTextType},
           {L"Text", kTextType},   {L"Circle", kCircleType},      {L"Arc", kArcType},
           {L"Hatch", kHatchType}, {L"Block Ref", kBlockRefType}, {L"Solid", 0}};
}

void CObjectFilterDialog::onInitDialog(const State& state) {
  result_ = state;
  scope = state.scope;
  layers.clear();
  for (std::wstring& name : host_.layerNames()) {
    const bool selected =
        std::find(state.selectedLayers.begin(), state.selectedLayers.end(), name) != state.selectedLayers.end();
    layers.push_back({std::move(name), selected});
  }
  for (TypeBox& box : types) {
    box.visible = (box.bit & offeredMask_) != 0;
    box.checked = (box.bit & state.typeMask) != 0;
  }
}

void CObjectFilterDialog::onSelectAll() {
  for (CheckItem& item : layers) item.checked = true;
}

void CObjectFilterDialog::onDeselectAll() {
  for (CheckItem& item : layers) item.checked = false;
}

bool CObjectFilterDialog::onOK() {
  int mask = 0;
  for (const TypeBox& box : types) {
    if (box.checked) mask |= box.bit;
  }
  if (mask == 0) {
    host_.messageBox(kInvalidTypes, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  result_ = {scope, mask, checkedNames(layers)};
  registry_.writeInt(settingsKey_, kScopeValue, static_cast<int>(scope));
  registry_.writeInt(settingsKey_, kTypesValue, mask);
  return true;
}

}  // namespace corvane
