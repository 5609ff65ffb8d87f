// The plug-in's part of the host's field dialog: the category "Corvane" and its eight field
// names (in the system's language where there is a translation), an option page for each field
// while the dialog is open, the field built from a page's code when the user confirms, and a
// page filled from a field the user edits. While the export command shows the dialog, the
// dialog also has the export button's panel.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/acfdui.h"
#include "host/hostsystem.h"
#include "plugin/shell/optionpages.h"
#include "plugin/shell/reactorstate.h"
#include "plugin/workflows/cexportfieldbuttondialog.h"

namespace corvane {

class AsdkCustomOptionDialogHook : public host::CAcFdUiFieldDialogHook {
 public:
  static constexpr unsigned kCategoryId = 72345;
  static constexpr const wchar_t* kCategoryName = L"Corvane";
  enum FieldId : unsigned {
    kLengthId = 72344,
    kAreaId = 72343,
    kBlockCountId = 72342,
    kTextFileId = 72341,
    kExcelCellId = 72340,
    kTableCellId = 72339,
    kFormulaId = 72346,
    kDefinedObjectId = 72347,
  };
  static constexpr std::size_t kFieldCount = 8;
  static constexpr const wchar_t* kEvaluatorNotFound = L"Evaluator is not found to evaluate the field";
  static constexpr const wchar_t* kInvalidFieldCode = L"Invalid field code";

  // A hook that names its fields but has no pages to show (no editor to show them in).
  explicit AsdkCustomOptionDialogHook(const host::HostSystem* system);
  // The full hook: pages made from the sources, and the edited table id of the reactors.
  AsdkCustomOptionDialogHook(const host::HostSystem& system, const OptionPageSources& sources, ReactorState& state);
  ~AsdkCustomOptionDialogHook() override;

  int GetEvaluatorIds(std::vector<std::wstring>& ids) override;
  bool BeginFieldDialog(host::CAcFdUiFieldDialog* dialog, host::AcDbDatabase* db, int context) override;
  bool EndFieldDialog(int result) override;
  bool SetFieldToEdit(host::AcDbField* field) override;
  bool GetOptionDialog(unsigned fieldId, host::CAcFdUiFieldOptionDialog*& page) override;
  bool UpdateFieldCode() override;
  bool OnFieldSelected(unsigned fieldId) override;
  bool CreateField(unsigned fieldId, FieldHolder& field) override;
  bool GetCategories(std::vector<std::wstring>& names, std::vector<unsigned>& ids) override;
  bool GetFieldNames(int categoryId, std::vector<std::wstring>& names, std::vector<unsigned>& ids, bool& sort) override;

  // The evaluator id of one of the eight field ids; empty for any other id.
  static std::wstring_view evaluatorIdOf(unsigned fieldId) noexcept;

  // Set by the export-fields command while it shows the dialog.
  void setExportFieldsRunning(bool running) noexcept { exportFieldsRunning_ = running; }
  bool exportFieldsRunning() const noexcept { return exportFieldsRunning_; }
  // Where the export panel is placed in the dialog's client area, in dialog units.
  static constexpr int kExportPanelLeft = 12;
  static constexpr int kExportPanelAboveBottom = 33;
  // The export button's panel while the dialog shows it; null otherwise.
  CExportFieldButtonDialog* exportPanel() noexcept;

 private:
  // The row of a field id in the table, or nullopt.
  static std::optional<std::size_t> rowOf(unsigned fieldId) noexcept;
  host::CAcFdUiFieldOptionDialog* pageOf(unsigned fieldId) const noexcept;
  void addExportButtonPanel(host::CAcFdUiFieldDialog& dialog);
  void removeExportButtonPanel();

  const host::HostSystem* system_;
  std::optional<OptionPages> makePages_;
  ReactorState* reactorState_ = nullptr;
  LinkedSources* linked_ = nullptr;
  CRegistry* registry_ = nullptr;
  // One per row of the table, null while the dialog is closed.
  std::array<std::unique_ptr<host::CAcFdUiFieldOptionDialog>, kFieldCount> pages_;
  bool exportFieldsRunning_ = false;
  class ExportPanel;
  std::unique_ptr<ExportPanel> exportPanel_;
  host::CAcFdUiFieldDialog* exportPanelDialog_ = nullptr;
};

}  // namespace corvane
