// The formula engine's view of the drawing a formula field stands in, through the host port:
// system variables and embedded field codes through temporary host fields, object properties
// by handle in the working drawing. The owner table and self block are bound by the formula
// field from the field's context.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/acdbtable.h"
#include "host/hostservices.h"
#include "plugin/formula/exprbinding.h"

namespace corvane {

class ExprFieldBinding : public ExprBinding {
 public:
  explicit ExprFieldBinding(host::AcDbHostApplicationServices& services) : services_(services) {}

  std::optional<std::wstring> ObjectProperty(std::wstring_view handle, std::wstring_view property) override;
  std::optional<std::wstring> SystemVariable(std::wstring_view name) override;
  std::wstring EvaluateFieldCode(std::wstring_view fieldCode) override;

  // The table whose cells bare addresses and ranges name.
  void bindOwnerTable(host::AcDbObjectId table) {
    ownerTable_ = table;
    openTable_.close();
  }
  bool HasOwnerTable() const override { return !ownerTable_.isNull(); }
  int OwnerTableRows() const override;
  int OwnerTableColumns() const override;
  std::optional<std::wstring> OwnerTableCell(int row, int column) override;

  // Binds the field's context: walking up from the field's owner, a table becomes the owner
  // table and a block reference the self block; a field with no owner of its own falls back
  // to the table chosen in the formula dialog (null when none was chosen).
  void bindContext(const host::AcDbField& field, host::AcDbObjectId dialogOwnerTable);

  // The block reference that holds the formula; its dynamic properties answer "_SELFBLOCK."
  // names and VX_SELF.
  void bindSelfBlock(host::AcDbObjectId reference) { selfBlock_ = reference; }
  bool HasSelfBlock() const override { return !selfBlock_.isNull(); }
  std::optional<std::wstring> SelfBlockProperty(std::wstring_view property) override;
  double SumBlockProperty(std::wstring_view blockName, std::wstring_view property) override;

 protected:
  host::AcDbHostApplicationServices& services() noexcept { return services_; }
  // A value as text, the way the host shows a value with no format.
  std::wstring valueText(const host::AcValue& value) const { return services_.formatValue(value, L""); }

 private:
  // The value text of a code evaluated in a temporary field of the working drawing; nullopt
  // unless the evaluation succeeds.
  std::optional<std::wstring> evaluateInTemporaryField(std::wstring_view code);

  // One step of bindContext: binds the object when it is a table, an anonymous block (through
  // its reference) or a block reference. True when the walk ends there, false to go on up
  // (a layout's block, or an object of another kind).
  bool bindOwner(host::AcDbObjectId id);

  // A dynamic property, or else an attribute, of a block reference, as text.
  std::optional<std::wstring> referenceProperty(host::AcDbObjectId reference, std::wstring_view property,
                                                bool attributes);

  // The owner table, opened for read on first use and kept open while the binding lives (one
  // evaluation): a formula reads many cells, and each open costs a lookup and a cast.
  host::AcDbTable* ownerTable() const;

  host::AcDbHostApplicationServices& services_;
  host::AcDbObjectId selfBlock_;
  host::AcDbObjectId ownerTable_;
  mutable host::AcDbObjectPointer<host::AcDbTable> openTable_;
};

}  // namespace corvane
