#pragma once

#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/portoptionpagehost.h"
#include "plugin/formula/formulapagehost.h"

namespace corvane {

// The formula page's host calls answered by the host port.
class PortFormulaPageHost : public FormulaPageHost {
 public:
  PortFormulaPageHost(host::AcDbHostApplicationServices& services, host::AcEdPrompts& prompts, host::HostUi& ui)
      : services_(services), ui_(ui), page_(services, prompts, ui) {}

  bool realToString(double value, int units, int precision, std::wstring& text) override {
    return page_.realToString(value, units, precision, text);
  }
  bool getShortVar(std::wstring_view name, int& value) override { return page_.getShortVar(name, value); }
  bool setShortVar(std::wstring_view name, int value) override { return page_.setShortVar(name, value); }
  std::wstring formatValue(const host::AcValue& value, const std::wstring& format) override {
    return page_.formatValue(value, format);
  }
  int hostVersion() override { return page_.hostVersion(); }
  int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) override {
    return page_.messageBox(text, caption, flags);
  }
  PreviewResult preview(const std::wstring& code) override { return page_.preview(code); }
  int pickTableCell(std::wstring_view prompt, TableCellPick& pick) override {
    return page_.pickTableCell(prompt, pick);
  }
  int pickTable(std::wstring_view prompt, host::AcDbObjectId& table, host::Acad::ErrorStatus& opened) override {
    return page_.pickTable(prompt, table, opened);
  }

  bool holdsFieldCode(std::wstring_view text) override { return services_.findField(text).has_value(); }
  std::wstring formulaArgument(std::wstring_view text) override;
  std::wstring cellAddress(int row, int column) override;
  std::wstring handleText(host::AcDbObjectId id) override;
  host::AcDbObjectId owningTable(const host::AcDbField& field) override;
  std::vector<FormulaVariable> variables() override { return ReadFormulaVariables(services_); }
  host::Acad::ErrorStatus setVariables(const std::vector<FormulaVariable>& variables) override {
    return WriteFormulaVariables(services_, variables);
  }

 private:
  host::AcDbHostApplicationServices& services_;
  host::HostUi& ui_;
  PortOptionPageHost page_;
};

}  // namespace corvane
