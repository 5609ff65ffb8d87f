#pragma once

#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/portoptionpagehost.h"
#include "plugin/formula/formulapagehost.h"

namespace corvane {

// The formula page's host calls answered by the host port.
class PortFormulaPageHost : public FormulaPageHost, public PortOptionPageHost {
 public:
  using PortOptionPageHost::PortOptionPageHost;

  bool holdsFieldCode(std::wstring_view text) override { return services_.findField(text).has_value(); }
  std::wstring formulaArgument(std::wstring_view text) override;
  std::wstring cellAddress(int row, int column) override;
  std::wstring handleText(host::AcDbObjectId id) override;
  host::AcDbObjectId owningTable(const host::AcDbField& field) override;
  std::vector<FormulaVariable> variables() override { return ReadFormulaVariables(services_); }
  host::Acad::ErrorStatus setVariables(const std::vector<FormulaVariable>& variables) override {
    return WriteFormulaVariables(services_, variables);
  }

};

}  // namespace corvane
