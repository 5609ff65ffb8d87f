#include "plugin/linked/asdkdefinedobjectoptiondialog.h"

#include "core/filepath.h"
#include "core/printf.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/linked/cdefineobjectdialog.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"

namespace corvane {

AsdkDefinedObjectOptionDialog::AsdkDefinedObjectOptionDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources), registry_(registry) {}

bool AsdkDefinedObjectOptionDialog::OnPathTypeChanged(int type) {
  pathType_ = type == kRelativePathType ? kRelativePathType : kFullPathType;
  if (pathType_ == kRelativePathType && !RelativePathAllowed(sources_)) {
    pathType_ = kFullPathType;
    return false;
  }
  return true;
}

std::vector<std::wstring> AsdkDefinedObjectOptionDialog::objectEntries() const {
  std::vector<std::wstring> entries;
  const auto full = sources_.resolveAgainstWorkingDrawing(drawing);
  if (!full) return entries;
  for (const CDefinedObject& record : ReadDefinedObjects(registry_)) {
    if (core::samePath(record.drawing, *full))
      entries.push_back(core::format(L"%s - %s", record.handle, record.description));
  }
  return entries;
}

bool AsdkDefinedObjectOptionDialog::OnOK() {
  const auto refuse = [this](const wchar_t* text) {
    LinkedMessage(sources_, text, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  };
  if (drawing.empty()) return refuse(L"The dwg file name is empty.");
  const auto full = sources_.resolveAgainstWorkingDrawing(drawing);
  if (!full || sources_.fileStatus(*full).kind != host::HostSystem::FileKind::kFile)
    return refuse(L"Invalid dwg file.");
  const std::vector<std::wstring> entries = objectEntries();
  if (object < 0 || object >= static_cast<int>(entries.size())) return refuse(L"Invalid object.");
  if (property.empty()) return refuse(L"Please select a property first.");
  const std::wstring& entry = entries[static_cast<std::size_t>(object)];
  const std::wstring handle = entry.substr(0, entry.find(L' '));
  code_ = DefinedObjectCode(PathForCode(sources_, *full, pathType_), handle, property);
  return true;
}

}  // namespace corvane
