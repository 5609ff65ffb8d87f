#pragma once

#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/measure/dialoghost.h"
#include "plugin/measure/portformathost.h"

namespace corvane {

// The dialogs' host calls answered by the host port: the working drawing, the editor's
// prompts and the UI's message boxes.
class PortDialogHost : public DialogHost {
 public:
  PortDialogHost(host::AcDbHostApplicationServices& services, host::AcEdPrompts& prompts, host::HostUi& ui)
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

  std::vector<std::wstring> layerNames() override;
  std::vector<std::wstring> blockNames() override;
  std::wstring currentSpaceHandle() override;
  std::optional<EntityFacts> entity(std::wstring_view handle) override;
  int selectEntities(const host::ResBufList& filter, std::vector<EntityFacts>& picked) override;
  int getPoint(std::wstring_view prompt, host::AcGePoint3d& point) override {
    return prompts_.getPoint(nullptr, prompt, point);
  }
  int getCorner(const host::AcGePoint3d& base, std::wstring_view prompt, host::AcGePoint3d& point) override {
    return prompts_.getCorner(base, prompt, point);
  }
  int pickExtents(std::wstring_view prompt, EntityFacts& picked, host::AcDbExtents& extents) override;
  int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) override {
    return ui_.messageBox(text, caption, flags);
  }
  PreviewResult preview(const std::wstring& code) override;

 private:
  std::optional<EntityFacts> facts(host::AcDbObjectId id);

  host::AcDbHostApplicationServices& services_;
  host::AcEdPrompts& prompts_;
  host::HostUi& ui_;
  PortFormatHost format_;
};

}  // namespace corvane
