#include "plugin/measure/objectsetoptiondialog.h"

#include <algorithm>
#include <cstdint>

#include "core/printf.h"
#include "core/textutil.h"
#include "host/acedprompts.h"
#include "plugin/fields/asdkfieldevaluator.h"
#include "plugin/fields/formatlists.h"
#include "plugin/fields/formatpieces.h"
#include "plugin/measure/fieldoptions.h"
#include "plugin/measure/measurefield.h"
#include "plugin/measure/parsedformat.h"

namespace corvane {

using host::AcDbField;

ObjectSetOptionDialog::ObjectSetOptionDialog(DialogHost& host, CRegistry& registry, Kind kind)
    : host_(host), registry_(registry), kind_(std::move(kind)) {}

void ObjectSetOptionDialog::onInitDialog() {
  choice = {};
  choice.typeMask = kind_.typeMask;
  choice.allLayers = host_.layerNames();
  choice.selectedLayers = choice.allLayers;
  selectedHandles.clear();
  additional = {};
  value_ = 0.0;
  previewText_.clear();
  message_.clear();

  units = unitsList();
  int lunits = 2;
  host_.getShortVar(L"LUNITS", lunits);
  units.selectItem(lunits);
  precision.clear();
  precision.enabled = false;
}

namespace {

// The value of a field as a real; 0 for a value that is no number.
double realValue(const host::AcValue& value) {
  double real = 0.0;
  std::int32_t whole = 0;
  if (value.get(real)) return real;
  if (value.get(whole)) return whole;
  return 0.0;
}

}  // namespace

int ObjectSetOptionDialog::setFieldToEdit(const AcDbField& field) {
  onInitDialog();
  ObjectSet set;
  if (const int status = readObjectSetRecord(field, kind_.dataKey, set, message_); status != AcDbField::kSuccess) {
    return status;
  }

  selectFormat(field.getFormat());

  if (!set.isNamedSet()) choice.handles = set.handles();
  choice.scope = set.isNamedSet() ? set.scope() : SpaceScope::kAllSpaces;
  choice.explicitObjects = !choice.handles.empty();
  const FieldOptions options = readFieldOptions(set.options);
  if (options.find(L"layer")) choice.selectedLayers = set.layers;
  if (const FieldOption* mask = options.find(L"objtype"); mask && !mask->value.empty()) choice.typeMask = set.typeMask;

  host::AcValue value;
  if (field.getValue(value) == host::Acad::eOk) value_ = realValue(value);
  previewText_ = field.getDisplayText();
  return AcDbField::kSuccess;
}

void ObjectSetOptionDialog::selectFormat(const std::wstring& format) {
  // The entry whose units piece begins the format: the pieces the page writes read back to the
  // entry that wrote them, "Current units" ("%lu6") included, which the number alone would not
  // find. Area's Architectural and Engineering write the same piece; the first in the list wins.
  int best = -1;
  std::size_t bestLength = 0;
  for (int i = 0; i < units.size(); ++i) {
    const std::wstring piece = kind_.unitsPiece(units.entries()[static_cast<std::size_t>(i)].item);
    if (piece.size() > bestLength && format.starts_with(piece)) {
      best = i;
      bestLength = piece.size();
    }
  }
  ParsedFormat parsed = parseFormat(format);
  if (best >= 0) {
    parsed.units = units.entries()[static_cast<std::size_t>(best)].item;
  } else if (!parsed.units) {
    parsed.units = kUnitsNone;  // a format without units was written with "(none)"
  }
  selectFromFormat(host_, parsed, units, precision);
  parsed.applyTo(additional);
}

void ObjectSetOptionDialog::onUnitsChanged() {
  fillPrecisionList(host_, units.selectedItem().value_or(kUnitsNone), precision);
  refreshPreview();
}

void ObjectSetOptionDialog::onPrecisionChanged() { refreshPreview(); }

host::ResBufList ObjectSetOptionDialog::selectionFilter() const {
  host::ResBufList filter{{-4, std::wstring(L"<or")}};
  for (const wchar_t* type : kind_.selectionTypes) {
    filter.push_back({-4, std::wstring(L"<and")});
    filter.push_back({0, std::wstring(type)});
    filter.push_back({-4, std::wstring(L"and>")});
  }
  filter.push_back({-4, std::wstring(L"or>")});
  return filter;
}

bool ObjectSetOptionDialog::typePasses(int typeBit) const noexcept {
  if ((typeBit & kind_.pickableTypes) == 0) return false;
  return choice.typeMask == 0 || (choice.typeMask & typeBit) != 0;
}

bool ObjectSetOptionDialog::layerSelected(const std::wstring& layer) const {
  return std::find(choice.selectedLayers.begin(), choice.selectedLayers.end(), layer) != choice.selectedLayers.end();
}

int ObjectSetOptionDialog::onAddObjects() {
  std::vector<EntityFacts> picked;
  const int result = host_.selectEntities(selectionFilter(), picked);
  for (EntityFacts& entity : picked) {
    if (!layerSelected(entity.layer) || !typePasses(entity.typeBit)) continue;
    if (std::find(choice.handles.begin(), choice.handles.end(), entity.handle) == choice.handles.end())
      choice.handles.push_back(std::move(entity.handle));
  }
  choice.explicitObjects = !choice.handles.empty();
  refreshPreview();
  return result;
}

void ObjectSetOptionDialog::onRemoveObjects() {
  std::vector<int> chosen = selectedHandles;
  std::sort(chosen.begin(), chosen.end());
  chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
  for (auto at = chosen.rbegin(); at != chosen.rend(); ++at) {
    if (*at >= 0 && *at < static_cast<int>(choice.handles.size())) choice.handles.erase(choice.handles.begin() + *at);
  }
  selectedHandles.clear();
  choice.explicitObjects = !choice.handles.empty();
  refreshPreview();
}

bool ObjectSetOptionDialog::entryPasses(const std::wstring& entry) {
  if (entry.find(L'*') != std::wstring::npos) return true;
  const auto entity = host_.entity(entry);
  return entity && layerSelected(entity->layer) && typePasses(entity->typeBit);
}

bool ObjectSetOptionDialog::onObjectFilter(const ShowModal<CObjectFilterDialog>& show) {
  CObjectFilterDialog dialog(host_, registry_, kind_.settingsKey, kind_.typeMask);
  dialog.onInitDialog({choice.scope, choice.typeMask, choice.selectedLayers});
  if (!show(dialog)) return false;
  const CObjectFilterDialog::State& state = dialog.result();
  choice.scope = state.scope;
  choice.typeMask = state.typeMask;
  choice.selectedLayers = state.selectedLayers;
  for (std::size_t i = choice.handles.size(); i-- > 0;) {
    if (!entryPasses(choice.handles[i])) choice.handles.erase(choice.handles.begin() + static_cast<std::ptrdiff_t>(i));
  }
  selectedHandles.clear();
  choice.explicitObjects = !choice.handles.empty();
  refreshPreview();
  return true;
}

bool ObjectSetOptionDialog::onAdditionalFormat(const ShowModal<CAdditionalFormatDialog>& show) {
  const std::optional<int> unitsItem = units.selectedItem();
  CAdditionalFormatDialog dialog(
      host_, {unitsItem ? kind_.unitsPiece(*unitsItem) : std::wstring(), precisionPiece(precision),
              unitsItem.value_or(kUnitsCurrent), CAdditionalFormatDialog::kReal, host::AcValue(value_), additional});
  dialog.onInitDialog();
  if (!show(dialog)) return false;
  additional.takeChosen(dialog.result());
  previewText_ = host_.formatValue(host::AcValue(value_), formatString());
  return true;
}

std::wstring ObjectSetOptionDialog::formatString() const {
  const std::optional<int> unitsItem = units.selectedItem();
  return (unitsItem ? kind_.unitsPiece(*unitsItem) : std::wstring()) + precisionPiece(precision) +
         additional.build(host_.hostVersion());
}

std::wstring ObjectSetOptionDialog::fieldCode() const {
  std::wstring code = core::format(L"%%<\\%s %s", kind_.evaluatorId, buildObjectSetText(choice));
  const std::wstring format = formatString();
  if (!format.empty()) code += core::format(L" \\f \"%s\"", format);
  return core::trim(code + L">%");
}

void ObjectSetOptionDialog::refreshPreview() {
  const PreviewResult result = host_.preview(fieldCode());
  if (result.status == AcDbField::kSuccess) value_ = result.value;
  previewText_ = result.text;
}

}  // namespace corvane
