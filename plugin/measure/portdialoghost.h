#pragma once

#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/portoptionpagehost.h"
#include "plugin/measure/dialoghost.h"

namespace corvane {

// The dialogs' host calls answered by the host port: the working drawing, the editor's
// prompts and the UI's message boxes.
class PortDialogHost : public DialogHost {
 public:
  PortDialogHost(host::AcDbHostApplicationServices& services, host::AcEdPrompts& prompts, host::HostUi& ui)
      : services_(services), prompts_(prompts), page_(services, prompts, ui) {}

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

 private:
  std::optional<EntityFacts> facts(host::AcDbObjectId id);

  host::AcDbHostApplicationServices& services_;
  host::AcEdPrompts& prompts_;
  PortOptionPageHost page_;
};

}  // namespace corvane
