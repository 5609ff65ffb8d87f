#pragma once

#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/optionpagehost.h"
#include "plugin/fields/portformathost.h"

namespace corvane {

// The option pages' host calls answered by the host port: the working drawing, the editor's
// prompts and the UI's message boxes. The hosts of particular pages take these answers from here
// (OptionPageHost is a virtual base of theirs).
class PortOptionPageHost : public virtual OptionPageHost {
 public:
  PortOptionPageHost(host::AcDbHostApplicationServices& services, host::AcEdPrompts& prompts, host::HostUi& ui)
      : services_(services), prompts_(prompts), ui_(ui), format_(services) {}

  bool realToString(double value, int units, int precision, std::wstring& text) override {
    return format_.realToString(value, units, precision, text);
  }
  bool getShortVar(std::wstring_view name, int& value) override { return format_.getShortVar(name, value); }
  bool setShortVar(std::wstring_view name, int value) override { return format_.setShortVar(name, value); }
  std::wstring formatValue(const host::AcValue& value, const std::wstring& format) override {
    return format_.formatValue(value, format);
  }
  int hostVersion() override { return format_.hostVersion(); }

  int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) override {
    return ui_.messageBox(text, caption, flags);
  }
  PreviewResult preview(const std::wstring& code) override;
  int pickTableCell(std::wstring_view prompt, TableCellPick& pick) override;
  int pickTable(std::wstring_view prompt, host::AcDbObjectId& table, host::Acad::ErrorStatus& opened) override;

 protected:
  host::AcDbHostApplicationServices& services_;
  host::AcEdPrompts& prompts_;
  host::HostUi& ui_;
  PortFormatHost format_;
};

}  // namespace corvane
