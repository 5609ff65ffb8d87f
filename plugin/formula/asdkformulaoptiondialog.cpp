#include "plugin/formula/asdkformulaoptiondialog.h"

#include <utility>

#include "core/crt.h"
#include "core/matchgroups.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbfield.h"
#include "host/acedprompts.h"
#include "host/hostui.h"
#include "plugin/fields/evaluatortable.h"
#include "plugin/fields/formatlists.h"
#include "plugin/fields/formatpieces.h"
#include "plugin/formula/asdkexprevaluator.h"
#include "plugin/formula/exprfunctiontable.h"

namespace corvane {

using host::AcDbField;

namespace {

constexpr int kCurrentUnitsCode = 6;  // "%lu6", the units "Current units" writes

// The number a pattern captures from the format; nullopt when it does not match.
std::optional<int> capturedNumber(const std::wstring& format, std::wstring_view pattern) {
  std::vector<std::wstring> captures;
  if (!core::MatchGroups(format, pattern, captures) || captures.empty()) return std::nullopt;
  return static_cast<int>(core::wtol(captures[0]));
}

bool isBlank(wchar_t c) noexcept { return c == L' ' || c == L'\t'; }

}  // namespace

AsdkFormulaOptionDialog::AsdkFormulaOptionDialog(FormulaPageHost& host, host::AcDbObjectId ownerTable,
                                                 std::function<void(host::AcDbObjectId)> chooseOwnerTable)
    : host_(host), ownerTable_(ownerTable), chooseOwnerTable_(std::move(chooseOwnerTable)) {}

void AsdkFormulaOptionDialog::onInitDialog() {
  expression.clear();
  caret = std::wstring::npos;
  units = unitsList();
  units.selectItem(kUnitsNone);
  precision.clear();
  precision.enabled = false;
  functions.clear();
  for (const std::wstring_view name : ExprFunctionDisplayTable) {
    if (name.empty()) break;
    if (name.find(L'-') == std::wstring_view::npos) functions.emplace_back(name);
  }
  fieldHasOwner_ = false;
  ownerTableText_ = host_.handleText(ownerTable_);
  previewText_.clear();
}

int AsdkFormulaOptionDialog::setFieldToEdit(const AcDbField& field) {
  onInitDialog();
  fieldHasOwner_ = !field.ownerId().isNull();
  // The preview evaluates the code in a field placed nowhere, which reads the cells of the
  // chosen owner table: a field of a table cell chooses its own table.
  if (const host::AcDbObjectId table = host_.owningTable(field); !table.isNull()) useOwnerTable(table);
  host::AcValue record;
  if (field.getData(kEvaluatorTable[kExprRow].dataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring code;
  if (!record.get(code)) return AcDbField::kInvalidCode;
  expression = FormulaExpressionOf(code);

  const std::wstring format = field.getFormat();
  if (const auto unitsCode = capturedNumber(format, L"%lu{[0-9]+}")) {
    // The current units are written as their own code; read back, it names that entry.
    units.selectItem(*unitsCode == kCurrentUnitsCode ? kUnitsCurrent : *unitsCode);
    onUnitsChanged();
  }
  if (const auto places = capturedNumber(format, L"%pr{[0-9]+}")) {
    if (precision.selectItem(*places)) precision.enabled = true;
  }
  host::AcValue value;
  if (field.getValue(value) == host::Acad::eOk && value.dataType() == host::AcValue::kString) showAsText();
  previewText_ = field.getDisplayText();
  return AcDbField::kSuccess;
}

void AsdkFormulaOptionDialog::onUnitsChanged() {
  fillPrecisionList(host_, units.selectedItem().value_or(kUnitsNone), precision);
}

void AsdkFormulaOptionDialog::showAsText() {
  units.selectItem(kUnitsNone);
  precision.clear();
  precision.enabled = false;
}

void AsdkFormulaOptionDialog::insertIntoExpression(const std::wstring& text) {
  const std::size_t at = std::min(caret, expression.size());
  expression.insert(at, text);
  caret = at + text.size();
}

int AsdkFormulaOptionDialog::onPickCell() {
  TableCellPick pick;
  int result = 0;
  {
    ShortVarOverride noSnaps(host_, L"OSMODE", 0);
    result = host_.pickTableCell(kPickCellPrompt, pick);
  }
  if (result != host::RTNORM || pick.table.isNull()) return result;
  const std::wstring address = host_.cellAddress(pick.row + 1, pick.column + 1);
  if (!address.empty()) insertIntoExpression(address);
  return result;
}

bool AsdkFormulaOptionDialog::onInsertField(const ShowModal<CInsertFieldCodeDialog>& show) {
  CInsertFieldCodeDialog dialog(host_);
  if (!show(dialog)) return false;
  insertIntoExpression(host_.formulaArgument(dialog.result()));
  return true;
}

bool AsdkFormulaOptionDialog::onInsertFunction(std::size_t index) {
  if (index >= functions.size()) return false;
  insertIntoExpression(functions[index] + L"()");
  --caret;
  return true;
}

bool AsdkFormulaOptionDialog::onInsertVariable(std::wstring_view name) {
  for (const FormulaVariable& variable : host_.variables()) {
    if (!core::equalsNoCase(variable.name, name)) continue;
    insertIntoExpression(variable.name);
    return true;
  }
  return false;
}

bool AsdkFormulaOptionDialog::onVariables(const ShowModal<CAddFieldCodeVarDialog>& show) {
  CAddFieldCodeVarDialog dialog(host_);
  dialog.onInitDialog();
  return show(dialog);
}

bool AsdkFormulaOptionDialog::chooseOwnerTable() {
  host_.messageBox(L"Cannot get the owner table of the field. Please select the owner table.", kCaption,
                   host::MB_OK | host::MB_ICONINFORMATION);
  host::AcDbObjectId table;
  host::Acad::ErrorStatus opened = host::Acad::eOk;
  if (host_.pickTable(kOwnerTablePrompt, table, opened) != host::RTNORM) return false;
  if (opened != host::Acad::eOk) {
    host_.messageBox(core::format(L"Invalid table: %s.", host::acadErrorStatusText(opened)), kCaption,
                     host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  useOwnerTable(table);
  return true;
}

void AsdkFormulaOptionDialog::useOwnerTable(host::AcDbObjectId table) {
  ownerTable_ = table;
  ownerTableText_ = host_.handleText(table);
  if (chooseOwnerTable_) chooseOwnerTable_(table);
}

bool AsdkFormulaOptionDialog::onPreview() {
  if (!fieldHasOwner_ && ownerTable_.isNull() && !chooseOwnerTable()) return false;
  const PreviewResult result = host_.preview(fieldCode());
  if (result.status != AcDbField::kSuccess) {
    previewText_ = core::format(L"Failed to evaluate the field: %d.", result.status);
    return true;
  }
  previewText_ = result.text;
  if (result.isString) showAsText();
  return true;
}

std::wstring AsdkFormulaOptionDialog::formatString() const {
  return lengthUnitsPiece(units.selectedItem().value_or(kUnitsNone)) + precisionPiece(precision);
}

std::wstring AsdkFormulaOptionDialog::fieldCode() const {
  std::wstring_view text(expression);
  while (!text.empty() && (isBlank(text.front()) || text.front() == L'=')) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  const wchar_t* id = kEvaluatorTable[kExprRow].evaluatorId;
  const std::wstring format = formatString();
  if (format.empty()) return core::format(L"%%<\\%s (%s)>%%", id, text);
  return core::format(L"%%<\\%s (%s) \\f \"%s\">%%", id, text, format);
}

}  // namespace corvane
