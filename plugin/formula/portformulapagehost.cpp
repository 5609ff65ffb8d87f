#include "plugin/formula/portformulapagehost.h"

#include "host/acdbfield.h"
#include "plugin/fields/fieldreferences.h"
#include "plugin/formula/celladdress.h"

namespace corvane {

std::wstring PortFormulaPageHost::formulaArgument(std::wstring_view text) {
  return FieldToFormulaArgument(services_, text);
}

std::wstring PortFormulaPageHost::cellAddress(int row, int column) { return FormatCellAddress(row, column, ui_); }

std::wstring PortFormulaPageHost::handleText(host::AcDbObjectId id) {
  if (id.isNull() || !services_.isValid(id)) return {};
  return services_.handle(id).text();
}

host::AcDbObjectId PortFormulaPageHost::owningTable(const host::AcDbField& field) {
  return services_.owningTable(field.ownerId());
}

}  // namespace corvane
