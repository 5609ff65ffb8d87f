#include "plugin/shell/asdkcustomoptiondialoghook.h"

#include "core/textutil.h"
#include "host/acdbfield.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"

namespace corvane {

namespace {

struct FieldRow {
  unsigned id;
  const wchar_t* name;
  const wchar_t* japaneseName;
  const wchar_t* evaluatorId;
};

// In the order the names are given to the dialog; the pages are made in this order too.
constexpr FieldRow kFields[] = {
    {72344, L"VX Objects Length", L"VX \u30aa\u30d6\u30b8\u30a7\u30af\u30c8\u306e\u9577\u3055", L"AcLength"},
    {72343, L"VX Objects Area", L"VX \u30aa\u30d6\u30b8\u30a7\u30af\u30c8\u306e\u9762\u7a4d", L"AcArea"},
    {72342, L"VX Block Count", L"VX \u30d6\u30ed\u30c3\u30af\u306e\u6570", L"AcBlockCount"},
    {72341, L"VX Text File", L"VX \u30c6\u30ad\u30b9\u30c8\u30d5\u30a1\u30a4\u30eb", L"TextField"},
    {72340, L"VX Excel Cell", L"VX Excel\u306e\u30bb\u30eb", L"ExcelCell"},
    {72339, L"VX Table Cell", L"VX \u8868\u306e\u30bb\u30eb", L"TableCell"},
    {72346, L"VX Formula", L"VX \u8a08\u7b97\u5f0f", L"VxExpr"},
    {72347, L"VX Defined Object", L"VX \u5b9a\u7fa9\u3055\u308c\u305f\u30aa\u30d6\u30b8\u30a7\u30af\u30c8",
     L"AcDefinedObj"},
};
static_assert(std::size(kFields) == AsdkCustomOptionDialogHook::kFieldCount);

// Not the loader's order; the dialog asks in this one.
constexpr const wchar_t* kEvaluatorIds[] = {L"AcArea",    L"AcLength",  L"AcBlockCount", L"TextField",
                                            L"ExcelCell", L"TableCell", L"VxExpr",       L"AcDefinedObj"};

}  // namespace

// The export button as the dialog sees it: a press exports the code the dialog shows.
class AsdkCustomOptionDialogHook::ExportPanel final : public host::CAcFdUiFieldDialogPanel {
 public:
  ExportPanel(LinkedSources& linked, CRegistry& registry) : button(linked, registry) {}

  std::wstring_view GetTemplateName() const override { return CExportFieldButtonDialog::kTemplate; }
  std::wstring_view GetButtonText() const override { return L"Export"; }
  bool OnButtonPressed(std::wstring_view fieldCode) override {
    button.fieldCode = fieldCode;
    return button.OnBnClickedButtonExportField();
  }

  CExportFieldButtonDialog button;
};

AsdkCustomOptionDialogHook::AsdkCustomOptionDialogHook(const host::HostSystem* system) : system_(system) {}

AsdkCustomOptionDialogHook::AsdkCustomOptionDialogHook(const host::HostSystem& system, const OptionPageSources& sources,
                                                       ReactorState& state)
    : system_(&system), reactorState_(&state), linked_(&sources.linked), registry_(&sources.registry) {
  makePages_.emplace(sources);
}

AsdkCustomOptionDialogHook::~AsdkCustomOptionDialogHook() = default;

CExportFieldButtonDialog* AsdkCustomOptionDialogHook::exportPanel() noexcept {
  return exportPanel_ ? &exportPanel_->button : nullptr;
}

std::optional<std::size_t> AsdkCustomOptionDialogHook::rowOf(unsigned fieldId) noexcept {
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (kFields[row].id == fieldId) return row;
  }
  return std::nullopt;
}

std::wstring_view AsdkCustomOptionDialogHook::evaluatorIdOf(unsigned fieldId) noexcept {
  const auto row = rowOf(fieldId);
  return row ? kFields[*row].evaluatorId : L"";
}

host::CAcFdUiFieldOptionDialog* AsdkCustomOptionDialogHook::pageOf(unsigned fieldId) const noexcept {
  const auto row = rowOf(fieldId);
  return row ? pages_[*row].get() : nullptr;
}

int AsdkCustomOptionDialogHook::GetEvaluatorIds(std::vector<std::wstring>& ids) {
  for (const wchar_t* id : kEvaluatorIds) ids.emplace_back(id);
  return static_cast<int>(ids.size());
}

bool AsdkCustomOptionDialogHook::BeginFieldDialog(host::CAcFdUiFieldDialog* dialog, host::AcDbDatabase* db,
                                                  int context) {
  CAcFdUiFieldDialogHook::BeginFieldDialog(dialog, db, context);
  if (makePages_) {
    for (std::size_t row = 0; row < kFieldCount; ++row) {
      pages_[row] = makePages_->make(kFields[row].id, [this] { UpdateFieldCode(); });
    }
  }
  if (exportFieldsRunning_ && dialog) addExportButtonPanel(*dialog);
  return true;
}

