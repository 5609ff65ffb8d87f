#pragma once

#include "host/acedprompts.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/portoptionpagehost.h"
#include "plugin/measure/dialoghost.h"

namespace corvane {

// The dialogs' host calls answered by the host port: the working drawing, the editor's
// prompts and the UI's message boxes.
class PortDialogHost : public DialogHost, public PortOptionPageHost {
 public:
  using PortOptionPageHost::PortOptionPageHost;

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
};

}  // namespace corvane