void AsdkCustomOptionDialogHook::addExportButtonPanel(host::CAcFdUiFieldDialog& dialog) {
  removeExportButtonPanel();
  // A hook that names its fields only has nothing to export with.
  if (!linked_ || !registry_) return;
  auto panel = std::make_unique<ExportPanel>(*linked_, *registry_);
  if (!dialog.AddPanel(*panel, kExportPanelLeft, kExportPanelAboveBottom)) return;
  exportPanel_ = std::move(panel);
  exportPanelDialog_ = &dialog;
}

void AsdkCustomOptionDialogHook::removeExportButtonPanel() {
  if (exportPanel_ && exportPanelDialog_) exportPanelDialog_->RemovePanel(*exportPanel_);
  exportPanel_.reset();
  exportPanelDialog_ = nullptr;
}

bool AsdkCustomOptionDialogHook::EndFieldDialog(int result) {
  removeExportButtonPanel();
  CAcFdUiFieldDialogHook::EndFieldDialog(result);
  for (auto& page : pages_) page.reset();
  if (reactorState_) reactorState_->editedTableId = {};
  return true;
}

bool AsdkCustomOptionDialogHook::GetOptionDialog(unsigned fieldId, host::CAcFdUiFieldOptionDialog*& page) {
  if (rowOf(fieldId)) page = pageOf(fieldId);
  return true;
}

bool AsdkCustomOptionDialogHook::OnFieldSelected(unsigned fieldId) {
  if (auto* page = pageOf(fieldId)) page->OnFieldSelected();
  return true;
}

bool AsdkCustomOptionDialogHook::UpdateFieldCode() {
  host::CAcFdUiFieldDialog* dialog = GetFieldDialog();
  if (!dialog) return false;
  const unsigned current = dialog->GetCurrentFieldId();
  if (current == 0) return false;
  if (auto* page = pageOf(current)) dialog->SetFieldCode(page->GetFieldCode());
  return true;
}

bool AsdkCustomOptionDialogHook::SetFieldToEdit(host::AcDbField* field) {
  if (!CAcFdUiFieldDialogHook::SetFieldToEdit(field)) return false;
  const std::wstring evaluator = field->evaluatorId();
  for (const FieldRow& row : kFields) {
    if (!core::equalsNoCase(evaluator, row.evaluatorId)) continue;
    if (host::CAcFdUiFieldDialog* dialog = GetFieldDialog()) {
      dialog->SelectField(row.id, kCategoryId);
      if (auto* page = dialog->GetCurrentOptionDialog()) page->LoadFromField(*field);
    }
    return true;
  }
  return false;
}

bool AsdkCustomOptionDialogHook::CreateField(unsigned fieldId, FieldHolder& field) {
  CAcFdUiFieldDialogHook::CreateField(fieldId, field);
  host::CAcFdUiFieldOptionDialog* page = pageOf(fieldId);
  if (!page || !makePages_ || !page->HasUsableSelection()) return false;
  const std::wstring code = page->GetFieldCode();

  FieldHolder made = makePages_->services().newField();
  if (!made) return false;
  // No code is no field: the compile of every evaluator refuses it as an invalid code.
  const host::Acad::ErrorStatus set = code.empty() ? host::Acad::eInvalidInput : made->setFieldCode(code);
  const host::Acad::ErrorStatus evaluated =
      set == host::Acad::eOk ? made->evaluate(host::AcDbField::kPreview, GetDatabase()) : set;
  const int status = made->evaluationStatus();
  // "Not yet evaluated" is what an evaluator leaves when it has nothing to report, not an error.
  if (evaluated != host::Acad::eOk ||
      (status != host::AcDbField::kSuccess && status != host::AcDbField::kNotYetEvaluated)) {
    makePages_->ui().messageBox(status == host::AcDbField::kEvaluatorNotFound ? kEvaluatorNotFound : kInvalidFieldCode,
                                kMessageCaption, host::MB_OK | host::MB_ICONWARNING);
    if (host::CAcFdUiFieldDialog* dialog = GetFieldDialog()) dialog->FocusFieldCode();
    return false;
  }
  made->setEvaluationOption(host::AcDbField::kAutomatic);
  field = std::move(made);
  return true;
}

bool AsdkCustomOptionDialogHook::GetCategories(std::vector<std::wstring>& names, std::vector<unsigned>& ids) {
  names.emplace_back(kCategoryName);
  ids.push_back(kCategoryId);
  return true;
}

bool AsdkCustomOptionDialogHook::GetFieldNames(int categoryId, std::vector<std::wstring>& names,
                                               std::vector<unsigned>& ids, bool& sort) {
  if (categoryId != static_cast<int>(kCategoryId) && categoryId != -1) return true;
  for (const auto& row : kFields) {
    // The language is asked for each name, as the dialog's own code does.
    const bool japanese = system_ && system_->systemDefaultLangId() == host::kLangJapanese;
    names.emplace_back(japanese ? row.japaneseName : row.name);
    ids.push_back(row.id);
  }
  sort = true;
  return true;
}

}  // namespace corvane
